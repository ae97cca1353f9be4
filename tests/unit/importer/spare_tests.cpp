// One object that is taken and put back.
#include "diag/spare.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/support/latch.h"

namespace orvantis {
namespace {

struct Counted {
    static inline std::atomic<int> living{0};
    static inline std::atomic<int> made{0};
    Counted() {
        ++living;
        ++made;
    }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --living; }
    std::atomic<int> users{0};
};

class SpareTest : public testing::Test {
 protected:
    SpareTest() { Counted::made = 0; }
    ~SpareTest() override { EXPECT_EQ(Counted::living, 0); }
};

TEST_F(SpareTest, TheSameObjectServesOneCallAfterTheOther) {
    Spare<Counted> spare;
    EXPECT_EQ(spare.take(), nullptr);
    const Counted* first = nullptr;
    {
        const Loan<Counted> loan(spare);
        first = &*loan;
    }
    for (int i = 0; i < 3; ++i) {
        const Loan<Counted> loan(spare);
        EXPECT_EQ(&*loan, first);
    }
    EXPECT_EQ(Counted::made, 1);
}

TEST_F(SpareTest, ACallThatMeetsAnotherGetsAnObjectOfItsOwnAndOneIsKept) {
    Spare<Counted> spare;
    {
        const Loan<Counted> outer(spare);
        const Loan<Counted> inner(spare);
        EXPECT_NE(&*outer, &*inner);
    }
    EXPECT_EQ(Counted::living, 1);
    spare.drop();
    EXPECT_EQ(Counted::living, 0);
}

TEST_F(SpareTest, NoTwoThreadsEverHoldTheSameObject) {
    Spare<Counted> spare;
    test::Latch start(4);
    std::atomic<int> shared{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            start.arriveAndWait();
            for (int i = 0; i < 5000; ++i) {
                const Loan<Counted> loan(spare);
                if (++loan->users != 1) {
                    ++shared;
                }
                --loan->users;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(shared, 0);
    EXPECT_EQ(Counted::living, 1);
}

}  // namespace
}  // namespace orvantis
