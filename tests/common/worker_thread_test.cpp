#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

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

// Hosts start and end workers on several threads at once, and a worker often ends just as it is
// let go. Each piece of work runs exactly once and no thread starts without its own: MinGW's
// thread records, reused once too often, would start a thread with another's work or none.
TEST(WorkerThread, WorkersLetGoWhileEndingOnSeveralThreadsEachRunTheirOwnWorkOnce) {
  constexpr int kCreators = 4;
  constexpr int kWorkersEach = 1500;
  // Shared, so that a worker let go that runs late still counts into something alive.
  const auto runs = std::make_shared<std::vector<std::atomic<int>>>(kCreators * kWorkersEach);
  std::vector<std::thread> creators;
  for (int c = 0; c < kCreators; ++c) {
    creators.emplace_back([runs, c] {
      for (int i = 0; i < kWorkersEach; ++i) {
        const std::size_t mine = static_cast<std::size_t>(c * kWorkersEach + i);
        if (i % 2 == 0) {
          run_detached([runs, mine] { ++(*runs)[mine]; });
        } else {
          WorkerThread worker([runs, mine] { ++(*runs)[mine]; });
          worker.join_for(std::chrono::milliseconds(0));
        }
      }
    });
  }
  for (std::thread& creator : creators) creator.join();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  auto all_ran = [&] {
    for (const std::atomic<int>& count : *runs)
      if (count.load() == 0) return false;
    return true;
  };
  while (!all_ran() && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  int never = 0, twice = 0;
  for (const std::atomic<int>& count : *runs) {
    never += count.load() == 0;
    twice += count.load() > 1;
  }
  EXPECT_EQ(never, 0);
  EXPECT_EQ(twice, 0);
}

}  // namespace
}  // namespace vexcap
