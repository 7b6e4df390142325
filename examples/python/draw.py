#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws tracks into a video with OpenCV (Debian: python3-opencv): draw.py VIDEO DETECTIONS OUTPUT.avi

DETECTIONS is a MOTChallenge file of the boxes in VIDEO: lines of frame,id,left,top,width,height,confidence. With - for
VIDEO, the boxes are drawn on black images of 1920 x 1080.
"""
import itertools
import sys

import cv2
import numpy as np
import zel


def frames_of(video):
    """Yields the images and the frame rate they are to be shown at."""
    if video == "-":
        yield from itertools.repeat((np.zeros((1080, 1920, 3), np.uint8), 30.0))
    capture = cv2.VideoCapture(video)
    rate = capture.get(cv2.CAP_PROP_FPS) or 30.0
    while True:
        read, image = capture.read()
        if not read:
            return
        yield image, rate


def colour_of(number):
    """One colour for each identifier, far from that of the next one."""
    hue = np.uint8([[[number * 67 % 180, 200, 255]]])
    return tuple(map(int, cv2.cvtColor(hue, cv2.COLOR_HSV2BGR)[0, 0]))


def draw(image, tracks):
    for number, box in zip(tracks.ids, tracks.xyxy):
        x1, y1, x2, y2 = (int(round(float(value))) for value in box)
        cv2.rectangle(image, (x1, y1), (x2, y2), colour_of(number), 2)
        cv2.putText(image, str(number), (x1, y1 - 6), cv2.FONT_HERSHEY_SIMPLEX, 0.8, colour_of(number), 2)


def main(video, detections, output):
    data = np.loadtxt(detections, delimiter=",", usecols=range(7), ndmin=2)
    last = int(data[:, 0].max(initial=0))
    tracker = writer = None
    for frame, (image, rate) in enumerate(itertools.islice(frames_of(video), last), start=1):
        if tracker is None:
            tracker = zel.Tracker(max_objects=16384, frame_rate=rate)
            size = (image.shape[1], image.shape[0])
            writer = cv2.VideoWriter(output, cv2.VideoWriter_fourcc(*"MJPG"), rate, size)
        rows = data[data[:, 0] == frame]
        image = image.copy()
        draw(image, tracker.update(np.hstack([rows[:, 2:4], rows[:, 2:4] + rows[:, 4:6]]), rows[:, 6]))
        writer.write(image)
    if writer is None or not writer.isOpened():
        sys.exit(f"draw.py: nothing could be read from {video} or written to {output}")
    writer.release()


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
