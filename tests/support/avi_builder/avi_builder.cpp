#include "tests/support/avi_builder/avi_builder.h"

#include <algorithm>
#include <utility>

namespace orvantis::test {

namespace {

constexpr std::uint32_t kHasIndex = 0x10;        // AVIF_HASINDEX, AVIIF_KEYFRAME
constexpr std::uint8_t kIndexOfIndexes = 0;      // AVI_INDEX_OF_INDEXES
constexpr std::uint8_t kIndexOfChunks = 1;       // AVI_INDEX_OF_CHUNKS
constexpr std::uint32_t kDeltaFrame = 1U << 31;  // in dwSize of a standard index entry
constexpr std::size_t kIndexHeader = 8 + 24;     // chunk header and index header

void indexHeader(RiffBuilder& riff, std::uint16_t longsPerEntry, std::uint8_t type, std::size_t entries,
                 std::string_view chunkCode, std::uint64_t base) {
    riff.u16(longsPerEntry)
        .u8(0)
        .u8(type)
        .u32(static_cast<std::uint32_t>(entries))
        .code(chunkCode)
        .u64(base)
        .u32(0);
}

void standardEntry(RiffBuilder& riff, const Placement& chunk, std::uint64_t base) {
    riff.u32(static_cast<std::uint32_t>(chunk.offset - base))
        .u32(chunk.size | (chunk.keyFrame ? 0 : kDeltaFrame));
}

Bytes waveFormat(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits) {
    const auto blockAlign = static_cast<std::uint16_t>(channels * (bits / 8));
    RiffBuilder out;
    out.u16(tag).u16(channels).u32(rate).u32(rate * blockAlign).u16(blockAlign).u16(bits);
    return out.take();
}

StreamPlan audioPlan(std::uint16_t channels, std::uint32_t rate, std::uint16_t bits) {
    StreamPlan plan;
    plan.type = codeOf("auds");
    plan.sampleSize = channels * (bits / 8U);
    plan.scale = plan.sampleSize;  // dwRate / dwScale = sample frames a second
    plan.rate = rate * plan.sampleSize;
    plan.chunkSuffix = "wb";
    return plan;
}

}  // namespace

StreamPlan videoStream(std::string_view compression, std::int32_t width, std::int32_t height,
                       std::uint32_t rate, std::uint32_t scale, std::uint16_t bitCount,
                       std::span<const std::uint8_t> extra) {
    const auto imageBytes = static_cast<std::uint32_t>(width * height * bitCount / 8);
    RiffBuilder format;
    format.u32(static_cast<std::uint32_t>(40 + extra.size()))
        .u32(static_cast<std::uint32_t>(width))
        .u32(static_cast<std::uint32_t>(height))
        .u16(1)
        .u16(bitCount)
        .code(compression)
        .u32(imageBytes)
        .fill(16)
        .bytes(extra);
    StreamPlan plan;
    plan.type = codeOf("vids");
    plan.handler = codeOf(compression);
    plan.scale = scale;
    plan.rate = rate;
    plan.format = format.take();
    plan.chunkSuffix = "dc";
    return plan;
}

StreamPlan pcmStream(std::uint16_t channels, std::uint32_t samplesPerSecond, std::uint16_t bits) {
    StreamPlan plan = audioPlan(channels, samplesPerSecond, bits);
    plan.format = waveFormat(1, channels, samplesPerSecond, bits);
    return plan;
}

StreamPlan extensibleStream(std::uint16_t channels, std::uint32_t samplesPerSecond, std::uint16_t bits,
                            std::uint16_t formatCode, std::uint32_t channelMask) {
    StreamPlan plan = audioPlan(channels, samplesPerSecond, bits);
    RiffBuilder format;
    format.bytes(waveFormat(0xFFFE, channels, samplesPerSecond, bits)).u16(22).u16(bits).u32(channelMask);
    // SubFormat: the format code in front of the template that all wave formats share.
    format.u32(formatCode).u16(0).u16(0x10);
    constexpr std::uint8_t kTemplate[] = {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
    format.bytes(kTemplate);
    plan.format = format.take();
    return plan;
}

AviBuilder& AviBuilder::addStream(StreamPlan plan) {
    m_streams.push_back(std::move(plan));
    return *this;
}

AviBuilder& AviBuilder::addChunk(std::size_t stream, std::span<const std::uint8_t> data, bool keyFrame) {
    m_chunks.push_back(Chunk{stream, m_data.size(), static_cast<std::uint32_t>(data.size()), keyFrame});
    m_data.insert(m_data.end(), data.begin(), data.end());
    return *this;
}

AviBuilder& AviBuilder::addFilledChunk(std::size_t stream, std::uint32_t size, std::uint8_t value,
                                       bool keyFrame) {
    m_chunks.push_back(Chunk{stream, m_data.size(), size, keyFrame});
    m_data.insert(m_data.end(), size, value);
    return *this;
}

AviBuilder& AviBuilder::idx1(bool wanted) {
    m_idx1 = wanted;
    return *this;
}

AviBuilder& AviBuilder::absoluteIdx1Offsets(bool wanted) {
    m_absoluteIdx1 = wanted;
    return *this;
}

AviBuilder& AviBuilder::openDml(OpenDml kind) {
    m_openDml = kind;
    return *this;
}

AviBuilder& AviBuilder::entriesPerStandardIndex(std::size_t count) {
    m_entriesPerStandardIndex = count;
    return *this;
}

AviBuilder& AviBuilder::chunksPerForm(std::size_t count) {
    m_chunksPerForm = count;
    return *this;
}

AviBuilder& AviBuilder::indexNumberFirst(bool wanted) {
    m_indexNumberFirst = wanted;
    return *this;
}

AviBuilder& AviBuilder::chunksPerRecList(std::size_t count) {
    m_chunksPerRec = count;
    return *this;
}

AviBuilder& AviBuilder::junk(std::uint32_t size) {
    m_junk = size;
    return *this;
}

AviBuilder& AviBuilder::headerTail(Bytes chunks) {
    m_headerTail = std::move(chunks);
    return *this;
}

std::vector<Placement> AviBuilder::placementsOf(std::size_t stream) const {
    std::vector<Placement> result;
    std::copy_if(m_placements.begin(), m_placements.end(), std::back_inserter(result),
                 [stream](const Placement& chunk) { return chunk.stream == stream; });
    return result;
}

std::string AviBuilder::chunkCode(std::size_t stream) const {
    return {static_cast<char>('0' + stream / 10 % 10), static_cast<char>('0' + stream % 10),
            m_streams[stream].chunkSuffix.at(0), m_streams[stream].chunkSuffix.at(1)};
}

// How many standard index chunks writeForms() will write for a stream.
std::size_t AviBuilder::standardIndexCount(std::size_t stream) const {
    const std::size_t perForm =
        m_chunksPerForm == 0 ? std::max<std::size_t>(m_chunks.size(), 1) : m_chunksPerForm;
    std::size_t indexes = 0;
    for (std::size_t first = 0; first < m_chunks.size(); first += perForm) {
        const std::size_t last = std::min(first + perForm, m_chunks.size());
        std::size_t entries = 0;
        for (std::size_t i = first; i < last; ++i) {
            entries += m_chunks[i].stream == stream ? 1U : 0U;
        }
        const std::size_t perIndex =
            m_entriesPerStandardIndex == 0 ? std::max<std::size_t>(entries, 1) : m_entriesPerStandardIndex;
        indexes += (entries + perIndex - 1) / perIndex;
    }
    return indexes;
}

Bytes AviBuilder::build() {
    m_placements.clear();
    m_superEntries.assign(m_streams.size(), {});
    m_indxOffsets.assign(m_streams.size(), 0);
    m_strlOffsets.assign(m_streams.size(), 0);
    m_idx1Offset = 0;

    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ");
    writeHeaders(riff);
    if (m_junk != 0) {
        riff.begin("JUNK").fill(m_junk).end();
    }
    writeForms(riff);
    fillInIndexes(riff);
    return riff.take();
}

void AviBuilder::writeHeaders(RiffBuilder& riff) {
    std::uint32_t videoChunks = 0;
    for (const Chunk& chunk : m_chunks) {
        videoChunks += m_streams[chunk.stream].type == codeOf("vids") ? 1U : 0U;
    }
    riff.beginList("LIST", "hdrl");
    riff.begin("avih").u32(40000).u32(0).u32(0).u32(m_idx1 ? kHasIndex : 0).u32(videoChunks).u32(0);
    riff.u32(static_cast<std::uint32_t>(m_streams.size())).u32(0).u32(0).u32(0).fill(16).end();
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        writeStream(riff, i);
    }
    if (m_openDml != OpenDml::kNone) {
        riff.beginList("LIST", "odml").begin("dmlh").u32(videoChunks).fill(244).end().end();
    }
    riff.bytes(m_headerTail).end();
}

void AviBuilder::writeStream(RiffBuilder& riff, std::size_t number) {
    const StreamPlan& plan = m_streams[number];
    std::uint32_t chunks = 0;
    std::uint64_t bytes = 0;
    for (const Chunk& chunk : m_chunks) {
        if (chunk.stream != number) {
            continue;
        }
        ++chunks;
        bytes += chunk.size;
    }
    std::uint32_t length = plan.length;
    if (length == 0) {
        length = plan.sampleSize == 0 ? chunks : static_cast<std::uint32_t>(bytes / plan.sampleSize);
    }

    m_strlOffsets[number] = riff.position();
    riff.beginList("LIST", "strl");
    riff.begin("strh")
        .u32(plan.type)
        .u32(plan.handler)
        .u32(0)
        .u16(0)
        .u16(0)
        .u32(0)
        .u32(plan.scale)
        .u32(plan.rate);
    riff.u32(0).u32(length).u32(0).u32(0xFFFFFFFF).u32(plan.sampleSize).u64(0).end();
    riff.chunk("strf", plan.format);
    if (m_openDml != OpenDml::kNone) {
        // The entries are not known yet: fillInIndexes() writes them.
        m_indxOffsets[number] = riff.position();
        riff.begin("indx");
        if (m_openDml == OpenDml::kStandardIndex) {
            indexHeader(riff, 2, kIndexOfChunks, chunks, chunkCode(number), 0);
            riff.fill(std::size_t{chunks} * 8);
        } else {
            const std::size_t indexes = standardIndexCount(number);
            indexHeader(riff, 4, kIndexOfIndexes, indexes, chunkCode(number), 0);
            riff.fill(indexes * 16);
        }
        riff.end();
    }
    riff.end();
}

void AviBuilder::writeForms(RiffBuilder& riff) {
    const std::size_t perForm = m_chunksPerForm == 0 ? m_chunks.size() : m_chunksPerForm;
    std::size_t next = 0;
    bool isFirst = true;
    do {
        if (!isFirst) {
            riff.beginList("RIFF", "AVIX");
        }
        const std::uint64_t movi = riff.position();
        riff.beginList("LIST", "movi");
        if (isFirst) {
            m_moviOffset = movi;
        }
        const std::size_t first = next;
        const std::size_t last = std::min(first + perForm, m_chunks.size());
        for (; next < last; ++next) {
            const std::size_t inForm = next - first;
            if (m_chunksPerRec != 0 && inForm % m_chunksPerRec == 0) {
                if (inForm != 0) {
                    riff.end();
                }
                riff.beginList("LIST", "rec ");
            }
            const Chunk& chunk = m_chunks[next];
            m_placements.push_back(Placement{chunk.stream, riff.position() + 8, chunk.size, chunk.keyFrame});
            riff.chunk(chunkCode(chunk.stream), std::span(m_data).subspan(chunk.dataOffset, chunk.size));
        }
        if (m_chunksPerRec != 0 && last != first) {
            riff.end();
        }
        if (m_openDml == OpenDml::kSuperIndex) {
            writeStandardIndexes(riff, first, last, movi);
        }
        riff.end();
        if (isFirst && m_idx1) {
            writeIdx1(riff, last);
        }
        riff.end();
        isFirst = false;
    } while (next < m_chunks.size());
}

void AviBuilder::writeStandardIndexes(RiffBuilder& riff, std::size_t first, std::size_t last,
                                      std::uint64_t base) {
    for (std::size_t stream = 0; stream < m_streams.size(); ++stream) {
        std::vector<Placement> listed;
        for (std::size_t i = first; i < last; ++i) {
            if (m_placements[i].stream == stream) {
                listed.push_back(m_placements[i]);
            }
        }
        const std::size_t perIndex =
            m_entriesPerStandardIndex == 0 ? listed.size() : m_entriesPerStandardIndex;
        const std::string digits = chunkCode(stream).substr(0, 2);
        for (std::size_t from = 0; from < listed.size(); from += perIndex) {
            const std::size_t count = std::min(perIndex, listed.size() - from);
            m_superEntries[stream].push_back(SuperEntry{riff.position(),
                                                        static_cast<std::uint32_t>(kIndexHeader + count * 8),
                                                        static_cast<std::uint32_t>(count)});
            riff.begin(m_indexNumberFirst ? digits + "ix" : "ix" + digits);
            indexHeader(riff, 2, kIndexOfChunks, count, chunkCode(stream), base);
            for (std::size_t i = from; i < from + count; ++i) {
                standardEntry(riff, listed[i], base);
            }
            riff.end();
        }
    }
}

void AviBuilder::writeIdx1(RiffBuilder& riff, std::size_t chunkCount) {
    // Offsets point at chunk headers and count from the list type of movi.
    const std::uint64_t base = m_absoluteIdx1 ? 0 : m_moviOffset + 8;
    m_idx1Offset = riff.position();
    riff.begin("idx1");
    for (std::size_t i = 0; i < chunkCount; ++i) {
        const Placement& chunk = m_placements[i];
        riff.code(chunkCode(chunk.stream)).u32(chunk.keyFrame ? kHasIndex : 0);
        riff.u32(static_cast<std::uint32_t>(chunk.offset - 8 - base)).u32(chunk.size);
    }
    riff.end();
}

void AviBuilder::fillInIndexes(RiffBuilder& riff) {
    std::vector<std::uint64_t> entry(m_streams.size());
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        entry[i] = m_indxOffsets[i] + kIndexHeader;
    }
    if (m_openDml == OpenDml::kStandardIndex) {
        for (const Placement& chunk : m_placements) {
            riff.patch32(entry[chunk.stream], static_cast<std::uint32_t>(chunk.offset));
            riff.patch32(entry[chunk.stream] + 4, chunk.size | (chunk.keyFrame ? 0 : kDeltaFrame));
            entry[chunk.stream] += 8;
        }
    }
    if (m_openDml == OpenDml::kSuperIndex) {
        for (std::size_t i = 0; i < m_streams.size(); ++i) {
            for (const SuperEntry& index : m_superEntries[i]) {
                riff.patch64(entry[i], index.offset).patch32(entry[i] + 8, index.size);
                riff.patch32(entry[i] + 12, index.duration);
                entry[i] += 16;
            }
        }
    }
}

}  // namespace orvantis::test
