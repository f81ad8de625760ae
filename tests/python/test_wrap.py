# SPDX-License-Identifier: BSD-3-Clause
"""Compressed frames beside alpha planes, and stitched chunks."""

import numpy as np
import pytest

import frames
import qvruncompressed as qvr


def qcx(width, height, size=5000, compression=1300, flags=0):
    """Stands for a compressed frame: a header and any bytes."""
    frame = bytearray(b"\x5a" * size)
    frame[7] = flags
    frame[24:28] = height.to_bytes(2, "big") + width.to_bytes(2, "big")
    frame[40:44] = compression.to_bytes(4, "big")
    return bytes(frame)


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16])
@pytest.mark.parametrize("coded", [False, True])
def test_a_frame_and_its_alpha_come_back(rng, dtype, coded):
    alpha = frames.noise(rng, (36, 64), dtype)
    payload = qcx(64, 36)
    stream = qvr.encode(alpha, "Alpha", "U8" if dtype is np.uint8 else "U16")
    with qvr.Encoder(2) as encoder, qvr.Decoder(2) as decoder:
        made = encoder.wrap(payload, alpha, alpha_rle=coded, rle_slices=3)
        assert made == qvr.wrap(bytearray(payload), frames.with_gaps(rng, alpha)[0], alpha_rle=coded, rle_slices=3)
        if not coded:
            assert len(made) == len(stream) + len(payload) + 8
        info, payloads, back = decoder.unwrap(made)
    assert info == qvr.info(made) == (
        qvr.Order.Alpha, qvr.info(stream).type, 64, 36, False, ((qvr.WrapType.QCX, 5000),))
    assert payloads == [payload] and frames.same([back], [alpha])
    # Whoever cares for the alpha alone decodes as ever.
    assert frames.same([qvr.decode(made)], [alpha])


def test_bytes_of_the_format():
    """The example of docs/format.md: a QCX frame of 45 bytes beside two samples."""
    payload = qcx(2, 1, 45)
    made = qvr.wrap(payload, np.array([[0x11, 0x22]], np.uint8))
    assert made.hex() == (
        "5c000000" + b"pack".hex() + "35000000" + b"QCXF".hex() + payload.hex() + "15000000" + b"sinf".hex()
        + "0200000001000000" + b" a08".hex() + "00" + "0a000000" + b"sdat".hex() + "1122")


@pytest.mark.parametrize("payload, alpha, options, message", [
    (bytes(44), (2, 2), {}, "Size is too small to parse QCX header"),
    (qcx(2, 2, compression=1), (2, 2), {}, "Invalid compression ID in QCX header"),
    (qcx(2, 2, flags=1), (2, 2), {}, "Can't wrap uncompressed alpha and QCX with alpha flag set"),
    (qcx(4, 2), (2, 2), {}, "Uncompressed params width 2 is not equal QCX width 4"),
    (qcx(2, 4), (2, 2), {}, "Uncompressed params height 2 is not equal QCX height 4"),
    (qcx(2, 2), (2, 2), {"interlaced": True},
     "Uncompressed params frame layout is not compatible with progressive QCX"),
    (qcx(0, 0, compression=1241), (1080, 1920), {},
     "Uncompressed params frame layout is not compatible with interlaced QCX"),
])
def test_frames_that_do_not_go_with_the_alpha_are_refused(payload, alpha, options, message):
    with pytest.raises(qvr.EncodeError) as caught:
        qvr.wrap(payload, np.zeros(alpha, np.uint8), **options)
    assert str(caught.value) == message


def test_interlaced_frames():
    made = qvr.wrap(qcx(0, 0, compression=1241), np.zeros((1080, 1920), np.uint8), interlaced=True, alpha_rle=True)
    assert qvr.info(made).interlaced


def test_alpha_must_be_a_plane():
    with pytest.raises(qvr.ArgumentError, match="got shape .2, 2, 4. and dtype uint8$"):
        qvr.wrap(qcx(2, 2), np.zeros((2, 2, 4), np.uint8))
    with pytest.raises(qvr.ArgumentError, match="^order Alpha takes uint8 or uint16, not float32: convert"):
        qvr.wrap(qcx(2, 2), np.zeros((2, 2), np.float32))


@pytest.mark.parametrize("sizes", [[10], [10, 20, 30], [0, 7, 0], [0]])
def test_chunks_come_back(rng, sizes):
    chunks = [rng.bytes(size) for size in sizes]
    made = qvr.wrap_tiles(iter(chunks), 640, 360, interlaced=True)
    assert len(made) == 37 + sum(sizes) + 8 * len(sizes)
    info, payloads, alpha = qvr.unwrap(made)
    kinds = [qvr.WrapType.Stitched] + [qvr.WrapType.Tile] * (len(sizes) - 1)
    assert info == (None, None, 640, 360, True, tuple(zip(kinds, sizes)))
    assert payloads == chunks and alpha is None
    with pytest.raises(qvr.DecodeError, match="^the frame holds stitched chunks, which unwrap.. takes out$"):
        qvr.decode(made)


