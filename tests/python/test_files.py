# SPDX-License-Identifier: BSD-3-Clause
"""Files of many frames."""

import errno
import io
import os
import subprocess
import sys
import threading

import numpy as np
import pytest

import frames
import qvruncompressed as qvr


@pytest.fixture
def clip(rng, tmp_path):
    """(path of a file of seven frames, the frames)"""
    made = [frames.noise(rng, (6, 8, 4), np.uint8) for _ in range(7)]
    path = tmp_path / "clip.qvr"
    with qvr.Writer(path, "RGBA", alpha_rle=True) as writer:
        for frame in made:
            writer.write(frame)
        assert writer.count == 7
    return path, made


def test_what_is_written_is_read(clip):
    path, made = clip
    with qvr.Reader(path, "RGBA") as reader:
        assert reader.index == -1
        for index, frame in enumerate(reader):
            assert (frame == made[index]).all()
            assert reader.index == index
            assert reader.info == (qvr.Order.ARGB, qvr.Type.U8, 8, 6, False, ())
        assert index == 6
        assert list(reader) == [] and (reader.index, reader.offset) == (6, path.stat().st_size - len(
            qvr.encode(made[6], "RGBA", alpha_rle=True)))
    assert path.read_bytes() == b"".join(qvr.encode(frame, "RGBA", alpha_rle=True) for frame in made)


def test_frames_keep_their_samples_when_others_are_read(clip):
    path, made = clip
    with qvr.Reader(str(path), "RGBA") as reader:
        assert all((a == b).all() for a, b in zip(list(reader), made))


def test_offsets_and_bytes_are_those_of_the_file(clip):
    path, made = clip
    data = path.read_bytes()
    with qvr.Reader(path) as reader:
        at = 0
        while frame := reader.read_bytes():
            assert reader.offset == at and data[at : at + len(frame)] == frame
            at += len(frame)
        assert at == len(data) and reader.read_bytes() == b"" and reader.index == 6


def test_one_array_can_take_all_frames(clip):
    path, made = clip
    out = np.zeros((6, 8, 4), np.uint8)
    with qvr.Reader(path, "RGBA", out=out) as reader:
        for frame, wanted in zip(reader, made):
            assert frame is out and (out == wanted).all()


def test_frames_of_any_size_and_kind_share_a_file(rng, tmp_path):
    path = tmp_path / "mixed.qvr"
    planes = frames.random_planes(rng, "A420", "U16", 6, 4)
    large = frames.noise(rng, (2000, 3000, 4), np.uint8)
    words = frames.noise(rng, (2, 8), np.uint32) & np.uint32(0x3FFFFFFF)
    with qvr.Writer(path) as writer:
        writer.write_bytes(qvr.encode(planes, "A420", "U16"))
        writer.write_bytes(memoryview(qvr.encode(large, "RGBA")))
        writer.write_bytes(bytearray(qvr.wrap_tiles([b"one"], 4, 4)))
        writer.write_bytes(qvr.encode(words, "v210", interlaced=True))
    with qvr.Reader(path) as reader:
        assert frames.same(next(reader), planes)
        assert (next(reader)[..., 1:] == large[..., :3]).all()
        assert qvr.unwrap(reader.read_bytes()).payloads == [b"one"]
        assert next(reader).dtype == np.uint16 and reader.info.interlaced


def test_options_of_the_writer_are_those_of_the_encoder(rng, tmp_path):
    frame = frames.noise(rng, (4, 8), np.uint32)
    with qvr.Writer(tmp_path / "a.qvr", "UYVY", "U10Packed", width=10, interlaced=True, threads=2) as writer:
        writer.write(frame)
    assert (tmp_path / "a.qvr").read_bytes() == qvr.encode(frame, "v210", width=10, interlaced=True)


def test_file_objects_and_pipes(clip):
    path, made = clip
    stream = io.BytesIO()
    with qvr.Writer(stream, "RGBA", alpha_rle=True) as writer:
        for frame in made:
            writer.write(frame)
    assert stream.getvalue() == path.read_bytes()
    stream.seek(0)
    with qvr.Reader(stream, "RGBA") as reader:
        assert (next(reader) == made[0]).all()
    assert not stream.closed

    reading, writing = os.pipe()

    def trickle():
        with open(writing, "wb", buffering=0) as out:
            for byte in path.read_bytes():
                out.write(bytes([byte]))

    thread = threading.Thread(target=trickle)
    thread.start()
    with open(reading, "rb", buffering=0) as source, qvr.Reader(source, "RGBA") as reader:
        assert all((a == b).all() for a, b in zip(reader, made)) and reader.index == 6
    thread.join()


