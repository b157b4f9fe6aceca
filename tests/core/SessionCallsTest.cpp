// The C calls of the session: its strings, the experiment, shots and fields.
#include <string.h>
#include <unistd.h>

#include "core/OpenSession.h"
#include "experiment/Experiment.h"
#include "system/DIni.h"
#include "system/DSystem.h"

namespace {

std::string SessionString(int selector, int room = 4000) {
    return ResultOf([=](int* length, char* buffer) { GetStringC(selector, length, buffer); }, room);
}

std::string Field(const char* name, int room = 4000) {
    return ResultOf([=](int* length, char* buffer) { GetStringDataC(name, length, buffer); }, room);
}

/// Makes a folder in the scratch folder and goes there.
void EnterFolder(const std::string& name) {
    ASSERT_EQ(chdir(MakeFolder(Scratch(name)).c_str()), 0);
}

/// The second sink of a host, which remembers what it was told.
class ShotSink : public QNotify {
public:
    ShotSink() { SetQNotify(this); }
    virtual ~ShotSink() { SetQNotify(nullptr); }
    void ShotChanged(DString name, int a, int b, int c) override {
        EXPECT_EQ(a, -1);
        EXPECT_EQ(b, 0);
        EXPECT_EQ(c, 0);
        m_Names.push_back(Text(name));
        m_LogWhenTold = Exists(LogFile()) ? ReadBytes(LogFile()) : "";
    }
    static std::string LogFile() { return Scratch(".Tarsel/Log.txt"); }

    std::vector<std::string> m_Names;
    std::string m_LogWhenTold;
};

/// A session of a host that links the class interface and starts it by itself.
class LinkedHost : public testing::Test {
protected:
    void SetUp() override {
        CoreInit("/the/install");
        Expt.SetExperimentFolder(Scratch("Lab").c_str());
    }
};

}  // namespace

// ---- String results

TEST(StringArgs, CopiesATextThatFits) {
    DString text("four");
    char buffer[] = "xxxxxxxx";
    int length = 8;
    StringArgs(text, length, buffer);
    EXPECT_EQ(length, 4);
    EXPECT_STREQ(buffer, "fourxxxx");
    EXPECT_EQ(Text(text), "four");
}

TEST(StringArgs, FillsTheRoomWithoutATerminator) {
    DString text("four");
    char buffer[] = "xxxxxxxx";
    int length = 4;
    StringArgs(text, length, buffer);
    EXPECT_EQ(length, 4);
    EXPECT_STREQ(buffer, "fourxxxx");
}

TEST(StringArgs, CutsTheTextToTheRoom) {
    DString text("four");
    char buffer[] = "xxxxxxxx";
    int length = 3;
    StringArgs(text, length, buffer);
    EXPECT_EQ(length, 3);
    EXPECT_STREQ(buffer, "fouxxxxx");
    EXPECT_EQ(Text(text), "fou");
}

TEST(StringArgs, LeavesSharesOfTheTextAlone) {
    const DString whole("four");
    DString text(whole);
    char buffer[2];
    int length = 2;
    StringArgs(text, length, buffer);
    EXPECT_EQ(Text(text), "fo");
    EXPECT_EQ(Text(whole), "four");
}

