#include "tool/report/report_page.h"

#include <algorithm>
#include <iterator>

#include "tool/report/report_log.h"
#include "tool/report/report_plot.h"
#include "tool/report/report_style.h"
#include "tool/shared/base/html_text.h"
#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

std::string factList(const std::vector<Fact>& facts) {
    std::string out = "<dl class=\"facts\">";
    for (const auto& [name, value] : facts) {
        out += "<div><dt>" + htmlEscaped(name) + "</dt><dd>" + htmlEscaped(value) + "</dd></div>";
    }
    return out + "</dl>\n";
}

std::string notes(const Report& report) {
    std::string out = "<ul class=\"notes\">";
    if (!report.failure.empty()) {
        out += "<li class=\"bad\">" + htmlEscaped(report.failure) + "</li>";
    }
    for (const std::string& warning : report.warnings) {
        std::string text = warning;
        text.erase(text.find_last_not_of('\n') + 1);
        out += "<li>" + htmlEscaped(text) + "</li>";
    }
    if (report.failure.empty() && report.warnings.empty()) {
        out += "<li class=\"good\">Nothing unusual was found.</li>";
    }
    return out + "</ul>\n";
}

std::string frameSheet(const Report& report) {
    std::string out = "<section><h2>Frames</h2><div class=\"sheet\">\n";
    for (const ReportFrame& frame : report.frames) {
        const std::string caption = "frame " + std::to_string(frame.index) + " · " + htmlEscaped(frame.time) +
                                    (frame.empty ? " · <em>empty</em>" : "");
        out += "<figure>";
        if (frame.png.empty()) {
            out += "<div class=\"lost\">" + htmlEscaped(frame.problem) + "</div>";
        } else {
            out += "<img alt=\"frame " + std::to_string(frame.index) + "\" src=\"" + pngDataUri(frame.png) +
                   "\">";
        }
        out += "<figcaption>" + caption + "</figcaption></figure>\n";
    }
    return out + "</div></section>\n";
}

std::string soundSection(const ReportSound& sound) {
    std::string out = "<section><h2>" + htmlEscaped(sound.title) + "</h2>\n" + factList(sound.facts);
    if (!sound.problem.empty()) {
        out += "<ul class=\"notes\"><li>" + htmlEscaped(sound.problem) + "</li></ul>";
    }
    if (!sound.channels.empty()) {
        out += "<h3>Waveforms</h3>\n";
    }
    for (const ReportChannel& channel : sound.channels) {
        out += "<div class=\"channel\"><div><b>" + htmlEscaped(channel.number) + "</b> " +
               htmlEscaped(channel.label) + "<span class=\"soft\">" + htmlEscaped(channel.note) +
               "</span></div>" + channel.svg + "</div>\n";
    }
    return out + "</section>\n";
}

std::string rateSection(const Report& report) {
    const std::vector<std::uint32_t>& sizes = report.avi.frameSizes;
    if (sizes.empty()) {
        return {};
    }
    double sum = 0;
    for (const std::uint32_t size : sizes) {
        sum += size;
    }
    const double mean = sum / static_cast<double>(sizes.size());
    const auto [least, most] = std::minmax_element(sizes.begin(), sizes.end());
    std::vector<Fact> facts = {
        {"Largest frame", bytesText(*most) + ", frame " + std::to_string(most - sizes.begin())},
        {"Smallest frame", bytesText(*least) + ", frame " + std::to_string(least - sizes.begin())},
        {"Mean frame", bytesText(mean)}};
    if (report.framesPerSecond > 0) {
        facts.emplace_back("Mean data rate", bytesText(mean * report.framesPerSecond) + "/s");
    }
    const bool shared = sizes.size() > kDrawingColumns;
    std::string legend = shared ? "full: mean, pale: largest" : "";
    if (*least == 0) {
        legend += (legend.empty() ? "" : "; ") + std::string("red: frames without data");
    }
    return "<section><h2>Frame sizes</h2>\n" + factList(facts) + "<h3>" +
           (shared ? "Mean and largest frame over time" : "Size of each frame") + "</h3>\n" +
           "<div class=\"ends\"><span>" + bytesText(*most) + "</span><span>" + legend + "</span></div>" +
           frameSizeSvg(sizes) + "<div class=\"ends\"><span>frame 0</span><span>frame " +
           std::to_string(sizes.size() - 1) + "</span></div></section>\n";
}

const char* indexName(IndexKind kind) {
    switch (kind) {
        case IndexKind::kLegacy:
            return "idx1";
        case IndexKind::kOpenDml:
            return "OpenDML";
        case IndexKind::kNone:
            break;
    }
    return "none";
}

