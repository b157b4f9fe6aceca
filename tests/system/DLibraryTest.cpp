// The loader of plug-in modules, the connection of a module, and the macros that a module runs. The
// modules stand in tests/system/modules.
#include "system/DLibrary.h"

#include <dlfcn.h>

#include <functional>
#include <memory>

#include "support/Support.h"
#include "system/DLLConnect.h"
#include "system/DSystem.h"

namespace {

const DString Modules(TARSEL_TEST_MODULES);
const std::string Folder = TARSEL_TEST_MODULES;
using Answer = int (*)();

std::string ModuleFile(const std::string& name) { return Folder + "/lib" + name + ".so"; }

/// A module that is loaded, whoever did it.
bool IsLoaded(const std::string& file) {
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
}

/// What the loader says about a file that it can't open.
std::string OpenError(const std::string& file) {
    EXPECT_EQ(dlopen(file.c_str(), RTLD_NOW), nullptr);
    const char* error = dlerror();
    return error ? error : "";
}

/// What it says about a symbol that a module in the test folder doesn't have.
std::string SymbolError(const std::string& file, const char* symbol) {
    void* handle = dlopen(file.c_str(), RTLD_NOW);
    EXPECT_EQ(dlsym(handle, symbol), nullptr);
    const char* error = dlerror();
    const std::string text = error ? error : "";
    dlclose(handle);
    return text;
}

int Ask(void* function) {
    if (!function) return -1;
    return reinterpret_cast<Answer>(function)();
}

std::vector<void*> Listed(const DLibrary& library) {
    return {library.m_Modules.Data(), library.m_Modules.Data() + library.m_Modules.Count()};
}

using Messages = std::vector<std::string>;

/// Whom the modules First, Second and Third tell that they go.
std::function<void(const std::string&)> mToldOfEnd;

void TellEnd(const char* name) { mToldOfEnd(name); }

class Loader : public testing::Test {
protected:
    ~Loader() override { mToldOfEnd = nullptr; }

    void* Find(const char* name, const char* symbol, int options = 0) {
        m_Ok = true;
        return m_Library.GetProc(Modules, name, symbol, m_Ok, options);
    }

    /// Loads a module that tells m_Ended of its end.
    void LoadTellingItsEnd(const char* name) {
        using Hook = void (*)(const char*);
        void* hook = Find(name, "OnUnload");
        ASSERT_NE(hook, nullptr);
        *static_cast<Hook*>(hook) = TellEnd;
        mToldOfEnd = [this](const std::string& ended) { m_Ended.push_back(ended); };
    }

    Messages Told() const { return m_Sink.Texts(NT_Message); }

    RecordingSink m_Sink;
    std::vector<std::string> m_Ended;
    DLibrary m_Library;
    bool m_Ok = true;
};

/// Tests of the global loader, with the modules' folder for an install folder.
class Installed : public testing::Test {
protected:
    Installed() {
        CoreInit(Modules);
        SetNotify(&m_Sink);
    }

    ~Installed() override {
        SetNotify(nullptr);
        DLib.UnloadModules();
        SheetData.Size(0);
    }

    static Messages Sheet() {
        Messages lines;
        for (int i = 0; i < SheetData.Count(); ++i)
            lines.push_back(Text(SheetData[i]));
        return lines;
    }

    RecordingSink m_Sink;
};

}  // namespace

// ---- The start

TEST_F(Loader, StartsWithNoHandleNoOptionsAndNoModules) {
    EXPECT_EQ(m_Library.m_Handle, nullptr);
    EXPECT_EQ(m_Library.m_Options, 0);
    EXPECT_EQ(m_Library.m_Modules.Count(), 0);
    EXPECT_EQ(DLib.m_Handle, nullptr);
    EXPECT_EQ(DLib.m_Modules.Count(), 0);
}

// ---- A symbol of a module in a folder

TEST_F(Loader, GetProcPutsLibAndSoAroundTheNameInTheFolder) {
    EXPECT_EQ(Ask(Find("Plain", "PlainAnswer")), 17);
    EXPECT_TRUE(m_Ok);
    EXPECT_TRUE(IsLoaded(ModuleFile("Plain")));
    EXPECT_FALSE(IsLoaded(Folder + "/Plain.module"));
    EXPECT_TRUE(m_Sink.m_Entries.empty());
}

