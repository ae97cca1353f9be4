// Turns: in the order of booking, without a thread that waits, and without fail when places are given up.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <deque>

#include "async/thread_pool.h"
#include "async/turns.h"
#include "tests/support/latch.h"

namespace {

using orvantis::Turns;

struct Booked {
    Turns::Place place{this};
};

TEST(Turns, TheFirstHasItAtOnceAndTheOthersPark) {
    Turns turns;
    Booked a, b;
    turns.book(a.place);
    turns.book(b.place);
    EXPECT_TRUE(Turns::enterOrPark(a.place));
    EXPECT_FALSE(Turns::enterOrPark(b.place));
    EXPECT_EQ(turns.leave(a.place), &b);
    EXPECT_EQ(turns.leave(b.place), nullptr);
}

TEST(Turns, OneThatHasNotAskedYetFindsItsTurnWhenItDoes) {
    Turns turns;
    Booked a, b;
    turns.book(a.place);
    turns.book(b.place);
    EXPECT_EQ(turns.leave(a.place), nullptr) << "b's task is still under way: nobody is to be called";
    EXPECT_TRUE(Turns::enterOrPark(b.place));
    EXPECT_EQ(turns.leave(b.place), nullptr);
}

TEST(Turns, AYoungerOneDoesNotPassAnOlderOneThatIsLate) {
    Turns turns;
    Booked a, late, c;
    for (Booked* each : {&a, &late, &c}) {
        turns.book(each->place);
    }
    EXPECT_FALSE(Turns::enterOrPark(c.place));
    EXPECT_EQ(turns.leave(a.place), nullptr);
    EXPECT_TRUE(Turns::enterOrPark(late.place));
    EXPECT_EQ(turns.leave(late.place), &c);
    EXPECT_EQ(turns.leave(c.place), nullptr);
}

TEST(Turns, APlaceThatHasLeftIsBookedAgainBehindAllOthers) {
    Turns turns;
    Booked a, b, c;
    turns.book(a.place);
    turns.book(b.place);
    EXPECT_EQ(turns.leave(a.place), nullptr);
    turns.book(a.place);
    EXPECT_FALSE(Turns::enterOrPark(a.place)) << "b is before it now";
    EXPECT_EQ(turns.leave(b.place), &a);
    EXPECT_EQ(turns.leave(a.place), nullptr);
    turns.book(c.place);
    EXPECT_TRUE(Turns::enterOrPark(c.place)) << "nobody is left in front";
    EXPECT_EQ(turns.leave(c.place), nullptr);
}

TEST(Turns, APlaceGivenUpFromTheMiddleIsPassedOver) {
    Turns turns;
    Booked a, b, c;
    for (Booked* each : {&a, &b, &c}) {
        turns.book(each->place);
    }
    EXPECT_FALSE(Turns::enterOrPark(c.place));
    EXPECT_EQ(turns.leave(b.place), nullptr) << "a still has the turn";
    EXPECT_EQ(turns.leave(a.place), &c);
    EXPECT_EQ(turns.leave(c.place), nullptr);
}

TEST(Turns, LeavingTwiceOrUnbookedDoesNothing) {
    Turns turns;
    Booked a, b;
    EXPECT_EQ(turns.leave(a.place), nullptr);
    turns.book(a.place);
    turns.book(b.place);
    EXPECT_FALSE(Turns::enterOrPark(b.place));
    EXPECT_EQ(turns.leave(a.place), &b);
    EXPECT_EQ(turns.leave(a.place), nullptr);
}

TEST(Turns, LeavingUnbookedTakesNobodysTurn) {
    Turns turns;
    Booked a, b, never;
    turns.book(a.place);
    turns.book(b.place);
    EXPECT_EQ(turns.leave(never.place), nullptr);
    EXPECT_FALSE(Turns::enterOrPark(b.place));
    EXPECT_EQ(turns.leave(a.place), &b);
}

TEST(Turns, LeavingTwiceDoesNotBringBackWhoHasLeftMeanwhile) {
    Turns turns;
    Booked a, b, c;
    turns.book(a.place);
    turns.book(b.place);
    EXPECT_EQ(turns.leave(b.place), nullptr);
    EXPECT_EQ(turns.leave(a.place), nullptr);
    EXPECT_EQ(turns.leave(b.place), nullptr);
    turns.book(c.place);
    EXPECT_TRUE(Turns::enterOrPark(c.place)) << "nobody is left in front";
    EXPECT_EQ(turns.leave(c.place), nullptr);
}

TEST(Turns, AWithdrawnOneIsHandedOnByTheWithdrawerAlone) {
    Turns turns;
    Booked a, b, c;
    for (Booked* each : {&a, &b, &c}) {
        turns.book(each->place);
    }
    EXPECT_FALSE(Turns::enterOrPark(b.place));
    EXPECT_FALSE(Turns::enterOrPark(c.place));
    EXPECT_TRUE(Turns::withdraw(b.place));
    EXPECT_FALSE(Turns::withdraw(b.place));
    EXPECT_EQ(turns.leave(a.place), nullptr) << "b has somebody already; c comes behind it";
    EXPECT_EQ(turns.leave(b.place), &c);
    EXPECT_EQ(turns.leave(c.place), nullptr);
}

TEST(Turns, OneWithdrawnBeforeItAsksDoesNotPark) {
    Turns turns;
    Booked a, b;
    turns.book(a.place);
    turns.book(b.place);
    EXPECT_FALSE(Turns::withdraw(b.place)) << "its task is under way";
    EXPECT_TRUE(Turns::enterOrPark(b.place));
    EXPECT_EQ(turns.leave(b.place), nullptr);
    EXPECT_EQ(turns.leave(a.place), nullptr);
}

/// What passes two steps of one clip, as the decode tasks do.
struct Order {
    Turns first, second;
    std::uint64_t atFirst = 0, atSecond = 0;  ///< each guarded by the turns
    std::atomic<std::uint64_t> overtook{0}, together{0};
    std::atomic<bool> insideFirst{false}, insideSecond{false};
    orvantis::ThreadPool pool;
    orvantis::test::Latch done;

