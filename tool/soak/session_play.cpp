#include "tool/soak/session_play.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <fstream>
#include <thread>

#include "host/result_codes.h"
#include "simhost/host.h"
#include "simhost/host_profile.h"
#include "simhost/importer.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/shared/base/tool_error.h"
#include "tool/soak/session_clips.h"
#include "tool/soak/session_deck.h"

namespace simhost::tool {
namespace {

constexpr const char* kCodecFaults = "ORVANTIS_STANDIN_FAIL";
// What the stand-in answers to a close without an initialisation: all that was begun has been given back.
constexpr std::int32_t kCodecAtRest = 1001;

void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream file(pathFromUtf8(path), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw ToolError(kNoOutput, "cannot write '" + path + "'");
    }
}

// Faults of the plug-in and of the machine, asked for so that a test can see them noticed.
void sabotageNow(const std::string& what, const Importer& importer, const std::string& path) {
    const host::imStdParms parameters = importer.host().stdParms();
    const auto* const memory = parameters.piSuites->memFuncs;
    if (what == "block") {
        (void)memory->newPtr(16);
    } else if (what == "twice") {
        void* const block = memory->newPtr(16);
        memory->disposePtr(block);
        memory->disposePtr(block);
    } else if (what == "file") {
        Clip clip(importer, path);
        (void)clip.getInfo(0);
        clip.forget();
    } else if (what == "handle") {
        loseHandle();
    } else if (what == "crash") {
        volatile int* const nowhere = nullptr;
        *nowhere = 1;  // NOLINT(clang-analyzer-core.NullDereference): that is the crash
    } else if (what == "hang") {
        for (;;) {
            std::this_thread::sleep_for(std::chrono::hours(1));
        }
    }
}

HostOptions sessionHost() {
    HostOptions options;
    options.keepTrace = false;
    options.largestFrameBytes = 1 << 20;
    return options;
}

// The decks of a session on their threads.
void playDecks(const SessionPlan& plan, std::deque<SessionDeck>& decks) {
    std::size_t done = 0;
    if (plan.shareAsync) {
        done = decks[0].runToAsync(plan.threads[0]);
        for (std::size_t i = 1; i < decks.size(); ++i) {
            decks[i].useAsyncOf(decks[0]);
        }
    }
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i < decks.size(); ++i) {
        threads.emplace_back([&, i] { decks[i].run(plan.threads[i]); });
    }
    decks[0].run({plan.threads[0].begin() + static_cast<std::ptrdiff_t>(done), plan.threads[0].end()});
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace

const std::vector<NamedCount> kSessionCounts = {
    {"sessions", &SessionCounts::sessions},       {"calls", &SessionCounts::calls},
    {"refused", &SessionCounts::refused},         {"frames", &SessionCounts::frames},
    {"asyncFrames", &SessionCounts::asyncFrames}, {"sampleFrames", &SessionCounts::sampleFrames},
    {"faults", &SessionCounts::faults},           {"damaged", &SessionCounts::damaged},
    {"threaded", &SessionCounts::threaded}};

void SessionCounts::add(const SessionCounts& other) {
    for (const NamedCount& count : kSessionCounts) {
        this->*count.member += other.*count.member;
    }
}

SessionStage::SessionStage(const Plugin& plugin, std::string folderUtf8, const std::string& codecFile)
    : m_plugin(plugin),
      m_folder(std::move(folderUtf8)),
      m_files(reinterpret_cast<const void*>(plugin.entry())) {
    for (const SessionClip& clip : sessionClips()) {
        writeBytes(m_folder + "/" + clip.name + ".avi", clip.bytes);
    }
    if (!codecFile.empty()) {
        // The one that the plug-in uses already.
        m_codec = SharedLibrary(codecFile);
        m_codecClose = reinterpret_cast<std::int32_t (*)()>(m_codec.find("orvantis_library_close"));
    }
    // The log, which stays open until the module is unloaded, is opened here.
    Host host(defaultProfile(), sessionHost());
    const Importer importer(host, m_plugin);
    (void)importer.init();
    (void)importer.shutdown();
}

SessionStage::~SessionStage() = default;

std::string SessionStage::placeFile(const SessionPlan& plan) {
    const SessionClip& clip = sessionClips()[plan.clip];
    if (plan.absent) {
        return m_folder + "/absent.avi";
    }
    if (!plan.damaged()) {
        return m_folder + "/" + clip.name + ".avi";
    }
    std::vector<std::uint8_t> bytes = clip.bytes;
    for (const BytePatch& patch : plan.patches) {
        std::copy(patch.bytes.begin(), patch.bytes.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(patch.offset));
    }
    if (plan.cutAt) {
        bytes.resize(*plan.cutAt);
    }
    std::string path = m_folder + "/damaged.avi";
    writeBytes(path, bytes);
    return path;
}

// The library's own account, brought back to nothing.
std::string SessionStage::codecLeftovers(const SessionPlan& plan) const {
    if (m_codecClose == nullptr) {
        return {};
    }
    constexpr std::uint64_t kMostCloses = 1000;
    std::uint64_t initialisations = 0;
    std::int32_t answer = m_codecClose();
    for (; answer == 0 && initialisations < kMostCloses; answer = m_codecClose()) {
        ++initialisations;
    }
    if (answer != kCodecAtRest) {
        return "left behind: a session of the codec library";
    }
    // A library that opened no session wants no close of either kind.
    const bool opensFail = std::any_of(plan.codecFaults.begin(), plan.codecFaults.end(),
                                       [](const std::string& fault) { return fault.starts_with("open:"); });
    return initialisations == 0 || opensFail
               ? std::string()
               : "left behind: " + std::to_string(initialisations) + " initialisations of the codec library";
}

SessionOutcome SessionStage::play(const SessionPlan& plan, std::string* log, const std::string& sabotage) {
    SessionOutcome out;
    const std::string path = placeFile(plan);
    std::string faults;
    for (const std::string& fault : plan.codecFaults) {
        faults += "," + fault;
    }
    // The remark makes the library count anew.
    faults = faults.empty() ? faults : "#" + std::to_string(plan.number) + faults;
    m_files.begin();

    Host host(builtinProfiles()[plan.profile], sessionHost());
    Importer importer(host, m_plugin);
    importer.setRecordFill(plan.recordFill);
    SessionLedger ledger;
    std::vector<std::string> logs(plan.threads.size());
    {
        std::deque<SessionDeck> decks;
        for (std::size_t i = 0; i < plan.threads.size(); ++i) {
            decks.emplace_back(importer, plan, path, ledger, log == nullptr ? nullptr : &logs[i]);
        }
        const auto strike = [&] {
            for (const FaultPlan& fault : plan.hostFaults) {
                host.addFault(fault);
            }
            m_files.strike(plan.readFault);
            if (!faults.empty()) {
                setProcessEnvironment(kCodecFaults, faults);
            }
        };
        if (plan.faultsAtStart) {
            strike();
        }
        const std::int32_t init = importer.init().result;
        if (!plan.faultsAtStart) {
            strike();
        }
        if (plan.unharmed() && init != host::imNoErr) {
            ledger.addWrong("imInit was answered " + std::to_string(init));
        }
        sabotageNow(sabotage, importer, path);
        playDecks(plan, decks);
        std::int32_t shutdown = host::imNoErr;
        if (plan.closeBehindShutdown) {
            shutdown = importer.shutdown();
        }
        // Who uses the asynchronous importer of another is through with it.
        for (SessionDeck& deck : decks) {
            deck.close();
        }
        if (!plan.closeBehindShutdown) {
            shutdown = importer.shutdown();
        }
        if (shutdown != host::imNoErr) {
            ledger.addWrong("imShutdown was answered " + std::to_string(shutdown));
        }
        for (const SessionDeck& deck : decks) {
            out.counts.calls += deck.counts().calls;
            out.counts.refused += deck.counts().refused;
            out.counts.frames += deck.counts().frames;
            out.counts.asyncFrames += deck.counts().asyncFrames;
            out.counts.sampleFrames += deck.counts().sampleFrames;
        }
        if (log != nullptr) {
            *log += plan.text() + "imInit: " + std::to_string(init) + "\n";
            for (std::size_t i = 0; i < logs.size(); ++i) {
                *log += "thread " + std::to_string(i + 1) + "\n" + logs[i];
            }
            *log += "imShutdown: " + std::to_string(shutdown) + "\n";
        }
    }
    if (!faults.empty()) {
        setProcessEnvironment(kCodecFaults, "");
    }
    out.violations = ledger.wrong();
    for (const Violation& violation : host.violations()) {
        out.violations.push_back(violation.text());
    }
    for (const Violation& violation : host.balance().violations()) {
        out.violations.push_back(violation.text());
    }
    if (std::string left = codecLeftovers(plan); !left.empty()) {
        out.violations.push_back(std::move(left));
    }
    if (const std::string held = m_files.heldOf(path); !held.empty()) {
        out.violations.push_back("left behind: " + held);
    }
    out.counts.sessions = 1;
    out.counts.faults = host.injectedFaults() + m_files.struck();
    out.counts.damaged = plan.damaged() ? 1 : 0;
    out.counts.threaded = plan.threads.size() > 1 ? 1 : 0;
    if (log != nullptr) {
        for (const std::string& violation : out.violations) {
            *log += "wrong: " + violation + "\n";
        }
        *log += out.violations.empty() ? "nothing is wrong\n" : "";
    }
    return out;
}

}  // namespace simhost::tool
