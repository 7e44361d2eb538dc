/* A host that returns from main with the library started, a device open and frames flowing,
 * never calling vexcap_stop_streaming, vexcap_device_close or vexcap_exit: the process must end
 * at once and cleanly (exit code 0, no sanitizer report, no hang). */
#include <stdatomic.h>
#include <stdio.h>
#include <time.h>

#include "vexcap/vexcap.h"

static atomic_int frames;

static bool on_frame(vexcap_frame* frame, void* context) {
  (void)context;
  vexcap_return_frame(frame);
  atomic_fetch_add(&frames, 1);
  return true;
}

int main(void) {
  static const wchar_t camera[] =
      L"\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#7&1f00dcaf&0&0000#{e5323777-f976-4f5b-9b55-b94699c46e44}\\GLOBAL";
  const vexcap_open_params params = {VEXCAP_STREAM_MODE_EXCLUSIVE, 640, 480};
  vexcap_device* device = NULL;
  if (vexcap_init() != VEXCAP_OK || vexcap_device_open(&device, camera, &params) != VEXCAP_OK ||
      vexcap_start_streaming(device, on_frame, NULL) != VEXCAP_OK) {
    fprintf(stderr, "could not start streaming\n");
    return 1;
  }
  const time_t give_up = time(NULL) + 10;
  while (atomic_load(&frames) < 3 && time(NULL) < give_up) {
  }
  if (atomic_load(&frames) < 3) {
    fprintf(stderr, "no frames came\n");
    return 1;
  }
  return 0; /* the library still running */
}
