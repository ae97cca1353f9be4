#include "tool/shared/media/media_facts.h"

#include <algorithm>

#include "host/audio_codes.h"
#include "host/four_char_codes.h"
#include "simhost/text.h"
#include "tool/shared/logs/log_explanations.h"
#include "tool/shared/media/wav.h"

namespace simhost::tool {

std::uint32_t frameCount(const host::imFileInfoRec8& info) noexcept {
    const std::int32_t duration = info.vidDuration;
    const std::int32_t perFrame = info.vidSampleSize;
    return info.hasVideo != 1 || duration <= 0 || perFrame <= 0
               ? 0
               : static_cast<std::uint32_t>(duration / perFrame);
}

double framesPerSecond(const host::imFileInfoRec8& info) noexcept {
    const std::int32_t rate = info.vidScale;
    const std::int32_t perFrame = info.vidSampleSize;
    return rate > 0 && perFrame > 0 ? static_cast<double>(rate) / perFrame : 0.0;
}

std::string codedType(const host::imFileInfoRec8& info) {
    return codeText(static_cast<std::uint32_t>(byValue(info.vidInfo.subType)), true);
}

const char* sampleTypeName(std::uint32_t type) noexcept {
    switch (type) {
        case host::kPrAudioSampleType_8BitInt:
            return "8-bit integer";
        case host::kPrAudioSampleType_16BitInt:
            return "16-bit integer";
        case host::kPrAudioSampleType_24BitInt:
            return "24-bit integer";
        case host::kPrAudioSampleType_32BitInt:
            return "32-bit integer";
        case host::kPrAudioSampleType_32BitFloat:
            return "32-bit float";
        default:
            return "other";
    }
}

const char* fieldTypeName(std::int8_t type) noexcept {
    constexpr const char* kNames[] = {"progressive", "upper field first", "lower field first", "unknown"};
    return type >= 0 && type <= host::kFieldTypeUnknown ? kNames[type] : "unknown";
}

const char* alphaTypeName(std::int8_t type) noexcept {
    return type == host::kAlphaTypeStraight ? "straight" : type == host::kAlphaTypeNone ? "none" : "other";
}

std::optional<SoundShape> soundShape(const host::imFileInfoRec8& info) noexcept {
    const std::int32_t channels = info.audInfo.numChannels;
    if (info.hasAudio != 1 || channels <= 0 ||
        static_cast<std::uint32_t>(channels) > SoundShape::kMostChannels) {
        return std::nullopt;
    }
    return SoundShape{static_cast<std::uint32_t>(channels),
                      std::max(static_cast<double>(byValue(info.audInfo.sampleRate)), 0.0),
                      static_cast<std::uint64_t>(std::max<std::int64_t>(byValue(info.audDuration), 0))};
}

std::vector<std::optional<std::uint32_t>> channelLabels(const Clip& clip, std::uint32_t channels) {
    const auto answer = clip.channelLayout();
    std::vector<std::optional<std::uint32_t>> out;
    const std::uint32_t count = std::min(channels, SoundShape::kMostChannels);
    for (std::uint32_t i = 0; answer.result == host::imNoErr && i < count; ++i) {
        const std::uint32_t label = answer.record.outChannelLabels[i];
        const std::uint32_t before = answer.before.outChannelLabels[i];
        out.push_back(label == before ? std::nullopt : std::optional(label));
    }
    return out;
}

std::string loudspeakerName(std::uint32_t label) {
    const std::string_view name = channelLabelName(label);
    std::string out;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto isUpper = [&name](std::size_t at) {
            return at < name.size() && name[at] >= 'A' && name[at] <= 'Z';
        };
        // A capital in the middle begins a word, unless it is one of an abbreviation.
        const bool begins = i > 0 && isUpper(i) && !isUpper(i - 1) && name[i - 1] != '_';
        out += begins ? " " : "";
        out += name[i] == '_' ? ' ' : begins ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
    }
    return out;
}

std::vector<UnusableSound> unusableSounds(std::string_view description) {
    constexpr std::string_view kStream = "Audio stream ";
    constexpr std::string_view kReason = "    Not usable: ";
    std::vector<UnusableSound> out;
    std::optional<std::string_view> stream;  // none before the first, and in the video's part
    while (!description.empty()) {
        const std::string_view line = description.substr(0, description.find('\n'));
        description.remove_prefix(std::min(line.size() + 1, description.size()));
        if (line.starts_with(kStream)) {
            const std::string_view rest = line.substr(kStream.size());
            stream = rest.substr(0, rest.find(':'));
        } else if (stream && line.starts_with(kReason)) {
            const std::string_view reason = line.substr(kReason.size());
            const LineExplanation* meaning = explainLine(reason);
            out.push_back(
                {std::string(*stream),
                 std::string(reason) + (meaning == nullptr ? "" : std::string(": ") + meaning->text)});
        }
    }
    return out;
}

}  // namespace simhost::tool
