// What a pool's threads take their tasks from: first come, first served, and numbered.
#include "async/task_queue.h"

#include <gtest/gtest.h>

namespace {

class Nothing final : public orvantis::PoolTask {
 public:
    void run() noexcept override {}
};

TEST(TaskQueue, GivesTasksInTheOrderInWhichTheyCame) {
    orvantis::TaskQueue queue;
    Nothing one, two, three;
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(queue.pop(), nullptr);
    queue.push(one);
    queue.push(two);
    EXPECT_FALSE(queue.isEmpty());
    EXPECT_EQ(queue.pop(), &one);
    queue.push(three);
    queue.push(one);
    EXPECT_EQ(queue.pop(), &two);
    EXPECT_EQ(queue.pop(), &three);
    EXPECT_EQ(queue.pop(), &one);
    EXPECT_EQ(queue.pop(), nullptr);
    EXPECT_TRUE(queue.isEmpty());
}

TEST(TaskQueue, TheFirstKeepsItsNumberUntilItIsTaken) {
    orvantis::TaskQueue queue;
    Nothing one, two;
    EXPECT_EQ(queue.firstNumber(), 0U);
    queue.push(one);
    EXPECT_EQ(queue.firstNumber(), 1U);
    queue.push(two);
    EXPECT_EQ(queue.firstNumber(), 1U);
    queue.pop();
    EXPECT_EQ(queue.firstNumber(), 2U);
    queue.pop();
    EXPECT_EQ(queue.firstNumber(), 0U);
    queue.pop();
    queue.push(one);
    EXPECT_EQ(queue.firstNumber(), 3U) << "the same task, come anew";
}

}  // namespace
