#include "standin/fault_plan.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string>

#include "standin/error_codes.h"

namespace orvantis::standin {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

template <class Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

[[noreturn]] void refuse(std::string_view entry) {
    throw std::runtime_error("ORVANTIS_STANDIN_FAIL: '" + std::string(entry) + "' cannot be understood");
}

}  // namespace

FaultPlan::FaultPlan(std::string_view text) {
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        const std::string_view entry = trimmed(text.substr(0, comma));
        text.remove_prefix(std::min(comma + 1, text.size()));
        if (!entry.empty() && entry.front() != '#') {
            m_rules.push_back(parseEntry(entry));
        }
    }
}

FaultPlan::Rule FaultPlan::parseEntry(std::string_view entry) {
    const std::size_t colon = entry.find(':');
    const auto* const name = std::ranges::find(kFunctionNames, entry.substr(0, colon));
    if (colon == std::string_view::npos || name == kFunctionNames.end()) {
        refuse(entry);
    }
    Rule rule{static_cast<Function>(name - kFunctionNames.begin()), 1,
              std::numeric_limits<std::uint64_t>::max(), static_cast<std::int32_t>(Error::kInjectedFault)};
    std::string_view calls = entry.substr(colon + 1);
    if (const std::size_t equals = calls.find('='); equals != std::string_view::npos) {
        rule.code = parseNumber<std::int32_t>(calls.substr(equals + 1)).value_or(0);
        calls = calls.substr(0, equals);
    }
    if (calls != "*") {
        const bool onwards = calls.ends_with('+');
        calls.remove_suffix(onwards ? 1 : 0);
        rule.firstCall = parseNumber<std::uint64_t>(calls).value_or(0);
        rule.lastCall = onwards ? rule.lastCall : rule.firstCall;
    }
    if (rule.code == 0 || rule.firstCall == 0) {
        refuse(entry);
    }
    return rule;
}

std::optional<std::int32_t> FaultPlan::next(Function function) {
    const std::lock_guard lock(m_mutex);
    const std::uint64_t call = ++m_calls[static_cast<std::size_t>(function)];
    const auto rule = std::ranges::find_if(m_rules, [&](const Rule& candidate) {
        return candidate.function == function && candidate.firstCall <= call && call <= candidate.lastCall;
    });
    return rule == m_rules.end() ? std::nullopt : std::optional(rule->code);
}

}  // namespace orvantis::standin
