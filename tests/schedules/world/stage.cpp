#include "tests/schedules/world/stage.h"

#include <string>

#include "tests/schedules/scheduler/engine.h"
#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/scheduler/memory.h"
#include "tests/schedules/system/windows_threads.h"
#include "tests/schedules/world/codec.h"

namespace schedules {

namespace {

void expectNone(long count, const char* what) {
    if (count != 0) {
        found("left behind", std::to_string(count) + " " + what);
    }
}

}  // namespace

void Stage::thread(const char* name, std::function<void()> body) {
    engine::addThread(name, std::move(body));
}

void Stage::run() {
    engine::run();
}

void Stage::expect(bool holds, const char* what) {
    if (!holds) {
        found("wrong result", what);
    }
}

void Stage::expectCode(std::int32_t code, std::int32_t wanted, const char* what) {
    if (code == wanted) {
        return;
    }
    const memory::Outside outside;
    found("wrong result",
          std::string(what) + ": " + std::to_string(code) + " instead of " + std::to_string(wanted));
}

void Stage::expectFrame(const world::FrameAnswer& answer, int picture, const char* what) {
    expectCode(answer.result, world::kOk, what);
    expectCode(answer.picture, picture, what);
}

void Stage::expectFrameOrGone(const world::FrameAnswer& answer, int picture, const char* what) {
    if (answer.result != world::kException) {
        expectFrame(answer, picture, what);
    } else {
        expectCode(answer.picture, -1, what);
    }
}

namespace {

void play(const Scenario& scenario, bool watched) {
    world::beginHost();
    world::beginCodec();
    windows::begin(scenario.poolThreads);
    engine::begin(watched);
    if (watched) {
        memory::begin();
    }
    Stage stage;
    scenario.play(stage);
    world::host().onCreateFrame = nullptr;
}

}  // namespace

void playOnce(const Scenario& scenario) {
    play(scenario, true);
    const std::size_t blocks = memory::end();
    expectNone(static_cast<long>(blocks), "blocks of memory");
    expectNone(world::host().framesOut, "frames");
    expectNone(world::host().suitesHeld, "suites");
    expectNone(world::codecSessions(), "sessions of the codec library");
    expectNone(windows::open(), "pools or work objects");
}

void warmUp(const Scenario& scenario) {
    play(scenario, false);
}

}  // namespace schedules
