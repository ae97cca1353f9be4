#include "tool/soak/session_plan.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "simhost/host_profile.h"
#include "tool/soak/session_clips.h"
#include "tool/soak/session_random.h"

namespace simhost::tool {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

// Those that come back to the caller. The others give something back, which no plug-in can do again.
constexpr Service kServicesThatFail[] = {
    Service::kNewPtr,          Service::kNewPtrClear,       Service::kSetPtrSize,
    Service::kGetPtrSize,      Service::kGetSPBasicSuite,   Service::kAcquireSuite,
    Service::kSetEventString,  Service::kCreatePPix,        Service::kGetPixels,
    Service::kGetRowBytes,     Service::kGetTicksPerSecond, Service::kFormatIsOriginTopLeft,
    Service::kConvertFrom8Bit, Service::kConvertFrom16Bit,  Service::kConvertFrom24Bit,
    Service::kConvertFrom32Bit};

// Those of the codec library, with the same exception.
constexpr const char* kCodecFunctions[] = {"library_init",     "open",       "decompress_query",
                                           "decompress_begin", "decompress", "decompress",
                                           "decompress_end",   "get_string", "get_param"};

// What the codec delivers of every video, and of some.
constexpr std::uint32_t kFormatsOfAll[] = {
    host::PrPixelFormat_BGRA_4444_8u, host::PrPixelFormat_ARGB_4444_8u, host::PrPixelFormat_BGRX_4444_8u,
    host::PrPixelFormat_XRGB_4444_8u, host::PrPixelFormat_RGB_444_10u,  host::PrPixelFormat_BGRA_4444_16u};
constexpr std::uint32_t kFormatsOfSome[] = {
    host::PrPixelFormat_YUYV_422_8u_601,  host::PrPixelFormat_UYVY_422_8u_709,
    host::PrPixelFormat_VUYX_4444_8u,     host::PrPixelFormat_VUYA_4444_8u,
    host::PrPixelFormat_V210_422_10u_601, host::PrPixelFormat_BGRX_4444_16u};

const char* actName(SessionAct act) {
    constexpr const char* kNames[] = {"imOpenFile8",
                                      "imGetInfo8",
                                      "imGetInfo8 of all streams",
                                      "imAnalysis",
                                      "imDataRateAnalysis",
                                      "imGetIndPixelFormat to the end",
                                      "imGetIndPixelFormat",
                                      "imGetSourceVideo",
                                      "imImportAudio7",
                                      "imGetAudioChannelLayout",
                                      "imQuietFile",
                                      "imCloseFile",
                                      "imCreateAsyncImporter",
                                      "aiInitiateAsyncRead",
                                      "aiGetFrame",
                                      "aiCancelAsyncRead",
                                      "aiFlush",
                                      "aiClose",
                                      "selector without records",
                                      "asynchronous selector without a record",
                                      "imGetIndFormat",
                                      "imGetSubTypeNames",
                                      "imInit"};
    return kNames[static_cast<std::size_t>(act)];
}

// The course of one host thread.
class Course {
 public:
    Course(SessionRandom& random, const SessionClip& clip, bool mayInit, bool sharedAsync)
        : m_random(random), m_clip(clip), m_mayInit(mayInit), m_sharedAsync(sharedAsync) {}

    std::vector<SessionAction> draw(std::size_t count) {
        // Most hosts begin in order; the others are what makes the orders that nobody thought of.
        if (!m_random.oneIn(12)) {
            add(SessionAct::kOpen, static_cast<std::int64_t>(m_random.oneIn(8) ? m_random.below(4) : 0));
            if (!m_random.oneIn(12)) {
                add(m_random.oneIn(4) ? SessionAct::kWalk : SessionAct::kInfo, 0);
            }
            if (m_clip.frames > 0 && m_random.oneIn(2)) {
                add(SessionAct::kFormats, 0);
            }
            if (m_sharedAsync || m_random.oneIn(2)) {
                add(SessionAct::kAsyncOpen, 0);
            }
        }
        while (m_actions.size() < count) {
            drawOne();
        }
        return std::move(m_actions);
    }

 private:
    SessionAction& add(SessionAct act, std::int64_t number) {
        m_actions.emplace_back();
        m_actions.back().act = act;
        m_actions.back().number = number;
        return m_actions.back();
    }

    void drawOne() {
        const std::uint64_t what = m_random.below(100);
        if (what < 24) {
            addFrame(SessionAct::kFrame);
        } else if (what < 36) {
            addSound();
        } else if (what < 62) {
            addAsync();
        } else if (what < 86) {
            addQuestion();
        } else if (what < 94) {
            addLife();
        } else {
            addMistake();
        }
    }

