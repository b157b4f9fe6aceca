// A module that connects: it speaks to the sink that it is handed, and hands back one of its own.
#include "core/CoreGlobal.h"

namespace {

class ModuleSink : public DNotify {
public:
    void Notify(NotifyType, int, const DString& text) override {
        SheetData.Add(MODULE_NAME " heard " + text);
    }
};

ModuleSink mSink;

}  // namespace

extern "C" int TvInit(int value, DNotify* sink, DNotify*& returned) {
    if (sink) sink->Notify(NT_Display, value, "connected");
    returned = &mSink;
    return value + 1;
}
