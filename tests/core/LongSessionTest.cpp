// One long session of a C host, through every call of core/CFunctions.h at least once. It ends with
// the bytes of every file that it left, dates aside.
#include <regex>

#include "core/CFunctions.h"
#include "support/Support.h"
#include "system/DSystem.h"

namespace {

// A string result in a buffer of `room` bytes.
template <typename Call>
std::string Result(int room, Call call) {
    std::string buffer(static_cast<size_t>(room), '\xAA');
    int length = room;
    call(&length, buffer.data());
    EXPECT_LE(length, room);
    return buffer.substr(0, static_cast<size_t>(length));
}

std::string SessionString(int selector) {
    return Result(200, [=](int* length, char* buffer) { GetStringC(selector, length, buffer); });
}

std::string Field(const char* name) {
    return Result(200, [=](int* length, char* buffer) { GetStringDataC(name, length, buffer); });
}

std::string Filled(const char* text, int room) {
    return Result(room,
                  [=](int* length, char* buffer) { GetScalarDataSafeC(text, length, buffer); });
}

const std::string AnyDate = "mm/dd/yyyy hh:mm:ss";

// The file with each date, which is 19 characters long, replaced by another text of that length.
std::string Undated(const std::string& path) {
    static const std::regex date("[0-9]{2}/[0-9]{2}/[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}");
    return std::regex_replace(ReadBytes(path), date, AnyDate);
}

std::string Floats(const std::vector<float>& values) {
    std::string bytes;
    for (const float value : values)
        bytes += Float32(value);
    return bytes;
}

// A text of the long form, as matrices and particle groups have it.
std::string LongText(const std::string& text) {
    return Int32(static_cast<long>(text.size())) + text;
}

// A trace as SetWaveformC stores it, with the twelve numbers of its header.
std::string TraceFile(float start, float step, const std::vector<float>& params,
                      const std::string& extrema, const std::vector<float>& samples) {
    const auto param = [&](int i) { return Float32(params[static_cast<size_t>(i)]); };
    const long count = static_cast<long>(samples.size());
    std::string bytes = Int16(4) + Int16(0) + Int32(count) + param(3) + Float32(step) + param(4) +
                        Floats({1, 1}) + Float32(start) + Float32(0) + extrema + Int16(0) +
                        Float32(0) + param(0) + param(1) + param(2) + Floats({0, 0, 0, 0, 0});
    bytes += Int16(0) + Int16(19) + AnyDate + Int16(0) + Int16(28);
    for (int i = 5; i < 12; ++i)
        bytes += param(i);
    return bytes + Int16(1) + Int32(count) + Int32(1) + Floats(samples);
}

std::string MatrixFile() {
    return Int32(4) + Int32(0) + Int32(3) +  // version, extension, dimensions
           Int32(2) + Floats({0.5f, 10}) +   // rows: step, first
           Int32(3) + Floats({1, 0}) + Int32(2) + Floats({2, -1}) +
           Floats({9, 1, 1, 1, 0, 0, 0, 0, 0}) +  // extrema, calibration, unit, numbers
           LongText("") + LongText("") + LongText(AnyDate) +
           Floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3});
}

std::string ParticleFile() {
    return Int32(2) + Int32(0) + Int32(0) + Int32(3) + Int32(8) +  // Cartesian, 3 of 8 columns
           Floats({7, 8, 0, 0, 0, 0, 0}) +                         // the group's numbers
           Floats({5, 2, 3, 4, 5, 6, 7, 8}) + Floats({-1, 2, 3, 4, 5, 6, 7, 8}) + LongText("") +
           LongText("") + LongText(AnyDate) +
           Floats({1, 2, 3, 4, 5, 6, 7, 8, 5, 2, 3, 4, 5, 6, 7, 8, -1, 2, 3, 4, 5, 6, 7, 8});
}

class LongSession : public testing::Test {
protected:
    std::string m_Folder = Scratch("data/Lab");
    std::string m_Shot = m_Folder + "/Shots/Shot7";

    void Open();
    void MakeShots();
    void StoreFields();
    void StoreTraces();
    void StoreMatrix();
    void StoreParticles();
    void CheckFiles();
};

