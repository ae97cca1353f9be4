#include "simhost/host.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

#include "host/suites.h"

namespace simhost {
namespace {

constexpr std::uint8_t kBlockPoison = 0xCB;
constexpr std::uint8_t kBlockGuard = 0xEB;
constexpr std::size_t kBlockGuardBytes = 64;
// Records of a host that knows no end of a bad plug-in's noise.
constexpr std::size_t kMostViolations = 1000;
constexpr std::size_t kMostSpareFrames = 16;
constexpr std::int32_t kPiInterfaceVersion = 9;

std::atomic<Host*> g_current{nullptr};

}  // namespace

Host* Host::current() noexcept {
    return g_current.load(std::memory_order_acquire);
}

Host::Host(HostProfile profile, HostOptions options)
    : m_profile(std::move(profile)),
      m_options(options),
      m_oppositeOrigins(m_profile.oppositeOrigins),
      m_ticksPerSecond(m_profile.ticksPerSecond) {
    m_piSuites.piInterfaceVer = kPiInterfaceVersion;
    m_piSuites.memFuncs = &memoryTable();
    m_piSuites.utilFuncs = &utilityTable();
    Host* none = nullptr;
    if (!g_current.compare_exchange_strong(none, this)) {
        throw std::logic_error("a simulated host exists already in this process");
    }
}

Host::~Host() {
    g_current.store(nullptr, std::memory_order_release);
}

host::imStdParms Host::stdParms() const noexcept {
    host::imStdParms parms{};
    parms.imInterfaceVer = m_profile.interfaceVersion;
    parms.piSuites = &m_piSuites;
    return parms;
}

const host::SPBasicSuite* Host::basicSuite() const noexcept {
    return &basicTable();
}

// ---- what the plug-in did ----

HostBalance Host::balance() const {
    const std::lock_guard lock(m_mutex);
    HostBalance out;
    for (std::size_t i = 0; i < kSuiteCount; ++i) {
        if (m_heldSuites[i] != 0) {
            const HostSuite& suite = hostSuites()[i];
            out.suites[std::string(suite.name) + " " + std::to_string(suite.version)] = m_heldSuites[i];
        }
    }
    for (const auto& [handle, frame] : m_frames) {
        if (frame->delivered) {
            ++out.deliveredFrames;
        } else {
            ++out.frames;
            out.frameBytes += frame->allocatedBytes();
        }
    }
    out.blocks = m_blocks.size();
    for (const auto& [address, block] : m_blocks) {
        out.blockBytes += block.size;
    }
    return out;
}

std::vector<Violation> Host::violations() const {
    const std::lock_guard lock(m_mutex);
    return m_violations;
}

std::vector<HostEvent> Host::events() const {
    const std::lock_guard lock(m_mutex);
    return m_events;
}

std::vector<ServiceCall> Host::trace() const {
    const std::lock_guard lock(m_mutex);
    return m_trace;
}

void Host::clearTrace() {
    const std::lock_guard lock(m_mutex);
    m_trace.clear();
}

std::uint64_t Host::calls(Service service) const {
    const std::lock_guard lock(m_mutex);
    return m_calls[static_cast<std::size_t>(service)];
}

std::uint64_t Host::totalCalls() const {
    const std::lock_guard lock(m_mutex);
    return m_totalCalls;
}

bool Host::isClean() const {
    return report().empty();
}

std::string Host::report() const {
    std::string out = balance().report();
    for (const Violation& violation : violations()) {
        out += violation.text() + "\n";
    }
    return out;
}

void Host::addViolation(Violation violation) {
    const std::lock_guard lock(m_mutex);
    violationLocked(std::move(violation));
}

void Host::violationLocked(Violation violation) {
    if (m_violations.size() < kMostViolations) {
        m_violations.push_back(std::move(violation));
    }
}

// ---- what the host shall do ----

void Host::addFault(FaultPlan plan) {
    const std::lock_guard lock(m_mutex);
    m_faults.push_back({std::move(plan), 0});
}

void Host::clearFaults() {
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
}

std::uint64_t Host::injectedFaults() const {
    const std::lock_guard lock(m_mutex);
    return m_injected;
}

void Host::setHook(std::function<void(Service)> hook) {
    m_hook = std::move(hook);
}
void Host::setOppositeOrigins(bool opposite) {
    m_oppositeOrigins = opposite;
}
void Host::setTicksPerSecond(std::int64_t ticks) {
    m_ticksPerSecond = ticks;
}

std::optional<std::int32_t> Host::begin(Service service, const char* detail) {
    if (m_hook) {
        m_hook(service);
    }
    const std::lock_guard lock(m_mutex);
    ++m_calls[static_cast<std::size_t>(service)];
    ++m_totalCalls;
    std::optional<std::int32_t> fails;
    for (ActiveFault& fault : m_faults) {
        const FaultPlan& plan = fault.plan;
        if ((plan.service && *plan.service != service) || (!plan.detail.empty() && plan.detail != detail)) {
            continue;
        }
        ++fault.seen;
        if (fault.seen == plan.nth || (plan.fromThenOn && fault.seen > plan.nth)) {
            fails = plan.result;
        }
    }
    m_injected += fails ? 1u : 0u;
    if (m_options.keepTrace) {
        m_trace.push_back({service, detail, fails.value_or(0), std::this_thread::get_id()});
    }
    return fails;
}

std::optional<std::int32_t> Host::beginSuiteCall(Service service, Suite suite, const char* detail) {
    {
        const std::lock_guard lock(m_mutex);
        const auto i = static_cast<std::size_t>(suite);
        if (m_heldSuites[i] == 0) {
            violationLocked({Rule::kSuitesHeld, serviceName(service),
                             std::string("'") + hostSuites()[i].name + "' is not held"});
        }
    }
    return begin(service, detail);
}

// ---- memory blocks ----

void* Host::newBlock(std::uint32_t size, bool cleared) {
    Block block;
    block.size = size;
    const std::size_t total = std::size_t{size} + 2 * kBlockGuardBytes;
    block.memory.reset(new (std::nothrow) std::uint8_t[total]);
    if (!block.memory) {
        return nullptr;
    }
    std::memset(block.memory.get(), kBlockGuard, total);
    std::uint8_t* address = block.memory.get() + kBlockGuardBytes;
    std::memset(address, cleared ? 0 : kBlockPoison, size);
    const std::lock_guard lock(m_mutex);
    m_blocks.emplace(address, std::move(block));
    return address;
}

std::optional<std::uint32_t> Host::blockSize(const void* block) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_blocks.find(block);
    return found == m_blocks.end() ? std::nullopt : std::optional(found->second.size);
}

