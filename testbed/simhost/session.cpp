#include "simhost/session.h"

#include <algorithm>
#include <set>

#include "host/four_char_codes.h"
#include "host/selectors.h"
#include "simhost/async_clip.h"
#include "simhost/clip.h"

namespace simhost {
namespace {

// More channels than any importer may announce to this host.
constexpr std::int32_t kMostChannels = 64;
constexpr std::uint32_t kMostIndices = 100;

class Session {
 public:
    Session(const Importer& importer, const SessionOptions& options)
        : m_importer(importer), m_options(options) {}

    SessionSummary run() {
        if (m_options.initAndShutdown) {
            start();
        }
        playFile();
        if (m_options.initAndShutdown) {
            note("imShutdown", m_importer.shutdown());
        }
        return std::move(m_out);
    }

 private:
    std::int32_t note(const char* name, std::int32_t result) {
        m_out.steps.push_back({name, result});
        return result;
    }

    void start() {
        note("imInit", m_importer.init().result);
        note("imGetSupports8", m_importer.getSupports8());
        note("imGetSupports7", m_importer.call(host::imGetSupports7, nullptr, nullptr));
        for (std::uint32_t index = 0; index < kMostIndices; ++index) {
            if (note("imGetIndFormat", m_importer.getIndFormat(index).result) != host::imNoErr) {
                break;
            }
        }
        note("imGetSubTypeNames", m_importer.getSubTypeNames(host::kFileTypeAviv).result);
    }

    void playFile() {
        Clip clip(m_importer, m_options.pathUtf8);
        note("imOpenFile8", clip.openResult());
        if (!clip.isOpen()) {
            return;
        }
        m_out.opened = true;
        const auto streams = clip.walkStreams();
        for (const StreamInfo& stream : streams) {
            note("imGetInfo8", stream.answer.result);
        }
        m_out.streams = static_cast<std::uint32_t>(streams.size());
        const auto first = clip.getInfo(0);
        note("imGetInfo8", first.result);
        // The host plays nothing that it was refused the description of.
        if (first.result == host::imNoErr || first.result == host::imIterateStreams) {
            playVideo(clip, first.record);
            playAudio(clip, first.record);
            for (std::int32_t index = 1; index < static_cast<std::int32_t>(streams.size()); ++index) {
                playFurtherStream(index);
            }
            note("imQuietFile", clip.quiet());
            if (note("imOpenFile8", clip.reopen().result) == host::imNoErr) {
                playVideo(clip, first.record);
                if (m_options.async) {
                    playAsync(clip, first.record);
                }
            }
        }
        note("imCloseFile", clip.close());
    }

    // The host opens a file once more for each further stream.
    void playFurtherStream(std::int32_t index) {
        OpenOptions open;
        open.streamIndex = index;
        Clip clip(m_importer, m_options.pathUtf8, open);
        if (note("imOpenFile8", clip.openResult()) == host::imNoErr) {
            const auto info = clip.getInfo(index);
            note("imGetInfo8", info.result);
            playAudio(clip, info.record);
            note("imCloseFile", clip.close());
        }
    }

    std::vector<std::uint32_t> chosenFrames(const host::imFileInfoRec8& info) const {
        const std::int64_t duration = info.vidSampleSize;
        const std::int64_t count = duration > 0 ? std::int64_t{info.vidDuration} / duration : 0;
        std::set<std::uint32_t> chosen;
        for (std::uint32_t i = 0; count > 0 && i < m_options.framesPerFormat; ++i) {
            const std::int64_t last = std::max<std::int64_t>(m_options.framesPerFormat, 2) - 1;
            chosen.insert(static_cast<std::uint32_t>((count - 1) * i / last));
        }
        return {chosen.begin(), chosen.end()};
    }

    void playVideo(Clip& clip, const host::imFileInfoRec8& info) {
        if (info.hasVideo != 1) {
            return;
        }
        for (const std::int32_t size : {0, 1, 100, 65536}) {
            note("imAnalysis", clip.analysis(size).result);
        }
        const DataRates rates = clip.dataRates();
        note("imDataRateAnalysis", rates.sizingResult);
        note("imDataRateAnalysis", rates.result);
        const PixelFormats offered = clip.pixelFormats();
        note("imGetIndPixelFormat", offered.lastResult);
        m_formats = offered.formats;
        m_formats.resize(std::min<std::size_t>(m_formats.size(), m_options.mostFormats));
        const auto frames = chosenFrames(info);
        for (const std::uint32_t format : m_formats) {
            for (const std::uint32_t index : frames) {
                take(clip.getFrame(index, format));
            }
        }
        // What a host asks for by mistake: no format at all, a time before the first frame.
        note("imGetSourceVideo", clip.getSourceVideo(0, {}).result);
        const host::imFrameFormat any[] = {{0, 0, m_formats.empty() ? 0 : m_formats.front()}};
        note("imGetSourceVideo", clip.getSourceVideo(-1, any).result);
    }

