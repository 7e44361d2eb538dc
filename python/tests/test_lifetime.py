"""A long stream holds no memory, and an interpreter that exits with cameras still open and
frames still flowing exits cleanly."""
import gc
import os
import subprocess
import sys
import textwrap

from conftest import CAMERA_ID, INFRARED_320X240_60FPS, INFRARED_640X480_30FPS, ROOT

import vexcap


def resident_bytes():
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def test_a_thousand_frames_hold_no_memory():
    with vexcap.open(CAMERA_ID, reader="infrared") as cam:
        cam.set_format(INFRARED_320X240_60FPS)  # 1000 frames in about 17 s
        try:
            for index, frame in enumerate(cam.frames(count=1000)):
                assert frame.image.shape == (240, 320)
                if index == 199:  # after the allocator and the queue have settled
                    gc.collect()
                    settled = resident_bytes()
            gc.collect()
            grown = resident_bytes() - settled
        finally:
            cam.set_format(INFRARED_640X480_30FPS)
        assert cam.received >= 1000
    # Every frame is 77 KB: keeping even a tenth of the last 800 would show.
    assert grown < 2 * 1024 * 1024, f"resident memory grew by {grown} bytes"


def run_script(source):
    env = dict(os.environ, PYTHONPATH=str(ROOT / "python"))
    return subprocess.run(
        [sys.executable, "-c", textwrap.dedent(source)], env=env, capture_output=True, text=True, timeout=60
    )


def test_exit_with_cameras_streaming_events_registered_and_frames_held():
    result = run_script(
        f"""
        import threading, time
        import vexcap

        camera_id = {CAMERA_ID!r}
        colour = vexcap.open(camera_id, reader="colour")
        held = colour.read()  # a record still viewed at exit
        colour.on_rgb_status(lambda active: None)
        colour.on_rgb_stopped(lambda: None)
        watch = vexcap.watch(added=lambda camera, name: None)
        infrared = vexcap.open(camera_id, reader="infrared", copy=True)

        def read_for_ever():
            try:
                while True:
                    infrared.read()
            except vexcap.CameraClosedError:
                pass

        threading.Thread(target=read_for_ever, daemon=True).start()
        time.sleep(0.5)
        print("leaving", held.width)
        """
    )
    assert (result.returncode, result.stdout, result.stderr) == (0, "leaving 640\n", "")


def test_exit_on_an_exception_while_streaming():
    result = run_script(
        f"""
        import vexcap

        camera = vexcap.open({CAMERA_ID!r}, reader="infrared")
        for frame in camera.frames():
            raise SystemExit(3)
        """
    )
    assert (result.returncode, result.stderr) == (3, "")
