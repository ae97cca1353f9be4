// Kinds of hosts as data: what one generation or configuration of the host does differently from another. The
// same scenario, run through every profile, must deliver the same pictures and sounds. Values only; any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace simhost {

/// How the host lays the rows of a frame buffer out in memory.
enum class RowBytesPolicy {
    kPadded,  ///< a multiple of 16 and at least 16 bytes more than the pixels take (v210: whole units of 48
              ///< pixels)
    kAligned16,  ///< the next multiple of 16, as the host does
    kMinimal,    ///< no byte more than the pixels take
    kNegative,   ///< as kPadded, but the first row lies at the highest address and row bytes are negative
};

struct HostProfile {
    std::string name;
    std::string description;
    std::int32_t interfaceVersion = 23;          ///< importer interface: 18 (older, shorter records) or 23
    std::int64_t ticksPerSecond = 254016000000;  ///< answer of the time suite
    RowBytesPolicy rowBytes = RowBytesPolicy::kPadded;
    bool oppositeOrigins = false;    ///< answers FormatIsOriginTopLeft the other way round
    bool refusalWritesNull = false;  ///< a refused suite's variable is set to null instead of left alone
    std::vector<std::string> refusedSuites;  ///< names
};

/// Sizes of the records that grew between the generations of the host, in bytes.
struct RecordSizes {
    std::size_t fileInfo;      ///< imFileInfoRec8
    std::size_t sourceVideo;   ///< imSourceVideoRec
    std::size_t asyncRequest;  ///< aiAsyncRequest
};
RecordSizes recordSizes(std::int32_t interfaceVersion) noexcept;

/// The real host of today: version 23, its tick rate, its origins.
HostProfile defaultProfile();

/// All profiles, the default one first.
std::span<const HostProfile> builtinProfiles();

/// The profile of that name, or null.
const HostProfile* findProfile(std::string_view name);

}  // namespace simhost
