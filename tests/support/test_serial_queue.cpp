// The serial queue, posting to the main thread, and delivery to an owner.
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

#include <QObject>

#include <gtest/gtest.h>

#include "support/deliver.h"
#include "support/main_post.h"
#include "support/serial_queue.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using test::waitUntil;

// A gate that keeps a queue's thread busy until it is opened.
class Gate {
public:
    void open() {
        const std::lock_guard lock(mutex_);
        isOpen_ = true;
        changed_.notify_all();
    }
    void pass() {
        std::unique_lock lock(mutex_);
        hasArrived_ = true;
        changed_.notify_all();
        changed_.wait(lock, [this] { return isOpen_; });
    }
    void waitForArrival() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return hasArrived_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOpen_ = false;
    bool hasArrived_ = false;
};

std::vector<int> upTo(int count) {
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

TEST(SerialQueue, RunsWorkInOrderOnOneThread) {
    std::vector<int> seen;
    std::vector<std::thread::id> threads;
    SerialQueue queue("com.example.order");
    for (const int number : upTo(1000)) {
        queue.post([&, number] {
            seen.push_back(number);
            threads.push_back(std::this_thread::get_id());
        });
    }
    queue.drain();
    EXPECT_EQ(seen, upTo(1000));
    EXPECT_EQ(std::count(threads.begin(), threads.end(), threads.front()), 1000);
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(SerialQueue, NamesItsThreadWithTheFirstBytesOfTheLabel) {
    SerialQueue queue("local.example.long-label");
    std::string name;
    queue.post([&name] {
        char buffer[16] = {};
        ::pthread_getname_np(::pthread_self(), buffer, sizeof buffer);
        name = buffer;
    });
    queue.drain();
    EXPECT_EQ(name, "local.example.l");
    EXPECT_EQ(queue.label(), "local.example.long-label");
}

TEST(SerialQueue, UtilityThreadsWeighLessAndLeaveTheCallerAlone) {
    const auto niceness = [] {
        return ::getpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)));
    };
    const int before = niceness();
    int utility = 0;
    int initiated = 0;
    SerialQueue quiet("quiet", SerialQueue::Priority::Utility);
    SerialQueue quick("quick");
    quiet.post([&] { utility = niceness(); });
    quick.post([&] { initiated = niceness(); });
    quiet.drain();
    quick.drain();
    EXPECT_EQ(initiated, before);
    EXPECT_EQ(utility, std::max(before, 10));
    EXPECT_EQ(niceness(), before);
}

TEST(SerialQueue, DestructionWaitsForTheRunningPieceAndDropsTheRest) {
    Gate gate;
    std::atomic<bool> finished = false;
    std::atomic<int> late = 0;
    const auto held = std::make_shared<int>(0);
    auto queue = std::make_unique<SerialQueue>("dropping");
    queue->post([&] {
        gate.pass();
        finished = true;
    });
    for (int count = 0; count < 100; ++count)
        queue->post([&late, held] { ++late; });
    gate.waitForArrival();
    ASSERT_EQ(held.use_count(), 101);

    // The running piece goes on only when the destructor has dropped what was waiting.
    std::thread opener([&] {
        while (held.use_count() > 1)
            std::this_thread::yield();
        gate.open();
    });
    queue.reset();
    opener.join();
    EXPECT_TRUE(finished);
    EXPECT_EQ(late, 0);
}

// Posts to its queue when it is destroyed.
class PostsAtItsEnd {
public:
    explicit PostsAtItsEnd(SerialQueue& queue) : queue_(&queue) {}
    ~PostsAtItsEnd() {
        queue_->post([] { ADD_FAILURE() << "work of a stopping queue ran"; });
    }
    PostsAtItsEnd(const PostsAtItsEnd&) = delete;
    PostsAtItsEnd& operator=(const PostsAtItsEnd&) = delete;

private:
    SerialQueue* queue_;
};

TEST(SerialQueue, AStoppingQueueTakesNothingMore) {
    Gate gate;
    std::atomic<bool> finished = false;
    auto queue = std::make_unique<SerialQueue>("stopping");
    auto last = std::make_shared<PostsAtItsEnd>(*queue);
    const std::weak_ptr<PostsAtItsEnd> alive = last;
    queue->post([&] {
        gate.pass();
        finished = true;
    });
    queue->post([last = std::move(last)] {});
    gate.waitForArrival();
    std::thread opener([&] {
        while (!alive.expired())
            std::this_thread::yield();
        gate.open();
    });
    queue.reset();
    opener.join();
    EXPECT_TRUE(finished);
}

