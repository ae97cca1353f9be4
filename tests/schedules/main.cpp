// Explores the schedules of the plug-in's asynchronous and pinning code. See docs/schedules.md.
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/schedules/exploration.h"
#include "tests/schedules/scenarios/known_programs.h"
#include "tests/schedules/scenarios/scenarios.h"
#include "tests/schedules/scheduler/races.h"

namespace {

using schedules::Account;
using schedules::Result;
using schedules::Scenario;

constexpr char kUsage[] =
    "schedules [SCENARIO...] [--preemptions N] [--jobs N] [--expect TEXT[|TEXT...]]\n"
    "schedules --replay SCENARIO:NUMBER | SCENARIO:CHOICES\n"
    "schedules --self-test\n"
    "schedules --list\n";

struct Options {
    std::vector<const Scenario*> scenarios;
    std::optional<unsigned> preemptions;  ///< each scenario's own unless given
    unsigned jobs = 1;
    std::string expect;  ///< one of these, between "|", is to be in a finding; empty: there is to be none
    bool list = false;
    bool selfTest = false;
    std::string replay;
};

std::vector<const Scenario*> allScenarios() {
    std::vector<const Scenario*> all;
    for (const auto scenarios : {schedules::asyncScenarios(), schedules::syncScenarios()}) {
        for (const Scenario& scenario : scenarios) {
            all.push_back(&scenario);
        }
    }
    return all;
}

const Scenario* scenarioNamed(std::string_view name) {
    for (const Scenario* const scenario : allScenarios()) {
        if (name == scenario->name) {
            return scenario;
        }
    }
    return nullptr;
}

int wrongUsage(const std::string& what) {
    std::fprintf(stderr, "schedules: %s\n%s", what.c_str(), kUsage);
    return 2;
}

bool readNumber(std::string_view text, auto& number) {
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

/// Empty, or what is wrong.
std::string readOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const std::string_view value = i + 1 < argc ? argv[i + 1] : "";
        if (argument == "--list") {
            options.list = true;
        } else if (argument == "--self-test") {
            options.selfTest = true;
        } else if (argument == "--expect") {
            if (value.empty()) {
                return "which finding?";
            }
            options.expect = value;
            ++i;
        } else if (argument == "--preemptions") {
            unsigned preemptions = 0;
            if (!readNumber(value, preemptions) || preemptions > Account::kMostPreemptions) {
                return "how many preemptions?";
            }
            options.preemptions = preemptions;
            ++i;
        } else if (argument == "--jobs") {
            if (!readNumber(value, options.jobs) || options.jobs == 0) {
                return "how many jobs?";
            }
            ++i;
        } else if (argument == "--replay") {
            if (value.empty()) {
                return "which schedule?";
            }
            options.replay = value;
            ++i;
        } else if (const Scenario* const scenario = scenarioNamed(argument)) {
            options.scenarios.push_back(scenario);
        } else {
            return "no such scenario or option: " + std::string(argument);
        }
    }
    if (options.scenarios.empty()) {
        options.scenarios = allScenarios();
    }
    return {};
}

void printFinding(const Result& result) {
    const Account& account = result.account;
    std::printf("  FOUND in schedule %" PRIu64 " (%u preemptions): %s\n", account.number, account.preemptions,
                account.finding);
    std::printf("  again: ./schedules.sh --replay %s:%s\n", result.scenario->name,
                schedules::deviationText(account).c_str());
}

void printRow(const Result& result) {
    const Account& account = result.account;
    std::uint64_t all = 0;
    std::string counts;
    for (unsigned i = 0; i < account.done || account.schedules[i] != 0; ++i) {
        all += account.schedules[i];
        char text[32];
        std::snprintf(text, sizeof text, " %9" PRIu64, account.schedules[i]);
        counts += text;
        if (i == Account::kMostPreemptions) {
            break;
        }
    }
    const double rate = account.seconds > 0 ? static_cast<double>(account.runs) / account.seconds : 0;
    std::printf("%-26s %4" PRIu64 " %10" PRIu64 " %8.1f %8.0f  %s\n", result.scenario->name,
                account.mostSteps, all, account.seconds, rate, counts.c_str());
    if (result.found()) {
        printFinding(result);
    }
    std::fflush(stdout);
}

