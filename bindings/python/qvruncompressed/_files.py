# SPDX-License-Identifier: BSD-3-Clause
"""Files of frames, one after the other: each begins with its 'pack' box, whose size is the size of the frame."""

import itertools
import os
import struct

from ._codec import Decoder, Encoder
from ._errors import ArgumentError, DecodeError, FileError

HEADER = struct.Struct("<I4s")
PIECE = 1 << 24


def _open(file, mode):
    """(file object, its name, whether it is ours to close)"""
    if isinstance(file, (str, os.PathLike)):
        return open(file, mode), os.fspath(file), True
    return file, str(getattr(file, "name", "the file")), False


_numbers = itertools.count()


def _names(path):
    """(the file that a path leads to, its name while it is written); no such name for devices and pipes."""
    target = os.path.realpath(os.fspath(path))
    if os.path.exists(target) and not os.path.isfile(target):
        return target, None
    return target, f"{target}.part-{os.getpid()}-{next(_numbers)}"


class Reader:
    """Reads the frames of a .qvr file: for frame in Reader("clip.qvr"): ...

    file: a path, or a binary file object with readinto(), which is not closed: a pipe will do.
    order, type, out: as for Decoder.decode; the frames of the iteration. threads: as for Decoder.

    index, offset: of the last frame that was read; -1 and 0 before the first. info: its FrameInfo, once it was decoded.
    A reader is for one thread at a time. Raises FileError for a damaged file or frame; behind a frame that cannot be
    decoded reading can go on, behind one whose size is damaged it ends.
    """

    def __init__(self, file, order=None, type=None, *, out=None, threads=1):
        self._decoder = Decoder(threads)
        self._how = (order, type, out)
        self._file, self.name, self._ours = _open(file, "rb")
        self._buffer = bytearray()
        self._end = 0
        self._damaged = False
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
        except DecodeError as error:
            raise self._error(str(error)) from error

    def read_bytes(self):
        """The next frame as it stands in the file, for unwrap() and the like; b"" at the end."""
        return bytes(self._next())

    def close(self):
        """Ends the decoder, and closes the file if the reader opened it."""
        self._decoder.close()
        if self._ours:
            self._file.close()

    def __enter__(self):
        return self

    def __exit__(self, *raised):
        self.close()

    def _next(self):
        """A view of the next frame's bytes, empty at the end of the file and behind damage."""
        have = 0 if self._damaged else self._fill(0, HEADER.size)
        if have == 0:
            return memoryview(b"")
        self.index += 1
        self.offset = self._end
        self.info = None
        self._damaged = True
        if have < HEADER.size:
            raise self._error(f"only {have} bytes are left, fewer than a box header has")
        size, kind = HEADER.unpack_from(self._buffer)
        if kind != b"pack":
            raise self._error("a 'pack' box should begin here")
        if size < HEADER.size:
            raise self._error(f"the 'pack' box says that it has {size} bytes, fewer than its own header")
        have = self._fill(HEADER.size, size)
        if have < size:
            raise self._error(f"the 'pack' box says that the frame has {size} bytes, but the file ends after {have}")
        self._damaged = False
        self._end += size
        return memoryview(self._buffer)[:size].toreadonly()

    def _fill(self, have, want):
        """Reads on until the buffer holds `want` bytes, and says how many it holds. It grows with what the file has."""
        while have < want:
            room = min(want, max(2 * have, PIECE))
            if len(self._buffer) < room:
                # A new one: views of the old one may live on in the traceback of an error.
                self._buffer = self._buffer[:have].ljust(room, b"\0")
            count = self._file.readinto(memoryview(self._buffer)[have:room])
            if not count:
                break
            have += count
        return have

    def _error(self, what):
        return FileError(f"{self.name}: frame {self.index} at offset {self.offset}: {what}")


class Writer:
    """Writes frames into a .qvr file, one after the other.

    file: a path, or a binary file object, which is not closed. A file gets its name when the writer is closed and is
    PATH.part-PID-N until then; an exception inside `with` removes it and leaves what was there before.
    order, type and the options: as for Encoder.encode. threads: as for Encoder. count: frames written so far.
    A writer is for one thread at a time.
    """

    def __init__(self, file, order=None, type=None, *, width=None, interlaced=False, alpha_rle=False, rle_slices=0,
                 threads=1):
        self._encoder = Encoder(threads)
        self._order = order
        self._how = dict(type=type, width=width, interlaced=interlaced, alpha_rle=alpha_rle, rle_slices=rle_slices)
        self._target = self._part = None
        if isinstance(file, (str, os.PathLike)):
            self._target, self._part = _names(file)
        self._file, self.name, self._ours = _open(self._part or file, "wb")
        self.name = os.fspath(file) if self._ours else self.name
        self.count = 0

    def write(self, array):
        """Encodes a frame and writes it. Errors are those of Encoder.encode and of the file."""
        self._put(memoryview(self._encoder.encode(array, self._order, **self._how)))

    def write_bytes(self, data):
        """Writes a frame that is encoded already: what encode(), wrap() or Reader.read_bytes() gave."""
        frame = memoryview(data).cast("B")
        size, kind = HEADER.unpack_from(frame) if len(frame) >= HEADER.size else (0, b"")
        if kind != b"pack" or size != len(frame):
            raise ArgumentError(f"these {len(frame)} bytes are not one whole frame")
        self._put(frame)

    def _put(self, frame):
        while frame:
            written = self._file.write(frame)
            if not written:  # None: a raw file that would have to wait
                raise FileError(f"{self.name}: it takes no more bytes, so that frame {self.count} is not complete")
            frame = frame[written:]
        self.count += 1

    def close(self):
        """Ends the encoder; a file that the writer opened is closed and gets its name."""
        self._end(keep=True)

    def _end(self, keep):
        part, self._part = self._part, None
        try:
            self._encoder.close()
            if self._ours:
                self._file.close()
            if part and keep:
                os.replace(part, self._target)
                part = None
        finally:
            if part:
                os.unlink(part)

    def __enter__(self):
        return self

    def __exit__(self, *raised):
        self._end(keep=not any(raised))
