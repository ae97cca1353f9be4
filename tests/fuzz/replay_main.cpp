// Runs a fuzz target on files, without a fuzzer: replay FILE-OR-FOLDER... An input that breaks the target
// ends the process. Finding no file is a failure: then nothing was tested.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/fuzz/fuzz_target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(int count, char** arguments) {
    std::vector<fs::path> files;
    for (int i = 1; i < count; ++i) {
        const fs::path path = arguments[i];
        if (!fs::is_directory(path)) {
            files.push_back(path);
            continue;
        }
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
            if (entry.is_regular_file() && entry.path().extension() != ".md") {
                files.push_back(entry.path());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<fs::path> files = filesOf(count, arguments);
    for (const fs::path& path : files) {
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", path.c_str());
            return 1;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        // Of exactly the input's size, so that reading past its end is noticed.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
        std::fprintf(stderr, "%s\n", path.c_str());
        static_cast<void>(LLVMFuzzerTestOneInput(input.data(), input.size()));
    }
    std::fprintf(stderr, "%zu files\n", files.size());
    return files.empty() ? 1 : 0;
}