    void addFrame(SessionAct act) {
        SessionAction& action = add(act, static_cast<std::int64_t>(m_random.below(m_clip.frames + 2)));
        if (m_random.oneIn(16)) {
            action.exactTime = true;
            action.number =
                m_random.oneOf({std::int64_t{-1}, kLeast, kMost, kMost - 1, std::int64_t{1},
                                static_cast<std::int64_t>(m_random.below(std::uint64_t{1} << 40))});
        }
        const std::size_t count = m_random.oneIn(24) ? 0 : m_random.oneIn(6) ? 1 + m_random.below(3) : 1;
        for (std::size_t i = 0; i < count; ++i) {
            action.formats.push_back(m_random.oneIn(10)  ? anyFormat()
                                     : m_random.oneIn(3) ? m_random.oneOf(kFormatsOfSome)
                                                         : m_random.oneOf(kFormatsOfAll));
        }
        if (m_random.oneIn(12)) {
            action.width = m_random.oneOf({0, 1, 7, 8, -1, 65536});
            action.height = m_random.oneOf({0, 1, 5, 6, -1, 65536});
        }
    }

    std::uint32_t anyFormat() {
        return m_random.oneIn(4) ? static_cast<std::uint32_t>(m_random.next())
                                 : host::kPixelFormats[m_random.below(std::size(host::kPixelFormats))].code;
    }

    void addSound() {
        const auto end = static_cast<std::uint64_t>(m_clip.sampleFrames);
        std::int64_t position = m_random.oneIn(3) ? -1 : static_cast<std::int64_t>(m_random.below(end + 40));
        if (m_random.oneIn(24)) {
            position = m_random.oneOf({kMost, kLeast, kMost / 2, std::int64_t{-2}, std::int64_t{1} << 32});
        }
        add(SessionAct::kSound, position).size = static_cast<std::uint32_t>(m_random.below(120));
    }

    void addAsync() {
        const std::uint64_t what = m_random.below(24);
        // One that is shared is closed when no thread uses it any more.
        const bool oneMoreFrame = what >= 22 && m_sharedAsync;
        if (what < 10) {
            addFrame(SessionAct::kAsyncRead);
        } else if (what < 19 || oneMoreFrame) {
            addFrame(SessionAct::kAsyncFrame);
        } else if (what < 20) {
            addFrame(SessionAct::kAsyncCancel);
        } else if (what < 22) {
            add(SessionAct::kAsyncFlush, 0);
        } else {
            add(what < 23 ? SessionAct::kAsyncOpen : SessionAct::kAsyncClose, 0);
        }
    }

    void addQuestion() {
        switch (m_random.below(8)) {
            case 0:
                add(SessionAct::kWalk, 0);
                break;
            case 1:
                add(SessionAct::kAnalysis, m_random.oneOf<std::int64_t>({-1, 0, 1, 2, 40, 400, 4096}));
                break;
            case 2:
                add(SessionAct::kRates, m_random.oneOf<std::int64_t>({-1, -1, 0, 7, 8, 40, 4096}));
                break;
            case 3:
                add(SessionAct::kFormats, 0);
                break;
            case 4:
                add(SessionAct::kFormat, m_random.oneOf<std::int64_t>({0, 1, 5, 40, 0x7FFFFFFF, 0xFFFFFFFF}));
                break;
            case 5:
                add(SessionAct::kLayout, 0);
                break;
            default:
                add(SessionAct::kInfo, m_random.oneIn(4)
                                           ? m_random.oneOf<std::int64_t>({-1, 1, 2, 3, 0x7FFFFFFF})
                                           : static_cast<std::int64_t>(0));
        }
    }

    void addLife() {
        switch (m_random.below(8)) {
            case 0:
                add(SessionAct::kClose, 0);
                break;
            case 1:
                add(SessionAct::kIndFormat, m_random.oneOf<std::int64_t>({0, 1, 99}));
                break;
            case 2:
                add(SessionAct::kSubTypes, m_random.oneIn(3)
                                               ? static_cast<std::int64_t>(m_random.below(1u << 31))
                                               : std::int64_t{host::kFileTypeAviv});
                break;
            case 3:
            case 4:
                add(SessionAct::kQuiet, 0);
                break;
            default:
                add(SessionAct::kOpen, static_cast<std::int64_t>(m_random.oneIn(6) ? m_random.below(4) : 0));
        }
    }

    void addMistake() {
        if (m_mayInit && m_random.oneIn(6)) {
            add(SessionAct::kInit, 0);
            return;
        }
        // imInit and imShutdown have a place of their own.
        if (m_random.oneIn(3)) {
            add(SessionAct::kAsyncCall, m_random.oneIn(4) ? static_cast<std::int64_t>(m_random.next() >> 33)
                                                          : static_cast<std::int64_t>(m_random.below(9)))
                .size = static_cast<std::uint32_t>(m_random.below(2));
            return;
        }
        std::int64_t selector = m_random.oneIn(3) ? static_cast<std::int32_t>(m_random.next())
                                                  : static_cast<std::int64_t>(2 + m_random.below(68));
        if (selector == 0 || selector == 1) {
            selector = -1;
        }
        add(SessionAct::kSelector, selector);
    }

