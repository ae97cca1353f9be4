#include "tool/soak/soak_run.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <random>
#include <thread>
#include <utility>

#include "host/record_values.h"
#include "host/result_codes.h"
#include "simhost/async_clip.h"
#include "simhost/clip.h"
#include "simhost/session.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int32_t kMostChannels = 64;
constexpr std::size_t kMostMessages = 20;

std::uint64_t hashOf(const Frame& frame) {
    std::uint64_t hash = hashBytes(nullptr, 0);
    for (std::int32_t y = 0; y < frame.height(); ++y) {
        const auto row = frame.pictureRow(y);
        hash = hashBytes(row.data(), row.size(), hash);
    }
    return hash == 0 ? 1 : hash;
}

bool isDescribed(std::int32_t infoResult) {
    return infoResult == host::imNoErr || infoResult == host::imIterateStreams;
}

// One place of the host's timeline: opens one file after the other and plays with it.
class Deck {
 public:
    Deck(const Importer& importer, std::vector<SoakFile>& files, const SoakWork& work, std::uint64_t seed,
         Clock::time_point until, SoakTally& tally)
        : m_importer(importer),
          m_files(files),
          m_work(work),
          m_random(seed),
          m_until(until),
          m_tally(tally) {}

    void run() {
        try {
            do {
                playOneFile();
            } while (!isOver());
        } catch (const std::exception& error) {
            m_tally.addWrong(std::string("exception: ") + error.what());
        }
    }

 private:
    bool isOver() const { return Clock::now() >= m_until || interrupted(); }
    std::uint64_t draw(std::uint64_t below) { return m_random() % std::max<std::uint64_t>(below, 1); }

    void wrong(const SoakFile& file, const std::string& what, std::int32_t result) {
        m_tally.addWrong(file.pathUtf8 + ": " + what + ": " + resultText(result));
    }
    void expect(const SoakFile& file, const char* what, std::int32_t result, std::int32_t expected) {
        if (result != expected) {
            wrong(file, what, result);
        }
    }

    void playOneFile() {
        SoakFile& file = m_files[draw(m_files.size())];
        Clip clip(m_importer, file.pathUtf8);
        expect(file, "imOpenFile8", clip.openResult(), file.openResult);
        if (!clip.isOpen()) {
            ++m_tally.refusals;
            return;
        }
        expect(file, "imGetInfo8", clip.getInfo(0).result, file.infoResult);
        if (!file.playable) {
            ++m_tally.refusals;
            return;
        }
        ++m_tally.opens;
        std::optional<AsyncClip> async;
        const std::uint64_t actions = 1 + draw(16);
        for (std::uint64_t i = 0; i < actions && !isOver(); ++i) {
            act(file, clip, async);
            if (m_work.pause.count() > 0) {
                std::this_thread::sleep_for(m_work.pause);
            }
        }
        // The host closes its two importers of a file in either order.
        if (draw(2) == 0) {
            expect(file, "imCloseFile", clip.close(), host::imNoErr);
        }
    }

    void act(SoakFile& file, Clip& clip, std::optional<AsyncClip>& async) {
        switch (draw(10)) {
            case 0:
                describe(file, clip);
                break;
            case 1:
                expect(file, "imQuietFile", clip.quiet(), host::imNoErr);
                expect(file, "imOpenFile8 behind imQuietFile", clip.reopen().result, host::imNoErr);
                break;
            case 2:
            case 3:
                listen(file, clip);
                break;
            case 4:
            case 5:
                scrub(file, clip);
                break;
            case 6:
                play(file, clip);
                break;
            case 7:
                if (async) {
                    expect(file, "aiFlush", async->flush(), host::aiNoError);
                    expect(file, "aiClose", async->close(), host::aiNoError);
                    async.reset();
                }
                break;
            default:
                readAhead(file, clip, async);
        }
    }

    void describe(const SoakFile& file, Clip& clip) {
        (void)clip.walkStreams();
        expect(file, "imGetInfo8", clip.getInfo(0).result, file.infoResult);
        expect(file, "imAnalysis", clip.analysis(4096).result, host::imNoErr);
        if (file.frames > 0) {
            expect(file, "imDataRateAnalysis", clip.dataRates().result, host::imNoErr);
            (void)clip.pixelFormats();
        }
        if (file.channels > 0) {
            expect(file, "imGetAudioChannelLayout", clip.channelLayout().result, host::imNoErr);
        }
    }

    void scrub(SoakFile& file, const Clip& clip) {
        for (std::uint64_t count = draw(8); canPlay(file) && count > 0; --count) {
            const auto index = static_cast<std::uint32_t>(draw(file.frames));
            const std::size_t format = draw(file.formats.size());
            check(file, index, format, "imGetSourceVideo", clip.getFrame(index, file.formats[format]));
        }
    }

    void play(SoakFile& file, const Clip& clip) {
        if (!canPlay(file)) {
            return;
        }
        const std::size_t format = draw(file.formats.size());
        const auto first = static_cast<std::uint32_t>(draw(file.frames));
        for (std::uint32_t i = first; i < std::min(file.frames, first + 12); ++i) {
            check(file, i, format, "imGetSourceVideo", clip.getFrame(i, file.formats[format]));
        }
    }

