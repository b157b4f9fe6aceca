// A host that connects the module of the example and has it run macros. Fails unless the module
// answers rightly.
// usage: host MODULE_FOLDER EXPERIMENT_FOLDER
#include <cstdio>
#include <string>

#include <tarsel/Tarsel.h>

namespace {

int mWrong = 0;

void Check(bool right, const char* what) {
    if (right) return;
    std::fprintf(stderr, "wrong: %s\n", what);
    ++mWrong;
}

class Listener : public DNotify {
public:
    void Notify(NotifyType, int, const DString& text) override { m_Heard = text; }
    std::string m_Heard;
};

// The macro branch belongs to the sink of the C interface, which this host hasn't installed.
void RunMacro(const char* text) { CFNotify().Notify(NT_RunMacro, 0, text); }

void CheckConnection(Listener& listener) {
    DNotify* module = nullptr;
    Check(DLLConnect("Calculation", 0, &listener, module) == 1, "the module's version");
    Check(module != nullptr, "the module's sink");
    if (module) module->Notify(NT_Display, 0, "hello");
}

void CheckMacros(Listener& listener) {
    const float current[] = {0, 2, 2, 0};
    SetWaveformC("I", 10, 0.5f, 4, current);
    RunMacro("integral I Q");
    float charge[4] = {};
    GetWaveformC("Q", 10, 0.5f, 4, charge);
    Check(charge[0] == 0 && charge[1] == 0.5f && charge[2] == 1.5f && charge[3] == 2, "Q");
    Check(listener.m_Heard.empty(), "silence about a macro that runs");
    RunMacro("integral U Q");
    Check(listener.m_Heard == "There is no trace U", "a trace that is missing");
    RunMacro("dance");
    Check(listener.m_Heard == "Unknown macro: dance", "a macro that the module doesn't know");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    CoreInit(argv[1]);
    Expt.SetExperimentFolder(argv[2]);
    DString request("*1");
    Check(Expt.CreateShot(request, "", false) >= 0, "the shot");
    Listener listener;
    CheckConnection(listener);
    CheckMacros(listener);
    DLib.UnloadModules();
    return mWrong != 0;
}
