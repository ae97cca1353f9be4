#include "tool/excerpt/excerpt_file.h"

#include <array>
#include <cerrno>

#include "tool/excerpt/sparse_platform.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

std::string partBeside(const std::string& path) {
    return pathToUtf8(pathFromUtf8(path).parent_path() / temporaryName(".part"));
}

}  // namespace

void requireFreeName(const std::string& pathUtf8) {
    const FileFacts facts = fileFacts(pathUtf8);
    if (facts.kind != FileKind::kMissing) {
        throw ToolError(kNoOutput, "'" + pathUtf8 + "' is not written: there is something of that name",
                        "an excerpt replaces nothing: name a new file", "name-taken");
    }
    const std::string folder = pathToUtf8(pathFromUtf8(pathUtf8).parent_path());
    if (!folder.empty() && fileFacts(folder).kind != FileKind::kFolder) {
        throw ToolError(kNoOutput,
                        "'" + pathUtf8 + "' cannot be written: there is no folder '" + folder + "'",
                        "make the folder first");
    }
}

ExcerptFile::ExcerptFile(const std::string& pathUtf8, std::uint64_t size)
    : m_path(pathUtf8), m_part(partBeside(pathUtf8)) {
    requireFreeName(m_path);
    const CreatedFile created = createFile(m_part.path(), false);
    if (created.file == nullptr) {
        fail("cannot create", created.reason);
    }
    m_file.reset(created.file);
    allowHoles(m_file.get());
    if (size > 0) {
        write(size - 1, std::array<std::uint8_t, 1>{});
    }
}

void ExcerptFile::fail(const char* what, const std::string& reason) const {
    throw ToolError(kNoOutput, std::string(what) + " '" + m_path + "': " + reason);
}

void ExcerptFile::write(std::uint64_t position, std::span<const std::uint8_t> bytes) {
    if (!seekTo(m_file.get(), position) ||
        std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size()) {
        fail("cannot write to", systemReason(errno));
    }
}

void ExcerptFile::close() {
    if (std::fclose(m_file.release()) != 0) {
        fail("cannot write to", systemReason(errno));
    }
}

void ExcerptFile::finish() {
    const std::string reason = renameToNew(m_part.path(), m_path);
    if (!reason.empty()) {
        fail("cannot write", reason);
    }
    m_part.keep();
}

}  // namespace simhost::tool
