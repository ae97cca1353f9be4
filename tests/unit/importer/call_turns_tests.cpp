// Who may be on an importer together, and who comes next. Threads are numbers here: nothing waits.
#include "importer/call_turns.h"

#include <gtest/gtest.h>

#include <deque>

namespace orvantis {
namespace {

class CallTurnsTest : public testing::Test {
 protected:
    CallTurn& arrive(std::uintptr_t thread, bool exclusive) {
        CallTurn& turn = m_made.emplace_back(thread, exclusive);
        turns.arrive(turn);
        return turn;
    }
    CallTurn& shared(std::uintptr_t thread) { return arrive(thread, false); }
    CallTurn& exclusive(std::uintptr_t thread) { return arrive(thread, true); }

    CallTurns turns;

 private:
    std::deque<CallTurn> m_made;
};

TEST_F(CallTurnsTest, SharedCallsAreInsideTogether) {
    CallTurn& a = shared(1);
    CallTurn& b = shared(2);
    EXPECT_TRUE(a.admitted);
    EXPECT_TRUE(b.admitted);
    EXPECT_FALSE(turns.leave(a));
    EXPECT_FALSE(turns.leave(b));
    EXPECT_EQ(turns.outermostOf(1), nullptr);
}

TEST_F(CallTurnsTest, AnExclusiveCallWaitsForAllThatAreInside) {
    CallTurn& a = shared(1);
    CallTurn& b = shared(2);
    CallTurn& alone = exclusive(3);
    EXPECT_FALSE(alone.admitted);
    EXPECT_FALSE(turns.leave(b));
    EXPECT_FALSE(alone.admitted);
    EXPECT_TRUE(turns.leave(a)) << "somebody is to be woken";
    EXPECT_TRUE(alone.admitted);
}

TEST_F(CallTurnsTest, NobodyComesInWhileAnExclusiveCallIsInside) {
    CallTurn& alone = exclusive(1);
    ASSERT_TRUE(alone.admitted);
    CallTurn& a = shared(2);
    CallTurn& b = shared(3);
    CallTurn& next = exclusive(4);
    EXPECT_FALSE(a.admitted || b.admitted || next.admitted);
    EXPECT_TRUE(turns.leave(alone));
    EXPECT_TRUE(a.admitted && b.admitted) << "both at once";
    EXPECT_FALSE(next.admitted);
}

TEST_F(CallTurnsTest, NewCallsDoNotOvertakeAnExclusiveOneThatWaits) {
    CallTurn& a = shared(1);
    CallTurn& alone = exclusive(2);
    CallTurn& late = shared(3);
    EXPECT_FALSE(late.admitted) << "a stream of frames must not keep a close waiting for ever";
    turns.leave(a);
    EXPECT_TRUE(alone.admitted);
    EXPECT_FALSE(late.admitted);
    turns.leave(alone);
    EXPECT_TRUE(late.admitted);
}

TEST_F(CallTurnsTest, ExclusiveCallsDoNotOvertakeASharedOneThatWaits) {
    CallTurn& first = exclusive(1);
    CallTurn& frame = shared(2);
    CallTurn& second = exclusive(3);
    turns.leave(first);
    EXPECT_TRUE(frame.admitted);
    EXPECT_FALSE(second.admitted);
    turns.leave(frame);
    EXPECT_TRUE(second.admitted);
}

TEST_F(CallTurnsTest, ACallFromInsideACallGoesOnAtOnce) {
    CallTurn& outer = shared(1);
    CallTurn& alone = exclusive(2);
    CallTurn& inner = shared(1);
    EXPECT_TRUE(inner.admitted) << "the exclusive call waits for the outer one, which waits for this";
    CallTurn& innermost = shared(1);
    EXPECT_TRUE(innermost.admitted);
    EXPECT_EQ(turns.outermostOf(1), &outer);
    turns.leave(innermost);
    turns.leave(inner);
    EXPECT_FALSE(alone.admitted);
    turns.leave(outer);
    EXPECT_TRUE(alone.admitted);
}

TEST_F(CallTurnsTest, ACallFromInsideAnExclusiveOneLetsNobodyElseIn) {
    CallTurn& alone = exclusive(1);
    CallTurn& inner = shared(1);
    EXPECT_TRUE(inner.admitted);
    CallTurn& other = shared(2);
    EXPECT_FALSE(other.admitted);
    EXPECT_FALSE(turns.leave(inner));
    EXPECT_FALSE(other.admitted);
    EXPECT_TRUE(turns.leave(alone));
    EXPECT_TRUE(other.admitted);
}

TEST_F(CallTurnsTest, ATurnLinedUpFromInsideACallComesBehindItInOrderOfArrival) {
    CallTurn& outer = shared(1);
    CallTurn after(1, true);
    turns.lineUp(after);
    CallTurn& reopening = exclusive(2);
    EXPECT_FALSE(after.admitted);
    EXPECT_TRUE(turns.leave(outer));
    EXPECT_TRUE(after.admitted);
    EXPECT_FALSE(reopening.admitted);
    turns.leave(after);
    EXPECT_TRUE(reopening.admitted);
    turns.leave(reopening);
}

TEST_F(CallTurnsTest, OnlyCallsThatAreInsideMakeAThreadsCallsInner) {
    CallTurn& alone = exclusive(1);
    CallTurn& waiting = shared(2);
    EXPECT_EQ(turns.outermostOf(2), nullptr);
    turns.leave(alone);
    EXPECT_EQ(turns.outermostOf(2), &waiting);
    turns.leave(waiting);
    CallTurn& again = exclusive(2);
    EXPECT_TRUE(again.admitted) << "nothing is left behind";
}

}  // namespace
}  // namespace orvantis
