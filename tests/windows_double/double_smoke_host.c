/* An ordinary Windows host of the product DLL, knowing only the public header: on a Windows
 * double prefix with the default scenario (the real-time clock) it finds the camera, streams
 * infrared and colour frames through the real Windows adapter and checks every pixel against
 * the virtual camera's pattern, computed here from its description (docs/virtual-camera.md). */
#include <windows.h>

#include <stdio.h>
#include <string.h>

#include "vexcap/vexcap.h"

static int failures = 0;

#define CHECK(cond)                                                    \
    do {                                                               \
        if (!(cond)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                \
        }                                                              \
    } while (0)

static const wchar_t kCamera[] =
    L"\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#7&1f00dcaf&0&0000#{e5323777-f976-4f5b-9b55-b94699c46e44}\\GLOBAL";

#define FRAMES_WANTED 8

typedef struct {
    CRITICAL_SECTION lock;
    vexcap_frame* frames[FRAMES_WANTED];
    int count;
} Collected;

static bool collect(vexcap_frame* frame, void* context) {
    Collected* collected = (Collected*)context;
    int kept = 0;
    EnterCriticalSection(&collected->lock);
    if (collected->count < FRAMES_WANTED) {
        collected->frames[collected->count++] = frame;
        kept = 1;
    }
    LeaveCriticalSection(&collected->lock);
    if (!kept) vexcap_return_frame(frame);
    return true;
}

static int frames_now(Collected* collected) {
    int count;
    EnterCriticalSection(&collected->lock);
    count = collected->count;
    LeaveCriticalSection(&collected->lock);
    return count;
}

/* The frame's number n (mod 256) from its first pixel, L(0, 0) = 3n: 171 is 3's inverse. */
static unsigned frame_number(const vexcap_frame* frame) { return (frame->data[0] * 171u) & 0xFFu; }

static int gray8_matches(const vexcap_frame* frame) {
    unsigned n = frame_number(frame), x, y;
    for (y = 0; y < frame->height; ++y)
        for (x = 0; x < frame->width; ++x)
            if (frame->data[y * (unsigned)frame->stride + x] != (uint8_t)(x + 2 * y + 3 * n)) return 0;
    return 1;
}

static int nv12_matches(const vexcap_frame* frame) {
    unsigned n = frame_number(frame), x, y, i, j;
    const uint8_t* chroma = frame->data + (size_t)frame->stride * frame->height;
    for (y = 0; y < frame->height; ++y)
        for (x = 0; x < frame->width; ++x)
            if (frame->data[y * (unsigned)frame->stride + x] != (uint8_t)(x + 2 * y + 3 * n)) return 0;
    for (j = 0; j < frame->height / 2; ++j)
        for (i = 0; i < frame->width / 2; ++i) {
            if (chroma[j * (unsigned)frame->stride + 2 * i] != (uint8_t)(64 + i + j + n)) return 0;
            if (chroma[j * (unsigned)frame->stride + 2 * i + 1] != (uint8_t)(192 + i + 2 * j + n)) return 0;
        }
    return 1;
}

/* Opens the camera for one reader kind, streams until FRAMES_WANTED frames came, checks them. */
static void stream(uint32_t stream_mode, uint32_t pixel_format) {
    vexcap_open_params params = {0, 0, 0};
    vexcap_device* device = NULL;
    Collected collected;
    int waited, i;

    memset(&collected, 0, sizeof collected);
    InitializeCriticalSection(&collected.lock);
    params.stream_mode = stream_mode;
    CHECK(vexcap_device_open(&device, kCamera, &params) == VEXCAP_OK);
    if (device == NULL) return;
    CHECK(vexcap_start_streaming(device, collect, &collected) == VEXCAP_OK);
    for (waited = 0; waited < 10000 && frames_now(&collected) < FRAMES_WANTED; waited += 20) Sleep(20);
    CHECK(vexcap_stop_streaming(device) == VEXCAP_OK);
    CHECK(vexcap_device_close(device) == VEXCAP_OK);

    CHECK(collected.count == FRAMES_WANTED);
    for (i = 0; i < collected.count; ++i) {
        vexcap_frame* frame = collected.frames[i];
        CHECK(frame->width == 640 && frame->height == 480 && frame->stride == 640);
        CHECK(frame->pixel_format == pixel_format);
        if (pixel_format == VEXCAP_PIXEL_FORMAT_GRAY8) {
            CHECK(gray8_matches(frame));
            /* The infrared illuminator is on for even frame numbers. */
            CHECK(frame->illumination == (frame_number(frame) % 2 == 0 ? 1 : 0));
        } else {
            CHECK(nv12_matches(frame));
        }
        if (i > 0) CHECK(frame->timestamp > collected.frames[i - 1]->timestamp);
        CHECK(vexcap_return_frame(frame) == VEXCAP_OK);
    }
    DeleteCriticalSection(&collected.lock);
}

int main(void) {
    uint8_t capabilities[VEXCAP_CAPABILITY_COUNT];

    CHECK(vexcap_init() == VEXCAP_OK);
    memset(capabilities, 0, sizeof capabilities);
    CHECK(vexcap_get_device_capabilities(kCamera, capabilities) == VEXCAP_OK);
    CHECK(capabilities[VEXCAP_CAPABILITY_INFRARED] && capabilities[VEXCAP_CAPABILITY_COLOR]);
    stream(VEXCAP_STREAM_MODE_EXCLUSIVE, VEXCAP_PIXEL_FORMAT_GRAY8);
    stream(VEXCAP_STREAM_MODE_SHARED, VEXCAP_PIXEL_FORMAT_NV12);
    CHECK(vexcap_exit() == VEXCAP_OK);

    if (failures) fprintf(stderr, "%d check(s) failed\n", failures);
    else printf("double smoke host: infrared and colour frames checked\n");
    return failures ? 1 : 0;
}
