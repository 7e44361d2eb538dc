"""VexcapLib from Python: cameras, frames as NumPy arrays, controls and events.

    import vexcap

    for info in vexcap.cameras():
        print(info.name, info.id, info.sources)
    with vexcap.open(reader="infrared") as cam:
        for frame in cam.frames(count=10):
            print(frame.timestamp, frame.illumination, frame.image.mean())

The package loads the native library (libVexcapLib.so or VexcapLib.dll) through ctypes; see
docs/python.md for where it looks and for the whole surface.
"""
from .camera import Camera, log, open  # vexcap.open is the package's entry point
from .discovery import (
    CameraInfo,
    DeviceWatch,
    cameras,
    capabilities,
    locations,
    source_group_type,
    source_group_type_for_vid_pid,
    targeted_location,
    vid_pid_used,
    watch,
)
from .errors import (
    AccessDeniedError,
    CameraClosedError,
    CameraNotFoundError,
    DeviceTimeoutError,
    Error,
    FrameTimeoutError,
    InitError,
    InvalidArgumentError,
    InvalidStateError,
    LibraryNotFoundError,
    NoInterfaceError,
    OperationFailedError,
)
from .frames import Frame, PixelFormat

__all__ = [
    "AccessDeniedError",
    "Camera",
    "CameraClosedError",
    "CameraInfo",
    "CameraNotFoundError",
    "DeviceTimeoutError",
    "DeviceWatch",
    "Error",
    "Frame",
    "FrameTimeoutError",
    "InitError",
    "InvalidArgumentError",
    "InvalidStateError",
    "LibraryNotFoundError",
    "NoInterfaceError",
    "OperationFailedError",
    "PixelFormat",
    "cameras",
    "capabilities",
    "locations",
    "log",
    "open",
    "source_group_type",
    "source_group_type_for_vid_pid",
    "targeted_location",
    "vid_pid_used",
    "watch",
]