TEST(StringArgs, TakesNegativeRoomAndAMissingBufferForNoRoom) {
    char buffer[] = "xxxxxxxx";
    for (const int room : {0, -1, INT_MIN}) {
        DString text("four");
        int length = room;
        StringArgs(text, length, buffer);
        EXPECT_EQ(length, 0);
        EXPECT_EQ(Text(text), "");
    }
    EXPECT_STREQ(buffer, "xxxxxxxx");
    DString text("four");
    int length = 100;
    StringArgs(text, length, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(StringArgs, CopiesZeroBytes) {
    DString text("abc");
    text.SetChar(1, '\0');
    char buffer[] = "xxxx";
    int length = 4;
    StringArgs(text, length, buffer);
    EXPECT_EQ(std::string(buffer, 4), std::string("a\0cx", 4));
}

// ---- The strings of the session

TEST_F(OpenShot, StringsAreChosenByTheSelector) {
    const std::vector<std::pair<int, std::string>> expected = {
        {0, "/the/install"},
        {1, "7"},
        {2, Scratch("Lab/Shots/Shot7")},
        {3, Scratch("Lab")},
        {4, Scratch(".Tarsel")},
        {5, Scratch(".Tarsel/MPIHosts.txt")},
        {6, "Lab"},
        {99, "Test string from Tarsel"},
    };
    for (const auto& [selector, text] : expected) {
        EXPECT_EQ(SessionString(selector), text) << selector;
    }
}

TEST_F(OpenShot, OtherSelectorsGiveAnEmptyString) {
    for (const int selector : {7, 8, 98, 100, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(SessionString(selector), "") << selector;
    }
}

TEST(SessionStrings, AreEmptyBeforeAStartButForTheSettingsAndTheTest) {
    for (const int selector : {0, 1, 2, 3, 6}) {
        EXPECT_EQ(SessionString(selector), "") << selector;
    }
    EXPECT_EQ(SessionString(4), Scratch(".Tarsel"));
    EXPECT_EQ(SessionString(5), Scratch(".Tarsel/MPIHosts.txt"));
    EXPECT_EQ(SessionString(99), "Test string from Tarsel");
}

TEST(SessionStrings, AreCutToTheRoom) {
    EXPECT_EQ(SessionString(99, 4), "Test");
    EXPECT_EQ(SessionString(99, 23), "Test string from Tarsel");
    EXPECT_EQ(SessionString(99, 22), "Test string from Tarse");
    EXPECT_EQ(SessionString(99, 0), "");
    EXPECT_EQ(SessionString(99, -5), "");
    EXPECT_EQ(SessionString(99, INT_MIN), "");
    EXPECT_EQ(SessionString(99, 100), "Test string from Tarsel");
}

TEST(SessionStrings, MissingPointersAreNotTouched) {
    int length = 100;
    GetStringC(99, &length, nullptr);
    EXPECT_EQ(length, 0);
    char buffer[] = "xxxx";
    GetStringC(99, nullptr, buffer);
    EXPECT_STREQ(buffer, "xxxx");
}

// ---- Nodes

TEST_F(OpenExperiment, NodesCallReturnsTheCountAsItWas) {
    for (const int count : {3, 0, -1, INT_MIN}) {
        EXPECT_EQ(GetNodesC(count), count);
    }
}

TEST_F(OpenExperiment, NodesCallWritesTheNodesFile) {
    const std::string self = Text(GetComputerNameD());
    GetNodesC(0);
    EXPECT_EQ(ReadBytes(SessionString(5)), self);
    GetNodesC(3);
    EXPECT_EQ(ReadBytes(SessionString(5)), self + "\n" + self + "\n" + self);
}

TEST_F(OpenExperiment, NodesAreThoseOfTheMainSettings) {
    TrIni.SetSection("Nodes");
    TrIni.SetKeyValue("alpha", "Node");
    TrIni.SetKeyValue("beta", "Node");
    GetNodesC(3);
    EXPECT_EQ(ReadBytes(SessionString(5)), "alpha\nbeta\nalpha");
}

// ---- The experiment

TEST(ExperimentCall, DoesNothingAtAllBeforeAStart) {
    EXPECT_EQ(PrintedBy([] { SetExperimentC(Scratch("Lab").c_str()); }), "");
    EXPECT_EQ(SessionString(3), "");
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST(ExperimentCall, DoesNothingInASessionThatTheHostStartedByItself) {
    CoreInit("/the/install");
    SetExperimentC(Scratch("Lab").c_str());
    EXPECT_EQ(SessionString(3), "");
    EXPECT_FALSE(Exists(Scratch("Lab")));
}

TEST(ExperimentCall, WorksInEverySessionBehindTheFirstFromOutside) {
    InitializeTarselC("/the/install");
    CoreInit("/another");
    SetExperimentC(Scratch("Lab").c_str());
    EXPECT_EQ(SessionString(3), Scratch("Lab"));
}

TEST_F(OpenExperiment, IsOpenedWithItsFoldersAndNoShot) {
    EXPECT_TRUE(Exists(Scratch("Lab/Shots")));
    EXPECT_EQ(SessionString(6), "Lab");
    EXPECT_EQ(SessionString(1), "");
    EXPECT_EQ(SessionString(2), "");
}

TEST_F(OpenExperiment, IsClosedByAnEmptyOrNullFolder) {
    SetExperimentC("");
    EXPECT_EQ(SessionString(3), "");
    EXPECT_EQ(SessionString(6), "");
    SetExperimentC(Scratch("Lab").c_str());
    SetExperimentC(nullptr);
    EXPECT_EQ(SessionString(3), "");
}

// ---- Creating shots

TEST_F(OpenExperiment, CreatedShotIsMadeAndSelected) {
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC("8"), 1); }), "");
    EXPECT_TRUE(Exists(Shot("8")));
    EXPECT_EQ(SessionString(1), "8");
    EXPECT_EQ(SessionString(2), Shot("8"));
}

