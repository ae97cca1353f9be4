#include "tool/report/report_maker.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "simhost/text.h"
#include "tool/report/report_plot.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/sound_reading.h"
#include "tool/shared/pictures/png.h"
#include "tool/shared/pictures/thumbnail.h"

namespace simhost::tool {
namespace {

// Says how the rate that the host is told differs from the file's.
void addRateWarning(const host::imFileInfoRec8& info, Report& out) {
    const auto video = std::find_if(out.avi.streams.begin(), out.avi.streams.end(),
                                    [](const auto& s) { return s.kind == StreamFacts::Kind::kVideo; });
    const auto told = static_cast<std::uint32_t>(byValue(info.vidScale));
    const auto per = static_cast<std::uint32_t>(byValue(info.vidSampleSize));
    if (video == out.avi.streams.end() ||
        std::uint64_t{video->rate} * per == std::uint64_t{video->scale} * told) {
        return;
    }
    out.warnings.push_back("The frame rate was adjusted: the file tells " + std::to_string(video->rate) +
                           "/" + std::to_string(video->scale) + " frames a second, the host is told " +
                           std::to_string(told) + "/" + std::to_string(per) + ".");
}

void addVideo(const Clip& clip, const host::imFileInfoRec8& info, Report& out) {
    const host::imImageInfoRec& video = info.vidInfo;
    const std::uint32_t count = frameCount(info);
    out.framesPerSecond = framesPerSecond(info);
    out.video = {
        {"Frame size",
         std::to_string(byValue(video.imageWidth)) + " × " + std::to_string(byValue(video.imageHeight))},
        {"Coded type", codedType(info)},
        {"Frame rate", decimalText(out.framesPerSecond, 3) + " (" + std::to_string(byValue(info.vidScale)) +
                           "/" + std::to_string(byValue(info.vidSampleSize)) + ")"},
        {"Frames", std::to_string(count)},
        {"Duration", out.framesPerSecond > 0 ? timeText(count / out.framesPerSecond) : "unknown"},
        {"Depth", std::to_string(byValue(video.depth)) + " bits"},
        {"Fields", fieldTypeName(video.fieldType)},
        {"Alpha", alphaTypeName(video.alphaType)}};
    for (const std::uint32_t format : clip.pixelFormats().formats) {
        out.pixelFormats.push_back(pixelFormatName(format));
    }
    addRateWarning(info, out);
}

void addPictures(const Clip& clip, std::uint32_t count, std::uint32_t mostFrames, bool showProgress,
                 Report& out) {
    constexpr std::int32_t kThumbnailWidth = 320;
    const auto formats = clip.pixelFormats().formats;
    const auto shown = std::find_if(formats.begin(), formats.end(), canShow);
    if (shown == formats.end()) {
        return;
    }
    const std::uint32_t wanted = std::min(mostFrames, count);
    std::uint32_t lost = 0;
    Progress progress(showProgress, "frames", wanted);
    for (std::uint32_t i = 0; i < wanted; ++i) {
        // The first and the last frame are always among them.
        const auto index =
            static_cast<std::uint32_t>(wanted < 2 ? 0 : std::uint64_t{i} * (count - 1) / (wanted - 1));
        ReportFrame frame;
        frame.index = index;
        frame.time = out.framesPerSecond > 0 ? timeText(index / out.framesPerSecond) : "";
        frame.empty = index < out.avi.frameSizes.size() && out.avi.frameSizes[index] == 0;
        const FrameAnswer answer = clip.getFrame(index, *shown);
        if (answer.frame) {
            frame.png = encodePng(thumbnail(toPicture(*answer.frame), kThumbnailWidth));
        } else {
            frame.problem = resultText(answer.result);
            ++lost;
        }
        out.frames.push_back(std::move(frame));
        progress.advance();
    }
    if (lost > 0) {
        out.warnings.push_back(std::to_string(lost) + " of the " + std::to_string(wanted) +
                               " frames below could not be delivered; the log at the end tells why.");
    }
}

std::string levelText(const SampleRanges& ranges) {
    std::string out = ranges.peak() > 0.0F
                          ? "peak " + decimalText(20.0 * std::log10(double{ranges.peak()}), 1) + " dB"
                          : "silent";
    if (ranges.beyond() > 0) {
        out += ", " + std::to_string(ranges.beyond()) + " samples beyond full scale";
    }
    return out;
}

void addSound(const HostedRun& hosted, std::int32_t index, Report& out) {
    Answer<host::imFileInfoRec8> info;
    const auto clip = hosted.open(out.path, index, info);
    const auto shape = soundShape(info.record);
    if (!shape) {
        return;
    }
    ReportSound section;
    section.title = "Sound track " + std::to_string(index + 1);
    section.facts = {{"Channels", std::to_string(shape->channels)},
                     {"Sample rate", decimalText(shape->rate, 0) + " Hz"},
                     {"Sample type", sampleTypeName(info.record.audInfo.sampleType)},
                     {"Sample frames", std::to_string(shape->length)},
                     {"Duration", shape->rate > 0 ? timeText(shape->seconds()) : "unknown"}};
    if (shape->length == 0) {
        section.problem = "This track cannot be used, so the host is told of a silent one in its place.";
        out.sounds.push_back(std::move(section));
        return;
    }
    const auto columns = static_cast<std::size_t>(std::min<std::uint64_t>(shape->length, kDrawingColumns));
    std::vector<SampleRanges> ranges(shape->channels, SampleRanges(shape->length, columns));
    const auto failure = readSound(*clip, *shape, hosted.progress(), [&ranges](const AudioAnswer& answer) {
        for (std::size_t channel = 0; channel < ranges.size(); ++channel) {
            ranges[channel].add(answer.channels[channel]);
        }
    });
    if (failure) {
        section.problem = "From sample frame " + std::to_string(failure->position) +
                          " on the sound could not be read: " + resultText(failure->result) +
                          "; the log at the end tells why.";
    }
    const auto labels = channelLabels(*clip, shape->channels);
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        const bool known = i < labels.size() && labels[i];
        section.channels.push_back({std::to_string(i + 1),
                                    known ? loudspeakerName(*labels[i]) : "no loudspeaker",
                                    levelText(ranges[i]), waveSvg(ranges[i])});
    }
    out.sounds.push_back(std::move(section));
}

void addUnusableSounds(const Clip& clip, Report& out) {
    for (const UnusableSound& sound : unusableSounds(clip.analysis(1 << 16).text)) {
        out.warnings.push_back("The sound of stream " + sound.stream + " cannot be used. " + sound.reason +
                               ".");
    }
}

}  // namespace

