# SPDX-License-Identifier: BSD-3-Clause
from array import array as _array
from enum import IntEnum
from mmap import mmap
from os import PathLike
from types import TracebackType
from typing import Any, BinaryIO, Iterable, NamedTuple, Sequence

from numpy.typing import ArrayLike, NDArray
from typing_extensions import Self

_Array = NDArray[Any]
_Buffer = bytes | bytearray | memoryview | mmap | _array[Any] | _Array
_Frame = _Array | tuple[_Array, ...]
_Samples = ArrayLike | Sequence[ArrayLike]
_Out = _Array | Sequence[_Array]
_OrderLike = Order | int | str
_TypeLike = Type | int | str
_File = str | PathLike[str] | BinaryIO

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
    order: Order | None
    type: Type | None
    width: int
    height: int
    interlaced: bool
    wrapped: tuple[Payload, ...]

class Unwrapped(NamedTuple):
    info: FrameInfo
    payloads: list[bytes]
    alpha: _Array | None

class Encoder:
    def __init__(self, threads: int = 1) -> None: ...
    def encode(
        self,
        array: _Samples,
        order: _OrderLike,
        type: _TypeLike | None = None,
        *,
        width: int | None = None,
        interlaced: bool = False,
        alpha_rle: bool = False,
        rle_slices: int = 0,
    ) -> bytes: ...
    def wrap(
        self,
        qcx: _Buffer,
        alpha: ArrayLike,
        *,
        interlaced: bool = False,
        alpha_rle: bool = False,
        rle_slices: int = 0,
    ) -> bytes: ...
    def wrap_tiles(
        self, chunks: Iterable[_Buffer], width: int, height: int, *, interlaced: bool = False
    ) -> bytes: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *raised: type[BaseException] | BaseException | TracebackType | None) -> None: ...

class Decoder:
    def __init__(self, threads: int = 1) -> None: ...
    def info(self, data: _Buffer) -> FrameInfo: ...
    def decode(
        self,
        data: _Buffer,
        order: _OrderLike | None = None,
        type: _TypeLike | None = None,
        out: _Out | None = None,
    ) -> _Frame: ...
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
        file: _File,
        order: _OrderLike | None = None,
        type: _TypeLike | None = None,
        *,
        out: _Out | None = None,
        threads: int = 1,
    ) -> None: ...
    def __iter__(self) -> Self: ...
    def __next__(self) -> _Frame: ...
    def read_bytes(self) -> bytes: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *raised: type[BaseException] | BaseException | TracebackType | None) -> None: ...

class Writer:
    name: str
    count: int
    def __init__(
        self,
        file: _File,
        order: _OrderLike | None = None,
        type: _TypeLike | None = None,
        *,
        width: int | None = None,
        interlaced: bool = False,
        alpha_rle: bool = False,
        rle_slices: int = 0,
        threads: int = 1,
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
    width: int | None = None,
    interlaced: bool = False,
    alpha_rle: bool = False,
    rle_slices: int = 0,
    threads: int = 1,
) -> bytes: ...
def decode(
    data: _Buffer,
    order: _OrderLike | None = None,
    type: _TypeLike | None = None,
    out: _Out | None = None,
    *,
    threads: int = 1,
) -> _Frame: ...
def info(data: _Buffer) -> FrameInfo: ...
def wrap(
    qcx: _Buffer,
    alpha: ArrayLike,
    *,
    interlaced: bool = False,
    alpha_rle: bool = False,
    rle_slices: int = 0,
    threads: int = 1,
) -> bytes: ...
def wrap_tiles(chunks: Iterable[_Buffer], width: int, height: int, *, interlaced: bool = False) -> bytes: ...
def unwrap(data: _Buffer, *, threads: int = 1) -> Unwrapped: ...
def empty(
    order: _OrderLike, type: _TypeLike | None = None, *, width: int, height: int
) -> _Frame: ...