TEST_F(OpenShot, CreatingAShotThatExistsFailsWithAMessage) {
    ASSERT_EQ(CreateShotC("8"), 1);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC("7"), 0); }),
              "Error creating shot 7 (most likely it already exists and name did not have *) expt "
              "is " +
                  ScratchFolder() + "\n");
    EXPECT_EQ(SessionString(1), "8");
}

TEST_F(OpenShot, CreatingAShotThatExistsSucceedsWithAStar) {
    ASSERT_EQ(CreateShotC("8"), 1);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC("*7"), 1); }), "");
    EXPECT_EQ(SessionString(1), "7");
}

TEST_F(OpenShot, CreatingAShotThatExistsSucceedsWhileItLacksTheNamedData) {
    EXPECT_EQ(CreateShotC("7\\I"), 1);
    EXPECT_EQ(SessionString(1), "7");
    WriteBytes(Shot("7") + "/I.wvf", "");
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC("7\\I"), 0); }).substr(0, 25),
              "Error creating shot 7\\I (");
    EXPECT_EQ(CreateShotC("*7\\I"), 1);
}

TEST(CreateShotCall, WithoutAnExperimentFailsWithTheNameAsGiven) {
    InitializeTarselC("/the/install");
    const std::string end = " (most likely it already exists and name did not have *) expt is \n";
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC("*8"), 0); }), "Error creating shot *8" + end);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC("*"), 0); }), "Error creating shot *" + end);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC(nullptr), 0); }), "Error creating shot " + end);
}

TEST_F(OpenExperiment, ShotNamedByAStarAloneTakesTheCurrentDirectorysName) {
    EnterFolder("below/Run12");
    EXPECT_EQ(CreateShotC("*"), 1);
    EXPECT_EQ(SessionString(1), "Run12");
    EXPECT_EQ(CreateShotC("*"), 1) << "the request is a forced one";
}

TEST_F(OpenExperiment, ShotNamedByAStarAloneLosesThePrefixInAnyCase) {
    for (const char* folder : {"ShotABC", "shotDEF", "SHOTghi"}) {
        EnterFolder(folder);
        EXPECT_EQ(CreateShotC("*"), 1);
        EXPECT_EQ(SessionString(1), std::string(folder).substr(4));
    }
    EnterFolder("Shot");
    EXPECT_EQ(CreateShotC("*"), 1);
}

TEST_F(OpenExperiment, ShotNamedByAStarAloneLosesThePrefixOnce) {
    EnterFolder("ShotShot1");
    EXPECT_EQ(CreateShotC("*"), 1);
    EXPECT_EQ(SessionString(1), "Shot1");
}