TEST_F(Loader, GetProcAsNamedTakesTheFileAsItStands) {
    EXPECT_EQ(Ask(Find("Plain.module", "PlainAnswer", LoadFileAsNamed)), 17);
    EXPECT_TRUE(IsLoaded(Folder + "/Plain.module"));
    EXPECT_FALSE(IsLoaded(ModuleFile("Plain")));
}

TEST_F(Loader, GetProcLeavesTheHandleAndTheOptionsOfLoadAlone) {
    Find("Fortran", "RunThing", LoadFortranName);
    EXPECT_EQ(m_Library.m_Handle, nullptr);
    EXPECT_EQ(m_Library.m_Options, 0);
}

TEST_F(Loader, GetProcNeverSetsOkToTrue) {
    bool ok = false;
    EXPECT_NE(m_Library.GetProc(Modules, "Plain", "PlainAnswer", ok, 0), nullptr);
    EXPECT_FALSE(ok);
    m_Library.Load(Modules, "libPlain.so", ok, LoadFileAsNamed);
    EXPECT_FALSE(ok);
    EXPECT_NE(m_Library.GetProc("PlainAnswer", ok), nullptr);
    EXPECT_FALSE(ok);
}

TEST_F(Loader, GetProcOpensAndListsTheModuleAnewAtEachCall) {
    Find("Plain", "PlainAnswer");
    Find("Fortran", "RunThing");
    Find("Plain", "PlainAnswer");
    const std::vector<void*> listed = Listed(m_Library);
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0], listed[2]);
    EXPECT_NE(listed[0], listed[1]);
    m_Library.UnloadHandle(listed[0]);
    EXPECT_EQ(Listed(m_Library), listed) << "a handle that is closed by itself stays listed";
    EXPECT_TRUE(IsLoaded(ModuleFile("Plain"))) << "the other entry holds it";
    m_Library.m_Modules.Remove(0, 1);
    m_Library.UnloadModules();
    EXPECT_FALSE(IsLoaded(ModuleFile("Plain")));
}

TEST_F(Loader, GetProcOfAMissingModuleIsNullWithAMessage) {
    EXPECT_EQ(Find("Absent", "PlainAnswer"), nullptr);
    EXPECT_FALSE(m_Ok);
    const std::string file = ModuleFile("Absent");
    EXPECT_EQ(Told(), Messages{"Could not load module " + file + ": " + OpenError(file)});
    EXPECT_EQ(m_Library.m_Modules.Count(), 0);
    EXPECT_FALSE(Exists(Scratch("Log.txt")));
}

TEST_F(Loader, GetProcOfAMissingSymbolKeepsTheModuleOpenAndUnlisted) {
    EXPECT_EQ(Find("Plain", "Absent"), nullptr);
    EXPECT_FALSE(m_Ok);
    const std::string file = ModuleFile("Plain");
    EXPECT_EQ(Told(), Messages{"Could not load symbol Absent: " + SymbolError(file, "Absent")});
    EXPECT_EQ(m_Library.m_Modules.Count(), 0);
    m_Library.UnloadModules();
    EXPECT_TRUE(IsLoaded(file));
}

TEST_F(Loader, SymbolWhoseAddressIsNullCountsAsFound) {
    EXPECT_EQ(Find("Plain", "NullSymbol"), nullptr);
    EXPECT_TRUE(m_Ok);
    EXPECT_TRUE(m_Sink.m_Entries.empty());
    EXPECT_EQ(m_Library.m_Modules.Count(), 1);
}

TEST_F(Loader, FortranNameIsInSmallLettersWithAnUnderscore) {
    EXPECT_EQ(Ask(Find("Fortran", "RunThing", LoadFortranName)), 16);
    EXPECT_EQ(Ask(Find("Fortran", "RunThing")), 0);
}

TEST_F(Loader, FortranNameThatIsMissingIsToldAsGiven) {
    EXPECT_EQ(Find("Plain", "RunThing", LoadFortranName), nullptr);
    EXPECT_EQ(Told(), Messages{"Could not load symbol RunThing: " +
                               SymbolError(ModuleFile("Plain"), "runthing_")});
}

TEST_F(Loader, ErrorsOfTheLoaderAreReadOnceAndOldOnesDoNotCount) {
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "no such symbol"), nullptr);
    EXPECT_NE(Find("Plain", "PlainAnswer"), nullptr);
    EXPECT_TRUE(m_Ok);
    Find("Absent", "PlainAnswer");
    EXPECT_EQ(dlerror(), nullptr);
    Find("Plain", "Absent");
    EXPECT_EQ(dlerror(), nullptr);
}

