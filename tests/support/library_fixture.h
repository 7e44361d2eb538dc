// A test that drives the library through its exports: the virtual runtime starts clean and
// the library is shut down whatever the test did.
#pragma once

#include <gtest/gtest.h>

#include "platform/virtual/virtual_camera.h"
#include "platform/virtual/virtual_platform.h"
#include "vexcap/vexcap.h"

namespace vexcap::testing {

class LibraryTest : public ::testing::Test {
 protected:
  void SetUp() override { virtual_camera::reset(); }
  void TearDown() override {
    vexcap_exit();
    virtual_camera::reset();
  }
  static virtual_camera::VirtualRuntime& runtime() {
    return virtual_camera::virtual_platform().runtime();
  }
};

}  // namespace vexcap::testing
