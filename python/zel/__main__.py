# SPDX-License-Identifier: MIT
"""Track a MOTChallenge file: lines of frame,id,left,top,width,height,conf in, tracks in the same layout out."""
import argparse
import sys
from typing import Iterator, TextIO

import numpy as np
from numpy.typing import NDArray

import zel

MAX_FRAME = 10_000_000  # as for the command


def shortest(value: np.float32) -> str:
    """The shortest text that reads back to the same number, as `zeltrack track` writes it."""
    plain = np.format_float_positional(value, trim="-")
    scientific = np.format_float_scientific(value, trim="-", exp_digits=2)
    return min(plain, scientific, key=len)


def read(file: str) -> NDArray[np.float32]:
    """The rows of the file. Those with a size below 0, which the command ignores, too, are left out."""
    data = np.loadtxt(file, delimiter=",", usecols=range(7), dtype=np.float32, ndmin=2)
    frames = data[:, 0]
    wrong = np.flatnonzero(~((frames >= 1) & (frames <= MAX_FRAME) & (frames == np.floor(frames))))
    if wrong.size > 0:
        raise ValueError(f"{file}: row {wrong[0] + 1}: expected a frame number from 1 to {MAX_FRAME}, "
                         f"found {frames[wrong[0]]:g}")
    inverted = (data[:, 4:6] < 0).any(axis=1)
    if inverted.any():
        print(f"warning: detections with a size below 0 are ignored: {inverted.sum()}", file=sys.stderr)
    return data[~inverted]


def lines(file: str, tracker: zel.Tracker) -> Iterator[str]:
    data = read(file)
    frames = data[:, 0].astype(int)
    corners = data[:, 2:6].astype(float)
    corners[:, 2:] += corners[:, :2]
    for frame in range(1, frames.max(initial=0) + 1):
        now = np.flatnonzero(frames == frame)
        tracks = tracker.update(corners[now], data[now, 6])
        boxes = tracks.xyxy.astype(float)
        boxes[:, 2:] -= boxes[:, :2]
        for number, box, score in zip(tracks.ids, boxes.astype(np.float32), tracks.scores):
            yield ",".join([f"{frame},{number}", *map(shortest, box), shortest(score), "-1,-1,-1"])


def main(out: TextIO) -> None:
    parser = argparse.ArgumentParser(prog="python3 -m zel", description=__doc__)
    parser.add_argument("detections", help="MOTChallenge file, frames from 1 in any order")
    parser.add_argument("--fps", type=float, help="frames per second, if known")
    arguments = parser.parse_args()
    try:
        with zel.Tracker(max_objects=16384, frame_rate=arguments.fps) as tracker:
            for line in lines(arguments.detections, tracker):
                print(line, file=out)
    except (OSError, ValueError) as error:
        sys.exit(f"{parser.prog}: {error}")


if __name__ == "__main__":
    main(sys.stdout)
