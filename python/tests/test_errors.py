"""Refusals: ids no camera has, a second camera in one slot, closed cameras, frames that do not
come, and what the exceptions carry."""
import time

import pytest
from conftest import CAMERA_ID

import vexcap


@pytest.mark.parametrize(
    "camera, reader",
    [
        (CAMERA_ID.lower(), "infrared"),  # ids are compared exactly, case included
        ("\\\\?\\USB#VID_0000&PID_0000#none", "colour"),
        (CAMERA_ID, "depth"),  # the camera has no depth source
    ],
)
def test_opening_what_is_not_there_fails_at_once(camera, reader):
    # The library itself would retry such an open for ever.
    started = time.monotonic()
    with pytest.raises(vexcap.CameraNotFoundError) as raised:
        vexcap.open(camera, reader=reader)
    assert time.monotonic() - started < 2
    assert isinstance(raised.value, LookupError)


def test_unknown_id_names_the_query_that_refused_it():
    with pytest.raises(vexcap.CameraNotFoundError) as raised:
        vexcap.open("no such camera")
    assert (raised.value.code, raised.value.call) == (-1, "vexcap_get_device_capabilities")


def test_one_camera_per_slot_colour_beside_another_kind(infrared):
    with pytest.raises(vexcap.InvalidStateError) as raised:
        vexcap.open(CAMERA_ID, reader="infrared")
    assert raised.value.code is None  # refused here: the library would orphan the first device
    with vexcap.open(CAMERA_ID, reader="colour") as colour:
        assert colour.read().pixel_format == vexcap.PixelFormat.NV12
        assert infrared.read().pixel_format == vexcap.PixelFormat.GRAY8
    with vexcap.open(CAMERA_ID, reader="colour"):  # the slot is free again
        pass


def test_a_closed_camera_refuses_requests_and_wakes_its_reader():
    cam = vexcap.open(CAMERA_ID, reader="infrared")
    cam.read()
    cam.close()
    cam.close()  # closing twice is harmless
    assert cam.closed
    with pytest.raises(vexcap.CameraClosedError):
        cam.exposure
    with pytest.raises(vexcap.CameraClosedError):
        cam.read(timeout=1)


def test_no_frame_in_time_raises_a_timeout(infrared):
    infrared.set_property("stream_type_apply", 8)  # 640x480 at 1 fps
    try:
        infrared.read()
        with pytest.raises(vexcap.FrameTimeoutError) as raised:
            infrared.read(timeout=0.2)
        assert isinstance(raised.value, TimeoutError) and isinstance(raised.value, vexcap.Error)
    finally:
        infrared.set_property("stream_type_apply", 2)