void LongSession::Open() {
    EXPECT_EQ(TestFuncC(), 316);
    CSleep(1);
    InitializeTarselC("/opt/tarsel$L");
    EXPECT_EQ(GetNodesC(2), 2);
    SetExperimentC(m_Folder.c_str());
    NotifyC(5, 0, "a line of the host");
    EXPECT_EQ(SessionString(0), "/opt/tarsel");
    EXPECT_EQ(SessionString(3), m_Folder);
    EXPECT_EQ(SessionString(4), Scratch(".Tarsel"));
    EXPECT_EQ(SessionString(5), Scratch(".Tarsel/MPIHosts.txt"));
    EXPECT_EQ(SessionString(6), "Lab");
    EXPECT_EQ(SessionString(99), "Test string from Tarsel");
}

void LongSession::MakeShots() {
    EXPECT_EQ(CreateShotC("8"), 1);
    EXPECT_EQ(CreateShotC("7"), 1);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(CreateShotC("8"), 0); }),
              "Error creating shot 8 (most likely it already exists and name did not have *) expt "
              "is " +
                  Scratch("data") + "\n");
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(SetShotC("9"), 0); }),
              "Error setting shot (most likely it does not exist)\n");
    EXPECT_EQ(SetShotC("8"), 1);
    EXPECT_EQ(SetShotC("7"), 1);
    EXPECT_EQ(SessionString(1), "7");
    EXPECT_EQ(SessionString(2), m_Shot);
}

void LongSession::StoreFields() {
    SetStringDataC("Trace", "I");
    SetStringDataC("Gone", "soon");
    SetStringDataC("Gone", "");
    SetScalarDataC("Charge", 2.5f);
    EXPECT_EQ(Field("Trace"), "I");
    EXPECT_EQ(Field("Gone::Charge"), "2.5");
    EXPECT_FLOAT_EQ(GetScalarDataC("Charge*2"), 5);
}

void LongSession::StoreTraces() {
    const float samples[] = {0, 1, 4, 1};
    SetWaveformC("I", 10, 0.5f, 4, samples);
    const float pairs[] = {0, 3, 1, -2};
    SetWaveformXYC("Line", 2, pairs);
    SetScalarDataC("I\\t1", 1.5f);
    EXPECT_FLOAT_EQ(GetScalarDataC("I\\mx*2"), 8);
    EXPECT_FLOAT_EQ(GetScalarDataC("I\\t1"), 1.5f);
    EXPECT_EQ(Filled("I\\mx", 59), "4");
    EXPECT_EQ(Filled("peak {![Trace]\\mx*2} A", 60), "peak 8 A");

    int points = 0;
    float start = 0;
    float step = 0;
    GetWaveformInfoC("I", &points, &start, &step);
    EXPECT_EQ(points, 4);
    EXPECT_EQ(start, 10);
    EXPECT_EQ(step, 0.5f);
    std::vector<float> between(3);
    GetWaveformC("I", 10.25f, 0.5f, 3, between.data());
    EXPECT_EQ(between, (std::vector<float>{0.5f, 2.5f, 2.5f}));
}

void LongSession::StoreMatrix() {
    const float values[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3};
    SetMatrixC("M", 2, 3, 2, values, 10, 0.5f, 0, 1, -1, 2);
    int n[3];
    float starts[3];
    float steps[3];
    GetMatrixInfoC("M", n, starts, steps, n + 1, starts + 1, steps + 1, n + 2, starts + 2,
                   steps + 2);
    EXPECT_EQ(std::vector<int>(n, n + 3), (std::vector<int>{2, 3, 2}));
    EXPECT_EQ(std::vector<float>(starts, starts + 3), (std::vector<float>{10, 0, -1}));
    EXPECT_EQ(std::vector<float>(steps, steps + 3), (std::vector<float>{0.5f, 1, 2}));
    std::vector<float> read(12);
    GetMatrixC("M", 2, 3, 2, read.data());
    EXPECT_EQ(read, std::vector<float>(values, values + 12));
    EXPECT_FLOAT_EQ(GetScalarDataC("M\\lc+M\\mx"), 11);
}

