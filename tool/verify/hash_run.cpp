#include "tool/verify/hash_run.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "tool/shared/base/interruption.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/sound_tracks.h"

namespace simhost::tool {
namespace {

// Sample frames asked for at a time: a second or so.
constexpr std::uint32_t kSoundRequest = 48 * 1024;

// Shared by the threads of one clip.
class Work {
 public:
    Work(ClipHashes& clip, std::uint32_t format) : m_clip(clip), m_format(format) {}

    /// Frames, until there are no more.
    void hashPictures(const Clip& source) noexcept {
        guarded([&] {
            std::vector<std::uint8_t> bytes;
            for (std::size_t i = m_nextPicture++; i < m_clip.pictures.size() && !m_stop;
                 i = m_nextPicture++) {
                OneHash& hash = m_clip.pictures[i];
                if (hash.done) {
                    continue;
                }
                const FrameAnswer answer = source.getFrame(static_cast<std::uint32_t>(i), m_format);
                hash.result = answer.result;
                if (answer.frame) {
                    layOut(*answer.frame, m_clip.layout, bytes);
                    keep(bytes, hash);
                }
                tell({0, i});
            }
        });
    }

    /// One track.
    void hashSound(const Clip& source, TrackHashes& track) noexcept {
        guarded([&] {
            std::size_t block = 0;
            while (block < track.blocks.size() && !m_stop) {
                if (track.hashes[block].done || track.blocks[block].state == ChunkState::kMissing) {
                    ++block;
                } else {
                    block = track.blocks[block].count > kSoundRequest ? hashLongBlock(source, track, block)
                                                                      : hashBlocks(source, track, block);
                }
            }
        });
    }

    /// What was done since the last call; waits a little for it. False when the threads have ended.
    bool take(std::vector<HashDone>& done) {
        constexpr auto kPatience = std::chrono::milliseconds(50);
        std::unique_lock lock(m_mutex);
        m_news.wait_for(lock, kPatience, [this] { return m_ended == m_begun || m_done.size() >= 64; });
        done = std::exchange(m_done, {});
        return m_ended < m_begun || !done.empty();
    }

    /// Before the threads begin: how many runs there will be.
    void expect(std::size_t runs) { m_begun = runs; }
    void stop() noexcept { m_stop = true; }
    void rethrow() const {
        if (m_failure) {
            std::rethrow_exception(m_failure);
        }
    }

 private:
    template <typename Step>
    void guarded(Step&& step) noexcept {
        std::exception_ptr failure;
        try {
            step();
        } catch (...) {
            failure = std::current_exception();
            m_stop = true;
        }
        const std::lock_guard lock(m_mutex);
        m_failure = m_failure ? m_failure : failure;
        ++m_ended;
        m_news.notify_all();
    }

    static void keep(const std::vector<std::uint8_t>& bytes, OneHash& hash) {
        hash.hash = md5(bytes);
        hash.size = static_cast<std::uint32_t>(bytes.size());
        hash.done = true;
    }

    void tell(HashDone done) {
        const std::lock_guard lock(m_mutex);
        m_done.push_back(done);
        if (m_done.size() >= 64) {
            m_news.notify_one();
        }
    }

    // Neighbouring blocks by one request. Gives the block to go on with.
    std::size_t hashBlocks(const Clip& source, TrackHashes& track, std::size_t first) {
        const std::uint64_t begin = track.blocks[first].first;
        std::size_t end = first;
        std::uint64_t last = begin;
        while (end < track.blocks.size() && track.blocks[end].first == last &&
               last + track.blocks[end].count - begin <= kSoundRequest &&
               track.blocks[end].state == ChunkState::kThere && !track.hashes[end].done) {
            last += track.blocks[end++].count;
        }
        const AudioAnswer answer = source.importAudio(
            static_cast<std::int64_t>(begin), static_cast<std::uint32_t>(last - begin), track.channels);
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = first; i < end; ++i) {
            OneHash& hash = track.hashes[i];
            hash.result = answer.result;
            if (answer.result == host::imNoErr) {
                layOut(answer.channels, static_cast<std::size_t>(track.blocks[i].first - begin),
                       track.blocks[i].count, track.kind, bytes);
                keep(bytes, hash);
            }
            tell({track.number, i});
        }
        return end;
    }

    // A block of any length by several requests.
    std::size_t hashLongBlock(const Clip& source, TrackHashes& track, std::size_t block) {
        const SoundBlock& whole = track.blocks[block];
        OneHash& hash = track.hashes[block];
        Md5 sum;
        std::vector<std::uint8_t> bytes;
        for (std::uint32_t at = 0; at < whole.count && !m_stop; at += kSoundRequest) {
            const std::uint32_t size = std::min(kSoundRequest, whole.count - at);
            const AudioAnswer answer =
                source.importAudio(static_cast<std::int64_t>(whole.first + at), size, track.channels);
            hash.result = answer.result;
            if (answer.result != host::imNoErr) {
                break;
            }
            layOut(answer.channels, 0, size, track.kind, bytes);
            sum.add(bytes);
        }
        if (hash.result == host::imNoErr && !m_stop) {
            hash.hash = sum.finish();
            hash.size = whole.count * track.channels * sampleBytes(track.kind);
            hash.done = true;
        }
        tell({track.number, block});
        return block + 1;
    }

