// info: everything that the plug-in tells the host about itself and about a file, as text or JSON.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/record_values.h"
#include "simhost/text.h"
#include "tool/commands.h"
#include "tool/shared/base/failure.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/sound_tracks.h"
#include "tool/shared/media/wav.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

struct InfoOptions {
    std::vector<std::string> files;
    std::string output;
};

// Text in a field of fixed size.
template <std::size_t N>
std::string fieldText(const char (&field)[N]) {
    return {field, std::find(field, field + N, '\0')};
}

Json aboutPlugin(const HostedRun& run) {
    const host::imImportInfoRec& record = run.initAnswer().record;
    Json out;
    out["path"] = run.pluginPath();
    out["priority"] = byValue(record.priority);
    out["avoidAudioConform"] = byValue(record.avoidAudioConform);
    out["supports8"] = run.importer().getSupports8() == host::malSupports8;
    out["formats"] = Json::array();
    for (std::uint32_t index = 0; index < 100; ++index) {
        const auto answer = run.importer().getIndFormat(index);
        if (answer.result != host::imNoErr) {
            break;
        }
        const host::imIndFormatRec& format = answer.record;
        Json extensions = Json::array();
        for (const char* at = format.PlatformExtension;
             *at != '\0' && at < std::end(format.PlatformExtension);) {
            const std::string extension(at, std::find(at, std::end(format.PlatformExtension), '\0'));
            extensions.push_back(extension);
            at += extension.size() + 1;
        }
        const auto type = static_cast<std::uint32_t>(byValue(format.filetype));
        Json subTypes = Json::array();
        for (const SubTypeName& name : run.importer().getSubTypeNames(type).names) {
            subTypes.push_back({{"code", codeText(name.code, true)}, {"name", name.nameUtf8}});
        }
        out["formats"].push_back({{"fileType", codeText(type, true)},
                                  {"name", fieldText(format.FormatName)},
                                  {"shortName", fieldText(format.FormatShortName)},
                                  {"extensions", extensions},
                                  {"subTypes", subTypes}});
    }
    return out;
}

Json aboutVideo(const host::imFileInfoRec8& info) {
    const host::imImageInfoRec& video = info.vidInfo;
    const double rate = framesPerSecond(info);
    return {{"width", byValue(video.imageWidth)},
            {"height", byValue(video.imageHeight)},
            {"depth", byValue(video.depth)},
            {"subType", codedType(info)},
            {"fields", fieldTypeName(video.fieldType)},
            {"alpha", alphaTypeName(video.alphaType)},
            {"pixelAspect", {byValue(video.pixelAspectNum), byValue(video.pixelAspectDen)}},
            {"rate", byValue(info.vidScale)},
            {"frameDuration", byValue(info.vidSampleSize)},
            {"framesPerSecond", rate > 0 ? Json(rate) : Json()},
            {"duration", byValue(info.vidDuration)},
            {"frames", frameCount(info)},
            {"supportsAsync", byValue(video.supportsAsyncIO) != 0},
            {"supportsGetSourceVideo", byValue(video.supportsGetSourceVideo) != 0}};
}

Json aboutAudio(const Clip& clip, const host::imFileInfoRec8& info) {
    const host::imAudioInfoRec7& audio = info.audInfo;
    const float rate = audio.sampleRate;
    const std::uint32_t type = audio.sampleType;
    const std::int64_t sampleFrames = info.audDuration;
    Json out = {
        {"channels", byValue(audio.numChannels)},
        {"sampleRate", rate},
        {"sampleType", sampleTypeName(type)},
        {"sampleTypeCode", type},
        {"sampleFrames", sampleFrames},
        {"seconds", rate > 0 ? Json(static_cast<double>(sampleFrames) / static_cast<double>(rate)) : Json()}};
    out["channelLayoutResult"] = clip.channelLayout().result;
    Json labels = Json::array();
    for (const auto& label :
         channelLabels(clip, static_cast<std::uint32_t>(std::max(byValue(audio.numChannels), 0)))) {
        labels.push_back(label ? Json(channelLabelName(*label)) : Json());
    }
    out["channelLabels"] = labels;
    return out;
}

Json aboutDataRate(const Clip& clip, const host::imFileInfoRec8& info) {
    const DataRates rates = clip.dataRates();
    Json out = {{"result", rates.sizingResult != 0 ? rates.sizingResult : rates.result}};
    std::uint64_t bytes = 0;
    std::uint32_t least = rates.samples.empty() ? 0 : byValue(rates.samples.front().samplesize);
    std::uint32_t most = 0;
    for (const host::imDataSample& sample : rates.samples) {
        const std::uint32_t size = sample.samplesize;
        bytes += size;
        least = std::min(least, size);
        most = std::max(most, size);
    }
    out["samples"] = rates.samples.size();
    out["bytes"] = bytes;
    out["smallestFrame"] = least;
    out["largestFrame"] = most;
    const double seconds =
        info.vidScale > 0 ? static_cast<double>(byValue(info.vidDuration)) / info.vidScale : 0.0;
    out["bitsPerSecond"] = seconds > 0 ? Json(static_cast<double>(bytes) * 8.0 / seconds) : Json();
    return out;
}

