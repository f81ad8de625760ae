# SPDX-License-Identifier: BSD-3-Clause
"""Which arrays are taken, which are used where they lie, and what is said of the others."""

import mmap

import numpy as np
import pytest

import frames
import qvruncompressed as qvr
from qvruncompressed import _formats, _frames


def layout_of(order, type):
    return _formats.LAYOUTS[qvr.Order[order], qvr.Type[type]]


def source(order, type, planes, width, height, tight_alpha=False):
    return _frames.source_run(layout_of(order, type), planes, width, height, tight_alpha)


def uses(run, planes):
    """Whether the library would read the planes themselves."""
    return all(np.shares_memory(run.memory, plane) for plane in planes)


@pytest.mark.parametrize("order, type", frames.pairs())
def test_frames_without_gaps_are_not_copied(order, type):
    planes = frames.as_planes(qvr.empty(order, type, width=12, height=4))
    assert uses(source(order, type, planes, 12, 4, tight_alpha=True), planes)


def test_rows_with_gaps_are_not_copied(rng):
    view, around = frames.with_gaps(rng, frames.noise(rng, (4, 6, 2), np.uint8))
    run = source("UYVY", "U8", [view], 6, 4)
    assert uses(run, [view])
    assert run.strides == (around.strides[0], 0)
    # The last row's gap would lie behind the end of the memory: only there a copy is made.
    corner = around[-4:, -6:]
    assert not uses(source("UYVY", "U8", [corner], 6, 4), [corner])
    assert qvr.encode(corner, "UYVY") == qvr.encode(corner.copy(), "UYVY")


def test_read_only_memory_is_not_copied():
    frame = np.frombuffer(bytes(48), np.uint8).reshape(4, 6, 2)
    assert uses(source("UYVY", "U8", [frame], 6, 4), [frame])


