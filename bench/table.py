#!/usr/bin/env python3
"""Prints the results of scripts/bench.sh as the Markdown of docs/performance.md.

Every benchmark ran once per round, the benchmarks of a round in random order. A time is the
median over the rounds with the quartiles, in microseconds of the benchmark thread's CPU time
(the machine is shared: wall time mostly measures the neighbours); the request round trip
spans two threads and is wall time. A ratio is taken within each round (libyuv's time over
the level's, both from the same round) and its median and quartiles over the rounds are given:
above 1 the level is faster."""
import json
import statistics
import sys
from collections import defaultdict

LEVELS = ["sse2", "avx2", "avx512"]
TIME_COLUMNS = ["libyuv", "scalar"] + LEVELS
KERNEL_ORDER = ["rgb24_to_nv12", "gray8_rotate90", "gray8_rotate270", "gray8_rotate180",
                "gray16_rotate90", "nv12_rotate90"]
LEVEL_NAMES = {"SSE2": "sse2", "AVX2": "avx2", "AVX-512": "avx512", "scalar": "scalar"}


def quartiles(values):
    if len(values) == 1:
        return values[0], values[0], values[0]
    q1, med, q3 = statistics.quantiles(values, n=4, method="inclusive")
    return q1, med, q3


def time_cell(values, digits=0):
    if not values:
        return ""
    q1, med, q3 = quartiles(values)
    return f"{med:.{digits}f} ({q1:.{digits}f}..{q3:.{digits}f})"


def ratio_cell(values):
    if not values:
        return ""
    q1, med, q3 = quartiles(values)
    return f"{med:.2f}x ({q1:.2f}..{q3:.2f})"


def load(path):
    with open(path) as f:
        data = json.load(f)
    rounds = defaultdict(dict)  # name -> round -> microseconds
    for t in data["timings"]:
        wall = t["name"].startswith("request/")
        rounds[t["name"]][t["round"]] = t["real_us"] if wall else t["cpu_us"]
    return data["machine"], rounds


def per_round_ratios(rounds, numerator, denominator):
    a, b = rounds.get(numerator, {}), rounds.get(denominator, {})
    return [a[r] / b[r] for r in sorted(a) if r in b and b[r] > 0]


def times(rounds, name):
    return list(rounds.get(name, {}).values())


def size_key(size):
    w, h = size.split("x")
    return int(w) * int(h)


def kernel_rows(rounds):
    keys = set()
    for name in rounds:
        parts = name.split("/")
        if len(parts) == 4 and parts[0] in KERNEL_ORDER:
            keys.add((parts[0], parts[2], parts[3]))
    return sorted(keys, key=lambda k: (KERNEL_ORDER.index(k[0]), size_key(k[1]), k[2] != "hot"))


def kernel_table(rounds):
    print("| kernel | size | cache | " + " | ".join(TIME_COLUMNS) + " | memcpy of the output | "
          + " | ".join(f"libyuv / {level}" for level in LEVELS) + " |")
    print("|---|---|---|" + "---|" * (len(TIME_COLUMNS) + 1 + len(LEVELS)))
    for kernel, size, cache in kernel_rows(rounds):
        name = lambda impl: f"{kernel}/{impl}/{size}/{cache}"
        copy_kind = "copy_nv12" if kernel.startswith(("rgb24", "nv12")) else "copy_gray8"
        # A Gray16 frame is two Gray8 copies: no column of its own.
        copy = [] if kernel.startswith("gray16") else times(rounds, f"{copy_kind}/memcpy/{size}/{cache}")
        cells = [time_cell(times(rounds, name(impl))) for impl in TIME_COLUMNS]
        ratios = [ratio_cell(per_round_ratios(rounds, name("libyuv"), name(level))) for level in LEVELS]
        print(f"| {kernel} | {size} | {cache} | " + " | ".join(cells) + f" | {time_cell(copy)} | "
              + " | ".join(ratios) + " |")


def delivery_table(rounds):
    print("| per delivered frame | cache | library work | mandatory copy alone | work beyond the copy |")
    print("|---|---|---|---|---|")
    names = sorted({n.split("/")[1] for n in rounds if n.startswith("deliver/")})
    for stream in names:
        for cache in ("hot", "cold"):
            work = f"deliver/{stream}/{cache}"
            if work not in rounds:
                continue
            copy = f"deliver_copy/{stream}/{cache}"
            beyond = [r - 1 for r in per_round_ratios(rounds, work, copy)]
            beyond_cell = ""
            if beyond:
                q1, med, q3 = quartiles(beyond)
                beyond_cell = f"{med * 100:+.0f}% ({q1 * 100:+.0f}..{q3 * 100:+.0f})"
            print(f"| {stream} | {cache} | {time_cell(times(rounds, work))} | "
                  f"{time_cell(times(rounds, copy))} | {beyond_cell} |")
    trip = times(rounds, "request/round_trip")
    if trip:
        print(f"| request round trip through an export (wall time) | | {time_cell(trip, 1)} | | |")


