// The two tables, their lookups, and the question to the host which rows are stored top row first. Built on
// the host thread of imInit, read from any thread. A row that was handed out stays valid and unchanged as
// long as the plug-in is loaded, also when a second imInit brings other answers: those make a table of their
// own.
#include "video/format_tables.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

#include "diag/log.h"
#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/suites.h"
#include "suites/suite_ref.h"
#include "video/pixel_format_names.h"

namespace orvantis {

namespace {

using host::fourccHighFirst;
using host::pixelFormatCode;

// clang-format off

constexpr std::array kPreferVuya{pixelFormatCode('v', 'u', 'y', 'a'), pixelFormatCode('V', 'U', 'Y', 'A')};
constexpr std::array kPreferVuyx{pixelFormatCode('v', 'u', 'y', 'x'), pixelFormatCode('v', 'u', 'x', '7')};
constexpr std::array kPrefer422 {pixelFormatCode('y', 'u', 'y', '2'), pixelFormatCode('y', 'u', 'y', '3'),
                                 pixelFormatCode('u', 'y', 'v', 'y'), pixelFormatCode('u', 'y', 'v', '7')};
constexpr std::array kPreferV210{pixelFormatCode('v', '2', '1', '0'), pixelFormatCode('v', '2', '1', '1')};

// In the order in which the host is told of the sub-types. That the 10-bit 4:2:0 row prefers v210 and the 10-bit 4:2:2
// row nothing is intended.
constexpr std::array kSubTypeTable{
    SubTypeInfo{fourccHighFirst('O', '8', 'R', 'A'), u"Orvantis 8-bit RGBA",                 102, 1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '8', 'R', 'G'), u"Orvantis 8-bit RGB",                  101, 1, 1, kModelRgb,  {}},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', 'A'), u"Orvantis 8-bit YUVA 4:4:4:4",         106, 1, 1, kModelYuva, kPreferVuya},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', '4'), u"Orvantis 8-bit YUV 4:4:4",            103, 1, 1, kModelYuv,  kPreferVuyx},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', '2'), u"Orvantis 8-bit YUV 4:2:2",            104, 2, 1, kModelYuv,  kPrefer422},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', '0'), u"Orvantis 8-bit YUV 4:2:0",            105, 2, 2, kModelYuv,  kPrefer422},
    SubTypeInfo{fourccHighFirst('O', '8', 'G', '0'), u"Orvantis 8-bit YUV 4:0:0 greyscale",  107, 1, 1, kModelYuv,  kPrefer422},
    SubTypeInfo{fourccHighFirst('O', '0', 'R', 'A'), u"Orvantis 10-bit RGBA",                110, 1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'R', 'G'), u"Orvantis 10-bit RGB",                 109, 1, 1, kModelRgb,  {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'Y', '4'), u"Orvantis 10-bit YUV 4:4:4",           118, 1, 1, kModelYuv,  {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'Y', '2'), u"Orvantis 10-bit YUV 4:2:2",           108, 2, 1, kModelYuv,  {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'Y', '0'), u"Orvantis 10-bit YUV 4:2:0",           123, 2, 2, kModelYuv,  kPreferV210},
    SubTypeInfo{fourccHighFirst('O', '0', 'G', '0'), u"Orvantis 10-bit YUV 4:0:0 greyscale", 115, 1, 1, kModelYuv,  {}},
    SubTypeInfo{fourccHighFirst('O', '2', 'R', 'A'), u"Orvantis 12-bit RGBA",                112, 1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '2', 'R', 'G'), u"Orvantis 12-bit RGB",                 111, 1, 1, kModelRgb,  {}},
    SubTypeInfo{fourccHighFirst('O', '4', 'R', 'A'), u"Orvantis 14-bit RGBA",                114, 1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '4', 'R', 'G'), u"Orvantis 14-bit RGB",                 113, 1, 1, kModelRgb,  {}},
};

