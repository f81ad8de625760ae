# SPDX-License-Identifier: BSD-3-Clause
"""All pairs there and back, with any bits in their samples."""

import numpy as np
import pytest

import frames
import qvruncompressed as qvr

SIZES = [(2, 2), (12, 4), (34, 6), (8, 2)]

# What comes back where no alpha is stored: the order without, and where its samples stood.
COLOURS = {
    "ARGB": ("RGB", [1, 2, 3]),
    "BGRA": ("BGR", [0, 1, 2]),
    "RGBA": ("RGB", [0, 1, 2]),
    "ABGR": ("BGR", [1, 2, 3]),
    "UYAVYA": ("UYVY", [0, 1]),
    "YUVA444": ("YUV444", [1, 0, 2]),
}
COLOUR_PLANES = {"A420": ("I420", 3), "YUY2_A": ("YUY2", 1), "UYVY_A": ("UYVY", 1)}


def v210_samples(words, width):
    """The 10-bit samples of the rows of a frame, two for each pixel, and those behind them."""
    samples = np.stack([words >> shift & 0x3FF for shift in (0, 10, 20)], axis=-1).reshape(len(words), -1)
    return samples[:, : 2 * width], samples[:, 2 * width :]


def without_alpha(order, planes):
    if order in COLOURS:
        target, samples = COLOURS[order]
        return target, [planes[0][..., samples]]
    target, count = COLOUR_PLANES[order]
    return target, planes[:count]


def check(order, type, stream, planes, width):
    """Whether the stream decodes to what is kept of the planes."""
    stores_alpha = type in ("U8", "U16")
    if not stores_alpha and (order in COLOURS or order in COLOUR_PLANES):
        with pytest.raises(qvr.DecodeError, match="^Only 8 and 16 bit alpha is supported$"):
            qvr.decode(stream, order, type)
        order, planes = without_alpha(order, planes)
    back = frames.as_planes(qvr.decode(stream, order, type))
    if type == "U10Packed":
        (wanted, _), (found, behind) = v210_samples(planes[0], width), v210_samples(back[0], width)
        assert (found == wanted).all() and not behind.any()
        return
    assert [plane.dtype for plane in back] == [plane.dtype for plane in planes]
    for found, wanted in zip(back, planes):
        assert found.shape == wanted.shape
        assert (frames.words(found) == frames.kept(wanted, type)).all()


@pytest.mark.parametrize("order, type", frames.pairs())
def test_samples_come_back(rng, order, type):
    for width, height in SIZES:
        planes = frames.random_planes(rng, order, type, width, height)
        stream = qvr.encode(frames.as_frame(planes), order, type, width=width)
        assert qvr.info(stream)[2:] == (width, height, False, ())
        check(order, type, stream, planes, width)


@pytest.mark.parametrize("order, type", frames.pairs())
def test_arrays_with_gaps_give_the_same_bytes(rng, order, type):
    width, height = 12, 4
    planes = frames.random_planes(rng, order, type, width, height)
    stream = qvr.encode(frames.as_frame(planes), order, type)
    views, arounds = zip(*(frames.with_gaps(rng, plane) for plane in planes))
    before = [around.copy() for around in arounds]
    assert qvr.encode(frames.as_frame(views), order, type) == stream
    assert frames.same(arounds, before)
    for turned in (np.asfortranarray, lambda plane: plane[::-1].copy()[::-1],
                   lambda plane: np.repeat(plane, 2, 1)[:, ::2]):
        assert qvr.encode(frames.as_frame([turned(plane) for plane in planes]), order, type) == stream


@pytest.mark.parametrize("order, type", [(o, t) for o, t in frames.pairs() if t in ("U8", "U16")])
def test_coded_alpha_comes_back(rng, order, type):
    width, height = 34, 6
    planes = frames.random_planes(rng, order, type, width, height)
    views = [frames.with_gaps(rng, plane)[0] for plane in planes]
    for slices in (0, 1, 255):
        stream = qvr.encode(frames.as_frame(planes), order, type, alpha_rle=True, rle_slices=slices)
        assert qvr.encode(frames.as_frame(views), order, type, alpha_rle=True, rle_slices=slices, threads=3) == stream
        check(order, type, stream, planes, width)


