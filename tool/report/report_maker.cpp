#include "tool/report/report_maker.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "simhost/text.h"
#include "tool/report/report_plot.h"
#include "tool/report/report_words.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/media/avi_findings.h"
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

constexpr std::uint32_t kSoundBlock = 48000;  // sample frames asked for at a time
// Tracks heard; each one is opened for itself.
constexpr std::size_t kMostTracks = 32;

// As many sample frames of the host's stream `index` as the file has data of: its header may claim any
// length, which the host hears as silence.
std::uint64_t soundInFile(const AviFacts& avi, std::size_t index) {
    for (const StreamFacts& stream : avi.streams) {
        if (stream.kind == StreamFacts::Kind::kAudio && index-- == 0) {
            return stream.frameBytes == 0 ? 0
                                          : (stream.bytesInFile + stream.frameBytes - 1) / stream.frameBytes;
        }
    }
    return 0;
}

// How much of the host's stream `index` there is to read, as far as the file tells without the plug-in.
SoundShape soundAhead(const AviFacts& avi, std::size_t index) {
    SoundShape out;
    std::size_t number = index;
    for (const StreamFacts& stream : avi.streams) {
        if (stream.kind == StreamFacts::Kind::kAudio && number-- == 0) {
            out.channels = stream.channels;
            out.length = std::min<std::uint64_t>(stream.declaredLength, soundInFile(avi, index));
        }
    }
    return out;
}

std::size_t tracksHeard(const AviFacts& avi) {
    const auto tracks = std::count_if(avi.streams.begin(), avi.streams.end(), [](const StreamFacts& stream) {
        return stream.kind == StreamFacts::Kind::kAudio;
    });
    return std::min(static_cast<std::size_t>(tracks), kMostTracks);
}

// Nothing when all of the track is to be read.
std::optional<SoundSampling> stretchesOf(const AviFacts& avi, const SoundShape& shape) {
    return soundSampling(shape, kDrawingColumns,
                         kMostReportSamples / std::max<std::size_t>(tracksHeard(avi), 1));
}

std::uint32_t framesShown(std::uint32_t count, std::optional<std::uint32_t> wanted, std::int32_t width,
                          std::int32_t height) {
    const std::uint64_t most =
        wanted ? *wanted : std::min<std::uint64_t>(kUsualFrames, framesWorthShowing(width, height));
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(count, most));
}

std::string lookInLog(const Report& report) {
    return report.logged ? "; the log at the end tells more." : ".";
}

void addVideo(const Clip& clip, const host::imFileInfoRec8& info, Report& out) {
    const host::imImageInfoRec& video = info.vidInfo;
    const std::uint32_t count = frameCount(info);
    out.framesPerSecond = framesPerSecond(info);
    const std::string type = codedType(info);
    const CodedWords words = codedWords(type);
    out.video = {
        {"Frame size",
         std::to_string(byValue(video.imageWidth)) + " × " + std::to_string(byValue(video.imageHeight))},
        {"Coded type", type},
        {"Frame rate", decimalText(out.framesPerSecond, 3) + " (" + std::to_string(byValue(info.vidScale)) +
                           "/" + std::to_string(byValue(info.vidSampleSize)) + ")"},
        {"Frames", std::to_string(count)},
        {"Duration", out.framesPerSecond > 0 ? timeText(count / out.framesPerSecond) : "unknown"},
        {"Fields", fieldTypeName(video.fieldType)},
        {"Alpha", alphaTypeName(video.alphaType)}};
    if (!words.name.empty()) {
        const Fact more[] = {{"Codec", words.name},
                             {"Colour space", words.colourSpace},
                             {"Bits per channel", words.bitsPerChannel}};
        out.video.insert(out.video.begin() + 2, std::begin(more), std::end(more));
    }
    for (const std::uint32_t format : clip.pixelFormats().formats) {
        out.pixelFormats.push_back(pixelFormatName(format));
    }
    addRateWarning(info, out);
}

