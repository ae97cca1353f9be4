// The plug-in loaded and started under a simulated host of its own, for one check. Ends what it began. Main
// thread only, but for the calls that threads make through importer().
#pragma once

#include <memory>
#include <optional>

#include "simhost/host.h"
#include "simhost/importer.h"
#include "simhost/plugin.h"
#include "tool/validate/base/trial.h"

namespace simhost::tool::validate {

class Stage {
 public:
    /// Loads the plug-in and sends imInit. Throws Skipped when it does not load or does not start: that is
    /// the matter of module.loads and selectors.starts.
    explicit Stage(const Trial& trial, HostProfile profile = defaultProfile(), HostOptions options = quiet());
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage();

    Host& host() noexcept { return m_host; }
    const Importer& importer() const noexcept { return *m_importer; }
    /// imShutdown, and the module unloaded.
    void end();

    /// Watches everything but keeps no list of calls.
    static HostOptions quiet() {
        HostOptions options;
        options.keepTrace = false;
        return options;
    }

 private:
    Host m_host;
    std::unique_ptr<Plugin> m_plugin;
    std::optional<Importer> m_importer;
    bool m_started = false;
};

/// The plug-in of a trial, loaded. Throws Skipped.
std::unique_ptr<Plugin> loadForTrial(const Trial& trial);

/// imNoErr, or imIsCacheable: a host may keep what the plug-in said of itself.
bool isStarted(std::int32_t initResult) noexcept;

}  // namespace simhost::tool::validate
