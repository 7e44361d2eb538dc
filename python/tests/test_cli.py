"""python -m vexcap as a user runs it: the listing, a capture's files, a refused camera id."""
import csv
import os
import struct
import subprocess
import sys
import zlib

import numpy as np
from conftest import CAMERA_ID, ROOT
from pattern import frame_number, luma


def run_cli(*args, cwd=None):
    env = dict(os.environ, PYTHONPATH=str(ROOT / "python"))
    return subprocess.run([sys.executable, "-m", "vexcap", *args], env=env, cwd=cwd, capture_output=True,
                          text=True, timeout=60)


def read_png(path):
    """Grey 8-bit PNG pixels, for files whose rows carry no filter (what the writer emits)."""
    data = path.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    chunks, at = {}, 8
    while at < len(data):
        (length,) = struct.unpack(">I", data[at : at + 4])
        kind, body = data[at + 4 : at + 8], data[at + 8 : at + 8 + length]
        assert struct.unpack(">I", data[at + 8 + length : at + 12 + length])[0] == zlib.crc32(kind + body)
        chunks[kind] = chunks.get(kind, b"") + body
        at += 12 + length
    width, height, depth, colour_type = struct.unpack(">IIBB", chunks[b"IHDR"][:10])
    assert (depth, colour_type) == (8, 0)
    rows = np.frombuffer(zlib.decompress(chunks[b"IDAT"]), dtype=np.uint8).reshape(height, width + 1)
    assert not rows[:, 0].any()
    return rows[:, 1:]


def test_list_describes_the_camera():
    result = run_cli("list", "--vid", "VID_F00D", "--pid", "PID_CAFE")
    assert result.returncode == 0, result.stderr
    assert result.stdout.splitlines() == [
        "1 camera",
        "[1] Virtual Face Camera",
        f"    id          {CAMERA_ID}",
        "    sources     infrared, colour",
        "    group type  USB (VID_F00D, PID_CAFE)",
        "    locations   front",
        "    VID_F00D/PID_CAFE  in use by this camera",
        "system: source group type USB; targeted location front",
    ]


def test_capture_writes_images_and_metadata(tmp_path):
    result = run_cli("capture", "--frames", "6", "--every", "3", "--out", str(tmp_path))
    assert result.returncode == 0, result.stderr
    with open(tmp_path / "frames.csv", newline="") as table:
        rows = list(csv.DictReader(table))
    assert [row["file"] for row in rows] == ["frame-000000.png", "", "", "frame-000003.png", "", ""]
    assert sorted(p.name for p in tmp_path.iterdir()) == ["frame-000000.png", "frame-000003.png",
                                                          "frames.csv"]
    for row in rows:
        layout = (row["width"], row["height"], row["pixel_format"], row["led_power"])
        assert layout == ("640", "480", "GRAY8", "255")
    for row in (rows[0], rows[3]):
        image = read_png(tmp_path / row["file"])
        n = frame_number(image[0, 0])
        np.testing.assert_array_equal(image, luma(640, 480, n))
        assert row["illumination"] == str(int(n % 2 == 0))


def test_an_unknown_camera_is_a_failure_with_a_reason():
    result = run_cli("info", "--camera", "no such camera")
    assert result.returncode == 1
    assert "no camera has the id 'no such camera'" in result.stderr


def test_the_illumination_example_pairs_a_lit_and_a_dark_frame(tmp_path):
    example = ROOT / "python" / "examples" / "infrared_illumination.py"
    env = dict(os.environ, PYTHONPATH=str(ROOT / "python"))
    result = subprocess.run([sys.executable, str(example), str(tmp_path)], env=env, capture_output=True,
                            text=True, timeout=60)
    assert result.returncode == 0, result.stderr
    lit, dark = read_png(tmp_path / "lit.png"), read_png(tmp_path / "dark.png")
    n = frame_number(lit[0, 0])
    assert n % 2 == 0  # the camera lights even frames
    np.testing.assert_array_equal(lit, luma(640, 480, n))
    np.testing.assert_array_equal(dark, luma(640, 480, frame_number(dark[0, 0])))
    assert frame_number(dark[0, 0]) % 2 == 1
    expected = np.clip(lit.astype(int) - dark.astype(int), 0, 255)
    np.testing.assert_array_equal(read_png(tmp_path / "lit-minus-dark.png"), expected)


def test_log_switched_on_before_opening_reaches_the_library():
    result = run_cli("info", "--log")  # vexcap.log(True) comes before any camera is open
    assert result.returncode == 0, result.stderr
    assert "D: get_dev_property: 17" in result.stdout.splitlines()
