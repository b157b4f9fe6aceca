// A host in C++20: fails unless the class interface is there and answers rightly. Every form of
// include that the package promises stands here.
#include <stdio.h>
#include <string.h>
#include <tarsel/Tarsel.h>

#include "Tarsel.h"
#include "core/CFunctions.h"
#include "types/DString.h"

namespace {

int mWrong = 0;

void Check(bool right, const char* what) {
    if (right) return;
    fprintf(stderr, "wrong: %s\n", what);
    ++mWrong;
}

class Listener : public DNotify {
public:
    void Notify(NotifyType type, int, const DString& text) override {
        m_Heard = type == NT_Message && text == "spoken";
    }
    bool m_Heard = false;
};

void CheckStrings() {
    DStringArray fields;
    fields.split(DString("I;2000;A"), ";");
    Check(fields.Count() == 3, "the count of fields");
    Check(fields[1] == "2000", "a field");
    Check(fields.Join("+") == "I+2000+A", "joined fields");
}

void CheckConstants() {
    Check(npos == 2147483647, "npos");
    Check(LenLD == 2 && strcmp(LDelim, "\r\n") == 0, "LDelim");
    Check(DFMax == 3.3e38f, "DFMax");
    Check(!IsVF(-DFMax) && IsVF(pi), "IsVF");
}

void CheckObjects() {
    Listener listener;
    SetNotify(&listener);
    Message("spoken");
    SetNotify(nullptr);
    Check(listener.m_Heard, "the host's sink");
    Check(Expt.GetExperimentName().IsEmpty(), "the session object");
    Check(Waveform(3).Count() == 3, "a trace");
}

}  // namespace

int main() {
    CheckStrings();
    CheckConstants();
    CheckObjects();
    Check(TestFuncC() == 316, "TestFuncC");
    return mWrong != 0;
}
