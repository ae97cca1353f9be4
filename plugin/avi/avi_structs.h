// The structures of AVI and OpenDML files, byte for byte as they lie in the file, under the formats' own
// field names, all of them, so that a field's place is seen; the reader uses some. They are filled by one
// copy from the file's bytes, which is right on little-endian machines only.
//
// Documents: "AVI RIFF File Reference" (Microsoft, DirectShow documentation) and "OpenDML AVI File Format
// Extensions", version 1.02 (OpenDML AVI M-JPEG File Format Subcommittee, 1996), named at each structure as
// AVI RIFF and OpenDML.
#pragma once

#include <bit>
#include <cstdint>

#include "avi/chunk_arithmetic.h"
#include "avi/four_char_code.h"

namespace orvantis {

static_assert(std::endian::native == std::endian::little, "file structures are copied, not converted");

inline constexpr std::uint32_t kStreamTypeVideo = riffCode("vids");
inline constexpr std::uint32_t kStreamTypeAudio = riffCode("auds");

/// Body of `avih`. AVI RIFF, AVIMAINHEADER.
struct AviMainHeader {
    std::uint32_t dwMicroSecPerFrame;
    std::uint32_t dwMaxBytesPerSec;
    std::uint32_t dwPaddingGranularity;
    std::uint32_t dwFlags;
    std::uint32_t dwTotalFrames;
    std::uint32_t dwInitialFrames;
    std::uint32_t dwStreams;
    std::uint32_t dwSuggestedBufferSize;
    std::uint32_t dwWidth;
    std::uint32_t dwHeight;
    std::uint32_t dwReserved[4];
};
static_assert(sizeof(AviMainHeader) == 56);

/// Body of `dmlh`. OpenDML, extended AVI header. Kept for its number of all frames, by which reports of files
/// tell what the main header leaves out; playing goes by the indexes.
struct AviExtHeader {
    std::uint32_t dwGrandFrames;
    std::uint32_t dwFuture[61];
};
static_assert(sizeof(AviExtHeader) == 248);

/// The frame of AVISTREAMHEADER. AVI RIFF gives it 16-bit fields.
struct AviRect {
    std::int16_t left;
    std::int16_t top;
    std::int16_t right;
    std::int16_t bottom;
};

/// Body of `strh`. AVI RIFF, AVISTREAMHEADER.
struct AviStreamHeader {
    std::uint32_t fccType;  ///< kStreamTypeVideo, kStreamTypeAudio or another
    std::uint32_t fccHandler;
    std::uint32_t dwFlags;
    std::uint16_t wPriority;
    std::uint16_t wLanguage;
    std::uint32_t dwInitialFrames;
    std::uint32_t dwScale;
    std::uint32_t dwRate;
    std::uint32_t dwStart;
    std::uint32_t dwLength;
    std::uint32_t dwSuggestedBufferSize;
    std::uint32_t dwQuality;
    std::uint32_t dwSampleSize;
    AviRect rcFrame;
};
static_assert(sizeof(AviStreamHeader) == 56);

/// Start of a video stream's `strf`. AVI RIFF names it; BITMAPINFOHEADER (Microsoft, Windows GDI
/// documentation).
struct BitmapInfoHeader {
    std::uint32_t biSize;
    std::int32_t biWidth;
    std::int32_t biHeight;
    std::uint16_t biPlanes;
    std::uint16_t biBitCount;
    std::uint32_t biCompression;
    std::uint32_t biSizeImage;
    std::int32_t biXPelsPerMeter;
    std::int32_t biYPelsPerMeter;
    std::uint32_t biClrUsed;
    std::uint32_t biClrImportant;
};
static_assert(sizeof(BitmapInfoHeader) == 40);

/// One entry of `idx1`. AVI RIFF, AVIOLDINDEX.
struct AviOldIndexEntry {
    std::uint32_t dwChunkId;
    std::uint32_t dwFlags;
    std::uint32_t dwOffset;
    std::uint32_t dwSize;
};
static_assert(sizeof(AviOldIndexEntry) == 16);

inline constexpr std::uint32_t kOldIndexKeyFrame = 0x10;  ///< AVIIF_KEYFRAME in dwFlags

#pragma pack(push, 1)
/// Start of an `indx` or `ix##` chunk. OpenDML, AVI Index Locations in RIFF Files: AVISTDINDEX; AVISUPERINDEX
/// has three reserved words in the place of the last two fields.
struct AviStdIndexHeader {
    std::uint16_t wLongsPerEntry;
    std::uint8_t bIndexSubType;
    std::uint8_t bIndexType;
    std::uint32_t nEntriesInUse;
    std::uint32_t dwChunkId;
    std::uint64_t qwBaseOffset;  ///< at byte 12, so never bind a reference to it
    std::uint32_t dwReserved3;
};
#pragma pack(pop)
static_assert(sizeof(AviStdIndexHeader) == 24);

inline constexpr std::uint8_t kIndexOfIndexes = 0;  ///< bIndexType of a super index
inline constexpr std::uint8_t kIndexOfChunks = 1;   ///< bIndexType of a standard index

/// One entry of a standard index. OpenDML, AVISTDINDEX.
struct AviStdIndexEntry {
    std::uint32_t dwOffset;  ///< of the chunk's data, relative to qwBaseOffset
    std::uint32_t dwSize;    ///< bit 31 marks a delta frame
};
static_assert(sizeof(AviStdIndexEntry) == 8);

inline constexpr std::uint32_t kStdIndexDeltaFrame = kDeltaFrameBit;

/// One entry of a super index. OpenDML, AVISUPERINDEX.
struct AviSuperIndexEntry {
    std::uint64_t qwOffset;  ///< of the standard index chunk's 8-byte header
    std::uint32_t dwSize;    ///< of that chunk, its header included
    std::uint32_t dwDuration;
};
static_assert(sizeof(AviSuperIndexEntry) == 16);

}  // namespace orvantis
