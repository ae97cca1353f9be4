// Calls of a session into the codec library fail, one at a time. The library counts the calls of each of its
// functions, so each function is gone through by itself. Formats are asked for by hundreds of calls that are
// all alike: of those a quick run takes a part.
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/faults/fault_session.h"
#include "tests/support/thorough.h"

namespace {

using orvantis::test::ScopedEnvironment;

// compress_query is exported by the library and has no place in an importer.
constexpr const char* kFunctions[] = {"library_init",     "library_close",    "open",       "close",
                                      "decompress_query", "decompress_begin", "decompress", "decompress_end",
                                      "get_string",       "get_param"};

/// Lines of the library's account, "#7 T1 open(-> 0x10001) = 0", that are this call and, unless `result` is
/// empty, end in this result.
std::uint64_t callsOf(const std::string& account, std::string_view function, std::string_view result = {}) {
    const std::string called = ' ' + std::string(function) + '(';
    std::uint64_t count = 0;
    std::istringstream lines(account);
    for (std::string line; std::getline(lines, line);) {
        count += line.find(called) != std::string::npos && line.ends_with(result) ? 1U : 0U;
    }
    return count;
}

/// Each session and each initialisation that the library granted is given back once, whatever failed. An
/// initialisation whose session is refused stays: nothing is closed then.
void expectUndone(const std::string& plan, const std::string& account) {
    EXPECT_EQ(callsOf(account, "close"), callsOf(account, "open", " = 0")) << plan << "\n" << account;
    EXPECT_EQ(callsOf(account, "library_close") + callsOf(account, "open") - callsOf(account, "open", " = 0"),
              callsOf(account, "library_init", " = 0"))
        << plan << "\n"
        << account;
}

class CodecCallFaults : public SessionFaults, public ::testing::WithParamInterface<const char*> {
 protected:
    void start(Log log) {
        m_trace.emplace("ORVANTIS_STANDIN_LOG", path("codec-calls.txt"));
        SessionFaults::start(log);
    }
    /// Lets the n-th call of the function, or that one and all behind it, fail for every n. Returns how many
    /// calls failed.
    std::uint64_t failEach(const char* suffix) {
        const std::string function = GetParam();
        for (std::uint64_t n = 1; n < kMost;
             n = orvantis::test::nextCase(n, alwaysTaken(), kStep * orvantis::test::sampleStep(3))) {
            const std::string plan = function + ':' + std::to_string(n) + suffix;
            orvantis::test::writeFile(path("codec-calls.txt"), "");
            bool reached = false;
            const bool good = survives(
                plan, [&](simhost::Host&) { m_plan.emplace("ORVANTIS_STANDIN_FAIL", plan); },
                [&](simhost::Host&) {
                    m_plan.reset();
                    const std::string calls = orvantis::test::readFile(path("codec-calls.txt"));
                    reached = callsOf(calls, function) >= n;
                    expectUndone(plan, calls);
                });
            if (!good) {
                break;
            }
            if (!reached) {
                return n - 1;
            }
        }
        ADD_FAILURE() << "no end";
        return 0;
    }

 private:
    static std::uint64_t alwaysTaken() {
        return orvantis::test::takesQuickSample() ? 2 : orvantis::test::takesSample() ? 6 : 16;
    }
    static constexpr std::uint64_t kStep = 9;

    std::optional<ScopedEnvironment> m_trace;
    std::optional<ScopedEnvironment> m_plan;
};

TEST_P(CodecCallFaults, EachFailsOnce) {
    start(Log::kOn);
    const std::uint64_t calls = failEach("");
    EXPECT_GT(calls, 0U);
    RecordProperty("calls", std::to_string(calls));
}

TEST_P(CodecCallFaults, EachFailsAndSoDoAllOfThatFunctionBehindIt) {
    start(Log::kOff);
    EXPECT_GT(failEach("+"), 0U);
}

INSTANTIATE_TEST_SUITE_P(Function, CodecCallFaults, ::testing::ValuesIn(kFunctions),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
