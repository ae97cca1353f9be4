// The simulated host: the services that a plug-in calls, strict where the real host is, with everything
// counted. It knows what the plug-in holds (HostBalance), what it did wrong (violations), in which order it
// called (trace), and can be told to fail (faults).
//
// One Host lives at a time in a process, because the host's functions carry no context. Its services may be
// called from any thread; so may its own functions unless they say otherwise. The Host must outlive the
// plug-in's use of it.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "host/result_codes.h"
#include "host/std_parms.h"
#include "simhost/frame_buffer.h"
#include "simhost/host_balance.h"
#include "simhost/host_profile.h"
#include "simhost/host_tables.h"
#include "simhost/service.h"
#include "simhost/violation.h"

namespace simhost {

/// What the host spends on watching. Benchmarks switch it off, and reuse frame memory as the real host does.
struct HostOptions {
    bool poisonFrames = true;  ///< fill new frames with poison, check padding and guards at the end
    /// What the pixels of a new frame hold: two different ones tell whether every pixel is written.
    std::uint8_t pixelPoison = FrameBuffer::kPixelPoison;
    bool keepTrace = true;                                   ///< remember every call
    std::int64_t largestFrameBytes = std::int64_t{1} << 31;  ///< larger frames are refused as out of memory
    bool recycleFrames = false;  ///< keep the memory of disposed frames for the next ones of the same shape
};

/// Lets calls fail. The plan counts the calls it applies to from the moment it is installed.
struct FaultPlan {
    std::optional<Service> service;  ///< none: every service
    std::string detail;              ///< only calls with this detail (suites: their name); empty: all
    std::uint64_t nth = 1;           ///< the first call that fails, counted from 1
    std::int32_t result =
        host::kSuiteFailed;   ///< what it answers; services that answer a pointer answer null
    bool fromThenOn = false;  ///< every later call fails too
};

/// One call of a service.
struct ServiceCall {
    Service service;
    std::string detail;  ///< suites: the name; frames: the pixel format's identifier; else empty
    std::int32_t result = 0;
    std::thread::id thread;
};

/// One call of the error suite.
struct HostEvent {
    std::uint32_t type = 0;
    std::string title;        ///< UTF-8
    std::string description;  ///< UTF-8
};

class Host {
 public:
    /// Throws std::logic_error when another Host lives.
    explicit Host(HostProfile profile = defaultProfile(), HostOptions options = {});
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    /// The living Host, or null.
    static Host* current() noexcept;

    const HostProfile& profile() const noexcept { return m_profile; }

    /// A standard parameter record for one call. The tables it leads to live as long as the Host.
    host::imStdParms stdParms() const noexcept;
    const host::SPBasicSuite* basicSuite() const noexcept;

    // --- what the plug-in did ---
    HostBalance balance() const;
    std::vector<Violation> violations() const;  ///< of rules that were broken so far, in order; at most 1000
    std::vector<HostEvent> events() const;
    std::vector<ServiceCall> trace() const;  ///< in order; empty with keepTrace off
    void clearTrace();
    std::uint64_t calls(Service service) const;  ///< number of calls so far, failed ones included
    std::uint64_t totalCalls() const;
    /// True when nothing is held and no rule was broken.
    bool isClean() const;
    /// What is held and what was broken, one line each; empty when clean.
    std::string report() const;
    /// Notes a broken rule. For the parts of the simulated host that play the host's side.
    void addViolation(Violation violation);

    // --- what the host shall do ---
    void addFault(FaultPlan plan);
    void clearFaults();
    /// Number of calls that a fault made fail.
    std::uint64_t injectedFaults() const;
    /// Called at the start of every service call, on the calling thread, without a lock; it may block. Set it
    /// while no call runs.
    void setHook(std::function<void(Service)> hook);
    void setOppositeOrigins(bool opposite);
    bool oppositeOrigins() const noexcept { return m_oppositeOrigins; }
    void setTicksPerSecond(std::int64_t ticks);
    std::int64_t ticksPerSecond() const noexcept { return m_ticksPerSecond; }

    // --- the host's own use of what the plug-in gave it ---
    /// Takes a frame that the plug-in has delivered. Null, with a violation, for a handle that is no live
    /// frame.
    std::shared_ptr<FrameBuffer> takeDelivered(host::PPixHand frame, const char* call = "imGetSourceVideo");
    /// The host needs a delivered frame no more; checks its guards.
    void releaseDelivered(const std::shared_ptr<FrameBuffer>& frame);
    /// Size of a live block, or nothing.
    std::optional<std::uint32_t> blockSize(const void* block) const;
    /// Frees a block as the host does when the plug-in has handed it over. False, with a violation, for no
    /// live block.
    bool freeBlock(void* block, const char* call = "disposePtr");

 private:
    friend struct HostServices;  // the functions in the tables

    struct Block {
        std::unique_ptr<std::uint8_t[]> memory;  // guard, `size` bytes, guard
        std::uint32_t size = 0;
    };
    struct ActiveFault {
        FaultPlan plan;
        std::uint64_t seen = 0;
    };

    // Counts and traces a call and decides whether it fails: the result to answer then.
    std::optional<std::int32_t> begin(Service service, const char* detail = "");
    // The same for a function of a suite, which must be held.
    std::optional<std::int32_t> beginSuiteCall(Service service, Suite suite, const char* detail = "");
    void violationLocked(Violation violation);
    using Frames = std::unordered_map<host::PPixHand, std::shared_ptr<FrameBuffer>>;
    // False, with a violation, for no frame and for one that was delivered.
    bool usableLocked(Frames::const_iterator frame, const char* call);

    void* newBlock(std::uint32_t size, bool cleared);
    std::shared_ptr<FrameBuffer> makeFrame(const PixelLayout& layout, std::int32_t width,
                                           std::int32_t height);
    void retireFrameLocked(std::shared_ptr<FrameBuffer> frame);

    const HostProfile m_profile;
    const HostOptions m_options;
    host::piSuites m_piSuites{};
    std::function<void(Service)> m_hook;
    std::atomic<bool> m_oppositeOrigins;
    std::atomic<std::int64_t> m_ticksPerSecond;

    mutable std::mutex m_mutex;  // guards everything below; nothing foreign is called while it is held
    std::array<std::uint64_t, kServiceCount> m_calls{};
    std::uint64_t m_totalCalls = 0;
    std::uint64_t m_injected = 0;
    std::vector<ActiveFault> m_faults;
    std::vector<ServiceCall> m_trace;
    std::vector<Violation> m_violations;
    std::vector<HostEvent> m_events;
    std::array<std::int64_t, kSuiteCount> m_heldSuites{};
    std::unordered_map<const void*, Block> m_blocks;
    Frames m_frames;
    std::vector<std::shared_ptr<FrameBuffer>> m_spareFrames;
};

}  // namespace simhost
