#include "tool/validate/base/stage.h"

#include "host/result_codes.h"

namespace simhost::tool::validate {

std::unique_ptr<Plugin> loadForTrial(const Trial& trial) {
    try {
        return std::make_unique<Plugin>(trial.setting().plugin, trial.setting().libraryFolder);
    } catch (const std::runtime_error&) {
        Trial::skip("the plug-in does not load");
    }
}

bool isStarted(std::int32_t initResult) noexcept {
    constexpr std::int32_t kIsCacheable = host::codeNamed(host::kResults, "imIsCacheable");
    return initResult == host::imNoErr || initResult == kIsCacheable;
}

Stage::Stage(const Trial& trial, HostProfile profile, HostOptions options)
    : m_host(std::move(profile), options), m_plugin(loadForTrial(trial)) {
    m_importer.emplace(m_host, *m_plugin);
    if (!isStarted(m_importer->init().result)) {
        Trial::skip("the plug-in refuses imInit");
    }
    m_started = true;
}

Stage::~Stage() {
    end();
}

void Stage::end() {
    if (m_started) {
        m_started = false;
        (void)m_importer->shutdown();
    }
    if (m_plugin) {
        m_plugin->unload();
    }
}

}  // namespace simhost::tool::validate
