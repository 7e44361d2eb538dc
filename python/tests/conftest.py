"""Tests of the Python package against the built library on the virtual camera: the default
camera (one USB face camera, infrared Gray8 640x480 at 30 fps, colour NV12 640x480) in real
time. VEXCAP_LIBRARY names the library; by default the native build's."""
import os
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "python"))
os.environ.setdefault("VEXCAP_LIBRARY", str(ROOT / "build" / "native" / "libVexcapLib.so"))

import vexcap

# Format codes of the infrared reader (the camera keeps the chosen one for the process).
INFRARED_640X480_30FPS = 2
INFRARED_320X240_60FPS = 1
CAMERA_ID = (
    "\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#7&1f00dcaf&0&0000#{e5323777-f976-4f5b-9b55-b94699c46e44}\\GLOBAL"
)


@pytest.fixture
def infrared():
    with vexcap.open(CAMERA_ID, reader="infrared") as cam:
        cam.set_format(INFRARED_640X480_30FPS)
        yield cam


@pytest.fixture
def colour():
    with vexcap.open(CAMERA_ID, reader="colour") as cam:
        yield cam