bool Host::freeBlock(void* block, const char* call) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_blocks.find(block);
    if (found == m_blocks.end()) {
        violationLocked({Rule::kMemoryLive, call, "no live block"});
        return false;
    }
    const std::uint8_t* before = found->second.memory.get();
    const std::uint8_t* behind = before + kBlockGuardBytes + found->second.size;
    const auto intact = [](const std::uint8_t* guard) {
        return std::all_of(guard, guard + kBlockGuardBytes, [](std::uint8_t b) { return b == kBlockGuard; });
    };
    if (!intact(before) || !intact(behind)) {
        violationLocked({Rule::kMemoryBounds, call,
                         "bytes written outside a block of " + std::to_string(found->second.size)});
    }
    m_blocks.erase(found);
    return true;
}

// ---- frames ----

bool Host::usableLocked(Frames::const_iterator frame, const char* call) {
    if (frame == m_frames.end()) {
        violationLocked({Rule::kFramesLive, call, "no live frame"});
        return false;
    }
    if (frame->second->delivered) {
        violationLocked({Rule::kFramesOwner, call, "the frame was delivered"});
        return false;
    }
    return true;
}

std::shared_ptr<FrameBuffer> Host::makeFrame(const PixelLayout& layout, std::int32_t width,
                                             std::int32_t height) {
    if (m_options.recycleFrames) {
        const std::lock_guard lock(m_mutex);
        const auto fits = [&](const std::shared_ptr<FrameBuffer>& spare) {
            return &spare->layout() == &layout && spare->width() == width && spare->height() == height;
        };
        const auto found = std::find_if(m_spareFrames.begin(), m_spareFrames.end(), fits);
        if (found != m_spareFrames.end()) {
            auto spare = std::move(*found);
            m_spareFrames.erase(found);
            spare->delivered = false;
            if (m_options.poisonFrames) {
                spare->poison(m_options.pixelPoison);
            }
            return spare;
        }
    }
    auto made =
        std::make_shared<FrameBuffer>(layout, width, height, m_profile.rowBytes, m_options.largestFrameBytes);
    if (m_options.poisonFrames) {
        made->poison(m_options.pixelPoison);
    }
    return made;
}

void Host::retireFrameLocked(std::shared_ptr<FrameBuffer> frame) {
    if (m_options.poisonFrames) {
        const FrameDamage damage = frame->damage();
        const std::string which = std::string("frame ") + frame->layout().name + " " +
                                  std::to_string(frame->width()) + " x " + std::to_string(frame->height());
        if (!damage.outside.empty()) {
            violationLocked({Rule::kFramesBounds, "", damage.outside, which});
        }
        if (!damage.padding.empty()) {
            violationLocked({Rule::kFramesPadding, "", damage.padding, which});
        }
    }
    if (m_options.recycleFrames && m_spareFrames.size() < kMostSpareFrames) {
        m_spareFrames.push_back(std::move(frame));
    }
}

std::shared_ptr<FrameBuffer> Host::takeDelivered(host::PPixHand frame, const char* call) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_frames.find(frame);
    if (found == m_frames.end()) {
        violationLocked({Rule::kFramesLive, call, "a frame was delivered that is not live"});
        return nullptr;
    }
    if (found->second->delivered) {
        violationLocked({Rule::kFramesDeliveredOnce, call, "a frame was delivered twice"});
        return nullptr;
    }
    found->second->delivered = true;
    return found->second;
}

void Host::releaseDelivered(const std::shared_ptr<FrameBuffer>& frame) {
    const std::lock_guard lock(m_mutex);
    if (m_frames.erase(frame->handle()) != 0) {
        retireFrameLocked(frame);
    }
}

}  // namespace simhost