def test_a_writer_goes_on_after_short_writes(rng):
    class Narrow(io.BytesIO):
        def write(self, data):
            return super().write(data[:5])

    narrow = Narrow()
    frame = frames.noise(rng, (2, 2, 3), np.uint8)
    with qvr.Writer(narrow, "RGB") as writer:
        writer.write(frame)
    assert narrow.getvalue() == qvr.encode(frame, "RGB")


@pytest.mark.parametrize("taken", [None, 0])
def test_a_writer_ends_when_nothing_is_taken(rng, taken):
    class Full(io.BytesIO):
        def write(self, data):
            return taken

    with qvr.Writer(Full(), "RGB") as writer:
        with pytest.raises(qvr.FileError, match=f"^the file: write.. must return how many bytes it took, at least one, "
                                                f"but returned {taken}: frame 0 is not complete$"):
            writer.write(frames.noise(rng, (2, 2, 3), np.uint8))
        assert writer.count == 0


def test_nothing_follows_a_frame_that_was_written_in_part(rng, tmp_path):
    class Full:
        """Takes a few bytes, then the disk is full for once."""

        def __init__(self, file):
            self.file, self.room = file, 5
            self.close = file.close

        def write(self, data):
            if self.room == 0:
                self.room = 1000
                raise OSError(errno.ENOSPC, "no space")
            taken = min(len(data), self.room)
            self.room -= taken
            return self.file.write(data[:taken])

    path = tmp_path / "a.qvr"
    path.write_bytes(b"before")
    frame = frames.noise(rng, (2, 2, 3), np.uint8)
    with qvr.Writer(path, "RGB") as writer:
        writer._file = Full(writer._file)
        with pytest.raises(OSError, match="no space"):
            writer.write(frame)
        for again in (lambda: writer.write(frame), lambda: writer.write_bytes(qvr.encode(frame, "RGB"))):
            with pytest.raises(qvr.FileError, match="frame 0 was written in part, and nothing can follow it$"):
                again()
    assert path.read_bytes() == b"before" and os.listdir(tmp_path) == ["a.qvr"]


class Trickle(io.RawIOBase):
    """Bytes, then what a file that does not wait or one that is interrupted does, then more bytes."""

    def __init__(self, *events):
        self.events = list(events)

    def readinto(self, buffer):
        event = self.events.pop(0) if self.events else b""
        if isinstance(event, bytes):
            taken = event[: len(buffer)]
            buffer[: len(taken)] = taken
            self.events[:0] = [event[len(taken) :]] if len(event) > len(taken) else []
            return len(taken)
        if event is None:
            return None
        raise event


@pytest.mark.parametrize("inside", [0, 5, 20])
def test_a_file_that_does_not_wait_does_not_end(inside):
    stream = qvr.encode(np.zeros((2, 2, 3), np.uint8), "RGB")
    reader = qvr.Reader(Trickle(stream + stream[:inside], None, stream[inside:]))
    next(reader)
    with pytest.raises(qvr.FileError) as caught:
        next(reader)
    assert str(caught.value) == (f"the file: behind offset {len(stream)} the file has no bytes yet; "
                                 "a reader needs one that waits for them (blocking)")


@pytest.mark.parametrize("inside", [0, 5, 20])
@pytest.mark.parametrize("interruption", [TimeoutError, KeyboardInterrupt])
def test_an_interruption_is_not_the_end(inside, interruption):
    stream = qvr.encode(np.zeros((2, 2, 3), np.uint8), "RGB")
    reader = qvr.Reader(Trickle(stream + stream[:inside], interruption(), stream[inside:]))
    next(reader)
    with pytest.raises(interruption):
        next(reader)
    for again in (lambda: next(reader), reader.read_bytes):
        with pytest.raises(qvr.FileError) as caught:
            again()
        assert str(caught.value) == f"the file: reading was interrupted behind offset {len(stream)}, and cannot go on"
    assert (reader.index, reader.offset) == (0, 0)


def test_an_empty_file_has_no_frames(tmp_path):
    (tmp_path / "empty.qvr").touch()
    with qvr.Reader(tmp_path / "empty.qvr") as reader:
        assert list(reader) == [] and reader.index == -1


def message_of(reader):
    with pytest.raises(qvr.FileError) as caught:
        list(reader)
    return str(caught.value)


