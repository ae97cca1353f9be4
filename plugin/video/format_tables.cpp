// The two tables, their lookups, and the question to the host which rows are stored top row first. Built on
// the host thread of imInit, read from any thread. A row that was handed out stays valid and unchanged as
// long as the plug-in is loaded, also when a second imInit brings other answers: those make a table of their
// own.
#include "video/format_tables.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>

#include "diag/atomic.h"
#include "diag/format.h"
#include "diag/mutex.h"
#include "diag/never_destroyed.h"
#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/suites.h"
#include "suites/suite_ref.h"
#include "video/orvantis_type_codes.h"

namespace orvantis {

namespace {

using host::fourccHighFirst;

// clang-format off

constexpr std::array kPreferVuya{host::PrPixelFormat_VUYA_4444_8u, host::PrPixelFormat_VUYA_4444_8u_709};
constexpr std::array kPreferVuyx{host::PrPixelFormat_VUYX_4444_8u, host::PrPixelFormat_VUYX_4444_8u_709};
constexpr std::array kPrefer422 {host::PrPixelFormat_YUYV_422_8u_601, host::PrPixelFormat_YUYV_422_8u_709,
                                 host::PrPixelFormat_UYVY_422_8u_601, host::PrPixelFormat_UYVY_422_8u_709};
constexpr std::array kPreferV210{host::PrPixelFormat_V210_422_10u_601, host::PrPixelFormat_V210_422_10u_709};

// In the order in which the host is told of the sub-types. That the 10-bit 4:2:0 row prefers v210 and the 10-bit 4:2:2
// row nothing is intended.
constexpr std::array kSubTypeTable{
    SubTypeInfo{fourccHighFirst('O', '8', 'R', 'A'), u"Orvantis 8-bit RGBA",                 kOrvantisCodedRgba8,     1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '8', 'R', 'G'), u"Orvantis 8-bit RGB",                  kOrvantisCodedRgb8,      1, 1, kModelRgb,  {}},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', 'A'), u"Orvantis 8-bit YUVA 4:4:4:4",         kOrvantisCodedYuva8,     1, 1, kModelYuva, kPreferVuya},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', '4'), u"Orvantis 8-bit YUV 4:4:4",            kOrvantisCodedYuv444p8,  1, 1, kModelYuv,  kPreferVuyx},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', '2'), u"Orvantis 8-bit YUV 4:2:2",            kOrvantisCodedYuv422p8,  2, 1, kModelYuv,  kPrefer422},
    SubTypeInfo{fourccHighFirst('O', '8', 'Y', '0'), u"Orvantis 8-bit YUV 4:2:0",            kOrvantisCodedYuv420p8,  2, 2, kModelYuv,  kPrefer422},
    SubTypeInfo{fourccHighFirst('O', '8', 'G', '0'), u"Orvantis 8-bit YUV 4:0:0 greyscale",  kOrvantisCodedGrey8,     1, 1, kModelYuv,  kPrefer422},
    SubTypeInfo{fourccHighFirst('O', '0', 'R', 'A'), u"Orvantis 10-bit RGBA",                kOrvantisCodedRgba10,    1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'R', 'G'), u"Orvantis 10-bit RGB",                 kOrvantisCodedRgb10,     1, 1, kModelRgb,  {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'Y', '4'), u"Orvantis 10-bit YUV 4:4:4",           kOrvantisCodedYuv444p10, 1, 1, kModelYuv,  {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'Y', '2'), u"Orvantis 10-bit YUV 4:2:2",           kOrvantisCodedYuv422p10, 2, 1, kModelYuv,  {}},
    SubTypeInfo{fourccHighFirst('O', '0', 'Y', '0'), u"Orvantis 10-bit YUV 4:2:0",           kOrvantisCodedYuv420p10, 2, 2, kModelYuv,  kPreferV210},
    SubTypeInfo{fourccHighFirst('O', '0', 'G', '0'), u"Orvantis 10-bit YUV 4:0:0 greyscale", kOrvantisCodedGrey10,    1, 1, kModelYuv,  {}},
    SubTypeInfo{fourccHighFirst('O', '2', 'R', 'A'), u"Orvantis 12-bit RGBA",                kOrvantisCodedRgba12,    1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '2', 'R', 'G'), u"Orvantis 12-bit RGB",                 kOrvantisCodedRgb12,     1, 1, kModelRgb,  {}},
    SubTypeInfo{fourccHighFirst('O', '4', 'R', 'A'), u"Orvantis 14-bit RGBA",                kOrvantisCodedRgba14,    1, 1, kModelRgba, {}},
    SubTypeInfo{fourccHighFirst('O', '4', 'R', 'G'), u"Orvantis 14-bit RGB",                 kOrvantisCodedRgb14,     1, 1, kModelRgb,  {}},
};

