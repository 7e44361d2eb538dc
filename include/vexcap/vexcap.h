/* SPDX-License-Identifier: MIT */
/*
 * VexcapLib public interface.
 *
 * 33 flat functions drive an infrared (and optionally colour) camera. Every function may be
 * called from any thread; calls are serialized inside the library. Call vexcap_init() before
 * anything else and vexcap_exit() last; close devices before vexcap_exit().
 *
 * The header compiles as C99 and as C++. Records have fixed layouts (asserted below).
 */
#ifndef VEXCAP_VEXCAP_H
#define VEXCAP_VEXCAP_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#if defined(_WIN32)
#  if defined(VEXCAP_BUILDING_LIBRARY)
#    define VEXCAP_API
#  else
#    define VEXCAP_API __declspec(dllimport)
#  endif
#else
#  define VEXCAP_API __attribute__((visibility("default")))
#endif

/* The library's version: 1.0.0 keeps the 33 functions and the record layouts below; a new
 * MAJOR breaks them, a new MINOR adds to them. */
#define VEXCAP_VERSION_MAJOR 1
#define VEXCAP_VERSION_MINOR 0
#define VEXCAP_VERSION_PATCH 0
#define VEXCAP_VERSION_STRING "1.0.0"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Result codes ------------------------------------------------------------------------ */

#define VEXCAP_OK                0   /* success */
#define VEXCAP_E_FAIL           (-1) /* any other failure (including positive codes) */
#define VEXCAP_E_INVALID_STATE  (-2) /* not in a valid state for the request */
#define VEXCAP_E_TIMEOUT        (-3) /* timed out */
#define VEXCAP_E_ACCESS_DENIED  (-4) /* access denied */
#define VEXCAP_E_INVALID_ARG    (-5) /* invalid argument or null pointer */
#define VEXCAP_E_NO_INTERFACE   (-6) /* the camera lacks the interface */
/* vexcap_init() alone returns this raw value when the request thread cannot be started. */
#define VEXCAP_E_INIT_THREAD    ((int)0x80004005)

/* ---- Device handle and open parameters ---------------------------------------------------- */

/* Stream modes (first field of the open parameters and of the handle). Any other value is
 * logged and treated as shared. */
#define VEXCAP_STREAM_MODE_SHARED    0u
#define VEXCAP_STREAM_MODE_EXCLUSIVE 1u

/* Stream selectors of vexcap_start_streaming_ex / vexcap_stop_streaming_ex. */
#define VEXCAP_STREAM_SELECT_EXCLUSIVE 1u /* any other value selects the shared client */

/* The device handle: allocated by vexcap_device_open, freed by vexcap_device_close.
 * At most two devices are open at once: one with stream mode 0, one with a non-zero mode. */
typedef struct vexcap_device {
    uint32_t stream_mode;     /* copied from the open parameters */
    uint32_t reserved;        /* never set nor read by the library */
    uint32_t stream_selector; /* written by the _ex streaming calls */
} vexcap_device;

/* Open parameters, read during vexcap_device_open only. */
typedef struct vexcap_open_params {
    uint32_t stream_mode; /* VEXCAP_STREAM_MODE_* */
    uint16_t format_arg1; /* preferred colour width for the format codes 11..17 */
    uint16_t format_arg2; /* preferred colour height for the format codes 11..17 */
} vexcap_open_params;

/* ---- Frames ------------------------------------------------------------------------------- */

/* Pixel formats of vexcap_frame.pixel_format (the platform's BitmapPixelFormat values). */
#define VEXCAP_PIXEL_FORMAT_GRAY16 57u
#define VEXCAP_PIXEL_FORMAT_GRAY8  62u
#define VEXCAP_PIXEL_FORMAT_NV12   103u
#define VEXCAP_PIXEL_FORMAT_YUY2   107u /* never delivered; known to the rotation code */

