"""Runs the frame-path comparison of scripts/bench-python.sh and prints its table.

Each round runs, in a random order, one process per path and format: the C host giving every
record straight back (the C callback path), the virtual camera alone (no callback: the library
drops each frame before copying it), and Python's `frames()` with zero-copy frames and with
copied frames. The machine is shared, so the table leads with process CPU time per frame
(every thread of the process) and gives medians with min..max over the rounds; frames per
second is what the stream delivered in wall time.
"""
import argparse
import json
import os
import random
import statistics
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "native"
FORMATS = {"640x480 Gray8": (0, "GRAY8", 640, 480), "1920x1080 NV12": (1, "NV12", 1920, 1080)}
PATHS = ("camera alone", "C callback", "Python view", "Python copy")


def run(path, fmt, fps, frames):
    source, subtype, width, height = FORMATS[fmt]
    args = [str(source), subtype, str(width), str(height), str(fps), str(frames)]
    env = dict(os.environ, VEXCAP_LIBRARY=str(BUILD / "libVexcapLibScenarios.so"),
               PYTHONPATH=str(ROOT / "python"))
    if path in ("camera alone", "C callback"):
        mode = "camera" if path == "camera alone" else "callback"
        command = [str(BUILD / "vexcap-frame-path-host"), *args, mode]
    else:
        mode = "view" if path == "Python view" else "copy"
        command = [sys.executable, str(ROOT / "python" / "bench" / "frames_bench.py"), *args, mode]
    output = subprocess.run(command, env=env, check=True, capture_output=True, text=True).stdout
    return json.loads(output.strip().splitlines()[-1])


def spread(values):
    return f"{statistics.median(values):.0f} ({min(values):.0f}..{max(values):.0f})"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--frames", type=int, default=300, help="frames counted per run")
    parser.add_argument("--fps", type=int, default=60, help="the virtual camera's frame rate")
    options = parser.parse_args()

    load_before = os.getloadavg()
    results = {(fmt, path): [] for fmt in FORMATS for path in PATHS}
    for number in range(options.rounds):
        order = list(results)
        random.shuffle(order)
        for fmt, path in order:
            results[(fmt, path)].append(run(path, fmt, options.fps, options.frames))
        print(f"round {number + 1}/{options.rounds} done", file=sys.stderr)
    load_after = os.getloadavg()

    print(f"{options.rounds} rounds of {options.frames} frames at {options.fps} fps; "
          f"load average {load_before[0]:.2f} before, {load_after[0]:.2f} after; {os.cpu_count()} CPUs")
    print()
    print("| format | path | CPU us per frame | frames per second | dropped | overhead over C (CPU) |")
    print("|---|---|---|---|---|---|")
    for fmt in FORMATS:
        c_median = statistics.median(r["cpu_s"] / r["frames"] * 1e6 for r in results[(fmt, "C callback")])
        for path in PATHS:
            runs = results[(fmt, path)]
            cpu = [r["cpu_s"] / r["frames"] * 1e6 for r in runs]
            fps = [r["frames"] / r["wall_s"] for r in runs]
            dropped = sum(r.get("dropped", 0) for r in runs)
            overhead = ""
            if path.startswith("Python"):
                extra = statistics.median(cpu) - c_median
                overhead = f"{extra:+.0f} us ({extra / c_median:+.0%})"
            fps_text = "-" if path == "camera alone" else spread(fps)
            dropped_text = dropped if path.startswith("Python") else "-"
            print(f"| {fmt} | {path} | {spread(cpu)} | {fps_text} | {dropped_text} | {overhead} |")


if __name__ == "__main__":
    main()
