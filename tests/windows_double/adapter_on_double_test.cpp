// The adapter's own objects (the static core's Windows port) on the double, where the behaviour
// under test is the double's own.
#include <windows.h>

#include <future>

#include "double_test.h"
#include "platform/port.h"

namespace vexcap::double_tests {
namespace {

// The runtime is started and stopped the adapter's way (its cached factories go first).
class AdapterOnDouble : public DoubleTest {
 protected:
  void SetUp() override {
    DoubleTest::SetUp();
    ASSERT_EQ(platform::current().runtime().ro_initialize_multithreaded(), S_OK);
  }
  void TearDown() override {
    platform::current().runtime().ro_uninitialize();
    wd::clear_violations();  // each test checks the ones it caused
    DoubleTest::TearDown();
  }
  static bool recorded(const std::string& part) {
    for (const auto& text : wd::violations())
      if (text.find(part) != std::string::npos) return true;
    return false;
  }
};

// A frame handler that waits for the thread stopping its reader would hang both; the double
// waits 10 s, records the deadlock and fails the stop instead.
TEST_F(AdapterOnDouble, AStopWaitingForAHandlerThatWaitsOnItIsCaughtNotHung) {
  platform::Platform& windows = platform::current();
  auto groups = windows.find_all_source_groups();
  ASSERT_EQ(groups.size(), 1u);
  auto capture = windows.create_capture();
  capture->initialize({groups[0], platform::SharingMode::ExclusiveControl, platform::StreamingCaptureMode::Video,
                       platform::MemoryPreference::Cpu});
  auto sources = capture->frame_sources();
  ASSERT_FALSE(sources.empty());
  auto reader = capture->create_frame_reader(sources[0], std::nullopt);
  std::promise<void> stop_returned;
  auto stopped = stop_returned.get_future().share();
  std::promise<void> in_handler;
  auto entered = in_handler.get_future();
  bool first = true;
  reader->add_frame_arrived([&, stopped](platform::FrameReader&) -> hresult {
    if (std::exchange(first, false)) {
      in_handler.set_value();
      stopped.wait();  // waits for the thread that is stopping this reader
    }
    return HR_OK;
  });
  ASSERT_EQ(reader->start(), platform::ReaderStartStatus::Success);
  auto clock = std::async(std::launch::async, [] { next_frame(); });
  entered.wait();

  HRESULT stop_result = S_OK;
  try {
    reader->stop();
  } catch (const platform::PlatformError& error) {
    stop_result = error.code();
  }
  stop_returned.set_value();
  clock.wait();
  EXPECT_EQ(stop_result, HRESULT_FROM_WIN32(ERROR_TIMEOUT));
  EXPECT_TRUE(recorded("it waits for an event handler that is itself blocked"));
  reader->close();
}

}  // namespace
}  // namespace vexcap::double_tests
