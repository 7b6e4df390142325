#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""libzel from Python, in one file and without a build step: copy it and `import zel`.

    tracker = zel.Tracker(capacity=64)
    for detections in frames:                 # rows of class, x1, y1, x2, y2, score; a class is not 0
        for row in tracker.process(detections):
            row.id, row.box, row.index        # index leads to the row of detections, None if there was none

Rows may be lists, tuples or those of a NumPy array. libzel.so.1 is looked for where the system has its libraries and
in LD_LIBRARY_PATH; ZEL_LIBRARY names another file.
"""
import ctypes
import os
from typing import NamedTuple, Optional

_c_float, _c_int, _c_void_p = ctypes.c_float, ctypes.c_int, ctypes.c_void_p
_lib = ctypes.CDLL(os.environ.get("ZEL_LIBRARY", "libzel.so.1"))
_lib.zel_tracker_create.restype = _c_void_p
_lib.zel_tracker_create.argtypes = [_c_int, _c_int, _c_int, _c_float, _c_float, _c_int, _c_int, _c_int]
_lib.zel_tracker_process.restype = None
_lib.zel_tracker_process.argtypes = [_c_void_p, _c_void_p, _c_void_p]
_lib.zel_tracker_release.restype = None
_lib.zel_tracker_release.argtypes = [_c_void_p]


class Row(NamedTuple):
    id: int
    cls: int
    box: tuple  # x1, y1, x2, y2
    score: float
    index: Optional[int]


class Tracker:
    """The tracker of one sequence. scale makes the tracker's units of the rows' ones: an object may step less than
    10 / scale between two frames."""

    def __init__(self, capacity=256, scale=1.0, euc=1.0, iou=0.3, stable=3, removal=10, ignore_class=False):
        self._handle = None
        self._handle = _lib.zel_tracker_create(0, 0, capacity, euc, iou, stable, removal, ignore_class)
        if not self._handle:
            raise MemoryError("zel_tracker_create")
        self._capacity = capacity
        self._scale = scale
        self._input = ((_c_float * 6) * capacity)()
        self._output = ((_c_float * 8) * capacity)()

    def __del__(self):
        if self._handle:
            _lib.zel_tracker_release(self._handle)

    def process(self, detections):
        """Track one frame, which may be empty, and return its rows. Calls must not overlap, whatever the trackers."""
        count = 0
        for cls, x1, y1, x2, y2, score in detections[: self._capacity]:
            if cls == 0:
                raise ValueError("class 0 would end the list: add 1 to the classes of a detector that counts from 0")
            s = self._scale
            self._input[count][:] = [cls, x1 * s, y1 * s, x2 * s, y2 * s, score]
            count += 1
        if count < self._capacity:
            self._input[count][0] = 0
        _lib.zel_tracker_process(self._handle, self._input, self._output)
        return list(self._rows())

    def _rows(self):
        for row in self._output:
            if row[0] < 0:
                return
            box = tuple(value / self._scale for value in row[2:6])
            yield Row(int(row[0]), int(row[1]), box, row[6], int(row[7]) if row[7] >= 0 else None)


def main():
    """The scene of the host in C."""
    tracker = Tracker(capacity=16, removal=30)
    for frame in range(1, 9):
        x = 2 * frame
        walker = (1, x, 20, x + 10, 50, 0.9)
        car = (2, 200 - x, 60, 240 - x, 80, 0.8)
        for row in tracker.process([car] if frame in (5, 6) else [walker, car]):
            place = " ".join(f"{value:.2f}" for value in row.box)
            seen = "not seen" if row.index is None else f"detection {row.index}, score {row.score:.2f}"
            print(f"frame {frame}: object {row.id} of class {row.cls} at {place}, {seen}")


if __name__ == "__main__":
    main()
