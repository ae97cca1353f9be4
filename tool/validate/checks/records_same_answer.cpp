#include <cstring>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void recordsSameAnswer(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        const auto first = playing.clip().getInfo(0);
        const auto again = playing.clip().getInfo(0);
        // Between the members, too: the importer was given zeros there.
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
        const bool sameBytes = std::memcmp(&first.record, &again.record, sizeof first.record) == 0;
        if (first.result != again.result || !sameBytes) {
            trial.fail({.call = "imGetInfo8, stream 0, twice",
                        .field = "imFileInfoRec8",
                        .clip = playing.path(),
                        .seen = "another answer"});
        }
    });
}

const Registered kRecordsSameAnswer(
    {"records.same-answer", 3, "imGetInfo8 describes a stream alike each time.",
     "The host asks often, and takes a difference for a file that was changed.", recordsSameAnswer});

}  // namespace
}  // namespace simhost::tool::validate
