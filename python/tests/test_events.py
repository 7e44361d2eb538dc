"""Device events and device watches: callbacks on the library's threads, callbacks that raise,
and a camera closed from inside its own callback."""
import logging
import threading
import time

from conftest import CAMERA_ID

import vexcap


def wait_until(condition, limit=10.0):
    deadline = time.monotonic() + limit
    while not condition():
        assert time.monotonic() < deadline, "timed out"
        time.sleep(0.02)


def test_rgb_stopped_fires_once_the_colour_stream_is_free(colour):
    fired = threading.Event()
    threads = []

    def stopped():
        threads.append(threading.get_ident())
        fired.set()

    colour.on_rgb_stopped(stopped)
    assert fired.wait(10)
    assert threads == [threads[0]] and threads[0] != threading.get_ident()


def test_a_raising_callback_is_logged_and_the_library_goes_on(colour, caplog):
    caplog.set_level(logging.ERROR, logger="vexcap")

    def broken():
        raise RuntimeError("callback bug")

    colour.on_rgb_stopped(broken)
    wait_until(lambda: any("rgb_stopped" in record.getMessage() for record in caplog.records))
    record = next(r for r in caplog.records if "rgb_stopped" in r.getMessage())
    assert record.name == "vexcap" and record.exc_info[0] is RuntimeError
    # The library's threads survived: another registration fires, frames still flow.
    fired = threading.Event()
    colour.on_rgb_stopped(fired.set)
    assert fired.wait(10)
    assert colour.read().pixel_format == vexcap.PixelFormat.NV12


def test_a_camera_closed_from_its_own_callback_closes_after_it():
    cam = vexcap.open(CAMERA_ID, reader="colour")
    cam.start()
    closed_inside = threading.Event()

    def stopped():
        cam.close()  # answers at once: the close runs once this callback has returned
        closed_inside.set()

    cam.on_rgb_stopped(stopped)
    assert closed_inside.wait(10)
    assert cam.closed
    # The slot is free once the close has run.
    wait_until(lambda: _opens(CAMERA_ID, "colour"))


def _opens(camera_id, reader):
    try:
        vexcap.open(camera_id, reader=reader).close()
        return True
    except vexcap.InvalidStateError:
        return False


def test_the_other_events_register_replace_and_unregister(infrared):
    heard = []
    for register in (infrared.on_exclusive_control, infrared.on_rgb_status, infrared.on_unsupported_format):
        register(lambda *args: heard.append(args))
        register(lambda *args: heard.append(("second",) + args))  # replaces the callable
        register(None)
        register(None)  # unregistering what is not registered is harmless
    # None of them happens on an idle virtual camera; frames still flow with them registered.
    infrared.on_rgb_status(heard.append)
    assert infrared.read().pixel_format == vexcap.PixelFormat.GRAY8
    assert heard == []


def test_a_device_watch_reports_the_present_camera(caplog):
    caplog.set_level(logging.ERROR, logger="vexcap")
    added = []
    arrived = threading.Event()

    def broken(camera_id, name):
        raise ValueError("watch bug")

    def record(camera_id, name):
        added.append((camera_id, name, threading.get_ident()))
        arrived.set()

    with vexcap.watch(added=broken):
        wait_until(lambda: caplog.records)
    assert caplog.records[0].exc_info[0] is ValueError
    with vexcap.watch(added=record) as watch:
        assert arrived.wait(5)
    assert "closed" in repr(watch)
    assert added == [(CAMERA_ID, "Virtual Face Camera", added[0][2])]
    assert added[0][2] != threading.get_ident()
