// Files that the tool writes, by UTF-8 path. Every failure is a ToolError with kNoOutput. Main thread only.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

namespace simhost::tool {

std::filesystem::path pathFromUtf8(const std::string& utf8);
std::string pathToUtf8(const std::filesystem::path& path);

/// Makes the folder and those above it.
void makeFolder(const std::string& folderUtf8);

/// A binary file that is complete only after finish().
class OutputFile {
 public:
    explicit OutputFile(const std::string& pathUtf8);
    void write(std::span<const std::uint8_t> bytes);
    void finish();

 private:
    std::string m_path;
    std::ofstream m_stream;
};

void writeFile(const std::string& pathUtf8, std::span<const std::uint8_t> bytes);
void writeText(const std::string& pathUtf8, std::string_view text);

}  // namespace simhost::tool
