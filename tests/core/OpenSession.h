/// What the tests of the C calls share: a session with an experiment, and string results.
#pragma once

#include <climits>
#include <string>
#include <vector>

#include "core/CFunctions.h"
#include "support/Support.h"

/// A session of a C host in the experiment Lab.
class OpenExperiment : public testing::Test {
protected:
    void SetUp() override {
        InitializeTarselC("/the/install");
        SetExperimentC(Scratch("Lab").c_str());
    }

    static std::string Shot(const std::string& name) { return Scratch("Lab/Shots/Shot" + name); }
};

/// The same with the shot 7 selected.
class OpenShot : public OpenExperiment {
protected:
    void SetUp() override {
        OpenExperiment::SetUp();
        ASSERT_EQ(CreateShotC("7"), 1);
        m_FilesAtStart = Names(Shot("7"));
    }

    /// No file was made: in the shot, beside it, or where the process stands.
    void ExpectNoNewFiles() {
        EXPECT_EQ(Names(Shot("7")), m_FilesAtStart);
        EXPECT_EQ(Names(Scratch("Lab/Shots")).size(), 2u) << "the shot and the fields of the group";
        EXPECT_EQ(Names(ScratchFolder()), (std::vector<std::string>{".Tarsel", "Lab"}));
    }

private:
    std::vector<std::string> m_FilesAtStart;
};

/// The string result of `call(length, buffer)` for a room, and nothing else written.
template <typename Call>
std::string ResultOf(Call call, int room = 4000) {
    const char untouched = '\x5A';
    std::string buffer(5000, untouched);
    int length = room;
    call(&length, buffer.data());
    EXPECT_GE(length, 0);
    EXPECT_LE(length, room > 0 ? room : 0);
    const size_t written = static_cast<size_t>(length);
    EXPECT_EQ(buffer.find_first_not_of(untouched, written), std::string::npos);
    return buffer.substr(0, written);
}
