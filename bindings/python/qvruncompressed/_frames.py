# SPDX-License-Identifier: BSD-3-Clause
"""Frames as arrays, and the runs of memory that the library reads and writes.

The library takes a frame as one run of bytes: planes behind each other without a gap, rows of a plane at equal
distances. Arrays that lie so are used as they are; others by way of a new frame that is copied from or to.
"""

import math
import operator
from typing import NamedTuple

import numpy as np

from ._errors import ArgumentError

MOST_BYTES = 0xFFFFFFFF


class Run(NamedTuple):
    """One run of bytes (1-D, uint8) that holds a frame, and the record's (rowBytes, rowBytes2)."""

    memory: np.ndarray
    strides: tuple


def whole(name, value, least=-math.inf, most=math.inf):
    """A caller's whole number, of NumPy's kinds too, as one of Python, which does not overflow."""
    try:
        number = operator.index(value)
    except TypeError:
        raise ArgumentError(f"{name} must be a whole number, not {type(value).__name__}") from None
    if not least <= number <= most:
        raise ArgumentError(f"{name} must be from {least} to {most}, not {number}")
    return number


def require_size(layout, width, height):
    """Refuses what 32 bits cannot describe, before any memory is asked for."""
    if min(width, height) < 0:
        raise ArgumentError(f"{layout}: there is no frame of {width}x{height}")
    if max(width, height, layout.size(width, height)) > MOST_BYTES:
        raise ArgumentError(f"{layout}: a frame of {width}x{height} is too large; it must stay below 4 GiB")


def require_pixels(layout, width, height):
    """Refuses frames to encode that have none; what others wrote may still be read."""
    require_size(layout, width, height)
    if min(width, height) == 0:
        raise ArgumentError(f"{layout}: a frame of {width}x{height} has no pixels")


def new_frame(layout, width, height, unset=False):
    """The Run of a new frame and its arrays, one for each plane.

    unset: whether all samples are written for certain. Decoding does not: a bitstream need not name all of them.
    """
    require_size(layout, width, height)
    memory = (np.empty if unset else np.zeros)(layout.size(width, height), np.uint8)
    arrays = []
    strides = [0, 0]
    start = 0
    for plane, shape in zip(layout.planes, layout.shapes(width, height)):
        row = _row_bytes(shape, layout.dtype)
        end = start + shape[0] * row
        arrays.append(memory[start:end].view(layout.dtype).reshape(shape))
        strides[plane.stride] = row
        start = end
    return Run(memory, tuple(strides)), tuple(arrays)


def planes_of(layout, given):
    """The arrays of a frame as a caller passes it: one array, or a tuple or list with one for each plane."""
    if len(layout.planes) == 1:
        return (given,)
    if not isinstance(given, (tuple, list)) or len(given) != len(layout.planes):
        names = ", ".join(plane.name for plane in layout.planes)
        got = f"{len(given)} of them" if isinstance(given, (tuple, list)) else type(given).__name__
        raise ArgumentError(f"{layout}: expected a tuple of {len(layout.planes)} arrays ({names}), got {got}")
    return tuple(given)


def frame_size(layout, arrays, width=None):
    """(width, height) of a frame of these arrays, all of which are checked. width: where the array leaves it open."""
    plane, main = layout.planes[0], arrays[0]
    if main.ndim < 2:
        _refuse(layout, 0, plane.shape_text, main)
    height = main.shape[0]
    chosen = plane.width(main.shape[1]) if width is None else width
    wanted = layout.shapes(chosen, height)
    for index, array in enumerate(arrays):
        if array.shape != wanted[index] or array.dtype != layout.dtype:
            _refuse(layout, index, wanted[index] if index or width is not None else plane.shape_text, array)
    return chosen, height


