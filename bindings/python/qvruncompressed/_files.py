# SPDX-License-Identifier: BSD-3-Clause
"""Files of frames, one after the other: each begins with its 'pack' box, whose size is the size of the frame."""

import io
import itertools
import os
import shutil
import struct

from . import _core
from ._codec import Decoder, Encoder
from ._errors import ArgumentError, DecodeError, FileError
from ._formats import parse_format

HEADER = struct.Struct("<I4s")
PIECE = 1 << 24


def _open(file, mode, method):
    """(file object, its name, whether it is ours to close)"""
    if isinstance(file, (str, os.PathLike)):
        return open(file, mode), os.fspath(file), True
    if isinstance(file, io.TextIOBase) or not callable(getattr(file, method, None)):
        raise ArgumentError(f"expected a path or a binary file object with {method}(), got {type(file).__name__}")
    return file, str(getattr(file, "name", "the file")), False


_numbers = itertools.count()


def _names(path):
    """(the file that a path leads to, its name while it is written); no such name for devices and pipes."""
    # Asked of the path itself: what /dev/stdout leads to may have no other.
    if os.path.exists(path) and not os.path.isfile(path):
        return path, None
    target = os.path.realpath(path)
    return target, f"{target}.part-{os.getpid()}-{next(_numbers)}"


class Reader:
    """Reads the frames of a .qvr file: for frame in Reader("clip.qvr"): ...

    file: a path, or a binary file object with readinto(), which is not closed: a pipe will do.
    order, type, out: as for Decoder.decode; the frames of the iteration. threads: as for Decoder.

    index, offset: of the last frame that was read, counted from where reading began; -1 and 0 before the first.
    info: the FrameInfo of the last frame, if it was decoded; None after read_bytes().
    A reader is for one thread at a time. Raises FileError for a damaged file or frame; behind a frame that cannot be
    decoded reading can go on, behind one whose size is damaged it ends. So it does when an exception such as a timeout
    cuts a call short: later calls raise FileError.
    """

    def __init__(self, file, order=None, type=None, *, out=None, threads=1):
        self._how = (*parse_format(order, type), out)
        self._decoder = Decoder(threads)
        self._file, self.name, self._ours = _open(file, "rb", "readinto")
        self._buffer = bytearray()
        self._end = 0
        self._closed = self._damaged = self._reading = False
        self.index = -1
        self.offset = 0
        self.info = None

    def __iter__(self):
        return self

    def __next__(self):
        """The next frame, decoded."""
        frame = self._next()
        if not frame:
            raise StopIteration
        try:
            self.info = self._decoder.info(frame)
            return self._decoder.decode(frame, *self._how)
        except (DecodeError, MemoryError) as error:
            # The size is the frame's own, and damage can make it any.
            raise self._error(str(error) or "there is too little memory for this frame") from error

    def read_bytes(self):
        """The next frame as it stands in the file, for unwrap() and the like; b"" at the end."""
        return bytes(self._next())

    def close(self):
        """Ends the decoder, and closes the file if the reader opened it. Later calls are refused."""
        self._closed = True
        self._decoder.close()
        if self._ours:
            self._file.close()

    def __enter__(self):
        return self

    def __exit__(self, *raised):
        self.close()

    def _next(self):
        """A view of the next frame's bytes, empty at the end of the file and behind damage."""
        if self._closed:
            raise ArgumentError("the reader is closed")
        if self._reading:
            raise FileError(f"{self.name}: reading was interrupted behind offset {self._end}, and cannot go on")
        self._reading = True
        size, damage = (0, None) if self._damaged else self._read_frame()
        self._reading = False
        if not size and not damage:
            return memoryview(b"")
        self.index += 1
        self.offset = self._end
        self.info = None
        if damage:
            self._damaged = True
            raise self._error(damage)
        self._end += size
        return memoryview(self._buffer)[:size].toreadonly()

    def _read_frame(self):
        """Reads the next frame into the buffer: (its size, 0 at the end; what is wrong with it, or None)"""
        have = self._fill(0, HEADER.size)
        if have < HEADER.size:
            return have, f"only {have} bytes are left, fewer than a box header has" if have else None
        size, kind = HEADER.unpack_from(self._buffer)
        if kind != b"pack":
            return size, "a 'pack' box should begin here"
        if size < HEADER.size:
            return size, f"the 'pack' box says that it has {size} bytes, fewer than its own header"
        have = self._fill(HEADER.size, size)
        if have < size:
            return size, f"the 'pack' box says that the frame has {size} bytes, but the file ends after {have}"
        return size, None

    def _fill(self, have, want):
        """Reads on until the buffer holds `want` bytes, and says how many it holds. It grows with what the file has."""
        while have < want:
            room = min(want, max(2 * have, PIECE))
            if len(self._buffer) < room:
                # A new one: views of the old one may live on in the traceback of an error.
                self._buffer = self._buffer[:have].ljust(room, b"\0")
            count = self._file.readinto(memoryview(self._buffer)[have:room])
            if count is None:
                raise FileError(f"{self.name}: behind offset {self._end} the file has no bytes yet; a reader needs one "
                                "that waits for them (blocking)")
            if count == 0:
                break
            have += count
        return have

    def _error(self, what):
        return FileError(f"{self.name}: frame {self.index} at offset {self.offset}: {what}")


