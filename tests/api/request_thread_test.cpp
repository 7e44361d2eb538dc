// What the request thread promises, on whichever transport the build uses (mailbox or window).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "api/messages.h"
#include "api/request_transport.h"
#include "support/log_capture.h"

namespace vexcap::api {
namespace {

// What the handler saw, shared with the test.
struct Observations {
  std::mutex mutex;
  std::set<std::thread::id> threads;
  std::thread::id created_on;
  std::thread::id destroyed_on;
  std::vector<std::uint32_t> messages;
  std::atomic<int> in_flight{0};
  std::atomic<int> max_in_flight{0};
  RequestTransport* transport = nullptr;  // for requests sent from inside a handler
};

class RecordingHandler final : public RequestHandler {
 public:
  explicit RecordingHandler(Observations& seen) : seen_(seen) {
    seen_.created_on = std::this_thread::get_id();
  }
  ~RecordingHandler() override { seen_.destroyed_on = std::this_thread::get_id(); }

  bool dispatch(std::uint32_t message, std::uintptr_t wparam, std::intptr_t) override {
    const int now = ++seen_.in_flight;
    int max = seen_.max_in_flight;
    while (now > max && !seen_.max_in_flight.compare_exchange_weak(max, now)) {
    }
    {
      std::lock_guard<std::mutex> lock(seen_.mutex);
      seen_.threads.insert(std::this_thread::get_id());
      seen_.messages.push_back(message);
    }
    if (message == kMsgDeviceCapabilities) std::this_thread::sleep_for(std::chrono::microseconds(200));
    if (message == kMsgSourceGroupType) *reinterpret_cast<int*>(wparam) = 42;
    --seen_.in_flight;
    // A request sent from the request thread itself runs at once.
    if (message == kMsgDeviceLocations) seen_.transport->send(kMsgTargetedLocation, 0, 0);
    return message == kMsgExit;
  }

 private:
  Observations& seen_;
};

std::unique_ptr<RequestTransport> start(Observations& seen) {
  auto transport = start_request_thread([&seen] { return std::make_unique<RecordingHandler>(seen); });
  if (transport) seen.transport = transport.get();
  return transport;
}

TEST(RequestThread, RunsOneRequestAtATimeOnItsOwnThread) {
  Observations seen;
  auto transport = start(seen);
  ASSERT_NE(transport, nullptr);
  std::vector<std::thread> senders;
  for (int t = 0; t < 4; ++t)
    senders.emplace_back([&] {
      for (int i = 0; i < 50; ++i) transport->send(kMsgDeviceCapabilities, 0, 0);
    });
  for (auto& sender : senders) sender.join();
  transport->send(kMsgExit, 0, 0);
  transport->stop();

  EXPECT_EQ(seen.max_in_flight.load(), 1);
  EXPECT_EQ(seen.messages.size(), 201u);
  ASSERT_EQ(seen.threads.size(), 1u);
  EXPECT_NE(*seen.threads.begin(), std::this_thread::get_id());
  EXPECT_EQ(seen.created_on, *seen.threads.begin());
  EXPECT_EQ(seen.destroyed_on, seen.created_on);
}

TEST(RequestThread, SendReturnsAfterTheHandlerHasFinished) {
  Observations seen;
  auto transport = start(seen);
  ASSERT_NE(transport, nullptr);
  int answer = 0;
  transport->send(kMsgSourceGroupType, reinterpret_cast<std::uintptr_t>(&answer), 0);
  EXPECT_EQ(answer, 42);
  transport->stop();
}

TEST(RequestThread, ASendFromTheRequestThreadRunsDirectly) {
  Observations seen;
  auto transport = start(seen);
  ASSERT_NE(transport, nullptr);
  transport->send(kMsgDeviceLocations, 0, 0);
  transport->stop();
  ASSERT_GE(seen.messages.size(), 2u);
  EXPECT_EQ(seen.messages[0], kMsgDeviceLocations);
  EXPECT_EQ(seen.messages[1], kMsgTargetedLocation);
}

TEST(RequestThread, StopPostsTheExitRequestWhenNoneWasSent) {
  testing::LogCapture log;
  Observations seen;
  auto transport = start(seen);
  ASSERT_NE(transport, nullptr);
  transport->stop();
  ASSERT_EQ(seen.messages.size(), 1u);
  EXPECT_EQ(seen.messages[0], kMsgExit);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(seen.destroyed_on, seen.created_on);
}

TEST(RequestThread, AfterExitTheThreadIsGoneAndStopWarns) {
  testing::LogCapture log;
  Observations seen;
  auto transport = start(seen);
  ASSERT_NE(transport, nullptr);
  transport->send(kMsgExit, 0, 0);
  transport->send(kMsgDeviceCapabilities, 0, 0);  // nobody runs it any more
  transport->stop();
  EXPECT_EQ(seen.messages, std::vector<std::uint32_t>{kMsgExit});
  const auto lines = log.lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].rfind("W: Failed posting exit message to the window thread: ", 0), 0u);
}

TEST(RequestThread, MessagesOutsideTheRequestRangeNeverReachTheHandler) {
  Observations seen;
  auto transport = start(seen);
  ASSERT_NE(transport, nullptr);
  transport->send(kMsgCaptureFailed + 1, 0, 0);
  transport->send(kMsgExit - 1, 0, 0);
  transport->stop();
  EXPECT_EQ(seen.messages, std::vector<std::uint32_t>{kMsgExit});
}

}  // namespace
}  // namespace vexcap::api
