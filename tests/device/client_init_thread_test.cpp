#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "device/client_init_thread.h"
#include "support/log_capture.h"

namespace vexcap::device {
namespace {

TEST(ClientInitThread, AnswersWhatTheInitializationReturned) {
  std::thread::id caller = std::this_thread::get_id();
  std::thread::id ran_on;
  EXPECT_EQ(device::run_client_initialization([&] {
              ran_on = std::this_thread::get_id();
              return HR_INVALID_STATE;
            }),
            HR_INVALID_STATE);
  EXPECT_NE(ran_on, caller);
  EXPECT_EQ(device::run_client_initialization([] { return HR_OK; }), HR_OK);
}

// The real limit: the one test that waits 10 seconds.
TEST(ClientInitThread, InitializationBeyondTheLimitTimesOut) {
  testing::LogCapture log;
  struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    bool release = false;
    bool finished = false;
  };
  auto gate = std::make_shared<Gate>();
  const hresult result = device::run_client_initialization([gate] {
    std::unique_lock<std::mutex> lock(gate->mutex);
    gate->changed.wait(lock, [&] { return gate->release; });
    gate->finished = true;
    gate->changed.notify_all();
    return HR_OK;
  });
  EXPECT_EQ(result, HR_TIMEOUT);
  EXPECT_TRUE(log.contains("E: Time out waiting for init thread to finish"));

  // The abandoned thread still finishes on its own.
  std::unique_lock<std::mutex> lock(gate->mutex);
  gate->release = true;
  gate->changed.notify_all();
  EXPECT_TRUE(gate->changed.wait_for(lock, std::chrono::seconds(10), [&] { return gate->finished; }));
}

}  // namespace
}  // namespace vexcap::device
