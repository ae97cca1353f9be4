// Plays the input as a file in the simulated host: everything that a host does with a clip. Every selector
// has to answer with a code that the plug-in documents, all that the host lent has to come back, no rule of
// the host may be broken, and memory and reading stay within what the file's size justifies.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "entry/import_entry.h"
#include "host/result_codes.h"
#include "simhost/host.h"
#include "simhost/plugin.h"
#include "simhost/session.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/memory_bound.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/environment.h"
#include "tests/support/file_hooks.h"

namespace {

constexpr std::array kImporterAnswers = {host::imNoErr,          host::imBadFile,
                                         host::imUnsupported,    host::imOtherErr,
                                         host::imBadCompression, host::imIterateStreams,
                                         host::imBadStreamIndex, host::imFrameNotFound,
                                         host::imFileReadFailed, host::imDecompressionError,
                                         host::malSupports8,     host::imBadFormatIndex};

// A file without a name, reached through the table of open files.
class ClipFile {
 public:
    ClipFile() : m_descriptor(memfd_create("fuzz-clip", MFD_CLOEXEC)) { FUZZ_CHECK(m_descriptor >= 0); }
    void hold(const std::uint8_t* data, std::size_t size) const {
        FUZZ_CHECK(ftruncate(m_descriptor, 0) == 0);
        FUZZ_CHECK(pwrite(m_descriptor, data, size, 0) == static_cast<ssize_t>(size));
    }
    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

 private:
    int m_descriptor;
};

// The host between imInit and imShutdown. Starting it costs more than a small clip, so it is replaced only
// now and then, before what it remembers adds up.
class RunningHost {
 public:
    explicit RunningHost(const simhost::Plugin& plugin)
        : m_host(simhost::defaultProfile(), options()), m_importer(m_host, plugin) {
        FUZZ_CHECK(m_importer.init().result == host::imNoErr);
        m_atRest = m_host.balance().report();
    }
    ~RunningHost() {
        FUZZ_CHECK(m_importer.shutdown() == host::imNoErr);
        check(m_host.isClean());
    }
    RunningHost(const RunningHost&) = delete;
    RunningHost& operator=(const RunningHost&) = delete;

    const simhost::Importer& importer() const { return m_importer; }
    /// Nothing is held that was not held before the clip, and no rule was broken.
    void checkAtRest() const { check(m_host.balance().report() == m_atRest && m_host.violations().empty()); }

 private:
    static simhost::HostOptions options() {
        simhost::HostOptions options;
        options.keepTrace = false;
        options.largestFrameBytes = 1 << 20;
        return options;
    }
    void check(bool good) const {
        if (good) {
            return;
        }
        std::fprintf(stderr, "%s\n", m_host.report().c_str());
        FUZZ_CHECK(good);
    }

    simhost::Host m_host;
    simhost::Importer m_importer;
    std::string m_atRest;
};

constexpr unsigned kClipsPerHost = 256;

struct World {
    World() {
        // Every line is formatted, none is written: the profile folder is not told.
        orvantis::test::setEnvironment("ORVANTIS_TEST_LOG_SWITCH", "1");
        orvantis::test::unsetEnvironment("ORVANTIS_TEST_PROFILE");
    }
    ClipFile file;
    orvantis::test::InstalledFileHooks hooks;
    simhost::Plugin plugin{&xImportEntry};
    std::optional<RunningHost> host;
    unsigned clips = 0;
};

bool isDocumented(const simhost::SessionStep& step) {
    if (step.name.starts_with("ai")) {
        return step.result >= host::aiNoError && step.result <= host::aiUnknownError;
    }
    // What a host asks by mistake is answered by the guard: no format list at all.
    if (step.name == "imGetSourceVideo" && step.result == host::kUnhandledException) {
        return true;
    }
    return std::find(kImporterAnswers.begin(), kImporterAnswers.end(), step.result) != kImporterAnswers.end();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static World world;
    world.file.hold(data, size);
    world.hooks->reads.count = 0;
    world.hooks->bytesRead = 0;

    if (world.clips++ % kClipsPerHost == 0) {
        world.host.reset();
        world.host.emplace(world.plugin);
    }
    simhost::SessionOptions options;
    options.pathUtf8 = world.file.path();
    options.initAndShutdown = false;
    options.framesPerFormat = 2;
    options.mostFormats = 3;
    options.audioFrames = 64;
    orvantis::test::startCounting();
    const auto summary = simhost::runSession(world.host->importer(), options);
    FUZZ_CHECK(orvantis::test::counted().peak <= fuzz::memoryBound(size));

    for (const simhost::SessionStep& step : summary.steps) {
        if (isDocumented(step)) {
            continue;
        }
        std::fprintf(stderr, "%s answered %d\n", step.name.c_str(), step.result);
        FUZZ_CHECK(isDocumented(step));
    }
    world.host->checkAtRest();
    FUZZ_CHECK(summary.asyncDifferences == 0);
    FUZZ_CHECK(world.hooks->opened == world.hooks->closes);
    // No selector reads more often than a parse of the whole file may.
    const std::uint64_t selectors = summary.steps.size();
    FUZZ_CHECK(world.hooks->reads.count <= selectors * (size / 8 + 4096));
    FUZZ_CHECK(world.hooks->bytesRead <= selectors * (8 * size + (std::uint64_t{2} << 20)));
    return 0;
}
