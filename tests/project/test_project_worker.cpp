#include "project/project_worker.h"

#include <QThread>

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "project/manifest.h"
#include "project/project_errors.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

using testing::StartsWith;

/// What came back to the main thread, and in which order.
template <class Value>
struct Delivery {
    int completions = 0;
    bool wasBusy = false;
    bool onMainThread = true;
    std::optional<Value> value;
    std::string error;
    bool isCancelled = false;
    std::vector<ProjectProgress> reports;
    std::vector<std::chrono::steady_clock::time_point> times;

    ProjectWorker::ProgressHandler progress() {
        return [this](const ProjectProgress& report) {
            onMainThread = onMainThread && QThread::currentThread() == QCoreApplication::instance()->thread();
            EXPECT_EQ(completions, 0) << "progress after the completion";
            reports.push_back(report);
            times.push_back(std::chrono::steady_clock::now());
        };
    }
    auto completion(ProjectWorker& worker) {
        return [this, &worker](Outcome<Value>& outcome) {
            ++completions;
            wasBusy = worker.isBusy();
            onMainThread = onMainThread && QThread::currentThread() == QCoreApplication::instance()->thread();
            try {
                value = outcome.get();
            } catch (const ProjectCoreError& thrown) {
                error = thrown.what();
                isCancelled = thrown.isCancelled();
            } catch (const std::exception& thrown) {
                error = thrown.what();
            }
        };
    }
    bool wait() {
        return waitUntil([this] { return completions > 0; }, 60);
    }
};

std::shared_ptr<const ProjectPlan> shared(const ProjectPlan& plan) {
    return std::make_shared<const ProjectPlan>(plan);
}

class Worker : public testing::Test {
protected:
    Worker() {
        for (int index = 0; index < 8; ++index)
            writeFile(place.source("d/" + std::to_string(index) + ".mov"),
                      someBytes(3'000'000 + static_cast<std::size_t>(index), static_cast<unsigned>(index)));
    }

    ProjectRequest request() const { return place.request("P", {"d/"}); }
    /// A request whose planning reads half a gigabyte: it runs on while a few calls are made.
    ProjectRequest longRequest() const {
        for (const char* name : {"long/a", "long/b"}) {
            writeFile(place.source(name), "");
            std::filesystem::resize_file(place.source(name), 268'435'456);
        }
        return place.request("P", {"long/"});
    }
    FileUrl manifestURL() const { return fileLocation(place.into() + "/P/" + std::string(manifestFilename)); }

    Workplace place;
    ProjectWorker worker;
};

TEST_F(Worker, PlansExecutesAndRetries) {
    EXPECT_FALSE(worker.isBusy());
    EXPECT_FALSE(worker.isCancelled());
    Delivery<ProjectPlan> planned;
    worker.makePlan(request(), planned.progress(), planned.completion(worker));
    EXPECT_EQ(planned.completions, 0) << "the call returns before its outcome";
    ASSERT_TRUE(planned.wait());
    ASSERT_TRUE(planned.value) << planned.error;
    EXPECT_EQ(planned.value->items.size(), 8U);

    Delivery<ProjectResult> executed;
    worker.execute(shared(*planned.value), executed.progress(), executed.completion(worker));
    ASSERT_TRUE(executed.wait());
    ASSERT_TRUE(executed.value) << executed.error;
    EXPECT_EQ(executed.value->copiedCount, 8);
    ASSERT_FALSE(executed.reports.empty());
    EXPECT_EQ(executed.reports.back().message, "已校验 8 个文件；失败 0 个。FCP 尚未导入。");

    Delivery<ProjectResult> retried;
    worker.retry(manifestURL(), retried.progress(), retried.completion(worker));
    ASSERT_TRUE(retried.wait());
    EXPECT_EQ(retried.value.value().copiedCount, 8);

    for (const bool isRight : {planned.onMainThread, executed.onMainThread, retried.onMainThread,
                               !planned.wasBusy, !executed.wasBusy, !retried.wasBusy})
        EXPECT_TRUE(isRight);
    EXPECT_EQ(planned.completions + executed.completions + retried.completions, 3);
}

TEST_F(Worker, ReportsAreThrottledButForTheLast) {
    Delivery<ProjectPlan> planned;
    worker.makePlan(request(), {}, planned.completion(worker));
    ASSERT_TRUE(planned.wait());
    Delivery<ProjectResult> executed;
    worker.execute(shared(planned.value.value()), executed.progress(), executed.completion(worker));
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(executed.wait());
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    ASSERT_GE(executed.reports.size(), 2U);
    EXPECT_EQ(executed.reports.front().message, "复制与校验：0.mov") << "the first one is never dropped";
    EXPECT_EQ(executed.reports.back().completedFiles, 8);
    EXPECT_LE(static_cast<double>(executed.reports.size()), 2 + taken.count() / 0.12);
}

