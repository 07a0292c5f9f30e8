// Runs every file of the given files or folders through the fuzz target once, so the checked-in
// corpus doubles as a regression test in builds without libFuzzer.

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<std::filesystem::path> inputsOf(const std::filesystem::path& path) {
    std::vector<std::filesystem::path> inputs;
    if (std::filesystem::is_directory(path)) {
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            if (entry.is_regular_file()) inputs.push_back(entry.path());
        }
        std::sort(inputs.begin(), inputs.end());
    } else if (std::filesystem::is_regular_file(path)) {
        inputs.push_back(path);
    }
    return inputs;
}

}  // namespace

int main(int argc, char** argv) {
    size_t ran = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& input : inputsOf(argv[i])) {
            std::ifstream file(input, std::ios::binary);
            std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)),
                                       std::istreambuf_iterator<char>());
            fprintf(stderr, "running %s (%zu bytes)\n", input.c_str(), bytes.size());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++ran;
        }
    }
    fprintf(stderr, "ran %zu inputs\n", ran);
    // An empty run means a wrong path, not a pass.
    return ran > 0 ? 0 : 1;
}
