#include <functional>
#include <string>

#include "tool/shared/base/number_text.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"
#include "tool/validate/base/timing.h"

namespace simhost::tool::validate {
namespace {

void costQuestions(Trial& trial) {
    constexpr double kMost = 0.02;
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        const auto timed = [&](const char* call, const std::function<void()>& work) {
            const double each = quickestSeconds(6, work);
            if (each > kMost) {
                trial.warn(
                    {.call = call, .clip = playing.path(), .seen = decimalText(each * 1000, 1) + " ms"});
            }
        };
        timed("imGetInfo8", [&] { (void)playing.clip().getInfo(0); });
        timed("imAnalysis", [&] { (void)playing.clip().analysis(4096); });
        timed("imGetIndPixelFormat", [&] { (void)playing.clip().pixelFormat(0); });
    });
}

const Registered kCostQuestions({"cost.questions", 4,
                                 "Questions about an open clip are answered within 20 ms.",
                                 "The host asks them on the thread that draws its windows.", costQuestions});

}  // namespace
}  // namespace simhost::tool::validate
