#!/usr/bin/env python3
"""Prints the benchmark results of scripts/bench.sh as Markdown tables: per benchmark the
median of its repetitions with min..max, in microseconds of the thread's CPU time (the machine
is shared, so wall time mostly measures the neighbours), and the ratios the targets name."""
import json
import statistics
import sys
from collections import defaultdict

IMPLS = ["memcpy", "libyuv", "scalar", "sse2", "avx2", "avx512"]


def load(path):
    with open(path) as f:
        data = json.load(f)
    runs = defaultdict(list)
    for b in data["benchmarks"]:
        if b.get("run_type") != "iteration" or b.get("error_occurred"):
            continue
        name = b["run_name"].removesuffix("/real_time")
        # Microseconds (every benchmark reports in us). A request's round trip spans two
        # threads and their wake-ups: wall time is what a host waits.
        runs[name].append(b["real_time"] if name.startswith("request/") else b["cpu_time"])
    return data["context"], {k: (statistics.median(v), min(v), max(v)) for k, v in runs.items()}


def cell(stat):
    if stat is None:
        return ""
    med, lo, hi = stat
    return f"{med:.0f} ({lo:.0f}..{hi:.0f})"


def kernel_tables(stats):
    groups = defaultdict(dict)  # (kernel, size, cache) -> impl -> stat
    for name, stat in stats.items():
        parts = name.split("/")
        if len(parts) != 4 or parts[0] in ("deliver", "deliver_copy"):
            continue
        kernel, impl, size, cache = parts
        groups[(kernel, size, cache)][impl] = stat
    copies = {(k[1], k[2], k[0]): v.get("memcpy") for k, v in groups.items() if k[0].startswith("copy_")}
    print("| kernel | size | cache | " + " | ".join(IMPLS[1:]) + " | memcpy of the output | best / libyuv |")
    print("|---|---|---|" + "---|" * (len(IMPLS) - 1) + "---|---|")
    order = {"rgb24_to_nv12": 0, "gray8_rotate90": 1, "gray8_rotate270": 2, "gray8_rotate180": 3,
             "gray16_rotate90": 4, "nv12_rotate90": 5}
    sizes = lambda s: int(s.split("x")[0])
    for key in sorted((k for k in groups if k[0] in order),
                      key=lambda k: (order[k[0]], sizes(k[1]), k[2] != "hot")):
        kernel, size, cache = key
        row = groups[key]
        ours = [row[i][0] for i in ("sse2", "avx2", "avx512") if i in row]
        copy_kind = "copy_nv12" if kernel.startswith(("rgb24", "nv12")) else "copy_gray8"
        copy = copies.get((size, cache, copy_kind))
        if kernel.startswith("gray16"):
            copy = None  # a Gray16 frame is two Gray8 copies: no column of its own
        ratio = f"{row['libyuv'][0] / min(ours):.2f}x" if ours and "libyuv" in row else ""
        print(f"| {kernel} | {size} | {cache} | " +
              " | ".join(cell(row.get(i)) for i in IMPLS[1:]) + f" | {cell(copy)} | {ratio} |")


def delivery_table(stats):
    print("| per delivered frame | cache | library work | mandatory copy alone | work beyond the copy |")
    print("|---|---|---|---|---|")
    for name, stat in sorted(stats.items()):
        parts = name.split("/")
        if parts[0] != "deliver":
            continue
        copy = stats.get(f"deliver_copy/{parts[1]}/{parts[2]}")
        beyond = f"{(stat[0] - copy[0]) / copy[0] * 100:+.0f}%" if copy else ""
        print(f"| {parts[1]} | {parts[2]} | {cell(stat)} | {cell(copy)} | {beyond} |")
    if "request/round_trip" in stats:
        print(f"| request round trip through an export (wall time) | | {cell(stats['request/round_trip'])} | | |")


def main():
    context, stats = load(sys.argv[1])
    print(f"CPU: {context.get('num_cpus')} x {context.get('mhz_per_cpu')} MHz, "
          f"load average {context.get('load_avg')}; times in microseconds (median (min..max))\n")
    kernel_tables(stats)
    print()
    delivery_table(stats)


if __name__ == "__main__":
    main()
