#include "tool/shared/base/output_file.h"

#include <system_error>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

std::filesystem::path pathFromUtf8(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string pathToUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

void makeFolder(const std::string& folderUtf8) {
    std::error_code error;
    std::filesystem::create_directories(pathFromUtf8(folderUtf8), error);
    if (error) {
        throw ToolError(kNoOutput, "cannot make the folder '" + folderUtf8 + "': " + error.message());
    }
}

OutputFile::OutputFile(const std::string& pathUtf8)
    : m_path(pathUtf8), m_stream(pathFromUtf8(pathUtf8), std::ios::binary | std::ios::trunc) {
    if (!m_stream) {
        throw ToolError(kNoOutput, "cannot create '" + m_path + "'");
    }
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
    m_stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!m_stream) {
        throw ToolError(kNoOutput, "cannot write to '" + m_path + "'");
    }
}

void OutputFile::finish() {
    m_stream.close();
    if (!m_stream) {
        throw ToolError(kNoOutput, "cannot finish '" + m_path + "'");
    }
}

void writeFile(const std::string& pathUtf8, std::span<const std::uint8_t> bytes) {
    OutputFile file(pathUtf8);
    file.write(bytes);
    file.finish();
}

void writeText(const std::string& pathUtf8, std::string_view text) {
    writeFile(pathUtf8, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

}  // namespace simhost::tool
