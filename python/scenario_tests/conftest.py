"""Frame layouts the default camera does not stream (16-bit grey, 1080p NV12, padded rows), on
the library build whose virtual camera a process can set up (libVexcapLibScenarios.so, built
from python/native/). Run apart from python/tests: a process loads one library."""
import ctypes
import os
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "python"))
sys.path.insert(0, str(ROOT / "python" / "tests"))  # the pattern's definition
os.environ["VEXCAP_LIBRARY"] = os.environ.get(
    "VEXCAP_SCENARIO_LIBRARY", str(ROOT / "build" / "native" / "libVexcapLibScenarios.so")
)

import vexcap

INFRARED, COLOUR = 0, 1


@pytest.fixture
def camera_with():
    """camera_with(source, subtype, width, height, padding=0): the camera of the default
    scenario whose source streams only that format at 30 fps, opened on that source; the
    camera opened before is closed first."""
    scenarios = ctypes.CDLL(os.environ["VEXCAP_LIBRARY"])
    use_format = scenarios.vexcap_scenario_use_format
    use_format.argtypes = [ctypes.c_uint32, ctypes.c_wchar_p, *[ctypes.c_uint32] * 4]
    opened = []

    def open_camera(source, subtype, width, height, padding=0):
        while opened:  # the camera is set up with no device open
            opened.pop().close()
        assert use_format(source, subtype, width, height, 30, padding) == 0
        cam = vexcap.open(reader="infrared" if source == INFRARED else "colour")
        opened.append(cam)
        return cam

    yield open_camera
    for cam in opened:
        cam.close()
