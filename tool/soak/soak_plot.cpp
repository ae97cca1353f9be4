#include "tool/soak/soak_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

#include "tool/shared/base/html_text.h"
#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

constexpr double kWidth = 860;
constexpr double kLeft = 70;
constexpr double kRight = 20;
constexpr double kPanelHeight = 170;
constexpr double kPanelGap = 56;
constexpr double kTop = 64;

struct Line {
    const char* name;
    const char* color;
    std::function<double(const SoakSample&)> value;
};

struct Panel {
    const char* title;
    std::vector<Line> lines;
};

std::string gridNumber(double value) {
    char text[32];
    (void)std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string coordinate(double value) {
    return decimalText(value, 1);
}

std::string label(double x, double y, const char* anchor, std::string_view text, const char* color = "#333") {
    return "<text x=\"" + coordinate(x) + "\" y=\"" + coordinate(y) + "\" text-anchor=\"" + anchor +
           "\" fill=\"" + color + "\">" + htmlEscaped(text) + "</text>\n";
}

std::string stroke(double x1, double y1, double x2, double y2, const char* color) {
    return "<line x1=\"" + coordinate(x1) + "\" y1=\"" + coordinate(y1) + "\" x2=\"" + coordinate(x2) +
           "\" y2=\"" + coordinate(y2) + "\" stroke=\"" + color + "\"/>\n";
}

// The distance of grid lines: 1, 2 or 5 times a power of ten, so that there are at most five.
double gridStep(double span) {
    const double power = std::pow(10.0, std::floor(std::log10(std::max(span, 1e-9) / 5.0)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (span / (factor * power) <= 5.0) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

std::string drawPanel(const Panel& panel, const std::vector<SoakSample>& samples, double top) {
    double most = 1.0;  // from zero, so that small changes look small
    double seconds = 1e-3;
    for (const SoakSample& sample : samples) {
        seconds = std::max(seconds, sample.seconds);
        for (const Line& line : panel.lines) {
            most = std::max(most, line.value(sample));
        }
    }
    most *= 1.08;
    const double bottom = top + kPanelHeight;
    const double right = kWidth - kRight;
    const auto atX = [&](double value) { return kLeft + (right - kLeft) * value / seconds; };
    const auto atY = [&](double value) { return bottom - kPanelHeight * std::max(value, 0.0) / most; };

    std::string out = label(kLeft, top - 10, "start", panel.title);
    const double stepY = gridStep(most);
    for (int i = 0; i * stepY <= most; ++i) {
        out += stroke(kLeft, atY(i * stepY), right, atY(i * stepY), i == 0 ? "#333" : "#ddd");
        out += label(kLeft - 6, atY(i * stepY) + 4, "end", gridNumber(i * stepY));
    }
    const bool inMinutes = seconds > 180;
    const double unit = inMinutes ? 60.0 : 1.0;
    const double stepX = gridStep(seconds / unit);
    for (int i = 0; i * stepX <= seconds / unit; ++i) {
        out += label(atX(i * stepX * unit), bottom + 16, "middle",
                     gridNumber(i * stepX) + (inMinutes ? " min" : " s"));
    }
    double legend = right;
    for (auto line = panel.lines.rbegin(); line != panel.lines.rend(); ++line) {
        out += label(legend, top - 10, "end", line->name, line->color);
        legend -= 8.0 * static_cast<double>(std::string_view(line->name).size()) + 16.0;
        out += std::string("<polyline fill=\"none\" stroke-width=\"1.6\" stroke=\"") + line->color +
               "\" points=\"";
        for (const SoakSample& sample : samples) {
            out += coordinate(atX(sample.seconds)) + ',' + coordinate(atY(line->value(sample))) + ' ';
        }
        out += "\"/>\n";
    }
    return out;
}

}  // namespace

std::string soakPlot(std::string_view title, const std::vector<SoakSample>& samples) {
    constexpr double kMebibyte = 1024.0 * 1024.0;
    const Panel panels[] = {
        {"memory, MiB",
         {{"private, at work", "#6a51a3",
           [](const SoakSample& s) { return static_cast<double>(s.busyBytes) / kMebibyte; }},
          {"working set, at rest", "#a63603",
           [](const SoakSample& s) { return static_cast<double>(s.workingSet) / kMebibyte; }},
          {"private, at rest", "#08519c",
           [](const SoakSample& s) { return static_cast<double>(s.privateBytes) / kMebibyte; }}}},
        {"handles",
         {{"at work", "#6a51a3", [](const SoakSample& s) { return static_cast<double>(s.busyHandles); }},
          {"at rest", "#08519c", [](const SoakSample& s) { return static_cast<double>(s.handles); }}}},
        {"held with every clip closed",
         {{"suites", "#006d2c", [](const SoakSample& s) { return static_cast<double>(s.hostSuites); }},
          {"frames and blocks", "#08519c",
           [](const SoakSample& s) { return static_cast<double>(s.hostObjects); }},
          {"codec sessions", "#a50f15",
           [](const SoakSample& s) { return static_cast<double>(s.codecSessions); }}}},
    };
    const double height = kTop + std::size(panels) * (kPanelHeight + kPanelGap);
    std::string out = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + coordinate(kWidth) + ' ' +
                      coordinate(height) + "\" font-family=\"sans-serif\" font-size=\"12\">\n" +
                      "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    out += label(kLeft, 24, "start", title);
    double top = kTop;
    for (const Panel& panel : panels) {
        out += drawPanel(panel, samples, top);
        top += kPanelHeight + kPanelGap;
    }
    return out + "</svg>\n";
}

}  // namespace simhost::tool
