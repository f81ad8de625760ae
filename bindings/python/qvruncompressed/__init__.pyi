# SPDX-License-Identifier: BSD-3-Clause
from array import array as _array
from enum import IntEnum
from mmap import mmap
from os import PathLike
from types import TracebackType
from typing import Any, BinaryIO, Iterable, Literal, NamedTuple, Protocol, Sequence, SupportsIndex, overload

import numpy as np
from numpy.typing import ArrayLike, NDArray
from typing_extensions import Self

_Array = NDArray[Any]
_Buffer = bytes | bytearray | memoryview | mmap | _array[Any] | _Array
_Samples = ArrayLike | Sequence[ArrayLike]
_Out = _Array | Sequence[_Array]
_Int = SupportsIndex  # NumPy's whole numbers as well
_OrderLike = Order | int | str
_TypeLike = Type | int | str | np.dtype[Any] | type[np.generic]

# Names of orders whose frames are one array. Other frames may be tuples, which the name alone, or none, does not tell.
_OneArray = Literal[
    "YUY2", "UYVY", "ARGB", "BGRA", "RGB", "BGR", "RGBA", "ABGR", "YUV444", "UYAVYA", "YUVA444", "Alpha",
    "v210", "v216",
    Order.YUY2, Order.UYVY, Order.ARGB, Order.BGRA, Order.RGB, Order.BGR, Order.RGBA, Order.ABGR, Order.YUV444,
    Order.UYAVYA, Order.YUVA444, Order.Alpha,
]

class _Readable(Protocol):
    def readinto(self, buffer: memoryview, /) -> int | None: ...

class _Writable(Protocol):
    def write(self, data: memoryview, /) -> int | None: ...

_Path = str | PathLike[str]

__all__: list[str]
__version__: str

class Order(IntEnum):
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

class WrapType(IntEnum):
    QCX = 1
    Stitched = 2
    Tile = 3

class QVRError(ValueError): ...
class ArgumentError(QVRError): ...
class EncodeError(QVRError): ...
class DecodeError(QVRError): ...
class FileError(QVRError): ...

class Payload(NamedTuple):
    type: WrapType
    size: int

class FrameInfo(NamedTuple):
    # None with stitched chunks; Any spares the check to those who have none.
    order: Order | Any
    type: Type | Any
    width: int
    height: int
    interlaced: bool
    wrapped: tuple[Payload, ...]

class Unwrapped(NamedTuple):
    info: FrameInfo
    payloads: list[bytes]
    alpha: _Array | None

class Encoder:
    def __init__(self, threads: _Int = 1) -> None: ...
    def encode(
        self,
        array: _Samples,
        order: _OrderLike,
        type: _TypeLike | None = None,
        *,
        width: _Int | None = None,
        interlaced: bool = False,
        alpha_rle: bool = False,
        rle_slices: _Int = 0,
    ) -> bytes: ...
    def wrap(
        self,
        qcx: _Buffer,
        alpha: ArrayLike,
        *,
        interlaced: bool = False,
        alpha_rle: bool = False,
        rle_slices: _Int = 0,
    ) -> bytes: ...
    def wrap_tiles(
        self, chunks: Iterable[_Buffer], width: _Int, height: _Int, *, interlaced: bool = False
    ) -> bytes: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *raised: type[BaseException] | BaseException | TracebackType | None) -> None: ...

class Decoder:
    def __init__(self, threads: _Int = 1) -> None: ...
    def info(self, data: _Buffer) -> FrameInfo: ...
    @overload
    def decode(
        self, data: _Buffer, order: _OneArray, type: _TypeLike | None = None, out: _Array | None = None
    ) -> _Array: ...
    @overload
    def decode(
        self,
        data: _Buffer,
        order: _OrderLike | None = None,
        type: _TypeLike | None = None,
        out: _Out | None = None,
    ) -> Any: ...
    def unwrap(self, data: _Buffer) -> Unwrapped: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *raised: type[BaseException] | BaseException | TracebackType | None) -> None: ...

class Reader:
    name: str
    index: int
    offset: int
    info: FrameInfo | None
    def __init__(
        self,
        file: _Path | BinaryIO | _Readable,
        order: _OrderLike | None = None,
        type: _TypeLike | None = None,
        *,
        out: _Out | None = None,
        threads: _Int = 1,
    ) -> None: ...
    def __iter__(self) -> Self: ...
    def __next__(self) -> Any: ...
    def read_bytes(self) -> bytes: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *raised: type[BaseException] | BaseException | TracebackType | None) -> None: ...

class Writer:
    name: str
    count: int
    def __init__(
        self,
        file: _Path | BinaryIO | _Writable,
        order: _OrderLike | None = None,
        type: _TypeLike | None = None,
        *,
        width: _Int | None = None,
        interlaced: bool = False,
        alpha_rle: bool = False,
        rle_slices: _Int = 0,
        threads: _Int = 1,
    ) -> None: ...
    def write(self, array: _Samples) -> None: ...
    def write_bytes(self, data: _Buffer) -> None: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *raised: type[BaseException] | BaseException | TracebackType | None) -> None: ...

def encode(
    array: _Samples,
    order: _OrderLike,
    type: _TypeLike | None = None,
    *,
    width: _Int | None = None,
    interlaced: bool = False,
    alpha_rle: bool = False,
    rle_slices: _Int = 0,
    threads: _Int = 1,
) -> bytes: ...
@overload
def decode(
    data: _Buffer, order: _OneArray, type: _TypeLike | None = None, out: _Array | None = None, *, threads: _Int = 1
) -> _Array: ...
@overload
def decode(
    data: _Buffer,
    order: _OrderLike | None = None,
    type: _TypeLike | None = None,
    out: _Out | None = None,
    *,
    threads: _Int = 1,
) -> Any: ...
def info(data: _Buffer) -> FrameInfo: ...
def wrap(
    qcx: _Buffer,
    alpha: ArrayLike,
    *,
    interlaced: bool = False,
    alpha_rle: bool = False,
    rle_slices: _Int = 0,
    threads: _Int = 1,
) -> bytes: ...
def wrap_tiles(chunks: Iterable[_Buffer], width: _Int, height: _Int, *, interlaced: bool = False) -> bytes: ...
def unwrap(data: _Buffer, *, threads: _Int = 1) -> Unwrapped: ...
@overload
def empty(order: _OneArray, type: _TypeLike | None = None, *, width: _Int, height: _Int) -> _Array: ...
@overload
def empty(order: _OrderLike, type: _TypeLike | None = None, *, width: _Int, height: _Int) -> Any: ...
