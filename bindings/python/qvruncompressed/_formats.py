# SPDX-License-Identifier: BSD-3-Clause
"""Orders and types by name, and the one table that says which arrays hold a frame of each pair."""

import reprlib
from enum import IntEnum
from typing import NamedTuple

import numpy as np

from ._errors import ArgumentError


class Order(IntEnum):
    """Which components a pixel has, in which memory order, in how many planes.

    Wherever an order is asked for, a member, its number or one of its names does; names are taken in any case and
    with '+' for '_': Order.UYVY, 2, "UYVY", "cbycry". Names that `qvr formats` lists beside them imply a type as well:
    "v210", "Y216", "RGB24", "BGRA64", "GRAY8".
    """

    YUY2 = 1
    YUYV = 1
    YCbYCr = 1
    UYVY = 2
    CbYCrY = 2
    ARGB = 3
    BGRA = 4
    RGB = 5
    BGR = 6
    RGBA = 7
    ABGR = 8
    YUV444 = 9
    YCbCr444 = 9
    I420 = 10
    YUV420 = 10
    Planar420 = 10
    UYAVYA = 11
    CbYACrYA = 11
    YUVA444 = 12
    YCbCrA444 = 12
    A420 = 13
    YUVA420 = 13
    Planar420Alpha = 13
    Alpha = 14
    A = 14
    Matte = 14
    YUY2_A = 15
    YUYV_A = 15
    YCbYCrPlanarAlpha = 15
    UYVY_A = 16
    CbYCrYPlanarAlpha = 16


class Type(IntEnum):
    """How a sample is stored in memory.

    A member, its number or one of its names does; names are taken in any case. So does a dtype, such as np.float32,
    where the order has one type of it.
    """

    U8 = 1
    uint8 = 1
    U16 = 2
    uint16 = 2
    U10 = 3
    U12 = 4
    U10Packed = 5
    packed10 = 5
    Half = 6
    float16 = 6
    Float = 7
    float32 = 7
    Fixed16 = 214


# Names that say order and type at once: those that the tool takes and that are no order's.
PAIR_NAMES = {
    "2vuy": (Order.UYVY, Type.U8),
    "yuvs": (Order.YUY2, Type.U8),
    "v210": (Order.UYVY, Type.U10Packed),
    "v216": (Order.UYVY, Type.U16),
    "y210": (Order.YUY2, Type.U10),
    "y212": (Order.YUY2, Type.U12),
    "y216": (Order.YUY2, Type.U16),
    "iyuv": (Order.I420, Type.U8),
    "gray8": (Order.Alpha, Type.U8),
    "gray16": (Order.Alpha, Type.U16),
    "rgb24": (Order.RGB, Type.U8),
    "rgb48": (Order.RGB, Type.U16),
    "bgr24": (Order.BGR, Type.U8),
    "bgr48": (Order.BGR, Type.U16),
    "rgba32": (Order.RGBA, Type.U8),
    "rgba64": (Order.RGBA, Type.U16),
    "bgra32": (Order.BGRA, Type.U8),
    "bgra64": (Order.BGRA, Type.U16),
    "argb32": (Order.ARGB, Type.U8),
    "argb64": (Order.ARGB, Type.U16),
    "abgr32": (Order.ABGR, Type.U8),
    "abgr64": (Order.ABGR, Type.U16),
}

# The tool's other names of types, which can be no members.
TYPE_NAMES = {
    "8bit": Type.U8,
    "16bit": Type.U16,
    "10bit": Type.U10,
    "12bit": Type.U12,
    "f16": Type.Half,
    "f32": Type.Float,
    "s1.14": Type.Fixed16,
}

DTYPES = {
    Type.U8: np.dtype(np.uint8),
    Type.U16: np.dtype(np.uint16),
    Type.U10: np.dtype(np.uint16),
    Type.U12: np.dtype(np.uint16),
    Type.U10Packed: np.dtype(np.uint32),
    Type.Half: np.dtype(np.float16),
    Type.Float: np.dtype(np.float32),
    Type.Fixed16: np.dtype(np.int16),
}