const char* kindName(StreamFacts::Kind kind) {
    switch (kind) {
        case StreamFacts::Kind::kVideo:
            return "pictures";
        case StreamFacts::Kind::kAudio:
            return "sound";
        case StreamFacts::Kind::kOther:
            break;
    }
    return "other";
}

std::string gapList(const AviFacts& avi) {
    if (avi.gaps.empty()) {
        return "<p class=\"soft\">No stretch of 64 KiB or more between the chunks is without an index.</p>";
    }
    std::string out =
        "<details><summary>Stretches that no index mentions: " + std::to_string(avi.gapCount) +
        "</summary><div class=\"scroll\"><table class=\"short\"><tr><th class=\"n\">Position</th>"
        "<th class=\"n\">Bytes</th></tr>\n";
    for (const Gap& gap : avi.gaps) {
        out += "<tr><td class=\"n\">" + std::to_string(gap.position) + "</td><td class=\"n\">" +
               std::to_string(gap.bytes) + "</td></tr>\n";
    }
    out += "</table></div>";
    if (avi.gapCount > avi.gaps.size()) {
        out += "<p class=\"soft\">and " + std::to_string(avi.gapCount - avi.gaps.size()) + " more</p>";
    }
    return out + "</details>";
}

// On narrow windows each row stands as a block, and every value has its name beside it.
std::string streamSection(const AviFacts& avi) {
    constexpr const char* kNames[] = {"Stream", "Kind",         "Format",           "Index", "Chunks",
                                      "Empty",  "Past the end", "Length in header", "Data"};
    constexpr std::size_t kFirstNumber = 4;
    const auto look = [](std::size_t column) { return column >= kFirstNumber ? "n" : ""; };
    std::string out =
        "<section><h2>Streams and index</h2><div class=\"scroll\"><table class=\"streams\"><tr>";
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
        out += std::string("<th class=\"") + look(i) + "\">" + kNames[i] + "</th>";
    }
    std::size_t number = 0;
    for (const StreamFacts& stream : avi.streams) {
        const std::string values[std::size(kNames)] = {
            std::to_string(number++),
            kindName(stream.kind),
            htmlEscaped(stream.format),
            std::string(indexName(stream.index)) + (stream.openDmlRefused ? " (OpenDML refused)" : ""),
            std::to_string(stream.chunks),
            std::to_string(stream.emptyChunks),
            std::to_string(stream.chunksPastEnd),
            std::to_string(stream.declaredLength),
            bytesText(static_cast<double>(stream.bytes))};
        const bool odd[std::size(kNames)] = {false,
                                             false,
                                             false,
                                             stream.openDmlRefused,
                                             false,
                                             stream.emptyChunks > 0,
                                             stream.chunksPastEnd > 0};
        out += "</tr>\n<tr>";
        for (std::size_t i = 0; i < std::size(kNames); ++i) {
            out += std::string("<td class=\"") + look(i) + (odd[i] ? " odd" : "") + "\" data-name=\"" +
                   kNames[i] + "\">" + values[i] + "</td>";
        }
    }
    return out + "</tr>\n</table></div>" + gapList(avi) + "</section>\n";
}

}  // namespace

std::string reportPage(const Report& report) {
    std::string out =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
        "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; style-src "
        "'unsafe-inline'\"><title>" +
        htmlEscaped(report.fileName) + "</title><style>" + kReportStyle +
        "</style></head><body><main>\n<h1>" + htmlEscaped(report.fileName) + "</h1><p class=\"path\">" +
        htmlEscaped(report.path) + "</p>\n" + notes(report);
    if (!report.file.empty()) {
        out += "<section><h2>File</h2>\n" + factList(report.file) + "</section>\n";
    }
    if (report.hasAvi && !report.avi.streams.empty()) {
        out += streamSection(report.avi);
    }
    if (!report.video.empty()) {
        out += "<section><h2>Pictures</h2>\n" + factList(report.video);
        if (!report.pixelFormats.empty()) {
            out += "<h3>Pixel formats on offer, the best first</h3><ul class=\"chips\">";
            for (const std::string& format : report.pixelFormats) {
                out += "<li>" + htmlEscaped(format) + "</li>";
            }
            out += "</ul>";
        }
        out += "</section>\n";
    }
    if (!report.frames.empty()) {
        out += frameSheet(report);
    }
    for (const ReportSound& sound : report.sounds) {
        out += soundSection(sound);
    }
    if (report.hasAvi) {
        out += rateSection(report);
    }
    return out + logSection(report.log) + "<p class=\"soft\">" + htmlEscaped(report.made) +
           "</p>\n</main></body></html>\n";
}

}  // namespace simhost::tool