    explicit Order(std::uint64_t tasks) : done(static_cast<std::ptrdiff_t>(tasks)) {}

    void pass(std::uint64_t number, std::uint64_t& next, std::atomic<bool>& inside) {
        if (inside.exchange(true)) {
            ++together;
        }
        if (number != next++) {
            ++overtook;
        }
        inside = false;
    }
};

struct Passing final : orvantis::PoolTask {
    Passing(Order& all, std::uint64_t which) : order(all), number(which) {}

    void run() noexcept override {
        if (step == 0 && !parkedBefore) {
            parkedBefore = true;
            if (!Turns::enterOrPark(first)) {
                return;
            }
        }
        if (step == 0) {
            order.pass(number, order.atFirst, order.insideFirst);
            step = 1;
            void* const next = order.first.leave(first);
            const bool goesOn = Turns::enterOrPark(second);
            if (next != nullptr) {
                order.pool.submit(*static_cast<Passing*>(next));
            }
            if (!goesOn) {
                return;
            }
        }
        order.pass(number, order.atSecond, order.insideSecond);
        void* const next = order.second.leave(second);
        if (next != nullptr) {
            order.pool.submit(*static_cast<Passing*>(next));
        }
        order.done.countDown();
    }

    Order& order;
    std::uint64_t number;
    int step = 0;
    bool parkedBefore = false;
    Turns::Place first{this};
    Turns::Place second{this};
};

TEST(Turns, NoneOfAHundredThousandOvertakesAnother) {
    constexpr std::uint64_t kTasks = 100'000;
    Order order(kTasks);
    std::deque<Passing> tasks;
    for (std::uint64_t i = 0; i < kTasks; ++i) {
        Passing& task = tasks.emplace_back(order, i);
        order.first.book(task.first);
        order.second.book(task.second);
        order.pool.submit(task);
    }
    order.done.wait();
    EXPECT_EQ(order.atFirst, kTasks);
    EXPECT_EQ(order.atSecond, kTasks);
    EXPECT_EQ(order.overtook, 0u);
    EXPECT_EQ(order.together, 0u) << "two had the turn at once";
}

}  // namespace
