// A PluginTest with a folder for clips, with the log on demand, and with the codec library's own account of
// what was not undone.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "host/result_codes.h"
#include "tests/integration/plugin_clips.h"
#include "tests/integration/plugin_log_text.h"
#include "tests/integration/plugin_test.h"
#include "tests/support/environment.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"

/// The n-th call of a service from now on fails.
inline simhost::FaultPlan failOnce(simhost::Service service, std::uint64_t nth = 1,
                                   std::int32_t result = host::kSuiteFailed) {
    simhost::FaultPlan plan;
    plan.service = service;
    plan.nth = nth;
    plan.result = result;
    return plan;
}
/// Every call of a service from now on fails.
inline simhost::FaultPlan failAlways(simhost::Service service, std::int32_t result = host::kSuiteFailed) {
    simhost::FaultPlan plan = failOnce(service, 1, result);
    plan.fromThenOn = true;
    return plan;
}
/// The host refuses a suite when it is asked for the n-th time from now on.
inline simhost::FaultPlan refuseOnce(std::string_view suite, std::uint64_t nth = 1) {
    simhost::FaultPlan plan = failOnce(simhost::Service::kAcquireSuite, nth);
    plan.detail = suite;
    return plan;
}
/// The host refuses a suite from now on.
inline simhost::FaultPlan refuseAlways(std::string_view suite) {
    simhost::FaultPlan plan = refuseOnce(suite);
    plan.fromThenOn = true;
    return plan;
}

class ClipTest : public PluginTest {
 protected:
    /// Writes a file and answers its path, UTF-8.
    std::string place(std::u8string_view name, const orvantis::test::Bytes& bytes) {
        const auto path = m_folder / name;
        orvantis::test::writeFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        return orvantis::test::utf8Path(path);
    }
    std::string placeClip(const clips::Shape& shape = {}) {
        return place(u8"clip.avi", clips::builder(shape).build());
    }
    const orvantis::test::TempFolder& folder() const { return m_folder; }

    /// After start(): opens and describes the ordinary clip, which clip() then is until the test ends.
    void describeClip() {
        m_clip.emplace(importer(), placeClip());
        ASSERT_EQ(m_clip->getInfo(0).result, host::imNoErr);
    }
    simhost::Clip& clip() { return *m_clip; }

    /// Before start(): switches the log on.
    void logOn() {
        m_capture = std::make_unique<orvantis::test::LogCapture>();
        m_log.emplace(*m_capture, orvantis::test::utf8Path(m_folder.path()));
    }
    LogText& log() { return *m_log; }
    orvantis::test::LogCapture& logCapture() { return *m_capture; }

    /// Before start(): lets the codec library keep account. Afterwards every test fails that leaves a session
    /// open.
    void traceCodec() {
        m_codecTrace.emplace("ORVANTIS_STANDIN_LOG", orvantis::test::utf8Path(m_folder / "codec-calls.txt"));
    }
    /// For tests that have looked at the account themselves.
    void forgetCodecTrace() { m_codecTrace.reset(); }
    /// The account so far.
    std::string codecTrace() const { return orvantis::test::readFile(m_folder / "codec-calls.txt"); }

    void TearDown() override {
        m_clip.reset();
        PluginTest::TearDown();
        if (m_codecTrace) {
            // A pool thread that has just delivered its frame keeps the module loaded until it has left it.
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
            while (codecTrace().find(" unload, ") == std::string::npos &&
                   std::chrono::steady_clock::now() < deadline) {
                std::this_thread::yield();
            }
            EXPECT_TRUE(
                codecTrace().ends_with(" unload, library_init not undone: 0, sessions not closed: 0\n"))
                << codecTrace();
        }
    }

 private:
    orvantis::test::TempFolder m_folder;
    std::unique_ptr<orvantis::test::LogCapture> m_capture;
    std::optional<LogText> m_log;
    std::optional<orvantis::test::ScopedEnvironment> m_codecTrace;
    std::optional<simhost::Clip> m_clip;
};

/// The codec library answers by this plan from its next start on, that is with the next file that is opened
/// or the next imInit. Counting starts there. See standin/fault_plan.h for the grammar.
class CodecFaults {
 public:
    explicit CodecFaults(const std::string& plan) : m_environment("ORVANTIS_STANDIN_FAIL", plan) {}

 private:
    orvantis::test::ScopedEnvironment m_environment;
};
