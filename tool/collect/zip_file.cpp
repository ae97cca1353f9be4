#include "tool/collect/zip_file.h"

#include <utility>

#include "tool/shared/base/deflate.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

constexpr std::uint64_t kMostBytes = 0xF0000000;
constexpr std::uint16_t kVersion = 20;       // 2.0: deflate and folders
constexpr std::uint16_t kUtf8Names = 0x800;  // flag bit 11
constexpr std::uint16_t kDeflate = 8;
constexpr std::uint16_t kFirstDay = 0x21;  // 1980-01-01: what is inside tells its own times

void put(std::vector<std::uint8_t>& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

}  // namespace

void ZipFile::add(const std::string& name, std::string_view bytes) {
    const std::span<const std::uint8_t> data(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                             bytes.size());
    // A zip has the stream without the two bytes before it and the check sum behind it.
    constexpr std::size_t kBefore = 2;
    constexpr std::size_t kBehind = 4;
    const std::vector<std::uint8_t> stream = zlibStream(data);
    const auto packed = static_cast<std::uint32_t>(stream.size() - kBefore - kBehind);
    if (m_out.size() + stream.size() + name.size() > kMostBytes || name.size() > 0xFFFF ||
        m_count == 0xFFFF) {
        throw ToolError(kNoOutput, "there is too much for one zip file");
    }
    const auto offset = static_cast<std::uint32_t>(m_out.size());
    const auto record = [&](std::vector<std::uint8_t>& out) {
        put(out, kVersion, 2);
        put(out, kUtf8Names, 2);
        put(out, kDeflate, 2);
        put(out, 0, 2);
        put(out, kFirstDay, 2);
        put(out, crc32(data), 4);
        put(out, packed, 4);
        put(out, static_cast<std::uint32_t>(data.size()), 4);
        put(out, static_cast<std::uint32_t>(name.size()), 2);
        put(out, 0, 2);  // no extra field
    };
    put(m_out, 0x04034B50, 4);
    record(m_out);
    m_out.insert(m_out.end(), name.begin(), name.end());
    m_out.insert(m_out.end(), stream.begin() + kBefore, stream.end() - kBehind);
    put(m_directory, 0x02014B50, 4);
    put(m_directory, kVersion, 2);
    record(m_directory);
    put(m_directory, 0, 2);  // no comment
    put(m_directory, 0, 2);  // disk
    put(m_directory, 0, 2);  // attributes
    put(m_directory, 0, 4);
    put(m_directory, offset, 4);
    m_directory.insert(m_directory.end(), name.begin(), name.end());
    ++m_count;
}

std::vector<std::uint8_t> ZipFile::finish() {
    const auto offset = static_cast<std::uint32_t>(m_out.size());
    m_out.insert(m_out.end(), m_directory.begin(), m_directory.end());
    put(m_out, 0x06054B50, 4);
    put(m_out, 0, 4);  // one disk
    put(m_out, m_count, 2);
    put(m_out, m_count, 2);
    put(m_out, static_cast<std::uint32_t>(m_directory.size()), 4);
    put(m_out, offset, 4);
    put(m_out, 0, 2);  // no comment
    return std::move(m_out);
}

}  // namespace simhost::tool
