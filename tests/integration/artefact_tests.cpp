// Reads the built plug-in as the loader and the host's plug-in scan see it: exports, imports, resources and
// the security flags, straight from the file's bytes.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/integration/plugin_path.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// A 64-bit PE file, read by the published layout.
class PeFile {
 public:
    explicit PeFile(const std::string& path) : m_bytes(readFile(path)) {
        m_pe = at<std::uint32_t>(0x3C);
        m_optional = m_pe + 24;
        const std::uint32_t sections = at<std::uint16_t>(m_pe + 6);
        const std::uint32_t first = m_optional + at<std::uint16_t>(m_pe + 20);
        for (std::uint32_t i = 0; i < sections; ++i) {
            const std::uint32_t section = first + 40 * i;
            m_sections.push_back({at<std::uint32_t>(section + 12), at<std::uint32_t>(section + 8),
                                  at<std::uint32_t>(section + 20)});
        }
    }

    std::uint16_t machine() const { return at<std::uint16_t>(m_pe + 4); }
    std::uint16_t magic() const { return at<std::uint16_t>(m_optional); }
    std::uint16_t dllCharacteristics() const { return at<std::uint16_t>(m_optional + 70); }

    std::vector<std::string> exports() const {
        std::vector<std::string> names;
        const std::uint32_t table = fileOffset(directory(0));
        const std::uint32_t count = at<std::uint32_t>(table + 24);
        const std::uint32_t nameTable = fileOffset(at<std::uint32_t>(table + 32));
        for (std::uint32_t i = 0; i < count; ++i) {
            names.push_back(text(fileOffset(at<std::uint32_t>(nameTable + 4 * i))));
        }
        return names;
    }
    // The places of the address table that are taken, with or without a name: some linkers leave the first
    // free.
    std::uint32_t exportedFunctions() const {
        const std::uint32_t table = fileOffset(directory(0));
        const std::uint32_t addresses = fileOffset(at<std::uint32_t>(table + 28));
        std::uint32_t taken = 0;
        for (std::uint32_t i = 0; i < at<std::uint32_t>(table + 20); ++i) {
            taken += at<std::uint32_t>(addresses + 4 * i) != 0 ? 1U : 0U;
        }
        return taken;
    }

    std::map<std::string, std::set<std::string>> imports() const {
        std::map<std::string, std::set<std::string>> result;
        for (std::uint32_t entry = fileOffset(directory(1)); at<std::uint32_t>(entry + 12) != 0;
             entry += 20) {
            std::string dll = text(fileOffset(at<std::uint32_t>(entry + 12)));
            std::transform(dll.begin(), dll.end(), dll.begin(),
                           [](unsigned char c) { return std::tolower(c); });
            std::uint32_t thunk = fileOffset(at<std::uint32_t>(entry));
            for (; at<std::uint64_t>(thunk) != 0; thunk += 8) {
                result[dll].insert(text(fileOffset(at<std::uint32_t>(thunk)) + 2));
            }
        }
        return result;
    }

 private:
    struct Section {
        std::uint32_t address, size, offset;
    };

    template <class T>
    T at(std::uint32_t offset) const {
        T value{};
        if (offset + sizeof(T) <= m_bytes.size()) {
            std::memcpy(&value, m_bytes.data() + offset, sizeof(T));
        }
        return value;
    }
    std::uint32_t directory(std::uint32_t index) const {
        return at<std::uint32_t>(m_optional + 112 + 8 * index);
    }
    std::uint32_t fileOffset(std::uint32_t address) const {
        for (const Section& section : m_sections) {
            if (address >= section.address && address < section.address + section.size) {
                return address - section.address + section.offset;
            }
        }
        ADD_FAILURE() << "address outside every section: " << address;
        return 0;
    }
    std::string text(std::uint32_t offset) const {
        return reinterpret_cast<const char*>(m_bytes.data() + offset);
    }

    Bytes m_bytes;
    std::uint32_t m_pe = 0;
    std::uint32_t m_optional = 0;
    std::vector<Section> m_sections;
};

