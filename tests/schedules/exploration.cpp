#include "tests/schedules/exploration.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <new>

#include "tests/schedules/scheduler/engine.h"
#include "tests/schedules/scheduler/explorer.h"
#include "tests/schedules/world/calls.h"

namespace schedules {

namespace {

/// A schedule takes microseconds; one that takes this long does not end.
constexpr unsigned kHangSeconds = 20;

Account* sharedAccount() {
    void* const mapped =
        mmap(nullptr, sizeof(Account), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        std::abort();
    }
    return new (mapped) Account;
}

/// Starts a process that does `work`; its account is `shared`.
pid_t start(const Scenario& scenario, Account& shared, const std::function<void()>& work) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        std::abort();
    }
    if (child > 0) {
        return child;
    }
    setAccount(shared);
    // Whatever exists once for the process is made before the first schedule, and so the same for all.
    world::startPlugin();
    const std::vector<Deviation> none;
    explorer().replay([&] { warmUp(scenario); }, none);
    work();
    std::fflush(nullptr);
    _exit(0);
}

/// What the end of a process says when it did not say it itself.
void readEnd(int status, Account& account) {
    if (account.finding[0] != '\0') {
        return;
    }
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        std::snprintf(account.finding, sizeof account.finding, "%s: %s",
                      signal == SIGALRM ? "the schedule does not end" : "crash", strsignal(signal));
    } else if (WEXITSTATUS(status) != 0) {
        std::snprintf(account.finding, sizeof account.finding, "the process ended with code %d",
                      WEXITSTATUS(status));
    }
}

Result runApart(const Scenario& scenario, const std::function<void()>& work) {
    Account* const shared = sharedAccount();
    int status = 0;
    if (waitpid(start(scenario, *shared, work), &status, 0) < 0) {
        std::abort();
    }
    readEnd(status, *shared);
    Result result{&scenario, *shared};
    munmap(shared, sizeof *shared);
    return result;
}

/// Plays a scenario under the eye of a clock.
std::function<void()> watched(const Scenario& scenario) {
    return [&scenario, since = 0U]() mutable {
        // Looked at now and then: it costs a system call. Not too seldom: the plug-in yields once for each
        // frame, and on a busy machine whoever yields waits for some milliseconds.
        if (since++ % 64 == 0) {
            alarm(kHangSeconds);
        }
        playOnce(scenario);
    };
}

}  // namespace

std::vector<Result> explore(const std::vector<const Scenario*>& scenarios,
                            std::optional<unsigned> preemptions, unsigned jobs, void (*done)(const Result&)) {
    std::vector<Result> results(scenarios.size());
    std::vector<Account*> accounts(scenarios.size(), nullptr);
    std::vector<bool> ended(scenarios.size(), false);
    std::map<pid_t, std::size_t> running;
    std::size_t next = 0;
    std::size_t told = 0;
    while (told < scenarios.size()) {
        while (running.size() < jobs && next < scenarios.size()) {
            accounts[next] = sharedAccount();
            const Scenario& scenario = *scenarios[next];
            running[start(scenario, *accounts[next], [&] {
                explorer().explore(watched(scenario), preemptions.value_or(scenario.preemptions));
            })] = next;
            ++next;
        }
        int status = 0;
        const pid_t child = wait(&status);
        if (child < 0) {
            std::abort();
        }
        const auto which = running.find(child);
        if (which == running.end()) {
            continue;
        }
        const std::size_t i = which->second;
        running.erase(which);
        readEnd(status, *accounts[i]);
        results[i] = {scenarios[i], *accounts[i]};
        munmap(accounts[i], sizeof *accounts[i]);
        ended[i] = true;
        while (told < scenarios.size() && ended[told]) {
            done(results[told++]);
        }
    }
    return results;
}

Result findSchedule(const Scenario& scenario, unsigned preemptions, std::uint64_t number) {
    return runApart(scenario, [&] {
        // The places where threads may change are known after the first rounds, and the numbers with them.
        if (!explorer().explore(watched(scenario), preemptions, number)) {
            account().number = 0;
        }
    });
}

Result replay(const Scenario& scenario, const std::vector<Deviation>& deviations) {
    return runApart(scenario, [&] {
        alarm(kHangSeconds);
        engine::trace(true);
        explorer().replay([&] { playOnce(scenario); }, deviations);
    });
}

std::string deviationText(const Account& account) {
    std::string text;
    for (unsigned i = 0; i < account.deviationCount; ++i) {
        if (i != 0) {
            text += ',';
        }
        text += std::to_string(account.deviations[i].decision) + '.' +
                std::to_string(account.deviations[i].option);
    }
    return text.empty() ? "default" : text;
}

bool readDeviations(std::string_view text, std::vector<Deviation>& deviations) {
    if (text == "default") {
        return true;
    }
    const char* at = text.data();
    const char* const end = at + text.size();
    for (;;) {
        Deviation deviation{};
        const auto decision = std::from_chars(at, end, deviation.decision);
        if (decision.ec != std::errc() || decision.ptr == end || *decision.ptr != '.') {
            return false;
        }
        const auto option = std::from_chars(decision.ptr + 1, end, deviation.option);
        if (option.ec != std::errc()) {
            return false;
        }
        deviations.push_back(deviation);
        at = option.ptr;
        if (at == end) {
            return deviations.size() <= Account::kMostDeviations;
        }
        if (*at++ != ',') {
            return false;
        }
    }
}

}  // namespace schedules