    void readAhead(SoakFile& file, const Clip& clip, std::optional<AsyncClip>& async) {
        if (!canPlay(file)) {
            return;
        }
        if (!async) {
            async.emplace(clip);
            expect(file, "imCreateAsyncImporter", async->creation().result, host::imNoErr);
            ++m_tally.asyncImporters;
        }
        if (!async->isOpen()) {
            async.reset();
            return;
        }
        const std::size_t format = draw(file.formats.size());
        const host::imFrameFormat wanted[] = {{0, 0, file.formats[format]}};
        const auto first = static_cast<std::uint32_t>(draw(file.frames));
        const std::uint32_t end =
            std::min<std::uint32_t>(file.frames, first + 1 + static_cast<std::uint32_t>(draw(8)));
        for (std::uint32_t i = first; i < end; ++i) {
            expect(file, "aiInitiateAsyncRead", async->initiate(clip.frameTime(i), wanted), host::aiNoError);
        }
        if (draw(4) == 0) {
            expect(file, "aiFlush", async->flush(), host::aiNoError);
        }
        // Some are never collected; the next flush or the close drops them.
        for (std::uint32_t i = first; i < end && draw(8) != 0; ++i) {
            const FrameAnswer answer = async->getFrame(clip.frameTime(i), wanted);
            // One that was announced before, and not collected, may have been announced in another format.
            const std::size_t answered = answer.frame ? formatOf(file, *answer.frame) : format;
            check(file, i, answered, "aiGetFrame", answer);
        }
    }

    static std::size_t formatOf(const SoakFile& file, const Frame& frame) {
        const auto found = std::find(file.formats.begin(), file.formats.end(), frame.pixelFormat());
        return static_cast<std::size_t>(found - file.formats.begin());
    }

    void check(SoakFile& file, std::uint32_t index, std::size_t format, const char* what,
               const FrameAnswer& answer) {
        if (!answer.frame || format >= file.formats.size()) {
            wrong(file, std::string(what) + " of frame " + std::to_string(index), answer.result);
            return;
        }
        ++m_tally.frames;
        const std::uint64_t hash = hashOf(*answer.frame);
        std::uint64_t known = 0;
        std::atomic<std::uint64_t>& first = file.hashes[format * SoakFile::kMostFrames + index];
        if (!first.compare_exchange_strong(known, hash) && known != hash) {
            m_tally.addWrong(file.pathUtf8 + ": " + what + " of frame " + std::to_string(index) +
                             ": another picture than before");
        }
    }

    void listen(const SoakFile& file, const Clip& clip) {
        if (file.channels == 0) {
            return;
        }
        const auto size = static_cast<std::uint32_t>(1 + draw(4000));
        const auto position = static_cast<std::int64_t>(draw(static_cast<std::uint64_t>(file.sampleFrames)));
        const AudioAnswer first = clip.importAudio(position, size, file.channels);
        const AudioAnswer second = clip.importAudio(position, size, file.channels);
        expect(file, "imImportAudio7", first.result, host::imNoErr);
        if (first.result != second.result || first.channels != second.channels) {
            wrong(file, "imImportAudio7 twice at " + std::to_string(position), second.result);
        }
        m_tally.sampleFrames += 2 * std::uint64_t{size};
    }

    static bool canPlay(const SoakFile& file) { return file.frames > 0 && !file.formats.empty(); }

    const Importer& m_importer;
    std::vector<SoakFile>& m_files;
    const SoakWork& m_work;
    std::mt19937_64 m_random;
    Clock::time_point m_until;
    SoakTally& m_tally;
};

}  // namespace

SoakFile describeSoakFile(const Importer& importer, std::string pathUtf8) {
    SoakFile out;
    out.pathUtf8 = std::move(pathUtf8);
    Clip clip(importer, out.pathUtf8);
    out.openResult = clip.openResult();
    if (!clip.isOpen()) {
        return out;
    }
    const auto info = clip.getInfo(0);
    out.infoResult = info.result;
    if (!isDescribed(info.result)) {
        return out;
    }
    out.playable = true;
    out.frames = std::min(frameCount(info.record), SoakFile::kMostFrames);
    if (out.frames > 0) {
        out.formats = clip.pixelFormats().formats;
        out.formats.resize(std::min(out.formats.size(), SoakFile::kMostFormats));
    }
    const std::int32_t channels = info.record.audInfo.numChannels;
    if (info.record.hasAudio == 1 && channels > 0 && channels <= kMostChannels &&
        info.record.audDuration > 0) {
        out.channels = static_cast<std::uint32_t>(channels);
        out.sampleFrames = info.record.audDuration;
    }
    out.hashes =
        std::make_unique<std::atomic<std::uint64_t>[]>(SoakFile::kMostFrames * SoakFile::kMostFormats);
    return out;
}

void SoakTally::addWrong(std::string text) {
    ++wrong;
    const std::lock_guard lock(m_mutex);
    if (m_messages.size() < kMostMessages) {
        m_messages.push_back(std::move(text));
    }
}

std::vector<std::string> SoakTally::messages() const {
    const std::lock_guard lock(m_mutex);
    return m_messages;
}

void soakRound(const Importer& importer, std::vector<SoakFile>& files, const SoakWork& work,
               Clock::time_point until, const std::function<void()>& atWork, SoakTally& tally) {
    const Clock::time_point start = Clock::now();
    std::vector<std::thread> threads;
    threads.reserve(work.clips);
    for (std::uint32_t i = 0; i < work.clips; ++i) {
        threads.emplace_back(
            [&, seed = work.seed + i] { Deck(importer, files, work, seed, until, tally).run(); });
    }
    // In pieces, because an interval may be an hour long and Ctrl-C is not to wait for half of it.
    constexpr std::chrono::milliseconds kPiece{50};
    for (const auto half = start + (until - start) / 2; Clock::now() < half && !interrupted();) {
        std::this_thread::sleep_until(std::min(half, Clock::now() + kPiece));
    }
    atWork();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace simhost::tool
