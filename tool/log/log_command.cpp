// log: reads the plug-in's diagnostic log and tells in plain words what happened, also while it is written.
#include <CLI/CLI.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tool/commands.h"
#include "tool/log/log_printer.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/terminal.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_calls.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/logs/log_reader.h"

namespace simhost::tool {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPoll{200};
// A line that nothing has followed for so many polls is taken as whole.
constexpr int kQuietPolls = 3;
constexpr std::size_t kBlock = std::size_t{1} << 20;

struct LogOptions {
    std::string file;
    bool json = false;
    bool follow = false;
    double seconds = 0;
    bool failures = false;
    bool colour = false;
    bool all = false;
};

volatile std::sig_atomic_t g_interrupted = 0;

void interrupt(int /*signal*/) {
    g_interrupted = 1;
}

// One log from its beginning, shown as it is read.
class Reading {
 public:
    Reading(const LogOptions& options, std::string path)
        : m_options(options),
          m_path(std::move(path)),
          m_printer({.colour = options.colour || prepareColours(),
                     .all = options.all,
                     .failuresOnly = options.failures}) {
        if (!options.json) {
            std::printf("%s\n", m_path.c_str());
        } else if (!options.follow) {
            std::printf("{\"log\": %s,\n\"items\": [", quoted(m_path).c_str());
        }
    }

    const std::string& path() const noexcept { return m_path; }
    const LogReader& reader() const noexcept { return m_reader; }

    /// What the file has more than at the last call. False when there was nothing.
    bool readOn() {
        std::ifstream stream(pathFromUtf8(m_path), std::ios::binary);
        if (!stream) {
            throw ToolError(kFailed, "cannot read '" + m_path + "'");
        }
        stream.seekg(static_cast<std::streamoff>(m_read));
        bool any = false;
        for (;;) {
            m_block.resize(kBlock);
            stream.read(m_block.data(), static_cast<std::streamsize>(m_block.size()));
            const auto count = static_cast<std::size_t>(stream.gcount());
            if (count == 0) {
                return any;
            }
            any = true;
            m_read += count;
            m_reader.feed(std::string_view(m_block).substr(0, count));
            showReady();
        }
    }

    void flush(bool lastLine) {
        m_reader.flush(lastLine);
        showReady();
    }

    /// Shows the end. No further call may follow.
    void finish() {
        flush(true);
        show(m_pairing.finish());
        if (!m_options.json) {
            std::printf("\n%s", m_printer.text(m_summary).c_str());
        } else if (m_options.follow) {
            std::printf("%s\n", LogPrinter::json(m_summary).c_str());
        } else {
            std::printf("%s],\n\"summary\": %s}\n", m_first ? "" : "\n", LogPrinter::json(m_summary).c_str());
        }
        (void)std::fflush(stdout);
    }

 private:
    static std::string quoted(const std::string& text) {
        std::string out = "\"";
        for (const char c : text) {
            out += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
        }
        return printable(out) + "\"";
    }

    void showReady() {
        while (auto entry = m_reader.next()) {
            show(m_pairing.add(std::move(*entry)));
        }
        if (m_options.follow) {
            (void)std::fflush(stdout);
        }
    }

    void show(const std::vector<LogItem>& items) {
        for (const LogItem& item : items) {
            m_summary.add(item);
            const std::string out = m_options.json ? m_printer.json(item) : m_printer.text(item);
            if (out.empty()) {
                continue;
            }
            if (m_options.json && !m_options.follow) {
                std::printf("%s\n%s", m_first ? "" : ",", out.c_str());
            } else {
                std::printf("%s%s", out.c_str(), m_options.json ? "\n" : "");
            }
            m_first = false;
        }
    }

    const LogOptions& m_options;
    std::string m_path;
    std::uint64_t m_read = 0;
    std::string m_block;
    LogReader m_reader;
    CallPairing m_pairing;
    LogSummary m_summary;
    LogPrinter m_printer;
    bool m_first = true;
};

int readOnce(const LogOptions& options) {
    const std::string path = options.file.empty() ? newestLog() : options.file;
    if (path.empty()) {
        throw ToolError(kFailed,
                        "there is no log in '" + logFolder() +
                            "': switch the log on (\"importer_host doctor\" tells how), then start the host");
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(pathFromUtf8(path), error)) {
        throw ToolError(kFailed, "there is no file '" + path + "'");
    }
    Reading reading(options, path);
    (void)reading.readOn();
    reading.finish();
    if (reading.reader().lines() == reading.reader().foreignLines() && reading.reader().lines() > 0) {
        throw ToolError(kFailed, "'" + path + "' is no log of the plug-in");
    }
    return kSuccess;
}

// Until the user or the time ends it. A host that is started meanwhile begins a log of its own, which is then
// followed in the place of the older one.
int follow(const LogOptions& options) {
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(options.seconds));
    (void)std::signal(SIGINT, interrupt);
    std::optional<Reading> reading;
    int quiet = 0;
    do {
        const std::string path = options.file.empty() ? newestLog() : options.file;
        if (!path.empty() && (!reading || reading->path() != path)) {
            if (reading) {
                (void)reading->readOn();
                reading->finish();
            }
            reading.emplace(options, path);
            quiet = 0;
        }
        if (reading) {
            quiet = reading->readOn() ? 0 : quiet + 1;
            if (quiet == kQuietPolls) {
                reading->flush(false);
            }
        }
        std::this_thread::sleep_for(kPoll);
    } while (g_interrupted == 0 && (options.seconds <= 0 || Clock::now() < end));
    (void)std::signal(SIGINT, SIG_DFL);
    if (!reading) {
        throw ToolError(kFailed, "no log was begun in '" + logFolder() + "'");
    }
    (void)reading->readOn();
    reading->finish();
    return kSuccess;
}

}  // namespace

Command addLogCommand(CLI::App& app) {
    auto options = std::make_shared<LogOptions>();
    CLI::App* parser = app.add_subcommand(
        "log", "Explain the plug-in's diagnostic log: every call, what went wrong, and what it means");
    parser->add_option("FILE", options->file, "Log file (default: the newest of this user)");
    parser->add_flag("--failures", options->failures, "Show failures only");
    parser->add_flag("--all", options->all, "Show the rows of tables too, and repeat every explanation");
    parser->add_flag("--json", options->json, "Write JSON; with --follow one object a line");
    parser->add_flag("--color", options->colour, "Use colours even if the output is no terminal");
    CLI::Option* following =
        parser->add_flag("--follow", options->follow, "Go on as the log grows, until Ctrl-C");
    parser->add_option("--seconds", options->seconds, "Follow for so long only")
        ->needs(following)
        ->check(CLI::PositiveNumber);
    return {parser, [options](const GlobalOptions& /*global*/) {
                return options->follow ? follow(*options) : readOnce(*options);
            }};
}

}  // namespace simhost::tool
