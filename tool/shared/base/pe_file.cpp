#include "tool/shared/base/pe_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace simhost::tool {
namespace {

constexpr std::size_t kMostExports = 65536;
constexpr std::size_t kMostImports = 4096;
constexpr std::size_t kMostName = 512;
constexpr std::uint32_t kVersionType = 16;  // RT_VERSION
constexpr std::uint32_t kImporterId = 1000;
constexpr std::u16string_view kImporterType = u"IMPT";
constexpr std::uint32_t kSubDirectory = 0x80000000;  // of a resource entry; also: its name is a text
constexpr std::uint32_t kFixedVersionMark = 0xFEEF04BD;

class Image {
 public:
    explicit Image(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    bool parse(PeFile& out) {
        constexpr std::size_t kHeaderAt = 0x3C;
        constexpr std::size_t kFileHeader = 24;  // with the mark "PE\0\0"
        const std::uint64_t pe = u32(kHeaderAt);
        if (u16(0) != 0x5A4D || u32(pe) != 0x00004550) {
            return false;
        }
        const std::uint64_t optional = pe + kFileHeader;
        out.machine = u16(pe + 4);
        out.isLibrary = (u16(pe + 22) & 0x2000) != 0;
        out.is64Bit = u16(optional) == 0x20B;
        out.protections = u16(optional + 70);
        const std::uint64_t directories = optional + (out.is64Bit ? 112 : 96);
        const std::uint64_t sections = optional + u16(pe + 20);
        const std::size_t count = u16(pe + 6);
        for (std::size_t i = 0; i < count && sections + 40 * (i + 1) <= m_bytes.size(); ++i) {
            const std::uint64_t at = sections + 40 * i;
            m_sections.push_back({u32(at + 12), std::max(u32(at + 8), u32(at + 16)), u32(at + 20)});
        }
        if (const auto table = offset(u32(directories))) {
            readExports(*table, out);
        }
        if (const std::uint32_t address = u32(directories + 8); address != 0) {
            if (const auto table = offset(address)) {
                readImports(*table, out);
            }
        }
        if (const std::uint32_t address = u32(directories + 16); address != 0) {
            if (const auto root = offset(address)) {
                m_resources = *root;
                readResources(out);
            }
        }
        return !m_sections.empty();
    }

 private:
    struct Section {
        std::uint32_t address;
        std::uint32_t size;
        std::uint32_t fileOffset;
    };

    // Bytes outside of the file read as 0.
    template <class T>
    T value(std::uint64_t at) const {
        T out = 0;
        if (at <= m_bytes.size() && m_bytes.size() - at >= sizeof(T)) {
            std::memcpy(&out, m_bytes.data() + at, sizeof(T));
        }
        return out;
    }
    std::uint16_t u16(std::uint64_t at) const { return value<std::uint16_t>(at); }
    std::uint32_t u32(std::uint64_t at) const { return value<std::uint32_t>(at); }

    // Where the address, relative to the loaded image, lies in the file.
    std::optional<std::uint64_t> offset(std::uint32_t address) const {
        for (const Section& section : m_sections) {
            if (address >= section.address && address - section.address < section.size) {
                return std::uint64_t{section.fileOffset} + (address - section.address);
            }
        }
        return std::nullopt;
    }

    std::string name(std::uint64_t at) const {
        if (at >= m_bytes.size()) {
            return {};
        }
        const auto rest = m_bytes.subspan(static_cast<std::size_t>(at));
        const auto part = rest.first(std::min(rest.size(), kMostName));
        return {part.begin(), std::find(part.begin(), part.end(), 0)};
    }

    // The rows of both tables may all lead to the same name: together no more is taken than the file holds.

    // A row for each library, of which the fourth word leads to its name; zeros end the table.
    void readImports(std::uint64_t table, PeFile& out) const {
        std::size_t bytes = 0;
        for (std::size_t i = 0; i < kMostImports && u32(table + 20 * i + 12) != 0 && bytes < m_bytes.size();
             ++i) {
            if (const auto at = offset(u32(table + 20 * i + 12))) {
                out.imports.push_back(name(*at));
                bytes += out.imports.back().size();
            }
        }
    }

    void readExports(std::uint64_t table, PeFile& out) const {
        const std::size_t count = std::min<std::size_t>(u32(table + 24), kMostExports);
        const auto names = offset(u32(table + 32));
        std::size_t bytes = 0;
        for (std::size_t i = 0;
             names && i < count && *names + 4 * i < m_bytes.size() && bytes < m_bytes.size(); ++i) {
            const auto at = offset(u32(*names + 4 * i));
            if (!at || *at >= m_bytes.size()) {
                continue;
            }
            out.exports.push_back(name(*at));
            bytes += out.exports.back().size();
        }
    }

    // Type, name, language: three levels of directories.
    void readResources(PeFile& out) const {
        const auto versions = entry(m_resources, kVersionType, {});
        if (const auto data = versions ? firstData(*versions, 2) : std::nullopt) {
            readVersion(*data, out);
        }
        const auto importers = entry(m_resources, 0, kImporterType);
        const auto numbered = importers && (*importers & kSubDirectory) != 0
                                  ? entry(m_resources + (*importers & ~kSubDirectory), kImporterId, {})
                                  : std::nullopt;
        if (const auto data = numbered ? firstData(*numbered, 1) : std::nullopt) {
            out.importerResource.assign(data->begin(), data->end());
        }
    }

    // The place that a directory gives for a number, or for a name.
    std::optional<std::uint32_t> entry(std::uint64_t directory, std::uint32_t id,
                                       std::u16string_view name) const {
        const std::size_t count = std::size_t{u16(directory + 12)} + u16(directory + 14);
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint64_t at = directory + 16 + 8 * i;
            const std::uint32_t key = u32(at);
            const bool named = (key & kSubDirectory) != 0;
            if (named ? !name.empty() && hasName(m_resources + (key & ~kSubDirectory), name)
                      : name.empty() && key == id) {
                return u32(at + 4);
            }
        }
        return std::nullopt;
    }

