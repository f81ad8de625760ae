# SPDX-License-Identifier: BSD-3-Clause
"""Frames and bitstreams written out by hand, from docs/format.md."""

import numpy as np
import pytest

import qvruncompressed as qvr

RGBA = """
5a000000 7061636b
2b000000 69636d70  15000000 73696e66 02000000 01000000 72673038 00  0e000000 73646174 102030 405060
27000000 69636d70  15000000 73696e66 02000000 01000000 20613038 00  0a000000 73646174 ff80
"""

# Two rows 00 01 02 03 of coded alpha, in one slice.
CODED = """
33000000 7061636b  15000000 73696e66 04000000 02000000 726c3038 00  16000000 73646174
01bffffc6fffff90dfad54396aa0
"""

# Four samples 0x3ff 0x000 0x201 0x102 of 10 bits, in the top bits of words: high bytes, then low bits of four.
UYVY_U10 = """
2a000000 7061636b  15000000 73696e66 02000000 01000000 79323130 00  0d000000 73646174
ff008040 93
"""

I420 = """
7d000000 7061636b
29000000 69636d70  15000000 73696e66 02000000 02000000 20793038 01  0c000000 73646174 01020304
26000000 69636d70  15000000 73696e66 01000000 01000000 63623038 01  09000000 73646174 05
26000000 69636d70  15000000 73696e66 01000000 01000000 63723038 01  09000000 73646174 06
"""

CASES = {
    "RGBA": (np.array([[[0x10, 0x20, 0x30, 0xFF], [0x40, 0x50, 0x60, 0x80]]], np.uint8), "RGBA", "U8", {}, RGBA),
    "coded": (np.array([[0, 1, 2, 3]] * 2, np.uint8), "Alpha", "U8", {"alpha_rle": True, "rle_slices": 1}, CODED),
    "ten bits": (np.array([[[0xFFC0, 0x0000], [0x8040, 0x4080]]], np.uint16), "UYVY", "U10", {}, UYVY_U10),
    "v210": (np.array([[0x201 << 20 | 0x3FF, 0x102, 0, 0]], np.uint32), "v210", None, {"width": 2}, UYVY_U10),
    "I420": ((np.array([[1, 2], [3, 4]], np.uint8), np.array([[5]], np.uint8), np.array([[6]], np.uint8)), "I420",
             "U8", {"interlaced": True}, I420),
}


@pytest.mark.parametrize("name", CASES)
def test_frames_and_their_bytes(name):
    frame, order, type, options, hex = CASES[name]
    stream = bytes.fromhex(hex)
    assert qvr.encode(frame, order, type, **options).hex() == stream.hex()
    back = qvr.decode(stream, order, type)
    if isinstance(frame, tuple):
        assert all((a == b).all() for a, b in zip(back, frame))
    else:
        assert (back == frame).all()


def test_what_they_say_of_themselves():
    assert qvr.info(bytes.fromhex(RGBA)) == (qvr.Order.ARGB, qvr.Type.U8, 2, 1, False, ())
    assert qvr.info(bytes.fromhex(CODED)) == (qvr.Order.Alpha, qvr.Type.U8, 4, 2, False, ())
    assert qvr.info(bytes.fromhex(UYVY_U10)) == (qvr.Order.UYVY, qvr.Type.U10, 2, 1, False, ())
    assert qvr.info(bytes.fromhex(I420)) == (qvr.Order.I420, qvr.Type.U8, 2, 2, True, ())
