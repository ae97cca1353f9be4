// The only file that drives a session of the codec library: each function calls, checks and throws with the
// context. A session belongs to one FrameDecoder (or to one call that probes the library) and is used by one
// thread at a time. A result is never ignored but in the destructor, where nobody is left to hear of it.
#include "video/orvantis_codec.h"

#include "diag/format.h"
#include "video/orvantis_error.h"

namespace orvantis {

namespace {

using CompressQueryFunction = std::int32_t (*)();

// Decoding never calls orvantis_compress_query, but the plug-in imports it like the rest of the library. The
// volatile read in the constructor keeps every optimiser and linker from dropping the import.
CompressQueryFunction const volatile importedCompressQuery = &orvantis_compress_query;

const char* orEmpty(const char* text) noexcept {
    return text != nullptr ? text : "";
}

std::string bufferText(const void* data, std::uint64_t bytes) {
    if (data == nullptr) {
        return "null";
    }
    return formatString("{0x%llx,%llu}",
                        static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(data)),
                        static_cast<unsigned long long>(bytes));
}

std::string frameFormatText(const OrvantisFrameFormat* format) {
    if (format == nullptr) {
        return "null";
    }
    return formatString("{%u,%u,%u,%u,%u (%s),%u,%u (%s),%u,%u}", format->width, format->height,
                        format->word3, format->word4, format->type, codecTypeName(format->type),
                        format->flags, format->colorSpace, colorSpaceName(format->colorSpace), format->range,
                        format->word9);
}

}  // namespace

OrvantisCodec::OrvantisCodec() {
    static_cast<void>(importedCompressQuery);

    CodecResult result{orvantis_library_init()};
    if (result != CodecResult::kSuccess) {
        throw OrvantisError("OrvantisCodec(): orvantis_library_init()", result);
    }

    // When opening fails there is no session, and the library wants no close call of either kind.
    result = CodecResult{orvantis_open(&m_handle)};
    if (result != CodecResult::kSuccess) {
        throw OrvantisError("OrvantisCodec(): orvantis_open()", result);
    }
}

OrvantisCodec::~OrvantisCodec() {
    if (m_handle == 0) {
        return;
    }
    orvantis_close(m_handle);
    orvantis_library_close();
}

OrvantisFrameFormat OrvantisCodec::decompressQuery(FormatData format,
                                                   const OrvantisFrameFormat* output) const {
    OrvantisFrameFormat answer = emptyFrameFormat();
    const CodecResult result{
        orvantis_decompress_query(m_handle, format.data(), format.size(), output, &answer)};
    if (result != CodecResult::kSuccess) {
        throw OrvantisError("decompressQuery(" + bufferText(format.data(), format.size()) + "," +
                                frameFormatText(output) + ")",
                            result);
    }
    return answer;
}

bool OrvantisCodec::canDecompress(FormatData format, const OrvantisFrameFormat& output) const noexcept {
    OrvantisFrameFormat answer = emptyFrameFormat();
    return orvantis_decompress_query(m_handle, format.data(), format.size(), &output, &answer) ==
           kOrvantisSuccess;
}

OrvantisFrameFormat OrvantisCodec::decompressBegin(FormatData format, const OrvantisFrameFormat& output) {
    OrvantisFrameFormat produced = emptyFrameFormat();
    const CodecResult result{
        orvantis_decompress_begin(m_handle, format.data(), format.size(), &output, &produced)};
    if (result != CodecResult::kSuccess) {
        throw OrvantisError("decompressBegin(" + bufferText(format.data(), format.size()) + "," +
                                frameFormatText(&output) + ")",
                            result);
    }
    return produced;
}

void OrvantisCodec::decompress(std::span<const std::byte> frame, const OrvantisOutputBuffer& output) {
    const CodecResult result{orvantis_decompress(m_handle, frame.data(), frame.size(), &output)};
    if (result != CodecResult::kSuccess) {
        throw OrvantisError("decompress(" + bufferText(frame.data(), frame.size()) + "," +
                                bufferText(output.pixels, output.totalBytes) + ")",
                            result);
    }
}

void OrvantisCodec::decompressEnd() {
    const CodecResult result{orvantis_decompress_end(m_handle)};
    if (result != CodecResult::kSuccess) {
        throw OrvantisError("decompressEnd()", result);
    }
}

std::uint32_t OrvantisCodec::getParam(std::uint32_t parameter, std::uint32_t value) const {
    std::uint32_t answer = value;
    const CodecResult result{orvantis_get_param(m_handle, parameter, &answer, sizeof answer)};
    if (result != CodecResult::kSuccess) {
        throw OrvantisError(formatString("getParam(%u,%u)", parameter, value), result);
    }
    return answer;
}

OrvantisFrameFormat emptyFrameFormat() noexcept {
    OrvantisFrameFormat format{};
    format.word3 = kOrvantisFrameFormatWord3;
    format.word4 = kOrvantisFrameFormatWord4;
    return format;
}

const char* codecTypeName(std::uint32_t type) noexcept {
    return orEmpty(orvantis_get_string(kOrvantisStringTypeName, type));
}

const char* colorSpaceName(std::uint32_t colorSpace) noexcept {
    return orEmpty(orvantis_get_string(kOrvantisStringColorSpaceName, colorSpace));
}

}  // namespace orvantis
