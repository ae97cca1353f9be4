#include "tool/soak/soak_codec_account.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "tool/shared/base/output_file.h"

namespace simhost::tool {

CodecAccount::CodecAccount(std::string pathUtf8) : m_path(std::move(pathUtf8)) {
    std::error_code error;
    std::filesystem::remove(pathFromUtf8(m_path), error);
}

CodecAccount::~CodecAccount() {
    std::error_code error;
    std::filesystem::remove(pathFromUtf8(m_path), error);
}

void CodecAccount::update() {
    {
        std::ifstream stream(pathFromUtf8(m_path), std::ios::binary);
        for (std::string line; std::getline(stream, line);) {
            take(line);
        }
    }
    std::error_code error;
    std::filesystem::remove(pathFromUtf8(m_path), error);
}

void CodecAccount::take(std::string_view line) {
    const std::size_t parenthesis = line.find('(');
    if (parenthesis == std::string_view::npos) {
        return;
    }
    const std::size_t blank = line.rfind(' ', parenthesis);
    const std::string_view name =
        line.substr(blank == std::string_view::npos ? 0 : blank + 1, parenthesis - blank - 1);
    const bool succeeded = line.ends_with(" = 0");
    ++m_calls;
    if (name == "get_string") {  // answers a text
        return;
    }
    if (!succeeded) {
        ++m_failed;
    } else if (name == "library_init") {
        ++m_initialisations;
    } else if (name == "library_close") {
        --m_initialisations;
    } else if (name == "open") {
        ++m_sessions;
    } else if (name == "close") {
        --m_sessions;
    }
}

}  // namespace simhost::tool