class Plane(NamedTuple):
    """One array of a frame: a row has `columns` columns for every `pixels` pixels begun, each of `samples` samples.

    down: rows of the frame to one of the plane. stride: which of the record's strides is the plane's, rowBytes (0) or
    rowBytes2 (1). text: rows and columns in words.
    """

    name: str
    samples: int = 1
    pixels: int = 1
    columns: int = 1
    down: int = 1
    stride: int = 0
    text: str = "height, width"

    def shape(self, width, height):
        rows = -(-height // self.down)
        columns = -(-width // self.pixels) * self.columns
        return (rows, columns) if self.samples == 1 else (rows, columns, self.samples)

    def width(self, columns):
        """The most pixels that so many columns hold."""
        return columns // self.columns * self.pixels

    @property
    def shape_text(self):
        return f"({self.text})" if self.samples == 1 else f"({self.text}, {self.samples})"


def _pixels(name):
    return Plane(name, samples=len(name.split()))


def _pairs(name):
    return _pixels(name)._replace(pixels=2, columns=2, text="height, even width")


def _chroma(name):
    return Plane(name, pixels=2, down=2, stride=1, text="height / 2, width / 2")


_PLANES = {
    Order.YUY2: (_pairs("Y C"),),
    Order.UYVY: (_pairs("C Y"),),
    Order.ARGB: (_pixels("A R G B"),),
    Order.BGRA: (_pixels("B G R A"),),
    Order.RGB: (_pixels("R G B"),),
    Order.BGR: (_pixels("B G R"),),
    Order.RGBA: (_pixels("R G B A"),),
    Order.ABGR: (_pixels("A B G R"),),
    Order.YUV444: (_pixels("Y Cb Cr"),),
    Order.I420: (Plane("Y"), _chroma("Cb"), _chroma("Cr")),
    Order.UYAVYA: (_pairs("C Y A"),),
    Order.YUVA444: (_pixels("Y Cb Cr A"),),
    Order.A420: (Plane("Y"), _chroma("Cb"), _chroma("Cr"), Plane("A")),
    Order.Alpha: (Plane("A"),),
    Order.YUY2_A: (_pairs("Y C"), Plane("A", stride=1)),
    Order.UYVY_A: (_pairs("C Y"), Plane("A", stride=1)),
}

# Six pixels in four words.
_PACKED = (Plane("words", pixels=6, columns=4, text="height, 4 * ceil(width / 6)"),)

_TYPES = {order: {Type.U8, Type.U16, Type.U10, Type.U12, Type.Half, Type.Float, Type.Fixed16} for order in Order}
_TYPES[Order.UYVY] |= {Type.U10Packed}
_TYPES[Order.I420] -= {Type.Fixed16}
_TYPES[Order.A420] -= {Type.Fixed16}
_TYPES[Order.Alpha] = {Type.U8, Type.U16}


class Layout(NamedTuple):
    """The arrays that hold a frame of one pair: one for each plane."""

    order: Order
    type: Type
    dtype: np.dtype
    planes: tuple

    def __str__(self):
        return f"order {self.order.name}, type {self.type.name}"

    def shapes(self, width, height):
        return tuple(plane.shape(width, height) for plane in self.planes)

    def size(self, width, height):
        """Bytes of a frame whose rows follow each other without a gap."""
        samples = 0
        for shape in self.shapes(width, height):
            samples += shape[0] * shape[1] * (shape[2] if len(shape) == 3 else 1)
        return samples * self.dtype.itemsize


# (order, type) -> Layout, for each pair that the library takes.
LAYOUTS = {
    (order, type): Layout(order, type, DTYPES[type], _PACKED if type is Type.U10Packed else _PLANES[order])
    for order in Order
    for type in sorted(_TYPES[order])
}


def _look_up(enum, given, what, others):
    """The member that a caller names, or what others, a table by names in small letters, have for it."""
    names = {name.lower(): member for name, member in enum.__members__.items()} | others
    try:
        return names[given.lower().replace("+", "_")] if isinstance(given, str) else enum(given)
    except (KeyError, ValueError):
        shown = ", ".join(member.name for member in enum)
        raise ArgumentError(f"there is no {what} {reprlib.repr(given)}; {what}s are {shown}") from None


def _as_dtype(given):
    """The dtype, if that is what a caller gave for a type."""
    is_scalar = isinstance(given, type) and issubclass(given, np.generic)
    return np.dtype(given) if is_scalar or isinstance(given, np.dtype) else None


def parse_format(order, type):
    """(Order or None, Type or None) of what a caller gave, which go together; None stands for what was not given."""
    implied = None
    if order is not None:
        order = _look_up(Order, order, "order", PAIR_NAMES)
        if not isinstance(order, Order):
            order, implied = order
    if type is not None:
        dtype = _as_dtype(type)
        if dtype is None:
            type = _look_up(Type, type, "type", TYPE_NAMES)
        else:
            type = implied if implied and DTYPES[implied] == dtype else type_of_dtype(order, dtype)
        if implied not in (None, type):
            raise ArgumentError(f"type {type.name} contradicts the order's name, which is type {implied.name}")
        if order is not None:
            find_layout(order, type)
    return order, type if type is not None else implied


def type_of_dtype(order, dtype):
    """The one Type that stores the samples of an Order, or of any for None, as that dtype."""
    taken = {type: DTYPES[type] for type in Type if order is None or (order, type) in LAYOUTS}
    types = [type for type in taken if taken[type] == dtype]
    if not types:
        *names, last = dict.fromkeys(str(its) for its in taken.values())
        what = "a frame" if order is None else f"order {order.name}"
        raise ArgumentError(f"{what} takes {', '.join(names)} or {last}, not {dtype}: convert it with astype()")
    if len(types) > 1:
        names = ", ".join(type.name for type in types)
        raise ArgumentError(f"samples of dtype {dtype} can be any of {names}: say which with type=")
    return types[0]


def find_layout(order, type):
    """The Layout of an Order and a Type."""
    found = LAYOUTS.get((order, type))
    if found is None:
        taken = ", ".join(t.name for o, t in LAYOUTS if o == order)
        raise ArgumentError(f"order {order.name} does not go with type {type.name}; its types are {taken}")
    return found
