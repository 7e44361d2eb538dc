"""Controls and device properties of an open camera, read back through the library and through
the frames that report them."""
import pytest
from conftest import INFRARED_320X240_60FPS, INFRARED_640X480_30FPS

import vexcap


def first_frame_reporting(cam, field, limit=12):
    """The frames read until one reports `field`, which frames report from the fifth frame
    after a change on (frames queued before the change count too, hence the margin)."""
    frames = []
    for frame in cam.frames(count=limit):
        frames.append(frame)
        if getattr(frame, field) is not None:
            return frames
    raise AssertionError(f"no frame of {limit} reported {field}")


@pytest.mark.parametrize("control, values", [("exposure", (20000, 30000)), ("iso_speed", (200, 400))])
def test_control_round_trips_and_frames_report_it(infrared, control, values):
    # The camera keeps its state for the process: choose a value it does not hold yet.
    wanted = values[0] if getattr(infrared, control) != values[0] else values[1]
    infrared.start()
    setattr(infrared, control, wanted)
    assert getattr(infrared, control) == wanted
    assert getattr(first_frame_reporting(infrared, control)[-1], control) == wanted
    assert all(getattr(frame, control) == wanted for frame in infrared.frames(count=3))


def test_led_power_set_is_reported_by_frames_as_the_camera_reads_it(infrared):
    infrared.start()
    infrared.led_power = 45
    reported = first_frame_reporting(infrared, "led_power")[-1].led_power
    assert reported == infrared.led_power


def test_auto_exposure_hides_the_exposure_until_switched_off(infrared):
    manual = infrared.exposure
    infrared.auto_exposure = True
    assert infrared.auto_exposure is True
    with pytest.raises(vexcap.InvalidStateError) as raised:
        infrared.exposure
    assert (raised.value.code, raised.value.call) == (-2, "vexcap_get_exposure")
    infrared.auto_exposure = False
    assert infrared.exposure == manual


def test_settings_by_name_and_refusals(infrared):
    assert infrared.face_auth_mode is None
    infrared.face_auth_mode = "background_subtraction"
    try:
        assert infrared.face_auth_mode == "background_subtraction"
        with pytest.raises(vexcap.InvalidArgumentError) as raised:
            infrared.face_auth_mode = 999  # none of the three modes
        assert raised.value.code == -5 and raised.value.call == "vexcap_set_dev_property"
        assert isinstance(raised.value, ValueError)
        assert infrared.face_auth_mode == "background_subtraction"
        with pytest.raises(ValueError):
            infrared.face_auth_mode = "dazzle"  # refused before the library is asked
    finally:
        # The camera keeps the mode, and the RGB-status registration waits for "disabled".
        infrared.face_auth_mode = "disabled"
    infrared.llc = True
    infrared.llc = "off"
    with pytest.raises(ValueError):
        infrared.set_property("brightness", 1)
    infrared.set_property(7, 1)  # an id the library does not know: it succeeds and does nothing


def test_read_only_properties(infrared, colour):
    assert infrared.get_property("rgb_status") == 0
    assert infrared.get_property("video_control_mode") == 0
    assert infrared.get_property(22) == 21  # no high-resolution format on the infrared reader


def test_format_code_changes_the_frames(infrared):
    infrared.set_format(INFRARED_320X240_60FPS)
    first, second = infrared.read(), infrared.read()
    assert (first.width, first.height, first.stride) == (320, 240, 320)
    periods = (second.timestamp - first.timestamp) / (1_000_000 / 60)
    assert round(periods) >= 1 and abs(periods - round(periods)) < 0.001
    infrared.set_format(INFRARED_640X480_30FPS)
