#include "tests/faults/fault_session.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/result_codes.h"
#include "tests/integration/plugin_clips.h"
#include "tests/integration/plugin_path.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define ORVANTIS_FAULTS_LEAK_CHECK
#endif
#endif

namespace {

constexpr std::array kImporterAnswers = {host::imNoErr,
                                         host::imBadFile,
                                         host::imUnsupported,
                                         host::imOtherErr,
                                         host::imBadCompression,
                                         host::imIterateStreams,
                                         host::imBadStreamIndex,
                                         host::imFrameNotFound,
                                         host::imFileReadFailed,
                                         host::imDecompressionError,
                                         host::kUnhandledException,
                                         host::malSupports8,
                                         host::imBadFormatIndex};
constexpr std::array kAsyncAnswers = {host::aiNoError, host::aiUnsupported, host::aiUnknownError,
                                      host::kUnhandledException};

bool isDocumented(const simhost::SessionStep& step) {
    const auto among = [&step](const auto& answers) {
        return std::find(answers.begin(), answers.end(), step.result) != answers.end();
    };
    return step.name.starts_with("ai") ? among(kAsyncAnswers) : among(kImporterAnswers);
}

}  // namespace

void SessionFaults::start(Log log) {
    if (log == Log::kOn) {
        m_log = std::make_unique<orvantis::test::LogCapture>();
    }
    clips::Shape shape;
    shape.frames = 3;
    shape.openDml = orvantis::test::OpenDml::kSuperIndex;
    auto avi = clips::builder(shape);
    avi.addChunk(0, {});  // repeats the frame before
    const auto bytes = avi.build();
    orvantis::test::writeFile(m_folder / "clip.avi",
                              {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    m_options.pathUtf8 = path("clip.avi");
    m_options.framesPerFormat = 2;
    m_options.mostFormats = 2;  // so that one decompression has to end for the next
    m_options.audioFrames = 400;
    m_plugin = std::make_unique<simhost::Plugin>(pluginPath(), codecFolder());
    {
        simhost::Host host;
        m_undisturbed = simhost::runSession(simhost::Importer(host, *m_plugin), m_options);
        ASSERT_TRUE(host.isClean()) << host.report();
    }
    // Two frames in each format synchronously, again after the reopening, and asynchronously.
    ASSERT_EQ(m_undisturbed.frames, 12U) << m_undisturbed.text();
    ASSERT_EQ(m_undisturbed.audioFrames, 5U * 400U);
    ASSERT_EQ(m_undisturbed.asyncDifferences, 0U);
    expectAsUndisturbed("nothing");
}

bool SessionFaults::survives(const std::string& what, const std::function<void(simhost::Host&)>& arm,
                             const std::function<void(simhost::Host&)>& disarm) {
    {
        simhost::Host host;
        arm(host);
        const auto summary = simhost::runSession(simhost::Importer(host, *m_plugin), m_options);
        disarm(host);
        EXPECT_TRUE(host.isClean()) << what << "\n" << host.report() << summary.text();
        for (const simhost::SessionStep& step : summary.steps) {
            EXPECT_TRUE(isDocumented(step)) << what << ": " << step.name << " answered " << step.result;
        }
    }
    expectAsUndisturbed(what);
    return !HasFailure();
}

void SessionFaults::expectAsUndisturbed(const std::string& what) {
    simhost::Host host;
    const auto summary = simhost::runSession(simhost::Importer(host, *m_plugin), m_options);
    EXPECT_TRUE(host.isClean()) << "behind " << what << "\n" << host.report();
    EXPECT_EQ(summary.text(), m_undisturbed.text()) << "behind " << what;
    EXPECT_EQ(summary.pictureHash, m_undisturbed.pictureHash) << "behind " << what;
    EXPECT_EQ(summary.audioHash, m_undisturbed.audioHash) << "behind " << what;
    EXPECT_EQ(summary.asyncDifferences, 0U) << "behind " << what;
}

void SessionFaults::TearDown() {
    m_plugin.reset();
    m_log.reset();
#ifdef ORVANTIS_FAULTS_LEAK_CHECK
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0) << "a fault left memory behind";
#endif
}