    SessionRandom& m_random;
    const SessionClip& m_clip;
    bool m_mayInit;
    bool m_sharedAsync;
    std::vector<SessionAction> m_actions;
};

BytePatch drawPatch(SessionRandom& random, const SessionClip& clip) {
    BytePatch patch;
    // Most of what a file says of itself stands before its pictures, or behind them.
    const std::size_t size = clip.bytes.size();
    const std::uint64_t where = random.below(4);
    const std::size_t head = std::min<std::size_t>(size, 600);
    patch.offset = where < 2    ? random.below(head)
                   : where == 2 ? random.below(size)
                                : size - 1 - random.below(std::min<std::size_t>(size, 400));
    switch (random.below(5)) {
        case 0:
            patch.bytes = {static_cast<std::uint8_t>(random.next())};
            break;
        case 1:
            patch.bytes = {static_cast<std::uint8_t>(clip.bytes[patch.offset] ^ (1u << random.below(8)))};
            break;
        case 2: {
            constexpr const char* kCodes[] = {"LIST", "RIFF", "idx1", "indx", "ix00",
                                              "JUNK", "strf", "00db", "01wb", "movi"};
            const char* const code = random.oneOf(kCodes);
            patch.bytes.assign(code, code + 4);
            patch.offset &= ~std::size_t{3};
            break;
        }
        default: {
            const std::uint32_t values[] = {0,
                                            1,
                                            2,
                                            0x7FFFFFFF,
                                            0x80000000,
                                            0xFFFFFFFF,
                                            0xFFFFFFF8,
                                            0xFFFF,
                                            static_cast<std::uint32_t>(size),
                                            static_cast<std::uint32_t>(random.next()),
                                            static_cast<std::uint32_t>(random.below(size + 16))};
            const std::uint32_t value = random.oneOf(values);
            for (unsigned shift = 0; shift < 32; shift += 8) {
                patch.bytes.push_back(static_cast<std::uint8_t>(value >> shift));
            }
            patch.offset &= ~std::size_t{3};
        }
    }
    patch.bytes.resize(std::min(patch.bytes.size(), size - patch.offset));
    return patch;
}

void drawDamage(SessionRandom& random, SessionPlan& plan, const SessionClip& clip) {
    if (random.oneIn(32)) {
        plan.absent = true;
        return;
    }
    const std::uint64_t patches = random.below(5);
    for (std::uint64_t i = 0; i < patches; ++i) {
        plan.patches.push_back(drawPatch(random, clip));
    }
    if (patches == 0 || random.oneIn(4)) {
        plan.cutAt = random.below(clip.bytes.size());
    }
}

std::uint64_t drawNth(SessionRandom& random) {
    return 1 + (random.oneIn(2) ? random.below(4) : random.below(60));
}

void drawFaults(SessionRandom& random, SessionPlan& plan) {
    plan.faultsAtStart = random.oneIn(4);
    if (random.oneIn(2)) {
        for (std::uint64_t i = 0, count = 1 + random.below(3); i < count; ++i) {
            FaultPlan fault;
            fault.service = random.oneOf(kServicesThatFail);
            fault.nth = drawNth(random);
            fault.fromThenOn = random.oneIn(4);
            plan.hostFaults.push_back(fault);
        }
    }
    if (random.oneIn(2)) {
        for (std::uint64_t i = 0, count = 1 + random.below(3); i < count; ++i) {
            // One after the other: the order of operands is the compiler's affair.
            std::string fault = random.oneOf(kCodecFunctions);
            fault += ":" + std::to_string(drawNth(random));
            fault += random.oneIn(6) ? "+" : "";
            plan.codecFaults.push_back(std::move(fault));
        }
    }
    if (random.oneIn(3)) {
        plan.readFault = {random.oneOf({ReadFault::Kind::kRead, ReadFault::Kind::kRead,
                                        ReadFault::Kind::kSeek, ReadFault::Kind::kOpen}),
                          drawNth(random), random.oneIn(4)};
    }
}

std::string formatList(const std::vector<std::uint32_t>& formats) {
    std::string out;
    for (const std::uint32_t format : formats) {
        char text[16];
        (void)std::snprintf(text, sizeof text, "%s0x%08X", out.empty() ? "" : ",", format);
        out += text;
    }
    return out.empty() ? "none" : out;
}

}  // namespace

