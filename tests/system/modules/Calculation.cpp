// The module that runs macros: it adds what it was called with to the sheet that the library keeps
// for hosts and plug-ins.
#include "core/CoreGlobal.h"

extern "C" void RunMacro(const DString& text, int value) {
    SheetData.Add(text + " with " + DString(value));
}
