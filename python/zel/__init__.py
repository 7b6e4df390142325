# SPDX-License-Identifier: MIT
"""Multi-object tracking: boxes in pixels in, numbered tracks in pixels out, as numpy arrays.

    with zel.Tracker() as tracker:                  # one for each camera or video
        for boxes, scores, classes in frames:       # every frame, also one without boxes
            tracks = tracker.update(boxes, scores, classes)
            for identifier, box in zip(tracks.ids, tracks.xyxy):
                ...
"""
import ctypes
import threading
from typing import Any, Dict, Optional

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._library import DETECTION, MAX_CLASS, TRACK, Params, Status, load
from ._library import __version__ as __version__

__all__ = ["Tracker", "Tracks"]

_lib = load()


class Tracks:
    """The tracks of one frame, oldest first. The arrays are views of `rows`, one structured array."""

    __slots__ = ("rows",)

    def __init__(self, rows: NDArray[np.void]) -> None:
        self.rows = rows

    def __len__(self) -> int:
        return len(self.rows)

    def __repr__(self) -> str:
        return f"<Tracks {self.ids.tolist()}>"

    @property
    def ids(self) -> NDArray[np.intc]:
        """(N,) identifiers, from 1."""
        return self.rows["id"]

    @property
    def xyxy(self) -> NDArray[np.float32]:
        """(N, 4) boxes in pixels, smoothed: x1, y1, x2, y2."""
        return self.rows["xyxy"]

    @property
    def classes(self) -> NDArray[np.intc]:
        """(N,) classes of the tracks' latest detections."""
        return self.rows["class_id"]

    @property
    def scores(self) -> NDArray[np.float32]:
        """(N,) confidences of the tracks' latest detections."""
        return self.rows["confidence"]

    @property
    def detection(self) -> NDArray[np.intc]:
        """(N,) indices into the boxes of this frame; -1 where a track coasts."""
        return self.rows["detection"]

    @property
    def hits(self) -> NDArray[np.intc]:
        """(N,) frames in which the track was detected."""
        return self.rows["hits"]

    @property
    def misses(self) -> NDArray[np.intc]:
        """(N,) frames in a row without a detection: 0 unless it coasts."""
        return self.rows["misses"]


