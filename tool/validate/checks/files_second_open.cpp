#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesSecondOpen(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        Clip second(stage.importer(), playing.path());
        if (!second.isOpen()) {
            trial.fail({.call = "imOpenFile8, the second of the same file",
                        .clip = playing.path(),
                        .seen = "result " + std::to_string(second.openResult())});
        } else if (second.privateData() == playing.clip().privateData()) {
            trial.fail({.call = "imOpenFile8, the second of the same file",
                        .field = "imFileOpenRec8.privatedata",
                        .clip = playing.path(),
                        .seen = "the private data of the first one"});
            second.forget();
        }
    });
}

const Registered kFilesSecondOpen({"files.second-open", 3,
                                   "A file can be opened a second time while it is open.",
                                   "The host opens it for each stream, and for each place where it is used.",
                                   filesSecondOpen});

}  // namespace
}  // namespace simhost::tool::validate
