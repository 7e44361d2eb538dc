/* The smallest host that streams: start the library, find a camera through the device
 * callbacks, open its infrared reader, take ten frames and give each back, close, exit. */
#define _POSIX_C_SOURCE 200809L
#include <stdatomic.h>
#include <stdbool.h>
#include <stdio.h>
#include <wchar.h>

#include "vexcap/vexcap.h"

#ifdef _WIN32
#include <windows.h>
static void pause_ms(unsigned ms) { Sleep(ms); }
#else
#include <time.h>
static void pause_ms(unsigned ms) {
    struct timespec pause = {ms / 1000, (long)(ms % 1000) * 1000000L};
    nanosleep(&pause, NULL);
}
#endif

enum { WANTED_FRAMES = 10 };

static wchar_t camera_id[512];   /* written by the watcher thread before have_camera is set */
static atomic_int have_camera;
static atomic_int frames_seen;

/* On the library's watcher thread, once for every camera present and for later arrivals. */
static int on_camera_added(const wchar_t* id, const wchar_t* name, void* context,
                           vexcap_device_subscription* subscription) {
    (void)name; (void)context; (void)subscription;
    if (atomic_load(&have_camera)) return 0; /* keep the first camera */
    wcsncpy(camera_id, id, sizeof camera_id / sizeof camera_id[0] - 1); /* id lives for this call only */
    atomic_store(&have_camera, 1);
    return 0;
}

/* On a platform thread, once per frame. The record is ours until we give it back. */
static bool on_frame(vexcap_frame* frame, void* context) {
    int seen = atomic_fetch_add(&frames_seen, 1) + 1;
    (void)context;
    if (seen <= WANTED_FRAMES)
        printf("frame %2d: %ux%u, pixel format %u, stride %d, timestamp %lld us\n", seen,
               (unsigned)frame->width, (unsigned)frame->height, (unsigned)frame->pixel_format,
               (int)frame->stride, (long long)frame->timestamp);
    vexcap_return_frame(frame);
    return seen < WANTED_FRAMES; /* false: no more frames until streaming starts again */
}

static bool succeeded(const char* call, int code) {
    if (code != VEXCAP_OK) fprintf(stderr, "%s failed: %d\n", call, code);
    return code == VEXCAP_OK;
}

int main(void) {
    vexcap_device_callbacks callbacks = {on_camera_added, NULL, NULL};
    vexcap_device_subscription* subscription = NULL;
    vexcap_open_params params = {1 /* infrared reader */, 640, 480};
    vexcap_device* device = NULL;
    uint8_t kinds[VEXCAP_CAPABILITY_COUNT] = {0};
    uint64_t exposure = 0;
    bool ok;
    int waited;

    if (!succeeded("vexcap_init", vexcap_init())) return 1;

    ok = succeeded("vexcap_regiester_for_device_callbacks",
                   vexcap_regiester_for_device_callbacks(&subscription, &callbacks, NULL));
    for (waited = 0; ok && !atomic_load(&have_camera) && waited < 2000; waited += 10) pause_ms(10);
    if (ok) vexcap_unregiester_device_callbacks(subscription);
    if (ok && !atomic_load(&have_camera)) {
        fprintf(stderr, "no camera found\n");
        ok = false;
    }
    /* Opening a camera without the wanted source never returns: ask first. */
    ok = ok && succeeded("vexcap_get_device_capabilities", vexcap_get_device_capabilities(camera_id, kinds));
    if (ok && !kinds[VEXCAP_CAPABILITY_INFRARED]) {
        fprintf(stderr, "the camera has no infrared source\n");
        ok = false;
    }
    ok = ok && succeeded("vexcap_device_open", vexcap_device_open(&device, camera_id, &params));

    if (ok) {
        if (succeeded("vexcap_get_exposure", vexcap_get_exposure(device, &exposure)))
            printf("exposure: %llu x 100 ns\n", (unsigned long long)exposure);
        if (succeeded("vexcap_start_streaming", vexcap_start_streaming(device, on_frame, NULL))) {
            for (waited = 0; atomic_load(&frames_seen) < WANTED_FRAMES && waited < 5000; waited += 10)
                pause_ms(10);
            succeeded("vexcap_stop_streaming", vexcap_stop_streaming(device));
        }
        succeeded("vexcap_device_close", vexcap_device_close(device));
    }
    succeeded("vexcap_exit", vexcap_exit());
    return ok && atomic_load(&frames_seen) >= WANTED_FRAMES ? 0 : 1;
}
