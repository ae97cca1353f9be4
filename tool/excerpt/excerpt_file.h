// A new clip with holes, under a name that nothing has yet: no file is ever replaced. Main thread only.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "tool/shared/base/temporary_path.h"

namespace simhost::tool {

/// It appears under its name by finish(); without that nothing is left of it. Failures are ToolErrors with
/// kNoOutput.
class ExcerptFile {
 public:
    ExcerptFile(const std::string& pathUtf8, std::uint64_t size);
    /// What is not written is noughts.
    void write(std::uint64_t position, std::span<const std::uint8_t> bytes);
    /// Everything is in the file, which still has a name of its own: partPath().
    void close();
    const std::string& partPath() const noexcept { return m_part.path(); }
    void finish();

 private:
    struct Closing {
        void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
    };
    [[noreturn]] void fail(const char* what, const std::string& reason) const;

    std::string m_path;
    TemporaryPath m_part;
    std::unique_ptr<std::FILE, Closing> m_file;
};

/// Throws unless the name is free and its folder is there.
void requireFreeName(const std::string& pathUtf8);

}  // namespace simhost::tool
