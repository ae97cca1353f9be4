#include "tool/shared/logs/log_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_reader.h"

namespace simhost::tool {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> logNames(const std::string& folder) {
    std::vector<std::string> out;
    if (folder.empty()) {
        return out;
    }
    std::error_code error;
    for (fs::directory_iterator it(pathFromUtf8(folder), error), end; !error && it != end;
         it.increment(error)) {
        std::string name = pathToUtf8(it->path().filename());
        if (isLogName(name)) {
            out.push_back(std::move(name));
        }
    }
    return out;
}

std::string inFolder(const std::string& folder, const std::string& name) {
    return pathToUtf8(pathFromUtf8(folder) / pathFromUtf8(name));
}

// What was read, as calls and lines.
class Pieces {
 public:
    explicit Pieces(const std::function<void(LogItem)>& take) : m_take(take) {}

    void add(std::string_view bytes) {
        m_reader.feed(bytes);
        takeReady();
    }
    void finish() {
        m_reader.flush(true);
        takeReady();
        for (LogItem& item : m_pairing.finish()) {
            m_take(std::move(item));
        }
    }

 private:
    void takeReady() {
        while (auto entry = m_reader.next()) {
            for (LogItem& item : m_pairing.add(std::move(*entry))) {
                m_take(std::move(item));
            }
        }
    }

    const std::function<void(LogItem)>& m_take;
    LogReader m_reader;
    CallPairing m_pairing;
};

// The first line of a whole call in a piece from the middle of a log; its end when there is none.
std::size_t firstCall(std::string_view piece) {
    const std::size_t separator = piece.find(kCallSeparator);
    const std::size_t line = piece.rfind('\n', separator);
    return separator == std::string_view::npos ? piece.size() : line == std::string_view::npos ? 0 : line + 1;
}

}  // namespace

std::vector<std::string> logFiles(const std::string& folder) {
    std::vector<std::string> out;
    for (const std::string& name : logNames(folder)) {
        out.push_back(inFolder(folder, name));
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::vector<std::string> logFiles() {
    return logFiles(logFolder());
}

std::string newestLog() {
    const std::string folder = logFolder();
    const std::string newest = newestLogName(logNames(folder));
    return newest.empty() ? newest : inFolder(folder, newest);
}

bool readLog(const std::string& path, std::uint64_t mostBytes, const std::function<void(LogItem)>& take) {
    constexpr std::uint64_t kReadBlock = std::uint64_t{1} << 20;
    std::ifstream stream(pathFromUtf8(path), std::ios::binary);
    if (!stream) {
        return false;
    }
    Pieces pieces(take);
    std::vector<char> block(static_cast<std::size_t>(kReadBlock));
    while (mostBytes > 0 && stream) {
        stream.read(block.data(), static_cast<std::streamsize>(std::min(kReadBlock, mostBytes)));
        const auto count = static_cast<std::size_t>(stream.gcount());
        mostBytes -= count;
        pieces.add({block.data(), count});
    }
    pieces.finish();
    return true;
}

LogPart readLogEnd(const std::string& path, std::uint64_t mostBytes,
                   const std::function<void(LogItem)>& take) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(pathFromUtf8(path), error);
    if (error || size <= mostBytes) {
        return readLog(path, mostBytes, take) ? LogPart::kWhole : LogPart::kNone;
    }
    std::ifstream stream(pathFromUtf8(path), std::ios::binary);
    if (!stream) {
        return LogPart::kNone;
    }
    stream.seekg(static_cast<std::streamoff>(size - mostBytes));
    std::string end(static_cast<std::size_t>(mostBytes), '\0');
    stream.read(end.data(), static_cast<std::streamsize>(end.size()));
    const std::string_view piece(end.data(), static_cast<std::size_t>(stream.gcount()));
    Pieces pieces(take);
    pieces.add(piece.substr(firstCall(piece)));
    pieces.finish();
    return LogPart::kEnd;
}

}  // namespace simhost::tool