// In the order of preference among the formats that a video can be decoded into.
constexpr std::array kFormatTable{
    FormatInfo{host::PrPixelFormat_YUYV_422_8u_601,  "YUYV 4:2:2 [8] Rec.601",    4, 1, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_YUYV_422_8u_709,  "YUYV 4:2:2 [8] Rec.709",    4, 2, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_UYVY_422_8u_601,  "UYVY 4:2:2 [8] Rec.601",    5, 1, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_UYVY_422_8u_709,  "UYVY 4:2:2 [8] Rec.709",    5, 2, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYA_4444_8u,     "VUYA 4:4:4:4 [8] Rec.601", 50, 1, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYA_4444_8u_709, "VUYA 4:4:4:4 [8] Rec.709", 50, 2, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYX_4444_8u,     "VUYX 4:4:4 [8] Rec.601",   49, 1, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYX_4444_8u_709, "VUYX 4:4:4 [8] Rec.709",   49, 2, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_BGRA_4444_8u,     "BGRA [8]",                  2, 2, 0},
    FormatInfo{host::PrPixelFormat_ARGB_4444_8u,     "ARGB [8]",                 19, 2, 0},
    FormatInfo{host::PrPixelFormat_BGRX_4444_8u,     "BGRX [8]",                  1, 2, 0},
    FormatInfo{host::PrPixelFormat_XRGB_4444_8u,     "XRGB [8]",                 16, 2, 0},
    FormatInfo{host::PrPixelFormat_V210_422_10u_601, "v210 4:2:2 [10] Rec.601",  11, 1, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_V210_422_10u_709, "v210 4:2:2 [10] Rec.709",  11, 2, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_RGB_444_10u,      "RGB [10]",                 15, 2, 0},
    FormatInfo{host::PrPixelFormat_BGRA_4444_16u,    "BGRA [16]",                31, 2, kIsAdobe16u},
    FormatInfo{host::PrPixelFormat_BGRX_4444_16u,    "BGRX [16]",                32, 2, kIsAdobe16u},
};

// clang-format on

using FormatTable = std::remove_const_t<decltype(kFormatTable)>;
static_assert(kSubTypeTable.size() == 17);
static_assert(kFormatTable.size() == 17);

/// The table in force. Before the first imInit nothing is known to be top row first.
constinit std::atomic<const FormatTable*> currentTable{&kFormatTable};

/// Every table that was ever in force, one for each different set of answers, so that rows in use outlive a
/// rebuild.
struct BuiltTables {
    std::mutex mutex;
    std::vector<std::unique_ptr<const FormatTable>> tables;
};

BuiltTables& builtTables() {
    static BuiltTables instance;
    return instance;
}

void putInForce(const FormatTable& built) {
    BuiltTables& kept = builtTables();
    const std::lock_guard lock(kept.mutex);
    const auto same = std::ranges::find_if(kept.tables, [&](const auto& table) {
        return std::ranges::equal(*table, built, {}, &FormatInfo::flags, &FormatInfo::flags);
    });
    if (same == kept.tables.end()) {
        kept.tables.push_back(std::make_unique<const FormatTable>(built));
        currentTable.store(kept.tables.back().get(), std::memory_order_release);
    } else {
        currentTable.store(same->get(), std::memory_order_release);
    }
}

}  // namespace

void buildFormatTables(const host::SPBasicSuite* basicSuite) {
    FormatTable table = kFormatTable;
    {
        TypedSuiteRef<host::ImageProcessingSuite> suite(basicSuite, host::kImageProcessingSuiteName,
                                                        host::kImageProcessingSuiteVersion);
        for (FormatInfo& row : table) {
            std::int32_t isTopLeft = 0;  // a host that fails leaves it alone
            suite.get().FormatIsOriginTopLeft(row.pixelFormat, &isTopLeft);
            if (isTopLeft != 0) row.flags |= kIsTopLeft;
        }
    }
    putInForce(table);
}

std::span<const SubTypeInfo> SubTypeInfos() noexcept {
    return kSubTypeTable;
}

std::span<const FormatInfo> FormatInfos() noexcept {
    return *currentTable.load(std::memory_order_acquire);
}

const SubTypeInfo& GetSubTypeInfo_by_orvTypeComp(std::uint32_t type) {
    const auto row = std::ranges::find(kSubTypeTable, type, &SubTypeInfo::orvTypeComp);
    if (row == kSubTypeTable.end()) {
        throw std::runtime_error(formatString("GetSubTypeInfo_by_orvTypeComp(): type not found: %s (%u)",
                                              codecTypeName(type), type));
    }
    return *row;
}

const FormatInfo& GetFormatInfo_by_pixelFormat(std::uint32_t pixelFormat) {
    const std::span<const FormatInfo> rows = FormatInfos();
    const auto row = std::ranges::find(rows, pixelFormat, &FormatInfo::pixelFormat);
    if (row == rows.end()) {
        throw std::runtime_error(
            formatString("GetFormatInfo_by_pixelFormat(): pixel format not found: %s [%s]",
                         pixelFormatName(pixelFormat), fourccToString(pixelFormat).c_str()));
    }
    return *row;
}

}  // namespace orvantis
