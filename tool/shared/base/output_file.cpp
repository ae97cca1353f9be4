#include "tool/shared/base/output_file.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

std::vector<FileFacts>& protectedInputs() {
    static std::vector<FileFacts> inputs;
    return inputs;
}

// Windows drops blanks and dots at a name's end, and ":name" behind it is a stream of the file.
bool isAviName(std::string_view path) {
    constexpr std::string_view kAvi = ".avi";
    const std::string_view name = path.substr(path.find_last_of("/\\") + 1);
    const auto ends = [kAvi](std::string_view text) {
        text = text.substr(0, text.find_last_not_of(". ") + 1);
        return text.size() >= kAvi.size() &&
               std::equal(kAvi.rbegin(), kAvi.rend(), text.rbegin(),
                          [](char wanted, char c) { return wanted == (c >= 'A' && c <= 'Z' ? c + 32 : c); });
    };
    const bool drive = name.size() > 1 && name[1] == ':';
    return ends(name) || ends(name.substr(0, name.find(':', drive ? 2 : 0)));
}

// The place of a file to be written, once nothing is against it.
FileFacts checkedTarget(const std::string& path) {
    FileFacts facts = fileFacts(path);
    const auto refuse = [&path](const std::string& reason, const char* advice) {
        throw ToolError(kNoOutput, "'" + path + "' is not written: " + reason, advice);
    };
    for (const FileFacts& input : protectedInputs()) {
        if (facts.isSameFile(input)) {
            refuse("this run reads that file", "name another file to write");
        }
    }
    if (isAviName(path) || isAviName(facts.path)) {
        refuse("it has the name of a clip", "name a file that does not end with .avi");
    }
    if (facts.kind == FileKind::kFolder) {
        refuse("it is a folder", "name a file in it");
    }
    if (facts.kind == FileKind::kUnknown) {
        refuse(facts.reason, "");
    }
    return facts;
}

}  // namespace

std::filesystem::path pathFromUtf8(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string pathToUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

void makeFolder(const std::string& folderUtf8) {
    std::error_code error;
    std::filesystem::create_directories(pathFromUtf8(folderUtf8), error);
    if (error) {
        throw ToolError(kNoOutput, "cannot make the folder '" + folderUtf8 + "': " + error.message());
    }
}

void protectInput(const std::string& pathUtf8) {
    FileFacts facts = fileFacts(pathUtf8);
    if (facts.kind == FileKind::kFile) {
        protectedInputs().push_back(std::move(facts));
    }
}

void checkOutput(const std::string& pathUtf8) {
    if (pathUtf8.empty()) {
        return;
    }
    const FileFacts facts = checkedTarget(pathUtf8);
    const std::string folder = pathToUtf8(pathFromUtf8(pathUtf8).parent_path());
    if (facts.kind == FileKind::kMissing && !folder.empty() && fileFacts(folder).kind != FileKind::kFolder) {
        throw ToolError(kNoOutput,
                        "'" + pathUtf8 + "' cannot be written: there is no folder '" + folder + "'",
                        "make the folder first");
    }
}

void requireFreeClip(const std::string& pathUtf8) {
    const auto refuse = [&pathUtf8](const std::string& reason, const std::string& advice) {
        throw ToolError(kNoOutput, "'" + pathUtf8 + "' is not written: " + reason, advice);
    };
    if (!isAviName(pathUtf8)) {
        refuse("it has not the name of a clip", "name a file that ends with .avi");
    }
    const FileFacts facts = fileFacts(pathUtf8);
    if (facts.kind == FileKind::kUnknown) {
        refuse(facts.reason, "choose another name or folder");
    }
    if (facts.kind != FileKind::kMissing) {
        refuse("there is something of that name", "name a file that is not there yet");
    }
    const std::string folder = pathToUtf8(pathFromUtf8(pathUtf8).parent_path());
    if (!folder.empty() && fileFacts(folder).kind != FileKind::kFolder) {
        refuse("there is no folder '" + folder + "'", "make the folder first");
    }
}

OutputFile::OutputFile(const std::string& pathUtf8) : m_path(pathUtf8) {
    const FileFacts facts = checkedTarget(m_path);
    // A link stays one: what it leads to is replaced.
    m_target = facts.kind == FileKind::kFile ? facts.path : m_path;
    const bool device = facts.kind == FileKind::kOther;
    if (!device) {
        const std::filesystem::path folder = pathFromUtf8(m_target).parent_path();
        m_part.emplace(pathToUtf8(folder / temporaryName(".part")));
    }
    const CreatedFile created = createFile(device ? m_target : m_part->path(), device);
    if (created.file == nullptr) {
        fail("cannot create", created.reason);
    }
    m_file.reset(created.file);
}

void OutputFile::fail(const char* what, const std::string& reason) const {
    throw ToolError(kNoOutput, std::string(what) + " '" + m_path + "': " + reason);
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size()) {
        fail("cannot write to", systemReason(errno));
    }
}

void OutputFile::finish() {
    if (std::fclose(m_file.release()) != 0) {
        fail("cannot write to", systemReason(errno));
    }
    if (!m_part) {
        return;
    }
    std::error_code error;
    std::filesystem::rename(pathFromUtf8(m_part->path()), pathFromUtf8(m_target), error);
    if (error) {
        fail("cannot replace", error.message());
    }
    m_part->keep();
}

void writeFile(const std::string& pathUtf8, std::span<const std::uint8_t> bytes) {
    OutputFile file(pathUtf8);
    file.write(bytes);
    file.finish();
}

void writeText(const std::string& pathUtf8, std::string_view text) {
    writeFile(pathUtf8, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void writeAnswer(const std::string& pathUtf8, std::string_view text) {
    if (pathUtf8.empty()) {
        (void)std::fwrite(text.data(), 1, text.size(), stdout);
    } else {
        writeText(pathUtf8, text);
    }
}

}  // namespace simhost::tool