    bool hasName(std::uint64_t at, std::u16string_view name) const {
        if (u16(at) != name.size()) {
            return false;
        }
        for (std::size_t i = 0; i < name.size(); ++i) {
            if (u16(at + 2 + 2 * i) != name[i]) {
                return false;
            }
        }
        return true;
    }

    // The data behind the first entry of every level below.
    std::optional<std::span<const std::uint8_t>> firstData(std::uint32_t place, int levels) const {
        for (; levels > 0; --levels) {
            if ((place & kSubDirectory) == 0) {
                return std::nullopt;
            }
            place = u32(m_resources + (place & ~kSubDirectory) + 16 + 4);
        }
        if ((place & kSubDirectory) != 0) {
            return std::nullopt;
        }
        const auto at = offset(u32(m_resources + place));
        const std::uint32_t size = u32(m_resources + place + 4);
        if (!at || *at > m_bytes.size() || m_bytes.size() - *at < size) {
            return std::nullopt;
        }
        return m_bytes.subspan(static_cast<std::size_t>(*at), size);
    }

    // The fixed part stands behind a header and the text "VS_VERSION_INFO".
    static void readVersion(std::span<const std::uint8_t> data, PeFile& out) {
        const Image info(data);
        for (std::size_t at = 0; at + 16 <= std::min<std::size_t>(data.size(), 128); at += 4) {
            if (info.u32(at) == kFixedVersionMark) {
                out.version = std::to_string(info.u16(at + 10)) + "." + std::to_string(info.u16(at + 8)) +
                              "." + std::to_string(info.u16(at + 14)) + "." +
                              std::to_string(info.u16(at + 12));
                return;
            }
        }
    }

    std::span<const std::uint8_t> m_bytes;
    std::vector<Section> m_sections;
    std::uint64_t m_resources = 0;
};

}  // namespace

std::optional<PeFile> parsePe(std::span<const std::uint8_t> bytes) {
    PeFile out;
    return Image(bytes).parse(out) ? std::optional(out) : std::nullopt;
}

}  // namespace simhost::tool
