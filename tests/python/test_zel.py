# SPDX-License-Identifier: MIT
"""The Python package. ZEL_LIBRARY names the host kit's library, ZELTRACK the command, if that is built."""
import copy
import ctypes
import os
import pickle
import re
import subprocess
import threading
from pathlib import Path

import numpy as np
import pytest
import zel
import zel.__main__ as demo
from zel import _library

BOX = [[10, 20, 50, 120]]


def moving(frame, objects=3, seed=0):
    """Boxes that move to the right, side by side."""
    top = 200 * np.arange(objects) + 7 * seed
    left = np.full(objects, 3.0 * frame)
    return np.column_stack([left, top, left + 60, top + 90])


def run(tracker, frames=30, seed=0):
    return [tracker.update(moving(frame, seed=seed)).rows.tobytes() for frame in range(frames)]


# --- the interface of the library ------------------------------------------------------------------------------------

def fields_of_header(structure):
    text = (Path(__file__).parents[2] / "host/host.h").read_text()
    body = re.search(r"typedef struct zel_host_%s_t {(.*?)\n}" % structure.lower(), text, re.S).group(1)
    body = re.sub(r"/\*.*?\*/", "", body, flags=re.S)
    return [tuple(line.split()) for line in body.split(";") if line.strip()]


@pytest.mark.parametrize("structure", ["Params", "Status"])
def test_structures_are_those_of_the_header(structure):
    types = {"size_t": ctypes.c_size_t, "uint64_t": ctypes.c_uint64, "double": ctypes.c_double,
             "float": ctypes.c_float, "int": ctypes.c_int}
    expected = [(name, types[kind]) for kind, name in fields_of_header(structure)]
    assert getattr(_library, structure)._fields_ == expected


@pytest.mark.parametrize("array", ["DETECTION", "TRACK"])
def test_arrays_are_those_of_the_header(array):
    fields = [(name, kind.base) for name, (kind, _) in getattr(_library, array).fields.items()]
    found = [("float" if kind == np.float32 else "int", part) for name, kind in fields
             for part in (["x1", "y1", "x2", "y2"] if name == "xyxy" else [name])]
    assert found == fields_of_header(array)


def test_the_version_is_that_of_the_library():
    zel._lib.zel_version.restype = ctypes.c_char_p
    assert zel._lib.zel_version().decode() == zel.__version__


# --- what goes in and what comes out ---------------------------------------------------------------------------------

def test_tracks_are_views_of_what_was_found():
    with zel.Tracker(stable=1) as tracker:
        tracks = tracker.update(np.vstack([moving(0), [[900, 0, 940, 80]]]), [0.9, 0.8, 0.7, 0.6], [0, 2, 0, 7])
    assert len(tracks) == 4
    assert tracks.ids.tolist() == [1, 2, 3, 4]
    assert tracks.classes.tolist() == [0, 2, 0, 7]
    assert tracks.detection.tolist() == [0, 1, 2, 3]
    assert np.allclose(tracks.scores, [0.9, 0.8, 0.7, 0.6])
    assert np.allclose(tracks.xyxy[3], [900, 0, 940, 80])
    assert tracks.hits.tolist() == [1] * 4 and tracks.misses.tolist() == [0] * 4
    assert np.shares_memory(tracks.xyxy, tracks.rows)


@pytest.mark.parametrize("empty", [[], np.empty((0, 4)), np.empty((0, 4), np.float32)])
def test_a_frame_without_boxes_lets_tracks_coast(empty):
    with zel.Tracker(stable=1, coasted=True) as tracker:
        tracker.update(BOX)
        tracks = tracker.update(empty)
        assert (tracks.ids.tolist(), tracks.detection.tolist(), tracks.misses.tolist()) == ([1], [-1], [1])


@pytest.mark.parametrize("kind", [np.float32, np.float64, np.int32, np.uint8, list])
def test_boxes_of_any_kind_of_number(kind):
    boxes = BOX if kind is list else np.asfortranarray(BOX, kind)
    with zel.Tracker(stable=1) as tracker:
        assert np.allclose(tracker.update(boxes).xyxy, BOX)


WRONG = {
    "three columns": (([[1, 2, 3]],), r"xyxy: expected an array of shape \(N, 4\), found \(1, 3\)"),
    "one box, not in a list": (([1, 2, 3, 4],), r"xyxy: .*found \(4,\)"),
    "rows of six and empty": ((np.empty((0, 6)),), r"xyxy: .*found \(0, 6\)"),
    "NaN": (([[1, 2, np.nan, 4]],), "expected finite"),
    "infinite": (([[1, 2, np.inf, 4]],), "expected finite"),
    "beyond float": (([[0, 0, 1e39, 1]],), "float32"),
    "width and height instead of corners": (([[100, 200, 40, 80]],), "xyxy: expected x1 <= x2"),
    "score NaN": ((BOX, [np.nan]), "expected finite"),
    "a score too many": ((BOX, [1, 1]), r"scores: expected an array of shape \(1,\)"),
    "scores as a column": ((BOX, [[1]]), r"scores: .*found \(1, 1\)"),
    "half a class": ((BOX, None, [0.5]), "classes: expected whole numbers"),
    "a name as a class": ((BOX, None, ["a"]), "classes: expected whole numbers"),
    "class NaN": ((BOX, None, [np.nan]), "classes: expected whole numbers"),
    "class beyond the range": ((BOX, None, [2**24]), "classes: expected whole numbers"),
    "the least integer as a class": ((BOX, None, [-2**63]), "classes: expected whole numbers"),
    "too many": ((BOX * 5,), "expected at most max_objects = 4 boxes, found 5"),
}


