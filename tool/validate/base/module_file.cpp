#include "tool/validate/base/module_file.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#include "tool/shared/base/output_file.h"

namespace simhost::tool::validate {

PeFile moduleFile(const Trial& trial) {
    // Beyond any module; a file that is none may have any size.
    constexpr std::uintmax_t kMostBytes = std::uintmax_t{512} << 20;
    const std::filesystem::path path = pathFromUtf8(trial.setting().plugin);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size > kMostBytes) {
        Trial::skip("the module is larger than 512 MiB");
    }
    std::ifstream file(path, std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    if (auto parsed = parsePe(bytes)) {
        return *parsed;
    }
    Trial::skip("the module is no Windows library");
}

}  // namespace simhost::tool::validate
