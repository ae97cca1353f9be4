// Part of test programs that have all mutants: writes for each test which functions with mutants it reached,
// in how many microseconds of the processor. What is reached between two tests, as by a fixture of a whole
// suite, stands behind "-".
#include <gtest/gtest.h>

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

const bool listens = [] {
    if (const char* const path = std::getenv("MUTANT_TESTS_REACH")) {
        testing::UnitTest::GetInstance()->listeners().Append(new Listener(path));
    }
    return true;
}();

}  // namespace
