#include "tests/schedules/scheduler/finding.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "tests/schedules/scheduler/engine.h"
#include "tests/schedules/scheduler/memory.h"
#include "tests/schedules/scheduler/races.h"
#include "tests/schedules/scheduler/symbols.h"

namespace schedules {

namespace {
Account g_own;
Account* g_account = &g_own;
}  // namespace

Account& account() noexcept {
    return *g_account;
}

void setAccount(Account& account) noexcept {
    g_account = &account;
}

void found(const char* what, const std::string& details) {
    races::watch(false);
    const memory::Outside outside;
    const std::string text = std::string(what) + (details.empty() ? "" : ": " + details);
    std::snprintf(g_account->finding, sizeof g_account->finding, "%s", text.c_str());
    engine::endTrace();
    std::fflush(nullptr);
    _exit(kFindingExit);
}

void foundAccess(const char* what, const void* at, const AccessAt& now, const AccessAt& earlier) {
    races::watch(false);
    const memory::Outside outside;
    const auto side = [](const AccessAt& access) {
        return std::string(access.write ? "write" : "read") + " by '" + engine::threadName(access.thread) +
               "' at " + codePlace(access.site);
    };
    found(what, side(now) + ", not ordered after the " + side(earlier) + "; in " + memory::placeOf(at));
}

}  // namespace schedules
