"""python -m vexcap list|capture|info: a quick look at the cameras, as vexcap-capture gives it."""
import argparse
import csv
import os
import sys
import time
from pathlib import Path

import numpy as np

import vexcap

try:
    from .png import write_png
except ImportError:  # a Python without zlib: frames are saved as .npy instead
    write_png = None

_GROUP_TYPES = {"usb": "USB", "software": "software device (SWD)", "other": "other (neither USB nor SWD)"}
_EXIT_FAILED = 1
# The columns of vexcap-capture's frames.csv, the last naming the image file.
_COLUMNS = ["index", "timestamp_us", "width", "height", "stride", "pixel_format", "exposure_100ns",
            "iso_speed", "led_power", "illumination", "file"]


def _describe(number, camera, vid=None, pid=None):
    print(f"[{number}] {camera.name}")
    print(f"    id          {camera.id}")
    print(f"    sources     {', '.join(camera.sources) or 'none'}")
    if camera.vid:
        group = _GROUP_TYPES.get(camera.group_type, "none")
        print(f"    group type  {group} ({camera.vid}, {camera.pid})")
    print(f"    locations   {', '.join(camera.locations) or 'none reported'}")
    if vid or pid:
        used = vexcap.vid_pid_used(camera.id, vid or "", pid or "")
        verdict = "in use by this camera" if used else "not used by this camera"
        print(f"    {vid or ''}/{pid or ''}  {verdict}")


def run_list(options):
    cameras = vexcap.cameras()
    print(f"{len(cameras)} camera{'' if len(cameras) == 1 else 's'}")
    for number, camera in enumerate(cameras, start=1):
        _describe(number, camera, options.vid, options.pid)
    group = _GROUP_TYPES.get(vexcap.source_group_type(), "none")
    print(f"system: source group type {group}; targeted location {vexcap.targeted_location() or 'none'}")
    if options.watch > 0:
        print(f"watching for {options.watch:g} s (Ctrl-C ends)...", flush=True)

        def report(what):
            def show(camera_id, name=""):
                print(f"{what} {camera_id}{'  ' + name if name else ''}", flush=True)

            return show

        present = len(cameras)

        def added(camera_id, name):
            nonlocal present
            if present:  # the cameras listed above are reported again on registration
                present -= 1
            else:
                report("added  ")(camera_id, name)

        with vexcap.watch(added=added, removed=report("removed"), updated=report("updated")):
            time.sleep(options.watch)
    return 0


def _open(options):
    if options.log:
        vexcap.log(True)
    cam = vexcap.open(options.camera, reader=options.reader, shared=options.stream == "shared")
    if options.format is not None:
        cam.set_format(options.format)
    return cam


def run_info(options):
    with _open(options) as cam:
        print(cam.name or cam.id)
        print(f"  {'id':<28} {cam.id}")
        print(f"  {'reader':<28} {cam.reader}")
        print("controls")
        _print_value("exposure", lambda: f"{cam.exposure} (100 ns units)")
        _print_value("ISO speed", lambda: cam.iso_speed)
        _print_value("LED power", lambda: cam.led_power)
        print("device properties")
        _print_value("17 RGB status", lambda: cam.get_property("rgb_status"))
        _print_value("21 video control mode", lambda: cam.get_property("video_control_mode"))
        _print_value("22 high-res sensor type", lambda: _sensor_type(cam))
    return 0


def _sensor_type(cam):
    code = cam.get_property("hires_sensor_type")
    names = vexcap.properties.HIRES_FORMATS
    return f"{code}: {names[code]}" if code in names else code


def _print_value(name, read):
    try:
        value = read()
    except vexcap.Error as error:
        value = f"not available: {error}"
    print(f"  {name:<28} {value}")


def _frame_file(folder, index, frame):
    image = frame.to_rgb() if frame.pixel_format == vexcap.PixelFormat.NV12 else frame.image
    if write_png is not None:
        name = f"frame-{index:06d}.png"
        write_png(folder / name, image)
    else:
        name = f"frame-{index:06d}.npy"
        np.save(folder / name, image)
    return name


def run_capture(options):
    folder = Path(options.out)
    folder.mkdir(parents=True, exist_ok=True)
    with _open(options) as cam:
        source = f"{cam.name or cam.id} ({cam.reader} reader, {options.stream} stream)"
        print(f"capturing from {source} into {folder}")
        files = 0
        first = last = None
        partial = folder / "frames.csv.part"
        with open(partial, "w", newline="") as table:
            rows = csv.writer(table)
            rows.writerow(_COLUMNS)
            for index, frame in enumerate(cam.frames(count=options.frames, timeout=options.frame_timeout)):
                first = first if first is not None else frame.timestamp
                last = frame.timestamp
                name = ""
                if options.every and index % options.every == 0:
                    name = _frame_file(folder, index, frame)
                    files += 1
                led_power = 255 if frame.led_power is None else frame.led_power
                rows.writerow([index, frame.timestamp, frame.width, frame.height, frame.stride,
                               frame.pixel_format.name, frame.exposure or 0, frame.iso_speed or 0,
                               led_power, int(frame.illumination), name])
        os.replace(partial, folder / "frames.csv")
        span = (last - first) / 1e6 if first is not None else 0.0
        rate = (options.frames - 1) / span if span > 0 else 0.0
        print(f"summary: {options.frames} frames in {span:.2f} s, {rate:.2f} fps, {cam.dropped} dropped")
        images = f"{files} image file{'' if files == 1 else 's'}"
        print(f"wrote {images} and frames.csv ({options.frames} rows) to {folder}")
    return 0


def parser():
    top = argparse.ArgumentParser(prog="python -m vexcap", description=__doc__)
    commands = top.add_subparsers(dest="command", required=True)

    listing = commands.add_parser("list", help="the cameras present: id, name, sources, group type, places")
    listing.add_argument("--vid", help="also tell whether a camera has a source whose id holds this text ...")
    listing.add_argument("--pid", help="... and this one, e.g. --vid VID_F00D --pid PID_CAFE")
    listing.add_argument("--watch", type=float, default=0, metavar="S",
                         help="then report arrivals and removals for S seconds")

    for name, text in (("capture", "stream frames into image files and frames.csv"),
                       ("info", "the controls and device properties of one camera")):
        command = commands.add_parser(name, help=text)
        command.add_argument("--camera", metavar="ID",
                             help="the camera's id, as `list` prints it (default: the first)")
        command.add_argument("--reader", default="infrared", choices=["infrared", "colour", "color", "depth"])
        command.add_argument("--stream", default="shared", choices=["shared", "exclusive"],
                             help="which of the library's two clients streams")
        command.add_argument("--format", type=int, metavar="CODE", help="choose the format by its code")
        command.add_argument("--log", action="store_true", help="switch the library's diagnostic log on")
        if name == "capture":
            command.add_argument("--frames", type=int, default=30, metavar="N")
            command.add_argument("--every", type=int, default=10, metavar="N",
                                 help="write every Nth frame as an image (0: none)")
            command.add_argument("--out", default="vexcap-capture-out", metavar="DIR")
            command.add_argument("--frame-timeout", type=float, default=5.0, metavar="S")
    return top


def main(argv=None):
    options = parser().parse_args(argv)
    run = {"list": run_list, "capture": run_capture, "info": run_info}[options.command]
    try:
        return run(options)
    except vexcap.Error as error:
        print(f"vexcap: {error}", file=sys.stderr)
        return _EXIT_FAILED
    except KeyboardInterrupt:
        return 130