TEST_F(Loader, NullSymbolNameIsAMissingOne) {
    EXPECT_EQ(Find("Plain", nullptr), nullptr);
    EXPECT_FALSE(m_Ok);
    EXPECT_EQ(Told().size(), 1u);
}

// ---- How a module is bound

TEST_F(Loader, ModuleWithAMissingFunctionOpensOnlyWhenBoundLazily) {
    EXPECT_EQ(Find("Needs", "AskProvider"), nullptr);
    EXPECT_FALSE(m_Ok);
    EXPECT_NE(Find("Needs", "AskProvider", LoadLazily), nullptr);
    EXPECT_TRUE(m_Ok);
}

TEST_F(Loader, ModuleLoadedGloballyServesLaterOnes) {
    Find("Provider", "Provided");
    EXPECT_EQ(Find("Needs", "AskProvider"), nullptr);
    Find("Provider", "Provided", LoadGlobally);
    EXPECT_EQ(Ask(Find("Needs", "AskProvider")), 32);
}

TEST_F(Loader, OptionsWithoutANameNeverReachTheLoader) {
    constexpr int Named = LoadLazily | LoadFileAsNamed | LoadFortranName | LoadGlobally;
    EXPECT_EQ(Ask(Find("Plain", "PlainAnswer", ~Named)), 17);
    m_Library.UnloadModules();
    EXPECT_FALSE(IsLoaded(ModuleFile("Plain")));
}

// ---- One module by itself

TEST_F(Loader, LoadAsNamedTakesTheFileInTheFolder) {
    m_Library.Load(Modules, "Plain.module", m_Ok, LoadFileAsNamed | LoadGlobally);
    EXPECT_TRUE(m_Ok);
    EXPECT_EQ(m_Library.m_Options, LoadFileAsNamed | LoadGlobally);
    EXPECT_EQ(Ask(m_Library.GetProc("PlainAnswer", m_Ok)), 17);
    EXPECT_EQ(m_Library.m_Modules.Count(), 0);
}

TEST_F(Loader, LoadByNameIgnoresTheFolder) {
    void* known = dlopen(ModuleFile("Known").c_str(), RTLD_NOW);
    ASSERT_NE(known, nullptr);
    m_Library.Load("/no/such/folder", "Known", m_Ok, 0);
    EXPECT_TRUE(m_Ok);
    EXPECT_EQ(m_Library.m_Handle, known);
    dlclose(known);
}

TEST_F(Loader, LoadThatFailsTellsTheHostAndTheLog) {
    m_Library.Load(Modules, "Plain", m_Ok, 0);
    EXPECT_FALSE(m_Ok);
    EXPECT_EQ(m_Library.m_Handle, nullptr);
    const std::string told = "Could not load module libPlain.so: " + OpenError("libPlain.so");
    EXPECT_EQ(Told(), Messages{told});
    EXPECT_EQ(ReadBytes(Scratch("Log.txt")).find(told + " by "), 0u);
}

TEST_F(Loader, LoadThatFailsForgetsTheModuleBefore) {
    m_Library.Load(Modules, "libPlain.so", m_Ok, LoadFileAsNamed);
    void* before = m_Library.m_Handle;
    m_Library.Load(Modules, "libAbsent.so", m_Ok, LoadFileAsNamed);
    EXPECT_EQ(m_Library.m_Handle, nullptr);
    EXPECT_TRUE(IsLoaded(ModuleFile("Plain")));
    m_Library.UnloadHandle(before);
    EXPECT_FALSE(IsLoaded(ModuleFile("Plain")));
}

TEST_F(Loader, HostMayLoadAnotherModuleWhenItHearsOfAFailure) {
    class Rescue : public DNotify {
    public:
        explicit Rescue(DLibrary& library) : m_Loader(library) {}
        void Notify(NotifyType, int, const DString&) override {
            bool ok = true;
            m_Loader.Load(Modules, "libPlain.so", ok, LoadFileAsNamed);
        }
        DLibrary& m_Loader;
    };
    Rescue rescue(m_Library);
    SetNotify(&rescue);
    m_Library.Load(Modules, "libAbsent.so", m_Ok, LoadFileAsNamed);
    EXPECT_FALSE(m_Ok);
    EXPECT_EQ(Ask(m_Library.GetProc("PlainAnswer", m_Ok)), 17);
}