# The goals, checked on the level each applies to (an AVX2-only CPU runs the avx2 column).
def targets(rounds):
    rows = []

    def ratio_goal(label, kernel, level, sizes, caches, goal):
        found = []
        for size in sizes:
            for cache in caches:
                r = per_round_ratios(rounds, f"{kernel}/libyuv/{size}/{cache}", f"{kernel}/{level}/{size}/{cache}")
                if r:
                    found.append((statistics.median(r), f"{size} {cache}"))
        if not found:
            return
        worst = min(found)
        verdict = "met" if worst[0] >= goal else "not met"
        spread = f"{min(v for v, _ in found):.2f}x-{max(v for v, _ in found):.2f}x"
        rows.append((label, f"{verdict}: {spread}, lowest {worst[0]:.2f}x at {worst[1]}"))

    big = ["1920x1080", "3840x2160"]
    every = ["640x480", "1280x720", "1920x1080", "3840x2160"]
    for level in ("avx2", "avx512"):
        hot_goal, cold_goal = (0.9, 1.0) if level == "avx2" else (1.0, 1.2)
        ratio_goal(f"RGB24 to NV12, {level}, hot >= {hot_goal}x libyuv (1080p, 4K)", "rgb24_to_nv12", level, big, ["hot"], hot_goal)
        ratio_goal(f"RGB24 to NV12, {level}, cold >= {cold_goal}x libyuv (1080p, 4K)", "rgb24_to_nv12", level, big, ["cold"], cold_goal)
        for kernel in ("gray8_rotate90", "gray8_rotate270"):
            ratio_goal(f"{kernel}, {level}, >= 1.2x libyuv (every size, hot and cold)", kernel, level, every, ["hot", "cold"], 1.2)
        ratio_goal(f"gray16_rotate90, {level}, >= 2x libyuv (every size, hot and cold)", "gray16_rotate90", level, every, ["hot", "cold"], 2.0)
        ratio_goal(f"nv12_rotate90, {level}, cold >= 2x libyuv (every size)", "nv12_rotate90", level, every, ["cold"], 2.0)
        ratio_goal(f"nv12_rotate90, {level}, 4K hot >= 2x libyuv", "nv12_rotate90", level, ["3840x2160"], ["hot"], 2.0)
        ratio_goal(f"gray8_rotate180, {level}, >= 1.0x libyuv", "gray8_rotate180", level, every, ["hot", "cold"], 1.0)
    for stream in sorted({n.split("/")[1] for n in rounds if n.startswith("deliver_copy/")}):
        for cache in ("hot", "cold"):
            beyond = [r - 1 for r in per_round_ratios(rounds, f"deliver/{stream}/{cache}", f"deliver_copy/{stream}/{cache}")]
            if beyond:
                med = statistics.median(beyond)
                rows.append((f"{stream} {cache}: work beyond the copy <= 10%",
                             f"{'met' if med <= 0.10 else 'not met'}: {med * 100:+.0f}%"))
    trip = times(rounds, "request/round_trip")
    if trip:
        med = statistics.median(trip)
        rows.append(("request round trip median <= 10 us", f"{'met' if med <= 10 else 'not met'}: {med:.1f} us"))
    print("| target | result |")
    print("|---|---|")
    for label, result in rows:
        print(f"| {label} | {result} |")


def main():
    machine, rounds = load(sys.argv[1])
    loads = [l for l in machine["load_average"] if l >= 0]
    count = max((len(v) for v in rounds.values()), default=0)
    dispatched = LEVEL_NAMES.get(machine["dispatched_level"], machine["dispatched_level"])
    print(f"Machine: {machine['cpu']}, {machine['threads']} hardware threads; instruction sets "
          f"{', '.join(machine['instruction_sets'])}; the dispatcher picks {machine['dispatched_level']} "
          f"(the {dispatched} column). {count} rounds; load average {min(loads):.1f} to "
          f"{max(loads):.1f} at the rounds' starts and end. Times in microseconds, median "
          f"(quartiles) over the rounds; ratios per round, median (quartiles).\n")
    kernel_table(rounds)
    print()
    delivery_table(rounds)
    print()
    targets(rounds)


if __name__ == "__main__":
    main()
