#include "tests/integration/plugin_log_text.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// What printf's "%p" has written at `at`: its length, and whether it is the null pointer. The runtimes
// disagree: "(nil)", "0x0", "0000000000000000", "0x7f12", "00007FF612345678".
struct Pointer {
    std::size_t length = 0;
    bool isNull = true;
};

Pointer pointerAt(std::string_view line, std::size_t at) {
    if (line.substr(at, 5) == "(nil)") {
        return {5, true};
    }
    Pointer found;
    if (line.substr(at, 2) == "0x") {
        found.length = 2;
    }
    while (at + found.length < line.size() && isHexDigit(line[at + found.length])) {
        if (line[at + found.length] != '0') {
            found.isNull = false;
        }
        ++found.length;
    }
    return found;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text = "\n";
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

void replaceAll(std::string& text, std::string_view what, std::string_view with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
}

}  // namespace

std::string maskedAddresses(std::string_view line) {
    std::string out;
    // "{0x" opens a buffer in the text of a codec error.
    constexpr std::string_view kBefore[] = {"ptr: ", "outFrame: ", "{"};
    std::size_t at = 0;
    while (at < line.size()) {
        bool masked = false;
        for (const std::string_view before : kBefore) {
            if (line.substr(at, before.size()) != before) {
                continue;
            }
            if (before == "{" && line.substr(at, 3) != "{0x") {
                continue;
            }
            const Pointer pointer = pointerAt(line, at + before.size());
            if (pointer.length == 0) {
                continue;
            }
            out.append(before).append(pointer.isNull ? "<null>" : "<address>");
            at += before.size() + pointer.length;
            masked = true;
            break;
        }
        if (!masked) {
            out += line[at++];
        }
    }
    return out;
}

std::vector<LogText::Line> LogText::take() {
    const std::string bytes = m_capture->takeBytes();
    std::vector<Line> lines;
    std::size_t at = 0;
    for (std::size_t end = bytes.find("\r\n", at); end != std::string::npos; end = bytes.find("\r\n", at)) {
        const std::string_view line = std::string_view(bytes).substr(at, end - at);
        std::string text = orvantis::test::maskedLine(line);
        // A message may bring line ends of its own; what stands behind them has no header.
        std::uint32_t thread = lines.empty() ? 0 : lines.back().thread;
        constexpr std::string_view kHeader = "[T] [#] ";
        if (text.starts_with(kHeader)) {
            thread = orvantis::test::threadOfLine(line);
            text.erase(0, kHeader.size());
        }
        text = maskedAddresses(text);
        if (text.starts_with("Application: ")) {
            text = "Application: <host>";
        }
        replaceAll(text, m_folder + "\\", "<folder>/");
        replaceAll(text, m_folder + "/", "<folder>/");
        if (text.ends_with(' ')) {
            text += '$';
        }
        lines.push_back({thread, std::move(text)});
        at = end + 2;
    }
    return lines;
}

std::vector<std::string> LogText::newLines() {
    std::vector<std::string> out;
    for (Line& line : take()) {
        out.push_back(std::move(line.text));
    }
    return out;
}

std::string LogText::news() {
    return joined(newLines());
}

std::string LogText::newsBehind(std::string_view line) {
    std::vector<std::string> lines = newLines();
    const auto found = std::find(lines.begin(), lines.end(), line);
    if (found == lines.end()) {
        throw std::runtime_error("no line \"" + std::string(line) + "\" in the log:" + joined(lines));
    }
    lines.erase(lines.begin(), found + 1);
    return joined(lines);
}

std::vector<std::string> LogText::newsByThread() {
    std::vector<std::pair<std::uint32_t, std::vector<std::string>>> threads;
    for (Line& line : take()) {
        std::size_t i = 0;
        while (i < threads.size() && threads[i].first != line.thread) {
            ++i;
        }
        if (i == threads.size()) {
            threads.emplace_back(line.thread, std::vector<std::string>());
        }
        threads[i].second.push_back(std::move(line.text));
    }
    std::vector<std::string> out;
    for (const auto& thread : threads) {
        out.push_back(joined(thread.second));
    }
    return out;
}
