// See temp_folder.h.

#include "tests/support/temp_folder.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace orvantis::test {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::random_device random;
    // create_directory answers false for a folder that is already there: then it belongs to somebody else.
    do {
        m_path = fs::temp_directory_path() /
                 ("orvantis-test-" + std::to_string(random()) + "-" + std::to_string(random()));
    } while (!fs::create_directory(m_path));
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::string utf8Path(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::u16string utf16Path(const fs::path& path) {
    return path.u16string();
}

void writeFile(const fs::path& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + utf8Path(path));
    }
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + utf8Path(path));
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace orvantis::test