std::string SessionAction::text() const {
    std::string out = actName(act);
    switch (act) {
        case SessionAct::kFrame:
        case SessionAct::kAsyncRead:
        case SessionAct::kAsyncFrame:
        case SessionAct::kAsyncCancel:
            out +=
                (exactTime ? " at tick " : " frame ") + std::to_string(number) + " as " + formatList(formats);
            if (width != 0 || height != 0) {
                out += " in " + std::to_string(width) + " x " + std::to_string(height);
            }
            break;
        case SessionAct::kSound:
            out += " at " + std::to_string(number) + ", " + std::to_string(size);
            break;
        case SessionAct::kAsyncCall:
            out += " " + std::to_string(number) + (size != 0 ? ", no importer" : "");
            break;
        case SessionAct::kOpen:
        case SessionAct::kInfo:
        case SessionAct::kAnalysis:
        case SessionAct::kRates:
        case SessionAct::kFormat:
        case SessionAct::kSelector:
        case SessionAct::kIndFormat:
        case SessionAct::kSubTypes:
            out += " " + std::to_string(number);
            break;
        default:
            break;
    }
    return out;
}

bool SessionPlan::usesAsync() const {
    return std::any_of(threads.begin(), threads.end(), [](const auto& actions) {
        return std::any_of(actions.begin(), actions.end(),
                           [](const SessionAction& action) { return action.act == SessionAct::kAsyncOpen; });
    });
}

bool SessionPlan::unharmed() const {
    return !damaged() && !anyFault() && builtinProfiles()[profile].refusedSuites.empty() &&
           builtinProfiles()[profile].ticksPerSecond > 1000 && sessionClips()[clip].playable;
}

std::string SessionPlan::text() const {
    std::string out = "session " + std::to_string(number) + "\nhost " + builtinProfiles()[profile].name +
                      ", records filled with " + std::to_string(recordFill) + "\nfile " +
                      sessionClips()[clip].name + ", " + std::to_string(sessionClips()[clip].bytes.size()) +
                      " bytes\n";
    if (absent) {
        out += "the file is not there\n";
    }
    for (const BytePatch& patch : patches) {
        out += "damage at " + std::to_string(patch.offset) + ":";
        for (const std::uint8_t byte : patch.bytes) {
            char hex[8];
            (void)std::snprintf(hex, sizeof hex, " %02X", byte);
            out += hex;
        }
        out += "\n";
    }
    if (cutAt) {
        out += "cut at " + std::to_string(*cutAt) + "\n";
    }
    const std::string when = faultsAtStart ? " from the start\n" : " behind imInit\n";
    for (const FaultPlan& fault : hostFaults) {
        out += std::string("fails: ") + serviceName(*fault.service) + ":" + std::to_string(fault.nth) +
               (fault.fromThenOn ? "+" : "") + when;
    }
    for (const std::string& fault : codecFaults) {
        out += "fails: orvantis_" + fault + when;
    }
    if (readFault) {
        constexpr const char* kKinds[] = {"read", "seek", "open"};
        out += std::string("fails: file ") + kKinds[static_cast<std::size_t>(readFault->kind)] + ":" +
               std::to_string(readFault->nth) + (readFault->fromThenOn ? "+" : "") + when;
    }
    if (closeBehindShutdown) {
        out += "files are closed behind imShutdown\n";
    }
    if (shareAsync) {
        out += "one asynchronous importer for all threads\n";
    }
    return out;
}

SessionPlan planSession(std::uint64_t seed, std::uint64_t number) {
    SessionRandom random(seed, number);
    const std::vector<SessionClip>& clips = sessionClips();
    SessionPlan plan;
    plan.number = number;
    plan.profile = random.oneIn(2) ? 0 : random.below(builtinProfiles().size());
    plan.recordFill = random.oneIn(4) ? static_cast<std::uint8_t>(random.next()) : std::uint8_t{0};
    plan.clip = random.below(clips.size());
    const SessionClip& clip = clips[plan.clip];
    if (random.oneIn(3)) {
        drawDamage(random, plan, clip);
    }
    if (random.oneIn(3)) {
        drawFaults(random, plan);
    }
    plan.closeBehindShutdown = random.oneIn(16);
    const std::size_t threads = random.oneIn(4) ? 2 + random.below(2) : 1;
    plan.shareAsync = threads > 1 && random.oneIn(2);
    for (std::size_t i = 0; i < threads; ++i) {
        plan.threads.push_back(
            Course(random, clip, threads == 1, plan.shareAsync).draw(3 + random.below(14)));
    }
    return plan;
}

bool sessionWritesLog(std::uint64_t seed, std::uint64_t number) {
    return SessionRandom(seed ^ 0x106106106u, number / kSessionGroup).oneIn(8);
}

}  // namespace simhost::tool
