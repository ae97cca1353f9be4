// Calls that meet on asynchronous importers.
#include "tests/schedules/scenarios/scenarios.h"

#include <optional>

#include "tests/schedules/system/windows_threads.h"

namespace schedules {

namespace {

using world::AsyncClip;
using world::Clip;
using world::FrameAnswer;
using world::kException;
using world::kOk;

void twoGetsOneFrame(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    Stage::expectCode(async.initiate(1), kOk, "initiate");
    FrameAnswer first;
    FrameAnswer second;
    stage.thread("get A", [&] { first = async.get(1); });
    stage.thread("get B", [&] { second = async.get(1); });
    stage.run();
    Stage::expectFrame(first, 1, "get A");
    Stage::expectFrame(second, 1, "get B");
}

void getNeverInitiated(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    FrameAnswer first;
    FrameAnswer second;
    stage.thread("get 0", [&] { first = async.get(0); });
    stage.thread("get 1", [&] { second = async.get(1); });
    stage.run();
    Stage::expectFrame(first, 0, "get 0");
    Stage::expectFrame(second, 1, "get 1");
}

void twoInitiatesOneFrame(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    stage.thread("initiate A", [&] { Stage::expectCode(async.initiate(1), kOk, "initiate A"); });
    stage.thread("initiate B", [&] { Stage::expectCode(async.initiate(1), kOk, "initiate B"); });
    stage.run();
    Stage::expectFrame(async.get(1), 1, "first get");
    Stage::expectFrame(async.get(1), 1, "second get");
}

void initiateAgainstGet(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    FrameAnswer answer;
    stage.thread("initiate 2", [&] { Stage::expectCode(async.initiate(2), kOk, "initiate"); });
    stage.thread("get 1", [&] { answer = async.get(1); });
    stage.run();
    Stage::expectFrame(answer, 1, "get");
    Stage::expectFrame(async.get(2), 2, "the one that was initiated");
}

void flushAgainstGet(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    Stage::expectCode(async.initiate(1), kOk, "initiate");
    FrameAnswer answer;
    stage.thread("flush", [&] { Stage::expectCode(async.flush(), kOk, "flush"); });
    stage.thread("get 1", [&] { answer = async.get(1); });
    stage.run();
    Stage::expectFrame(answer, 1, "get");
}

void flushAgainstInitiate(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    stage.thread("flush", [&] { Stage::expectCode(async.flush(), kOk, "flush"); });
    stage.thread("initiate 1", [&] { Stage::expectCode(async.initiate(1), kOk, "initiate"); });
    stage.run();
    stage.thread("get 1", [&] { Stage::expectFrame(async.get(1), 1, "get behind both"); });
    stage.run();
}

void flushBehindTaken(Stage& stage) {
    // A flush meets a request that parks behind one which a call has taken out of the list.
    const Clip clip;
    const AsyncClip async(clip);
    Stage::expectCode(async.initiate(0), kOk, "initiate 0");
    Stage::expectCode(async.initiate(1), kOk, "initiate 1");
    FrameAnswer answer;
    stage.thread("get 0", [&] { answer = async.get(0); });
    stage.thread("flush", [&] { Stage::expectCode(async.flush(), kOk, "flush"); });
    stage.run();
    Stage::expectFrame(answer, 0, "get 0");
}

void dropWhileReading(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    Stage::expectCode(async.initiate(0), kOk, "initiate 0");
    Stage::expectCode(async.initiate(1), kOk, "initiate 1");
    stage.thread("flush", [&] { Stage::expectCode(async.flush(), kOk, "flush"); });
    stage.run();
}

void closeAgainstInitiate(Stage& stage) {
    const Clip clip;
    AsyncClip async(clip);
    std::int32_t code = -1;
    stage.thread("close", [&] { Stage::expectCode(async.close(), kOk, "close"); });
    stage.thread("initiate", [&] { code = async.initiate(0); });
    stage.run();
    async.forget();
    Stage::expect(code == kOk || code == kException, "initiate");
}

void closeBehindTasks(Stage& stage) {
    const Clip clip;
    AsyncClip async(clip);
    Stage::expectCode(async.initiate(0), kOk, "initiate 0");
    Stage::expectCode(async.initiate(1), kOk, "initiate 1");
    stage.thread("close", [&] { Stage::expectCode(async.close(), kOk, "close"); });
    stage.run();
    async.forget();
}

void closeBehindThreeTasks(Stage& stage) {
    // Of three requests one thread of the pool hands the next one on while another takes it.
    const Clip clip;
    AsyncClip async(clip);
    Stage::expectCode(async.initiate(0), kOk, "initiate 0");
    Stage::expectCode(async.initiate(1), kOk, "initiate 1");
    Stage::expectCode(async.initiate(2), kOk, "initiate 2");
    stage.thread("close", [&] { Stage::expectCode(async.close(), kOk, "close"); });
    stage.run();
    async.forget();
}

void closeAgainstGet(Stage& stage) {
    const Clip clip;
    AsyncClip async(clip);
    Stage::expectCode(async.initiate(0), kOk, "initiate");
    FrameAnswer answer;
    stage.thread("close", [&] { Stage::expectCode(async.close(), kOk, "close"); });
    stage.thread("get", [&] { answer = async.get(0); });
    stage.run();
    async.forget();
    Stage::expectFrameOrGone(answer, 0, "get");
}

void twoCloses(Stage& stage) {
    const Clip clip;
    AsyncClip async(clip);
    Stage::expectCode(async.initiate(0), kOk, "initiate");
    stage.thread("close A", [&] { Stage::expectCode(async.close(), kOk, "close A"); });
    stage.thread("close B", [&] { Stage::expectCode(async.close(), kOk, "close B"); });
    stage.run();
    async.forget();
}

void throwingTask(Stage& stage) {
    world::host().refusesCreator = true;
    const Clip clip;
    const AsyncClip async(clip);
    FrameAnswer first;
    FrameAnswer second;
    stage.thread("get 0", [&] { first = async.get(0); });
    stage.thread("get 1", [&] { second = async.get(1); });
    stage.run();
    Stage::expectCode(first.result, kException, "get 0");
    Stage::expectCode(second.result, kException, "get 1");
    world::host().refusesCreator = false;
}

void fullPool(Stage& stage) {
    const Clip one;
    const Clip other;
    const AsyncClip first(one);
    const AsyncClip second(other);
    FrameAnswer answer;
    FrameAnswer fromOther;
    stage.thread("get of one", [&] { answer = first.get(0); });
    stage.thread("get of other", [&] { fromOther = second.get(1); });
    stage.run();
    Stage::expectFrame(answer, 0, "get of one");
    Stage::expectFrame(fromOther, 1, "get of the other");
}

void fullPoolManyRequests(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    Stage::expectCode(async.initiate(0), kOk, "initiate 0");
    Stage::expectCode(async.initiate(1), kOk, "initiate 1");
    FrameAnswer answer;
    stage.thread("get 1", [&] { answer = async.get(1); });
    stage.thread("initiate 2", [&] { Stage::expectCode(async.initiate(2), kOk, "initiate 2"); });
    stage.run();
    Stage::expectFrame(answer, 1, "get 1");
    Stage::expectFrame(async.get(2), 2, "get 2");
    Stage::expectFrame(async.get(0), 0, "get 0");
}

void publishAgainstFinish(Stage& stage) {
    const Clip clip;
    const AsyncClip async(clip);
    FrameAnswer answer;
    std::optional<AsyncClip> second;
    stage.thread("create", [&] { second.emplace(clip); });
    stage.thread("get", [&] { answer = async.get(0); });
    stage.run();
    Stage::expectFrame(answer, 0, "get");
}

void taskReacquiresSuite(Stage& stage) {
    world::host().refusesCreator = true;
    const Clip clip;
    const AsyncClip async(clip);
    world::host().refusesCreator = false;
    FrameAnswer fromTask;
    FrameAnswer fromCall;
    stage.thread("get", [&] { fromTask = async.get(0); });
    stage.thread("frame", [&] { fromCall = clip.frame(1); });
    stage.run();
    Stage::expectFrame(fromTask, 0, "get");
    Stage::expectFrame(fromCall, 1, "frame");
    Stage::expectCode(world::host().creatorAcquired, 2, "acquisitions for two importers");
}

void unload(Stage& stage) {
    Clip clip;
    AsyncClip async(clip);
    stage.thread("host", [&] {
        Stage::expectFrame(async.get(0), 0, "get");
        Stage::expectCode(async.close(), kOk, "close");
        Stage::expectCode(clip.close(), kOk, "close of the file");
        windows::unloadModule();
    });
    stage.run();
    async.forget();
    clip.forget();
}

constexpr Scenario kScenarios[] = {
    {"two-gets-one-frame", "two gets for the one request of a frame", twoGetsOneFrame},
    {"get-never-initiated", "two gets for frames that nobody initiated", getNeverInitiated},
    {"two-initiates-one-frame", "two initiates for one frame, then two gets", twoInitiatesOneFrame},
    {"initiate-against-get", "an initiate while another frame is waited for", initiateAgainstGet},
    {"flush-against-get", "a flush while the only request is asked for", flushAgainstGet},
    {"flush-against-initiate", "a flush while a request is made", flushAgainstInitiate},
    {"flush-behind-taken", "a flush of what waits behind a request that a get has taken", flushBehindTaken, 4,
     2},
    {"drop-while-reading", "a flush of two requests that are being read and decoded", dropWhileReading},
    {"close-against-initiate", "a close while a request is made", closeAgainstInitiate},
    {"close-behind-tasks", "a close while two requests are at work", closeBehindTasks},
    {"close-behind-three-tasks", "a close while three requests share a pool of two threads",
     closeBehindThreeTasks, 2, 2},
    {"close-against-get", "a close while a frame is asked for", closeAgainstGet},
    {"two-closes", "two closes of one asynchronous importer with a pending request", twoCloses},
    {"throwing-task", "two tasks that end in an exception", throwingTask},
    {"full-pool", "two importers share a pool of one thread", fullPool, 1},
    {"full-pool-many-requests", "more requests than threads, and a get for one in the middle",
     fullPoolManyRequests, 1},
    {"publish-against-finish", "an importer is created while a call on another one ends",
     publishAgainstFinish},
    {"task-reacquires-suite", "a task and a call ask for a suite that was refused before",
     taskReacquiresSuite},
    {"unload", "the module is unloaded behind the last frame", unload},
};

}  // namespace

std::span<const Scenario> asyncScenarios() {
    return kScenarios;
}

}  // namespace schedules
