#include "tool/doctor/doctor_search.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "tool/shared/base/output_file.h"
#include "tool/shared/run/doctor_platform.h"

namespace simhost::tool {
namespace {

namespace fs = std::filesystem;

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

std::string joinedPath(const std::string& folder, const std::string& name) {
    fs::path path = pathFromUtf8(folder) / pathFromUtf8(name);
    return pathToUtf8(path.make_preferred());
}

bool isFile(const std::string& path) {
    std::error_code error;
    return fs::is_regular_file(pathFromUtf8(path), error);
}

std::vector<PluginFolder> findPluginFolders(const std::vector<std::string>& given) {
    std::vector<PluginFolder> out;
    const auto add = [&out](const std::vector<std::string>& paths, FolderSource source) {
        for (const std::string& path : paths) {
            const auto same = [&path](const PluginFolder& f) { return lowerCase(f.path) == lowerCase(path); };
            if (std::none_of(out.begin(), out.end(), same)) {
                std::error_code error;
                out.push_back({path, source, fs::is_directory(pathFromUtf8(path), error)});
            }
        }
    };
    if (given.empty()) {
        add(registeredPluginFolders(), FolderSource::kRegistry);
        add(usualPluginFolders(), FolderSource::kUsual);
    } else {
        add(given, FolderSource::kGiven);
    }
    return out;
}

std::vector<LibraryFile> findCopies(const std::vector<PluginFolder>& folders) {
    constexpr int kMostDepth = 8;
    constexpr std::size_t kMostEntries = 200'000;
    const std::string wanted = lowerCase(kPluginFileName);
    std::vector<LibraryFile> out;
    std::size_t entries = 0;
    for (const PluginFolder& folder : folders) {
        std::error_code error;
        fs::recursive_directory_iterator it(pathFromUtf8(folder.path),
                                            fs::directory_options::skip_permission_denied, error);
        for (const fs::recursive_directory_iterator end; !error && it != end && entries < kMostEntries;
             it.increment(error), ++entries) {
            if (it.depth() >= kMostDepth) {
                it.disable_recursion_pending();
            }
            const std::string path = pathToUtf8(fs::path(it->path()).make_preferred());
            const auto same = [&path](const LibraryFile& f) { return lowerCase(f.path) == lowerCase(path); };
            if (lowerCase(pathToUtf8(it->path().filename())) == wanted && isFile(path) &&
                std::none_of(out.begin(), out.end(), same)) {
                out.push_back(readLibrary(path));
            }
        }
    }
    return out;
}

std::vector<std::string> findCodecsBeside(const std::vector<LibraryFile>& copies) {
    std::vector<std::string> out;
    for (const LibraryFile& copy : copies) {
        const std::string folder = pathToUtf8(pathFromUtf8(copy.path).parent_path());
        if (std::string codec = joinedPath(folder, kCodecFileName); isFile(codec)) {
            out.push_back(std::move(codec));
        }
    }
    return out;
}

CodecSearch findCodecs(const std::string& first) {
    std::vector<std::string> folders = libraryFolders();
    if (!first.empty()) {
        folders.insert(folders.begin(), first);
    }
    CodecSearch out;
    out.folders = folders.size();
    for (const std::string& folder : folders) {
        if (const std::string path = joinedPath(folder, kCodecFileName); isFile(path)) {
            out.found.push_back(readLibrary(path));
        }
    }
    const std::string narrow = narrowSystemFolder();
    if (const std::string path = joinedPath(narrow, kCodecFileName); !narrow.empty() && isFile(path)) {
        out.narrowPath = path;
    }
    return out;
}

}  // namespace simhost::tool
