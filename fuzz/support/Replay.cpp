// The main function of the replay programs: runs the target on each file named, and on each file of
// each folder named. A finding ends the process; so does an empty list, which would prove nothing.
#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/Fuzzing.h"

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// Absolute, since the target changes the current directory.
std::vector<fs::path> InputsOf(int argc, char** argv) {
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const fs::path path = fs::absolute(argv[i]);
        if (!fs::is_directory(path)) {
            inputs.push_back(path);
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(path)) {
            if (entry.is_regular_file()) inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<fs::path> inputs = InputsOf(argc, argv);
    if (inputs.empty()) {
        fprintf(stderr, "no inputs\n");
        return 1;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    for (const fs::path& input : inputs) {
        printf("%s\n", input.c_str());
        fflush(stdout);
        const std::string bytes = ReadBytes(input);
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    printf("%zu inputs\n", inputs.size());
    return 0;
}
