// audio: delivers the samples of a stream as a WAV file and as a picture.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/commands.h"
#include "tool/shared/base/hosted_run.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/sound_reading.h"
#include "tool/shared/media/wav.h"
#include "tool/shared/pictures/png.h"
#include "tool/shared/pictures/waveform.h"

namespace simhost::tool {
namespace {

struct AudioOptions {
    std::string file;
    std::int32_t stream = 0;
    std::string wav;
    std::string waveform;
};

// All of them, or none: a WAV file names the loudspeaker of every channel.
std::vector<std::uint32_t> labelsOf(const Clip& clip, std::uint32_t channels) {
    std::vector<std::uint32_t> out;
    for (const auto& label : channelLabels(clip, channels)) {
        if (!label) {
            return {};
        }
        out.push_back(*label);
    }
    return out;
}

void interleave(const AudioAnswer& answer, std::vector<std::uint8_t>& out) {
    const std::size_t channels = answer.channels.size();
    const std::size_t frames = answer.channels.front().size();
    out.resize(frames * channels * sizeof(float));
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            std::memcpy(out.data() + (frame * channels + channel) * sizeof(float),
                        &answer.channels[channel][frame], sizeof(float));
        }
    }
}

void deliver(const HostedRun& hosted, const AudioOptions& options, const Clip& clip,
             const host::imFileInfoRec8& info) {
    const auto shape = soundShape(info);
    if (!shape) {
        throw ToolError(kFailed, "the plug-in told " + std::to_string(byValue(info.audInfo.numChannels)) +
                                     " audio channels");
    }
    const std::uint32_t channels = shape->channels;
    const auto rate = static_cast<std::uint32_t>(std::lround(shape->rate));
    const std::vector<std::uint32_t> labels = labelsOf(clip, channels);
    std::vector<std::string> names;
    for (std::uint32_t i = 0; i < channels; ++i) {
        names.push_back(std::to_string(i) +
                        (labels.empty() ? "" : std::string(" ") + channelLabelName(labels[i])));
    }
    std::optional<OutputFile> wav;
    if (!options.wav.empty()) {
        const auto header =
            wavHeader(channels, rate, labels.empty() ? 0 : channelMask(labels), shape->length);
        if (!header) {
            throw ToolError(kNoOutput, "the sound is too long for a WAV file");
        }
        wav.emplace(options.wav);
        wav->write(*header);
    }
    std::optional<Waveform> waveform;
    if (!options.waveform.empty()) {
        waveform.emplace(channels, shape->length);
    }
    std::vector<std::uint8_t> bytes;
    const auto failure = readSound(clip, *shape, hosted.progress(), [&](const AudioAnswer& answer) {
        if (wav) {
            interleave(answer, bytes);
            wav->write(bytes);
        }
        for (std::uint32_t channel = 0; waveform && channel < channels; ++channel) {
            waveform->add(channel, answer.channels[channel]);
        }
    });
    if (failure) {
        throw ToolError(kFailed, "sample frame " + std::to_string(failure->position) + ": " +
                                     resultText(failure->result));
    }
    if (wav) {
        wav->finish();
        std::printf("%llu sample frames of %u channels at %u Hz in %s\n",
                    static_cast<unsigned long long>(shape->length), channels, rate, options.wav.c_str());
    }
    if (waveform) {
        writeFile(options.waveform, encodePng(waveform->render(names)));
        std::printf("waveform in %s\n", options.waveform.c_str());
    }
}

int runAudio(const GlobalOptions& global, const AudioOptions& options) {
    if (options.wav.empty() && options.waveform.empty()) {
        throw ToolError(kUsage, "nothing to write: give --out or --waveform");
    }
    return runHosted(global, [&options](HostedRun& hosted) {
        Answer<host::imFileInfoRec8> info;
        // Only the walk tells how many streams there are: the last one is answered like one that is not
        // there.
        const std::size_t streams = hosted.open(options.file, 0, info)->walkStreams().size();
        if (static_cast<std::size_t>(options.stream) >= streams ||
            (streams == 1 && info.record.hasAudio != 1)) {
            throw ToolError(kFailed, "the file has no audio stream " + std::to_string(options.stream));
        }
        const auto clip = hosted.open(options.file, options.stream, info);
        if (info.record.hasAudio != 1) {
            throw ToolError(kFailed, "audio stream " + std::to_string(options.stream) + " cannot be played");
        }
        deliver(hosted, options, *clip, info.record);
        return kSuccess;
    });
}

}  // namespace

Command addAudioCommand(CLI::App& app) {
    auto options = std::make_shared<AudioOptions>();
    CLI::App* parser = app.add_subcommand("audio", "Write the sound of a stream as WAV, or draw it");
    parser->add_option("FILE", options->file, "AVI file")->required();
    parser->add_option("--stream", options->stream, "Number of the audio stream, from 0")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber);
    parser->add_option("--out", options->wav, "WAV file of 32-bit float samples");
    parser->add_option("--waveform", options->waveform, "PNG file with the waveform of each channel");
    return {parser, [options](const GlobalOptions& global) { return runAudio(global, *options); }};
}

}  // namespace simhost::tool
