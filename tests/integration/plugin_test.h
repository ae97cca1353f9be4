// What every integration test starts from: a simulated host, the built plug-in loaded from its file, and the
// check at the end that everything the host lent came back and no rule of the host was broken.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "simhost/async_clip.h"
#include "simhost/clip.h"
#include "simhost/host.h"
#include "simhost/importer.h"
#include "simhost/plugin.h"
#include "tests/integration/plugin_path.h"

class PluginTest : public ::testing::Test {
 protected:
    /// Loads the plug-in into a host of this profile. Once per test, or again behind restart().
    void start(const simhost::HostProfile& profile = simhost::defaultProfile(),
               simhost::HostOptions options = {}) {
        m_host = std::make_unique<simhost::Host>(profile, options);
        m_plugin = std::make_unique<simhost::Plugin>(pluginPath(), codecFolder());
        m_importer = std::make_unique<simhost::Importer>(*m_host, *m_plugin);
    }
    /// start() and imInit.
    void startAndInit(const simhost::HostProfile& profile = simhost::defaultProfile()) {
        start(profile);
        ASSERT_EQ(importer().init().result, host::imNoErr);
        m_initialised = true;
    }
    /// imShutdown when imInit was sent, then unload: ends the log too.
    void stop() {
        if (m_initialised) {
            m_initialised = false;
            EXPECT_EQ(importer().shutdown(), host::imNoErr);
        }
        if (m_plugin) {
            m_plugin->unload();
        }
    }

    /// Behind stop(): checks and forgets this host, so that start() may follow.
    void restart() {
        EXPECT_TRUE(m_host->isClean()) << m_host->report();
        m_importer.reset();
        m_plugin.reset();
        m_host.reset();
    }

    simhost::Host& host() { return *m_host; }
    simhost::Plugin& plugin() { return *m_plugin; }
    simhost::Importer& importer() { return *m_importer; }
    void setInitialised(bool initialised) { m_initialised = initialised; }

    void TearDown() override {
        if (!m_host) {
            return;
        }
        stop();
        EXPECT_TRUE(m_host->isClean()) << m_host->report();
    }

 private:
    std::unique_ptr<simhost::Host> m_host;
    std::unique_ptr<simhost::Plugin> m_plugin;
    std::unique_ptr<simhost::Importer> m_importer;
    bool m_initialised = false;
};