/* One delivered frame. The host owns it and gives it back with vexcap_return_frame(). */
typedef struct vexcap_frame {
    uint8_t* data;          /*  0: copy of the whole frame buffer (all planes) */
    uint32_t width;         /*  8: pixels, after rotation */
    uint32_t height;        /* 12: pixels, after rotation */
    int32_t stride;         /* 16: bytes per row of the first plane */
    uint32_t iso_speed;     /* 20: ISO speed in force, 0 when not reported */
    uint64_t reserved0;     /* 24: always 0 */
    uint64_t exposure;      /* 32: exposure in force (100 ns units), 0 when not reported */
    int64_t timestamp;      /* 40: frame time in microseconds */
    uint8_t illumination;   /* 48: 1 IR illuminator on, 0 off */
    uint8_t led_power;      /* 49: LED power in force, 255 when not reported */
    uint8_t padding[2];     /* 50: 0 */
    uint32_t pixel_format;  /* 52: VEXCAP_PIXEL_FORMAT_GRAY8, _GRAY16 or _NV12 */
    uint64_t reserved1;     /* 56: always 0 */
} vexcap_frame;

/* Called on a platform thread for every frame; return true to go on receiving frames,
 * false to stop delivery until streaming is started again. The record belongs to the host
 * from this call on. vexcap_return_frame, vexcap_stop_streaming(_ex) and vexcap_device_close
 * may be called from here: the stop or close then answers 0 at once and takes effect right
 * after the callback. Other requests from here may wait for a stop of this very stream.
 *
 * From inside any callback of the library (frames and device events), stops, closes and the
 * device-event registrations and unregistrations answer 0 at once and take effect right after
 * the callback, in the order they were asked for. */
typedef bool (*vexcap_frame_callback)(vexcap_frame* frame, void* context);

/* ---- Device properties -------------------------------------------------------------------- */

typedef struct vexcap_property {
    uint32_t id;    /* VEXCAP_PROP_* */
    uint32_t value; /* value to set, or the answer of a get */
} vexcap_property;

/* Identifiers for vexcap_set_dev_property. */
#define VEXCAP_PROP_FACE_AUTH_MODE   1u  /* VEXCAP_FACE_AUTH_* */
#define VEXCAP_PROP_AUTO_EXPOSURE    2u  /* VEXCAP_AUTO_EXPOSURE_ON / _OFF */
#define VEXCAP_PROP_DIAGNOSTIC_LOG   5u  /* VEXCAP_DIAGNOSTIC_LOG_ON, anything else off */
#define VEXCAP_PROP_STREAM_TYPE      9u  /* format code; selects the format */
#define VEXCAP_PROP_STREAM_TYPE_APPLY 16u /* format code; selects, runs briefly, sets frame rate */
#define VEXCAP_PROP_RGB_OFF          18u /* switches the colour stream off for good */
#define VEXCAP_PROP_LLC              19u /* VEXCAP_LLC_ON / _OFF */
#define VEXCAP_PROP_XU_CONTROL_18    20u /* VEXCAP_XU_CONTROL_18_* */
/* Identifiers for vexcap_get_dev_property. */
#define VEXCAP_PROP_RGB_STATUS       17u /* status byte, 0 when unreadable */
#define VEXCAP_PROP_VIDEO_CONTROL_MODE 21u /* mode AND 2 */
#define VEXCAP_PROP_HIRES_SENSOR_TYPE 22u /* 20, 18 or 19; 21 when none */

#define VEXCAP_FACE_AUTH_DISABLED                 257u /* 0x101 */
#define VEXCAP_FACE_AUTH_ALTERNATIVE_ILLUMINATION 258u /* 0x102 */
#define VEXCAP_FACE_AUTH_BACKGROUND_SUBTRACTION   260u /* 0x104 */
#define VEXCAP_AUTO_EXPOSURE_ON   513u /* 0x201 */
#define VEXCAP_AUTO_EXPOSURE_OFF  514u /* 0x202 */
#define VEXCAP_DIAGNOSTIC_LOG_ON  1281u /* 0x501 */
#define VEXCAP_DIAGNOSTIC_LOG_OFF 1280u /* 0x500 */
#define VEXCAP_LLC_ON  4865u /* 0x1301 */
#define VEXCAP_LLC_OFF 4866u /* 0x1302 */
#define VEXCAP_XU_CONTROL_18_ONE 5121u /* 0x1401: writes byte 1 */
#define VEXCAP_XU_CONTROL_18_TWO 5122u /* 0x1402: writes byte 2; anything else writes 0 */

