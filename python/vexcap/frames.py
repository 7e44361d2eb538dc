"""Delivered frames: the record's metadata as Python values, the pixels as NumPy arrays.

A frame either views the library's record in place (the record goes back to the library when
the frame and every array taken from it have been released) or owns a copy of the pixels (the
record went back as soon as it was copied). See docs/python.md for when each is used.
"""
import ctypes
import enum

import numpy as np

from . import _native


class PixelFormat(enum.IntEnum):
    """vexcap_frame.pixel_format: the platform's bitmap pixel format values."""

    GRAY16 = 57
    GRAY8 = 62
    NV12 = 103


NOT_REPORTED_LED_POWER = 255


def _half_up(value):
    return (value + 1) // 2


def pixel_bytes(pixel_format, width, height, stride):
    """The bytes a frame's planes span: the last row ends at its last pixel, not at the stride."""
    if width == 0 or height == 0:
        return 0
    if pixel_format == PixelFormat.GRAY8:
        return stride * (height - 1) + width
    if pixel_format == PixelFormat.GRAY16:
        return stride * (height - 1) + 2 * width
    if pixel_format == PixelFormat.NV12:
        return stride * height + stride * (_half_up(height) - 1) + 2 * _half_up(width)
    raise ValueError(f"pixel format {pixel_format} is none the library delivers")


class _DeliveredRecord:
    """A record the library handed over, given back when the last view of its pixels goes;
    then `given_back()` runs."""

    __slots__ = ("address", "given_back")

    def __init__(self, address, given_back):
        self.address = address
        self.given_back = given_back

    def __del__(self, _library=_native.library):
        try:
            _library().vexcap_return_frame(self.address)
            self.given_back()
        except Exception:  # at interpreter teardown ctypes may be gone already
            pass


class Frame:
    """One frame: `image` (H x W uint8 or uint16; NV12's Y plane), `planes`, `to_rgb()`, and
    the metadata: `timestamp` (microseconds), `exposure` (100 ns units), `iso_speed`,
    `led_power` (None where the frame reports no value) and `illumination`."""

    __slots__ = (
        "width",
        "height",
        "stride",
        "pixel_format",
        "timestamp",
        "exposure",
        "iso_speed",
        "led_power",
        "illumination",
        "_pixels",
    )

    def __init__(self, record, pixels):
        self.width = record.width
        self.height = record.height
        self.stride = record.stride
        self.pixel_format = PixelFormat(record.pixel_format)
        self.timestamp = record.timestamp
        self.exposure = record.exposure or None
        self.iso_speed = record.iso_speed or None
        self.led_power = None if record.led_power == NOT_REPORTED_LED_POWER else record.led_power
        self.illumination = record.illumination == 1
        self._pixels = pixels

    @classmethod
    def viewing(cls, address, given_back):
        """A frame over the record at `address` in place; the record is given back with it,
        then `given_back()` runs."""
        record = _native.FrameRecord.from_address(address)
        owner = _DeliveredRecord(address, given_back)
        size = pixel_bytes(record.pixel_format, record.width, record.height, record.stride)
        if size == 0:
            return cls(record, np.empty(0, dtype=np.uint8))  # nothing to view: the record goes now
        raw = (ctypes.c_uint8 * size).from_address(record.data)
        raw.record = owner  # every array over `raw` keeps the record out of the library's hands
        return cls(record, np.frombuffer(raw, dtype=np.uint8))

    @classmethod
    def copying(cls, address):
        """A frame with its own copy of the record's pixels; the caller returns the record."""
        record = _native.FrameRecord.from_address(address)
        size = pixel_bytes(record.pixel_format, record.width, record.height, record.stride)
        pixels = np.empty(size, dtype=np.uint8)
        if size:
            ctypes.memmove(pixels.ctypes.data, record.data, size)
        return cls(record, pixels)

    def copy(self):
        """A frame that owns a copy of the pixels, to keep after this one's record goes back."""
        twin = object.__new__(Frame)
        for name in Frame.__slots__:
            setattr(twin, name, getattr(self, name))
        twin._pixels = self._pixels.copy()
        return twin

    def _plane(self, shape, strides, offset=0, dtype=np.uint8):
        return np.ndarray(shape, dtype=dtype, buffer=self._pixels, offset=offset, strides=strides)

    @property
    def planes(self):
        """(image,) for grey frames; (Y, UV) for NV12, UV of shape (H/2, W/2, 2) holding U, V."""
        h, w, stride = self.height, self.width, self.stride
        if self.pixel_format == PixelFormat.GRAY8:
            return (self._plane((h, w), (stride, 1)),)
        if self.pixel_format == PixelFormat.GRAY16:
            return (self._plane((h, w), (stride, 2), dtype=np.dtype("<u2")),)
        y = self._plane((h, w), (stride, 1))
        uv = self._plane((_half_up(h), _half_up(w), 2), (stride, 2, 1), offset=stride * h)
        return (y, uv)

    @property
    def image(self):
        """H x W: the grey values (uint8 or uint16), or the Y plane of an NV12 frame."""
        return self.planes[0]

    def to_rgb(self):
        """H x W x 3 uint8. NV12 as BT.601 limited range; Gray16 by its high byte."""
        if self.pixel_format == PixelFormat.NV12:
            return nv12_to_rgb(*self.planes)
        grey = self.image
        if grey.dtype != np.uint8:
            grey = (grey >> 8).astype(np.uint8)
        return np.repeat(grey[:, :, np.newaxis], 3, axis=2)

    def __repr__(self):
        lit = "illuminated" if self.illumination else "dark"
        return (
            f"<Frame {self.width}x{self.height} {self.pixel_format.name.lower()} "
            f"t={self.timestamp}us {lit}>"
        )


def nv12_to_rgb(y_plane, uv_plane):
    """RGB of NV12 planes (BT.601 limited range, integer arithmetic; chroma shared by 2x2)."""
    h, w = y_plane.shape
    c = y_plane.astype(np.int32) - 16
    chroma = uv_plane.astype(np.int32) - 128
    chroma = np.repeat(np.repeat(chroma, 2, axis=0), 2, axis=1)[:h, :w]
    d, e = chroma[:, :, 0], chroma[:, :, 1]
    rgb = np.empty((h, w, 3), dtype=np.int32)
    rgb[:, :, 0] = (298 * c + 409 * e + 128) >> 8
    rgb[:, :, 1] = (298 * c - 100 * d - 208 * e + 128) >> 8
    rgb[:, :, 2] = (298 * c + 516 * d + 128) >> 8
    return np.clip(rgb, 0, 255).astype(np.uint8)
