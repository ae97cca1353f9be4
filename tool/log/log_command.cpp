// log: reads the plug-in's diagnostic log and tells in plain words what happened, also while it is written.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tool/commands.h"
#include "tool/log/log_list.h"
#include "tool/log/log_printer.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/terminal.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_calls.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/logs/log_reader.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPoll{200};
// A line that nothing has followed for so many polls is taken as whole.
constexpr int kQuietPolls = 3;
constexpr std::size_t kBlock = std::size_t{1} << 20;

struct LogOptions {
    std::optional<std::string> file;
    bool json = false;
    bool follow = false;
    double seconds = 0;
    bool failures = false;
    bool colour = false;
    bool all = false;
    bool list = false;
    Versions versions;
};

// One log from its beginning, shown as it is read.
class Reading {
 public:
    Reading(const LogOptions& options, std::string path)
        : m_options(options),
          m_path(std::move(path)),
          m_printer({.colour = options.colour || prepareColours(),
                     .all = options.all,
                     .failuresOnly = options.failures}),
          m_grouped(options.failures && !options.all && !options.json && !options.follow) {
        if (!options.json) {
            std::printf("%s\n", m_path.c_str());
        } else if (!options.follow) {
            std::printf("{\"log\": %s,\n\"versions\": %s,\n\"items\": [", quoted(m_path).c_str(),
                        jsonText(versionJson(m_options.versions)).c_str());
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
            std::printf("\n%s\nversions here and now:\n%s", m_printer.text(m_summary).c_str(),
                        versionText(m_options.versions).c_str());
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
            if (m_grouped) {
                continue;
            }
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
    bool m_grouped;  // equal failures are told once, in the summary
    bool m_first = true;
};

int readOnce(const LogOptions& options) {
    const std::string path = options.file ? *options.file : newestLog();
    if (!options.file && path.empty()) {
        throw ToolError(kFailed, "there is no log in '" + logFolder() + "'",
                        "switch the log on (\"importer_host doctor\" tells how), then start the host",
                        "no-log");
    }
    requireClipFile(path);
    Reading reading(options, path);
    (void)reading.readOn();
    reading.finish();
    if (reading.reader().lines() == reading.reader().foreignLines() && reading.reader().lines() > 0) {
        throw ToolError(kFailed, "'" + path + "' is no log of the plug-in", "", "not-a-log");
    }
    return kSuccess;
}

// Until the user or the time ends it. A host that is started meanwhile begins a log of its own, which is then
// followed in the place of the older one.
int follow(const LogOptions& options) {
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(options.seconds));
    std::optional<Reading> reading;
    int quiet = 0;
    do {
        const std::string path = options.file ? *options.file : newestLog();
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
    } while (!interrupted() && (options.seconds <= 0 || Clock::now() < end));
    if (!reading) {
        throw ToolError(kFailed, "no log was begun in '" + logFolder() + "'", "", "no-log");
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
    parser->add_flag("--failures", options->failures,
                     "Show failures only, equal ones once; with --all each of them");
    parser->add_flag("--all", options->all, "Show the rows of tables too, and repeat every explanation");
    parser->add_flag("--list", options->list, "List all logs of this user: application, time, failures");
    parser->add_flag("--color", options->colour, "Use colours even if the output is no terminal");
    CLI::Option* following = parser->add_flag(
        "--follow", options->follow, "Go on as the log grows, until Ctrl-C; with --json one object a line");
    parser->add_option("--seconds", options->seconds, "Follow for so long only")
        ->needs(following)
        ->check(CLI::Range(0.1, 1e6));
    return {parser,
            [options](const GlobalOptions& global) {
                options->json = global.json;
                if (options->list) {
                    const auto logs = listLogs();
                    writeAnswer("", options->json ? listJson(logs) : listText(logs));
                    return static_cast<int>(kSuccess);
                }
                options->versions = versionsOf(global);
                return options->follow ? follow(*options) : readOnce(*options);
            },
            {.profile = false, .log = false, .progress = false}};
}

}  // namespace simhost::tool
