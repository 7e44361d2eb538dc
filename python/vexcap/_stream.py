"""Frames from the library's frame thread to the reader: the frame callback and a bounded
queue. A full queue drops its oldest frame, since a live camera's newest frame is the one worth
having; the drop is counted."""
import queue
import threading

from . import _contexts, _native
from ._callbacks import report_exception
from .errors import CameraClosedError, FrameTimeoutError
from .frames import Frame


# The library holds back a stream's frames while this many of its records are out (the
# header's VEXCAP_MAX_OUTSTANDING_FRAMES). Records that frames view count, so a reader keeping
# frames gets copies past VIEW_LIMIT, leaving room for the records on their way.
OUTSTANDING_LIMIT = 64
VIEW_LIMIT = OUTSTANDING_LIMIT - 8


def _give_back(address):
    _native.library().vexcap_return_frame(address)


class FrameQueue:
    """Records to view (their addresses) or copied frames, waiting for `get`."""

    def __init__(self, capacity, copy):
        if capacity < 1:
            raise ValueError("the frame queue holds at least one frame")
        self.capacity = capacity
        self.copy = copy
        self.received = 0  # frames the library delivered (written by the frame thread only)
        self.dropped = 0  # frames pushed out of a full queue before anyone read them
        self._items = queue.SimpleQueue()  # in C: the cheapest hand-over between two threads
        self._closed = False
        self._viewed = 0  # records out for viewing: queued, or held by frames
        self._viewed_lock = threading.Lock()

    def put(self, address):
        """On the library's frame thread: takes over the record at `address`."""
        if self._may_view():
            item = address
        else:
            try:
                item = Frame.copying(address)
            finally:
                _give_back(address)
        self._items.put(item)
        self.received += 1
        if self._closed:  # a frame still in flight as the camera closed
            self._drain()
            return
        if self._items.qsize() > self.capacity:
            try:
                oldest = self._items.get_nowait()
            except queue.Empty:  # the reader took it meanwhile
                return
            if oldest is _CLOSED:  # closed meanwhile: the marker stays for the readers
                self._items.put(_CLOSED)
                return
            self._discard(oldest)
            self.dropped += 1

    def get(self, timeout):
        """The oldest waiting frame; waits up to `timeout` seconds (None: no limit)."""
        try:
            item = self._items.get(timeout=timeout)
        except queue.Empty:
            raise FrameTimeoutError(f"no frame arrived within {timeout} s") from None
        if item is _CLOSED:
            self._items.put(_CLOSED)  # for any other reader
            raise CameraClosedError("the camera was closed")
        return item if isinstance(item, Frame) else Frame.viewing(item, self._viewed_back)

    @property
    def viewed(self):
        with self._viewed_lock:
            return self._viewed

    def __len__(self):
        # A frame arriving at a full queue is there a moment before the oldest goes.
        return 0 if self._closed else min(self._items.qsize(), self.capacity)

    def clear(self):
        """Gives back what waits now."""
        self._drain()

    def close(self):
        """Gives back what still waits and wakes the readers; later frames go straight back."""
        self._closed = True
        self._drain()
        self._items.put(_CLOSED)

    def _drain(self):
        closed_seen = False
        while True:
            try:
                item = self._items.get_nowait()
            except queue.Empty:
                break
            if item is _CLOSED:
                closed_seen = True
            else:
                self._discard(item)
        if closed_seen:
            self._items.put(_CLOSED)

    def _discard(self, item):
        if not isinstance(item, Frame):  # a record nobody read
            _give_back(item)
            self._viewed_back()

    def _may_view(self):
        if self.copy:
            return False
        with self._viewed_lock:
            if self._viewed >= VIEW_LIMIT:
                return False
            self._viewed += 1
            return True

    def _viewed_back(self):
        with self._viewed_lock:
            self._viewed -= 1


_CLOSED = object()


def _deliver(address, context):
    """The frame callback. Never raises into the library; false stops a stream nobody reads."""
    queue = _contexts.lookup(context)
    if queue is None:
        _give_back(address)
        return False
    try:
        queue.put(address)  # owns the record from here, whatever happens
    except BaseException:  # nothing may propagate into the library's thread
        report_exception("the frame callback")
    return True


FRAME_CALLBACK = _native.FRAME_CALLBACK(_deliver)