def test_other_orders_of_the_same_planes(rng):
    rgba = frames.noise(rng, (3, 5, 4), np.uint8)
    stream = qvr.encode(rgba, "RGBA")
    for order in ("ARGB", "BGRA", "ABGR", "RGB", "BGR"):
        wanted = rgba[..., ["RGBA".index(letter) for letter in order]]
        assert (qvr.decode(stream, order) == wanted).all()
    assert (qvr.decode(stream) == rgba[..., [3, 0, 1, 2]]).all()


def test_420_with_alpha_decodes_without(rng):
    planes = frames.random_planes(rng, "A420", "U8", 8, 4)
    stream = qvr.encode(planes, "A420")
    assert frames.same(qvr.decode(stream, "I420"), planes[:3])


def test_fixed_point_decodes_to_float():
    frame = np.array([[[-32768, 0, 16384]], [[1, -1, 32767]]], np.int16)
    assert (qvr.decode(qvr.encode(frame, "RGB"), type="Float") == frame.astype(np.float32) / 16384).all()


def test_interlaced_is_kept(rng):
    frame = frames.noise(rng, (2, 2, 3), np.uint8)
    assert qvr.info(qvr.encode(frame, "RGB", interlaced=True)).interlaced is True
    assert qvr.info(qvr.encode(frame, "RGB")).interlaced is False


@pytest.mark.parametrize("shape", [(0, 4, 4), (4, 0, 4), (0, 0, 4)])
def test_frames_without_pixels(shape):
    # None are made (test_files), but what others wrote is read.
    height, width, _ = shape
    size = width.to_bytes(4, "little") + height.to_bytes(4, "little")
    stream = b"\x25\0\0\0pack\x15\0\0\0sinf" + size + b"rg08\0" + b"\x08\0\0\0sdat"
    back = qvr.decode(stream, "RGB")
    assert back.shape == shape[:2] + (3,)


def test_any_buffer_is_decoded(rng, tmp_path):
    frame = frames.noise(rng, (4, 6, 3), np.uint8)
    stream = qvr.encode(frame, "RGB")
    path = tmp_path / "frame.qvr"
    path.write_bytes(stream)
    import array
    import mmap
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
        buffers = [stream, bytearray(stream), memoryview(stream), memoryview(b"12" + stream)[2:], mapped,
                   array.array("B", stream), np.frombuffer(stream, np.uint8), np.memmap(path, np.uint8, "r")]
        for data in buffers:
            assert qvr.info(data) == qvr.info(stream)
            assert (qvr.decode(data) == frame).all()
        buffers.clear()
        del data


def test_bytes_behind_a_frame_do_not_matter(rng):
    frame = frames.noise(rng, (4, 6, 3), np.uint8)
    assert (qvr.decode(qvr.encode(frame, "RGB") + b"behind") == frame).all()


@pytest.mark.parametrize("order, hex", [
    ("YUY2", "0201 0403 0605 0007"),
    ("UYVY", "0102 0304 0506 0700"),
    ("UYAVYA", "0102a0 0304a1 0506a2 070000"),
])
def test_an_odd_width_of_another_encoder_has_one_column_more(order, hex):
    colour, alpha = bytes(range(1, 8)), b"\xa0\xa1\xa2"

    def box(kind, content):
        return (len(content) + 8).to_bytes(4, "little") + kind + content

    def plane(code, data):
        size = (3).to_bytes(4, "little") + (1).to_bytes(4, "little")
        return box(b"sinf", size + code + b"\0") + box(b"sdat", data)

    if order == "UYAVYA":
        stream = box(b"pack", box(b"icmp", plane(b"y208", colour)) + box(b"icmp", plane(b" a08", alpha)))
    else:
        stream = box(b"pack", plane(b"y208", colour))
    back = qvr.decode(stream, order)
    assert back.shape == (1, 4, 3 if order == "UYAVYA" else 2)
    assert back.tobytes() == bytes.fromhex(hex)
