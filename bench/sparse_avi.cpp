#include "bench/sparse_avi.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "avi/avi_structs.h"
#include "avi/four_char_code.h"

namespace orvantis::bench {

namespace {

constexpr std::uint32_t kSampleRate = 48000;
constexpr std::uint64_t kPartBytes = 1'000'000'000;  // muxers begin a new RIFF form at about this size
constexpr std::uint64_t kHeaderBytes = 8;

[[noreturn]] void failed(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), path);
}

class OutputFile {
 public:
    explicit OutputFile(const std::string& path)
        : m_path(path), m_fd(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
        if (m_fd < 0) {
            failed(path);
        }
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() { (void)::close(m_fd); }

    void put(std::uint64_t position, const void* bytes, std::size_t count) {
        const auto* from = static_cast<const char*>(bytes);
        while (count != 0) {
            const ssize_t put = ::pwrite(m_fd, from, count, static_cast<off_t>(position));
            if (put <= 0) {
                failed(m_path);
            }
            from += put;
            position += static_cast<std::uint64_t>(put);
            count -= static_cast<std::size_t>(put);
        }
    }
    void setSize(std::uint64_t size) {
        if (::ftruncate(m_fd, static_cast<off_t>(size)) != 0) {
            failed(m_path);
        }
    }

 private:
    std::string m_path;
    int m_fd;
};

// Bytes in the order of the file.
class Bytes {
 public:
    template <class Value>
    Bytes& add(const Value& value) {
        static_assert(std::is_trivially_copyable_v<Value>);
        const std::size_t at = m_bytes.size();
        m_bytes.resize(at + sizeof(value));
        std::memcpy(m_bytes.data() + at, &value, sizeof(value));
        return *this;
    }
    Bytes& add32(std::uint64_t value) { return add(static_cast<std::uint32_t>(value)); }
    Bytes& chunk(std::string_view id, const Bytes& data) {
        add(code(id)).add32(data.size());
        m_bytes.insert(m_bytes.end(), data.m_bytes.begin(), data.m_bytes.end());
        return *this;
    }
    Bytes& list(std::string_view type, const Bytes& data) {
        add(code("LIST")).add32(data.size() + 4).add(code(type));
        m_bytes.insert(m_bytes.end(), data.m_bytes.begin(), data.m_bytes.end());
        return *this;
    }
    std::size_t size() const noexcept { return m_bytes.size(); }
    const char* data() const noexcept { return m_bytes.data(); }

    static std::uint32_t code(std::string_view text) {
        std::uint32_t value = 0;
        std::memcpy(&value, text.data(), std::min<std::size_t>(text.size(), sizeof(value)));
        return value;
    }

 private:
    std::vector<char> m_bytes;
};

struct Stream {
    std::string chunkId;   // "00dc"
    std::uint32_t bytes;   // of a chunk
    std::uint32_t offset;  // of the chunk's header from the frame's start
    Bytes header;          // strh
    Bytes format;          // strf
};

std::string numbered(std::size_t number, std::string_view behind) {
    return std::string(number < 10 ? "0" : "") + std::to_string(number) + std::string(behind);
}

Stream videoStream(const SparseAviPlan& plan) {
    AviStreamHeader header{};
    header.fccType = kStreamTypeVideo;
    header.fccHandler = Bytes::code(plan.codec);
    header.dwScale = 1;
    header.dwRate = plan.framesPerSecond;
    header.dwLength = plan.frames;
    header.dwSuggestedBufferSize = plan.frameBytes;
    BitmapInfoHeader format{};
    format.biSize = sizeof(format);
    format.biWidth = plan.width;
    format.biHeight = plan.height;
    format.biPlanes = 1;
    format.biBitCount = 16;
    format.biCompression = Bytes::code(plan.codec);
    Stream stream{"00dc", plan.frameBytes, 0, {}, {}};
    stream.header.add(header);
    stream.format.add(format);
    return stream;
}

Stream audioStream(const SparseAviPlan& plan, const SparseAudio& audio, std::size_t number) {
    const std::uint32_t blockAlign = audio.channels * audio.bits / 8U;
    const std::uint32_t bytes = kSampleRate / plan.framesPerSecond * blockAlign;
    AviStreamHeader header{};
    header.fccType = kStreamTypeAudio;
    header.dwScale = blockAlign;
    header.dwRate = kSampleRate * blockAlign;
    header.dwLength = static_cast<std::uint32_t>(std::uint64_t{bytes} / blockAlign * plan.frames);
    header.dwSampleSize = blockAlign;
    Stream stream{numbered(number, "wb"), bytes, 0, {}, {}};
    stream.header.add(header);
    constexpr std::uint16_t kPcm = 1;
    constexpr std::uint16_t kFloat = 3;
    stream.format.add(audio.isFloat ? kFloat : kPcm)
        .add(audio.channels)
        .add32(kSampleRate)
        .add32(kSampleRate * blockAlign)
        .add(static_cast<std::uint16_t>(blockAlign))
        .add(audio.bits);
    if (audio.isFloat) {
        stream.format.add(std::uint16_t{0});  // WAVEFORMATEX
    }
    return stream;
}

// Where the frames of one RIFF form lie.
struct Part {
    std::uint64_t form;   // position of its RIFF header
    std::uint64_t movi;   // of its movi list
    std::uint64_t data;   // of the first frame
    std::uint64_t index;  // behind the last frame: standard index chunks or idx1
    std::uint64_t end;
    std::uint32_t firstFrame;
    std::uint32_t frames;
};

class Writer {
 public:
    Writer(const std::string& path, const SparseAviPlan& plan) : m_file(path), m_plan(plan) {
        m_streams.push_back(videoStream(plan));
        for (const SparseAudio& audio : plan.audio) {
            m_streams.push_back(audioStream(plan, audio, m_streams.size()));
        }
        for (Stream& stream : m_streams) {
            stream.offset = m_frameStride;
            m_frameStride += static_cast<std::uint32_t>(kHeaderBytes) + stream.bytes + stream.bytes % 2;
        }
    }

