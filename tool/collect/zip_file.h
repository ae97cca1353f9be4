// A zip archive in memory, of few and small files. The program for it that is already here is the compressor;
// the container around it is a few records. Not thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace simhost::tool {

class ZipFile {
 public:
    /// A name is UTF-8 with '/' between folders. Throws ToolError when the archive outgrows the format's 32
    /// bits.
    void add(const std::string& name, std::string_view bytes);
    /// The archive. Nothing is added any more.
    std::vector<std::uint8_t> finish();

 private:
    std::vector<std::uint8_t> m_out;
    std::vector<std::uint8_t> m_directory;
    std::uint16_t m_count = 0;
};

}  // namespace simhost::tool
