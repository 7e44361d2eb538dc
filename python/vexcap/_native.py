"""The native library: where it is found, the C declarations of its 33 functions and the
callback types it calls.

The library is loaded on first use, from (in this order of preference) the file that the
VEXCAP_LIBRARY environment variable names, the package's own folder, or the system's search
path. Nothing else in the package touches ctypes' loader.
"""
import ctypes
import ctypes.util
import os
import sys
import threading
from ctypes import POINTER, c_bool, c_int, c_int64, c_uint, c_uint8, c_uint16, c_uint32, c_void_p, c_wchar_p
from pathlib import Path

from .errors import LibraryNotFoundError

# vexcap_get_led_power is exported under its C++ name (see the header): MSVC's decoration on
# Windows, the Itanium one elsewhere.
LED_POWER_SYMBOLS = {
    "win32": "?vexcap_get_led_power@@YAHPEAUvexcap_device@@PEAI@Z",
    "other": "_Z20vexcap_get_led_powerP13vexcap_devicePj",
}
LIBRARY_FILE = "VexcapLib.dll" if sys.platform == "win32" else "libVexcapLib.so"
LED_POWER_SYMBOL = LED_POWER_SYMBOLS["win32" if sys.platform == "win32" else "other"]


class OpenParams(ctypes.Structure):
    _fields_ = [("stream_mode", c_uint32), ("format_arg1", c_uint16), ("format_arg2", c_uint16)]


class Property(ctypes.Structure):
    _fields_ = [("id", c_uint32), ("value", c_uint32)]


class FrameRecord(ctypes.Structure):
    """vexcap_frame: 64 bytes, read in place at the address the frame callback receives."""

    _fields_ = [
        ("data", c_void_p),
        ("width", c_uint32),
        ("height", c_uint32),
        ("stride", ctypes.c_int32),
        ("iso_speed", c_uint32),
        ("reserved0", ctypes.c_uint64),
        ("exposure", ctypes.c_uint64),
        ("timestamp", c_int64),
        ("illumination", c_uint8),
        ("led_power", c_uint8),
        ("padding", c_uint8 * 2),
        ("pixel_format", c_uint32),
        ("reserved1", ctypes.c_uint64),
    ]


assert ctypes.sizeof(FrameRecord) == 64 and FrameRecord.pixel_format.offset == 52

# Callback types. Records and contexts travel as plain addresses (ints): no ctypes object is
# built per frame on the library's thread.
FRAME_CALLBACK = ctypes.CFUNCTYPE(c_bool, c_void_p, c_void_p)
DEVICE_ADDED_CALLBACK = ctypes.CFUNCTYPE(c_int, c_wchar_p, c_wchar_p, c_void_p, c_void_p)
DEVICE_REMOVED_CALLBACK = ctypes.CFUNCTYPE(c_int, c_wchar_p, c_void_p, c_void_p)
DEVICE_UPDATED_CALLBACK = DEVICE_REMOVED_CALLBACK
EXCL_CTRL_STATUS_CALLBACK = ctypes.CFUNCTYPE(None, c_wchar_p, c_uint8, c_bool, c_void_p)
RGB_STATUS_CALLBACK = ctypes.CFUNCTYPE(None, c_bool, c_void_p)
UNSUPPORTED_FORMAT_CALLBACK = ctypes.CFUNCTYPE(None, c_uint32, c_void_p)
RGB_STOPPED_CALLBACK = ctypes.CFUNCTYPE(None, c_bool, c_void_p)


class DeviceCallbacks(ctypes.Structure):
    _fields_ = [
        ("added", DEVICE_ADDED_CALLBACK),
        ("removed", DEVICE_REMOVED_CALLBACK),
        ("updated", DEVICE_UPDATED_CALLBACK),
    ]


_DEVICE = c_void_p  # vexcap_device*: the package never reads the handle's fields