@pytest.mark.parametrize("chunks, size, message", [
    ([], (2, 2), "there must be at least one chunk"),
    ([b"1"], (-2, 2), "order Alpha, type U8: there is no frame of -2x2"),
    ([b"1"], (1 << 32, 0), "order Alpha, type U8: a frame of 4294967296x0 is too large; it must stay below 4 GiB"),
    ([bytes(100000)], (640.0, 360), "width must be a whole number, not float"),
    ([b"1"], (640, "360"), "height must be a whole number, not str"),
    ([np.zeros((4, 4), np.uint8)[:, :2]], (2, 2),
     "this numpy.ndarray cannot be read as a run of bytes: it has gaps"),
    ([bytes(1)] + [memoryview(bytes(1 << 28))] * 16, (2, 2),
     "the payloads are too large: a frame holds less than 4 GiB"),
])
def test_what_cannot_be_stitched_is_refused(chunks, size, message):
    with pytest.raises(qvr.ArgumentError) as caught:
        qvr.wrap_tiles(chunks, *size)
    assert str(caught.value) == message


def test_frames_without_payloads_have_nothing_to_unwrap():
    stream = qvr.encode(np.zeros((2, 2), np.uint8), "Alpha")
    with pytest.raises(qvr.DecodeError, match="^the frame holds no wrapped payloads$"):
        qvr.unwrap(stream)


def box(kind, content):
    return (len(content) + 8).to_bytes(4, "little") + kind + content


@pytest.mark.parametrize("size, message", [
    (7, "'tile' box size expected to be at least 8 at offset 55"),
    (29, "can't read 21 bytes at offset 63"),
    (1000, "the payloads are said to have 1002 bytes, but the frame has only 83"),
    (0xFFFFFFFF, "the payloads are said to have 4294967297 bytes, but the frame has only 83"),
])
def test_payloads_that_say_more_than_there_is(size, message):
    made = bytearray(qvr.wrap_tiles([bytes(10), bytes(20)], 2, 2))
    made[55:59] = size.to_bytes(4, "little")
    with pytest.raises(qvr.DecodeError) as caught:
        qvr.unwrap(made)
    assert str(caught.value) == message


def test_frames_that_others_change_are_unwrapped_as_they_were(rng):
    """Buffers are made for the sizes of one reading; a second one of changed boxes would write past them."""
    chunk = rng.bytes(50)
    made = bytearray(qvr.wrap_tiles([chunk], 2, 2))
    decoder = qvr.Decoder()
    core = decoder._core

    class Meddler:
        unwrap = core.unwrap

        def describe(self, data):
            made[:] = bytes(len(made))
            return core.describe(data)

    decoder._core = Meddler()
    assert decoder.unwrap(made).payloads == [chunk]
    with pytest.raises(TypeError):
        core.unwrap((0,) * 7, bytearray(made), bytearray())


def test_samples_that_an_alpha_plane_does_not_name_are_zero():
    """A coded plane may name fewer rows than it has; what was in memory before must not show."""
    plane = box(b"sinf", bytes([64, 0, 0, 0, 64, 0, 0, 0]) + b"rl08\0") + box(b"sdat", b"\0")
    alone = box(b"pack", plane)
    beside = box(b"pack", box(b"QCXF", qcx(64, 64)) + plane)
    assert len(alone) == 38
    out = np.zeros((64, 64, 2), np.uint8)[..., 0]
    for _ in range(20):
        left = [np.full(64 * 64, 0xAA, np.uint8) for _ in range(20)]
        del left
        assert not qvr.decode(alone).any() and not qvr.decode(alone, out=out).any()
        assert not qvr.unwrap(beside).alpha.any()


def test_sizes_beyond_4_gib_are_refused():
    beside = bytearray(qvr.wrap(qcx(64, 64), np.zeros((64, 64), np.uint8), alpha_rle=True))
    at = beside.index(b"sinf") + 4
    beside[at : at + 8] = b"\xff" * 8
    with pytest.raises(qvr.DecodeError, match="a frame of 4294967295x4294967295 is too large; it must stay below"):
        qvr.unwrap(beside)


def test_order_of_boxes_matters():
    plane = box(b"sinf", bytes([2, 0, 0, 0, 2, 0, 0, 0]) + b"stch\0")
    tiles = box(b"pack", plane + box(b"sdat", box(b"tile", b"123")))
    message = "^the chunks begin with a 'tile' box, but the first must be a 'stch' box$"
    with pytest.raises(qvr.DecodeError, match=message):
        qvr.unwrap(tiles)
    grey = box(b"sinf", bytes([2, 0, 0, 0, 2, 0, 0, 0]) + b"rg08\0") + box(b"sdat", bytes(12))
    beside = box(b"pack", box(b"QCXF", qcx(2, 2)) + grey)
    assert qvr.info(beside).wrapped == ((qvr.WrapType.QCX, 5000),)
    with pytest.raises(qvr.DecodeError, match="^there is no lone alpha plane beside the QCX frame$"):
        qvr.unwrap(beside)


def test_a_wrapped_frame_cut_anywhere_is_refused():
    for made in (qvr.wrap(qcx(2, 2, 60), np.zeros((2, 2), np.uint8)), qvr.wrap_tiles([bytes(10), bytes(20)], 2, 2)):
        for size in range(len(made)):
            with pytest.raises(qvr.DecodeError):
                qvr.unwrap(made[:size])