// In the order of preference among the formats that a video can be decoded into.
constexpr std::array kFormatTable{
    FormatInfo{host::PrPixelFormat_YUYV_422_8u_601,  "YUYV 4:2:2 [8] Rec.601",   kOrvantisOutYuyv,   kOrvantisColorSpaceRec601, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_YUYV_422_8u_709,  "YUYV 4:2:2 [8] Rec.709",   kOrvantisOutYuyv,   kOrvantisColorSpaceRec709, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_UYVY_422_8u_601,  "UYVY 4:2:2 [8] Rec.601",   kOrvantisOutUyvy,   kOrvantisColorSpaceRec601, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_UYVY_422_8u_709,  "UYVY 4:2:2 [8] Rec.709",   kOrvantisOutUyvy,   kOrvantisColorSpaceRec709, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYA_4444_8u,     "VUYA 4:4:4:4 [8] Rec.601", kOrvantisOutVuya,   kOrvantisColorSpaceRec601, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYA_4444_8u_709, "VUYA 4:4:4:4 [8] Rec.709", kOrvantisOutVuya,   kOrvantisColorSpaceRec709, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYX_4444_8u,     "VUYX 4:4:4 [8] Rec.601",   kOrvantisOutVuyx,   kOrvantisColorSpaceRec601, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_VUYX_4444_8u_709, "VUYX 4:4:4 [8] Rec.709",   kOrvantisOutVuyx,   kOrvantisColorSpaceRec709, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_BGRA_4444_8u,     "BGRA [8]",                 kOrvantisOutBgra,   kOrvantisColorSpaceRec709, 0},
    FormatInfo{host::PrPixelFormat_ARGB_4444_8u,     "ARGB [8]",                 kOrvantisOutArgb,   kOrvantisColorSpaceRec709, 0},
    FormatInfo{host::PrPixelFormat_BGRX_4444_8u,     "BGRX [8]",                 kOrvantisOutBgrx,   kOrvantisColorSpaceRec709, 0},
    FormatInfo{host::PrPixelFormat_XRGB_4444_8u,     "XRGB [8]",                 kOrvantisOutXrgb,   kOrvantisColorSpaceRec709, 0},
    FormatInfo{host::PrPixelFormat_V210_422_10u_601, "v210 4:2:2 [10] Rec.601",  kOrvantisOutV210,   kOrvantisColorSpaceRec601, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_V210_422_10u_709, "v210 4:2:2 [10] Rec.709",  kOrvantisOutV210,   kOrvantisColorSpaceRec709, kIsLimitedRange},
    FormatInfo{host::PrPixelFormat_RGB_444_10u,      "RGB [10]",                 kOrvantisOutRgb10,  kOrvantisColorSpaceRec709, 0},
    FormatInfo{host::PrPixelFormat_BGRA_4444_16u,    "BGRA [16]",                kOrvantisOutBgra16, kOrvantisColorSpaceRec709, kIsAdobe16u},
    FormatInfo{host::PrPixelFormat_BGRX_4444_16u,    "BGRX [16]",                kOrvantisOutBgrx16, kOrvantisColorSpaceRec709, kIsAdobe16u},
};

