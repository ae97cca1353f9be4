#include "tool/shared/run/clip_errors.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/media/avi_facts.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostFiles = 100'000;

bool isAvi(const fs::path& path) {
    std::string extension = pathToUtf8(path.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".avi";
}

// Errors of folders below are those of files that nobody named.
std::vector<std::string> clipsIn(const std::string& folder) {
    std::vector<std::string> out;
    std::error_code error;
    fs::recursive_directory_iterator it(pathFromUtf8(folder), fs::directory_options::skip_permission_denied,
                                        error);
    if (error) {
        throw ToolError(kFailed, "the folder '" + folder + "' cannot be read: " + error.message(),
                        "check whether you may read it", "unreadable-file");
    }
    for (const fs::recursive_directory_iterator end; !error && it != end && out.size() < kMostFiles;
         it.increment(error)) {
        std::error_code ignored;
        if (isAvi(it->path()) && it->is_regular_file(ignored)) {
            out.push_back(pathToUtf8(it->path()));
        }
    }
    if (out.empty()) {
        throw ToolError(kFailed, "the folder '" + folder + "' holds no .avi file",
                        "name the clips themselves", "folder");
    }
    std::sort(out.begin(), out.end());
    return out;
}

}  // namespace

void requireClipFile(const std::string& path) {
    if (path.empty()) {
        throw ToolError(kFailed, "the path of the clip is empty",
                        "name a file; in a script, look whether the variable that holds it is set",
                        "empty-path");
    }
    const FileFacts facts = fileFacts(path);
    if (facts.kind == FileKind::kMissing) {
        throw ToolError(kFailed, "'" + path + "' cannot be read: there is no such file",
                        "check the spelling; a path with blanks needs quotation marks", "missing-file");
    }
    if (facts.kind == FileKind::kFolder) {
        throw ToolError(kFailed, "'" + path + "' is a folder, not a clip", "name a file in it", "folder");
    }
    const std::string reason = facts.kind == FileKind::kUnknown ? facts.reason
                               : facts.kind == FileKind::kOther ? "it is a device, not a file"
                                                                : whyUnreadable(path);
    if (!reason.empty()) {
        throw ToolError(kFailed, "'" + path + "' cannot be read: " + reason,
                        "check whether you may read it, and whether another program holds it open",
                        "unreadable-file");
    }
    protectInput(path);
}

ToolError refusedClip(const std::string& path, std::int32_t result) {
    const std::string quoted = "'" + path + "'";
    const std::string refused = "the plug-in refuses " + quoted;
    const auto facts = readAviFacts(path);
    if (!facts) {
        return {kFailed, refused + ": " + resultText(result), "check whether another program holds it open",
                "unreadable-file"};
    }
    if (!facts->usable) {
        if (facts->problems.find("doesn't look like AVI") != std::string::npos) {
            return {kFailed, quoted + " is no AVI file that can be used: it does not begin like one",
                    facts->fileSize == 0 ? "the file is empty: copy or record it anew"
                                         : "open it with a program for its real format, or convert it",
                    "not-avi"};
        }
        return {kFailed,
                quoted +
                    " is an AVI file without usable headers: its recording was never finished, or its "
                    "beginning is damaged",
                "\"importer_host rescue FILE\" says whether something of it can be brought back; else copy "
                "it anew",
                "no-headers"};
    }
    const auto video = std::find_if(facts->streams.begin(), facts->streams.end(),
                                    [](const auto& s) { return s.kind == StreamFacts::Kind::kVideo; });
    if (video == facts->streams.end()) {
        return {kFailed, quoted + " holds no pictures", "the plug-in opens files with Orvantis pictures only",
                "no-pictures"};
    }
    return {kFailed,
            refused + ": " + resultText(result) + "; its pictures are coded as '" + video->format +
                "', which the Orvantis codec here does not decode",
            "if that is another codec's type, another importer of the host opens the clip; else update the "
            "Orvantis codec",
            "other-codec"};
}

std::vector<std::string> clipFiles(const std::vector<std::string>& paths) {
    std::vector<std::string> out;
    for (const std::string& path : paths) {
        if (fileFacts(path).kind == FileKind::kFolder) {
            const auto inside = clipsIn(path);
            out.insert(out.end(), inside.begin(), inside.end());
        } else {
            out.push_back(path);
        }
    }
    return out;
}

}  // namespace simhost::tool
