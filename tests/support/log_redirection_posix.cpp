// See log_redirection.h.

#include "tests/support/environment.h"
#include "tests/support/log_redirection.h"

namespace orvantis::test {

namespace {

constexpr const char* kSwitch = "ORVANTIS_TEST_LOG_SWITCH";
constexpr const char* kProfile = "ORVANTIS_TEST_PROFILE";

}  // namespace

LogRedirection::LogRedirection(const std::filesystem::path& profile) {
    removeSwitch();
    setProfile(profile);
}

LogRedirection::~LogRedirection() {
    unsetEnvironment(kSwitch);
    unsetEnvironment(kProfile);
}

void LogRedirection::setSwitch(std::uint32_t value) {
    setEnvironment(kSwitch, std::to_string(value));
}

void LogRedirection::removeSwitch() {
    unsetEnvironment(kSwitch);
}

void LogRedirection::setProfile(const std::filesystem::path& profile) {
    if (std::filesystem::is_directory(profile)) {
        setEnvironment(kProfile, profile.string());
    } else {
        unsetEnvironment(kProfile);
    }
}

std::filesystem::path LogRedirection::effectiveProfile() const {
    return getEnvironment(kProfile).value_or(std::string());
}

void LogRedirection::inherit() {
    // Children have the environment already.
}

}  // namespace orvantis::test
