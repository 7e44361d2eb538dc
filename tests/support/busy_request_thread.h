// Holds the request thread in one slow discovery query (a 10 s enumeration of the virtual
// camera), so that requests and recoveries queue behind it in a known order, until release().
// Later enumerations are not slowed.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <thread>

#include "platform/virtual/virtual_camera.h"
#include "vexcap/vexcap.h"

namespace vexcap::testing {

class BusyRequestThread {
 public:
  // Returns once the query holds the request thread.
  BusyRequestThread() {
    namespace vc = virtual_camera;
    vc::set_call_fault(vc::PlatformCall::FindAllSourceGroups, vc::CallFault{HR_OK, std::chrono::seconds(10)});
    query_ = std::thread([] {
      std::uint32_t type = 0;
      vexcap_get_source_group_type(&type);
    });
    EXPECT_TRUE(vc::wait_for_slow_call(std::chrono::seconds(5)));
    vc::set_call_fault(vc::PlatformCall::FindAllSourceGroups, vc::CallFault{});
  }
  ~BusyRequestThread() { release(); }
  BusyRequestThread(const BusyRequestThread&) = delete;
  BusyRequestThread& operator=(const BusyRequestThread&) = delete;

  // Ends the query; what queued behind it runs in order.
  void release() {
    if (!query_.joinable()) return;
    virtual_camera::release_slow_calls();
    query_.join();
  }

 private:
  std::thread query_;
};

}  // namespace vexcap::testing
