#include "tool/validate/base/session_watch.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include "host/result_codes.h"
#include "simhost/session.h"
#include "tool/shared/base/crash_watch.h"
#include "tool/shared/base/output_file.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

constexpr std::uint32_t kMostAnnounced = 100;
constexpr const char* kWatchedProfiles[] = {"default", "older", "negative-rows"};

std::vector<Violation> allViolations(Stage& stage) {
    std::vector<Violation> out = stage.host().violations();
    const std::vector<Violation> held = stage.host().balance().violations();
    out.insert(out.end(), held.begin(), held.end());
    return out;
}

std::array<std::uint64_t, kServiceCount> g_usualCalls{};

}  // namespace

std::vector<host::imIndFormatRec> announcedFormats(const Importer& importer) {
    std::vector<host::imIndFormatRec> out;
    for (std::uint32_t index = 0; index < kMostAnnounced; ++index) {
        const auto answer = importer.getIndFormat(index);
        if (answer.result != host::imNoErr) {
            break;
        }
        out.push_back(answer.record);
    }
    return out;
}

namespace {

// The host shows one frame while it asks for the next, and asks again for one that it still has.
void holdFrames(const Importer& importer, const std::string& path) {
    if (const auto playing = Playing::open(importer, path); playing && playing->showsPictures()) {
        const host::imFrameFormat wanted[] = {{playing->info().vidInfo.imageWidth,
                                               playing->info().vidInfo.imageHeight,
                                               playing->formats().front()}};
        const FrameAnswer held = playing->clip().getSourceVideo(0, wanted);
        const FrameAnswer again = playing->clip().getSourceVideo(0, wanted);
    }
}

void playClips(Trial& trial, const Importer& importer,
               const std::function<void(const std::string& clip)>& behindEach) {
    (void)importer.getSupports8();
    for (const host::imIndFormatRec& format : announcedFormats(importer)) {
        (void)importer.getSubTypeNames(static_cast<std::uint32_t>(byValue(format.filetype)));
    }
    behindEach("");
    SessionOptions options;
    options.initAndShutdown = false;
    options.framesPerFormat = 2;
    options.mostFormats = 4;
    // A file that the plug-in refuses: what only a failure brings out.
    if (!trial.setting().clips.empty()) {
        const auto extension = pathFromUtf8(trial.setting().clips.front().path).extension();
        options.pathUtf8 = trial.freshPath("refused" + pathToUtf8(extension));
        std::ofstream(pathFromUtf8(options.pathUtf8), std::ios::binary) << "no clip of any kind";
        (void)runSession(importer, options);
        behindEach(options.pathUtf8);
    }
    for (const ClipFile& clip : trial.setting().clips) {
        options.pathUtf8 = clip.path;
        (void)runSession(importer, options);
        holdFrames(importer, clip.path);
        behindEach(clip.path);
    }
}

void watchProfile(Trial& trial, const HostProfile& profile, std::vector<SeenViolation>& out) {
    Stage stage(trial, profile);
    std::vector<std::string> clipOf;  // of each violation so far
    playClips(trial, stage.importer(),
              [&](const std::string& clip) { clipOf.resize(stage.host().violations().size(), clip); });
    stage.end();
    const std::vector<Violation> all = allViolations(stage);
    for (std::size_t i = 0; i < all.size(); ++i) {
        out.push_back({all[i], i < clipOf.size() ? clipOf[i] : std::string(), profile.name});
    }
    if (profile.name == kWatchedProfiles[0]) {
        for (std::size_t i = 0; i < kServiceCount; ++i) {
            g_usualCalls[i] = stage.host().calls(static_cast<Service>(i));
        }
    }
}

}  // namespace

const std::vector<SeenViolation>& watchedSessions(Trial& trial) {
    static std::optional<std::vector<SeenViolation>> seen;
    if (!seen) {
        std::vector<SeenViolation> all;
        trial.phase("standard session", [&] {
            for (const char* name : kWatchedProfiles) {
                watchProfile(trial, *findProfile(name), all);
            }
        });
        seen = std::move(all);
    }
    return *seen;
}

std::vector<Finding> findingsOf(const std::vector<SeenViolation>& seen, Rule rule) {
    std::vector<Finding> out;
    std::set<std::pair<std::string, std::string>> usual;
    for (const auto& [violation, clip, profile] : seen) {
        if (violation.rule != rule) {
            continue;
        }
        const std::string call = violation.call.empty() ? "the whole session" : violation.call;
        std::string field = violation.record;
        field += field.empty() || violation.field.empty() ? "" : ".";
        field += violation.field;
        const bool today = profile == kWatchedProfiles[0];
        if (today) {
            usual.emplace(call, field);
        } else if (usual.contains({call, field})) {
            continue;
        }
        out.push_back({.call = call + (today ? "" : ", host profile " + profile),
                       .field = field,
                       .clip = clip,
                       .seen = violation.seen});
    }
    return out;
}

namespace {

// What refused to start gives nothing back, as no imShutdown comes then, and forgets it when it is unloaded.
// A thread of the system may hold a module for a while behind its last call, and some stay for good: those
// still have what they got from a host that is gone, and the next one cannot judge them.
bool isForgotten(const void* entry, const std::string& module) {
    constexpr std::chrono::seconds kMost{5};
    const auto begin = std::chrono::steady_clock::now();
    while (!module.empty() && codePlace(entry).module == module) {
        if (std::chrono::steady_clock::now() - begin > kMost) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace

void playInTrouble(Trial& trial, const HostProfile& profile, const std::function<void(Host&)>& prepare,
                   const std::string& call) {
    const auto& usual = watchedSessions(trial);
    const auto isUsual = [&](const Violation& violation) {
        return std::any_of(usual.begin(), usual.end(),
                           [&](const SeenViolation& seen) { return seen.violation.rule == violation.rule; });
    };
    static bool remembersAnother = false;
    if (remembersAnother) {
        return;
    }
    Host host(profile, Stage::quiet());
    const std::unique_ptr<Plugin> plugin = loadForTrial(trial);
    const void* const entry = reinterpret_cast<const void*>(plugin->entry());
    const std::string module = codePlace(entry).module;
    const Importer importer(host, *plugin);
    prepare(host);
    const bool started = isStarted(importer.init().result);
    if (started) {
        playClips(trial, importer, [](const std::string&) {});
        (void)importer.shutdown();
    }
    plugin->unload();
    remembersAnother = !started && !isForgotten(entry, module);
    std::vector<Violation> broken = host.violations();
    if (started) {
        const std::vector<Violation> held = host.balance().violations();
        broken.insert(broken.end(), held.begin(), held.end());
    }
    for (const Violation& violation : broken) {
        if (!isUsual(violation)) {
            trial.fail({.call = call, .seen = violation.text()});
        }
    }
}

std::uint64_t usualCalls(Trial& trial, Service service) {
    (void)watchedSessions(trial);
    return g_usualCalls[static_cast<std::size_t>(service)];
}

}  // namespace simhost::tool::validate