/* Format codes (values of VEXCAP_PROP_STREAM_TYPE*, answers of VEXCAP_PROP_HIRES_SENSOR_TYPE).
 * Infrared, 640 wide: 8, 7, 6, 5, 4, 3, 2 for 1, 5, 10, 15, 20, 25, 30 fps; 320x240 at 60: 1;
 * other widths below 640: 0 at 30 fps, 9 at 60 fps.
 * Colour at the open parameters' size: 17, 16, 15, 14, 13, 12, 11 for 1 .. 30 fps;
 * 1920 wide at 30 fps: 18; 1280x720 at 30 fps: 19; 3840 wide at 30 fps: 20. */
#define VEXCAP_FORMAT_HIRES_1080P 18u
#define VEXCAP_FORMAT_HIRES_720P  19u
#define VEXCAP_FORMAT_HIRES_4K    20u
#define VEXCAP_FORMAT_HIRES_NONE  21u

/* ---- Discovery ---------------------------------------------------------------------------- */

/* vexcap_get_device_capabilities: one byte per source kind; the library only writes 1. */
#define VEXCAP_CAPABILITY_COLOR    0
#define VEXCAP_CAPABILITY_INFRARED 1
#define VEXCAP_CAPABILITY_DEPTH    2
#define VEXCAP_CAPABILITY_OTHER    3
#define VEXCAP_CAPABILITY_COUNT    4

/* Source group types. */
#define VEXCAP_GROUP_TYPE_NONE     0u
#define VEXCAP_GROUP_TYPE_SOFTWARE 1u /* "SWD#" */
#define VEXCAP_GROUP_TYPE_USB      2u /* "USB#" */
#define VEXCAP_GROUP_TYPE_OTHER    3u /* a colour or infrared group without either marker */

/* Device locations: one byte per enclosure panel, indexed by the panel value. */
#define VEXCAP_PANEL_UNKNOWN 0
#define VEXCAP_PANEL_FRONT   1
#define VEXCAP_PANEL_BACK    2
#define VEXCAP_PANEL_TOP     3
#define VEXCAP_PANEL_BOTTOM  4
#define VEXCAP_PANEL_LEFT    5
#define VEXCAP_PANEL_RIGHT   6
#define VEXCAP_PANEL_COUNT   7

/* ---- Event callbacks ---------------------------------------------------------------------- */

typedef struct vexcap_device_subscription vexcap_device_subscription; /* opaque */

/* Strings are valid only during the call. Results are ignored. */
typedef int (*vexcap_device_added_callback)(const wchar_t* device_id, const wchar_t* device_name,
                                            void* context, vexcap_device_subscription* subscription);
typedef int (*vexcap_device_removed_callback)(const wchar_t* device_id, void* context,
                                              vexcap_device_subscription* subscription);
typedef int (*vexcap_device_updated_callback)(const wchar_t* device_id, void* context,
                                              vexcap_device_subscription* subscription);

typedef struct vexcap_device_callbacks {
    vexcap_device_added_callback added;
    vexcap_device_removed_callback removed;
    vexcap_device_updated_callback updated;
} vexcap_device_callbacks;

/* Exclusive-control status, with the device id the platform's event carries as text:
 * status 1 shared read-only available (another application holds exclusive control),
 * 2 the camera's face authentication is settling, 3 any other status; flag is true when
 * exclusive control is available again. Called with the device's event lock held; an
 * unregistration from inside takes effect after it. A capture failure (the library recovers by itself)
 * ends the notifications: unregister and register again to hear them. */
typedef void (*vexcap_excl_ctrl_status_callback)(const wchar_t* text, uint8_t status, bool flag,
                                                 void* context);
/* RGB status: active is true while the camera reports a non-zero colour status. */
typedef void (*vexcap_rgb_status_callback)(bool active, void* context);
/* Unsupported format: status is 1. */
typedef void (*vexcap_unsupported_format_callback)(uint32_t status, void* context);
/* RGB stopped: stopped is always true. Called at most once per registration, on a worker
 * thread, once the library could hold the camera in exclusive control and received a frame:
 * whoever used the colour stream has let it go. */
typedef void (*vexcap_rgb_stopped_callback)(bool stopped, void* context);

/* ---- The exported functions --------------------------------------------------------------- */

VEXCAP_API int vexcap_init(void);
VEXCAP_API int vexcap_exit(void);

/* Sets capabilities[VEXCAP_CAPABILITY_*] to 1 for each source kind of the group whose id equals
 * group_id exactly; bytes are never cleared, so zero the array first. -1 when no group matches. */
