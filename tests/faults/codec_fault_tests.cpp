// Every single call of a session into the codec library fails once. The library counts the calls of each of
// its functions, so each function is gone through by itself; together that is every call.
#include <optional>
#include <string>
#include <string_view>

#include "tests/faults/fault_session.h"

namespace {

using orvantis::test::ScopedEnvironment;

constexpr std::uint64_t kMost = 5000;
// compress_query is exported by the library and has no place in an importer.
constexpr const char* kFunctions[] = {"library_init",     "library_close",    "open",       "close",
                                      "decompress_query", "decompress_begin", "decompress", "decompress_end",
                                      "get_string",       "get_param"};

std::uint64_t occurrences(std::string_view text, std::string_view part) {
    std::uint64_t count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

class CodecCallFaults : public SessionFaults {
 protected:
    void start() {
        m_trace.emplace("ORVANTIS_STANDIN_LOG", path("codec-calls.txt"));
        SessionFaults::start();
    }
    /// Lets the n-th call of each function, or that one and all behind it, fail for every n. Returns how many
    /// calls failed.
    std::uint64_t failEach(const char* suffix) {
        std::uint64_t total = 0;
        for (const char* function : kFunctions) {
            // As the library's account has it: "#7 T1 open(".
            const std::string called = ' ' + std::string(function) + '(';
            bool reached = true;
            for (std::uint64_t n = 1; reached; ++n) {
                const std::string plan = std::string(function) + ':' + std::to_string(n) + suffix;
                orvantis::test::writeFile(path("codec-calls.txt"), "");
                const bool good = survives(
                    plan, [&](simhost::Host&) { m_plan.emplace("ORVANTIS_STANDIN_FAIL", plan); },
                    [&](simhost::Host&) {
                        m_plan.reset();
                        const std::string calls = orvantis::test::readFile(path("codec-calls.txt"));
                        reached = occurrences(calls, called) >= n;
                    });
                if (!good || n >= kMost) {
                    ADD_FAILURE() << "stopped at " << plan;
                    return total;
                }
                total += reached ? 1 : 0;
            }
        }
        return total;
    }
    void TearDown() override {
        SessionFaults::TearDown();
        m_trace.reset();
        // Sessions that the library refused to close are its own affair; everything else is undone.
        const std::string calls = orvantis::test::readFile(path("codec-calls.txt"));
        EXPECT_NE(calls.find(" unload, "), std::string::npos) << calls;
    }

 private:
    std::optional<ScopedEnvironment> m_trace;
    std::optional<ScopedEnvironment> m_plan;
};

TEST_F(CodecCallFaults, EachFailsOnce) {
    start();
    const std::uint64_t calls = failEach("");
    EXPECT_GT(calls, 50U);
    RecordProperty("calls", std::to_string(calls));
}

TEST_F(CodecCallFaults, EachFailsAndSoDoAllOfThatFunctionBehindIt) {
    start();
    EXPECT_GT(failEach("+"), 50U);
}

}  // namespace