Report reportOnFile(const std::string& pathUtf8) {
    Report out;
    const std::filesystem::path path = pathFromUtf8(pathUtf8);
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(path, error);
    out.fileName = pathToUtf8(path.filename());
    out.path = error ? pathUtf8 : pathToUtf8(whole);
    const auto facts = readAviFacts(pathUtf8);
    if (!facts) {
        throw ToolError(kFailed, "cannot read '" + pathUtf8 + "'");
    }
    out.avi = *facts;
    out.hasAvi = true;
    out.warnings = aviWarnings(out.avi);
    std::uint64_t data = 0;
    for (const StreamFacts& stream : out.avi.streams) {
        data += stream.bytes;
    }
    out.file = {{"Size", bytesText(static_cast<double>(out.avi.fileSize)) + " (" +
                             std::to_string(out.avi.fileSize) + " bytes)"},
                {"Streams", std::to_string(out.avi.streams.size())},
                {"Data of the streams", bytesText(static_cast<double>(data))}};
    return out;
}

void addPluginsPart(const HostedRun& hosted, std::uint32_t mostFrames, Report& out) {
    Answer<host::imFileInfoRec8> info;
    const auto clip = hosted.open(out.path, 0, info);
    if (info.record.hasVideo == 1) {
        addVideo(*clip, info.record, out);
        addPictures(*clip, frameCount(info.record), mostFrames, hosted.progress(), out);
    }
    addUnusableSounds(*clip, out);
    const std::size_t streams = clip->walkStreams().size();
    for (std::size_t i = 0; i < streams; ++i) {
        addSound(hosted, static_cast<std::int32_t>(i), out);
    }
}

std::string addLog(const std::vector<std::string>& logs, Report& out) {
    for (const std::string& path : logs) {
        std::vector<LogItem> items;
        bool ours = false;
        (void)readLog(path, std::numeric_limits<std::uint64_t>::max(), [&](LogItem item) {
            const auto* call = std::get_if<LoggedCall>(&item);
            ours = ours || (call != nullptr && call->file == out.path && call->thread == threadNumber());
            items.push_back(std::move(item));
        });
        if (ours) {
            out.log = std::move(items);
            return path;
        }
    }
    return {};
}

}  // namespace simhost::tool
