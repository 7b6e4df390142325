#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tracks the arrays that common detectors return: (N, 6) rows of x1, y1, x2, y2, confidence, class.

Two invented objects, one of which the detector misses in the frames 5 and 6, go through the tracker.
"""
import numpy as np
import zel


def detect(frame):
    """Stands for the detector."""
    x = 2 * frame
    walker = [x, 20, x + 10, 50, 0.9, 0]
    car = [200 - x, 60, 240 - x, 80, 0.8, 1]
    return np.array([car] if frame in (5, 6) else [walker, car], np.float32)


def main():
    names = ["walker", "car"]
    with zel.Tracker(coasted=True) as tracker:
        for frame in range(1, 9):
            rows = detect(frame)
            tracks = tracker.update(rows[:, :4], rows[:, 4], rows[:, 5])
            for number, label, box, row in zip(tracks.ids, tracks.classes, tracks.xyxy, tracks.detection):
                place = " ".join(f"{value:.2f}" for value in box)
                seen = f"detection {row}" if row >= 0 else "not seen"
                print(f"frame {frame}: {names[label]} {number} at {place}, {seen}")


if __name__ == "__main__":
    main()
