#include "tool/log/log_list.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "tool/log/log_printer.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/logs/log_files.h"

namespace simhost::tool {

std::vector<ListedLog> listLogs() {
    constexpr std::uint64_t kBeginning = std::uint64_t{16} << 10;
    constexpr std::uint64_t kEnd = std::uint64_t{1} << 20;
    std::vector<ListedLog> out;
    for (const std::string& path : logFiles()) {
        throwIfInterrupted();
        LogSummary beginning;
        LogSummary end;
        (void)readLog(path, kBeginning, [&beginning](const LogItem& item) { beginning.add(item); });
        const LogPart part = readLogEnd(path, kEnd, [&end](const LogItem& item) { end.add(item); });
        if (part == LogPart::kNone) {
            continue;
        }
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(pathFromUtf8(path), error);
        out.push_back({path, beginning.application, beginning.firstStamp, end.lastStamp,
                       error ? 0 : static_cast<std::uint64_t>(size), end.failures, part == LogPart::kWhole});
    }
    return out;
}

std::string listText(const std::vector<ListedLog>& logs) {
    std::string out;
    for (const ListedLog& log : logs) {
        out += printable(log.path) + "\n  " + (log.from.empty() ? "no time" : log.from + " to " + log.to) +
               ", " + (log.application.empty() ? "unknown application" : printable(log.application)) + ", " +
               bytesText(static_cast<double>(log.bytes)) + ", " +
               counted(log.failures, "failure", "failures") + (log.whole ? "" : " at its end") + "\n";
    }
    return out + counted(logs.size(), "log", "logs") + "\n";
}

std::string listJson(const std::vector<ListedLog>& logs) {
    nlohmann::ordered_json out;
    out["logs"] = nlohmann::ordered_json::array();
    for (const ListedLog& log : logs) {
        out["logs"].push_back({{"path", log.path},
                               {"application", log.application},
                               {"from", log.from},
                               {"to", log.to},
                               {"bytes", log.bytes},
                               {"failures", log.failures},
                               {"whole", log.whole}});
    }
    return jsonText(out);
}

}  // namespace simhost::tool
