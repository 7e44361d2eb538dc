/* The C side of the Python frame-path benchmark (scripts/bench-python.sh): streams from the
 * virtual camera set up with one format and gives every record straight back from the
 * callback, the least any host can do. Prints one line of JSON: frames counted, wall and
 * process CPU seconds over them. With "camera" as the mode it streams without a callback (the
 * library drops every frame before copying it) for as long as the frames would take, which
 * leaves the virtual camera's own cost per frame.
 *
 * Usage: vexcap-frame-path-host SOURCE SUBTYPE WIDTH HEIGHT FPS FRAMES [callback|camera]
 *   SOURCE 0 infrared, 1 colour; SUBTYPE e.g. GRAY8 or NV12. */
#define _POSIX_C_SOURCE 200809L
#include <stdatomic.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <wchar.h>

#include "vexcap/vexcap.h"

int vexcap_scenario_use_format(uint32_t source, const wchar_t* subtype, uint32_t width, uint32_t height,
                               uint32_t fps, uint32_t padding);

enum { WARM_UP_FRAMES = 30 };

static const wchar_t kCameraId[] =
    L"\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#7&1f00dcaf&0&0000#{e5323777-f976-4f5b-9b55-b94699c46e44}\\GLOBAL";

static double seconds(clockid_t clock) {
    struct timespec now;
    clock_gettime(clock, &now);
    return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

/* The clocks are read on the frame thread as the first and the last counted frame arrive. */
static unsigned long long frames_wanted;
static atomic_ullong frames_seen;
static double wall_first, cpu_first, wall_last, cpu_last;

static bool give_back(vexcap_frame* frame, void* context) {
    (void)context;
    vexcap_return_frame(frame);
    const unsigned long long seen = atomic_load(&frames_seen) + 1;
    if (seen == WARM_UP_FRAMES) {
        wall_first = seconds(CLOCK_MONOTONIC);
        cpu_first = seconds(CLOCK_PROCESS_CPUTIME_ID);
    } else if (seen == WARM_UP_FRAMES + frames_wanted) {
        wall_last = seconds(CLOCK_MONOTONIC);
        cpu_last = seconds(CLOCK_PROCESS_CPUTIME_ID);
    }
    atomic_store(&frames_seen, seen); /* one callback at a time per stream */
    return true;
}

static void pause_ms(long ms) {
    struct timespec pause = {ms / 1000, (ms % 1000) * 1000000L};
    nanosleep(&pause, NULL);
}


static int fail(const char* call, int code) {
    fprintf(stderr, "%s failed: %d\n", call, code);
    return 1;
}

int main(int argc, char** argv) {
    if (argc < 7) {
        fprintf(stderr, "usage: %s SOURCE SUBTYPE WIDTH HEIGHT FPS FRAMES [callback|camera]\n", argv[0]);
        return 2;
    }
    const uint32_t source = (uint32_t)atoi(argv[1]);
    wchar_t subtype[16];
    mbstowcs(subtype, argv[2], sizeof subtype / sizeof subtype[0]);
    const uint32_t width = (uint32_t)atoi(argv[3]), height = (uint32_t)atoi(argv[4]);
    const uint32_t fps = (uint32_t)atoi(argv[5]);
    const unsigned long long frames = strtoull(argv[6], NULL, 10);
    const bool camera_only = argc > 7 && strcmp(argv[7], "camera") == 0;

    int code = vexcap_scenario_use_format(source, subtype, width, height, fps, 0);
    if (code != 0) return fail("vexcap_scenario_use_format", code);
    if ((code = vexcap_init()) != VEXCAP_OK) return fail("vexcap_init", code);
    vexcap_open_params params = {source == 0 ? VEXCAP_STREAM_MODE_EXCLUSIVE /* infrared */ : 0, 640, 480};
    vexcap_device* device = NULL;
    if ((code = vexcap_device_open(&device, kCameraId, &params)) != VEXCAP_OK) return fail("vexcap_device_open", code);

    double wall = 0, cpu = 0;
    if (camera_only) {
        if ((code = vexcap_start_streaming(device, NULL, NULL)) != VEXCAP_OK) return fail("vexcap_start_streaming", code);
        pause_ms(1000L * WARM_UP_FRAMES / fps);
        const double wall0 = seconds(CLOCK_MONOTONIC), cpu0 = seconds(CLOCK_PROCESS_CPUTIME_ID);
        pause_ms((long)(1000ULL * frames / fps));
        wall = seconds(CLOCK_MONOTONIC) - wall0;
        cpu = seconds(CLOCK_PROCESS_CPUTIME_ID) - cpu0;
    } else {
        frames_wanted = frames;
        if ((code = vexcap_start_streaming(device, give_back, NULL)) != VEXCAP_OK) return fail("vexcap_start_streaming", code);
        while (atomic_load(&frames_seen) < WARM_UP_FRAMES + frames) pause_ms(50);
        wall = wall_last - wall_first;
        cpu = cpu_last - cpu_first;
    }
    vexcap_stop_streaming(device);
    vexcap_device_close(device);
    vexcap_exit();
    printf("{\"frames\": %llu, \"wall_s\": %.6f, \"cpu_s\": %.6f}\n", frames, wall, cpu);
    return 0;
}