VEXCAP_API int vexcap_get_device_capabilities(const wchar_t* group_id,
                                              uint8_t capabilities[VEXCAP_CAPABILITY_COUNT]);
/* Sets locations[panel] to 1 for every source whose device id contains id_text, compared without
 * regard to case; a source without an enclosure location counts as VEXCAP_PANEL_UNKNOWN. Bytes
 * are never cleared. -1 when no source matches. */
VEXCAP_API int vexcap_get_device_locations(const wchar_t* id_text,
                                           uint8_t locations[VEXCAP_PANEL_COUNT]);
/* VEXCAP_GROUP_TYPE_* of the system's groups; 0 and -1 when there is none. */
VEXCAP_API int vexcap_get_source_group_type(uint32_t* type);
/* The VEXCAP_PANEL_* of the first colour or infrared source that reports an enclosure location;
 * left unchanged when none does. Always 0. */
VEXCAP_API int vexcap_get_targeted_location(uint32_t* panel);
/* Returns 1 when the group holds a source whose id contains both texts, else 0. */
VEXCAP_API int vexcap_is_vidpid_used_by_device(const wchar_t* group_id, const wchar_t* vid,
                                               const wchar_t* pid);
VEXCAP_API int vexcap_get_source_group_type_for_vid_pid(const wchar_t* vid, const wchar_t* pid,
                                                        uint32_t* type);

VEXCAP_API int vexcap_device_open(vexcap_device** device, const wchar_t* device_id,
                                  const vexcap_open_params* params);
VEXCAP_API int vexcap_device_close(vexcap_device* device);

VEXCAP_API int vexcap_start_streaming(vexcap_device* device, vexcap_frame_callback callback,
                                      void* context);
VEXCAP_API int vexcap_start_streaming_ex(vexcap_device* device, vexcap_frame_callback callback,
                                         void* context, uint32_t stream_selector);
VEXCAP_API int vexcap_stop_streaming(vexcap_device* device);
VEXCAP_API int vexcap_stop_streaming_ex(vexcap_device* device, uint32_t stream_selector);
VEXCAP_API int vexcap_return_frame(vexcap_frame* frame);

VEXCAP_API int vexcap_set_exposure(vexcap_device* device, int64_t exposure);
VEXCAP_API int vexcap_set_iso_speed(vexcap_device* device, uint32_t iso_speed);
VEXCAP_API int vexcap_set_led_power(vexcap_device* device, uint32_t power);
VEXCAP_API int vexcap_get_exposure(vexcap_device* device, uint64_t* exposure);
VEXCAP_API int vexcap_get_iso_speed(vexcap_device* device, uint32_t* iso_speed);
/* vexcap_get_led_power is declared after this block: it is a C++ function. */

VEXCAP_API int vexcap_set_dev_property(vexcap_device* device, vexcap_property* property);
VEXCAP_API int vexcap_get_dev_property(vexcap_device* device, vexcap_property* property);

VEXCAP_API int vexcap_regiester_for_device_callbacks(vexcap_device_subscription** subscription,
                                                     const vexcap_device_callbacks* callbacks,
                                                     void* context);
VEXCAP_API int vexcap_unregiester_device_callbacks(vexcap_device_subscription* subscription);

/* Device events: a second registration keeps the first callback, except for RGB stopped, where
 * the latest registration counts; unregistering what was never registered answers 0. Registering for the exclusive-control status waits while the status
 * reads 2; registering for the RGB status waits, without limit, until the camera reports a
 * zero status (and a settled face-auth mode); unregistering RGB stopped waits up to 20 s for
 * the library's probing to end. Closing the device ends every registration. */
VEXCAP_API int vexcap_register_for_excl_ctrl_status_event(vexcap_device* device,
                                                          vexcap_excl_ctrl_status_callback callback,
                                                          void* context);
VEXCAP_API int vexcap_unregister_for_excl_ctrl_status_event(vexcap_device* device);
VEXCAP_API int vexcap_register_for_rgb_status_event(vexcap_device* device,
                                                    vexcap_rgb_status_callback callback,
                                                    void* context);
VEXCAP_API int vexcap_unregister_for_rgb_status_event(vexcap_device* device);
VEXCAP_API int vexcap_register_for_unsupported_format_status_event(
    vexcap_device* device, vexcap_unsupported_format_callback callback, void* context);
