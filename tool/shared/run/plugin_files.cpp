#include "tool/shared/run/plugin_files.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/doctor_platform.h"

namespace simhost::tool {

LibraryFile readLibrary(const std::string& path) {
    // Beyond any library; a file of that name may be anything.
    constexpr std::uintmax_t kMostBytes = std::uintmax_t{512} << 20;
    LibraryFile out{path, {}};
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(pathFromUtf8(path), error);
    if (error || size > kMostBytes) {
        return out;
    }
    std::vector<char> bytes(static_cast<std::size_t>(size));
    std::ifstream stream(pathFromUtf8(path), std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.pe = parsePe({reinterpret_cast<const std::uint8_t*>(bytes.data()),
                      static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0))});
    return out;
}

std::string fileVersion(const std::string& path) {
    const LibraryFile file = readLibrary(path);
    return file.pe && !file.pe->version.empty() ? file.pe->version : "unknown";
}

std::string findCodecLibrary(const std::string& folder) {
    if (std::string loaded = loadedLibrary(codecLibraryName()); !loaded.empty()) {
        return loaded;
    }
    std::vector<std::string> folders = libraryFolders();
    if (!folder.empty()) {
        folders.insert(folders.begin(), folder);
    }
    for (const std::string& place : folders) {
        const std::filesystem::path path = pathFromUtf8(place) / pathFromUtf8(codecLibraryName());
        if (const FileFacts facts = fileFacts(pathToUtf8(path)); facts.kind == FileKind::kFile) {
            return pathToUtf8(std::filesystem::path(path).make_preferred());
        }
    }
    return {};
}

bool codecIsFound(const std::string& folder, const std::string& loaderText) {
    // The loader of Windows does not name the library that it misses, others do.
    return loaderText.find(codecLibraryName()) == std::string::npos && !findCodecLibrary(folder).empty();
}

ToolError unloadablePlugin(const std::string& path, const std::string& loaderText, bool codecFound) {
    const FileFacts file = fileFacts(path);
    if (file.kind != FileKind::kFile) {
        return {kNoPlugin, "there is no plug-in '" + path + "'",
                "install the plug-in, or name its file with --plugin", "no-plugin"};
    }
    if (!codecFound) {
        return {kNoPlugin,
                "cannot load '" + path + "': the codec library " + codecLibraryName() + " was not found",
                "install the Orvantis codec, whose library the plug-in needs, in its 64-bit version; or name "
                "the library's folder with --codec-folder",
                "no-codec-library"};
    }
    return {kNoPlugin, loaderText,
            "install the plug-in anew; \"importer_host doctor\" looks at it and at the codec library more "
            "closely",
            "no-plugin"};
}

}  // namespace simhost::tool