def test_a_file_cut_anywhere_gives_its_whole_frames(rng, tmp_path):
    made = [frames.noise(rng, (2, 2, 3), np.uint8) for _ in range(3)]
    streams = [qvr.encode(frame, "RGB") for frame in made]
    data = b"".join(streams)
    size = len(streams[0])
    for end in range(len(data)):
        reader = qvr.Reader(io.BytesIO(data[:end]))
        for index in range(end // size):
            assert (next(reader) == made[index]).all()
        if end % size:
            index, left = divmod(end, size)
            what = f"only {left} bytes are left, fewer than a box header has" if left < 8 else \
                f"the 'pack' box says that the frame has {size} bytes, but the file ends after {left}"
            assert message_of(reader) == f"the file: frame {index} at offset {index * size}: {what}"
        else:
            assert list(reader) == []


@pytest.mark.parametrize("data, message", [
    (b"PNG?" * 8, "frame 0 at offset 0: a 'pack' box should begin here"),
    (b"\x07\0\0\0pack", "frame 0 at offset 0: the 'pack' box says that it has 7 bytes, fewer than its own header"),
    (b"\xff\xff\xff\xffpack" + bytes(100),
     "frame 0 at offset 0: the 'pack' box says that the frame has 4294967295 bytes, but the file ends after 108"),
    (b"\x08\0\0\0pack", "frame 0 at offset 0: at least one 'sinf' and one 'sdat' box expected"),
])
def test_damage_is_told_with_its_place(data, message, tmp_path):
    path = tmp_path / "damaged.qvr"
    path.write_bytes(data)
    with qvr.Reader(path) as reader:
        assert message_of(reader) == f"{path}: {message}"
        assert list(reader) == [] and (reader.index, reader.offset) == (0, 0)


def test_sizes_that_a_damaged_frame_claims_are_told_with_its_place(monkeypatch):
    frame = bytearray(qvr.encode(np.zeros((2, 2), np.uint8), "Alpha", alpha_rle=True))
    whole = bytes(frame)
    at = frame.index(b"sinf") + 4
    frame[at : at + 8] = b"\xff" * 8
    with pytest.raises(qvr.FileError) as caught:
        list(qvr.Reader(io.BytesIO(whole + frame)))
    assert str(caught.value) == (f"the file: frame 1 at offset {len(whole)}: order Alpha, type U8: "
                                 "a frame of 4294967295x4294967295 is too large; it must stay below 4 GiB")

    def none_left(*_):
        raise MemoryError

    reader = qvr.Reader(io.BytesIO(whole))
    monkeypatch.setattr(reader._decoder, "decode", none_left)
    with pytest.raises(qvr.FileError, match="^the file: frame 0 at offset 0: there is too little memory for this"):
        next(reader)


def test_reading_goes_on_behind_a_frame_that_cannot_be_decoded(rng):
    frame = frames.noise(rng, (2, 2, 3), np.uint8)
    stream = qvr.encode(frame, "RGB")
    reader = qvr.Reader(io.BytesIO(b"\x08\0\0\0pack" + stream))
    errors = []
    with pytest.raises(qvr.FileError) as caught:
        next(reader)
    errors.append(caught)  # and its traceback, with all that it refers to
    assert (next(reader) == frame).all() and (reader.index, reader.offset) == (1, 8)


def test_errors_that_are_kept_do_not_hold_the_reader_up(rng):
    small, large = qvr.encode(np.zeros((1, 1, 3), np.uint8), "RGB"), frames.noise(rng, (2000, 3000, 3), np.uint8)
    reader = qvr.Reader(io.BytesIO(small + qvr.encode(large, "RGB")), out=np.zeros((2, 2, 3), np.uint8))
    with pytest.raises(qvr.ArgumentError) as caught:
        next(reader)
    assert len(reader.read_bytes()) > large.nbytes and caught.tb is not None


@pytest.mark.parametrize("data", [b"", b"1234567", b"\x08\0\0\0pick", b"\x09\0\0\0pack", b"\x08\0\0\0pack1"])
def test_only_whole_frames_are_written(data):
    stream = io.BytesIO()
    writer = qvr.Writer(stream)
    with pytest.raises(qvr.ArgumentError) as caught:
        writer.write_bytes(data)
    assert str(caught.value) == f"these {len(data)} bytes are not one whole frame"
    with pytest.raises(qvr.ArgumentError, match="^samples cannot be encoded without an order$"):
        writer.write(np.zeros((2, 2), np.uint8))
    assert stream.getvalue() == b"" and writer.count == 0


@pytest.mark.parametrize("file, got", [
    (io.StringIO(), "StringIO"), (0, "int"), (b"a.qvr", "bytes"), (None, "NoneType")])
def test_only_binary_files_are_taken(file, got):
    for kind, method in ((qvr.Reader, "readinto"), (qvr.Writer, "write")):
        with pytest.raises(qvr.ArgumentError) as caught:
            kind(file)
        assert str(caught.value) == f"expected a path or a binary file object with {method}(), got {got}"


def test_names_are_checked_before_a_file_is_made(tmp_path):
    for kind in (qvr.Reader, qvr.Writer):
        for names in (("NV12",), ("RGB", "U14"), ("Alpha", "Half")):
            with pytest.raises(qvr.ArgumentError):
                kind(tmp_path / "a.qvr", *names)
    assert os.listdir(tmp_path) == []


def test_a_missing_file_is_an_os_error(tmp_path):
    with pytest.raises(FileNotFoundError):
        qvr.Reader(tmp_path / "none.qvr")


def test_files_that_were_opened_are_closed(clip):
    path, made = clip
    reader = qvr.Reader(path)
    reader.close()
    reader.close()
    with pytest.raises(ValueError):
        next(reader)


def test_closed_readers_and_writers_say_so(clip):
    stream = io.BytesIO(clip[0].read_bytes())
    reader, writer = qvr.Reader(stream), qvr.Writer(io.BytesIO(), "RGB")
    frame = np.zeros((2, 2, 3), np.uint8)
    reader.close()
    writer.close()
    for use, name in ((lambda: next(reader), "reader"), (reader.read_bytes, "reader"),
                      (lambda: writer.write(frame), "writer"),
                      (lambda: writer.write_bytes(qvr.encode(frame, "RGB")), "writer")):
        with pytest.raises(qvr.ArgumentError, match=f"^the {name} is closed$"):
            use()
    assert stream.tell() == 0 and not stream.closed


def test_a_file_appears_when_it_is_closed_well(tmp_path):
    path = tmp_path / "a.qvr"
    frame = np.zeros((2, 2, 4), np.uint8)
    with qvr.Writer(path, "RGBA") as writer:
        writer.write(frame)
        assert writer.name == str(path) and not path.exists()
    whole = path.read_bytes()
    assert whole == qvr.encode(frame, "RGBA") and os.listdir(tmp_path) == ["a.qvr"]
    with pytest.raises(KeyError):
        with qvr.Writer(path, "RGBA") as writer:
            writer.write(frame)
            writer.write(frame)
            raise KeyError
    assert path.read_bytes() == whole and os.listdir(tmp_path) == ["a.qvr"]
    writer.close()  # again: nothing
    assert os.listdir(tmp_path) == ["a.qvr"]


def test_frames_without_pixels_are_not_made():
    for shape in ((0, 20, 4), (20, 0, 4)):
        with pytest.raises(qvr.ArgumentError, match="has no pixels"):
            qvr.encode(np.zeros(shape, np.uint8), "RGBA")
    for size in ((0, 20), (20, 0)):
        with pytest.raises(qvr.ArgumentError, match="has no pixels"):
            qvr.wrap_tiles([b"a"], *size)


def test_info_is_that_of_a_decoded_frame(clip):
    with qvr.Reader(clip[0]) as reader:
        next(reader)
        assert reader.info.width == 8
        reader.read_bytes()
        assert reader.info is None and reader.index == 1


@pytest.mark.parametrize("mode", [0o600, 0o664])
def test_a_file_that_is_replaced_keeps_its_mode(tmp_path, mode):
    path, link = tmp_path / "a.qvr", tmp_path / "link.qvr"
    path.touch()
    path.chmod(mode)
    link.symlink_to(path)
    with qvr.Writer(link):
        (part,) = tmp_path.glob("*.part-*")
        assert part.stat().st_mode & 0o777 == mode
    assert path.stat().st_mode & 0o777 == mode and link.is_symlink()


def test_standard_output_may_be_a_pipe():
    code = "import numpy, qvruncompressed as qvr\n" \
        "with qvr.Writer('/dev/stdout', 'RGB') as writer: writer.write(numpy.zeros((2, 2, 3), numpy.uint8))"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True)
    assert done.stdout == qvr.encode(np.zeros((2, 2, 3), np.uint8), "RGB") and done.stderr == b""
