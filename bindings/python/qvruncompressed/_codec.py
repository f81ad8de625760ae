# SPDX-License-Identifier: BSD-3-Clause
"""Encoder and Decoder: the library's handles, on arrays."""

import contextlib
from enum import IntEnum
from typing import NamedTuple

import numpy as np

from . import _core
from ._errors import ArgumentError, DecodeError, EncodeError
from ._formats import Order, Type, find_layout, parse_format, type_of_dtype
from ._frames import check_out, frame_size, new_frame, planes_of, require_pixels, source_run, target_run, whole

MOST_THREADS = 1024


class WrapType(IntEnum):
    """What a wrapped payload is."""

    QCX = 1  # one compressed QCX frame, beside an alpha plane
    Stitched = 2  # the first of a run of stitched chunks
    Tile = 3  # each further one


class Payload(NamedTuple):
    """A payload that is wrapped into a frame: what it is, and how many bytes it has."""

    type: WrapType
    size: int


class FrameInfo(NamedTuple):
    """What a bitstream says of itself.

    order, type: one that the planes can be put into, of all that there may be: RGBA reads as ARGB, or as RGB where no
    alpha is stored, YUY2 as UYVY, v210 as UYVY of type U10. None with stitched chunks, which are no samples.
    width, height: pixels. wrapped: a tuple of Payload.
    """

    order: Order
    type: Type
    width: int
    height: int
    interlaced: bool
    wrapped: tuple


class Unwrapped(NamedTuple):
    """What unwrap() took out: the payloads as bytes, and the alpha plane (height, width), or None beside tiles."""

    info: FrameInfo
    payloads: list
    alpha: np.ndarray


class _Codec:
    """A handle with a lock of its own: any number of threads may use it, one call works at a time."""

    def __init__(self, core, threads):
        self._core = core(whole("threads", threads, 0, MOST_THREADS))

    def close(self):
        """Ends the handle and its threads. Later calls raise ArgumentError; closing again does nothing."""
        self._core.close()

    def __enter__(self):
        return self

    def __exit__(self, *raised):
        self.close()


class Encoder(_Codec):
    """Encodes frames. threads: worker threads; 1 for none, 0 for one per processor. The bytes never depend on it."""

    def __init__(self, threads=1):
        super().__init__(_core.Encoder, threads)

    def encode(self, array, order, type=None, *, width=None, interlaced=False, alpha_rle=False, rle_slices=0):
        """Encodes one frame and returns its bitstream as bytes.

        array: the samples, one array or a tuple of planes, of the shape and dtype of the order and type (docs/python.md
            has the table). Arrays whose rows are contiguous are read as they are, whatever lies between the rows, and
            so are planes that follow each other in memory; others are copied first.
        order, type: see Order and Type. type may be left out where the order's name or the dtype leaves no choice.
        width: pixels in a row; needed for v210 when it is no multiple of 6.
        interlaced: what the bitstream says of the frame; the samples are the same.
        alpha_rle: whether the alpha plane is run-length coded, lossless; types U8 and U16 only.
        rle_slices: slices of a coded alpha plane, 1 to 255, each coded by one thread; 0 for 16.

        Types other than U8 and U16 store no alpha; it is dropped. U10 and U12 samples stand in the top bits of their
        words, and the bits below are dropped.
        Raises ArgumentError for wrong arrays or names, EncodeError with the library's message.
        """
        layout, arrays = _source(array, *parse_format(order, type))
        size = frame_size(layout, arrays, None if width is None else whole("width", width))
        run = source_run(layout, arrays, *size, tight_alpha=alpha_rle)
        return _encoded(layout, size, self._core.encode, _record(layout, size, run, interlaced), bool(alpha_rle),
                        whole("rle_slices", rle_slices, 0, 255), run.memory)

    def wrap(self, qcx, alpha, *, interlaced=False, alpha_rle=False, rle_slices=0):
        """Wraps a compressed QCX frame beside an alpha plane and returns the bitstream as bytes.

        qcx: the compressed frame, bytes or any contiguous buffer. alpha: (height, width) of uint8 or uint16, of the
        frame's own size. interlaced: must say what the frame's header says.
        """
        layout, arrays = _source(alpha, Order.Alpha, None)
        size = frame_size(layout, arrays)
        run = source_run(layout, arrays, *size, tight_alpha=alpha_rle)
        return _encoded(layout, size, self._core.wrap, _record(layout, size, run, interlaced), bool(alpha_rle),
                        whole("rle_slices", rle_slices, 0, 255), WrapType.QCX, [qcx], run.memory)

    def wrap_tiles(self, chunks, width, height, *, interlaced=False):
        """Wraps stitched chunks, in order, and returns the bitstream as bytes.

        chunks: at least one of bytes or any contiguous buffer. width, height: pixels of the whole frame.
        """
        layout = find_layout(Order.Alpha, Type.U8)
        width, height = whole("width", width), whole("height", height)
        require_pixels(layout, width, height)
        chunks = list(chunks)
        if not chunks:
            raise ArgumentError("there must be at least one chunk")
        record = (layout.order, layout.type, width, height, 0, int(bool(interlaced)), 0)
        return self._core.wrap(record, False, 0, WrapType.Stitched, chunks, b"")


