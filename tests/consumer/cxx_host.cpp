// A C++11 host of the installed library: the header's version is the package's, and the
// C++-named vexcap_get_led_power links and answers on an open camera.
#include <cstdio>
#include <cstring>

#include "vexcap/vexcap.h"

namespace {

const wchar_t kDefaultCamera[] =
    L"\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#7&1f00dcaf&0&0000#{e5323777-f976-4f5b-9b55-b94699c46e44}\\GLOBAL";

int failures = 0;

void check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "cxx-host: %s\n", what);
    ++failures;
  }
}

}  // namespace

int main() {
  check(std::strcmp(VEXCAP_VERSION_STRING, PACKAGE_VERSION) == 0, "header and package versions differ");
  std::printf("VexcapLib %s (package %s)\n", VEXCAP_VERSION_STRING, PACKAGE_VERSION);

  check(vexcap_init() == VEXCAP_OK, "vexcap_init");
  vexcap_device* device = nullptr;
  const vexcap_open_params params = {1 /* infrared reader */, 640, 480};
  check(vexcap_device_open(&device, kDefaultCamera, &params) == VEXCAP_OK, "vexcap_device_open");
  if (device != nullptr) {
    unsigned int power = 1234;
    check(vexcap_set_led_power(device, 7) == VEXCAP_OK, "vexcap_set_led_power");
    check(vexcap_get_led_power(device, &power) == VEXCAP_OK, "vexcap_get_led_power");
    std::printf("LED power %u\n", power);
    check(vexcap_device_close(device) == VEXCAP_OK, "vexcap_device_close");
  }
  check(vexcap_exit() == VEXCAP_OK, "vexcap_exit");
  return failures == 0 ? 0 : 1;
}
