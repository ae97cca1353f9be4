#include "tool/validate/run/plan.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>

#include "tool/shared/base/nearest_name.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool::validate {
namespace {

using ConfigJson = nlohmann::json;

bool names(const std::string& word, const Check& check) {
    return word == check.id || word == checkGroup(check);
}

bool namesAny(const std::vector<std::string>& words, const Check& check) {
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string& word) { return names(word, check); });
}

void requireKnown(const std::vector<std::string>& words, const std::vector<Check>& checks) {
    for (const std::string& word : words) {
        if (std::any_of(checks.begin(), checks.end(),
                        [&](const Check& check) { return names(word, check); })) {
            continue;
        }
        std::vector<std::string> known;
        for (const Check& check : checks) {
            known.push_back(check.id);
            known.emplace_back(checkGroup(check));
        }
        const std::string nearest = nearestName(word, known);
        throw ToolError(kUsage, "there is no check and no group of checks '" + word + "'",
                        nearest.empty() ? "\"importer_host validate --list\" lists them"
                                        : "did you mean '" + nearest + "'?",
                        "unknown-check");
    }
}

// False for what is no whole number within the limits, such as -1 or 2.5.
template <class Number>
bool takeWhole(const ConfigJson& value, std::uint64_t least, std::uint64_t most, Number& out) {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() < least ||
        value.get<std::uint64_t>() > most) {
        return false;
    }
    out = static_cast<Number>(value.get<std::uint64_t>());
    return true;
}

// Throws what the parser throws for a value of another type.
template <class Value>
bool take(const ConfigJson& value, Value& out) {
    out = value.get<Value>();
    return true;
}

std::string clipFromFile(const std::string& clip, const std::string& folder) {
    const std::filesystem::path path = pathFromUtf8(clip);
    return path.is_absolute() ? clip : pathToUtf8(pathFromUtf8(folder) / path);
}

}  // namespace

std::vector<PlannedCheck> plannedChecks(const ValidateOptions& options, const std::vector<Check>& checks) {
    requireKnown(options.only, checks);
    requireKnown(options.skip, checks);
    std::vector<const Check*> chosen;
    for (const Check& check : checks) {
        const bool wanted =
            options.only.empty() ? check.level <= options.level : namesAny(options.only, check);
        if (wanted && !namesAny(options.skip, check)) {
            chosen.push_back(&check);
        }
    }
    std::vector<PlannedCheck> out;
    for (std::uint32_t round = 0; round < options.repeat; ++round) {
        const std::uint64_t seed = options.seed + round;
        if (options.randomise) {
            // Not std::shuffle, whose order is the library's own affair: a seed shall mean the same
            // everywhere.
            std::mt19937_64 random(seed);
            for (std::size_t left = chosen.size(); left > 1; --left) {
                std::swap(chosen[left - 1], chosen[random() % left]);
            }
        }
        for (const Check* check : chosen) {
            out.push_back({check->id, seed});
        }
    }
    return out;
}

void applyConfiguration(ValidateOptions& options, const std::string& text, const std::string& folder,
                        const std::vector<std::string>& given) {
    const std::map<std::string, std::function<bool(const ConfigJson&)>> known = {
        {"clips",
         [&](const ConfigJson& value) {
             options.clips.clear();
             for (const std::string clip : value) {
                 options.clips.push_back(clipFromFile(clip, folder));
             }
             return true;
         }},
        {"level",
         [&](const ConfigJson& value) {
             return takeWhole(value, kLowestLevel, kHighestLevel, options.level);
         }},
        {"seed", [&](const ConfigJson& value) { return takeWhole(value, 0, UINT64_MAX, options.seed); }},
        {"repeat",
         [&](const ConfigJson& value) { return takeWhole(value, 1, kMostRepeats, options.repeat); }},
        {"jobs", [&](const ConfigJson& value) { return takeWhole(value, 1, kMostJobs, options.jobs); }},
        {"randomise", [&](const ConfigJson& value) { return take(value, options.randomise); }},
        {"only", [&](const ConfigJson& value) { return take(value, options.only); }},
        {"skip", [&](const ConfigJson& value) { return take(value, options.skip); }},
        {"timeout",
         [&](const ConfigJson& value) {
             return take(value, options.timeout) && options.timeout >= kLeastTimeout &&
                    options.timeout <= kMostTimeout;
         }},
    };
    const auto wrong = [](const std::string& what) -> ToolError {
        return {kUsage, "the configuration file " + what,
                "\"importer_host validate --help\" tells what it may say", "bad-configuration"};
    };
    const ConfigJson parsed = ConfigJson::parse(text, nullptr, false, true);
    if (!parsed.is_object()) {
        throw wrong("is no JSON object");
    }
    for (const auto& [name, value] : parsed.items()) {
        const auto found = known.find(name);
        if (found == known.end()) {
            throw wrong("says '" + name + "', which is no option there");
        }
        if (std::find(given.begin(), given.end(), name) != given.end()) {
            continue;
        }
        bool taken = false;
        try {
            taken = found->second(value);
        } catch (const ConfigJson::exception&) {
        }
        if (!taken) {
            throw wrong("has a wrong value for '" + name + "'");
        }
    }
}

}  // namespace simhost::tool::validate