@pytest.mark.filterwarnings("ignore:overflow")
@pytest.mark.parametrize("arguments, message", WRONG.values(), ids=WRONG.keys())
def test_wrong_input_is_refused_and_leaves_the_tracker(arguments, message):
    with zel.Tracker(stable=1, max_objects=4) as tracker:
        tracker.update(BOX)
        with pytest.raises(ValueError, match=message):
            tracker.update(*arguments)
        assert tracker.status()["frames"] == 1
        assert tracker.update(BOX).ids.tolist() == [1]


# --- parameters and life ---------------------------------------------------------------------------------------------

@pytest.mark.parametrize("wrong", [{"iou": 2}, {"stable": 0}, {"removal": -7}, {"scale": 0}, {"max_objects": 2**32 + 1},
                                   {"min_confidence": np.nan}, {"frame_rate": -1}])
def test_wrong_parameters_are_refused_by_name(wrong):
    with pytest.raises(ValueError, match=next(iter(wrong))):
        zel.Tracker(**wrong)


def test_parameters_arrive_and_change():
    with zel.Tracker(min_confidence=0.5, scale=0.25, frame_rate=30) as tracker:
        tracker.update(BOX * 2, [0.4, 0.6])
        status = tracker.status()
        assert (status["weak"], status["scale"], status["removal"]) == (1, 0.25, 15)
        assert status["removal_reason"] == "half a second at the frame rate"
        tracker.set(removal=3, frame_rate=None)
        assert tracker.status()["removal"] == 3
        tracker.set(removal=None)
        assert tracker.status()["removal_reason"] == "the frame rate is not known"
        with pytest.raises(ValueError, match="max_objects"):
            tracker.set(max_objects=7, removal=5)
        assert tracker.status()["removal"] == 10
        with pytest.raises(TypeError, match="unknown argument size"):
            tracker.set(size=1)


@pytest.mark.parametrize("keep, first", [(False, 1), (True, 2)])
def test_reset_begins_a_new_stream(keep, first):
    with zel.Tracker(stable=1) as tracker:
        tracker.update(BOX)
        tracker.reset(keep_identifiers=keep)
        assert tracker.update(BOX).ids.tolist() == [first]


def test_a_tracker_cannot_be_duplicated_nor_used_when_closed():
    tracker = zel.Tracker()
    for duplicate in (pickle.dumps, copy.copy, copy.deepcopy):
        with pytest.raises(TypeError, match="Make one in each process"):
            duplicate(tracker)
    tracker.close()
    tracker.close()
    for use in (lambda: tracker.update(BOX), tracker.status, tracker.reset, tracker.set):
        with pytest.raises(ValueError, match="closed"):
            use()


def in_threads(target, arguments):
    threads = [threading.Thread(target=target, args=each) for each in arguments]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()


def test_threads_with_trackers_of_their_own_and_with_one():
    found = {}

    def camera(name, seed):
        with zel.Tracker() as tracker:
            found[name, seed] = run(tracker, 300, seed)

    for seed in range(4):
        camera("alone", seed)
    in_threads(camera, [("thread", seed) for seed in range(4)])
    assert all(found["alone", seed] == found["thread", seed] for seed in range(4))
    with zel.Tracker() as shared:
        in_threads(run, [(shared, 200)] * 4)
        assert shared.status()["frames"] == 800


# --- against the command ---------------------------------------------------------------------------------------------

@pytest.mark.parametrize("value", ["0.5", "1e+05", "120000", "1e-04", "0.00012", "1.25e-07", "-40.336", "16777216",
                                   "1.5e+20", "0"])
def test_numbers_are_written_as_the_command_writes_them(value):
    assert demo.shortest(np.float32(value)) == value


def test_a_file_is_tracked_as_by_the_command(tmp_path):
    command = os.environ.get("ZELTRACK")
    if not command:
        pytest.skip("the command is not built")
    file = tmp_path / "det.txt"
    synthetic = subprocess.check_output([command, "synth", "--frames", "200", "--seed", "5"])
    file.write_bytes(b"1,-1,10,10,-5,5,1\n" + synthetic)
    expected = subprocess.check_output([command, "track", "-q", "--fps", "25", str(file)], text=True)
    with zel.Tracker(max_objects=1000, frame_rate=25) as tracker:
        found = list(demo.lines(str(file), tracker))
    assert len(found) > 1000 and found == expected.splitlines()


@pytest.mark.parametrize("frame", ["0", "1.5", "nan", "10000001"])
def test_a_file_with_a_wrong_frame_is_refused(tmp_path, frame):
    file = tmp_path / "det.txt"
    file.write_text(f"1,-1,10,10,5,5,1\n{frame},-1,10,10,5,5,1\n")
    with pytest.raises(ValueError, match="row 2: expected a frame number"):
        demo.read(str(file))