void addPictures(const Clip& clip, const host::imFileInfoRec8& info, std::optional<std::uint32_t> frames,
                 Progress& progress, Report& out) {
    constexpr std::int32_t kThumbnailWidth = 320;
    constexpr std::int32_t kThumbnailHeight = 2 * kThumbnailWidth;
    const std::int32_t width = info.vidInfo.imageWidth;
    const std::int32_t height = info.vidInfo.imageHeight;
    const std::int32_t step = thumbnailStep(width, height, kThumbnailWidth, kThumbnailHeight);
    const std::uint32_t count = frameCount(info);
    const auto formats = clip.pixelFormats().formats;
    const auto shown = std::find_if(formats.begin(), formats.end(), canShow);
    if (shown == formats.end()) {
        return;
    }
    const std::uint32_t wanted = framesShown(count, frames, width, height);
    std::uint32_t lost = 0;
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
            frame.png =
                encodePng(thumbnail(toPicture(*answer.frame, step), kThumbnailWidth, kThumbnailHeight));
        } else {
            frame.problem = lostFrameWords(answer.result);
            ++lost;
        }
        out.frames.push_back(std::move(frame));
        progress.advance();
    }
    if (lost > 0 && lost == wanted) {
        out.alarms.push_back((lost == count ? "No frame of this clip can be shown. "
                                            : "None of the " + std::to_string(lost) +
                                                  " frames that were tried can be shown. ") +
                             "The first one: " + out.frames.front().problem +
                             (out.logged ? " The log at the end tells more." : ""));
    } else if (lost > 0) {
        out.warnings.push_back(std::to_string(lost) + " of the " + std::to_string(wanted) +
                               " frames below could not be delivered" + lookInLog(out));
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

void addSound(const HostedRun& hosted, std::size_t index, Progress& progress, Report& out) {
    Answer<host::imFileInfoRec8> info;
    const auto clip = hosted.open(out.path, static_cast<std::int32_t>(index), info);
    auto shape = soundShape(info.record);
    if (!shape) {
        return;
    }
    ReportSound section;
    section.index = static_cast<std::int32_t>(index);
    section.title = "Sound track " + std::to_string(index + 1);
    const auto duration = [&shape] {
        return shape->rate > 0 ? timeText(shape->seconds()) : std::string("unknown");
    };
    section.facts = {{"Channels", std::to_string(shape->channels)},
                     {"Sample rate", decimalText(shape->rate, 0) + " Hz"},
                     {"Sample type", sampleTypeName(info.record.audInfo.sampleType)},
                     {"Sample frames", std::to_string(shape->length)},
                     {"Duration", duration()}};
    if (shape->length == 0) {
        section.problem = "This track cannot be used, so the host is told of a silent one in its place.";
        out.sounds.push_back(std::move(section));
        return;
    }
    const std::uint64_t told = shape->length;
    shape->length = std::min(told, soundInFile(out.avi, index));
    if (shape->length == 0) {
        section.problem = "No index leads to data of this track, so all of it is silent.";
        out.sounds.push_back(std::move(section));
        return;
    }
    if (shape->length < told) {
        section.facts.emplace_back("Of these in the file",
                                   std::to_string(shape->length) + ", drawn here (" + duration() + ")");
    }
    section.drawn = duration();
    section.channelsTold = shape->channels;
    const auto columns = static_cast<std::size_t>(std::min<std::uint64_t>(shape->length, kDrawingColumns));
    std::vector<SampleRanges> ranges(shape->channels, SampleRanges(shape->length, columns));
    const auto take = [&](const AudioAnswer& answer) {
        for (std::size_t channel = 0; channel < ranges.size(); ++channel) {
            ranges[channel].add(answer.channels[channel]);
        }
        section.sampleFramesRead += answer.channels.front().size();
        progress.advance();
    };
    const auto stretches = stretchesOf(out.avi, *shape);
    const auto failure =
        stretches ? sampleSound(*clip, *shape, *stretches, false,
                                [&](std::uint64_t position, const AudioAnswer& answer) {
                                    std::ranges::for_each(
                                        ranges, [position](SampleRanges& range) { range.skipTo(position); });
                                    take(answer);
                                })
                  : readSound(*clip, *shape, false, take);
    if (stretches) {
        section.facts.emplace_back("Looked at",
                                   std::to_string(section.sampleFramesRead) +
                                       " sample frames, evenly spread; peaks are those of these");
    }
    if (failure) {
        section.failedAt = failure->position;
        section.problem = "From sample frame " + std::to_string(failure->position) +
                          " on the sound could not be read" + lookInLog(out);
        out.warnings.push_back(section.title + ": from sample frame " + std::to_string(failure->position) +
                               " on the sound could not be read" + lookInLog(out));
    }
    const auto labels = channelLabels(*clip, shape->channels);
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        const bool known = i < labels.size() && labels[i];
        const std::string number = std::to_string(i + 1);
        const std::string label = known ? loudspeakerName(*labels[i]) : "no loudspeaker";
        section.channels.push_back(
            {number, label, levelText(ranges[i]),
             waveSvg(ranges[i], section.title + ", waveform of channel " + number + ", " + label)});
    }
    out.sounds.push_back(std::move(section));
}

