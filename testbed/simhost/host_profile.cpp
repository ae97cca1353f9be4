#include "simhost/host_profile.h"

#include "host/records.h"
#include "host/suites.h"

namespace simhost {
namespace {

// Where the records of version 18 end.
constexpr std::size_t kFileInfoBytes18 = 5373;
constexpr std::size_t kSourceVideoBytes18 = 56;

HostProfile profile(const char* name, const char* description) {
    HostProfile made;
    made.name = name;
    made.description = description;
    return made;
}

HostProfile withoutSuite(const char* name, const char* suite) {
    HostProfile made = profile(name, "");
    made.description = std::string("refuses the \"") + suite + "\"";
    made.refusedSuites = {suite};
    return made;
}

std::vector<HostProfile> makeProfiles() {
    std::vector<HostProfile> all;
    all.push_back(defaultProfile());

    HostProfile older =
        profile("older", "importer interface 18: shorter records, rows of the next multiple of 16");
    older.interfaceVersion = 18;
    older.rowBytes = RowBytesPolicy::kAligned16;
    all.push_back(older);

    HostProfile minimal = profile("minimal-rows", "no padding behind the rows of a frame");
    minimal.rowBytes = RowBytesPolicy::kMinimal;
    all.push_back(minimal);

    HostProfile negative = profile("negative-rows", "rows stored from the highest address downwards");
    negative.rowBytes = RowBytesPolicy::kNegative;
    all.push_back(negative);

    HostProfile opposite = profile("opposite-origins", "answers the other origin for every pixel format");
    opposite.oppositeOrigins = true;
    all.push_back(opposite);

    HostProfile slow = profile("ticks-90000", "a clock of 90000 ticks a second");
    slow.ticksPerSecond = 90000;
    all.push_back(slow);

    HostProfile slowest = profile("ticks-1", "a clock of one tick a second, too coarse for frames");
    slowest.ticksPerSecond = 1;
    all.push_back(slowest);

    all.push_back(withoutSuite("no-error-suite", host::kErrorSuiteName));
    all.push_back(withoutSuite("no-creator-suite", host::kPPixCreatorSuiteName));
    all.push_back(withoutSuite("no-cache-suite", host::kPPixCacheSuiteName));
    all.push_back(withoutSuite("no-ppix-suite", host::kPPixSuiteName));
    all.push_back(withoutSuite("no-time-suite", host::kTimeSuiteName));
    all.push_back(withoutSuite("no-image-suite", host::kImageProcessingSuiteName));
    all.push_back(withoutSuite("no-audio-suite", host::kAudioSuiteName));
    return all;
}

const std::vector<HostProfile>& profiles() {
    static const std::vector<HostProfile> all = makeProfiles();
    return all;
}

}  // namespace

RecordSizes recordSizes(std::int32_t interfaceVersion) noexcept {
    if (interfaceVersion < 23) {
        return {kFileInfoBytes18, kSourceVideoBytes18,
                offsetof(host::aiAsyncRequest, inSourceRec) + kSourceVideoBytes18};
    }
    return {sizeof(host::imFileInfoRec8), sizeof(host::imSourceVideoRec), sizeof(host::aiAsyncRequest)};
}

HostProfile defaultProfile() {
    return profile("default", "importer interface 23 with padded rows");
}

std::span<const HostProfile> builtinProfiles() {
    return profiles();
}

const HostProfile* findProfile(std::string_view name) {
    for (const HostProfile& candidate : profiles()) {
        if (candidate.name == name) {
            return &candidate;
        }
    }
    return nullptr;
}

}  // namespace simhost