def source_run(layout, arrays, width, height, tight_alpha):
    """The frame that the arrays hold, copied only where the library cannot read them as they are."""
    require_pixels(layout, width, height)
    run = _as_run(layout, arrays, tight_alpha)
    if run is None:
        run, copies = new_frame(layout, width, height, unset=True)
        for to, source in zip(copies, arrays):
            np.copyto(to, source)
    return run


def check_out(layout, arrays, width, height, data):
    """Refuses arrays that a frame cannot be decoded into, or not without destroying something."""
    wanted = layout.shapes(width, height)
    for index, array in enumerate(arrays):
        if not isinstance(array, np.ndarray):
            raise ArgumentError(f"{layout}: out must be made of NumPy arrays, not {type(array).__name__}")
        if array.shape != wanted[index] or array.dtype != layout.dtype:
            _refuse(layout, index, wanted[index], array, "out: ")
        if not array.flags.writeable:
            raise ArgumentError(f"{layout}: out is read-only")
        if _overlaps_itself(array):
            raise ArgumentError(f"{layout}: elements of out share memory with each other")
        if np.shares_memory(array, data):
            raise ArgumentError(f"{layout}: out shares memory with data")
        if any(np.shares_memory(array, other) for other in arrays[:index]):
            raise ArgumentError(f"{layout}: planes of out share memory with each other")


def target_run(layout, arrays):
    """The Run of arrays that can be decoded into directly, else None.

    Between the rows of a separate alpha plane the library may write what it likes, so that one must have no gaps.
    """
    run = _as_run(layout, arrays, tight_alpha=True)
    return run if run is not None and run.memory.flags.writeable else None


def _as_run(layout, arrays, tight_alpha):
    strides = [None, None]
    start = position = _address(arrays[0])
    for plane, array in zip(layout.planes, arrays):
        stride = _row_stride(array)
        tight = stride == _row_bytes(array.shape, array.dtype)
        if stride is None or _address(array) != position or strides[plane.stride] not in (None, stride):
            return None
        if tight_alpha and plane.name == "A" and not tight:
            return None
        strides[plane.stride] = stride
        position += stride * array.shape[0]
    size = position - start
    for owner in _owners(arrays[0]):
        first = start - _address(owner)
        # The library wants the last row with its gap, which may lie behind the owner's end.
        if owner.flags.c_contiguous and first >= 0 and first + size <= owner.nbytes and size <= MOST_BYTES:
            return Run(owner.reshape(-1).view(np.uint8)[first : first + size], (strides[0], strides[1] or 0))
    return None


def _owners(array):
    """The array, those that it is a view of, and last the buffer that all of them lie in, if it is another's."""
    while isinstance(array, np.ndarray):
        yield np.asarray(array)
        array = array.base
    try:
        yield np.frombuffer(array, np.uint8)
    except (TypeError, ValueError, BufferError):  # NumPy's own memory, or no contiguous buffer
        pass


def _address(array):
    return array.__array_interface__["data"][0]


def _row_bytes(shape, dtype):
    return int(np.prod(shape[1:], dtype=np.int64)) * dtype.itemsize


def _row_stride(array):
    """Bytes from row to row; None when rows have gaps inside or do not follow each other upwards in memory."""
    row = _row_bytes(array.shape, array.dtype)
    if len(array) == 0:
        return row
    stride = array.strides[0] if len(array) > 1 else row
    return stride if array[0].flags.c_contiguous and stride >= row else None


def _overlaps_itself(array):
    extent = array.itemsize
    for stride, count in sorted((abs(stride), count) for stride, count in zip(array.strides, array.shape)):
        if count > 1:
            if stride < extent:
                return True
            extent += stride * (count - 1)
    return False


def _refuse(layout, index, wanted, array, prefix=""):
    where = f"plane {index} ({layout.planes[index].name}): " if len(layout.planes) > 1 else ""
    raise ArgumentError(
        f"{layout}: {prefix}{where}expected an array of shape {wanted} and dtype {layout.dtype}, "
        f"got shape {array.shape} and dtype {array.dtype}"
    )