/// The finding is one that was asked for.
bool isExpected(const Result& result, std::string_view expected) {
    const std::string_view finding = result.account.finding;
    while (!expected.empty()) {
        const std::size_t bar = expected.find('|');
        if (finding.find(expected.substr(0, bar)) != std::string_view::npos) {
            return true;
        }
        expected.remove_prefix(bar == std::string_view::npos ? expected.size() : bar + 1);
    }
    return false;
}

int exploreAll(const Options& options) {
    std::printf("%-26s %4s %10s %8s %8s   %s\n", "scenario", "most", "schedules", "seconds", "a second",
                "with 0, 1, 2, ... preemptions");
    const std::vector<Result> results =
        schedules::explore(options.scenarios, options.preemptions, options.jobs, &printRow);
    std::uint64_t count = 0;
    double seconds = 0;
    unsigned most = 0;
    std::size_t findings = 0;
    std::size_t expected = 0;
    for (const Result& result : results) {
        for (const std::uint64_t part : result.account.schedules) {
            count += part;
        }
        seconds += result.account.seconds;
        most = std::max(most, options.preemptions.value_or(result.scenario->preemptions));
        findings += result.found() ? 1 : 0;
        expected += result.found() && isExpected(result, options.expect) ? 1 : 0;
    }
    std::printf("%zu scenarios, %" PRIu64
                " schedules, up to %u preemptions, %.1f s of processor time, "
                "%zu findings\n",
                results.size(), count, most, seconds, findings);
    return findings == expected && (findings != 0) == !options.expect.empty() ? 0 : 1;
}

int testSelf() {
    std::size_t wrong = 0;
    for (const schedules::KnownProgram& test : schedules::knownPrograms()) {
        if (test.needsWatch && !schedules::races::kWatches) {
            continue;
        }
        const Result result = schedules::explore({&test.scenario}, 3, 1, [](const Result&) {}).front();
        std::uint64_t count = 0;
        for (const std::uint64_t part : result.account.schedules) {
            count += part;
        }
        const std::string_view finding = result.account.finding;
        const bool right = test.finding[0] != '\0'
                               ? finding.starts_with(test.finding)
                               : finding.empty() && (test.schedules == 0 || count == test.schedules);
        std::printf("%-5s %-26s %6" PRIu64 " schedules  %s\n", right ? "ok" : "WRONG", test.scenario.name,
                    count, result.account.finding);
        wrong += right ? 0 : 1;
    }
    return wrong == 0 ? 0 : 1;
}

int replayOne(const Options& options) {
    const std::size_t colon = options.replay.find(':');
    const Scenario* const scenario = scenarioNamed(options.replay.substr(0, colon));
    if (colon == std::string::npos || scenario == nullptr) {
        return wrongUsage("no such schedule: " + options.replay);
    }
    const std::string which = options.replay.substr(colon + 1);
    std::vector<schedules::Deviation> deviations;
    const unsigned preemptions = options.preemptions.value_or(scenario->preemptions);
    std::uint64_t number = 0;
    if (readNumber(which, number) && number != 0) {
        const Result place = schedules::findSchedule(*scenario, preemptions, number);
        if (place.account.number != number) {
            std::fprintf(stderr, "schedules: %s has no schedule %" PRIu64 " with up to %u preemptions\n",
                         scenario->name, number, preemptions);
            return 2;
        }
        deviations.assign(place.account.deviations, place.account.deviations + place.account.deviationCount);
        std::printf("schedule %" PRIu64 ": %s\n", number, schedules::deviationText(place.account).c_str());
    } else if (!schedules::readDeviations(which, deviations)) {
        return wrongUsage("no such schedule: " + options.replay);
    }
    std::fflush(stdout);
    const Result result = schedules::replay(*scenario, deviations);
    std::printf("%s\n", result.found() ? result.account.finding : "no finding");
    return result.found() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (const std::string wrong = readOptions(argc, argv, options); !wrong.empty()) {
        return wrongUsage(wrong);
    }
    if (options.list) {
        for (const Scenario* const scenario : allScenarios()) {
            std::printf("%-26s %s\n", scenario->name, scenario->about);
        }
        return 0;
    }
    if (options.selfTest) {
        return testSelf();
    }
    return options.replay.empty() ? exploreAll(options) : replayOne(options);
}
