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