class Writer:
    """Writes frames into a .qvr file, one after the other.

    file: a path, or a binary file object, which is not closed. A file gets its name when the writer is closed and is
    PATH.part-PID-N until then; it has the mode of the one that it replaces. An exception inside `with`, or a frame that
    could be written in part only, removes it and leaves what was there before.
    order, type and the options: as for Encoder.encode. threads: as for Encoder. count: frames written so far.
    A writer is for one thread at a time.
    """

    def __init__(self, file, order=None, type=None, *, width=None, interlaced=False, alpha_rle=False, rle_slices=0,
                 threads=1):
        self._order, type = parse_format(order, type)
        self._how = dict(type=type, width=width, interlaced=interlaced, alpha_rle=alpha_rle, rle_slices=rle_slices)
        self._encoder = Encoder(threads)
        self._target = self._part = None
        if isinstance(file, (str, os.PathLike)):
            self._target, self._part = _names(file)
        self._file, self.name, self._ours = _open(self._part or file, "wb", "write")
        if self._part and os.path.exists(self._target):
            shutil.copymode(self._target, self._part)
        self.name = os.fspath(file) if self._ours else self.name
        self._closed = self._broken = False
        self.count = 0

    def write(self, array):
        """Encodes a frame and writes it. Errors are those of Encoder.encode and of the file."""
        self._require_usable()
        self._put(memoryview(self._encoder.encode(array, self._order, **self._how)))

    def write_bytes(self, data):
        """Writes a frame that is encoded already: what encode(), wrap() or Reader.read_bytes() gave."""
        self._require_usable()
        frame = memoryview(_core.frozen(data))
        size, kind = HEADER.unpack_from(frame) if len(frame) >= HEADER.size else (0, b"")
        if kind != b"pack" or size != len(frame):
            raise ArgumentError(f"these {len(frame)} bytes are not one whole frame")
        self._put(frame)

    def _require_usable(self):
        if self._closed:
            raise ArgumentError("the writer is closed")
        if self._broken:
            raise FileError(f"{self.name}: frame {self.count} was written in part, and nothing can follow it")

    def _put(self, frame):
        self._broken = True  # until the frame is whole
        while frame:
            written = self._file.write(frame)
            if not written:  # None: a raw file that would have to wait
                raise FileError(f"{self.name}: write() must return how many bytes it took, at least one, but returned "
                                f"{written}: frame {self.count} is not complete")
            frame = frame[written:]
        self._broken = False
        self.count += 1

    def close(self):
        """Ends the encoder; a file that the writer opened is closed and gets its name. Later calls are refused."""
        self._end(keep=True)

    def _end(self, keep):
        self._closed = True
        part, self._part = self._part, None
        try:
            self._encoder.close()
            if self._ours:
                self._file.close()
            if part and keep and not self._broken:
                os.replace(part, self._target)
                part = None
        finally:
            if part:
                os.unlink(part)

    def __enter__(self):
        return self

    def __exit__(self, *raised):
        self._end(keep=not any(raised))
