// The smallest Windows library that the doctor takes for the plug-in: one section that lies in the file as it
// is loaded, with an export table and the two resources.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tool/shared/base/pe_file.h"

namespace simhost::tool {

struct SmallPe {
    std::uint16_t machine = PeFile::kMachineX64;
    std::uint32_t importerId = 1000;
    std::uint64_t version = 0x00010002'00030004;  ///< 1.2.3.4
    std::vector<std::string> exports = {"xImportEntry"};
};

inline std::vector<std::uint8_t> smallPe(const SmallPe& what = {}) {
    std::vector<std::uint8_t> out(0x400);
    const auto put = [&out](std::size_t at, std::uint64_t value, std::size_t bytes) {
        if (out.size() < at + bytes) {
            out.resize(at + bytes);
        }
        std::memcpy(out.data() + at, &value, bytes);
    };
    constexpr std::size_t kPe = 0x80;
    constexpr std::size_t kOptional = kPe + 24;
    constexpr std::size_t kSections = kOptional + 240;
    constexpr std::size_t kResources = 0x200;
    constexpr std::size_t kExports = 0x400;
    put(0, 0x5A4D, 2);
    put(0x3C, kPe, 4);
    put(kPe, 0x00004550, 4);
    put(kPe + 4, what.machine, 2);
    put(kPe + 6, 1, 2);        // sections
    put(kPe + 20, 240, 2);     // size of the optional header
    put(kPe + 22, 0x2022, 2);  // a library
    put(kOptional, 0x20B, 2);  // of 64 bits
    put(kOptional + 112, kExports, 4);
    put(kOptional + 112 + 16, kResources, 4);
    // The section: addresses are places in the file.
    put(kSections + 8, 0x10000, 4);
    put(kSections + 12, 0, 4);
    put(kSections + 16, 0x10000, 4);
    put(kSections + 20, 0, 4);

    constexpr std::uint32_t kBelow = 0x80000000;
    // Types: "IMPT" by name, 16 by number. Offsets count from kResources.
    put(kResources + 12, 1, 2);
    put(kResources + 14, 1, 2);
    put(kResources + 16, kBelow | 0xE0, 4);
    put(kResources + 20, kBelow | 0x20, 4);
    put(kResources + 24, 16, 4);
    put(kResources + 28, kBelow | 0x60, 4);
    put(kResources + 0x20 + 14, 1, 2);  // names below IMPT
    put(kResources + 0x20 + 16, what.importerId, 4);
    put(kResources + 0x20 + 20, kBelow | 0x40, 4);
    put(kResources + 0x40 + 14, 1, 2);  // languages
    put(kResources + 0x40 + 16, 0x409, 4);
    put(kResources + 0x40 + 20, 0xA0, 4);
    put(kResources + 0x60 + 14, 1, 2);  // names below 16
    put(kResources + 0x60 + 16, 1, 4);
    put(kResources + 0x60 + 20, kBelow | 0x80, 4);
    put(kResources + 0x80 + 14, 1, 2);
    put(kResources + 0x80 + 16, 0x409, 4);
    put(kResources + 0x80 + 20, 0xB0, 4);
    put(kResources + 0xA0, kResources + 0xF0, 4);  // place and size of the data
    put(kResources + 0xA4, 6, 4);
    put(kResources + 0xB0, kResources + 0x100, 4);
    put(kResources + 0xB4, 0x5C, 4);
    put(kResources + 0xE0, 4, 2);
    const std::u16string_view type = u"IMPT";
    for (std::size_t i = 0; i < type.size(); ++i) {
        put(kResources + 0xE2 + 2 * i, type[i], 2);
    }
    put(kResources + 0xF0 + 2, 0x4F525641, 4);  // 'ORVA' behind the zero
    put(kResources + 0x100 + 0x28, 0xFEEF04BD, 4);
    put(kResources + 0x100 + 0x30, what.version >> 32, 4);
    put(kResources + 0x100 + 0x34, what.version & 0xFFFFFFFF, 4);

    put(kExports + 24, what.exports.size(), 4);
    put(kExports + 32, kExports + 40, 4);
    std::size_t text = kExports + 40 + 4 * what.exports.size();
    for (std::size_t i = 0; i < what.exports.size(); ++i) {
        put(kExports + 40 + 4 * i, text, 4);
        for (const char c : what.exports[i]) {
            put(text++, static_cast<unsigned char>(c), 1);
        }
        put(text++, 0, 1);
    }
    return out;
}

}  // namespace simhost::tool
