#include <atomic>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "project/side_task.h"

namespace morvane {
namespace {

TEST(SideTask, RunsBesideTheCallerOneAfterTheOther) {
    SideTask task;
    task.wait();  // nothing was begun
    std::atomic<int> sum = 0;
    std::atomic<bool> isReleased = false;
    std::thread::id first;
    for (int round = 0; round < 3; ++round) {
        isReleased = false;
        task.start([&] {
            while (!isReleased)
                std::this_thread::yield();
            first = std::this_thread::get_id();
            ++sum;
        });
        EXPECT_EQ(sum, round);
        isReleased = true;
        task.wait();
        EXPECT_EQ(sum, round + 1);
        EXPECT_NE(first, std::this_thread::get_id());
    }
}

TEST(SideTask, ThrowsOnceWhatTheTaskThrew) {
    SideTask task;
    task.start([] { throw std::runtime_error("beside"); });
    EXPECT_THROW(task.wait(), std::runtime_error);
    EXPECT_NO_THROW(task.wait());
    bool hasRun = false;
    task.start([&] { hasRun = true; });
    EXPECT_NO_THROW(task.wait());
    EXPECT_TRUE(hasRun);
}

TEST(SideTask, ItsEndWaitsForTheTask) {
    std::atomic<bool> hasRun = false;
    {
        SideTask task;
        task.start([&] { hasRun = true; });
    }
    EXPECT_TRUE(hasRun);
}

}  // namespace
}  // namespace morvane
