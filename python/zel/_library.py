# SPDX-License-Identifier: MIT
"""The host kit's shared library: its functions, and its structures as ctypes and numpy know them."""
import ctypes
import os

import numpy as np

__version__ = "1.0.0"

MAX_CLASS = 16777215

DETECTION = np.dtype([("xyxy", np.float32, 4), ("confidence", np.float32), ("class_id", np.intc)])
TRACK = np.dtype([
    ("id", np.intc), ("class_id", np.intc), ("xyxy", np.float32, 4), ("confidence", np.float32),
    ("detection", np.intc), ("hits", np.intc), ("misses", np.intc),
])


class Params(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_size_t),
        ("scale", ctypes.c_double),
        ("frame_rate", ctypes.c_double),
        ("min_confidence", ctypes.c_float),
        ("iou", ctypes.c_float),
        ("euc", ctypes.c_float),
        ("stable", ctypes.c_int),
        ("removal", ctypes.c_int),
        ("steady", ctypes.c_int),
        ("ignore_class", ctypes.c_int),
        ("coasted", ctypes.c_int),
        ("max_objects", ctypes.c_int),
    ]


class Status(ctypes.Structure):
    _fields_ = [
        *((name, ctypes.c_uint64) for name in (
            "frames", "detections", "invalid", "weak", "cut", "unstarted", "lock_waits")),
        *((name, ctypes.c_double) for name in (
            "lock_seconds", "scale", "first_size", "typical_size", "offset_x", "offset_y", "explained", "weak_seen",
            "strong_seen")),
        ("min_confidence", ctypes.c_float),
        *((name, ctypes.c_int) for name in (
            "min_confidence_reason", "scale_reason", "scale_misled", "steady", "steady_reason", "removal",
            "removal_reason")),
    ]


_FUNCTIONS = {
    "zel_host_params_init": (None, ctypes.POINTER(Params), ctypes.c_size_t),
    "zel_host_params_check": (ctypes.c_char_p, ctypes.POINTER(Params)),
    "zel_host_create": (ctypes.c_void_p, ctypes.POINTER(Params)),
    "zel_host_set_params": (ctypes.c_char_p, ctypes.c_void_p, ctypes.POINTER(Params)),
    # the arrays by their addresses: pointer objects would cost more than all the rest of a call
    "zel_host_process": (ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int, ctypes.c_void_p, ctypes.c_int),
    "zel_host_reset": (ctypes.c_int, ctypes.c_void_p, ctypes.c_int),
    "zel_host_get_status": (None, ctypes.c_void_p, ctypes.POINTER(Status), ctypes.c_size_t),
    "zel_host_reason_text": (ctypes.c_char_p, ctypes.c_int),
    "zel_host_release": (None, ctypes.c_void_p),
}


def load() -> ctypes.CDLL:
    name = os.environ.get("ZEL_LIBRARY", "libzelhost.so.1")
    needed = os.path.join(os.path.dirname(name), "libzel.so.1")
    try:
        if os.path.dirname(name) and os.path.exists(needed):
            ctypes.CDLL(needed)  # the system would not look for it beside the other
        library = ctypes.CDLL(name)  # which, unlike PyDLL, lets other threads run during a call
    except OSError as error:
        raise ImportError(f"{error}. Install libzel, or name libzelhost.so.1 in the environment variable "
                          "ZEL_LIBRARY") from None
    for function, (result, *arguments) in _FUNCTIONS.items():
        getattr(library, function).restype = result
        getattr(library, function).argtypes = arguments
    return library
