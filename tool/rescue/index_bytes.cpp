#include "tool/rescue/index_bytes.h"

#include <algorithm>

#include "avi/avi_structs.h"

namespace simhost::tool {
namespace {

void putNumber(FileBytes& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

void putIndexStart(FileBytes& out, std::uint16_t longsPerEntry, std::uint8_t type, std::size_t entries,
                   std::uint32_t code, std::uint64_t base) {
    put16(out, longsPerEntry);
    out.push_back(0);
    out.push_back(type);
    put32(out, static_cast<std::uint32_t>(entries));
    put32(out, code);
    put64(out, base);
    put32(out, 0);
}

// "ix" and the stream's two digits.
std::uint32_t standardIndexCode(unsigned stream) {
    const std::uint32_t tens = '0' + stream / 10;
    const std::uint32_t ones = '0' + stream % 10;
    return std::uint32_t{'i'} | std::uint32_t{'x'} << 8 | tens << 16 | ones << 24;
}

}  // namespace

void put16(FileBytes& out, std::uint32_t value) {
    putNumber(out, value, 2);
}

void put32(FileBytes& out, std::uint32_t value) {
    putNumber(out, value, 4);
}

void put64(FileBytes& out, std::uint64_t value) {
    putNumber(out, value, 8);
}

void putHeader(FileBytes& out, std::uint32_t code, std::uint64_t size) {
    put32(out, code);
    put32(out, static_cast<std::uint32_t>(size));
}

void putList(FileBytes& out, std::uint32_t code, std::uint64_t size, std::uint32_t type) {
    putHeader(out, code, size);
    put32(out, type);
}

void putStandardIndexStart(FileBytes& out, const StandardIndexPlan& plan) {
    putHeader(out, standardIndexCode(plan.stream), plan.size() - kChunkHeaderSize);
    putIndexStart(out, 2, orvantis::kIndexOfChunks, plan.entries, plan.code, plan.base);
}

void putStandardEntry(FileBytes& out, std::uint64_t base, std::uint64_t offset, const FoundChunk& chunk) {
    put32(out, static_cast<std::uint32_t>(offset - base));
    put32(out, chunk.size() | (chunk.isDelta() ? orvantis::kStdIndexDeltaFrame : 0));
}

FileBytes superIndex(std::span<const StandardIndexPlan> indexes, std::uint64_t size) {
    FileBytes out;
    putIndexStart(out, 4, orvantis::kIndexOfIndexes, indexes.size(),
                  indexes.empty() ? 0 : indexes.front().code, 0);
    for (const StandardIndexPlan& index : indexes) {
        put64(out, index.at);
        put32(out, static_cast<std::uint32_t>(index.size()));
        put32(out, static_cast<std::uint32_t>(std::min<std::uint64_t>(index.duration, 0xFFFFFFFF)));
    }
    out.resize(static_cast<std::size_t>(std::max<std::uint64_t>(size, out.size())));
    return out;
}

void putOldEntry(FileBytes& out, std::uint64_t offset, const FoundChunk& chunk) {
    constexpr std::uint32_t kTakesNoTime = 0x100;  // AVIIF_NO_TIME
    put32(out, chunk.code());
    put32(out, chunk.isPalette() ? kTakesNoTime : chunk.isDelta() ? 0 : orvantis::kOldIndexKeyFrame);
    put32(out, static_cast<std::uint32_t>(offset));
    put32(out, chunk.size());
}

}  // namespace simhost::tool
