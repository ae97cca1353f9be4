#include "simhost/rules.h"

#include <algorithm>

namespace simhost {
namespace {

constexpr RuleText kRules[] = {
    {Rule::kRecordsBounds, "records.bounds", "A selector writes only inside the record that it was given.",
     "A record has the size of the host's generation; what lies behind it is the host's own, and older "
     "hosts' records end "
     "earlier.",
     1},
    {Rule::kRecordsBuffers, "records.buffers",
     "A text or sample buffer is written only within the size that its record tells.",
     "The host allocates exactly that size, so that a byte more damages its heap.", 1},
    {Rule::kRecordsSubtypeRows, "records.subtype-rows",
     "The block of imGetSubTypeNames holds whole rows of imSubTypeDescriptionRec and nothing else.",
     "No count is passed back: the host divides the size of the block by the size of a row.", 3},

    {Rule::kSuitesOffered, "suites.offered",
     "An importer calls no function of the host that is not meant for importers.",
     "Such a slot may be empty or do something else in the next generation of the host.", 5},
    {Rule::kSuitesArguments, "suites.arguments",
     "A function of the host is given every address that it needs, and only values that it knows.",
     "The host does not check arguments: it reads or writes at a null address and is gone.", 2},
    {Rule::kSuitesHeld, "suites.held", "A function of a suite is called only while that suite is held.",
     "The host may unload what stands behind a suite that nobody holds.", 3},
    {Rule::kSuitesReleasedOnce, "suites.released-once",
     "A suite is released only as often as it was acquired, under the same name and version.",
     "Suites are counted for all plug-ins together: one release too many takes the suite from somebody else.",
     2},
    {Rule::kSuitesReturned, "suites.returned",
     "Every suite that was acquired has been released when imShutdown returns.",
     "A suite that stays held keeps parts of the host loaded until the process ends.", 2},

    {Rule::kMemoryLive, "memory.live",
     "Only blocks of the host that have not been freed yet are sized, resized and freed.",
     "The host takes the address as it stands: a foreign or freed one damages its heap.", 1},
    {Rule::kMemoryBounds, "memory.bounds", "A block of the host is written only within its size.",
     "What lies before and behind it belongs to other parts of the host.", 1},
    {Rule::kMemoryHandedOver, "memory.handed-over",
     "The block that imGetSubTypeNames hands over comes from the host's own newPtr or newPtrClear.",
     "The host frees it with its own functions, which know no other memory.", 2},
    {Rule::kMemoryReturned, "memory.returned",
     "Every block that was taken from the host has been freed or handed over when imShutdown returns.",
     "Nobody else knows of it: it is lost until the process ends.", 2},

    {Rule::kFilesPrivateData, "files.private-data", "imOpenFile8 that succeeds stores private data.",
     "By this address the host names the open file in every later call.", 1},
    {Rule::kFilesOneReference, "files.one-reference",
     "imOpenFile8 that succeeds gives the same file reference in the record and at its first parameter.",
     "The host keeps either of the two and passes it on.", 3},
    {Rule::kFilesRefusal, "files.refusal", "imOpenFile8 that fails leaves the private data as it was.",
     "The host asks the next importer with the same record, and closes nothing that was not opened.", 3},
    {Rule::kFilesReferenceCleared, "files.reference-cleared",
     "imQuietFile and imCloseFile set the file reference to -1.",
     "The host tells by it that the file is free, before it moves, renames or deletes it.", 2},

    {Rule::kFramesAccess, "frames.access", "A frame is created for writing, or for reading and writing.",
     "The host creates no frame that can only be read: nothing could be in it.", 2},
    {Rule::kFramesLive, "frames.live", "Only frames that exist are used, disposed of and delivered.",
     "The host looks through the handle; behind one that is gone there is other memory.", 1},
    {Rule::kFramesOwner, "frames.owner", "A frame that was delivered is not touched any more.",
     "It is the host's from then on, which shows, caches or frees it in any thread.", 1},
    {Rule::kFramesDeliveredOnce, "frames.delivered-once", "A frame is delivered once.",
     "Each request owns the frame that answers it: the host disposes of it twice otherwise.", 2},
    {Rule::kFramesBounds, "frames.bounds", "Nothing is written before or behind the memory of a frame.",
     "Other frames lie there.", 1},
    {Rule::kFramesPadding, "frames.padding", "Rows are written only as wide as their pixels are.",
     "What follows up to the row bytes may be the next row's, or another picture's that this one is a part "
     "of.",
     3},
    {Rule::kFramesOnSuccess, "frames.on-success", "A request for a frame that succeeds delivers one.",
     "The host shows what it finds in the variable, without another look.", 1},
    {Rule::kFramesNoneOnFailure, "frames.none-on-failure", "A request for a frame that fails delivers none.",
     "The host looks at no frame of a request that failed, so nobody would dispose of it.", 3},
    {Rule::kFramesReturned, "frames.returned",
     "Every frame that was created has been delivered or disposed of when imShutdown returns.",
     "A frame is megabytes; what nobody disposes of is lost until the process ends.", 2},

    {Rule::kSoundBounds, "sound.bounds",
     "imImportAudio7 writes no more floats into a channel than sample frames were asked for.",
     "The host's buffers are exactly that long.", 1},
    {Rule::kSoundChannels, "sound.channels", "An importer announces 0 to 64 channels of sound.",
     "The host makes a buffer for each channel that is announced.", 2},

    {Rule::kAsyncImporter, "async.importer",
     "imCreateAsyncImporter that succeeds stores an entry point and private data.",
     "The host calls the entry at once, and from several threads.", 2},
};

constexpr bool inOrder() {
    for (std::size_t i = 0; i < std::size(kRules); ++i) {
        if (static_cast<std::size_t>(kRules[i].rule) != i) {
            return false;
        }
    }
    return static_cast<std::size_t>(Rule::kAsyncImporter) + 1 == std::size(kRules);
}
static_assert(inOrder(), "a rule stands in the table at the place of its value");

}  // namespace

std::span<const RuleText> rules() noexcept {
    return kRules;
}

const RuleText& ruleText(Rule rule) noexcept {
    return kRules[static_cast<std::size_t>(rule)];
}

const RuleText* findRule(std::string_view id) noexcept {
    const auto* const found = std::find_if(std::begin(kRules), std::end(kRules),
                                           [id](const RuleText& row) { return row.id == id; });
    return found == std::end(kRules) ? nullptr : found;
}

std::string rulesPage() {
    std::string out =
        "# Rules of the host\n"
        "\n"
        "What the simulated host (`testbed/simhost/`) demands of an importer and notices by itself, whatever "
        "an importer is\n"
        "made to do. A broken rule is told by its id with the call, the record and field, and what was seen. "
        "The level is the\n"
        "one from which on `importer_host validate` looks at it: 1 for what ends the host at once, higher "
        "for what only some\n"
        "hosts stumble over.\n"
        "\n"
        "Written from the table in `testbed/simhost/rules.cpp`; a test holds the two together, and writes "
        "this page anew when\n"
        "it runs with `ORVANTIS_WRITE_PAGES=1`.\n";
    std::string_view group;
    for (const RuleText& row : kRules) {
        const std::string_view id = row.id;
        const std::string_view own = id.substr(0, id.find('.'));
        if (own != group) {
            group = own;
            out += "\n## " + std::string(group) +
                   "\n\n| Rule | Level | What an importer does | Why |\n|---|---|---|---|\n";
        }
        out += "| `" + std::string(id) + "` | " + std::to_string(row.level) + " | " + row.sentence + " | " +
               row.reason + " |\n";
    }
    return out;
}

}  // namespace simhost