TEST_F(Worker, ASecondJobIsRefusedAndTheFirstUndisturbed) {
    Delivery<ProjectPlan> planned;
    worker.makePlan(longRequest(), planned.progress(), planned.completion(worker));
    EXPECT_TRUE(worker.isBusy());
    Delivery<ProjectPlan> plannedToo;
    Delivery<ProjectResult> executed;
    Delivery<ProjectResult> retried;
    worker.makePlan(request(), plannedToo.progress(), plannedToo.completion(worker));
    worker.execute(shared({}), executed.progress(), executed.completion(worker));
    worker.retry(manifestURL(), retried.progress(), retried.completion(worker));
    EXPECT_EQ(plannedToo.completions + executed.completions + retried.completions, 0) << "later, not at once";
    ASSERT_TRUE(plannedToo.wait() && executed.wait() && retried.wait() && planned.wait());
    for (const std::string& error : {plannedToo.error, executed.error, retried.error})
        EXPECT_EQ(error, project_text::busy);
    EXPECT_TRUE(planned.value);
    EXPECT_FALSE(worker.isCancelled());
    EXPECT_EQ(planned.completions + plannedToo.completions + executed.completions + retried.completions, 4);
}

TEST_F(Worker, StoppingAPlan) {
    for (int index = 0; index < 3000; ++index)
        writeFile(place.source("many/" + std::to_string(index) + ".txt"), "same");
    Delivery<ProjectPlan> planned;
    worker.makePlan(place.request("P", {"many/"}), planned.progress(), planned.completion(worker));
    ASSERT_TRUE(waitUntil([&] { return !planned.reports.empty(); }));
    worker.setCancelled();
    EXPECT_TRUE(worker.isCancelled());
    ASSERT_TRUE(planned.wait());
    EXPECT_TRUE(planned.isCancelled);
    EXPECT_EQ(planned.error, project_text::cancelled);

    Delivery<ProjectPlan> again;
    worker.makePlan(request(), again.progress(), again.completion(worker));
    EXPECT_FALSE(worker.isCancelled()) << "a new job begins without the old wish";
    ASSERT_TRUE(again.wait());
    EXPECT_TRUE(again.value) << again.error;
}

TEST_F(Worker, StoppingARun) {
    Delivery<ProjectPlan> planned;
    worker.makePlan(request(), {}, planned.completion(worker));
    ASSERT_TRUE(planned.wait());
    Delivery<ProjectResult> executed;
    worker.execute(shared(planned.value.value()), executed.progress(), executed.completion(worker));
    ASSERT_TRUE(waitUntil([&] { return !executed.reports.empty(); }));
    worker.setCancelled();
    ASSERT_TRUE(executed.wait());
    ASSERT_TRUE(executed.value) << executed.error;
    EXPECT_TRUE(executed.value->cancelled);
    EXPECT_LT(executed.value->copiedCount, 8);
    EXPECT_EQ(executed.reports.back().message, project_text::stopped);

    Delivery<ProjectResult> retried;
    worker.retry(manifestURL(), retried.progress(), retried.completion(worker));
    ASSERT_TRUE(retried.wait());
    EXPECT_EQ(retried.value.value().copiedCount, 8);
}

TEST_F(Worker, ErrorsReachTheCompletion) {
    Delivery<ProjectPlan> planned;
    worker.makePlan(place.request("a/b", {}), planned.progress(), planned.completion(worker));
    ASSERT_TRUE(planned.wait());
    EXPECT_EQ(planned.error, project_text::invalidName);
    EXPECT_FALSE(planned.isCancelled || planned.wasBusy);
    Delivery<ProjectResult> retried;
    worker.retry(manifestURL(), retried.progress(), retried.completion(worker));
    ASSERT_TRUE(retried.wait());
    EXPECT_THAT(retried.error, StartsWith(std::string(project_text::unreachablePathPrefix)));
}

TEST_F(Worker, AWorkerThatGoesStopsItsJobAndTellsNobody) {
    auto calls = std::make_shared<int>(0);
    auto reports = std::make_shared<int>(0);
    auto mortal = std::make_unique<ProjectWorker>();
    Delivery<ProjectPlan> planned;
    mortal->makePlan(request(), {}, planned.completion(*mortal));
    ASSERT_TRUE(planned.wait());
    mortal->execute(
        shared(planned.value.value()), [reports](const ProjectProgress&) { ++*reports; },
        [calls](Outcome<ProjectResult>&) { ++*calls; });
    ASSERT_TRUE(waitUntil([&] { return *reports > 0; }));
    mortal.reset();
    const int before = *reports;
    bool later = false;
    postToMain([&later] { later = true; });
    ASSERT_TRUE(waitUntil([&] { return later; }));
    EXPECT_EQ(*calls, 0);
    EXPECT_EQ(*reports, before);
    EXPECT_LT(manifestAt(place.into() + "/P").revision, 18) << "the run did not go to its end";
}

TEST_F(Worker, ManyJobsOneAfterTheOtherFromTheirCompletions) {
    int done = 0;
    std::function<void()> next = [&] {
        worker.makePlan(
            request(), [](const ProjectProgress&) {},
            [&](Outcome<ProjectPlan>& outcome) {
                EXPECT_TRUE(outcome.value);
                if (++done < 20)
                    next();
            });
    };
    next();
    std::atomic<bool> isOver = false;
    std::thread observer([&] {
        while (!isOver) {
            static_cast<void>(worker.isBusy());
            static_cast<void>(worker.isCancelled());
        }
    });
    EXPECT_TRUE(waitUntil([&] { return done == 20; }, 60));
    isOver = true;
    observer.join();
}

}  // namespace
}  // namespace morvane::test
