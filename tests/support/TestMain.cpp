// The main function of the test programs: each run has a folder of its own for a home and for its
// files, and starts in it, so that no test sees the user's settings or another test's files.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

#include "support/Support.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::string folder = (std::filesystem::temp_directory_path() / "tarsel-test-XXXXXX").string();
    if (!mkdtemp(folder.data())) return 2;
    folder = std::filesystem::canonical(folder).string();
    if (setenv("HOME", folder.c_str(), 1) != 0 || chdir(folder.c_str()) != 0) return 2;
    SetScratchFolder(folder);
    const int result = RUN_ALL_TESTS();
    std::error_code ignored;
    std::filesystem::current_path("/", ignored);
    std::filesystem::remove_all(folder, ignored);
    return result;
}