// clang-format on

using FormatTable = std::remove_const_t<decltype(kFormatTable)>;

/// The table in force. Before the first imInit nothing is known to be top row first.
constinit Atomic<const FormatTable*> currentTable{&kFormatTable};

/// Every table that was ever in force, one for each different set of answers, so that rows in use outlive a
/// rebuild. A host has one set of answers, and its table lies here; what else there is stays on the heap.
struct BuiltTables {
    static constexpr std::size_t kInPlace = 8;

    Mutex mutex;
    std::array<FormatTable, kInPlace> inPlace;
    std::size_t inPlaceCount = 0;
    std::vector<std::unique_ptr<const FormatTable>> others;

    std::span<const FormatTable> tablesInPlace() const noexcept { return {inPlace.data(), inPlaceCount}; }
};

BuiltTables& builtTables() {
    // Frames may be decoded, and the tables read, until the module is gone.
    static NeverDestroyed<BuiltTables> instance;
    return instance.get();
}

bool sameAnswers(const FormatTable& a, const FormatTable& b) noexcept {
    return std::ranges::equal(a, b, {}, &FormatInfo::flags, &FormatInfo::flags);
}

/// Where a table with these answers lies for good.
const FormatTable& keep(const FormatTable& built) {
    BuiltTables& kept = builtTables();
    const std::lock_guard lock(kept.mutex);
    for (const FormatTable& table : kept.tablesInPlace()) {
        if (sameAnswers(table, built)) {
            return table;
        }
    }
    if (kept.inPlaceCount < BuiltTables::kInPlace) {
        return kept.inPlace[kept.inPlaceCount++] = built;
    }
    for (const auto& table : kept.others) {
        if (sameAnswers(*table, built)) {
            return *table;
        }
    }
    return *kept.others.emplace_back(std::make_unique<FormatTable>(built));
}

void putInForce(const FormatTable& built) {
    currentTable.store(&keep(built), std::memory_order_release);
}

}  // namespace

void buildFormatTables(const host::SPBasicSuite* basicSuite) {
    FormatTable table = kFormatTable;
    {
        TypedSuiteRef<host::ImageProcessingSuite> suite(basicSuite, host::kImageProcessingSuiteName,
                                                        host::kImageProcessingSuiteVersion);
        suite.acquire();
        for (FormatInfo& row : table) {
            std::int32_t isTopLeft = 0;  // a host that fails leaves it alone
            suite.get().FormatIsOriginTopLeft(row.pixelFormat, &isTopLeft);
            if (isTopLeft != 0) {
                row.flags |= kIsTopLeft;
            }
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

UnknownCodedType::UnknownCodedType(std::uint32_t codedType)
    : std::runtime_error(formatString("GetSubTypeInfo_by_orvTypeComp(): type not found: %s (%u)",
                                      codecTypeName(codedType), codedType)),
      type(codedType) {}

const SubTypeInfo& GetSubTypeInfo_by_orvTypeComp(std::uint32_t type) {
    const auto row = std::ranges::find(kSubTypeTable, type, &SubTypeInfo::orvTypeComp);
    if (row == kSubTypeTable.end()) {
        throw UnknownCodedType(type);
    }
    return *row;
}

const FormatInfo& GetFormatInfo_by_pixelFormat(std::uint32_t pixelFormat) {
    const std::span<const FormatInfo> rows = FormatInfos();
    const auto row = std::ranges::find(rows, pixelFormat, &FormatInfo::pixelFormat);
    if (row == rows.end()) {
        throw std::runtime_error(
            formatString("GetFormatInfo_by_pixelFormat(): pixel format not found: %s [%s]",
                         host::pixelFormatName(pixelFormat), fourccToString(pixelFormat).c_str()));
    }
    return *row;
}

}  // namespace orvantis
