"""The Python side of scripts/bench-python.sh: frames through `Camera.frames()` from the virtual
camera set up with one format, counted as the C host counts them (vexcap-frame-path-host).
Prints one line of JSON: frames, wall and process CPU seconds over them, frames dropped.

Usage: VEXCAP_LIBRARY=build/native/libVexcapLibScenarios.so \
       python3 frames_bench.py SOURCE SUBTYPE WIDTH HEIGHT FPS FRAMES view|copy
"""
import ctypes
import json
import os
import sys
import time

WARM_UP_FRAMES = 30


def main(argv):
    source, subtype = int(argv[1]), argv[2]
    width, height, fps, frames = (int(value) for value in argv[3:7])
    copy = argv[7] == "copy"
    # The same library the package loads (the loader hands out one instance per file).
    scenarios = ctypes.CDLL(os.environ["VEXCAP_LIBRARY"])
    use_format = scenarios.vexcap_scenario_use_format
    use_format.argtypes = [ctypes.c_uint32, ctypes.c_wchar_p, *[ctypes.c_uint32] * 4]
    if use_format(source, subtype, width, height, fps, 0) != 0:
        raise SystemExit("vexcap_scenario_use_format failed")

    import vexcap

    with vexcap.open(reader="infrared" if source == 0 else "colour", copy=copy, queue_size=8) as cam:
        stream = cam.frames(timeout=5.0)
        for _ in range(WARM_UP_FRAMES):
            next(stream)
        dropped = cam.dropped
        wall, cpu = time.perf_counter(), time.process_time()
        for _ in range(frames):
            frame = next(stream)
        wall, cpu = time.perf_counter() - wall, time.process_time() - cpu
        dropped = cam.dropped - dropped
        del frame
    print(json.dumps({"frames": frames, "wall_s": wall, "cpu_s": cpu, "dropped": dropped}))


if __name__ == "__main__":
    main(sys.argv)