class Decoder(_Codec):
    """Decodes frames. threads: worker threads; 1 for none, 0 for one per processor.

    data is bytes or any contiguous buffer (memoryview, bytearray, mmap, array), read where it is, and must not change
    during a call. It begins with a frame; bytes behind the frame do not matter.
    """

    def __init__(self, threads=1):
        super().__init__(_core.Decoder, threads)

    def info(self, data):
        """Describes the frame that data begins with: a FrameInfo. Raises DecodeError."""
        (order, type, width, height, _, interlaced, _), wrapped = self._core.describe(data)
        return FrameInfo(Order(order) if order else None, Type(type) if type else None, width, height,
                         bool(interlaced), tuple(Payload(WrapType(kind), size) for kind, size in wrapped))

    def decode(self, data, order=None, type=None, out=None):
        """Decodes one frame and returns its samples, one array or a tuple of planes.

        order, type: what to decode into; left out, what info() reports. Any order that the planes can be put into
            will do; there is no colour conversion. The type is the frame's own, with v210 for U10, and Float also for
            Fixed16.
        out: arrays to decode into and return, as decode() would return them: same shapes and dtype, writable, each
            element with memory of its own. Arrays whose rows are contiguous are written directly, others by way of a
            new frame.

        An odd 4:2:2 width, which only other encoders write, gives one column more, the chroma of its last pixel.
        Raises ArgumentError for wrong names or arrays, DecodeError with the library's message.
        """
        order, type = parse_format(order, type)
        info = self.info(data)
        if info.order is None:
            raise DecodeError("the frame holds stitched chunks, which unwrap() takes out")
        layout, size = _described(info, order, type)
        if out is None:
            run, arrays = _frame_for(layout, size)
            self._core.decode(_record(layout, size, run), data, run.memory)
            return arrays[0] if len(arrays) == 1 else arrays
        targets = planes_of(layout, out)
        check_out(layout, targets, *size, np.frombuffer(data, np.uint8))
        run, arrays = target_run(layout, targets), targets
        if run is None:
            run, arrays = _frame_for(layout, size)
        self._core.decode(_record(layout, size, run), data, run.memory)
        for to, source in zip(targets, arrays):
            if to is not source:
                np.copyto(to, source)
        return out

    def unwrap(self, data):
        """Takes the wrapped payloads out of a frame: an Unwrapped. Raises DecodeError, also when there are none."""
        data = _core.frozen(data)
        info = self.info(data)
        first = info.wrapped[0].type if info.wrapped else None
        if first is WrapType.Tile:
            raise DecodeError("the chunks begin with a 'tile' box, but the first must be a 'stch' box")
        if first is WrapType.QCX and info.order is not Order.Alpha:
            raise DecodeError("there is no lone alpha plane beside the QCX frame")
        if first is not WrapType.QCX:
            return Unwrapped(info, self._core.unwrap((0,) * 7, data, bytearray()), None)
        layout, size = _described(info)
        run, arrays = _frame_for(layout, size)
        return Unwrapped(info, self._core.unwrap(_record(layout, size, run), data, run.memory), arrays[0])


def _source(given, order, type):
    """The Layout and the arrays of a frame that is to be encoded."""
    if order is None:
        raise ArgumentError("samples cannot be encoded without an order")
    if type is None:
        first = given[0] if isinstance(given, (tuple, list)) and len(given) else given
        type = type_of_dtype(order, np.asarray(first).dtype)
    layout = find_layout(order, type)
    return layout, tuple(np.asarray(array) for array in planes_of(layout, given))


@contextlib.contextmanager
def _blaming_the_bitstream():
    try:
        yield
    except ArgumentError as error:
        raise DecodeError(str(error)) from None


def _described(info, order=None, type=None):
    """The Layout, with the caller's order and type where given, and the size of a frame that is to be decoded."""
    with _blaming_the_bitstream():
        layout = find_layout(info.order if order is None else order, info.type if type is None else type)
    return layout, (info.width, info.height)


def _frame_for(layout, size):
    with _blaming_the_bitstream():
        return new_frame(layout, *size)


def _record(layout, size, run, interlaced=False):
    """The frame's record, without its size field."""
    return (layout.order, layout.type, *size, run.strides[0], int(bool(interlaced)), run.strides[1])


def _encoded(layout, size, call, *arguments):
    try:
        return call(*arguments)
    except EncodeError as error:
        # The library gets all the room that it asks for, in 32 bits.
        if "dst size is too small" in str(error):
            raise ArgumentError(f"{layout}: a frame of {size[0]}x{size[1]} may not fit into 4 GiB encoded") from error
        raise
