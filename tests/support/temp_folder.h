// A fresh folder in the system's temporary folder, removed with all it holds at the end. Names may hold any
// character: paths go through std::filesystem, which is UTF-16 on Windows.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvantis::test {

class TempFolder {
 public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return m_path; }
    /// A path inside; nothing is created.
    std::filesystem::path operator/(std::u8string_view name) const { return m_path / name; }
    std::filesystem::path operator/(std::string_view asciiName) const { return m_path / asciiName; }

 private:
    std::filesystem::path m_path;
};

/// The path in the forms that the plug-in and the host use.
std::string utf8Path(const std::filesystem::path& path);
std::u16string utf16Path(const std::filesystem::path& path);

/// Whole-file access for tests; both throw std::runtime_error on failure.
void writeFile(const std::filesystem::path& path, std::string_view bytes);
std::string readFile(const std::filesystem::path& path);

}  // namespace orvantis::test
