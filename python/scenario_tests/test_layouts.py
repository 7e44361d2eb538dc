"""Planes of every delivered layout against the camera's pattern (see python/tests/pattern.py)."""
import numpy as np
from conftest import COLOUR, INFRARED
from pattern import chroma, frame_number, luma

import vexcap


def test_gray16_samples_are_little_endian_words(camera_with):
    frame = camera_with(INFRARED, "L16", 640, 480).read()
    assert frame.pixel_format == vexcap.PixelFormat.GRAY16 and frame.stride == 1280
    image = frame.image
    assert image.dtype == np.dtype("<u2") and image.shape == (480, 640)
    n = frame_number(image[0, 0] >> 8)
    np.testing.assert_array_equal(image, luma(640, 480, n).astype(np.uint16) * 257)
    np.testing.assert_array_equal(frame.to_rgb()[:, :, 1], luma(640, 480, n))


def test_nv12_at_1080p(camera_with):
    frame = camera_with(COLOUR, "NV12", 1920, 1080).read()
    assert (frame.width, frame.height, frame.stride) == (1920, 1080, 1920)
    y, uv = frame.planes
    n = frame_number(y[0, 0])
    np.testing.assert_array_equal(y, luma(1920, 1080, n))
    np.testing.assert_array_equal(uv, chroma(1920, 1080, n))


def test_padded_rows_stay_outside_the_planes(camera_with):
    grey = camera_with(INFRARED, "GRAY8", 320, 240, padding=6).read()
    assert (grey.stride, grey.image.shape, grey.image.strides) == (326, (240, 320), (326, 1))
    np.testing.assert_array_equal(grey.image, luma(320, 240, frame_number(grey.image[0, 0])))

    colour = camera_with(COLOUR, "NV12", 320, 240, padding=10).read()
    y, uv = colour.planes
    assert colour.stride == 330 and uv.shape == (120, 160, 2)
    n = frame_number(y[0, 0])
    np.testing.assert_array_equal(y, luma(320, 240, n))
    np.testing.assert_array_equal(uv, chroma(320, 240, n))
    kept = colour.copy()  # a copy keeps the layout
    np.testing.assert_array_equal(kept.planes[1], uv)
