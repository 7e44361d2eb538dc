#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "common/worker_thread.h"

namespace vexcap {
namespace {

TEST(WorkerThread, AFinishedWorkerIsJoined) {
  std::atomic<bool> ran{false};
  WorkerThread worker([&] { ran = true; });
  EXPECT_TRUE(worker.join_for(std::chrono::seconds(5)));
  EXPECT_TRUE(ran);
  EXPECT_TRUE(worker.join_for(std::chrono::milliseconds(0)));  // already joined
}

TEST(WorkerThread, AWorkerStillRunningAtTheLimitIsAbandonedAndFinishesLater) {
  struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
    bool finished = false;
  };
  auto gate = std::make_shared<Gate>();
  {
    WorkerThread worker([gate] {
      std::unique_lock<std::mutex> lock(gate->mutex);
      gate->changed.wait(lock, [&] { return gate->open; });
      gate->finished = true;
      gate->changed.notify_all();
    });
    EXPECT_FALSE(worker.join_for(std::chrono::milliseconds(20)));
  }  // abandoned here, not killed
  std::unique_lock<std::mutex> lock(gate->mutex);
  gate->open = true;
  gate->changed.notify_all();
  EXPECT_TRUE(gate->changed.wait_for(lock, std::chrono::seconds(5), [&] { return gate->finished; }));
}

}  // namespace
}  // namespace vexcap