void addUnusableSounds(const Clip& clip, Report& out) {
    for (const UnusableSound& sound : unusableSounds(clip.analysis(1 << 16).text)) {
        out.warnings.push_back("The sound of stream " + sound.stream + " cannot be used. " + sound.reason +
                               ".");
    }
}

// What the log tells of the coding and nothing else does.
void addMatrix(Report& out) {
    for (const LogItem& item : out.log) {
        const auto* call = std::get_if<LoggedCall>(&item);
        for (const ReadLine& line : call == nullptr ? std::vector<ReadLine>() : call->lines) {
            const std::string words = matrixWords(line.entry.text);
            const auto fact = std::find_if(out.video.begin(), out.video.end(),
                                           [](const Fact& f) { return f.first == "Colour space"; });
            if (!words.empty() && fact != out.video.end()) {
                fact->second += ", " + words;
                return;
            }
        }
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
    for (const AviFinding& finding : aviFindings(out.avi)) {
        (finding.bad ? out.alarms : out.warnings)
            .push_back(finding.text + (finding.advice.empty() ? "" : " " + finding.advice));
    }
    std::uint64_t data = 0;
    for (const StreamFacts& stream : out.avi.streams) {
        data += stream.bytes;
    }
    out.file = {{"Size", bytesText(static_cast<double>(out.avi.fileSize)) + " (" +
                             std::to_string(out.avi.fileSize) + " bytes)"},
                {"Last written", dateText(fileFacts(pathToUtf8(path)).modified)},
                {"Streams", std::to_string(out.avi.streams.size())},
                {"Data of the streams", bytesText(static_cast<double>(data))}};
    out.made = {{"Report made", dateText(std::chrono::duration_cast<std::chrono::seconds>(
                                             std::chrono::system_clock::now().time_since_epoch())
                                             .count())}};
    return out;
}

std::uint64_t stepsOf(const Report& report, std::optional<std::uint32_t> frames) {
    std::uint64_t steps = 0;
    const auto video = std::find_if(report.avi.streams.begin(), report.avi.streams.end(),
                                    [](const StreamFacts& s) { return s.kind == StreamFacts::Kind::kVideo; });
    if (video != report.avi.streams.end()) {
        steps = framesShown(static_cast<std::uint32_t>(report.avi.frameSizes.size()), frames, video->width,
                            video->height);
    }
    for (std::size_t i = 0; i < tracksHeard(report.avi); ++i) {
        const SoundShape shape = soundAhead(report.avi, i);
        const auto stretches = stretchesOf(report.avi, shape);
        steps += stretches ? stretches->blocks : (shape.length + kSoundBlock - 1) / kSoundBlock;
    }
    return steps;
}

void addPictures(const HostedRun& hosted, std::optional<std::uint32_t> frames, Progress& progress,
                 Report& out) {
    Answer<host::imFileInfoRec8> info;
    const auto clip = hosted.open(out.path, 0, info);
    if (info.record.hasVideo == 1) {
        addVideo(*clip, info.record, out);
        addPictures(*clip, info.record, frames, progress, out);
        if (frameCount(info.record) == 0 && out.alarms.empty()) {
            out.alarms.emplace_back("The plug-in finds no frames in this file.");
        }
    }
    addUnusableSounds(*clip, out);
}

void addSounds(const HostedRun& hosted, Progress& progress, Report& out) {
    Answer<host::imFileInfoRec8> info;
    const std::size_t streams = hosted.open(out.path, 0, info)->walkStreams().size();
    for (std::size_t i = 0; i < std::min(streams, kMostTracks); ++i) {
        addSound(hosted, i, progress, out);
    }
    if (streams > kMostTracks) {
        out.warnings.push_back("The file has " + std::to_string(streams) + " sound tracks; the first " +
                               std::to_string(kMostTracks) + " are shown.");
    }
}

void repeatSounds(const HostedRun& hosted, const Report& report) {
    for (const ReportSound& sound : report.sounds) {
        Answer<host::imFileInfoRec8> info;
        const auto clip = hosted.open(report.path, sound.index, info);
        if (sound.channelsTold > 0) {
            (void)clip->channelLayout();
            (void)clip->importAudio(0, 1, sound.channelsTold);
            if (sound.failedAt) {
                (void)clip->importAudio(static_cast<std::int64_t>(*sound.failedAt), kSoundBlock,
                                        sound.channelsTold);
            }
        }
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
            addMatrix(out);
            return path;
        }
    }
    return {};
}

}  // namespace simhost::tool
