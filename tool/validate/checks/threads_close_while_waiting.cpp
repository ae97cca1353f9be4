#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

// Holds the plug-in where it creates the frame that it was asked for, until the other thread is about to
// close: so the call is under way for certain, and nothing is called behind the close.
class HeldCall {
 public:
    // On the thread that is about to call.
    void begin() {
        const std::lock_guard lock(m_mutex);
        m_state = State::kCalling;
    }
    // On whatever thread the plug-in creates a frame.
    void hold() {
        std::unique_lock lock(m_mutex);
        if (m_state != State::kCalling) {
            return;
        }
        m_state = State::kHeld;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_state == State::kClosing; });
        lock.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));  // aiFlush and aiClose meet it
    }
    void end() {
        const std::lock_guard lock(m_mutex);
        m_state = State::kEnded;
        m_changed.notify_all();
    }
    // Waits. False when the call has come to its end without a frame.
    bool isUnderWay() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_state == State::kHeld || m_state == State::kEnded; });
        return m_state == State::kHeld;
    }
    void letGo() {
        const std::lock_guard lock(m_mutex);
        m_state = State::kClosing;
        m_changed.notify_all();
    }

 private:
    enum class State { kIdle, kCalling, kHeld, kClosing, kEnded };
    std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = State::kIdle;
};

void closeWhileWaiting(Trial& trial, Stage& stage, Playing& playing) {
    AsyncClip async(playing.clip());
    if (!async.isOpen()) {
        return;
    }
    HeldCall call;
    stage.host().setHook([&](Service service) {
        if (service == Service::kCreatePPix) {
            call.hold();
        }
    });
    const host::PrTime time = playing.frameTime(playing.someFrames(trial, 3).back());
    const host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}};
    std::thread waiting([&] {
        call.begin();
        (void)async.getFrame(time, wanted);
        call.end();
    });
    if (call.isUnderWay()) {
        call.letGo();
        (void)async.flush();
        (void)async.close();
    }
    waiting.join();
    if (async.isOpen()) {
        (void)async.flush();
        (void)async.close();
    }
    stage.host().setHook({});
}

void threadsCloseWhileWaiting(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& first) {
        (void)first.flush();
        (void)first.close();
        const auto before = stage.host().balance().frames;
        for (int round = 0; round < 4; ++round) {
            closeWhileWaiting(trial, stage, playing);
        }
        if (stage.host().balance().frames > before) {
            trial.fail({.call = "aiFlush, aiClose while another thread is in aiGetFrame",
                        .clip = playing.path(),
                        .seen = "a frame was left with the plug-in"});
        }
        const AsyncClip again(playing.clip());
        if (again.isOpen()) {
            initiateFrame(playing, again, 0, playing.formats().front());
            compareAsyncFrame(trial, playing, again, 0, playing.formats().front(),
                              " behind aiClose while another thread was in aiGetFrame");
        }
    });
}

const Registered kThreadsCloseWhileWaiting(
    {"threads.close-while-waiting", 8,
     "aiFlush and aiClose while another thread is still in aiGetFrame harm nothing.",
     "The host closes once, when its user closes the project, whatever is still under way.",
     threadsCloseWhileWaiting});

}  // namespace
}  // namespace simhost::tool::validate
