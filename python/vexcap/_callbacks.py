"""Running the host's Python callbacks on the library's threads. An exception a callback raises
is logged (logger "vexcap"), never passed back into C: the library's thread goes on."""
import ctypes
import logging
import threading

logger = logging.getLogger("vexcap")

_inside = threading.local()


def report_exception(where):
    """Logs the exception being handled, with its traceback, as raised in `where`."""
    logger.error("exception in %s (ignored: it cannot reach the library's thread)", where, exc_info=True)


def run_callback(callback, args, where):
    """Calls `callback(*args)` on a library thread; logs whatever it raises."""
    _inside.depth = getattr(_inside, "depth", 0) + 1
    try:
        callback(*args)
    except BaseException:  # nothing may propagate into the library's thread
        report_exception(where)
    finally:
        _inside.depth -= 1


def inside_callback():
    """True on a library thread while it runs one of the host's callbacks."""
    return getattr(_inside, "depth", 0) > 0


# ctypes gives a library thread a fresh Python thread state for every call into Python and
# destroys it afterwards; for a callback that runs for every frame that costs about as much
# (tens of microseconds, an mmap and a munmap each time) as the rest of the frame's way into
# Python.
_kept = threading.local()  # lives in the thread state, so it is set exactly while that is kept
_gil_state_ensure = getattr(getattr(ctypes, "pythonapi", None), "PyGILState_Ensure", None)


def keep_thread_state():
    """Lets the library thread running this callback keep its thread state from now on: one
    unmatched PyGILState_Ensure. One state (about 17 KB) per library thread that delivered
    frames stays until the interpreter ends."""
    if _gil_state_ensure is not None and not getattr(_kept, "state", False):
        _gil_state_ensure()
        _kept.state = True
