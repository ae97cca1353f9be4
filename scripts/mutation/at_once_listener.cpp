// Part of test programs that have all mutants: writes for each test which functions with mutants it reached,
// in how many microseconds of the processor. What is reached between two tests, as by a fixture of a whole
// suite, stands behind "-". And ends the program when one test takes more of the processor than it is
// granted.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <ctime>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "at_once.h"

namespace {

class Listener : public testing::EmptyTestEventListener {
 public:
    explicit Listener(const char* path)
        : m_out(std::fopen(path, "a")), m_count(std::atoi(std::getenv("MUTANT_FUNCTIONS"))) {}

    void OnTestStart(const testing::TestInfo&) override {
        write("-");
        m_begin = std::clock();
    }

    void OnTestEnd(const testing::TestInfo& test) override {
        write(std::string(test.test_suite_name()) + "." + test.name());
    }

    void OnTestProgramEnd(const testing::UnitTest&) override { write("-"); }

 private:
    void write(const std::string& name) {
        std::fprintf(m_out, "%s %ld", name.c_str(), static_cast<long>(std::clock() - m_begin));
        for (int function = 0; mutants_at_once::reached != nullptr && function < m_count; ++function) {
            if (mutants_at_once::reached[function] != 0) {
                mutants_at_once::reached[function] = 0;
                std::fprintf(m_out, " %d", function);
            }
        }
        std::fputs("\n", m_out);
        std::fflush(m_out);
    }

    std::FILE* m_out;
    int m_count;
    std::clock_t m_begin = 0;
};

// SIGPROF ends the program: a mutant that never ends costs what one test may take, not what all may.
class Limit : public testing::EmptyTestEventListener {
 public:
    explicit Limit(int seconds) : m_limit{{0, 0}, {seconds, 0}} {}

    void OnTestStart(const testing::TestInfo&) override { setitimer(ITIMER_PROF, &m_limit, nullptr); }

 private:
    itimerval m_limit;
};

const bool listens = [] {
    testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
    if (const char* const path = std::getenv("MUTANT_TESTS_REACH")) {
        listeners.Append(new Listener(path));
    }
    if (const char* const seconds = std::getenv("MUTANT_TEST_SECONDS")) {
        listeners.Append(new Limit(std::atoi(seconds)));
    }
    return true;
}();

}  // namespace
