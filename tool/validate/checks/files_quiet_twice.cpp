#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesQuietTwice(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        (void)playing.clip().quiet();
        (void)playing.clip().quiet();
        if (const std::int32_t result = playing.clip().close(); result != host::imNoErr) {
            trial.fail({.call = "imCloseFile behind two imQuietFile",
                        .clip = playing.path(),
                        .seen = "result " + std::to_string(result)});
        }
    });
}

const Registered kFilesQuietTwice(
    {"files.quiet-twice", 6,
     "imQuietFile of a file that is quiet already, and imCloseFile behind it, are harmless.",
     "The host closes clips that it has quieted before.", filesQuietTwice});

}  // namespace
}  // namespace simhost::tool::validate
