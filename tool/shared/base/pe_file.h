// Reads from the bytes of a Windows library what tells whether a 64-bit host can load it and takes it for an
// importer, without loading it. Every position and count of the file is checked. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simhost::tool {

struct PeFile {
    static constexpr std::uint16_t kMachineX64 = 0x8664;
    static constexpr std::uint16_t kMachineX86 = 0x014C;
    static constexpr std::uint16_t kMachineArm64 = 0xAA64;
    static constexpr std::uint16_t kHighEntropy = 0x0020;  ///< of `protections`: addresses from all 64 bits
    static constexpr std::uint16_t kRandomBase = 0x0040;   ///< loaded at an address drawn by lot
    static constexpr std::uint16_t kNoExecute = 0x0100;    ///< data is not executed

    std::uint16_t machine = 0;
    bool is64Bit = false;                        ///< the optional header is that of 64-bit files
    bool isLibrary = false;                      ///<
    std::uint16_t protections = 0;               ///< DllCharacteristics of the optional header
    std::vector<std::string> exports;            ///< names, as they stand
    std::vector<std::string> imports;            ///< libraries that are loaded with it
    std::string version;                         ///< "1.2.3.0" of the version resource; empty without one
    std::vector<std::uint8_t> importerResource;  ///< the data of IMPT 1000; empty without it
};

/// Nothing when the bytes are no Windows program or library.
std::optional<PeFile> parsePe(std::span<const std::uint8_t> bytes);

}  // namespace simhost::tool
