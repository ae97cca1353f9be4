#include "tool/collect/folder_list.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/plugin_files.h"

namespace simhost::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostLines = 5000;
constexpr int kMostListedDepth = 8;

std::string lineOf(const fs::directory_entry& entry, const fs::path& folder) {
    std::error_code error;
    const std::string path = pathToUtf8(entry.path());
    const std::string name = pathToUtf8(entry.path().lexically_relative(folder));
    if (entry.is_directory(error)) {
        return "  " + name + "/\n";
    }
    const std::uintmax_t size = entry.file_size(error);
    std::string out = "  " + name + ", " +
                      (error ? std::string("unknown size") : std::to_string(size) + " bytes") + ", " +
                      dateText(fileFacts(path).modified);
    constexpr std::uintmax_t kLargeLibrary = std::uintmax_t{64} << 20;
    const bool library = name.ends_with(".prm") || name.ends_with(".dll");
    if (library && !error && size <= kLargeLibrary) {
        out += ", version " + fileVersion(path);
    }
    return out + "\n";
}

std::string contentsOf(const std::string& folderUtf8) {
    const fs::path folder = pathFromUtf8(folderUtf8);
    std::vector<std::string> lines;
    std::error_code error;
    fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, error);
    if (error) {
        return "  cannot be read: " + error.message() + "\n";
    }
    for (const fs::recursive_directory_iterator end; !error && it != end && lines.size() < kMostLines;
         it.increment(error)) {
        throwIfInterrupted();
        lines.push_back(lineOf(*it, folder));
        if (it.depth() >= kMostListedDepth) {
            it.disable_recursion_pending();
        }
    }
    std::ranges::sort(lines);
    std::string out;
    for (const std::string& line : lines) {
        out += line;
    }
    return out.empty() ? "  empty\n" : out + (lines.size() < kMostLines ? "" : "  and more\n");
}

}  // namespace

std::string folderList(const std::vector<std::string>& pluginFolders,
                       const std::vector<std::string>& libraryFolders) {
    std::string out = "Plug-in folders\n\n";
    for (const std::string& folder : pluginFolders) {
        const bool there = fileFacts(folder).kind == FileKind::kFolder;
        out += folder + (there ? "\n" + contentsOf(folder) : ": not there\n");
    }
    out += "\nFolders in which the loader looks for " + codecLibraryName() + "\n\n";
    for (const std::string& folder : libraryFolders) {
        const std::string library = folder + "/" + codecLibraryName();
        out += folder;
        out += fileFacts(folder).kind != FileKind::kFolder ? ": not there\n"
               : fileFacts(library).exists()               ? ": there, version " + fileVersion(library) + "\n"
                                                           : ": without it\n";
    }
    return out;
}

}  // namespace simhost::tool
