#include "tool/validate/base/module_file.h"

#include <fstream>
#include <iterator>

#include "tool/shared/base/output_file.h"

namespace simhost::tool::validate {

PeFile moduleFile(const Trial& trial) {
    std::ifstream file(pathFromUtf8(trial.setting().plugin), std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    if (auto parsed = parsePe(bytes)) {
        return *parsed;
    }
    Trial::skip("the module is no Windows library");
}

}  // namespace simhost::tool::validate
