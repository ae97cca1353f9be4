#include "video/format_dump.h"

#include <exception>

#include "diag/format.h"
#include "diag/log.h"
#include "diag/text.h"
#include "host/pixel_formats.h"
#include "host/suites.h"
#include "suites/suite_ref.h"
#include "suites/suite_result.h"
#include "video/format_tables.h"

namespace orvantis {

namespace {

// Types of the codec library that are outputs rather than coded video.
constexpr std::uint32_t kFirstListedType = 1;
constexpr std::uint32_t kLastListedType = 61;

void dumpPixelFormats(const host::ImageProcessingSuite& suite) {
    logMessage("----");
    logMessage("Pixel formats ([fcc] : isCompressed hasAlpha isTopLeft - name):");
    for (const host::PixelFormat& row : host::kPixelFormats) {
        const std::uint32_t format = row.code;
        std::int32_t isCompressed = 0;
        std::int32_t hasAlpha = 0;
        std::int32_t isTopLeft = 0;
        const SuiteResult compressedResult{suite.FormatIsCompressed(format, &isCompressed)};
        const SuiteResult alphaResult{suite.FormatHasAlpha(format, &hasAlpha)};
        const SuiteResult topLeftResult{suite.FormatIsOriginTopLeft(format, &isTopLeft)};
        logMessage("[%s] : %c %c %c -  %s (err: %x %x %x) - %d", fourccToString(format).c_str(),
                   isCompressed != 0 ? 'C' : '-', hasAlpha != 0 ? 'A' : '-', isTopLeft != 0 ? 'T' : '-',
                   row.name, static_cast<unsigned>(compressedResult), static_cast<unsigned>(alphaResult),
                   static_cast<unsigned>(topLeftResult), static_cast<int>(format));
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
                   host::pixelFormatName(row.pixelFormat), static_cast<int>(row.orvType),
                   codecTypeName(row.orvType), static_cast<int>(row.colorSpace),
                   colorSpaceName(row.colorSpace), row.isAdobe16u() ? "1" : " ", row.isTopLeft() ? "1" : " ");
    }
}

}  // namespace

void dumpFormatTables(const host::SPBasicSuite* basicSuite) noexcept {
    // Host and library are asked also while the log is off, so that switching it on changes nothing that the
    // host could notice.
    try {
        {
            TypedSuiteRef<host::ImageProcessingSuite> suite(basicSuite, host::kImageProcessingSuiteName,
                                                            host::kImageProcessingSuiteVersion);
            suite.acquire();
            dumpPixelFormats(suite.get());
        }
        dumpLibraryTypes();
        dumpSubTypeInfos();
        dumpFormatInfos();
    } catch (const std::exception& error) {
        // The tables stand, and the plug-in works without the listing: what is wrong with the library,
        // opening a file says.
        logMessage("Format dump stopped: %s", error.what());
    }
}

}  // namespace orvantis