@pytest.mark.parametrize("buffer", [
    bytearray, lambda size: memoryview(bytearray(size)), lambda size: mmap.mmap(-1, size),
    lambda size: np.zeros(size, np.uint8), lambda size: np.zeros((size // 4096, 2048), np.uint16),
])
def test_frames_in_the_memory_of_others_are_not_copied(rng, buffer):
    """A capture card's, say, with rows at a pitch."""
    card = np.ndarray((4, 6, 2), np.uint8, buffer=buffer(4 * 4096), strides=(4096, 2, 1))
    card[...] = frames.noise(rng, card.shape, np.uint8)
    assert uses(source("UYVY", "U8", [card], 6, 4), [card])
    assert uses(_frames.target_run(layout_of("UYVY", "U8"), [card]), [card])
    one = card[:1]
    assert uses(source("UYVY", "U8", [one], 6, 1), [one])
    assert qvr.encode(card, "UYVY") == qvr.encode(card.copy(), "UYVY")
    behind = np.ndarray((2, 6, 2), np.uint8, buffer=card.base, strides=(4096, 2, 1), offset=4096 + 12)
    assert uses(source("UYVY", "U8", [behind], 6, 2), [behind])
    assert qvr.encode(behind, "UYVY") == qvr.encode(behind.copy(), "UYVY")


def test_subclasses_of_arrays_are_encoded(rng):
    crop = frames.noise(rng, (8, 8), np.uint8).view(np.matrix).copy()[2:5, 2:6]
    assert qvr.encode(crop, "Alpha") == qvr.encode(np.array(crop), "Alpha")


def test_planes_with_gaps_are_not_copied(rng):
    memory = frames.noise(rng, (4 * 10 + 2 * 7 + 2 * 7,), np.uint8)
    y = memory[:40].reshape(4, 10)[:, :6]
    cb = memory[40:54].reshape(2, 7)[:, :3]
    cr = memory[54:].reshape(2, 7)[:, :3]
    run = source("I420", "U8", [y, cb, cr], 6, 4)
    assert uses(run, [y, cb, cr]) and run.strides == (10, 7) and run.memory.nbytes == 68
    assert qvr.encode((y, cb, cr), "I420") == qvr.encode((y.copy(), cb.copy(), cr.copy()), "I420")
    assert not uses(source("I420", "U8", [y, cr, cb], 6, 4), [y, cr, cb])


def test_chroma_planes_with_strides_of_their_own_are_copied(rng):
    memory = frames.noise(rng, (24 + 2 * 7 + 2 * 5,), np.uint8)
    planes = [memory[:24].reshape(4, 6), memory[24:38].reshape(2, 7)[:, :3], memory[38:].reshape(2, 5)[:, :3]]
    assert not uses(source("I420", "U8", planes, 6, 4), planes)
    assert qvr.encode(planes, "I420") == qvr.encode([plane.copy() for plane in planes], "I420")


@pytest.mark.parametrize("order", ["Alpha", "A420", "UYVY_A", "YUY2_A"])
def test_alpha_planes_that_are_coded_have_no_gaps(rng, order):
    """With wide ones the library would not code them, and when it decodes it may write between their rows."""
    planes = []
    used = 0
    memory = frames.noise(rng, (4096,), np.uint8)
    shapes = frames.shapes(order, "U8", 6, 4)
    for index, shape in enumerate(shapes):
        stride = int(np.prod(shape[1:])) + 400 * (index in (0, len(shapes) - 1))
        block = memory[used : used + shape[0] * stride].reshape(shape[0], stride)
        planes.append(block[:, : int(np.prod(shape[1:]))].reshape(shape))
        used += block.size
    layout = layout_of(order, "U8")
    assert uses(source(order, "U8", planes, 6, 4), planes)
    assert not uses(source(order, "U8", planes, 6, 4, tight_alpha=True), planes)
    assert _frames.target_run(layout, planes) is None
    frame = frames.as_frame(planes)
    tight = frames.as_frame([plane.copy() for plane in planes])
    assert qvr.encode(frame, order, "U8", alpha_rle=True) == qvr.encode(tight, order, "U8", alpha_rle=True)


@pytest.mark.parametrize("change", [
    lambda a: a[::-1], lambda a: a[:, ::-1], lambda a: a[:, :, ::-1], lambda a: a.transpose(1, 0, 2),
    lambda a: np.broadcast_to(a[:1], a.shape), lambda a: a[:, ::2].repeat(2, 1)[:, ::-1],
])
def test_other_arrays_are_copied(rng, change):
    frame = change(frames.noise(rng, (8, 8, 4), np.uint8))
    assert qvr.encode(frame, "RGBA") == qvr.encode(np.ascontiguousarray(frame), "RGBA")


def test_odd_addresses_do(rng):
    memory = frames.noise(rng, (4 * 6 * 3 * 4 + 1,), np.uint8)
    frame = memory[1:].view(np.float32).reshape(4, 6, 3)
    assert frames.same([qvr.decode(qvr.encode(frame, "RGB"))], [frame])


def test_whatever_numpy_takes_for_an_array_is_encoded():
    rows = [[[1, 2, 3], [4, 5, 6]]]
    frame = np.array(rows, np.uint8)
    assert qvr.encode(memoryview(frame), "RGB") == qvr.encode(frame, "RGB")


@pytest.mark.parametrize("shape, dtype, order, type, message", [
    ((4, 6), "uint8", "UYVY", "U8",
     "order UYVY, type U8: expected an array of shape (height, even width, 2) and dtype uint8, "
     "got shape (4, 6) and dtype uint8"),
    ((4, 5, 2), "uint8", "UYVY", "U8",
     "order UYVY, type U8: expected an array of shape (height, even width, 2) and dtype uint8, "
     "got shape (4, 5, 2) and dtype uint8"),
    ((4, 6, 4), "uint16", "RGBA", "U8",
     "order RGBA, type U8: expected an array of shape (height, width, 4) and dtype uint8, "
     "got shape (4, 6, 4) and dtype uint16"),
    ((4, 6, 4), ">u2", "RGBA", "U16",
     "order RGBA, type U16: expected an array of shape (height, width, 4) and dtype uint16, "
     "got shape (4, 6, 4) and dtype >u2"),
    ((4, 6, 3), "uint8", "RGBA", "U8",
     "order RGBA, type U8: expected an array of shape (height, width, 4) and dtype uint8, "
     "got shape (4, 6, 3) and dtype uint8"),
    ((6,), "uint8", "Alpha", "U8",
     "order Alpha, type U8: expected an array of shape (height, width) and dtype uint8, "
     "got shape (6,) and dtype uint8"),
    ((), "uint8", "Alpha", "U8",
     "order Alpha, type U8: expected an array of shape (height, width) and dtype uint8, got shape () and dtype uint8"),
    ((4, 6), "uint32", "v210", None,
     "order UYVY, type U10Packed: expected an array of shape (height, 4 * ceil(width / 6)) and dtype uint32, "
     "got shape (4, 6) and dtype uint32"),
])
def test_wrong_arrays_are_refused(shape, dtype, order, type, message):
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.encode(np.zeros(shape, dtype), order, type)
    assert str(caught.value) == message
    assert isinstance(caught.value, ValueError)


@pytest.mark.parametrize("planes, message", [
    (np.zeros((4, 6), np.uint8), "order I420, type U8: expected a tuple of 3 arrays (Y, Cb, Cr), got ndarray"),
    ([np.zeros((4, 6), np.uint8)], "order I420, type U8: expected a tuple of 3 arrays (Y, Cb, Cr), got 1 of them"),
    ((np.zeros((4, 6), np.uint8), np.zeros((2, 3), np.uint8), np.zeros((2, 2), np.uint8)),
     "order I420, type U8: plane 2 (Cr): expected an array of shape (2, 3) and dtype uint8, "
     "got shape (2, 2) and dtype uint8"),
    ((np.zeros((4, 6), np.uint8), np.zeros((2, 3), np.int8), np.zeros((2, 3), np.uint8)),
     "order I420, type U8: plane 1 (Cb): expected an array of shape (2, 3) and dtype uint8, "
     "got shape (2, 3) and dtype int8"),
    ((np.zeros((4, 6, 1), np.uint8), np.zeros((2, 3), np.uint8), np.zeros((2, 3), np.uint8)),
     "order I420, type U8: plane 0 (Y): expected an array of shape (height, width) and dtype uint8, "
     "got shape (4, 6, 1) and dtype uint8"),
])
def test_wrong_planes_are_refused(planes, message):
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.encode(planes, "I420", "U8")
    assert str(caught.value) == message


@pytest.mark.parametrize("size", [(5, 4), (6, 3)])
def test_odd_420_is_refused_by_the_library(size):
    message = "Width must be multiple of 2 for 422 and 420 subsampling" if size[0] % 2 else \
        "Height must be multiple of 2 for 420 subsampling"
    planes = [np.zeros(shape, np.uint8) for shape in frames.shapes("I420", "U8", *size)]
    with pytest.raises(qvr.EncodeError) as caught:
        qvr.encode(planes, "I420", "U8")
    assert str(caught.value) == message


def test_a_given_width_must_fit():
    frame = np.zeros((2, 8), np.uint32)
    assert [qvr.info(qvr.encode(frame, "v210", width=width)).width for width in (8, 10, 12)] == [8, 10, 12]
    assert qvr.info(qvr.encode(frame, "v210")).width == 12
    for width, columns in ((6, 4), (14, 12)):
        with pytest.raises(qvr.ArgumentError) as caught:
            qvr.encode(frame, "v210", width=width)
        assert str(caught.value) == (
            f"order UYVY, type U10Packed: expected an array of shape (2, {columns}) and dtype uint32, "
            "got shape (2, 8) and dtype uint32")


def test_frames_of_4_gib_are_refused_before_memory_is_asked_for():
    frame = np.broadcast_to(np.uint8(0), (32768, 32768, 4))
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.encode(frame, "RGBA")
    assert str(caught.value) == "order RGBA, type U8: a frame of 32768x32768 is too large; it must stay below 4 GiB"
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.empty("RGBA", "U8", width=-1, height=5)
    assert str(caught.value) == "order RGBA, type U8: there is no frame of -1x5"


@pytest.mark.parametrize("options, message", [
    ({"rle_slices": 256}, "rle_slices must be from 0 to 255, not 256"),
    ({"rle_slices": -1}, "rle_slices must be from 0 to 255, not -1"),
    ({"threads": -1}, "threads must be from 0 to 1024, not -1"),
    ({"threads": 1025}, "threads must be from 0 to 1024, not 1025"),
    ({"rle_slices": 2.0}, "rle_slices must be a whole number, not float"),
    ({"threads": "2"}, "threads must be a whole number, not str"),
    ({"width": 2.0}, "width must be a whole number, not float"),
])
def test_options_out_of_range_are_refused(options, message):
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.encode(np.zeros((2, 2), np.uint8), "Alpha", **options)
    assert str(caught.value) == message


@pytest.mark.parametrize("kind", [np.uint8, np.int16, np.uint32, np.int64])
def test_whole_numbers_of_numpy_do(kind):
    assert qvr.empty("ARGB", "Float", width=kind(120), height=kind(100)).shape == (100, 120, 4)
    frame = np.zeros((100, 80), np.uint32)
    assert qvr.encode(frame, "v210", width=kind(120)) == qvr.encode(frame, "v210", width=120)
    assert qvr.wrap_tiles([b"one"], kind(120), kind(100)) == qvr.wrap_tiles([b"one"], 120, 100)
    with pytest.raises(qvr.ArgumentError, match="^width must be a whole number, not float64$"):
        qvr.empty("ARGB", "U8", width=np.float64(2), height=2)


def test_coding_alpha_that_is_not_stored_is_refused_by_the_library():
    with pytest.raises(qvr.EncodeError) as caught:
        qvr.encode(np.zeros((2, 2, 4), np.float16), "RGBA", alpha_rle=True)
    assert str(caught.value) == "Only 8 and 16 bit alpha supported for RLE compression"


def test_an_order_is_needed():
    with pytest.raises(qvr.ArgumentError, match="^samples cannot be encoded without an order$"):
        qvr.encode(np.zeros((2, 2, 4), np.uint8), None)
