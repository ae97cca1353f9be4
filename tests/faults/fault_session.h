// One scripted session of the host on a small clip, with the log on, that is repeated with one thing failing
// at a time. Whatever fails, the plug-in has to answer with codes that it documents, to give everything back,
// and to be as good as new in the session behind it. Used by every test of this folder; one thread.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "simhost/host.h"
#include "simhost/plugin.h"
#include "simhost/session.h"
#include "tests/support/environment.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"

class SessionFaults : public ::testing::Test {
 protected:
    enum class Log { kOn, kOff };
    /// More calls of one kind than a session ever makes: no end is in sight.
    static constexpr std::uint64_t kMost = 5000;

    /// Loads the plug-in, writes the clip, and plays it twice without a fault: the two sessions have to be
    /// equal.
    void start(Log log = Log::kOn);

    /// A session in which `arm` has prepared the failure and `disarm` takes it back, checked; then one
    /// without a failure that has to equal the first of all. `what` names the failure in messages. False when
    /// something was wrong.
    bool survives(const std::string& what, const std::function<void(simhost::Host&)>& arm,
                  const std::function<void(simhost::Host&)>& disarm);

    /// Path in the test's own folder, UTF-8.
    std::string path(std::string_view name) const { return orvantis::test::utf8Path(m_folder / name); }
    simhost::Plugin& plugin() { return *m_plugin; }
    const simhost::SessionSummary& undisturbed() const { return m_undisturbed; }

    /// Unloads the plug-in, then asks the leak checker where there is one.
    void TearDown() override;

 private:
    void expectAsUndisturbed(const std::string& what);

    orvantis::test::TempFolder m_folder;
    std::unique_ptr<orvantis::test::LogCapture> m_log;  // outlives the plug-in's use of it
    std::unique_ptr<simhost::Plugin> m_plugin;
    simhost::SessionOptions m_options;
    simhost::SessionSummary m_undisturbed;
};
