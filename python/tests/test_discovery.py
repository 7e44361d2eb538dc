"""Discovery: the cameras present and the system queries, on the default virtual camera (one
USB camera with an infrared and a colour source, both on the front panel)."""
from conftest import CAMERA_ID

import vexcap


def test_cameras_lists_the_camera_with_its_description():
    (camera,) = vexcap.cameras()
    assert camera == vexcap.CameraInfo(
        id=CAMERA_ID,
        name="Virtual Face Camera",
        sources=("infrared", "colour"),
        group_type="usb",
        vid="VID_F00D",
        pid="PID_CAFE",
        locations=("front",),
    )
    with vexcap.open(camera) as cam:  # a CameraInfo opens as its id does
        assert cam.name == "Virtual Face Camera" and cam.reader == "infrared"


def test_system_queries():
    assert vexcap.source_group_type() == "usb"
    assert vexcap.targeted_location() == "front"
    assert vexcap.source_group_type_for_vid_pid("VID_F00D", "PID_CAFE") == "usb"
    assert vexcap.source_group_type_for_vid_pid("VID_F00D", "PID_0000") is None
    assert vexcap.vid_pid_used(CAMERA_ID, "VID_F00D", "PID_CAFE")
    assert not vexcap.vid_pid_used(CAMERA_ID, "vid_f00d", "pid_cafe")  # compared with case
    assert vexcap.capabilities(CAMERA_ID) == ("infrared", "colour")
    assert vexcap.capabilities(CAMERA_ID.lower()) is None
    assert vexcap.locations("vid_f00d&pid_cafe") == ("front",)  # compared without case
    assert vexcap.locations("VID_0000") == ()