TEST(SerialQueue, WorkMayPostMoreWork) {
    SerialQueue queue("nesting");
    std::vector<int> seen;
    queue.post([&] {
        queue.post([&seen] { seen.push_back(2); });
        seen.push_back(1);
    });
    queue.drain();
    queue.drain();
    EXPECT_EQ(seen, (std::vector<int>{1, 2}));
}

TEST(SerialQueue, DrainCoversWorkOfOtherThreads) {
    SerialQueue queue("many");
    int total = 0;  // only the queue's thread touches it before the drain
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int count = 0; count < 500; ++count)
                queue.post([&total] { ++total; });
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    queue.drain();
    EXPECT_EQ(total, 2000);
}

TEST(MainPost, KeepsTheOrderOfOneThreadAndRunsOnTheMainThread) {
    std::vector<int> seen;
    std::atomic<int> elsewhere = 0;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::thread poster([&] {
        for (const int number : upTo(2000)) {
            postToMain([&, number] {
                seen.push_back(number);
                if (std::this_thread::get_id() != mainThread)
                    ++elsewhere;
            });
        }
    });
    ASSERT_TRUE(waitUntil([&] { return seen.size() == 2000; }));
    poster.join();
    EXPECT_EQ(seen, upTo(2000));
    EXPECT_EQ(elsewhere, 0);
}

TEST(MainPost, NeverRunsInsideTheCall) {
    bool ran = false;
    postToMain([&ran] { ran = true; });
    EXPECT_FALSE(ran);
    EXPECT_TRUE(waitUntil([&ran] { return ran; }));
}

TEST(MainPost, WorkThatPostsRunsAfterWhatWasWaiting) {
    std::vector<int> seen;
    postToMain([&] {
        seen.push_back(1);
        postToMain([&seen] { seen.push_back(3); });
    });
    postToMain([&seen] { seen.push_back(2); });
    ASSERT_TRUE(waitUntil([&] { return seen.size() == 3; }));
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3}));
}

class Owner : public QObject {};

TEST(Deliver, HandsTheValueToTheOwnerOnTheMainThread) {
    SerialQueue queue("values");
    Owner owner;
    std::vector<std::string> delivered;
    std::thread::id deliveredOn;
    runAndDeliver(
        queue, &owner, [] { return std::string("result"); },
        [&](Owner& receiver, Outcome<std::string>& outcome) {
            EXPECT_EQ(&receiver, &owner);
            delivered.push_back(outcome.get());
            deliveredOn = std::this_thread::get_id();
        });
    ASSERT_TRUE(waitUntil([&] { return !delivered.empty(); }));
    queue.drain();
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, std::vector<std::string>{"result"});
    EXPECT_EQ(deliveredOn, std::this_thread::get_id());
}

TEST(Deliver, HandsOverWhatTheJobThrew) {
    SerialQueue queue("errors");
    Owner owner;
    std::string message;
    runAndDeliver(
        queue, &owner, []() -> int { throw std::runtime_error("目录不可读"); },
        [&message](Owner&, Outcome<int>& outcome) {
            EXPECT_FALSE(outcome.value.has_value());
            try {
                outcome.get();
            } catch (const std::runtime_error& error) {
                message = error.what();
            }
        });
    ASSERT_TRUE(waitUntil([&message] { return !message.empty(); }));
    EXPECT_EQ(message, "目录不可读");
}

TEST(Deliver, DoesNothingWhenTheOwnerIsGone) {
    SerialQueue queue("gone");
    auto owner = std::make_unique<Owner>();
    bool delivered = false;
    std::atomic<bool> worked = false;
    runAndDeliver(
        queue, owner.get(),
        [&worked] {
            worked = true;
            return 1;
        },
        [&delivered](Owner&, Outcome<int>&) { delivered = true; });
    queue.drain();
    owner.reset();
    bool passed = false;
    postToMain([&passed] { passed = true; });  // behind the delivery
    ASSERT_TRUE(waitUntil([&passed] { return passed; }));
    EXPECT_TRUE(worked);
    EXPECT_FALSE(delivered);
}

}  // namespace
}  // namespace morvane
