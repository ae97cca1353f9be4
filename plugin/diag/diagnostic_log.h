// One open log: its file, its console and the lock of a line. Created by the first line after the switch was
// found on, destroyed when the module leaves. Writes only what it is given; failures of the system leave it
// without output and are reported to nobody.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "diag/compiler.h"
#include "diag/log_platform.h"

namespace orvantis {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// Creates the first "<baseName>_<NN>.log" in `folder` whose number 0 to 999 is not taken and that can be
/// created. Null when there is none.
FilePtr createNumberedFile(const log_platform::Path& folder, const char* baseName);

class DiagnosticLog {
 public:
    /// Creates the file in the user's profile folder, opens the console window if `console` is set, and
    /// writes the opening lines. `name` is the first part of the file's name.
    DiagnosticLog(const std::string& name, bool console);

    /// Writes one line: time, thread, message. Any thread; lines never mix. Uses `arguments` up. Throws only
    /// what the lock and the allocation throw.
    void write(const char* format, std::va_list arguments) ORVANTIS_PRINTF(2, 0);
    void writeLine(const char* format, ...) ORVANTIS_PRINTF(2, 3);

    /// Writes one line when all other threads were ended by force, perhaps in the middle of a line: takes no
    /// lock, neither its own nor one of the runtime (streams, local time), and allocates nothing. At most 64
    /// characters of `message`.
    void writeLast(const char* message) noexcept;

    /// For tests: whether a file stands behind the lines is nothing that writing them depends on.
    bool hasFile() const noexcept { return m_file != nullptr; }

 private:
    FilePtr m_file;
    bool m_console = false;
    std::int64_t m_localOffset = 0;  ///< seconds that local time was ahead of UTC when the log was opened
    std::mutex m_mutex;              ///< held while one line is built and written
};

}  // namespace orvantis
