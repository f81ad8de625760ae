# SPDX-License-Identifier: BSD-3-Clause
"""Decoding into arrays of the caller's."""

import numpy as np
import pytest

import frames
import qvruncompressed as qvr

# What decodes into itself: alpha is stored with 8 and 16 bits only.
DECODABLE = [(order, type) for order, type in frames.pairs()
             if type in ("U8", "U16") or order in ("YUY2", "UYVY", "RGB", "BGR", "YUV444", "I420")]


@pytest.mark.parametrize("order, type, coded", [(order, type, coded) for order, type in DECODABLE
                                                for coded in ([False, True] if type in ("U8", "U16") else [False])])
def test_only_the_frame_is_written(rng, order, type, coded):
    width, height = 12, 4
    planes = frames.random_planes(rng, order, type, width, height)
    stream = qvr.encode(frames.as_frame(planes), order, type, alpha_rle=coded)
    wanted = frames.as_planes(qvr.decode(stream, order, type))
    views, arounds = zip(*(frames.with_gaps(rng, frames.noise(rng, plane.shape, plane.dtype)) for plane in planes))
    expected = [around.copy() for around in arounds]
    for around, plane in zip(expected, wanted):
        around[1 : 1 + plane.shape[0], 2 : 2 + plane.shape[1]] = plane
    out = frames.as_frame(views)
    assert qvr.decode(stream, order, type, out) is out
    assert frames.same(arounds, expected)


def test_rows_with_gaps_are_written_directly(rng):
    frame = frames.noise(rng, (4, 6, 3), np.uint8)
    view, _ = frames.with_gaps(rng, frame)
    taken = []
    decoder = qvr.Decoder()
    core = decoder._core

    class Spy:
        describe = core.describe

        def decode(self, record, data, memory):
            taken.append(memory)
            core.decode(record, data, memory)

    decoder._core = Spy()
    decoder.decode(qvr.encode(frame, "RGB"), out=view)
    assert np.shares_memory(taken[0], view)
    assert (view == frame).all()


@pytest.mark.parametrize("turn", [
    lambda a: a[::-1], lambda a: a[:, ::-1], lambda a: a[..., ::-1], lambda a: np.asfortranarray(a),
    lambda a: np.repeat(a, 2, 0)[::2], lambda a: np.repeat(a, 2, 1)[:, ::2],
])
def test_any_array_with_memory_of_its_own_will_do(rng, turn):
    frame = frames.noise(rng, (4, 6, 3), np.uint8)
    out = turn(np.zeros_like(frame))
    qvr.decode(qvr.encode(frame, "RGB"), out=out)
    assert (out == frame).all()


def test_chroma_may_be_interleaved_on_the_way(rng):
    y, cb, cr = planes = frames.random_planes(rng, "I420", "U8", 6, 4)
    luma, chroma = np.zeros_like(y), np.zeros((2, 3, 2), np.uint8)
    qvr.decode(qvr.encode(planes, "I420"), out=[luma, chroma[..., 0], chroma[..., 1]])
    assert (luma == y).all() and (chroma == np.stack([cb, cr], axis=-1)).all()


def of_noise(shape, dtype=np.uint8):
    return np.full(shape, 7, dtype)


@pytest.mark.parametrize("out, message", [
    (of_noise((4, 6, 4)), "order RGB, type U8: out: expected an array of shape (4, 6, 3) and dtype uint8, "
                          "got shape (4, 6, 4) and dtype uint8"),
    (of_noise((4, 7, 3)), "order RGB, type U8: out: expected an array of shape (4, 6, 3) and dtype uint8, "
                          "got shape (4, 7, 3) and dtype uint8"),
    (of_noise((4, 6, 3), np.int8), "order RGB, type U8: out: expected an array of shape (4, 6, 3) and dtype uint8, "
                                   "got shape (4, 6, 3) and dtype int8"),
    (bytearray(72), "order RGB, type U8: out must be made of NumPy arrays, not bytearray"),
    ((of_noise((4, 6, 3)),), "order RGB, type U8: out must be made of NumPy arrays, not tuple"),
    (np.frombuffer(bytes(72), np.uint8).reshape(4, 6, 3), "order RGB, type U8: out is read-only"),
    (np.lib.stride_tricks.as_strided(of_noise(200), (4, 6, 3), (17, 3, 1)),
     "order RGB, type U8: elements of out share memory with each other"),
    (np.lib.stride_tricks.as_strided(of_noise(200), (4, 6, 3), (0, 3, 1)),
     "order RGB, type U8: elements of out share memory with each other"),
])
def test_arrays_that_will_not_do_are_refused(out, message):
    stream = qvr.encode(of_noise((4, 6, 3)), "RGB")
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.decode(stream, out=out)
    assert str(caught.value) == message


def test_planes_must_be_apart(rng):
    stream = qvr.encode(frames.random_planes(rng, "I420", "U8", 4, 4), "I420")
    y, c = of_noise((4, 4)), of_noise((2, 2))
    with pytest.raises(qvr.ArgumentError, match="^order I420, type U8: planes of out share memory with each other$"):
        qvr.decode(stream, out=(y, c, c))
    with pytest.raises(qvr.ArgumentError, match="^order I420, type U8: planes of out share memory with each other$"):
        qvr.decode(stream, out=(y, y[2:, 2:], c))


def test_data_must_be_elsewhere(rng):
    memory = np.zeros(200, np.uint8)
    stream = qvr.encode(frames.noise(rng, (4, 6, 3), np.uint8), "RGB")
    data = memory[: len(stream)]
    data[:] = np.frombuffer(stream, np.uint8)
    out = memory[len(stream) - 1 :][:72].reshape(4, 6, 3)
    with pytest.raises(qvr.ArgumentError, match="^order RGB, type U8: out shares memory with data$"):
        qvr.decode(data, out=out)
    assert data.tobytes() == stream
    apart = memory[len(stream) :][:72].reshape(4, 6, 3)
    assert qvr.decode(data, out=apart) is apart and data.tobytes() == stream


def test_an_odd_frame_leaves_what_no_pixel_has():
    # 3 x 1 pixels of 4:2:2, seven samples.
    sinf = b"\x15\0\0\0sinf\x03\0\0\0\x01\0\0\0y208\0"
    stream = b"\x34\0\0\0pack" + sinf + b"\x0f\0\0\0sdat" + bytes(range(1, 8))
    stream = len(stream).to_bytes(4, "little") + stream[4:]
    out = of_noise((1, 4, 2))
    qvr.decode(stream, "UYVY", out=out)
    assert out.tobytes() == bytes([1, 2, 3, 4, 5, 6, 7, 7])
