// See log_capture.h.

#include "tests/support/log_capture.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>

namespace orvantis::test {

namespace fs = std::filesystem;

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

struct Header {
    std::uint32_t thread = 0;
    std::size_t length = 0;
};

// "[dddd-dd-dd dd:dd:dd] [d+] "
std::optional<Header> headerOf(std::string_view line) {
    constexpr std::string_view kShape = "[0000-00-00 00:00:00] [";
    if (line.size() < kShape.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < kShape.size(); ++i) {
        if (kShape[i] == '0' ? !isDigit(line[i]) : line[i] != kShape[i]) {
            return std::nullopt;
        }
    }
    Header header;
    std::size_t i = kShape.size();
    for (; i < line.size() && isDigit(line[i]); ++i) {
        header.thread = header.thread * 10 + static_cast<std::uint32_t>(line[i] - '0');
    }
    if (i == kShape.size() || line.substr(i, 2) != "] ") {
        return std::nullopt;
    }
    header.length = i + 2;
    return header;
}

std::set<fs::path> logFilesIn(const fs::path& folder) {
    std::set<fs::path> files;
    if (fs::is_directory(folder)) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            files.insert(entry.path());
        }
    }
    return files;
}

// Empty when there is none.
fs::path onlyOneOf(const std::vector<fs::path>& files) {
    if (files.size() > 1) {
        throw std::runtime_error(std::to_string(files.size()) + " log files instead of one");
    }
    return files.empty() ? fs::path() : files.front();
}

}  // namespace

LogCapture::LogCapture(Switch initial)
    : m_redirection(m_folder.path()), m_profile(m_redirection.effectiveProfile()) {
    m_strangers = logFilesIn(logFolder());
    if (initial == Switch::kOn) {
        m_redirection.setSwitch(1);
    }
}

std::vector<fs::path> LogCapture::files() const {
    std::vector<fs::path> result;
    const std::set<fs::path> all = logFilesIn(logFolder());
    std::set_difference(all.begin(), all.end(), m_strangers.begin(), m_strangers.end(),
                        std::back_inserter(result));
    return result;
}

std::vector<std::string> LogCapture::lines() const {
    const fs::path file = onlyOneOf(files());
    return file.empty() ? std::vector<std::string>() : logLines(readFile(file));
}

std::vector<std::string> LogCapture::takeLines() {
    return logLines(takeBytes());
}

std::string LogCapture::takeBytes() {
    const fs::path path = onlyOneOf(files());
    if (path.empty()) {
        return {};
    }
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(m_read));
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    m_read += bytes.size();
    bytes.insert(0, m_begun);
    const std::size_t lastEnd = bytes.rfind("\r\n");
    const std::size_t whole = lastEnd == std::string::npos ? 0 : lastEnd + 2;
    m_begun = bytes.substr(whole);
    bytes.resize(whole);
    return bytes;
}

std::vector<std::string> logLines(std::string_view bytes) {
    std::vector<std::string> lines;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find_first_of("\r\n");
        if (end == std::string_view::npos || bytes.substr(end, 2) != "\r\n") {
            throw std::runtime_error("log line without CR LF: " + std::string(bytes.substr(0, end)));
        }
        lines.push_back(maskedLine(bytes.substr(0, end)));
        bytes.remove_prefix(end + 2);
    }
    return lines;
}

std::string maskedLine(std::string_view line) {
    const std::optional<Header> header = headerOf(line);
    return header ? "[T] [#] " + std::string(line.substr(header->length)) : std::string(line);
}

std::uint32_t threadOfLine(std::string_view line) {
    const std::optional<Header> header = headerOf(line);
    return header ? header->thread : 0;
}

}  // namespace orvantis::test
