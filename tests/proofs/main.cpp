// Proves the statements about the plug-in's arithmetic, and refutes each of them without its guards:
//
//     proofs [--fast] [--seconds N] [NAME]
//
// --fast leaves out what takes minutes, --seconds is the limit of each question, NAME chooses statements that
// begin so. A counter-example is played through the plug-in's own code: without the guard it has to break the
// statement there too, with the guard it must not. Exit code 1 when anything else comes out.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "tests/proofs/proof.h"

namespace {

using proofs::Case;
using proofs::Model;
using proofs::Question;
using proofs::Replay;
using proofs::Statement;

unsigned g_secondsEach = 300;

struct Answer {
    z3::check_result result = z3::unknown;
    double seconds = 0;
    Model model;
    std::string shown;     // the inputs
    std::string violated;  // the claim that the solver says is violated
};

std::uint64_t bitsOf(const z3::expr& value) {
    if (value.is_bv()) {
        return value.get_numeral_uint64();
    }
    const std::string digits = value.get_decimal_string(0);
    return digits[0] == '-' ? static_cast<std::uint64_t>(std::strtoll(digits.c_str(), nullptr, 10))
                            : std::strtoull(digits.c_str(), nullptr, 10);
}

/// Asks for a violation of one claim; the answer's result and seconds are set by the caller.
z3::check_result violation(Question& question, const std::string& what, const z3::expr& claim,
                           unsigned seconds, Answer& answer) {
    z3::solver solver(question.context);
    z3::params parameters(question.context);
    parameters.set("timeout", seconds * 1000);
    solver.set(parameters);
    for (const z3::expr& assumption : question.assumptions) {
        solver.add(assumption);
    }
    solver.add(!claim);
    const z3::check_result result = solver.check();
    if (result != z3::unsat) {
        answer.violated = what;
    }
    if (result == z3::sat) {
        const z3::model model = solver.get_model();
        for (const auto& [name, term] : question.inputs) {
            const std::uint64_t value = bitsOf(model.eval(term, true));
            answer.model[name] = value;
            answer.shown += (answer.shown.empty() ? "" : ", ") + name + " = " + std::to_string(value);
        }
    }
    return result;
}

Answer ask(const Case& about) {
    Question question;
    question.context.set_rounding_mode(z3::RNE);
    proofs::g_question = &question;
    about.ask();
    Answer answer;
    const std::clock_t begun = std::clock();  // of the processor
    // One claim after the other, so that the hard ones do not hide behind each other. Where one that does not
    // hold is looked for, each for a moment first: it may be behind one that holds and is hard.
    std::vector<unsigned> limits{g_secondsEach};
    if (about.without != orvantis::Guard::kNone) {
        limits = {1, 10, g_secondsEach};
    }
    auto open = question.claims;
    for (const unsigned seconds : limits) {
        answer.result = z3::unsat;
        std::erase_if(open, [&](const auto& claim) {
            if (answer.result == z3::sat) {
                return false;
            }
            const z3::check_result result =
                violation(question, claim.first, claim.second, std::min(seconds, g_secondsEach), answer);
            if (result != z3::unsat) {
                answer.result = result;
            }
            return result == z3::unsat;
        });
        if (answer.result != z3::unknown) {
            break;
        }
    }
    answer.seconds = static_cast<double>(std::clock() - begun) / CLOCKS_PER_SEC;
    proofs::g_question = nullptr;
    return answer;
}

enum class Outcome { kHolds, kBroken, kTrapped, kOutsideAssumptions };

// In a process of its own, since without its guard a division may trap.
Outcome play(void (*replay)(), const Model& model) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        Replay run;
        run.model = &model;
        proofs::g_replay = &run;
        replay();
        _exit(!run.assumed ? 3 : run.violated.empty() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) {
        return Outcome::kTrapped;
    }
    switch (WEXITSTATUS(status)) {
        case 0:
            return Outcome::kHolds;
        case 3:
            return Outcome::kOutsideAssumptions;
        default:
            return Outcome::kBroken;
    }
}

bool proveStatement(const Statement& statement) {
    bool good = true;
    for (const Case& about : statement.cases) {
        const Answer answer = ask(about);
        const bool whole = about.without == orvantis::Guard::kNone;
        std::string verdict;
        bool right = false;
        if (answer.result == z3::unknown) {
            verdict = "UNDECIDED: " + answer.violated;
        } else if (whole) {
            right = answer.result == z3::unsat;
            verdict = right ? "proven" : "FALSE: " + answer.violated + ": " + answer.shown;
        } else if (answer.result == z3::unsat) {
            verdict = "NOT NEEDED: holds without it";
        } else {
            const Outcome without = play(about.replay, answer.model);
            const Outcome with = play(about.replayWhole, answer.model);
            right = (without == Outcome::kBroken || without == Outcome::kTrapped) &&
                    (with == Outcome::kHolds || with == Outcome::kOutsideAssumptions);
            verdict =
                right ? without == Outcome::kTrapped ? "refuted (traps): " : "refuted: " : "NOT REPLAYED: ";
            verdict += answer.violated + ": " + answer.shown;
        }
        good = good && right;
        if (whole) {
            std::printf("%-28s %7.2f s  %s: %s\n", statement.name, answer.seconds, verdict.c_str(),
                        statement.text);
        } else {
            std::printf("  without %-18s %7.2f s  %s\n", about.guardName, answer.seconds, verdict.c_str());
        }
        std::fflush(stdout);
    }
    return good;
}

}  // namespace

int main(int count, char** arguments) {
    bool fast = false;
    std::string chosen;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--fast") {
            fast = true;
        } else if (argument == "--seconds" && i + 1 < count) {
            g_secondsEach = static_cast<unsigned>(std::strtoul(arguments[++i], nullptr, 10));
        } else {
            chosen = argument;
        }
    }
    std::size_t proven = 0;
    std::size_t guards = 0;
    std::size_t wrong = 0;
    for (const auto list : {proofs::walkStatements, proofs::indexStatements, proofs::chunkStatements,
                            proofs::sampleStatements, proofs::timeStatements, proofs::rateStatements}) {
        for (const Statement& statement : list()) {
            if ((fast && statement.slow) ||
                std::strncmp(statement.name, chosen.c_str(), chosen.size()) != 0) {
                continue;
            }
            if (!proveStatement(statement)) {
                ++wrong;
                continue;
            }
            ++proven;
            guards += statement.cases.size() - 1;
        }
    }
    std::printf("%zu statements proven, each false without any of its guards (%zu), %zu not\n", proven,
                guards, wrong);
    return wrong == 0 && proven != 0 ? 0 : 1;
}