    void take(const FrameAnswer& answer) {
        note("imGetSourceVideo", answer.result);
        if (answer.frame) {
            ++m_out.frames;
            const auto picture = answer.frame->picture();
            m_out.pictureHash = hashBytes(picture.data(), picture.size(), m_out.pictureHash);
        }
    }

    void playAudio(Clip& clip, const host::imFileInfoRec8& info) {
        if (info.hasAudio != 1) {
            return;
        }
        note("imGetAudioChannelLayout", clip.channelLayout().result);
        const std::int32_t channels = info.audInfo.numChannels;
        if (channels < 0 || channels > kMostChannels) {
            clip.host().addViolation({Rule::kSoundChannels, "imGetInfo8", std::to_string(channels),
                                      "imFileInfoRec8", "audInfo.numChannels"});
            return;
        }
        const std::int64_t total = info.audDuration;
        const std::int64_t near = std::max<std::int64_t>(total - m_options.audioFrames / 2, 0);
        // From the start, on from there twice, over the end, and far behind it.
        const std::int64_t positions[] = {0, -1, -1, near, total};
        for (const std::int64_t position : positions) {
            const AudioAnswer answer =
                clip.importAudio(position, m_options.audioFrames, static_cast<std::uint32_t>(channels));
            if (note("imImportAudio7", answer.result) == host::imNoErr) {
                m_out.audioFrames += m_options.audioFrames;
                for (const auto& channel : answer.channels) {
                    m_out.audioHash =
                        hashBytes(channel.data(), channel.size() * sizeof(float), m_out.audioHash);
                }
            }
        }
    }

    void playAsync(const Clip& clip, const host::imFileInfoRec8& info) {
        AsyncClip async = clip.createAsync();
        if (note("imCreateAsyncImporter", async.creation().result) != host::imNoErr || !async.isOpen()) {
            return;
        }
        const auto frames = chosenFrames(info);
        for (const std::uint32_t format : m_formats) {
            const host::imFrameFormat wanted[] = {{0, 0, format}};
            for (const std::uint32_t index : frames) {
                note("aiInitiateAsyncRead", async.initiate(clip.frameTime(index), wanted));
            }
            for (const std::uint32_t index : frames) {
                const FrameAnswer answer = async.getFrame(clip.frameTime(index), wanted);
                note("aiGetFrame", answer.result);
                const FrameAnswer reference = clip.getFrame(index, format);
                m_out.frames += answer.frame ? 1u : 0u;
                const bool same = answer.frame.has_value() == reference.frame.has_value() &&
                                  (!answer.frame || answer.frame->picture() == reference.frame->picture());
                m_out.asyncDifferences += same ? 0u : 1u;
            }
        }
        // Requests that are never collected: one cancelled, one dropped by the flush, one by the close.
        const host::imFrameFormat wanted[] = {{0, 0, m_formats.empty() ? 0 : m_formats.front()}};
        // A later frame comes behind them in the order of turns: once it is there they are done too, so that
        // every session makes the same calls.
        const auto letPass = [&] { (void)async.getFrame(clip.frameTime(frames.back()), wanted); };
        note("aiInitiateAsyncRead", async.initiate(0, wanted));
        note("aiCancelAsyncRead", async.cancel(0, wanted));
        if (!frames.empty()) {
            letPass();
        }
        note("aiFlush", async.flush());
        note("aiInitiateAsyncRead", async.initiate(0, wanted));
        if (!frames.empty()) {
            letPass();
        }
        note("aiClose", async.close());
    }

    const Importer& m_importer;
    const SessionOptions& m_options;
    SessionSummary m_out;
    std::vector<std::uint32_t> m_formats;
};

}  // namespace

std::string SessionSummary::text() const {
    std::string out;
    for (const SessionStep& step : steps) {
        out += step.name + " " + std::to_string(step.result) + "\n";
    }
    return out;
}

SessionSummary runSession(const Importer& importer, const SessionOptions& options) {
    return Session(importer, options).run();
}

std::uint64_t hashBytes(const void* bytes, std::size_t size, std::uint64_t seed) noexcept {
    std::uint64_t hash = seed;
    const auto* at = static_cast<const unsigned char*>(bytes);
    for (std::size_t i = 0; i < size; ++i) {
        hash = (hash ^ at[i]) * 0x100000001B3u;
    }
    return hash;
}

}  // namespace simhost
