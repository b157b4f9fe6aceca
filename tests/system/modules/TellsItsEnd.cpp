// A module that tells its name when it goes.
extern "C" {
/// Who is told; null for nobody.
extern void (*OnUnload)(const char* name);
}

void (*OnUnload)(const char* name) = nullptr;

namespace {

class End {
public:
    End() = default;
    End(const End&) = delete;
    End& operator=(const End&) = delete;
    ~End() {
        if (OnUnload) OnUnload(MODULE_NAME);
    }
};

const End mEnd;

}  // namespace
