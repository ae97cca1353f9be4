#include "tests/fuzz/peer_avi.h"

#include <algorithm>
#include <cstring>
#include <memory>

extern "C" {
#include <libavformat/avformat.h>
}

namespace fuzz {

namespace {

struct Source {
    std::span<const std::uint8_t> file;
    std::int64_t at = 0;
};

int readSource(void* opaque, std::uint8_t* buffer, int count) {
    auto& source = *static_cast<Source*>(opaque);
    const auto size = static_cast<std::int64_t>(source.file.size());
    const std::int64_t take = std::min<std::int64_t>(count, size - std::min(source.at, size));
    if (take <= 0) {
        return AVERROR_EOF;
    }
    std::memcpy(buffer, source.file.data() + source.at, static_cast<std::size_t>(take));
    source.at += take;
    return static_cast<int>(take);
}

std::int64_t seekSource(void* opaque, std::int64_t offset, int whence) {
    auto& source = *static_cast<Source*>(opaque);
    const auto size = static_cast<std::int64_t>(source.file.size());
    if (whence == AVSEEK_SIZE) {
        return size;
    }
    if (whence == SEEK_CUR) {
        offset += source.at;
    }
    if (whence == SEEK_END) {
        offset += size;
    }
    if (offset < 0) {
        return AVERROR(EINVAL);
    }
    return source.at = offset;
}

struct Closer {
    void operator()(AVIOContext* io) const noexcept {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
    void operator()(AVFormatContext* context) const noexcept { avformat_close_input(&context); }
};

PeerStream describe(AVStream& from) {
    PeerStream stream;
    const AVCodecParameters& parameters = *from.codecpar;
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
        stream.kind = PeerStream::Kind::kVideo;
    }
    if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
        stream.kind = PeerStream::Kind::kAudio;
    }
    stream.tag = parameters.codec_tag;
    stream.width = parameters.width;
    stream.height = parameters.height;
    stream.channels = parameters.ch_layout.nb_channels;
    stream.samplesPerSecond = parameters.sample_rate;
    stream.rate = from.time_base.den;
    stream.scale = from.time_base.num;
    for (int i = 0; i < avformat_index_get_entries_count(&from); ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(&from, i);
        stream.entries.push_back({entry.timestamp, entry.pos, entry.size});
    }
    return stream;
}

}  // namespace

std::optional<std::vector<PeerStream>> readAsPeer(std::span<const std::uint8_t> file) {
    av_log_set_level(AV_LOG_QUIET);
    constexpr int kBufferBytes = 4096;
    Source source{file};
    auto* const buffer = static_cast<std::uint8_t*>(av_malloc(kBufferBytes));
    const std::unique_ptr<AVIOContext, Closer> io(
        avio_alloc_context(buffer, kBufferBytes, 0, &source, readSource, nullptr, seekSource));
    AVFormatContext* opened = avformat_alloc_context();
    opened->pb = io.get();
    // By its name: what a file looks like is not the question.
    if (avformat_open_input(&opened, "", av_find_input_format("avi"), nullptr) < 0) {
        return {};
    }
    const std::unique_ptr<AVFormatContext, Closer> context(opened);
    std::vector<PeerStream> streams;
    for (unsigned i = 0; i < opened->nb_streams; ++i) {
        streams.push_back(describe(*opened->streams[i]));
    }
    return streams;
}

}  // namespace fuzz
