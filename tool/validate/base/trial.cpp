#include "tool/validate/base/trial.h"

#include <algorithm>

#include "simhost/session.h"

namespace simhost::tool::validate {
namespace {

// A plug-in that is wrong everywhere is told of a few times.
constexpr std::size_t kMostFindings = 8;

}  // namespace

Trial::Trial(const TrialSetting& setting, const std::string& checkId, std::uint64_t seed)
    : m_setting(setting),
      m_random(hashBytes(checkId.data(), checkId.size(), seed * 0x9E3779B97F4A7C15u + 1)) {}

std::uint64_t Trial::draw(std::uint64_t below) {
    return m_random() % std::max<std::uint64_t>(below, 1);
}

void Trial::fail(Finding finding) {
    finding.clip = clipWords(finding.clip);
    const std::lock_guard lock(m_mutex);
    const bool known = std::find(m_findings.begin(), m_findings.end(), finding) != m_findings.end();
    if (!known && m_findings.size() < kMostFindings) {
        m_findings.push_back(std::move(finding));
    }
}

void Trial::warn(Finding finding) {
    finding.warning = true;
    fail(std::move(finding));
}

bool Trial::hasFindings() const {
    const std::lock_guard lock(m_mutex);
    return !m_findings.empty();
}

std::vector<Finding> Trial::findings() const {
    const std::lock_guard lock(m_mutex);
    return m_findings;
}

void Trial::phase(const std::string& name, const std::function<void()>& work) {
    const auto& lost = m_setting.lostPhases;
    if (std::find(lost.begin(), lost.end(), name) != lost.end()) {
        skip("needs the " + name + ", which ended the process of another check");
    }
    m_setting.atPhase(name);
    work();
    m_setting.atPhase("");
}

std::string Trial::clipWords(const std::string& path) const {
    const std::string& folder = m_setting.workFolder;
    if (folder.empty() || !path.starts_with(folder + "/")) {
        return path;
    }
    const std::string name = path.substr(folder.size() + 1);
    return name.substr(name.find('-') + 1) + ", a file of the check";
}

std::string Trial::freshPath(const std::string& name) {
    static std::uint64_t count = 0;
    return m_setting.workFolder + "/" + std::to_string(++count) + "-" + name;
}

}  // namespace simhost::tool::validate
