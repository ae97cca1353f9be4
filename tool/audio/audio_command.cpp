// audio: delivers the samples of a stream as a WAV file and as a picture.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tool/commands.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/sound_reading.h"
#include "tool/shared/media/sound_tracks.h"
#include "tool/shared/media/wav.h"
#include "tool/shared/pictures/png.h"
#include "tool/shared/pictures/waveform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

struct AudioOptions {
    std::string file;
    std::int32_t track = 1;
    std::optional<std::int32_t> stream;  // the same as the host counts, from 0
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

std::string samplingText(const SoundSampling& sampling) {
    return std::to_string(sampling.blocks) + " stretches of " + std::to_string(sampling.taken) +
           " sample frames";
}

Json deliver(const HostedRun& hosted, const AudioOptions& options, const Clip& clip,
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
    std::uint64_t readFrames = 0;
    const auto draw = [&](const AudioAnswer& answer) {
        readFrames += answer.channels.front().size();
        for (std::uint32_t channel = 0; waveform && channel < channels; ++channel) {
            waveform->add(channel, answer.channels[channel]);
        }
    };
    // A picture of hours has no room for all of them, and is not worth the wait.
    const auto sampling =
        waveform && !wav ? soundSampling(*shape, waveform->columns()) : std::optional<SoundSampling>();
    std::vector<std::uint8_t> bytes;
    const auto failure =
        sampling ? sampleSound(clip, *shape, *sampling, hosted.progress(),
                               [&](std::uint64_t position, const AudioAnswer& answer) {
                                   for (std::uint32_t channel = 0; channel < channels; ++channel) {
                                       waveform->skipTo(channel, position);
                                   }
                                   draw(answer);
                               })
                 : readSound(clip, *shape, hosted.progress(), [&](const AudioAnswer& answer) {
                       if (wav) {
                           interleave(answer, bytes);
                           wav->write(bytes);
                       }
                       draw(answer);
                   });
    if (failure) {
        throw ToolError(kFailed, "sample frame " + std::to_string(failure->position) + ": " +
                                     resultText(failure->result));
    }
    if (wav) {
        wav->finish();
    }
    if (waveform) {
        const std::string name = pathToUtf8(pathFromUtf8(options.file).filename());
        const std::string note = sampling ? "sampled: " + samplingText(*sampling) + ", " : "";
        writeFile(options.waveform, encodePng(waveform->render(names, {note + name, shape->seconds()})));
    }
    return {{"file", options.file},
            {"soundTrack", options.track},
            {"sampleFrames", shape->length},
            {"sampleFramesRead", readFrames},
            {"channels", channels},
            {"sampleRate", rate},
            {"channelLabels", labels.empty() ? Json() : Json(names)},
            {"wav", options.wav.empty() ? Json() : Json(options.wav)},
            {"waveform", options.waveform.empty() ? Json() : Json(options.waveform)}};
}

void print(const AudioOptions& options, const Json& told) {
    if (!options.wav.empty()) {
        std::printf(
            "%s: %s of %s at %u Hz in %s\n", soundTrackName(options.track).c_str(),
            counted(told["sampleFrames"].get<std::uint64_t>(), "sample frame", "sample frames").c_str(),
            counted(told["channels"].get<std::uint64_t>(), "channel", "channels").c_str(),
            told["sampleRate"].get<std::uint32_t>(), options.wav.c_str());
    }
    if (!options.waveform.empty()) {
        const auto all = told["sampleFrames"].get<std::uint64_t>();
        const auto read = told["sampleFramesRead"].get<std::uint64_t>();
        std::printf("waveform in %s%s\n", options.waveform.c_str(),
                    read == all ? ""
                                : (", sampled: " + std::to_string(read) + " of " + std::to_string(all) +
                                   " sample frames were read")
                                      .c_str());
    }
}

int runAudio(const GlobalOptions& global, AudioOptions options) {
    if (options.wav.empty() && options.waveform.empty()) {
        throw ToolError(kUsage, "nothing to write: give --out or --waveform");
    }
    if (options.stream) {
        options.track = soundTrack(*options.stream);
    }
    requireClipFile(options.file);
    checkOutput(options.wav);
    checkOutput(options.waveform);
    return runHosted(global, [&](HostedRun& hosted) {
        Answer<host::imFileInfoRec8> info;
        requireSoundTrack(*hosted.open(options.file, 0, info), options.file, options.track);
        const auto clip = hosted.open(options.file, options.track - 1, info);
        const Json told = deliver(hosted, options, *clip, info.record);
        if (global.json) {
            writeAnswer("", jsonText(told));
        } else {
            print(options, told);
        }
        return kSuccess;
    });
}

}  // namespace

Command addAudioCommand(CLI::App& app) {
    auto options = std::make_shared<AudioOptions>();
    CLI::App* parser = app.add_subcommand("audio", "Write a sound track as WAV, or draw it");
    parser->add_option("FILE", options->file, "AVI file")->required();
    // As many as an AVI file can have streams.
    constexpr std::int32_t kMostTracks = 100;
    CLI::Option* track =
        parser
            ->add_option("--track", options->track,
                         "Number of the sound track, from 1, as report, doctor and info tell it")
            ->capture_default_str()
            ->check(CLI::Range(1, kMostTracks));
    parser->add_option("--stream", options->stream, "The same as the host counts, from 0")
        ->check(CLI::Range(0, kMostTracks - 1))
        ->excludes(track);
    parser->add_option("--out", options->wav, "WAV file of 32-bit float samples");
    parser->add_option("--waveform", options->waveform, "PNG file with the waveform of each channel");
    return {parser, [options](const GlobalOptions& global) { return runAudio(global, *options); }};
}

}  // namespace simhost::tool
