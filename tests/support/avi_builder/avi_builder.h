// Makes whole AVI files in memory for unit tests, integration tests, fuzz seeds and benchmarks. The defaults
// give what a plain muxer writes (one RIFF form, headers, chunks in the order they were added, idx1); each
// option changes one thing. For damaged or odd files change the bytes that build() returns, or write them
// with RiffBuilder.
//
//     AviBuilder avi;
//     avi.addStream(videoStream("O8Y2", 320, 240, 25, 1)).addStream(pcmStream(2, 48000, 16));
//     for (int i = 0; i < 10; ++i) avi.addChunk(0, frameBytes(i)).addChunk(1, soundBytes(i));
//     MemoryFile file(avi.openDml(OpenDml::kSuperIndex).build());
//     avi.placements()[0].offset;  // where the first chunk's data ended up
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/avi_builder/riff_builder.h"

namespace orvantis::test {

/// What one strl list says. Every field can be changed before the stream is added.
struct StreamPlan {
    std::uint32_t type = 0;     ///< fccType
    std::uint32_t handler = 0;  ///< fccHandler
    std::uint32_t scale = 1;    ///< dwScale
    std::uint32_t rate = 25;    ///< dwRate
    std::uint32_t length =
        0;  ///< dwLength; 0: the chunk count for video, the sample frames in the chunks for audio
    std::uint32_t sampleSize = 0;  ///< dwSampleSize
    Bytes format;                  ///< strf
    std::string chunkSuffix;       ///< last two characters of the chunks' codes, "dc" or "wb"
};

/// A video stream with a 40-byte BITMAPINFOHEADER and `extra` behind it.
StreamPlan videoStream(std::string_view compression, std::int32_t width, std::int32_t height,
                       std::uint32_t rate, std::uint32_t scale, std::uint16_t bitCount = 24,
                       std::span<const std::uint8_t> extra = {});
/// Integer PCM with a 16-byte PCMWAVEFORMAT.
StreamPlan pcmStream(std::uint16_t channels, std::uint32_t samplesPerSecond, std::uint16_t bits);
/// WAVEFORMATEXTENSIBLE (40 bytes); `formatCode` 1 is PCM, 3 is IEEE float.
StreamPlan extensibleStream(std::uint16_t channels, std::uint32_t samplesPerSecond, std::uint16_t bits,
                            std::uint16_t formatCode, std::uint32_t channelMask);

/// How OpenDML indexes are written.
enum class OpenDml {
    kNone,
    kStandardIndex,  ///< `indx` is itself a standard index with all chunks of the stream
    kSuperIndex,     ///< `indx` is a super index, standard index chunks lie at the end of each `movi`
};

/// Where a chunk ended up in the file.
struct Placement {
    std::size_t stream;
    std::uint64_t offset;  ///< of the data
    std::uint32_t size;
    bool keyFrame;
};

class AviBuilder {
 public:
    /// Streams get the numbers 0, 1, ... in the order added.
    AviBuilder& addStream(StreamPlan plan);
    /// A chunk of `stream`; empty data makes an empty chunk.
    AviBuilder& addChunk(std::size_t stream, std::span<const std::uint8_t> data, bool keyFrame = true);
    /// A chunk of `size` bytes of `value`.
    AviBuilder& addFilledChunk(std::size_t stream, std::uint32_t size, std::uint8_t value,
                               bool keyFrame = true);

    /// Whether idx1 is written; by default it is.
    AviBuilder& idx1(bool wanted);
    /// idx1 offsets count from the file's start, as some muxers have it, instead of from the list type of
    /// movi.
    AviBuilder& absoluteIdx1Offsets(bool wanted);
    AviBuilder& openDml(OpenDml kind);
    /// Entries of each standard index chunk at most (superIndex); by default all of one movi. 0: all.
    AviBuilder& entriesPerStandardIndex(std::size_t count);
    /// Chunks in each RIFF form at most: further ones go into "RIFF" "AVIX" forms, which idx1 does not cover.
    /// 0: all in one.
    AviBuilder& chunksPerForm(std::size_t count);
    /// Standard index chunks are named "00ix" instead of "ix00".
    AviBuilder& indexNumberFirst(bool wanted);
    /// Chunks are put into LIST "rec " of this many each. 0: none.
    AviBuilder& chunksPerRecList(std::size_t count);
    /// A JUNK chunk of this size between hdrl and movi. 0: none.
    AviBuilder& junk(std::uint32_t size);
    /// Further bytes behind the last strl inside hdrl: whole chunks, made with RiffBuilder.
    AviBuilder& headerTail(Bytes chunks);

    /// The file. Can be called again after changes.
    Bytes build();

    /// Where build() put the chunks, in the order they were added.
    const std::vector<Placement>& placements() const noexcept { return m_placements; }
    /// Those of one stream.
    std::vector<Placement> placementsOf(std::size_t stream) const;
    /// File positions of useful places of the file last built.
    std::uint64_t moviOffset() const noexcept { return m_moviOffset; }  ///< of the first movi's LIST header
    std::uint64_t idx1Offset() const noexcept { return m_idx1Offset; }  ///< of its header; 0 if not written
    std::uint64_t indxOffset(std::size_t stream) const { return m_indxOffsets.at(stream); }  ///< likewise
    std::uint64_t strlOffset(std::size_t stream) const { return m_strlOffsets.at(stream); }

 private:
    struct Chunk {
        std::size_t stream;
        std::size_t dataOffset;  // in m_data
        std::uint32_t size;
        bool keyFrame;
    };
    struct SuperEntry {
        std::uint64_t offset;
        std::uint32_t size;
        std::uint32_t duration;
    };

    std::string chunkCode(std::size_t stream) const;
    std::size_t standardIndexCount(std::size_t stream) const;
    void writeHeaders(RiffBuilder& riff);
    void writeStream(RiffBuilder& riff, std::size_t number);
    void writeForms(RiffBuilder& riff);
    void writeStandardIndexes(RiffBuilder& riff, std::size_t first, std::size_t last, std::uint64_t base);
    void writeIdx1(RiffBuilder& riff, std::size_t chunkCount);
    void fillInIndexes(RiffBuilder& riff);

    std::vector<StreamPlan> m_streams;
    std::vector<Chunk> m_chunks;
    Bytes m_data;
    bool m_idx1 = true;
    bool m_absoluteIdx1 = false;
    bool m_indexNumberFirst = false;
    OpenDml m_openDml = OpenDml::kNone;
    std::size_t m_entriesPerStandardIndex = 0;
    std::size_t m_chunksPerForm = 0;
    std::size_t m_chunksPerRec = 0;
    std::uint32_t m_junk = 0;
    Bytes m_headerTail;

    // Results of the last build.
    std::vector<Placement> m_placements;
    std::vector<std::vector<SuperEntry>> m_superEntries;
    std::vector<std::uint64_t> m_indxOffsets;
    std::vector<std::uint64_t> m_strlOffsets;
    std::uint64_t m_moviOffset = 0;
    std::uint64_t m_idx1Offset = 0;
};

}  // namespace orvantis::test