VEXCAP_API int vexcap_unregister_for_unsupported_format_status_event(vexcap_device* device);
VEXCAP_API int vexcap_register_for_rgb_stopped_event(vexcap_device* device,
                                                     vexcap_rgb_stopped_callback callback,
                                                     void* context);
VEXCAP_API int vexcap_unregister_for_rgb_stopped_event(vexcap_device* device);

#ifdef __cplusplus
} /* extern "C" */
#endif

/*
 * vexcap_get_led_power is exported under its C++ name. The result pointer is not checked.
 *
 * C++ hosts call it directly (on Windows with MinGW the declaration binds it to the DLL's
 * MSVC-decorated name). C hosts reach it one of two ways:
 *  - with GCC or Clang, the declaration below binds the C name to the decorated symbol;
 *  - with any compiler, look VEXCAP_GET_LED_POWER_SYMBOL up with GetProcAddress / dlsym and
 *    call it through vexcap_get_led_power_fn.
 */
typedef int (*vexcap_get_led_power_fn)(vexcap_device* device, unsigned int* power);

#if defined(_WIN32)
#  define VEXCAP_GET_LED_POWER_SYMBOL "?vexcap_get_led_power@@YAHPEAUvexcap_device@@PEAI@Z"
#  define VEXCAP_GET_LED_POWER_ASM_NAME "\"" VEXCAP_GET_LED_POWER_SYMBOL "\"" /* '?' needs quotes */
#else
#  define VEXCAP_GET_LED_POWER_SYMBOL "_Z20vexcap_get_led_powerP13vexcap_devicePj"
#  define VEXCAP_GET_LED_POWER_ASM_NAME VEXCAP_GET_LED_POWER_SYMBOL
#endif

#if defined(_WIN32) && defined(__GNUC__) && !defined(_MSC_VER) && !defined(VEXCAP_BUILDING_LIBRARY)
#  define VEXCAP_BIND_LED_POWER_NAME 1 /* MinGW mangles C++ names otherwise than the DLL's export */
#endif
#if defined(__cplusplus) && !defined(VEXCAP_BIND_LED_POWER_NAME)
VEXCAP_API int vexcap_get_led_power(vexcap_device* device, unsigned int* power);
#elif defined(__GNUC__) || defined(__clang__)
/* Without dllimport: the import library's thunk carries the decorated name. */
int vexcap_get_led_power(vexcap_device* device, unsigned int* power)
    __asm__(VEXCAP_GET_LED_POWER_ASM_NAME);
#endif

/* ---- Layout checks ------------------------------------------------------------------------ */

#if defined(__cplusplus)
#  define VEXCAP_STATIC_ASSERT(c, m) static_assert(c, #m)
#else
#  define VEXCAP_STATIC_ASSERT(c, m) typedef char vexcap_static_assert_##m[(c) ? 1 : -1]
#endif

VEXCAP_STATIC_ASSERT(sizeof(vexcap_device) == 12, device_is_12_bytes);
VEXCAP_STATIC_ASSERT(sizeof(vexcap_open_params) == 8, open_params_is_8_bytes);
VEXCAP_STATIC_ASSERT(sizeof(vexcap_property) == 8, property_is_8_bytes);
VEXCAP_STATIC_ASSERT(sizeof(vexcap_frame) == 64, frame_is_64_bytes);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, width) == 8, frame_width_at_8);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, height) == 12, frame_height_at_12);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, stride) == 16, frame_stride_at_16);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, iso_speed) == 20, frame_iso_at_20);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, reserved0) == 24, frame_reserved0_at_24);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, exposure) == 32, frame_exposure_at_32);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, timestamp) == 40, frame_timestamp_at_40);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, illumination) == 48, frame_illumination_at_48);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, led_power) == 49, frame_led_power_at_49);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, pixel_format) == 52, frame_pixel_format_at_52);
VEXCAP_STATIC_ASSERT(offsetof(vexcap_frame, reserved1) == 56, frame_reserved1_at_56);
VEXCAP_STATIC_ASSERT(sizeof(vexcap_device_callbacks) == 3 * sizeof(void*), callbacks_three_ptrs);

#endif /* VEXCAP_VEXCAP_H */