/// The module mapped as data, for its resources.
class DataModule {
 public:
    explicit DataModule(const std::string& path)
        : m_module(LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE)) {}
    DataModule(const DataModule&) = delete;
    DataModule& operator=(const DataModule&) = delete;
    ~DataModule() { FreeLibrary(m_module); }

    Bytes resource(const wchar_t* type, WORD id) const {
        HRSRC found = FindResourceW(m_module, MAKEINTRESOURCEW(id), type);
        if (found == nullptr) {
            return {};
        }
        const auto* data = static_cast<const std::uint8_t*>(LockResource(LoadResource(m_module, found)));
        return Bytes(data, data + SizeofResource(m_module, found));
    }

 private:
    HMODULE m_module;
};

std::string versionText(const Bytes& version, const wchar_t* name) {
    void* value = nullptr;
    UINT length = 0;
    const std::wstring path = std::wstring(L"\\StringFileInfo\\040904b0\\") + name;
    if (!VerQueryValueW(version.data(), path.c_str(), &value, &length)) {
        return {};
    }
    const std::wstring wide(static_cast<const wchar_t*>(value));
    return std::string(wide.begin(), wide.end());
}

TEST(Artefact, Is64BitAndProtected) {
    const PeFile plugin(pluginPath());
    EXPECT_EQ(plugin.machine(), 0x8664);
    EXPECT_EQ(plugin.magic(), 0x20B);
    constexpr std::uint16_t kHighEntropy = 0x20, kDynamicBase = 0x40, kNxCompatible = 0x100;
    EXPECT_EQ(plugin.dllCharacteristics() & kHighEntropy, kHighEntropy);
    EXPECT_EQ(plugin.dllCharacteristics() & kDynamicBase, kDynamicBase);
    EXPECT_EQ(plugin.dllCharacteristics() & kNxCompatible, kNxCompatible);
}

TEST(Artefact, ExportsTheEntryPointAndNothingElse) {
    const PeFile plugin(pluginPath());
    EXPECT_EQ(plugin.exports(), std::vector<std::string>{"xImportEntry"});
    EXPECT_EQ(plugin.exportedFunctions(), 1u) << "an export without a name is an export too";
}

TEST(Artefact, ImportsTheWholeCodecInterface) {
    const std::set<std::string> expected = {
        "orvantis_library_init", "orvantis_library_close",    "orvantis_open",
        "orvantis_close",        "orvantis_decompress_query", "orvantis_decompress_begin",
        "orvantis_decompress",   "orvantis_decompress_end",   "orvantis_get_string",
        "orvantis_get_param",    "orvantis_compress_query"};
    EXPECT_EQ(PeFile(pluginPath()).imports()["orvantis_common64.dll"], expected)
        << "CONTRIBUTING.md, \"How do I add ...\", a function of the codec library";
}

TEST(Artefact, DependsOnSystemLibrariesAndTheCodecOnly) {
    const std::set<std::string> system = {"kernel32.dll", "advapi32.dll", "shell32.dll",
                                          "shlwapi.dll",  "user32.dll",   "msvcrt.dll"};
    for (const auto& [dll, functions] : PeFile(pluginPath()).imports()) {
        const bool universalRuntime = dll.rfind("api-ms-win-crt-", 0) == 0;
        EXPECT_TRUE(dll == "orvantis_common64.dll" || system.count(dll) != 0 || universalRuntime) << dll;
    }
}

TEST(Artefact, CarriesTheHostsRegistrationResource) {
    const Bytes resource = DataModule(pluginPath()).resource(L"IMPT", 1000);
    const Bytes expected = {0x00, 0x00, 0x41, 0x56, 0x52, 0x4F};
    EXPECT_EQ(resource, expected);
}

TEST(Artefact, CarriesTheProjectsVersion) {
    const Bytes version = DataModule(pluginPath()).resource(MAKEINTRESOURCEW(16), 1);  // RT_VERSION
    ASSERT_FALSE(version.empty());
    EXPECT_EQ(versionText(version, L"FileVersion"), ORVANTIS_PROJECT_VERSION);
    EXPECT_EQ(versionText(version, L"ProductVersion"), ORVANTIS_PROJECT_VERSION);
    EXPECT_EQ(versionText(version, L"OriginalFilename"), "ImporterOrvantis.prm");
}

}  // namespace
