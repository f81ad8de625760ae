# SPDX-License-Identifier: BSD-3-Clause
"""Frames for tests: shapes and dtypes as the library's header describes them, and nothing taken from the package."""

import numpy as np

ORDERS = ("YUY2 UYVY ARGB BGRA RGB BGR RGBA ABGR YUV444 I420 UYAVYA YUVA444 A420 Alpha YUY2_A UYVY_A").split()
DTYPES = {
    "U8": np.uint8, "U16": np.uint16, "U10": np.uint16, "U12": np.uint16, "U10Packed": np.uint32, "Half": np.float16,
    "Float": np.float32, "Fixed16": np.int16,
}
# Bits of a word that a type keeps.
KEPT = {"U10": 0xFFC0, "U12": 0xFFF0, "U10Packed": 0x3FFFFFFF}
SAMPLES = {"YUY2": 2, "UYVY": 2, "RGB": 3, "BGR": 3, "YUV444": 3, "UYAVYA": 3, "YUY2_A": 2, "UYVY_A": 2}


def pairs():
    """The pairs of order and type that the header lists."""
    made = [(order, type) for order in ORDERS for type in ("U8", "U16", "U10", "U12", "Half", "Float")
            if order != "Alpha" or type in ("U8", "U16")]
    made += [(order, "Fixed16") for order in ORDERS if order not in ("I420", "A420", "Alpha")]
    return made + [("UYVY", "U10Packed")]


def shapes(order, type, width, height):
    """The shape of each plane."""
    half = (-(-height // 2), -(-width // 2))
    if type == "U10Packed":
        return [(height, -(-width // 6) * 4)]
    if order in ("I420", "A420"):
        return [(height, width), half, half] + [(height, width)] * (order == "A420")
    if order == "Alpha":
        return [(height, width)]
    main = (height, width, SAMPLES.get(order, 4))
    return [main, (height, width)] if order.endswith("_A") else [main]


def noise(rng, shape, dtype):
    """Any bits at all, not-a-numbers among them."""
    size = int(np.prod(shape)) * np.dtype(dtype).itemsize
    return np.frombuffer(rng.bytes(size), dtype).reshape(shape).copy()


def random_planes(rng, order, type, width, height):
    return [noise(rng, shape, DTYPES[type]) for shape in shapes(order, type, width, height)]


def as_frame(planes):
    """As the package takes and gives a frame."""
    return planes[0] if len(planes) == 1 else tuple(planes)


def as_planes(frame):
    return list(frame) if isinstance(frame, (tuple, list)) else [frame]


def words(array):
    """The bits of each element, so that equal means equal."""
    return np.ascontiguousarray(array).view(f"u{array.dtype.itemsize}")


def kept(array, type):
    """What is left of samples once they have been stored."""
    return words(array) & words(array).dtype.type(KEPT[type]) if type in KEPT else words(array)


def same(ones, others):
    return len(ones) == len(others) and all(
        a.dtype == b.dtype and a.shape == b.shape and (words(a) == words(b)).all() for a, b in zip(ones, others))


def with_gaps(rng, array, rows=1, columns=3):
    """A view of the same samples inside a larger array of noise, and that array."""
    height, width, *rest = array.shape
    around = noise(rng, (height + rows + 1, width + columns + 2, *rest), array.dtype)
    view = around[1 : 1 + height, 2 : 2 + width]
    view[...] = array
    return view, around
