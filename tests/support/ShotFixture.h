/// An experiment in the scratch folder, its shots put on disk by hand.
#pragma once

#include <filesystem>
#include <string>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/Support.h"

/// The experiment Discharge has two groups of shots, Shots (number 0) and Archive (number 1). No
/// shot is selected at the start of a test.
class ShotTest : public testing::Test {
protected:
    ShotTest() {
        std::filesystem::remove_all(Folder());
        MakeFolder(Folder() + "/Archive");
        WriteBytes(Folder() + "/Discharge.ini", "[Groups]\r\n.\\Archive;;older shots\r\n");
        Expt.SetExperimentFolder(Folder().c_str());
    }

    ~ShotTest() override {
        Expt.ClearDataPtrs();
        Expt.SetExperimentFolder("");
        SetNotify(nullptr);
    }

    static std::string Folder() { return Scratch("Discharge"); }

    static std::string ShotFolder(const std::string& shot, const std::string& group = "Shots") {
        return Folder() + "/" + group + "/Shot" + shot;
    }

    /// Makes a shot with these fields, lines of the form key=value.
    static void MakeShot(const std::string& shot, const std::string& fields,
                         const std::string& group = "Shots") {
        MakeFolder(ShotFolder(shot, group));
        WriteBytes(ShotFolder(shot, group) + "/Scalars.ini", "[Fields]\r\n" + fields);
    }

    /// The same in group 0, and selects it.
    static void SelectNewShot(const std::string& shot, const std::string& fields) {
        MakeShot(shot, fields);
        ASSERT_TRUE(Expt.SetShot(shot.c_str(), 0));
    }
};
