// The start-up of the library, seen from outside: in which order its static objects are made, and
// what of it can be used before that and after they are gone.
//
// How the order is seen. A static object with a destructor is handed to __cxa_atexit as soon as it
// is made. This program defines that function itself, so that the library's calls of it come here:
// each is noted and then passed on. The objects of the library are told from those of others by the
// handle of the module that registers them. Its exported objects are recognised by their addresses.
// The file-local ones have no name, but they are all DStrings, so they are told by the destructor
// that is registered with them, and from each other by the text that they hold in that moment.
//
// How the time before is reached. The functions of .preinit_array run when the program is loaded
// and bound but no static constructor has run, in any module. What is registered from there for the
// exit runs when all static objects are gone.
#include <cxxabi.h>
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "core/startup/Addresses.h"
#include "experiment/Experiment.h"
#include "support/Support.h"
#include "system/DLibrary.h"
#include "system/DSystem.h"

namespace {

using Destructor = void (*)(void*);
using RegisterFunction = int (*)(Destructor, void*, void*);

/// A static object that the library registered, as it was then.
struct Registration {
    const void* m_Object = nullptr;
    bool m_IsString = false;
    const char* m_Characters = nullptr;
    int m_Length = 0;
    std::array<char, 16> m_Text = {};
};

constinit std::array<Registration, 64> mRegistrations;
constinit size_t mCount = 0;

/// The module that holds an address.
const void* ModuleOf(const void* address) {
    Dl_info info = {};
    return dladdr(address, &info) ? info.dli_fbase : nullptr;
}

bool IsStringDestructor(Destructor destructor) {
    const auto address = reinterpret_cast<void*>(destructor);
    return address == dlsym(RTLD_DEFAULT, "_ZN7DStringD1Ev") ||
           address == dlsym(RTLD_DEFAULT, "_ZN7DStringD2Ev");
}

void Note(Destructor destructor, const void* object) {
    if (mCount == mRegistrations.size()) abort();
    Registration& entry = mRegistrations[mCount++];
    entry.m_Object = object;
    entry.m_IsString = IsStringDestructor(destructor);
    if (!entry.m_IsString) return;
    const DString& text = *static_cast<const DString*>(object);
    entry.m_Characters = text;
    entry.m_Length = text.GetLength();
    strncpy(entry.m_Text.data(), text, entry.m_Text.size() - 1);
}

}  // namespace

extern "C" int __cxa_atexit(Destructor destructor, void* object, void* module) noexcept {
    static const auto next = reinterpret_cast<RegisterFunction>(dlsym(RTLD_NEXT, "__cxa_atexit"));
    if (ModuleOf(module) == ModuleOf(dlsym(RTLD_DEFAULT, "TestFuncC"))) Note(destructor, object);
    return next(destructor, object, module);
}

namespace {

// ---- Before the first static constructor and after the last destructor

/// True if the constants are there, and strings work, the free list of their blocks included.
bool StringsWork() {
    if (npos != 2147483647 || LenLD != 2 || strcmp(LDelim, "\r\n") != 0) return false;
    if (DEmptyString != DEmpty.m_Text || static_cast<const char*>(DString()) != DEmptyString) {
        return false;
    }
    const char* freed = nullptr;
    {
        const DString shortText("abc");
        freed = shortText;
    }
    const DString again("def");
    if (static_cast<const char*>(again) != freed) return false;
    DString text(again + LDelim + "ghi" + LDelim);
    text += DEmptyString;
    DStringArray lines;
    lines.split(text, LDelim);
    return lines.Count() == 2 && strcmp(lines[0], "def") == 0 && strcmp(lines[1], "ghi") == 0 &&
           text.Mid(1, npos).GetLength() == 9;
}

constinit bool mWorkedBeforeAll = false;
constinit size_t mCountBeforeAll = 0;
/// The exit code with which the program ends where strings still work after all; negative for none.
constinit int mExitCode = -1;

void UseAfterAll() {
    if (mExitCode >= 0 && StringsWork()) _exit(mExitCode);
}

void UseBeforeAll(int, char**, char**) {
    atexit(UseAfterAll);
    mCountBeforeAll = mCount;
    mWorkedBeforeAll = StringsWork();
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const mBeforeAll)(int, char**,
                                                                       char**) = UseBeforeAll;

// ---- The objects in their order

/// What was registered when the static objects of this program were made, behind the library's.
const size_t mCountAtLoad = mCount;

std::vector<Registration> Registered() {
    return {mRegistrations.begin(), mRegistrations.begin() + static_cast<long>(mCountAtLoad)};
}

std::vector<Registration> RegisteredStrings() {
    std::vector<Registration> strings;
    for (const Registration& entry : Registered()) {
        if (entry.m_IsString) strings.push_back(entry);
    }
    return strings;
}

/// The characters that a registered string holds now.
const char* Characters(const Registration& entry) {
    return *static_cast<const DString*>(entry.m_Object);
}

constexpr size_t PathStrings = 4;

}  // namespace