    void write() {
        layOut();
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            const Part& part = m_parts[i];
            putRiff(part.form, i == 0 ? "AVI " : "AVIX", part.end - part.form);
            const std::uint64_t moviEnd = m_plan.index == IndexForm::kIdx1 ? part.index : part.end;
            Bytes movi;
            movi.add(Bytes::code("LIST")).add32(moviEnd - part.movi - kHeaderBytes).add(Bytes::code("movi"));
            m_file.put(part.movi, movi.data(), movi.size());
            if (m_plan.index == IndexForm::kIdx1) {
                putIdx1(part);
            } else {
                for (std::size_t s = 0; s < m_streams.size(); ++s) {
                    putStandardIndex(part, s);
                }
            }
        }
        putFirstChunks();
        const Bytes headers = headerList();
        m_file.put(12, headers.data(), headers.size());
        m_file.setSize(m_parts.back().end);
    }

    std::vector<IndexPlace> indexPlaces() const {
        std::vector<IndexPlace> places;
        if (m_plan.index == IndexForm::kIdx1) {
            const Part& part = m_parts.front();
            places.push_back({part.index + kHeaderBytes, part.end - part.index - kHeaderBytes});
            return places;
        }
        for (std::size_t s = 0; s < m_streams.size(); ++s) {
            for (const Part& part : m_parts) {
                const std::uint64_t size = standardIndexBytes(part.frames);
                places.push_back({part.index + s * size + kHeaderBytes, size - kHeaderBytes});
            }
        }
        return places;
    }

 private:
    std::uint64_t standardIndexBytes(std::uint32_t frames) const {
        return kHeaderBytes + sizeof(AviStdIndexHeader) + std::uint64_t{frames} * sizeof(AviStdIndexEntry);
    }

    void layOut() {
        const bool old = m_plan.index == IndexForm::kIdx1;
        const auto framesPerPart =
            old ? m_plan.frames
                : static_cast<std::uint32_t>(std::max<std::uint64_t>(1, kPartBytes / m_frameStride));
        // The header list names every part, so its length is known once they are counted.
        m_parts.resize(old ? 1 : (m_plan.frames + framesPerPart - 1) / framesPerPart);
        std::uint64_t position = 0;
        std::uint32_t frame = 0;
        for (Part& part : m_parts) {
            part.form = position;
            part.movi = position + 12 + (frame == 0 ? headerList().size() : 0);
            part.data = part.movi + 12;
            part.firstFrame = frame;
            part.frames = std::min(framesPerPart, m_plan.frames - frame);
            part.index = part.data + std::uint64_t{part.frames} * m_frameStride;
            part.end = part.index + (old ? kHeaderBytes + std::uint64_t{part.frames} * m_streams.size() *
                                                              sizeof(AviOldIndexEntry)
                                         : m_streams.size() * standardIndexBytes(part.frames));
            position = part.end;
            frame += part.frames;
        }
        if (old && position > 0xFFFFFFFFU) {
            throw std::length_error("too long for the old index");
        }
    }

    void putRiff(std::uint64_t position, std::string_view type, std::uint64_t bytes) {
        Bytes header;
        header.add(Bytes::code("RIFF")).add32(bytes - kHeaderBytes).add(Bytes::code(type));
        m_file.put(position, header.data(), header.size());
    }