    ClipHashes& m_clip;
    std::uint32_t m_format;
    std::atomic<std::size_t> m_nextPicture = 0;
    std::atomic<bool> m_stop = false;
    std::mutex m_mutex;  // guards everything below
    std::condition_variable m_news;
    std::vector<HashDone> m_done;
    std::size_t m_begun = 0;
    std::size_t m_ended = 0;
    std::exception_ptr m_failure;
};

class Threads {
 public:
    explicit Threads(Work& work) : m_work(work) {}
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    ~Threads() {
        m_work.stop();
        join();
    }
    void join() {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
        m_threads.clear();
    }
    /// So many threads take one run after the other. Runs that are stopped end at once.
    void start(std::size_t count, const std::vector<std::function<void()>>& runs) {
        m_work.expect(runs.size());
        for (std::size_t i = 0; i < std::min(count, runs.size()); ++i) {
            m_threads.emplace_back([this, &runs] {
                for (std::size_t run = m_next++; run < runs.size(); run = m_next++) {
                    runs[run]();
                }
            });
        }
    }

 private:
    Work& m_work;
    std::atomic<std::size_t> m_next = 0;
    std::vector<std::thread> m_threads;
};

TrackHashes describeTrack(const HostedRun& hosted, const std::string& path, const SoundTrack& told,
                          const SoundChunks& chunks) {
    TrackHashes out;
    out.number = told.number;
    out.problem = told.problem;
    out.sampleFrames = chunks.sampleFrames;
    out.declared = chunks.declared;
    if (!out.problem.empty()) {
        return out;
    }
    Answer<host::imFileInfoRec8> info;
    const auto clip = hosted.open(path, told.number - 1, info);
    const auto shape = soundShape(info.record);
    if (!shape) {
        out.problem = "the plug-in tells of no channels";
        return out;
    }
    out.kind = sampleKind(byValue(info.record.audInfo.sampleType));
    out.channels = shape->channels;
    out.rate = static_cast<std::uint32_t>(std::lround(std::clamp(shape->rate, 0.0, 4e9)));
    out.blocks = chunks.blocks;
    out.hashes.resize(out.blocks.size());
    return out;
}

}  // namespace

ClipHashes describeClip(const HostedRun& hosted, const std::string& pathUtf8) {
    Answer<host::imFileInfoRec8> info;
    const auto clip = hosted.open(pathUtf8, 0, info);
    const auto chunks = readClipChunks(pathUtf8);
    if (!chunks) {
        throw ToolError(kFailed, "'" + pathUtf8 + "' cannot be read", "", "unreadable-file");
    }
    ClipHashes out;
    const host::imImageInfoRec& video = info.record.vidInfo;
    out.width = byValue(video.imageWidth);
    out.height = byValue(video.imageHeight);
    out.sarNum = byValue(video.pixelAspectNum);
    out.sarDen = byValue(video.pixelAspectDen);
    const bool usable = chunks->rate > 0 && chunks->scale > 0;
    out.rate = usable ? chunks->rate : static_cast<std::uint32_t>(std::max(byValue(info.record.vidScale), 0));
    out.scale =
        usable ? chunks->scale : static_cast<std::uint32_t>(std::max(byValue(info.record.vidSampleSize), 1));
    out.declared = chunks->declaredPictures;
    out.pictures.resize(std::min<std::size_t>(frameCount(info.record), chunks->pictures.size()));
    out.states.assign(chunks->pictures.begin(),
                      chunks->pictures.begin() + static_cast<std::ptrdiff_t>(out.pictures.size()));
    const PixelFormats offered = clip->pixelFormats();
    if (offered.formats.empty()) {
        throw ToolError(kFailed, "the plug-in offers no pixel format for '" + pathUtf8 + "'",
                        "update the Orvantis codec");
    }
    out.layout = frameLayout(codedType(info.record), offered.formats);
    const auto tracks = soundTracks(clip->analysis(1 << 20).text);
    for (std::size_t i = 0; i < std::min(tracks.size(), chunks->sounds.size()); ++i) {
        out.tracks.push_back(describeTrack(hosted, pathUtf8, tracks[i], chunks->sounds[i]));
    }
    return out;
}

void hashClip(const HostedRun& hosted, const std::string& pathUtf8, std::uint32_t jobs, ClipHashes& clip,
              const std::function<void(HashDone)>& done) {
    Work work(clip, clip.layout.delivered);
    std::vector<std::unique_ptr<Clip>> sources;  // closed after the threads
    std::uint64_t steps = 0;
    const auto source = [&](std::int32_t stream) -> const Clip& {
        Answer<host::imFileInfoRec8> info;
        sources.push_back(hosted.open(pathUtf8, stream, info));
        return *sources.back();
    };
    std::vector<std::function<void()>> runs;
    for (TrackHashes& track : clip.tracks) {
        const auto blocks = static_cast<std::uint64_t>(
            std::ranges::count_if(track.hashes, [](const OneHash& hash) { return !hash.done; }));
        if (blocks > 0) {
            steps += blocks;
            runs.emplace_back(
                [&work, &track, &from = source(track.number - 1)] { work.hashSound(from, track); });
        }
    }
    const auto left = static_cast<std::size_t>(
        std::ranges::count_if(clip.pictures, [](const OneHash& hash) { return !hash.done; }));
    steps += left;
    for (std::size_t i = 0; i < std::min<std::size_t>(jobs, left); ++i) {
        runs.emplace_back([&work, &from = source(0)] { work.hashPictures(from); });
    }
    Progress progress(hosted.progress(), "verify", steps);
    Threads threads(work);
    threads.start(jobs, runs);
    std::vector<HashDone> news;
    while (work.take(news)) {
        for (const HashDone& each : news) {
            done(each);
        }
        progress.advance(news.size());
    }
    threads.join();
    work.rethrow();
}

}  // namespace simhost::tool