Json aboutFile(const HostedRun& run, const std::string& file) {
    Answer<host::imFileInfoRec8> info;
    const auto clip = run.open(file, 0, info);
    Json out;
    out["path"] = file;
    out["modified"] = dateText(fileFacts(file).modified);
    out["streams"] = Json::array();
    // What concerns the video is asked for while the plug-in has analysed stream 0, which alone carries it.
    Json video;
    if (info.record.hasVideo == 1) {
        const PixelFormats offered = clip->pixelFormats();
        for (const std::uint32_t format : offered.formats) {
            video["pixelFormats"].push_back(
                {{"code", codeText(format, false)}, {"name", pixelFormatName(format)}});
        }
        const AnalysisText text = clip->analysis(1 << 16);
        video["analysisResult"] = text.result;
        video["analysis"] = text.text;
        video["dataRate"] = aboutDataRate(*clip, info.record);
    }
    for (const StreamInfo& stream : clip->walkStreams()) {
        Json row = {{"index", stream.streamIndex}, {"result", stream.answer.result}};
        // The layout is that of the stream described last.
        (void)clip->getInfo(stream.streamIndex);
        if (stream.answer.record.hasVideo == 1) {
            row["video"] = aboutVideo(stream.answer.record);
            row["video"].update(video);
        }
        if (stream.answer.record.hasAudio == 1) {
            row["audio"] = aboutAudio(*clip, stream.answer.record);
            row["audio"]["soundTrack"] = soundTrack(stream.streamIndex);
        }
        out["streams"].push_back(row);
    }
    return out;
}

// ---- text ----

std::string indented(const std::string& text, const std::string& indent) {
    std::string out;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        out += indent + text.substr(at, end - at) + "\n";
        at = end + 1;
    }
    return out;
}

// A JSON value in a line of text.
std::string plain(const Json& value) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (value.is_null()) {
        return "none";
    }
    if (value.is_array()) {
        std::string out;
        for (const Json& item : value) {
            const bool named = item.is_object() && item.contains("name");
            out += (out.empty() ? "" : ", ") + (named ? plain(item["name"]) : plain(item));
        }
        return out;
    }
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string textOf(const Json& value, const std::string& indent) {
    std::string out;
    for (const auto& [key, item] : value.items()) {
        const std::string head = indent + key + ":";
        const bool records = item.is_array() && !item.empty() && item.front().is_object();
        if (records && item.front().contains("code")) {
            out += head + "\n";
            for (const Json& row : item) {
                out += indent + "  [" + plain(row["code"]) + "] " + plain(row["name"]) + "\n";
            }
        } else if (records) {
            for (const Json& row : item) {
                out += head + "\n" + textOf(row, indent + "  ");
            }
        } else if (item.is_object()) {
            out += head + "\n" + textOf(item, indent + "  ");
        } else if (item.is_string() && item.get<std::string>().find('\n') != std::string::npos) {
            out += head + "\n" + indented(item.get<std::string>(), indent + "  | ");
        } else {
            out += head + " " + plain(item) + "\n";
        }
    }
    return out;
}

// One file is told as "file", several as "files", where one that fails does not keep the others back.
int addFiles(const HostedRun& hosted, const std::vector<std::string>& files, Json& out) {
    if (files.size() == 1) {
        out["file"] = aboutFile(hosted, files.front());
        return kSuccess;
    }
    int result = kSuccess;
    out["files"] = Json::array();
    for (const std::string& file : files) {
        throwIfInterrupted();
        try {
            out["files"].push_back(aboutFile(hosted, file));
        } catch (const ToolError& error) {
            result = error.code();
            out["files"].push_back({{"path", file}, {"error", failureJson(error)}});
            (void)tellFailure(error, false);
        }
    }
    return result;
}

int runInfo(const GlobalOptions& global, const InfoOptions& options) {
    const std::vector<std::string> files = clipFiles(options.files);
    if (files.size() == 1) {
        requireClipFile(files.front());
    }
    for (const std::string& file : files) {
        protectInput(file);
    }
    checkOutput(options.output);
    return runHosted(global, [&](HostedRun& hosted) {
        Json out;
        // What was asked about stands first; what is the same for every file, with the long list of coded
        // types, last.
        const int result = addFiles(hosted, files, out);
        out["made"] = dateText(std::chrono::duration_cast<std::chrono::seconds>(
                                   std::chrono::system_clock::now().time_since_epoch())
                                   .count());
        out["versions"] = versionJson(versionsOf(global, hosted.pluginPath()));
        out["host"] = {{"profile", hosted.host().profile().name},
                       {"interfaceVersion", hosted.host().profile().interfaceVersion}};
        out["plugin"] = aboutPlugin(hosted);
        const std::string text = global.json ? jsonText(out) : textOf(out, "");
        writeAnswer(options.output, text);
        return result;
    });
}

}  // namespace

Command addInfoCommand(CLI::App& app) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* parser = app.add_subcommand("info", "Tell what the plug-in says about itself and about files");
    parser->add_option("FILE", options->files, "AVI files, or folders of them")->required();
    parser->add_option("--out", options->output,
                       "File for the answer, in UTF-8 (default: the standard output)");
    return {parser, [options](const GlobalOptions& global) { return runInfo(global, *options); }};
}

}  // namespace simhost::tool
