#include "tool/report/report_page.h"

#include <algorithm>
#include <iterator>

#include "tool/report/report_log.h"
#include "tool/report/report_plot.h"
#include "tool/shared/base/html_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/page_style.h"

namespace simhost::tool {
namespace {

std::string factList(const std::vector<Fact>& facts) {
    std::string out = "<dl class=\"facts\">";
    for (const auto& [name, value] : facts) {
        out += "<div><dt>" + htmlEscaped(name) + "</dt><dd>" + htmlEscaped(value) + "</dd></div>";
    }
    return out + "</dl>\n";
}

std::string note(const char* look, const std::string& text) {
    const std::size_t end = text.find_last_not_of('\n') + 1;
    return std::string("<li") + look + ">" + htmlEscaped(text.substr(0, end)) + "</li>";
}

std::string notes(const Report& report) {
    std::string out = "<ul class=\"notes\">";
    if (!report.failure.empty()) {
        out += note(" class=\"bad\"", report.failure);
    }
    for (const std::string& alarm : report.alarms) {
        out += note(" class=\"bad\"", alarm);
    }
    for (const std::string& warning : report.warnings) {
        out += note("", warning);
    }
    if (report.failure.empty() && report.alarms.empty() && report.warnings.empty()) {
        out += note(" class=\"good\"", "Nothing unusual was found.");
    }
    return out + "</ul>\n";
}

// What may be wider than its window scrolls, also for those who have no mouse.
std::string scrolling(const std::string& name, const std::string& html) {
    return "<div class=\"scroll\" tabindex=\"0\" role=\"region\" aria-label=\"" + htmlEscaped(name) + "\">" +
           html + "</div>";
}

std::string frameSheet(const Report& report) {
    std::string out = "<section><h2>Frames</h2><div class=\"sheet\">\n";
    for (const ReportFrame& frame : report.frames) {
        const std::string number = "frame " + std::to_string(frame.index);
        const std::string time = htmlEscaped(frame.time);
        out += "<figure>";
        if (frame.png.empty()) {
            out += "<div class=\"lost\">" + htmlEscaped(frame.problem) + "</div>";
        } else {
            out += "<img alt=\"" + number + (time.empty() ? "" : " at " + time) + "\" src=\"" +
                   pngDataUri(frame.png) + "\">";
        }
        out += "<figcaption>" + number + " · " + time + (frame.empty ? " · <em>empty</em>" : "") +
               "</figcaption></figure>\n";
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
        out += sound.drawn.empty() ? ""
                                   : "<div class=\"channel times\"><span></span><div class=\"ends\"><span>"
                                     "00:00:00.000</span><span>" +
                                         htmlEscaped(sound.drawn) + "</span></div></div>\n";
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
    std::vector<Fact> facts;
    if (*least == *most) {
        facts = {{"Every frame", bytesText(*most)}};
    } else {
        facts = {{"Largest frame", bytesText(*most) + ", frame " + std::to_string(most - sizes.begin())},
                 {"Smallest frame", bytesText(*least) + ", frame " + std::to_string(least - sizes.begin())},
                 {"Mean frame", bytesText(mean)}};
    }
    if (report.framesPerSecond > 0) {
        facts.emplace_back("Mean data rate", bytesText(mean * report.framesPerSecond) + "/s");
    }
    const bool shared = sizes.size() > kDrawingColumns;
    std::string legend = shared ? "full: mean, pale: largest" : "";
    if (*least == 0) {
        legend += (legend.empty() ? "" : "; ") + std::string("red: frames without data");
    }
    const std::string title = shared ? "Mean and largest frame over time" : "Size of each frame";
    return "<section><h2>Frame sizes</h2>\n" + factList(facts) + "<h3>" + title + "</h3>\n" +
           "<div class=\"ends\"><span>" + bytesText(*most) + "</span><span>" + legend + "</span></div>" +
           frameSizeSvg(sizes, title + ", from 0 to " + bytesText(*most)) +
           "<div class=\"ends\"><span>frame 0</span><span>frame " + std::to_string(sizes.size() - 1) +
           "</span></div></section>\n";
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

const char* baseName(IndexBase base) {
    switch (base) {
        case IndexBase::kRight:
            break;
        case IndexBase::kFileStart:
            return " (counts from the file's beginning)";
        case IndexBase::kOther:
            return " (counts from a wrong place)";
        case IndexBase::kNowhere:
            return " (leads to no chunks)";
    }
    return "";
}

std::string gapList(const AviFacts& avi) {
    const bool indexed = std::any_of(avi.streams.begin(), avi.streams.end(),
                                     [](const auto& s) { return s.index != IndexKind::kNone; });
    if (!indexed) {
        return {};  // all of it is without one, which is said above
    }
    if (avi.gaps.empty()) {
        return "<p class=\"soft\">No stretch of 64 KiB or more between the chunks is without an index.</p>";
    }
    std::string rows;
    for (const Gap& gap : avi.gaps) {
        rows += "<tr><td class=\"n\">" + std::to_string(gap.position) + "</td><td class=\"n\">" +
                std::to_string(gap.bytes) + "</td></tr>\n";
    }
    const std::string title = "Stretches that no index mentions";
    std::string out = "<details><summary>" + title + ": " + std::to_string(avi.gapCount) + "</summary>" +
                      scrolling(title, "<table class=\"short\"><caption>" + title +
                                           "</caption><thead><tr><th scope=\"col\" class=\"n\">Position</th>"
                                           "<th scope=\"col\" class=\"n\">Bytes</th></tr></thead><tbody>\n" +
                                           rows + "</tbody></table>");
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
    std::string table = "<table class=\"streams\"><caption>Streams</caption><thead><tr>";
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
        table += std::string("<th scope=\"col\" class=\"") + look(i) + "\">" + kNames[i] + "</th>";
    }
    table += "</tr></thead><tbody>";
    std::size_t number = 0;
    for (const StreamFacts& stream : avi.streams) {
        const std::string values[std::size(kNames)] = {
            std::to_string(number++),
            kindName(stream.kind),
            htmlEscaped(stream.format),
            std::string(indexName(stream.index)) + (stream.openDmlRefused ? " (OpenDML refused)" : "") +
                baseName(stream.base),
            std::to_string(stream.chunks),
            std::to_string(stream.emptyChunks),
            std::to_string(stream.chunksPastEnd),
            std::to_string(stream.declaredLength),
            bytesText(static_cast<double>(stream.bytes))};
        const bool odd[std::size(kNames)] = {false,
                                             false,
                                             false,
                                             stream.openDmlRefused || stream.base != IndexBase::kRight,
                                             false,
                                             stream.emptyChunks > 0,
                                             stream.chunksPastEnd > 0};
        table +=
            "\n<tr><th scope=\"row\" data-name=\"" + std::string(kNames[0]) + "\">" + values[0] + "</th>";
        for (std::size_t i = 1; i < std::size(kNames); ++i) {
            table += std::string("<td class=\"") + look(i) + (odd[i] ? " odd" : "") + "\" data-name=\"" +
                     kNames[i] + "\">" + values[i] + "</td>";
        }
        table += "</tr>";
    }
    return "<section><h2>Streams and index</h2>" + scrolling("Streams", table + "\n</tbody></table>") +
           gapList(avi) + "</section>\n";
}

}  // namespace

std::string reportPage(const Report& report) {
    std::string out =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
        "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; style-src "
        "'unsafe-inline'\"><title>" +
        htmlEscaped(report.fileName) + "</title><style>" + kPageStyle + "</style></head><body><main>\n<h1>" +
        htmlEscaped(report.fileName) + "</h1><p class=\"path\">" + htmlEscaped(report.path) + "</p>\n" +
        notes(report);
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
    out += logSection(report.log);
    if (!report.made.empty()) {
        out += "<section><h2>How this page was made</h2>\n" + factList(report.made) + "</section>\n";
    }
    return out + "</main></body></html>\n";
}

}  // namespace simhost::tool
