"""Frames through read() and frames(): pixels against the camera's pattern, the metadata, and
how long a frame's pixels stay valid."""
import time

import numpy as np
import pytest
from conftest import CAMERA_ID, INFRARED_320X240_60FPS, INFRARED_640X480_30FPS
from pattern import chroma, frame_number, luma

import vexcap

PERIOD_US = 1_000_000 / 30  # the default camera streams at 30 fps


def test_infrared_frames_carry_the_pattern_illumination_and_time():
    with vexcap.open(CAMERA_ID, reader="infrared", queue_size=8) as infrared:  # room for all 8
        infrared.set_format(INFRARED_640X480_30FPS)
        frames = list(infrared.frames(count=8))
        assert infrared.dropped == 0
    numbers = []
    for frame in frames:
        assert (frame.width, frame.height, frame.stride) == (640, 480, 640)
        assert frame.pixel_format == vexcap.PixelFormat.GRAY8
        n = frame_number(frame.image[0, 0])
        np.testing.assert_array_equal(frame.image, luma(640, 480, n))
        assert frame.image.dtype == np.uint8 and len(frame.planes) == 1
        assert frame.illumination == (n % 2 == 0)  # the illuminator lights every other frame
        # Nothing was set on this camera: no control is reported.
        assert (frame.exposure, frame.iso_speed, frame.led_power) == (None, None, None)
        numbers.append(n)
    assert [(b - a) % 256 for a, b in zip(numbers, numbers[1:])] == [1] * 7
    for a, b in zip(frames, frames[1:]):
        # Frame k is due at start + k periods, in whole microseconds; a camera that fell a
        # period behind (a loaded machine) skips the frames it missed.
        periods = round((b.timestamp - a.timestamp) / PERIOD_US)
        assert periods >= 1 and abs((b.timestamp - a.timestamp) - periods * PERIOD_US) <= 1


def test_colour_frames_are_nv12_planes_and_convert_to_rgb(colour):
    frame = colour.read()
    assert frame.pixel_format == vexcap.PixelFormat.NV12
    y, uv = frame.planes
    n = frame_number(y[0, 0])
    np.testing.assert_array_equal(frame.image, luma(640, 480, n))
    np.testing.assert_array_equal(uv, chroma(640, 480, n))

    # BT.601 limited range, in floating point: the conversion may round differently by one.
    c = y.astype(float) - 16
    d = np.repeat(np.repeat(uv[:, :, 0].astype(float) - 128, 2, axis=0), 2, axis=1)
    e = np.repeat(np.repeat(uv[:, :, 1].astype(float) - 128, 2, axis=0), 2, axis=1)
    red, green, blue = 1.164 * c + 1.596 * e, 1.164 * c - 0.392 * d - 0.813 * e, 1.164 * c + 2.017 * d
    expected = np.stack([red, green, blue], axis=-1)
    expected = np.clip(np.round(expected), 0, 255)
    rgb = frame.to_rgb()
    assert rgb.shape == (480, 640, 3) and rgb.dtype == np.uint8
    assert np.abs(rgb.astype(int) - expected).max() <= 2


def test_grey_to_rgb_repeats_the_grey(infrared):
    frame = infrared.read()
    rgb = frame.to_rgb()
    for channel in range(3):
        np.testing.assert_array_equal(rgb[:, :, channel], frame.image)


@pytest.mark.parametrize("copy", [False, True])
def test_pixels_outlive_the_frame_and_the_camera(copy):
    with vexcap.open(CAMERA_ID, reader="infrared", copy=copy) as cam:
        cam.set_format(INFRARED_640X480_30FPS)
        frame = cam.read()
        kept = frame.copy()
        image = frame.image
        n = frame_number(image[0, 0])
        del frame
        for _ in cam.frames(count=5):  # newer records come and go meanwhile
            pass
    np.testing.assert_array_equal(image, luma(640, 480, n))
    np.testing.assert_array_equal(kept.image, luma(640, 480, n))
    assert kept.illumination == (n % 2 == 0)


def test_a_full_queue_drops_the_oldest_frames():
    with vexcap.open(CAMERA_ID, reader="infrared", queue_size=2) as cam:
        cam.set_format(INFRARED_640X480_30FPS)
        cam.start()
        while cam.received < 6:  # nobody reads: the queue fills
            time.sleep(0.05)
        assert cam.queued == 2
        assert cam.dropped >= 4
        first, second = cam.read(), cam.read()
        # The two newest frames stayed, in order.
        assert (frame_number(second.image[0, 0]) - frame_number(first.image[0, 0])) % 256 == 1


def test_stop_gives_back_the_queued_frames_and_read_starts_again(infrared):
    before = infrared.read()
    infrared.stop()
    assert not infrared.streaming and infrared.queued == 0
    received = infrared.received
    time.sleep(0.3)
    assert infrared.received == received
    after = infrared.read()
    assert infrared.streaming
    assert after.timestamp >= before.timestamp + 0.3 * 1_000_000


def test_frames_kept_by_the_hundred_keep_coming():
    # The library holds back a stream's frames while 64 of its records are out; past that
    # the package hands out copies, so a reader that keeps frames is not starved.
    with vexcap.open(CAMERA_ID, reader="infrared") as cam:
        cam.set_format(INFRARED_320X240_60FPS)
        try:
            kept = list(cam.frames(count=100, timeout=2))
            assert cam.records_held == 56
            for frame in kept:
                np.testing.assert_array_equal(frame.image, luma(320, 240, frame_number(frame.image[0, 0])))
            del kept, frame
            cam.stop()  # gives back the queued records too
            assert cam.records_held == 0
            frame = cam.read()
            assert cam.records_held >= 1  # viewed again
        finally:
            cam.set_format(INFRARED_640X480_30FPS)