TEST_F(OpenExperiment, ShotNamedByAStarAndMoreIsNotTheCurrentDirectory) {
    EnterFolder("ShotABC");
    EXPECT_EQ(CreateShotC("*1"), 1);
    EXPECT_EQ(SessionString(1), "1");
}

TEST_F(OpenExperiment, EmptyAndNullShotNamesCrashNothing) {
    CreateShotC("");
    CreateShotC(nullptr);
    SetShotC("");
    SetShotC(nullptr);
    EXPECT_EQ(CreateShotC("8"), 1);
}

// ---- Selecting shots

TEST_F(OpenShot, ShotIsSelectedByItsName) {
    ASSERT_EQ(CreateShotC("8"), 1);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(SetShotC("7"), 1); }), "");
    EXPECT_EQ(SessionString(1), "7");
    EXPECT_EQ(SetShotC("*8"), 1);
    EXPECT_EQ(SessionString(1), "8");
}

TEST_F(OpenShot, SelectingAMissingShotFailsWithAMessageAndKeepsTheSelection) {
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(SetShotC("9"), 0); }),
              "Error setting shot (most likely it does not exist)\n");
    EXPECT_EQ(SessionString(1), "7");
}

TEST(SetShotCall, WithoutAnExperimentFails) {
    InitializeTarselC("/the/install");
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(SetShotC("7"), 0); }),
              "Error setting shot (most likely it does not exist)\n");
}

// ---- The second sink

TEST_F(LinkedHost, IsToldOfACreatedShotWithoutTheStar) {
    ShotSink sink;
    EXPECT_EQ(CreateShotC("7"), 1);
    EXPECT_EQ(CreateShotC("*8"), 1);
    EXPECT_EQ(CreateShotC("*9\\I"), 1);
    EXPECT_EQ(sink.m_Names, (std::vector<std::string>{"7", "8", "9\\I"}));
    EXPECT_EQ(sink.m_LogWhenTold, "");
}

TEST_F(LinkedHost, IsToldOfAShotNamedAfterTheCurrentDirectory) {
    EnterFolder("ShotABC");
    ShotSink sink;
    EXPECT_EQ(CreateShotC("*"), 1);
    EXPECT_EQ(sink.m_Names, std::vector<std::string>{"ABC"});
}

TEST_F(LinkedHost, IsToldOfASelectedShotByTheNameAsGiven) {
    ASSERT_EQ(CreateShotC("7"), 1);
    ShotSink sink;
    EXPECT_EQ(SetShotC("*7"), 1);
    EXPECT_EQ(SetShotC("Shots/7"), 1);
    EXPECT_EQ(sink.m_Names, (std::vector<std::string>{"*7", "Shots/7"}));
}

TEST_F(LinkedHost, LogSaysHereBeforeASelectionIsTold) {
    ASSERT_EQ(CreateShotC("7"), 1);
    ShotSink sink;
    ASSERT_EQ(SetShotC("7"), 1);
    EXPECT_EQ(sink.m_LogWhenTold.substr(0, 8), "here by ");
    EXPECT_EQ(ReadBytes(ShotSink::LogFile()), sink.m_LogWhenTold);
}

TEST_F(LinkedHost, IsNotToldOfFailures) {
    ASSERT_EQ(CreateShotC("7"), 1);
    ShotSink sink;
    RecordingSink messages;
    EXPECT_EQ(CreateShotC("7"), 0);
    EXPECT_EQ(SetShotC("9"), 0);
    EXPECT_EQ(messages.Texts(NT_Message).size(), 2u);
    EXPECT_TRUE(sink.m_Names.empty());
    EXPECT_FALSE(Exists(ShotSink::LogFile()));
}

TEST_F(LinkedHost, WithoutASecondSinkNothingIsLogged) {
    ASSERT_EQ(CreateShotC("7"), 1);
    ASSERT_EQ(SetShotC("7"), 1);
    EXPECT_FALSE(Exists(ShotSink::LogFile()));
}

