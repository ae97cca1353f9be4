#include "pictures_and_sound.h"

#include <algorithm>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"

namespace sample {
namespace {

// Any size and any format are 0, and no list at all is any of both.
bool isWanted(const Clip& clip, const host::imSourceVideoRec& request) {
    const host::imFrameFormat* const formats = request.inFrameFormats;
    if (formats == nullptr || request.inNumFrameFormats <= 0) {
        return true;
    }
    return std::any_of(
        formats, formats + request.inNumFrameFormats, [&clip](const host::imFrameFormat& wanted) {
            return (wanted.inFrameWidth == 0 ||
                    wanted.inFrameWidth == static_cast<std::int32_t>(clip.header.width)) &&
                   (wanted.inFrameHeight == 0 ||
                    wanted.inFrameHeight == static_cast<std::int32_t>(clip.header.height)) &&
                   (wanted.inPixelFormat == 0 || wanted.inPixelFormat == host::PrPixelFormat_BGRA_4444_8u);
        });
}

// The frame that is shown at a time: time × rate / (ticks × duration), in whole seconds and the rest of one
// so that no product leaves 64 bits.
bool frameAt(const Clip& clip, host::PrTime time, std::uint32_t& index) {
    host::PrTime ticks = 0;
    if (clip.time->GetTicksPerSecond(&ticks) != 0 || ticks <= 0 || time < 0) {
        return false;
    }
    const std::int64_t rate = clip.header.rate;
    const std::int64_t end = std::int64_t{clip.header.frames} * clip.header.duration;
    if (time / ticks > end / rate) {
        return false;
    }
    const std::int64_t at = time / ticks * rate + time % ticks * rate / ticks;
    index = static_cast<std::uint32_t>(at / clip.header.duration);
    return at < end;
}

// Rows go into the frame one by one: row bytes are the host's, may be more than a row takes, and may be
// negative.
std::int32_t paint(const Clip& clip, std::uint32_t index, host::PPixHand frame) {
    char* pixels = nullptr;
    std::int32_t rowBytes = 0;
    std::int32_t topFirst = 0;
    if (clip.ppix->GetPixels(frame, host::kBufferAccessWriteOnly, &pixels) != 0 || pixels == nullptr ||
        clip.ppix->GetRowBytes(frame, &rowBytes) != 0 ||
        clip.images->FormatIsOriginTopLeft(host::PrPixelFormat_BGRA_4444_8u, &topFirst) != 0) {
        return host::imOtherErr;
    }
    const PlainHeader& header = clip.header;
    for (std::uint32_t y = 0; y < header.height; ++y) {
        const std::uint32_t row = topFirst != 0 ? y : header.height - 1 - y;
        char* const to = pixels + std::ptrdiff_t{rowBytes} * static_cast<std::ptrdiff_t>(row);
        const std::uint64_t from = header.framePosition(index) + header.rowBytes() * y;
        if (!clip.file.readAt(from, to, static_cast<std::size_t>(header.rowBytes()))) {
            return host::imFileReadFailed;
        }
    }
    return host::imNoErr;
}

}  // namespace

std::int32_t makeFrame(const Clip& clip, const host::imSourceVideoRec& request, host::PPixHand& frame) {
    std::uint32_t index = 0;
    if (!isWanted(clip, request)) {
        return host::imUnsupported;
    }
    if (!frameAt(clip, request.inFrameTime, index)) {
        return host::imFrameNotFound;
    }
    const host::prRect bounds{0, 0, static_cast<std::int32_t>(clip.header.width),
                              static_cast<std::int32_t>(clip.header.height)};
    host::PPixHand made = nullptr;
    if (clip.creator->CreatePPix(&made, host::kBufferAccessWriteOnly, host::PrPixelFormat_BGRA_4444_8u,
                                 &bounds) != 0 ||
        made == nullptr) {
        return host::imMemErr;
    }
    const std::int32_t result = paint(clip, index, made);
    if (result != host::imNoErr) {
        (void)clip.ppix->Dispose(made);
        return result;
    }
    frame = made;
    return host::imNoErr;
}

std::int32_t importAudio(Clip& clip, const host::imImportAudioRec7& record) {
    const std::uint32_t channels = clip.header.channels;
    float** const buffers = record.buffer;
    if (channels == 0 || buffers == nullptr ||
        std::find(buffers, buffers + channels, nullptr) != buffers + channels) {
        return host::imOtherErr;
    }
    const std::int64_t total = clip.header.sampleFrames;
    const std::int64_t first =
        record.position < 0 ? clip.nextSample.load() : std::min<std::int64_t>(record.position, total);
    clip.nextSample = std::min<std::int64_t>(first + record.size, total);
    constexpr std::uint32_t kAtOnce = 4096;
    std::vector<float> together(std::size_t{kAtOnce} * channels);
    const auto there = static_cast<std::uint32_t>(std::min<std::int64_t>(record.size, total - first));
    for (std::uint32_t done = 0; done < there;) {
        const std::uint32_t count = std::min(kAtOnce, there - done);
        const std::uint64_t from = clip.header.soundPosition(static_cast<std::uint32_t>(first) + done);
        if (!clip.file.readAt(from, together.data(), std::size_t{count} * channels * sizeof(float))) {
            return host::imFileReadFailed;
        }
        for (std::uint32_t i = 0; i < count * channels; ++i) {
            buffers[i % channels][done + i / channels] = together[i];
        }
        done += count;
    }
    for (std::uint32_t channel = 0; channel < channels; ++channel) {
        std::fill(buffers[channel] + there, buffers[channel] + record.size, 0.0F);
    }
    return host::imNoErr;
}

}  // namespace sample