TEST_F(Loader, SymbolWithNothingLoadedIsNullWithoutAMessage) {
    EXPECT_EQ(m_Library.GetProc("PlainAnswer", m_Ok), nullptr);
    EXPECT_FALSE(m_Ok);
    EXPECT_TRUE(m_Sink.m_Entries.empty());
}

TEST_F(Loader, SymbolOfTheLoadedModuleIsNamedAsTheOptionsOfLoadSay) {
    m_Library.Load(Modules, "libFortran.so", m_Ok, LoadFileAsNamed | LoadFortranName);
    EXPECT_EQ(Ask(m_Library.GetProc("RunThing", m_Ok)), 16);
    EXPECT_TRUE(m_Ok);
    EXPECT_EQ(m_Library.GetProc("Absent", m_Ok), nullptr);
    EXPECT_FALSE(m_Ok);
    EXPECT_EQ(Told(), Messages{"Could not load symbol Absent: " +
                               SymbolError(ModuleFile("Fortran"), "absent_")});
}

TEST_F(Loader, SymbolOfTheLoadedModuleWhoseAddressIsNullCountsAsFound) {
    m_Library.Load(Modules, "libPlain.so", m_Ok, LoadFileAsNamed);
    EXPECT_EQ(m_Library.GetProc("NullSymbol", m_Ok), nullptr);
    EXPECT_TRUE(m_Ok);
    EXPECT_TRUE(m_Sink.m_Entries.empty());
}

// ---- Unloading

TEST_F(Loader, UnloadingClosesTheListedModulesInOrder) {
    for (const char* name : {"Second", "Third", "First"}) {
        LoadTellingItsEnd(name);
    }
    m_Library.m_Modules.Add(nullptr);
    m_Library.UnloadModules();
    EXPECT_EQ(m_Ended, (Messages{"Second", "Third", "First"}));
    EXPECT_EQ(m_Library.m_Modules.Count(), 0);
    m_Library.UnloadModules();
}

TEST_F(Loader, UnloadingTheListLeavesTheLoadedModule) {
    m_Library.Load(Modules, "libPlain.so", m_Ok, LoadFileAsNamed);
    Find("Fortran", "RunThing");
    m_Library.UnloadModules();
    EXPECT_EQ(Ask(m_Library.GetProc("PlainAnswer", m_Ok)), 17);
    EXPECT_FALSE(IsLoaded(ModuleFile("Fortran")));
}

TEST_F(Loader, UnloadingNoHandleDoesNothing) {
    m_Library.UnloadHandle(nullptr);
    EXPECT_EQ(dlerror(), nullptr);
}

TEST_F(Loader, ModuleThatGoesMayUnloadTheOthers) {
    for (const char* name : {"First", "Second", "Third"}) {
        LoadTellingItsEnd(name);
    }
    mToldOfEnd = [this](const std::string& ended) {
        m_Ended.push_back(ended);
        m_Library.UnloadModules();
    };
    m_Library.UnloadModules();
    EXPECT_EQ(m_Ended, (Messages{"First", "Second", "Third"}));
    EXPECT_EQ(m_Library.m_Modules.Count(), 0);
}

TEST_F(Loader, ModuleThatGoesMayLoadOthersWhichStayListed) {
    LoadTellingItsEnd("First");
    LoadTellingItsEnd("Second");
    mToldOfEnd = [this](const std::string& ended) {
        m_Ended.push_back(ended);
        for (int i = 0; i < 100; ++i)
            Find("Plain", "PlainAnswer");
    };
    m_Library.UnloadModules();
    EXPECT_EQ(m_Ended, (Messages{"First", "Second"}));
    EXPECT_EQ(m_Library.m_Modules.Count(), 200);
    m_Library.UnloadModules();
    EXPECT_FALSE(IsLoaded(ModuleFile("Plain")));
}

TEST_F(Loader, EndOfALoaderClosesItsListAndThenItsLoadedModule) {
    auto library = std::make_unique<DLibrary>();
    library->Load(Modules, "libFirst.so", m_Ok, LoadFileAsNamed);
    library->GetProc(Modules, "Second", "OnUnload", m_Ok, 0);
    LoadTellingItsEnd("First");
    LoadTellingItsEnd("Second");
    m_Library.UnloadModules();
    EXPECT_EQ(m_Ended, Messages{});
    library.reset();
    EXPECT_EQ(m_Ended, (Messages{"Second", "First"}));
}

// ---- Connecting a module

