// A report on one file as one HTML page that needs nothing else: pictures as data, drawings as SVG, no
// script. Everything that comes from the file, its name or the plug-in is escaped here. Pure functions; any
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tool/shared/logs/log_calls.h"
#include "tool/shared/media/avi_facts.h"

namespace simhost::tool {

/// Name and value, as text.
using Fact = std::pair<std::string, std::string>;

struct ReportFrame {
    std::uint32_t index = 0;
    std::string time;               ///< "00:00:01.240"
    bool empty = false;             ///< no data of its own: it shows the picture before
    std::vector<std::uint8_t> png;  ///< empty when the frame could not be delivered
    std::string problem;            ///< why
};

struct ReportChannel {
    std::string number;
    std::string label;  ///< its loudspeaker
    std::string note;   ///< "peak -3.0 dB"
    std::string svg;    ///< trusted
};

struct ReportSound {
    std::string title;
    std::vector<Fact> facts;
    std::vector<ReportChannel> channels;
    std::string problem;  ///< empty when it could be read
    std::string drawn;    ///< how much of it the waveforms show, "00:00:02.000"
    // For those who ask the plug-in once more.
    std::int32_t index = 0;  ///< as the host counts the streams
    std::uint32_t channelsTold = 0;
    std::uint64_t sampleFramesRead = 0;
    std::optional<std::uint64_t> failedAt;  ///< the sample frame
};

struct Report {
    std::string fileName;
    std::string path;
    std::vector<Fact> made;             ///< when, by which plug-in and tool
    bool logged = false;                ///< the log is going to be on the page
    std::string failure;                ///< the plug-in's refusal; empty when it opened the file
    std::vector<std::string> alarms;    ///< pictures or sound cannot be had
    std::vector<std::string> warnings;  ///< what else is unusual
    std::vector<Fact> file;
    std::vector<Fact> video;
    std::vector<std::string> pixelFormats;
    std::vector<ReportFrame> frames;
    std::vector<ReportSound> sounds;
    AviFacts avi;
    bool hasAvi = false;
    double framesPerSecond = 0;
    std::vector<LogItem> log;
};

std::string reportPage(const Report& report);

}  // namespace simhost::tool
