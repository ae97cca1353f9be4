// Runs scenarios in processes of their own, so that one which hangs or crashes is a finding like any other.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/world/stage.h"

namespace schedules {

/// What became of one scenario.
struct Result {
    const Scenario* scenario = nullptr;
    Account account;
    bool found() const noexcept { return account.finding[0] != '\0'; }
};

/// Explores each scenario with up to `preemptions`, or its own number of them, `jobs` of them at a time, and
/// calls `done` for each, in the order given. One that stays in a schedule for many seconds counts as
/// hanging.
std::vector<Result> explore(const std::vector<const Scenario*>& scenarios,
                            std::optional<unsigned> preemptions, unsigned jobs, void (*done)(const Result&));

/// The deviations of a schedule by its number; empty account().finding and number 0 when there is none.
Result findSchedule(const Scenario& scenario, unsigned preemptions, std::uint64_t number);

/// Runs one schedule and prints its steps.
Result replay(const Scenario& scenario, const std::vector<Deviation>& deviations);

/// "17.1,41.2", or "default" for none.
std::string deviationText(const Account& account);
/// The other way round. False when the text means nothing.
bool readDeviations(std::string_view text, std::vector<Deviation>& deviations);

}  // namespace schedules
