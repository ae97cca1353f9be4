#include <algorithm>
#include <numeric>
#include <utility>

#include "tool/validate/run/report.h"

namespace simhost::tool::validate {
namespace {

constexpr std::size_t kWordWidth = 10;
constexpr std::size_t kLineWidth = 100;  // of a list of checks

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// A word of the command line, for both kinds of shells.
std::string quotedWord(const std::string& word) {
    const bool plain = !word.empty() && word.find_first_of(" \t\"'$`;&|<>()*?!#~") == std::string::npos;
    return plain ? word : "\"" + word + "\"";
}

void addLine(std::string& out, const char* name, const std::string& text) {
    if (text.empty()) {
        return;
    }
    out += std::string(kWordWidth, ' ') + padded(name, 7);
    for (const char c : text) {
        out += c;
        if (c == '\n') {
            out += std::string(kWordWidth + 7, ' ');
        }
    }
    out += "\n";
}

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    std::erase(text, '\r');
    return text;
}

std::string joinedLines(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& line : lines) {
        out += (out.empty() ? "" : "\n") + line;
    }
    return out;
}

}  // namespace

std::size_t OutcomeCounts::all() const {
    return std::accumulate(numbers.begin(), numbers.end(), std::size_t{0});
}

OutcomeCounts countOutcomes(const std::vector<CheckResult>& results) {
    OutcomeCounts out;
    for (const CheckResult& result : results) {
        ++out.numbers[static_cast<std::size_t>(result.outcome)];
    }
    return out;
}

std::string againText(const Validation& validation, const CheckResult& result) {
    std::string out = "importer_host validate " + quotedWord(validation.plugin);
    for (const std::string& clip : validation.clips) {
        out += " " + quotedWord(clip);
    }
    if (!validation.libraryFolder.empty()) {
        out += " --library-folder " + quotedWord(validation.libraryFolder);
    }
    return out + " --only " + result.id + " --seed " + std::to_string(result.seed);
}

std::string skippedText(const std::vector<CheckResult>& results) {
    std::vector<std::pair<std::string, std::vector<std::string>>> reasons;
    for (const CheckResult& result : results) {
        if (result.outcome != Outcome::kSkipped) {
            continue;
        }
        auto at = std::find_if(reasons.begin(), reasons.end(),
                               [&](const auto& reason) { return reason.first == result.reason; });
        if (at == reasons.end()) {
            at = reasons.insert(at, {result.reason, {}});
        }
        if (std::find(at->second.begin(), at->second.end(), result.id) == at->second.end()) {
            at->second.push_back(result.id);
        }
    }
    std::string out;
    for (const auto& [reason, ids] : reasons) {
        const std::string what = ids.size() == 1 ? ids.front() : std::to_string(ids.size()) + " checks";
        out += padded("skipped", kWordWidth) + what + ": " + reason + "\n";
        std::string line;
        for (std::size_t i = 0; ids.size() > 1 && i < ids.size(); ++i) {
            if (line.size() + ids[i].size() > kLineWidth) {
                out += std::string(kWordWidth, ' ') + line + "\n";
                line.clear();
            }
            line += (line.empty() ? "" : " ") + ids[i] + (i + 1 < ids.size() ? "," : "");
        }
        out += line.empty() ? "" : std::string(kWordWidth, ' ') + line + "\n";
    }
    return out;
}

std::string resultText(const Validation& validation, const CheckResult& result) {
    std::string word = outcomeName(result.outcome);
    if (isBad(result.outcome)) {
        std::transform(word.begin(), word.end(), word.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    }
    std::string out = padded(word, kWordWidth) + result.id;
    if (result.outcome == Outcome::kSkipped) {
        return out + ": " + result.reason + "\n";
    }
    out += "\n";
    if (result.outcome == Outcome::kPassed) {
        return out;
    }
    if (const Check* check = findCheck(result.id)) {
        addLine(out, "rule", check->rule);
        addLine(out, "why", check->reason);
    }
    for (const Finding& finding : result.findings) {
        addLine(out, "call", finding.call);
        addLine(out, "field", finding.field);
        addLine(out, "clip", finding.clip);
        addLine(out, "seen", finding.seen);
    }
    addLine(out, "how", result.reason);
    addLine(out, "calls", joinedLines(result.calls));
    addLine(out, "said", trimmed(result.output));
    addLine(out, "dump", result.dump);
    addLine(out, "again", againText(validation, result));
    return out;
}

std::string summaryText(const OutcomeCounts& counts) {
    std::string out = counts.success() ? "SUCCESS: " : "FAILURE: ";
    out += std::to_string(counts.all()) + (counts.all() == 1 ? " check" : " checks");
    const char* before = ": ";
    const auto add = [&](Outcome outcome, const char* words, bool always = false) {
        if (always || counts.of(outcome) > 0) {
            out += before + std::to_string(counts.of(outcome)) + " " + words;
            before = ", ";
        }
    };
    add(Outcome::kFailed, "failed");
    add(Outcome::kCrashed, "crashed");
    add(Outcome::kTimedOut, "timed out");
    add(Outcome::kPassed, "passed", true);
    add(Outcome::kWarning, counts.of(Outcome::kWarning) == 1 ? "with a warning" : "with warnings");
    add(Outcome::kSkipped, "skipped");
    if (counts.bad() == 0 && !counts.success()) {
        out += "; nothing was checked";
    }
    return out;
}

std::string listText(const std::vector<Check>& checks) {
    std::size_t width = 0;
    for (const Check& check : checks) {
        width = std::max(width, check.id.size());
    }
    std::string out;
    for (const Check& check : checks) {
        const std::string level = std::to_string(check.level);
        out += padded(check.id, width + 2) + std::string(2 - level.size(), ' ') + level + "  " + check.rule +
               "\n";
    }
    return out;
}

std::string listMarkdown(const std::vector<Check>& checks) {
    std::string out = "| Check | Level | Rule | Why |\n|---|---|---|---|\n";
    for (const Check& check : checks) {
        out += "| `" + check.id + "` | " + std::to_string(check.level) + " | " + check.rule + " | " +
               check.reason + " |\n";
    }
    return out;
}

std::string explainText(const Check& check) {
    return check.id + ", level " + std::to_string(check.level) + "\n\nRule: " + check.rule +
           "\nWhy:  " + check.reason + "\n\nTo run it alone: importer_host validate PLUGIN.prm --only " +
           check.id + "\n";
}

}  // namespace simhost::tool::validate