# name: (result type, argument types)
_DECLARATIONS = {
    "vexcap_init": (c_int, []),
    "vexcap_exit": (c_int, []),
    "vexcap_get_device_capabilities": (c_int, [c_wchar_p, POINTER(c_uint8)]),
    "vexcap_get_device_locations": (c_int, [c_wchar_p, POINTER(c_uint8)]),
    "vexcap_get_source_group_type": (c_int, [POINTER(c_uint32)]),
    "vexcap_get_targeted_location": (c_int, [POINTER(c_uint32)]),
    "vexcap_is_vidpid_used_by_device": (c_int, [c_wchar_p, c_wchar_p, c_wchar_p]),
    "vexcap_get_source_group_type_for_vid_pid": (c_int, [c_wchar_p, c_wchar_p, POINTER(c_uint32)]),
    "vexcap_device_open": (c_int, [POINTER(c_void_p), c_wchar_p, POINTER(OpenParams)]),
    "vexcap_device_close": (c_int, [_DEVICE]),
    "vexcap_start_streaming": (c_int, [_DEVICE, FRAME_CALLBACK, c_void_p]),
    "vexcap_start_streaming_ex": (c_int, [_DEVICE, FRAME_CALLBACK, c_void_p, c_uint32]),
    "vexcap_stop_streaming": (c_int, [_DEVICE]),
    "vexcap_stop_streaming_ex": (c_int, [_DEVICE, c_uint32]),
    "vexcap_return_frame": (c_int, [c_void_p]),
    "vexcap_set_exposure": (c_int, [_DEVICE, c_int64]),
    "vexcap_set_iso_speed": (c_int, [_DEVICE, c_uint32]),
    "vexcap_set_led_power": (c_int, [_DEVICE, c_uint32]),
    "vexcap_get_exposure": (c_int, [_DEVICE, POINTER(ctypes.c_uint64)]),
    "vexcap_get_iso_speed": (c_int, [_DEVICE, POINTER(c_uint32)]),
    LED_POWER_SYMBOL: (c_int, [_DEVICE, POINTER(c_uint)]),
    "vexcap_set_dev_property": (c_int, [_DEVICE, POINTER(Property)]),
    "vexcap_get_dev_property": (c_int, [_DEVICE, POINTER(Property)]),
    "vexcap_regiester_for_device_callbacks": (c_int, [POINTER(c_void_p), POINTER(DeviceCallbacks), c_void_p]),
    "vexcap_unregiester_device_callbacks": (c_int, [c_void_p]),
    "vexcap_register_for_excl_ctrl_status_event": (c_int, [_DEVICE, EXCL_CTRL_STATUS_CALLBACK, c_void_p]),
    "vexcap_unregister_for_excl_ctrl_status_event": (c_int, [_DEVICE]),
    "vexcap_register_for_rgb_status_event": (c_int, [_DEVICE, RGB_STATUS_CALLBACK, c_void_p]),
    "vexcap_unregister_for_rgb_status_event": (c_int, [_DEVICE]),
    "vexcap_register_for_unsupported_format_status_event": (
        c_int,
        [_DEVICE, UNSUPPORTED_FORMAT_CALLBACK, c_void_p],
    ),
    "vexcap_unregister_for_unsupported_format_status_event": (c_int, [_DEVICE]),
    "vexcap_register_for_rgb_stopped_event": (c_int, [_DEVICE, RGB_STOPPED_CALLBACK, c_void_p]),
    "vexcap_unregister_for_rgb_stopped_event": (c_int, [_DEVICE]),
}
assert len(_DECLARATIONS) == 33


class Library:
    """The loaded library's functions as attributes; vexcap_get_led_power under its C name."""

    def __init__(self, dll, path):
        self.path = path
        for name, (restype, argtypes) in _DECLARATIONS.items():
            function = dll[name]
            function.restype = restype
            function.argtypes = argtypes
            setattr(self, "vexcap_get_led_power" if name == LED_POWER_SYMBOL else name, function)


def _candidates():
    """Where to look, best first."""
    named = os.environ.get("VEXCAP_LIBRARY")
    if named:
        return [named]  # an explicit choice is not second-guessed
    beside = Path(__file__).resolve().parent / LIBRARY_FILE
    found = ctypes.util.find_library("VexcapLib") if sys.platform == "win32" else None
    # On Linux dlopen itself searches LD_LIBRARY_PATH and the loader's cache for the bare name;
    # on Windows ctypes loads by full path only, so find_library walks PATH.
    return [str(beside), found or LIBRARY_FILE]


_lock = threading.Lock()
_library = None


def library():
    """The native library, loaded on the first call."""
    global _library
    if _library is not None:
        return _library
    with _lock:
        if _library is None:
            failures = []
            for candidate in _candidates():
                if os.path.sep in candidate and not os.path.exists(candidate):
                    failures.append(f"{candidate}: no such file")
                    continue
                try:
                    _library = Library(ctypes.CDLL(candidate), candidate)
                    break
                except (OSError, AttributeError) as error:
                    failures.append(f"{candidate}: {error}")
            else:
                raise LibraryNotFoundError(
                    "cannot load the VexcapLib library (set VEXCAP_LIBRARY to its path): "
                    + "; ".join(failures)
                )
    return _library