    void putStandardIndex(const Part& part, std::size_t s) {
        const Stream& stream = m_streams[s];
        AviStdIndexHeader header{};
        header.wLongsPerEntry = 2;
        header.bIndexType = kIndexOfChunks;
        header.nEntriesInUse = part.frames;
        header.dwChunkId = Bytes::code(stream.chunkId);
        header.qwBaseOffset = part.data;
        Bytes bytes;
        bytes.add(Bytes::code("ix" + stream.chunkId.substr(0, 2)))
            .add32(standardIndexBytes(part.frames) - kHeaderBytes)
            .add(header);
        for (std::uint32_t i = 0; i < part.frames; ++i) {
            bytes.add(AviStdIndexEntry{
                static_cast<std::uint32_t>(std::uint64_t{i} * m_frameStride + stream.offset + kHeaderBytes),
                stream.bytes});
        }
        m_file.put(part.index + s * standardIndexBytes(part.frames), bytes.data(), bytes.size());
    }

    void putIdx1(const Part& part) {
        Bytes bytes;
        bytes.add(Bytes::code("idx1")).add32(part.end - part.index - kHeaderBytes);
        const std::uint64_t movi = part.movi + kHeaderBytes;
        for (std::uint32_t i = 0; i < part.frames; ++i) {
            for (const Stream& stream : m_streams) {
                bytes.add(AviOldIndexEntry{
                    Bytes::code(stream.chunkId), kOldIndexKeyFrame,
                    static_cast<std::uint32_t>(part.data - movi + std::uint64_t{i} * m_frameStride +
                                               stream.offset),
                    stream.bytes});
            }
        }
        m_file.put(part.index, bytes.data(), bytes.size());
    }

    void putFirstChunks() {
        const Part& part = m_parts.front();
        const std::uint32_t count = std::min(part.frames, m_plan.framesWithHeaders);
        for (std::uint32_t i = 0; i < count; ++i) {
            for (const Stream& stream : m_streams) {
                Bytes header;
                header.add(Bytes::code(stream.chunkId)).add32(stream.bytes);
                m_file.put(part.data + std::uint64_t{i} * m_frameStride + stream.offset, header.data(),
                           header.size());
            }
        }
    }

    // A super index of all parts. Muxers leave room for entries to come; the size alone counts here.
    Bytes superIndex(std::size_t s) const {
        Bytes bytes;
        bytes.add(std::uint16_t{4})
            .add(std::uint8_t{0})
            .add(kIndexOfIndexes)
            .add32(m_parts.size())
            .add(Bytes::code(m_streams[s].chunkId))
            .add32(0)
            .add32(0)
            .add32(0);
        for (const Part& part : m_parts) {
            const std::uint64_t size = standardIndexBytes(part.frames);
            bytes.add(
                AviSuperIndexEntry{part.index + s * size, static_cast<std::uint32_t>(size), part.frames});
        }
        return bytes;
    }

    Bytes headerList() const {
        AviMainHeader main{};
        main.dwMicroSecPerFrame = 1'000'000 / m_plan.framesPerSecond;
        main.dwFlags = 0x110;  // has an index, is interleaved
        main.dwTotalFrames = m_parts.front().frames;
        main.dwStreams = static_cast<std::uint32_t>(m_streams.size());
        main.dwWidth = static_cast<std::uint32_t>(m_plan.width);
        main.dwHeight = static_cast<std::uint32_t>(m_plan.height);
        Bytes list;
        list.chunk("avih", Bytes().add(main));
        for (std::size_t s = 0; s < m_streams.size(); ++s) {
            Bytes stream;
            stream.chunk("strh", m_streams[s].header).chunk("strf", m_streams[s].format);
            if (m_plan.index == IndexForm::kOpenDml) {
                stream.chunk("indx", superIndex(s));
            }
            list.list("strl", stream);
        }
        if (m_plan.index == IndexForm::kOpenDml) {
            AviExtHeader ext{};
            ext.dwGrandFrames = m_plan.frames;
            list.list("odml", Bytes().chunk("dmlh", Bytes().add(ext)));
        }
        return Bytes().list("hdrl", list);
    }

    OutputFile m_file;
    const SparseAviPlan& m_plan;
    std::vector<Stream> m_streams;
    std::vector<Part> m_parts;
    std::uint32_t m_frameStride = 0;
};

}  // namespace

std::vector<IndexPlace> writeSparseAvi(const std::string& path, const SparseAviPlan& plan) {
    Writer writer(path, plan);
    writer.write();
    return writer.indexPlaces();
}

}  // namespace orvantis::bench
