#include "tool/verify/frame_md5_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <optional>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

// More streams than an AVI file can have.
constexpr std::uint32_t kMostStreams = 1000;

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

template <typename Number>
std::optional<Number> number(std::string_view text) {
    text = trimmed(text);
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<Md5Digest> digest(std::string_view text) {
    text = trimmed(text);
    Md5Digest out{};
    if (text.size() != 2 * out.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < out.size(); ++i) {
        const auto [end, error] = std::from_chars(text.data() + 2 * i, text.data() + 2 * i + 2, out[i], 16);
        if (error != std::errc() || end != text.data() + 2 * i + 2) {
            return std::nullopt;
        }
    }
    return out;
}

// Two numbers with a sign between them.
template <typename Number>
bool takePair(std::string_view text, char sign, Number& first, Number& second) {
    const std::size_t at = text.find(sign);
    const auto one = number<Number>(text.substr(0, at));
    const auto two = at == std::string_view::npos ? std::nullopt : number<Number>(text.substr(at + 1));
    if (!one || !two) {
        return false;
    }
    first = *one;
    second = *two;
    return true;
}

class Parser {
 public:
    explicit Parser(const std::string& name) : m_name(name) {}

    void take(std::string_view line) {
        ++m_line;
        line = trimmed(line);
        if (line.empty()) {
            return;
        }
        if (m_line == 1 && line != "#format: frame checksums") {
            fail("does not begin with '#format: frame checksums'");
        }
        line.front() == '#' ? takeComment(line.substr(1)) : takeLine(line);
    }

    FrameMd5File finish() {
        if (m_line == 0) {
            fail("is empty");
        }
        return std::move(m_out);
    }

 private:
    [[noreturn]] void fail(const std::string& what) const {
        throw ToolError(kFailed, "'" + m_name + "' is no list of hashes that can be read: " + what,
                        "\"ffmpeg -f framemd5\" and \"importer_host verify\" write such lists",
                        "not-framemd5");
    }
    [[noreturn]] void failLine() const { fail("line " + std::to_string(m_line)); }

    FrameMd5Stream& stream(std::uint32_t index) {
        if (index >= kMostStreams) {
            failLine();
        }
        if (index >= m_out.streams.size()) {
            m_out.streams.resize(std::size_t{index} + 1);
        }
        return m_out.streams[index];
    }

    void takeComment(std::string_view text) {
        const std::size_t colon = text.find(':');
        if (colon == std::string_view::npos) {
            return;  // the heads of the columns
        }
        const std::string_view value = trimmed(text.substr(colon + 1));
        const std::string_view key = text.substr(0, colon);
        if (key == "hash" && value != "MD5") {
            throw ToolError(kFailed, "'" + m_name + "' lists hashes of another kind: " + std::string(value),
                            "make it with \"-f framemd5\"", "other-hash");
        }
        const std::size_t blank = key.find(' ');
        const auto index =
            blank == std::string_view::npos ? std::nullopt : number<std::uint32_t>(key.substr(blank + 1));
        if (!index) {
            return;
        }
        const std::string_view what = key.substr(0, blank);
        FrameMd5Stream& told = stream(*index);
        if (what == "tb") {
            if (!takePair(value, '/', told.num, told.den) || told.num == 0 || told.den == 0) {
                failLine();
            }
        } else if (what == "media_type") {
            told.sound = value == "audio";
        } else if (what == "codec_id") {
            told.codec = value;
        } else if (what == "dimensions") {
            (void)takePair(value, 'x', told.width, told.height);
        } else if (what == "sar") {
            (void)takePair(value, '/', told.sarNum, told.sarDen);
        } else if (what == "sample_rate") {
            told.rate = number<std::uint32_t>(value).value_or(0);
        } else if (what == "channel_layout_name") {
            told.layout = value;
        }
    }

    void takeLine(std::string_view line) {
        std::array<std::string_view, 6> fields;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const std::size_t comma = line.find(',');
            if ((comma == std::string_view::npos) != (i + 1 == fields.size())) {
                // Side data follow in some lists; the hash is what counts.
                if (i + 1 != fields.size()) {
                    failLine();
                }
            }
            fields[i] = line.substr(0, comma);
            line = comma == std::string_view::npos ? std::string_view() : line.substr(comma + 1);
        }
        const auto index = number<std::uint32_t>(fields[0]);
        const auto pts = number<std::int64_t>(fields[2]);
        const auto duration = number<std::int64_t>(fields[3]);
        const auto size = number<std::uint64_t>(fields[4]);
        const auto hash = digest(fields[5]);
        if (!index || !pts || !duration || !size || !hash) {
            failLine();
        }
        (void)stream(*index);
        m_out.lines.push_back({*index, *pts, *duration, *size, *hash});
    }

    const std::string& m_name;
    std::uint64_t m_line = 0;
    FrameMd5File m_out;
};

}  // namespace

std::string usualChannels(std::uint32_t channels) {
    constexpr const char* kNames[] = {"mono", "stereo", "2.1", "4.0", "5.0", "5.1", "6.1", "7.1"};
    return channels >= 1 && channels <= std::size(kNames) ? kNames[channels - 1]
                                                          : std::to_string(channels) + " channels";
}

std::string frameMd5Text(const FrameMd5File& file, std::string_view software) {
    std::string out = "#format: frame checksums\n#version: 2\n#hash: MD5\n#software: ";
    out += software;
    out += '\n';
    for (std::size_t i = 0; i < file.streams.size(); ++i) {
        const FrameMd5Stream& stream = file.streams[i];
        const std::string at = " " + std::to_string(i) + ": ";
        out += "#tb" + at + std::to_string(stream.num) + "/" + std::to_string(stream.den) + "\n";
        out += "#media_type" + at + (stream.sound ? "audio" : "video") + "\n";
        out += "#codec_id" + at + stream.codec + "\n";
        if (stream.sound) {
            out += "#sample_rate" + at + std::to_string(stream.rate) + "\n";
            out += "#channel_layout_name" + at + stream.layout + "\n";
        } else {
            out += "#dimensions" + at + std::to_string(stream.width) + "x" + std::to_string(stream.height) +
                   "\n";
            out += "#sar" + at + std::to_string(stream.sarNum) + "/" + std::to_string(stream.sarDen) + "\n";
        }
    }
    out += "#stream#, dts,        pts, duration,     size, hash\n";
    std::vector<const FrameMd5Line*> lines;
    for (const FrameMd5Line& line : file.lines) {
        lines.push_back(&line);
    }
    const auto seconds = [&file](const FrameMd5Line& line) {
        const FrameMd5Stream& stream = file.streams[line.stream];
        return static_cast<long double>(line.pts) * stream.num / stream.den;
    };
    std::stable_sort(lines.begin(), lines.end(), [&](const auto* a, const auto* b) {
        const long double one = seconds(*a);
        const long double other = seconds(*b);
        return one != other ? one < other : a->stream < b->stream;
    });
    for (const FrameMd5Line* line : lines) {
        char text[128];
        (void)std::snprintf(text, sizeof text, "%u, %10lld, %10lld, %8lld, %8llu, ", line->stream,
                            static_cast<long long>(line->pts), static_cast<long long>(line->pts),
                            static_cast<long long>(line->duration),
                            static_cast<unsigned long long>(line->size));
        out += text + hexText(line->hash) + "\n";
    }
    return out;
}

FrameMd5File parseFrameMd5(std::string_view text, const std::string& name) {
    Parser parser(name);
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        line = line.substr(0, line.find_last_not_of('\r') + 1);
        parser.take(line);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
    return parser.finish();
}

}  // namespace simhost::tool