TEST_F(Installed, GetProcIsThatOfTheGlobalLoader) {
    bool ok = true;
    EXPECT_EQ(Ask(GetProc(Modules, "Plain", "PlainAnswer", ok, 0)), 17);
    EXPECT_TRUE(ok);
    EXPECT_EQ(DLib.m_Modules.Count(), 1);
}

TEST_F(Installed, ConnectHandsOnTheValueAndTheSinkAndTakesOneBack) {
    DNotify* returned = nullptr;
    EXPECT_EQ(DLLConnect("Connect", 41, &m_Sink, returned), 42);
    EXPECT_EQ(m_Sink.m_Entries, (std::vector<RecordingSink::Entry>{{NT_Display, 41, "connected"}}));
    ASSERT_NE(returned, nullptr);
    returned->Notify(NT_Display, 0, "the host");
    EXPECT_EQ(Sheet(), Messages{"Connect heard the host"});
    EXPECT_EQ(DLib.m_Modules.Count(), 1);
}

TEST_F(Installed, ConnectTakesAPathBelowTheInstallFolder) {
    DNotify* returned = nullptr;
    EXPECT_EQ(DLLConnect("plug/ins/Below", -8, nullptr, returned), -7);
    returned->Notify(NT_Display, 0, "the host");
    EXPECT_EQ(Sheet(), Messages{"Below heard the host"});
}

TEST_F(Installed, ConnectOfAMissingModuleGivesZero) {
    DNotify* returned = &m_Sink;
    EXPECT_EQ(DLLConnect("ins/Absent", 1, nullptr, returned), 0);
    EXPECT_EQ(returned, &m_Sink);
    const std::string file = Folder + "/ins/libAbsent.so";
    EXPECT_EQ(m_Sink.Texts(NT_Message),
              Messages{"Could not load module " + file + ": " + OpenError(file)});
}

TEST_F(Installed, ConnectOfAModuleWithoutTheEntryGivesZero) {
    DNotify* returned = nullptr;
    EXPECT_EQ(DLLConnect("Plain", 1, nullptr, returned), 0);
    EXPECT_EQ(m_Sink.Texts(NT_Message), Messages{"Could not load symbol TvInit: " +
                                                 SymbolError(ModuleFile("Plain"), "TvInit")});
}

TEST_F(Installed, ConnectOfAnEntryWhoseAddressIsNullGivesZero) {
    DNotify* returned = nullptr;
    EXPECT_EQ(DLLConnect("macroless/Calculation", 1, nullptr, returned), 0);
    EXPECT_TRUE(m_Sink.m_Entries.empty());
}

// ---- Macros

TEST_F(Installed, MacroIsRunByTheModuleCalculation) {
    CFNotify sink;
    sink.Notify(NT_RunMacro, 5, "peak(I)");
    sink.Notify(NT_RunMacro, 0, "peak(U)");
    EXPECT_EQ(Sheet(), (Messages{"peak(I) with 0", "peak(U) with 0"}));
    EXPECT_EQ(DLib.m_Modules.Count(), 2);
}

TEST_F(Installed, MacroWithoutATextLoadsNothing) {
    CFNotify().Notify(NT_RunMacro, 0, "");
    EXPECT_EQ(DLib.m_Modules.Count(), 0);
}

TEST_F(Installed, MacroCallbackRunsNoMacro) {
    CFNotify sink;
    SetNotify(&sink);
    MacroCallback("peak(I)");
    EXPECT_EQ(DLib.m_Modules.Count(), 0);
    EXPECT_EQ(Sheet(), Messages{});
}

TEST_F(Installed, MacroWithoutTheModuleIsTold) {
    SetTarselPath("/no/such/install");
    CFNotify().Notify(NT_RunMacro, 0, "peak(I)");
    const std::string file = "/no/such/install/libCalculation.so";
    EXPECT_EQ(m_Sink.Texts(NT_Message),
              Messages{"Could not load module " + file + ": " + OpenError(file)});
}

TEST_F(Installed, MacroInAModuleWithoutTheFunctionIsTold) {
    SetTarselPath(Modules + "/macroless");
    CFNotify().Notify(NT_RunMacro, 0, "peak(I)");
    EXPECT_EQ(m_Sink.Texts(NT_Message),
              Messages{"Could not load symbol RunMacro: " +
                       SymbolError(Folder + "/macroless/libCalculation.so", "RunMacro")});
    EXPECT_EQ(DLib.m_Modules.Count(), 0);
}
