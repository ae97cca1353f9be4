// The diagnostic listing at every imInit, on the host's thread: what the host says of its formats, what the
// codec library says of its types, and both tables. It asks host and library also while the log is off, so
// that switching the log on changes nothing that the host could notice. Stores nothing.
#include <array>

#include "diag/log.h"
#include "diag/text.h"
#include "host/pixel_formats.h"
#include "host/suites.h"
#include "suites/suite_ref.h"
#include "video/format_tables.h"
#include "video/orvantis_error.h"
#include "video/pixel_format_names.h"

namespace orvantis {

namespace {

// Every format of the host but PrPixelFormat_Any, which is none.
constexpr std::array kListedFormats{
    host::PrPixelFormat_VUYP_4444_32f,
    host::PrPixelFormat_VUYP_4444_32f_709,
    host::PrPixelFormat_PRGB_4444_32f,
    host::PrPixelFormat_RGB_444_10u,
    host::PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange,
    host::PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange,
    host::PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601,
    host::PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601,
    host::PrPixelFormat_PRGB_4444_32f_Linear,
    host::PrPixelFormat_XRGB_4444_32f_Linear,
    host::PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601,
    host::PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601,
    host::PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange,
    host::PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange,
    host::PrPixelFormat_NTSCDV25,
    host::PrPixelFormat_PALDV25,
    host::PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange,
    host::PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange,
    host::PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709,
    host::PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709,
    host::PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange,
    host::PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange,
    host::PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709,
    host::PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709,
    host::PrPixelFormat_NTSCDV50,
    host::PrPixelFormat_PALDV50,
    host::PrPixelFormat_NTSCDV100_720p,
    host::PrPixelFormat_PALDV100_720p,
    host::PrPixelFormat_V210_422_10u_601,
    host::PrPixelFormat_V210_422_10u_709,
    host::PrPixelFormat_UYVY_422_32f_601,
    host::PrPixelFormat_UYVY_422_32f_709,
    host::PrPixelFormat_YUYV_422_8u_601,
    host::PrPixelFormat_YUYV_422_8u_709,
    host::PrPixelFormat_UYVY_422_8u_601,
    host::PrPixelFormat_UYVY_422_8u_709,
    host::PrPixelFormat_BGRA_4444_32f_Linear,
    host::PrPixelFormat_BGRP_4444_32f_Linear,
    host::PrPixelFormat_BGRX_4444_32f_Linear,
    host::PrPixelFormat_ARGB_4444_32f_Linear,
    host::PrPixelFormat_XRGB_4444_16u,
    host::PrPixelFormat_BGRP_4444_16u,
    host::PrPixelFormat_PRGB_4444_16u,
    host::PrPixelFormat_BGRA_4444_32f,
    host::PrPixelFormat_BGRA_4444_8u,
    host::PrPixelFormat_VUYA_4444_8u,
    host::PrPixelFormat_VUYA_4444_8u_709,
    host::PrPixelFormat_ARGB_4444_8u,
    host::PrPixelFormat_BGRP_4444_8u,
    host::PrPixelFormat_VUYP_4444_8u,
    host::PrPixelFormat_VUYP_4444_8u_709,
    host::PrPixelFormat_PRGB_4444_8u,
    host::PrPixelFormat_BGRX_4444_8u,
    host::PrPixelFormat_VUYX_4444_8u,
    host::PrPixelFormat_VUYX_4444_8u_709,
    host::PrPixelFormat_XRGB_4444_8u,
    host::PrPixelFormat_NTSCDV100_1080i,
    host::PrPixelFormat_PALDV100_1080i,
    host::PrPixelFormat_Raw,
    host::PrPixelFormat_Invalid,
    host::PrPixelFormat_VUYX_4444_32f,
    host::PrPixelFormat_VUYX_4444_32f_709,
    host::PrPixelFormat_XRGB_4444_32f,
    host::PrPixelFormat_BGRP_4444_32f,
    host::PrPixelFormat_VUYA_4444_32f,
    host::PrPixelFormat_VUYA_4444_32f_709,
    host::PrPixelFormat_ARGB_4444_32f,
    host::PrPixelFormat_BGRX_4444_32f,
    host::PrPixelFormat_BGRA_4444_16u,
    host::PrPixelFormat_VUYA_4444_16u,
    host::PrPixelFormat_ARGB_4444_16u,
    host::PrPixelFormat_BGRX_4444_16u,
};
static_assert(kListedFormats.size() == 72);

// Types of the codec library that are outputs rather than coded video.
constexpr std::uint32_t kFirstListedType = 1;
constexpr std::uint32_t kLastListedType = 61;

void dumpPixelFormats(const host::ImageProcessingSuite& suite) {
    logMessage("----");
    logMessage("Pixel formats ([fcc] : isCompressed hasAlpha isTopLeft - name):");
    for (const std::uint32_t format : kListedFormats) {
        std::int32_t isCompressed = 0;
        std::int32_t hasAlpha = 0;
        std::int32_t isTopLeft = 0;
        const host::prSuiteError compressedResult = suite.FormatIsCompressed(format, &isCompressed);
        const host::prSuiteError alphaResult = suite.FormatHasAlpha(format, &hasAlpha);
        const host::prSuiteError topLeftResult = suite.FormatIsOriginTopLeft(format, &isTopLeft);
        logMessage("[%s] : %c %c %c -  %s (err: %x %x %x) - %d", fourccToString(format).c_str(),
                   isCompressed != 0 ? 'C' : '-', hasAlpha != 0 ? 'A' : '-', isTopLeft != 0 ? 'T' : '-',
                   pixelFormatName(format), static_cast<unsigned>(compressedResult),
                   static_cast<unsigned>(alphaResult), static_cast<unsigned>(topLeftResult),
                   static_cast<int>(format));
    }
}

const char* yesOrNo(std::uint32_t answer) noexcept {
    return answer != 0 ? "YES" : " NO";
}

void dumpLibraryTypes() {
    const OrvantisCodec codec;
    logMessage("----");
    logMessage("Orvantis types (can_flip supports_0_32768_range : format):");
    for (std::uint32_t type = kFirstListedType; type <= kLastListedType; ++type) {
        const std::uint32_t canFlip = codec.getParam(kOrvantisParamCanFlip, type);
        const std::uint32_t supportsRange = codec.getParam(kOrvantisParamSupportsRange0_32768, type);
        logMessage("%s %s : %s", yesOrNo(canFlip), yesOrNo(supportsRange), codecTypeName(type));
    }
}

void dumpSubTypeInfos() {
    logMessage("----");
    logMessage("SubTypeInfos: (subType : orvTypeComp : subTypeName)");
    for (const SubTypeInfo& row : SubTypeInfos()) {
        logMessage("[%s] : (%d) %-15s : '%s'", fourccToString(row.subType, true).c_str(),
                   static_cast<int>(row.orvTypeComp), codecTypeName(row.orvTypeComp),
                   utf8FromUtf16(row.subTypeName).c_str());
    }
}

void dumpFormatInfos() {
    logMessage("----");
    logMessage("FormatInfos: (pixelFormat : orvType : colorSpace : isAdobe16u : isTopLeft)");
    for (const FormatInfo& row : FormatInfos()) {
        logMessage("[%s] %-35s : (%2d) %-10s : (%d) %-8s : %s : %s", fourccToString(row.pixelFormat).c_str(),
                   pixelFormatName(row.pixelFormat), static_cast<int>(row.orvType),
                   codecTypeName(row.orvType), static_cast<int>(row.colorSpace),
                   colorSpaceName(row.colorSpace), row.isAdobe16u() ? "1" : " ", row.isTopLeft() ? "1" : " ");
    }
}

}  // namespace

void dumpFormatTables(const host::SPBasicSuite* basicSuite) {
    {
        TypedSuiteRef<host::ImageProcessingSuite> suite(basicSuite, host::kImageProcessingSuiteName,
                                                        host::kImageProcessingSuiteVersion);
        dumpPixelFormats(suite.get());
    }
    try {
        dumpLibraryTypes();
    } catch (const OrvantisError& error) {
        // A library that cannot even tell its types still lets the plug-in load: opening a file says what is
        // wrong.
        logMessage("Format dump stopped: %s", error.what());
        return;
    }
    dumpSubTypeInfos();
    dumpFormatInfos();
}

}  // namespace orvantis
