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

std::vector<std::string> logNames() {
    std::vector<std::string> out;
    std::error_code error;
    for (fs::directory_iterator it(pathFromUtf8(logFolder()), error), end; !error && it != end;
         it.increment(error)) {
        std::string name = pathToUtf8(it->path().filename());
        if (isLogName(name)) {
            out.push_back(std::move(name));
        }
    }
    return out;
}

std::string inLogFolder(const std::string& name) {
    return pathToUtf8(pathFromUtf8(logFolder()) / pathFromUtf8(name));
}

}  // namespace

std::vector<std::string> logFiles() {
    std::vector<std::string> out;
    for (const std::string& name : logNames()) {
        out.push_back(inLogFolder(name));
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string newestLog() {
    const std::string newest = newestLogName(logNames());
    return newest.empty() ? newest : inLogFolder(newest);
}

bool readLog(const std::string& path, std::uint64_t mostBytes, const std::function<void(LogItem)>& take) {
    constexpr std::uint64_t kReadBlock = std::uint64_t{1} << 20;
    std::ifstream stream(pathFromUtf8(path), std::ios::binary);
    if (!stream) {
        return false;
    }
    LogReader reader;
    CallPairing pairing;
    const auto takeReady = [&] {
        while (auto entry = reader.next()) {
            for (LogItem& item : pairing.add(std::move(*entry))) {
                take(std::move(item));
            }
        }
    };
    std::vector<char> block(static_cast<std::size_t>(kReadBlock));
    while (mostBytes > 0 && stream) {
        stream.read(block.data(), static_cast<std::streamsize>(std::min(kReadBlock, mostBytes)));
        const auto count = static_cast<std::size_t>(stream.gcount());
        mostBytes -= count;
        reader.feed({block.data(), count});
        takeReady();
    }
    reader.flush(true);
    takeReady();
    for (LogItem& item : pairing.finish()) {
        take(std::move(item));
    }
    return true;
}

}  // namespace simhost::tool