TEST(StartUpOrder, BeginsWithSettingsExperimentSheetDataAndLoader) {
    const std::vector<Registration> all = Registered();
    ASSERT_GE(all.size(), 4u);
    EXPECT_EQ(all[0].m_Object, &TrIni);
    EXPECT_EQ(all[1].m_Object, &Expt);
    EXPECT_EQ(all[2].m_Object, &SheetData);
    EXPECT_EQ(all[3].m_Object, &DLib);
}

TEST(StartUpOrder, GoesOnWithThePathStringsAndTheSetsOfTheEvaluator) {
    std::vector<std::string> texts;
    for (const Registration& entry : RegisteredStrings()) {
        texts.push_back(entry.m_Text.data());
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"", "", "", "", "1234567890.", " +-*/^("}));
}

TEST(StartUpOrder, OfThePathStringsIsInstallUserWorkingComputer) {
    CoreInit("/the/install");
    const std::vector<Registration> strings = RegisteredStrings();
    ASSERT_GE(strings.size(), PathStrings);
    EXPECT_EQ(Characters(strings[0]), static_cast<const char*>(GetTarselPath()));
    EXPECT_EQ(Characters(strings[1]), static_cast<const char*>(GetUserPath()));
    EXPECT_EQ(Characters(strings[2]), static_cast<const char*>(GetWorkingPath()));
    EXPECT_EQ(Characters(strings[3]), static_cast<const char*>(GetComputerNameD()));
}

TEST(StartUp, GivesEachPathStringAnEmptyBlockOfItsOwn) {
    std::vector<Registration> strings = RegisteredStrings();
    ASSERT_GE(strings.size(), PathStrings);
    std::vector<const char*> blocks = {DEmptyString};
    for (size_t i = 0; i < PathStrings; ++i) {
        EXPECT_EQ(strings[i].m_Length, 0);
        EXPECT_EQ(std::count(blocks.begin(), blocks.end(), strings[i].m_Characters), 0);
        blocks.push_back(strings[i].m_Characters);
    }
}

TEST(StartUp, NeedsNothingOfTheLibraryForStrings) {
    EXPECT_EQ(mCountBeforeAll, 0u);
    EXPECT_TRUE(mWorkedBeforeAll);
}

TEST(End, LeavesStringsInOrderBehindTheLastDestructor) {
    constexpr int Code = 42;
    EXPECT_EXIT(
        {
            mExitCode = Code;
            exit(0);
        },
        testing::ExitedWithCode(Code), "");
}

// ---- One of each in the process

TEST(Identity, OfConstantsAndFlagsIsTheSameInAPlugIn) {
    void* plugIn = dlopen(TARSEL_TEST_PLUG_IN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(plugIn, nullptr) << dlerror();
    const auto addresses =
        reinterpret_cast<decltype(&PlugInAddresses)>(dlsym(plugIn, "PlugInAddresses"));
    ASSERT_NE(addresses, nullptr);
    Addresses there = {};
    addresses(there);
    EXPECT_EQ(there, AddressesHere());
}

TEST(Identity, OfFlagsIsTheSameInTheLibrary) {
    Silent = true;
    CoreInit("/the/install");
    EXPECT_TRUE(Names(ScratchFolder()).empty());
    Logging = true;
    CoreInit("/the/install");
    EXPECT_FALSE(Logging);
}
