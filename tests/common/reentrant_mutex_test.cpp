#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "common/reentrant_mutex.h"

namespace vexcap {
namespace {

// The holder takes it again at will; another thread gets it only after the last unlock.
TEST(ReentrantMutex, AnotherThreadWaitsUntilTheHolderLeavesEveryLevel) {
  ReentrantMutex mutex;
  std::atomic<bool> taken{false};
  mutex.lock();
  mutex.lock();
  std::thread other([&] {
    std::lock_guard<ReentrantMutex> lock(mutex);
    taken = true;
  });
  mutex.unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(taken) << "taken while its holder still held one level";
  mutex.unlock();
  other.join();
  EXPECT_TRUE(taken);
}

TEST(ReentrantMutex, ThreadsTakingTurnsNeverOverlap) {
  ReentrantMutex mutex;
  int inside = 0, overlaps = 0, entries = 0;
  auto take_turns = [&] {
    for (int i = 0; i < 2000; ++i) {
      std::lock_guard<ReentrantMutex> outer(mutex);
      std::lock_guard<ReentrantMutex> inner(mutex);
      if (++inside != 1) ++overlaps;
      ++entries;
      --inside;
    }
  };
  auto first = std::async(std::launch::async, take_turns);
  auto second = std::async(std::launch::async, take_turns);
  first.get();
  second.get();
  EXPECT_EQ(overlaps, 0);
  EXPECT_EQ(entries, 4000);
}

TEST(ReentrantMutex, WaitersGetItInTheOrderTheyAsked) {
  ReentrantMutex mutex;
  std::mutex order_mutex;
  std::vector<int> order;
  mutex.lock();
  std::vector<std::thread> waiters;
  for (int i = 0; i < 4; ++i) {
    waiters.emplace_back([&, i] {
      std::lock_guard<ReentrantMutex> lock(mutex);
      std::lock_guard<std::mutex> record(order_mutex);
      order.push_back(i);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));  // waiter i is queued before i + 1
  }
  mutex.unlock();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

}  // namespace
}  // namespace vexcap
