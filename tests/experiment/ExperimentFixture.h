/// An experiment on disk for the tests of the session: the folder "e" in a folder "d" of the test's
/// own, with shots made by hand.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>

#include <string>
#include <vector>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/Support.h"
#include "system/DIni.h"

class ExperimentTest : public testing::Test {
protected:
    static std::string TestName() {
        const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
        return std::string(test.test_suite_name()) + "." + test.name();
    }

    /// The folder that holds the experiment, the experiment folder, and its definition file.
    const std::string m_Above = MakeFolder(Scratch(TestName() + "/d"));
    const std::string m_Folder = m_Above + "/e";
    const std::string m_DefinitionFile = m_Folder + "/e.ini";
    Experiment m_Experiment;

    /// Writes the definition file, unless there is no text for it, and opens the experiment.
    void Open(const std::string& definition = "") {
        MakeFolder(m_Folder);
        if (!definition.empty()) WriteBytes(m_DefinitionFile, definition);
        ASSERT_TRUE(m_Experiment.SetExperimentFolder(m_Folder.c_str()));
    }

    /// Opens an experiment whose groups 1 to 3 are the folders Data1 to Data3 beside it. `cues` are
    /// the lines of its section ShotCreation.
    void OpenWithGroups(const std::string& cues = "*=.\\Shots\n") {
        for (const char* name : {"Data1", "Data2", "Data3"})
            MakeFolder(m_Above + "/" + name);
        Open("[Groups]\n..\\Data*\n[ShotCreation]\n" + cues);
        ASSERT_EQ(m_Experiment.m_GroupPaths.Count(), 4);
    }

    std::string GroupFolder(int group) const {
        return group == 0 ? m_Folder + "/Shots" : m_Above + "/Data" + std::to_string(group);
    }
    std::string ShotFolder(int group, const std::string& shot) const {
        return GroupFolder(group) + "/Shot" + shot;
    }
    std::string FieldsFile(int group, const std::string& shot) const {
        return ShotFolder(group, shot) + "/Scalars.ini";
    }
    std::string CacheFile(int group) const { return GroupFolder(group) + "/ScalarCache.ini"; }

    /// Makes a shot's folder, with its fields unless there is no text for them.
    void AddShot(int group, const std::string& shot, const std::string& fields = "") {
        MakeFolder(ShotFolder(group, shot));
        if (!fields.empty()) WriteBytes(FieldsFile(group, shot), fields);
    }

    /// "shot in group", for the selection as a whole.
    std::string Selection() const {
        return Text(m_Experiment.GetShotName()) + " in " +
               std::to_string(m_Experiment.GetCurrentGroup());
    }
};

/// Verbose logging for the life of the object, in a log of its own.
class VerboseLog {
public:
    VerboseLog() {
        remove(LogFile().c_str());
        Logging = true;
    }
    ~VerboseLog() { Logging = false; }
    VerboseLog(const VerboseLog&) = delete;
    VerboseLog& operator=(const VerboseLog&) = delete;

    /// What was logged, without the times.
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        if (!Exists(LogFile())) return texts;
        const std::string log = ReadBytes(LogFile());
        for (size_t start = 0; start < log.size(); start = log.find('\n', start) + 1) {
            const size_t end = log.find(" by ", start);
            texts.push_back(log.substr(start, end - start));
        }
        return texts;
    }

private:
    // The user folder is not set, so the log lies in the current directory.
    static std::string LogFile() { return Scratch("Log.txt"); }
};

/// The table of shared and local names, in memory alone, for the life of the object.
class Translations {
public:
    explicit Translations(const std::vector<std::string>& lines) {
        DStringArray table;
        for (const std::string& line : lines)
            table.Add(line.c_str());
        TrIni.SetFullSection("Translations", table);
    }
    ~Translations() { TrIni.DeleteSection("Translations"); }
    Translations(const Translations&) = delete;
    Translations& operator=(const Translations&) = delete;
};

/// All elements of a list.
inline std::vector<std::string> Texts(const DStringArray& list) {
    std::vector<std::string> texts;
    for (int i = 0; i < list.Count(); ++i)
        texts.push_back(Text(list[i]));
    return texts;
}

/// The paths, each in front of `names`.
inline std::vector<std::string> Below(const std::string& folder, std::vector<std::string> names) {
    for (std::string& name : names)
        name.insert(0, folder + "/");
    return names;
}