TEST_F(LinkedHost, MayCallBackWhileItIsTold) {
    class CallingSink : public ShotSink {
    public:
        void ShotChanged(DString name, int a, int b, int c) override {
            ShotSink::ShotChanged(name, a, b, c);
            if (name == "7") m_Created = CreateShotC("8");
            if (name == "8") SetQNotify(nullptr);
        }
        int m_Created = 0;
    } sink;
    EXPECT_EQ(CreateShotC("7"), 1);
    EXPECT_EQ(sink.m_Created, 1);
    EXPECT_EQ(SetShotC("7"), 1);
    EXPECT_EQ(sink.m_Names, (std::vector<std::string>{"7", "8"}));
}

TEST_F(OpenExperiment, HostFromOutsideIsNeverTold) {
    ShotSink sink;
    const std::string before = ReadBytes(ShotSink::LogFile());
    EXPECT_EQ(CreateShotC("7"), 1);
    EXPECT_EQ(SetShotC("7"), 1);
    EXPECT_TRUE(sink.m_Names.empty());
    EXPECT_EQ(ReadBytes(ShotSink::LogFile()), before);
}

TEST_F(OpenExperiment, HostFromOutsideIsNotToldBehindAnotherStartOfItsOwn) {
    CoreInit("/another");
    ShotSink sink;
    EXPECT_EQ(CreateShotC("7"), 1);
    EXPECT_TRUE(sink.m_Names.empty());
}

// ---- Fields

TEST_F(OpenShot, FieldIsReadBackAndCutToTheRoom) {
    SetStringDataC("Operator", "A. Person");
    EXPECT_EQ(Field("Operator"), "A. Person");
    EXPECT_EQ(Field("operator"), "A. Person");
    EXPECT_EQ(Field("Operator", 4), "A. P");
    EXPECT_EQ(Field("Operator", 0), "");
    EXPECT_EQ(Field("Operator", -1), "");
}

TEST_F(OpenShot, FieldThatIsMissingIsEmpty) {
    EXPECT_EQ(Field("Missing"), "");
    EXPECT_EQ(Field(""), "");
    EXPECT_EQ(Field(nullptr), "");
}

TEST_F(OpenShot, FieldOfTheShotAndTheSecondChoiceOfAField) {
    SetStringDataC("b", "second");
    EXPECT_EQ(Field("Shot"), "7");
    EXPECT_EQ(Field("a::b"), "second");
    SetStringDataC("a", "first");
    EXPECT_EQ(Field("a::b"), "first");
}

TEST_F(OpenShot, FieldIsDeletedByAnEmptyOrNullValue) {
    for (const char* nothing : {"", static_cast<const char*>(nullptr)}) {
        SetStringDataC("a", "text");
        ASSERT_EQ(Field("a"), "text");
        SetStringDataC("a", nothing);
        EXPECT_EQ(Field("a"), "");
    }
}

TEST_F(OpenShot, FieldWithoutANameIsNotStored) {
    const std::string before = ReadBytes(Shot("7") + "/Scalars.ini");
    SetStringDataC(nullptr, "text");
    SetStringDataC("", "text");
    EXPECT_EQ(ReadBytes(Shot("7") + "/Scalars.ini"), before);
}

TEST_F(OpenShot, FieldKeepsNoPointerToItsArguments) {
    char name[] = "a";
    char value[] = "text";
    SetStringDataC(name, value);
    name[0] = 'b';
    value[0] = 'T';
    EXPECT_EQ(Field("a"), "text");
    EXPECT_EQ(Field("b"), "");
}

TEST_F(OpenShot, FieldMissingPointersAreNotTouched) {
    SetStringDataC("a", "text");
    int length = 100;
    GetStringDataC("a", &length, nullptr);
    EXPECT_EQ(length, 0);
    char buffer[] = "xxxx";
    GetStringDataC("a", nullptr, buffer);
    EXPECT_STREQ(buffer, "xxxx");
}

TEST(FieldCalls, WithoutAShotDoNothing) {
    SetStringDataC("a", "text");
    EXPECT_EQ(Field("a"), "");
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}
