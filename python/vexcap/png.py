"""PNG files from frame arrays with the standard library's zlib: grey 8 and 16 bit, RGB."""
import os
import struct
import zlib

import numpy as np

_SIGNATURE = b"\x89PNG\r\n\x1a\n"
_GREY, _RGB = 0, 2


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def encode_png(image, level=1):
    """PNG bytes of an H x W uint8 or uint16 (grey) or H x W x 3 uint8 (RGB) array. Level 1
    compresses lightly: frames are written as fast as they come."""
    image = np.asarray(image)
    if image.ndim == 2 and image.dtype in (np.uint8, np.uint16):
        colour_type, samples = _GREY, image.astype(">u2") if image.dtype == np.uint16 else image
    elif image.ndim == 3 and image.shape[2] == 3 and image.dtype == np.uint8:
        colour_type, samples = _RGB, image
    else:
        raise ValueError(f"no PNG layout for an array of shape {image.shape} and type {image.dtype}")
    height, width = image.shape[:2]
    rows = np.ascontiguousarray(samples).view(np.uint8).reshape(height, -1)
    # Every row starts with its filter type: 0, none.
    scanlines = np.concatenate([np.zeros((height, 1), dtype=np.uint8), rows], axis=1)
    header = struct.pack(">IIBBBBB", width, height, 8 * image.dtype.itemsize, colour_type, 0, 0, 0)
    return b"".join(
        [
            _SIGNATURE,
            _chunk(b"IHDR", header),
            _chunk(b"IDAT", zlib.compress(scanlines.tobytes(), level)),
            _chunk(b"IEND", b""),
        ]
    )


def write_png(path, image):
    """Writes `image` to `path` whole or not at all (through `path`.part, renamed when done)."""
    partial = f"{path}.part"
    with open(partial, "wb") as file:
        file.write(encode_png(image))
    os.replace(partial, path)
