// A plug-in module of Tarsel: it answers macros, and connects to a host.
//
// A host runs a macro by a notification of type 11, from C with
//
//   NotifyC(11, 0, "integral I Q");
//
// which stores the integral of the current shot's trace I over time as the trace Q. A host in C++
// that wants to hear of it connects the module first:
//
//   DNotify* module = nullptr;
//   int version = DLLConnect("Calculation", 0, &mySink, module);
#include <tarsel/Tarsel.h>

namespace {

constexpr int Version = 1;

// The host's sink, while there is one.
DNotify* mHost = nullptr;

void Tell(const DString& text) {
    if (mHost) {
        mHost->Notify(NT_Message, 0, text);
    } else {
        Message(text);
    }
}

// The integral by the rule of trapezoids, which starts at 0 in the first point.
void Integrate(const Waveform& trace, Waveform& integral) {
    float sum = 0;
    integral[0] = 0;
    for (int i = 1; i < trace.Count(); ++i) {
        sum += 0.5f * (trace[i - 1] + trace[i]) * trace.m_TimePerPoint;
        integral[i] = sum;
    }
}

void StoreIntegral(const DString& source, const DString& target) {
    Waveform trace(0);
    const DString from = Expt.GetDataFileName(source);
    if (from.IsEmpty() || !trace.Read(from, -1) || trace.Count() == 0) {
        Tell("There is no trace " + source);
        return;
    }
    Waveform integral(trace.Count());
    Integrate(trace, integral);
    integral.m_TimePerPoint = trace.m_TimePerPoint;
    integral.m_InitialStart = trace.StartTime();
    integral.Scale();
    if (!integral.Write(Expt.GetDataFileName(target))) Tell("Could not store " + target);
}

// What the host tells the module, once they are connected.
class HostListener : public DNotify {
public:
    void Notify(NotifyType, int, const DString& text) override { Log("The host says " + text); }
};

HostListener mListener;

}  // namespace

// The two functions that the library calls by name.
extern "C" {

void RunMacro(const DString& text, int) {
    DStringArray words;
    words.split(text, " ");
    if (words.Count() == 3 && words[0] == "integral") {
        StoreIntegral(words[1], words[2]);
    } else {
        Tell("Unknown macro: " + text);
    }
}

int TvInit(int, DNotify* sink, DNotify*& returned) {
    mHost = sink;
    returned = &mListener;
    return Version;
}
}
