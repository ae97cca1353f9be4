// What the host demands of an importer, as far as the simulated host sees it by itself: the only list of
// these rules. A violation names its rule, the tool explains it, and docs/host-rules.md is written from it.
// Static data; any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace simhost {

/// Groups together; the group is what the id starts with.
enum class Rule {
    kRecordsBounds,
    kRecordsBuffers,
    kRecordsSubtypeRows,
    kSuitesOffered,
    kSuitesArguments,
    kSuitesHeld,
    kSuitesReleasedOnce,
    kSuitesReturned,
    kMemoryLive,
    kMemoryBounds,
    kMemoryHandedOver,
    kMemoryReturned,
    kFilesPrivateData,
    kFilesOneReference,
    kFilesRefusal,
    kFilesReferenceCleared,
    kFramesAccess,
    kFramesLive,
    kFramesOwner,
    kFramesDeliveredOnce,
    kFramesBounds,
    kFramesPadding,
    kFramesOnSuccess,
    kFramesNoneOnFailure,
    kFramesReturned,
    kSoundBounds,
    kSoundChannels,
    kAsyncImporter,
};

struct RuleText {
    Rule rule;
    const char* id;        ///< "group.name", for people and programs alike
    const char* sentence;  ///< what an importer has to do
    const char* reason;    ///< why the host needs it
    int level;  ///< 1 (every importer passes) to 10 (the strictest), at which it is first looked at
};

/// All of them in the order of the enumeration, groups together.
std::span<const RuleText> rules() noexcept;

const RuleText& ruleText(Rule rule) noexcept;

/// The rule of that id, or null.
const RuleText* findRule(std::string_view id) noexcept;

/// The page docs/host-rules.md, lines ended by "\n".
std::string rulesPage();

}  // namespace simhost