void LongSession::StoreParticles() {
    const std::vector<float> two = {1, 2, 3, 4, 5, 6, 7, 8, 5, 2, 3, 4, 5, 6, 7, 8};
    const std::vector<float> third = {-1, 2, 3, 4, 5, 6, 7, 8};
    SetPGroupC("P", 2, 0, two.data(), 8, 7);
    AppendPGroupC("P", 1, 0, third.data(), 0, 0);
    int total = 0;
    int geometry = -1;
    float second = 0;
    float first = 0;
    GetPGroupInfoC("P", &total, &geometry, &second, &first);
    EXPECT_EQ(total, 3);
    EXPECT_EQ(geometry, 0);
    EXPECT_EQ(second, 8);
    EXPECT_EQ(first, 7);
    std::vector<float> read(8);
    int count = 1;
    GetPGroupC("P", &count, 2, read.data());
    EXPECT_EQ(count, 1);
    EXPECT_EQ(read, third);
    EXPECT_FLOAT_EQ(GetScalarDataC("P\\np"), 3);
}

void LongSession::CheckFiles() {
    const std::string fields = "Date=" + AnyDate + "\r\nTrace=I\r\nCharge=2.5";
    EXPECT_EQ(Undated(m_Shot + "/Scalars.ini"), "[Fields]\r\n" + fields);
    EXPECT_EQ(Undated(m_Folder + "/Shots/Shot8/Scalars.ini"), "[Fields]\r\nDate=" + AnyDate);
    EXPECT_EQ(Undated(m_Folder + "/Shots/ScalarCache.ini"),
              "[Shot8]\r\nDate=" + AnyDate + "\r\n[Shot7]\r\n" + fields);
    EXPECT_EQ(ReadBytes(m_Folder + "/Lab.ini"), "");

    std::vector<float> params(12, 0.0f);
    const std::string lineExtrema = Floats({3, -2}) + Int32(1) + Int32(2) + Float32(0.5f);
    EXPECT_EQ(Undated(m_Shot + "/Line.wvf"), TraceFile(0, 1, params, lineExtrema, {3, -2}));
    params[0] = 1.5f;
    const std::string extrema = Floats({4, 0}) + Int32(3) + Int32(1) + Float32(0.5f);
    EXPECT_EQ(Undated(m_Shot + "/I.wvf"), TraceFile(10, 0.5f, params, extrema, {0, 1, 4, 1}));
    EXPECT_EQ(Undated(m_Shot + "/M.dmt"), MatrixFile());
    EXPECT_EQ(Undated(m_Shot + "/P.dpt"), ParticleFile());

    EXPECT_EQ(Names(m_Shot),
              (std::vector<std::string>{"I.wvf", "Line.wvf", "M.dmt", "P.dpt", "Scalars.ini"}));
    EXPECT_EQ(Names(m_Folder), (std::vector<std::string>{"Lab.ini", "Macros", "Query", "Shots"}));
    EXPECT_EQ(Names(m_Folder + "/Shots"),
              (std::vector<std::string>{"ScalarCache.ini", "Shot7", "Shot8"}));
    EXPECT_EQ(Names(Scratch(".Tarsel")),
              (std::vector<std::string>{"Log.txt", "MPIHosts.txt", "Tarsel.ini"}));
    EXPECT_EQ(ReadBytes(Scratch(".Tarsel/Tarsel.ini")),
              "[Startup]\r\nPath=*\r\nExperiment=*\r\nQuery=*\r\nShot=*\r\nMacro=*\r\n"
              "[Preferences]\r\nUseLocalSettings=True");
    const std::string log = ReadBytes(Scratch(".Tarsel/Log.txt"));
    EXPECT_NE(log.find("\r\na line of the host by "), std::string::npos) << log;
    const std::string self = Text(GetComputerNameD());
    EXPECT_EQ(ReadBytes(Scratch(".Tarsel/MPIHosts.txt")), self + "\n" + self);
}

}  // namespace

TEST_F(LongSession, LeavesTheFilesThatItsCallsTell) {
    Open();
    MakeShots();
    StoreFields();
    StoreTraces();
    StoreMatrix();
    StoreParticles();
    CheckFiles();
}