class Tracker:
    """The tracker of one stream of frames.

    Without arguments all is automatic. What is given holds instead:

    max_objects     boxes per frame and tracks alive that there is room for (256)
    iou             overlap with the predicted box that a match must exceed, 0 to 1 (0.3)
    stable          matched frames at which a track is reported (2)
    removal         frames in a row that a track may be missed
    scale           units of the tracker per pixel: a match is at most 10 units away
    min_confidence  boxes of a lower score are dropped
    steady          True, False: take the camera's own motion out before tracking, or never
    frame_rate      frames per second, from which removal becomes half a second
    euc             squared distance in units up to which boxes match without overlap, 0 to 1 (1)
    ignore_class    True: boxes match tracks of all classes
    coasted         True: report a track without a detection, too, for up to two frames

    A value out of its range raises ValueError. A tracker may be used by any thread, one frame at a time; several
    trackers may be used by several threads at once.
    """

    def __init__(self, *, max_objects: Optional[int] = None, iou: Optional[float] = None,
                 stable: Optional[int] = None, removal: Optional[int] = None, scale: Optional[float] = None,
                 min_confidence: Optional[float] = None, steady: Optional[bool] = None,
                 frame_rate: Optional[float] = None, euc: Optional[float] = None,
                 ignore_class: Optional[bool] = None, coasted: Optional[bool] = None) -> None:
        given = {name: value for name, value in locals().items() if name != "self"}
        self._handle: Optional[int] = None
        self._lock = threading.Lock()
        self._params = _changed(_defaults(), given)
        _refuse(_lib.zel_host_params_check(self._params), given)
        self._handle = _lib.zel_host_create(self._params)
        if not self._handle:
            raise MemoryError("no memory for a tracker")
        self._input = np.zeros(self._params.max_objects, DETECTION)
        self._address = self._input.ctypes.data
        self._numbers = self._input.view(np.float32).reshape(-1, 6)[:, :5]  # all but the classes

    def update(self, xyxy: ArrayLike, scores: Optional[ArrayLike] = None,
               classes: Optional[ArrayLike] = None) -> Tracks:
        """Track one frame; a frame without boxes must be given, too.

        xyxy     (N, 4) corners x1, y1, x2, y2 in pixels, with x1 <= x2 and y1 <= y2
        scores   (N,) confidences in any unit; all alike if left out
        classes  (N,) whole numbers, as detectors count them from 0; all alike if left out

        What is not like that raises ValueError and leaves the tracker as it was; so do more than max_objects boxes.
        """
        with self._lock:
            handle = self._open()
            count = self._take_in(xyxy, scores, classes)
            capacity = self._params.max_objects if self._params.coasted else count
            rows = np.empty(capacity, TRACK)
            written = _lib.zel_host_process(handle, self._address, count, rows.ctypes.data, capacity)
        return Tracks(rows[:written])

    def set(self, **changes: Any) -> None:
        """Change arguments of the constructor between two frames; None makes one automatic or default again.

        All but max_objects can be changed, scale only before the first box. A refusal leaves all as it was.
        """
        with self._lock:
            params = _changed(self._params, changes)
            _refuse(_lib.zel_host_set_params(self._open(), params), changes)
            self._params = params

    def reset(self, keep_identifiers: bool = False) -> None:
        """Begin a new stream: all tracks end, the automatic choices start again."""
        with self._lock:
            if _lib.zel_host_reset(self._open(), keep_identifiers) != 0:
                raise MemoryError("no memory for a tracker")

    def status(self) -> Dict[str, Any]:
        """What was done so far, and what the automatic choices are at present, each with its reason in words."""
        status = Status()
        with self._lock:
            _lib.zel_host_get_status(self._open(), status, ctypes.sizeof(Status))
        found = {name: getattr(status, name) for name, _ in Status._fields_}
        for name in found:
            if name.endswith("_reason"):
                found[name] = _lib.zel_host_reason_text(found[name]).decode()
        return found

    def close(self) -> None:
        """Free the tracker. Closing it again does nothing."""
        with self._lock:
            handle, self._handle = self._handle, None
            _lib.zel_host_release(handle)

    def __enter__(self) -> "Tracker":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_handle", None):
            self.close()

    def __reduce__(self) -> Any:
        raise TypeError("a Tracker cannot be pickled or copied: its tracks live in the library. Make one in each process")

    def _open(self) -> int:
        if self._handle is None:
            raise ValueError("the tracker is closed")
        return self._handle

    def _take_in(self, xyxy: ArrayLike, scores: Optional[ArrayLike], classes: Optional[ArrayLike]) -> int:
        boxes = np.asarray(xyxy)
        if boxes.ndim != 2 and boxes.size == 0:
            boxes = boxes.reshape(0, 4)
        if boxes.ndim != 2 or boxes.shape[1] != 4:
            raise ValueError(f"xyxy: expected an array of shape (N, 4), found {boxes.shape}")
        count = len(boxes)
        if count > len(self._input):
            raise ValueError(f"xyxy: expected at most max_objects = {len(self._input)} boxes, found {count}")
        rows, numbers = self._input[:count], self._numbers[:count]
        rows["xyxy"] = boxes
        rows["confidence"] = 1 if scores is None else _column(scores, count, "scores")
        rows["class_id"] = 0 if classes is None else _whole(_column(classes, count, "classes"))
        if not np.isfinite(numbers).all():
            raise ValueError("xyxy, scores: expected finite numbers in the range of float32")
        if not (numbers[:, :2] <= numbers[:, 2:4]).all():
            raise ValueError("xyxy: expected x1 <= x2 and y1 <= y2 in every row")
        return count


def _defaults() -> Params:
    params = Params()
    _lib.zel_host_params_init(params, ctypes.sizeof(Params))
    return params


def _changed(params: Params, given: Dict[str, Any]) -> Params:
    changed, defaults = Params.from_buffer_copy(params), _defaults()
    for name, value in given.items():
        if name == "size" or not hasattr(Params, name):
            raise TypeError(f"unknown argument {name}")
        setattr(changed, name, getattr(defaults, name) if value is None else value)
        if isinstance(value, int) and getattr(changed, name) != value:  # ctypes cuts integers without a word
            raise ValueError(f"{name}: {value} is out of its range")
    return changed


def _refuse(field: Optional[bytes], given: Dict[str, Any]) -> None:
    if field:
        name = field.decode()
        raise ValueError(f"{name}: {given.get(name)} is out of its range or cannot be changed now")


def _column(values: ArrayLike, count: int, name: str) -> NDArray[Any]:
    column = np.asarray(values)
    if column.shape != (count,):
        raise ValueError(f"{name}: expected an array of shape ({count},), one for each box, found {column.shape}")
    return column


def _whole(classes: NDArray[Any]) -> NDArray[Any]:
    kind = classes.dtype.kind
    whole = kind in "iu" or (kind == "f" and (classes == np.floor(classes)).all())
    if not whole or not ((classes >= -MAX_CLASS) & (classes <= MAX_CLASS)).all():
        raise ValueError(f"classes: expected whole numbers from -{MAX_CLASS} to {MAX_CLASS}")
    return classes
