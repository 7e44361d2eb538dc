// The product's diagnostic log, read the way a host sees it: on standard output, once the host
// switched it on (device property 5 = 0x501).
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "double_test.h"

namespace vexcap::double_tests {
namespace {

// Standard output goes to a file while it lives (the DLL and this program share the C
// runtime's descriptor 1).
class CapturedOutput {
 public:
  CapturedOutput() : path_(std::tmpnam(nullptr)) {
    std::fflush(stdout);
    saved_ = _dup(1);
    const int file = _open(path_.c_str(), _O_CREAT | _O_TRUNC | _O_WRONLY, 0600);
    _dup2(file, 1);
    _close(file);
  }
  ~CapturedOutput() { restore(); }
  std::string text() {
    restore();
    std::ifstream in(path_);
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
  }

 private:
  void restore() {
    if (saved_ < 0) return;
    std::fflush(stdout);
    _dup2(saved_, 1);
    _close(saved_);
    saved_ = -1;
  }
  std::string path_;
  int saved_ = -1;
};

using LogOutput = DoubleTest;

TEST_F(LogOutput, ASwitchedOnLogShowsTheAdaptersWork) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  CapturedOutput output;
  vexcap_property log{VEXCAP_PROP_DIAGNOSTIC_LOG, VEXCAP_DIAGNOSTIC_LOG_ON};
  ASSERT_EQ(vexcap_set_dev_property(device, &log), VEXCAP_OK);
  Frames frames;
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  next_frame();
  ASSERT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
  ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);
  const std::string text = output.text();
  EXPECT_NE(text.find("D: Width: 640, Height: 480, Stride= 640\n"), std::string::npos) << text;
  EXPECT_NE(text.find("D: Illumination: 1\n"), std::string::npos) << text;
  EXPECT_NE(text.find("D: Frame Format: 62 (Gray8)\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace vexcap::double_tests
