# SPDX-License-Identifier: BSD-3-Clause
"""Work without the interpreter lock, and handles that several threads share."""

import os
import signal
import subprocess
import sys
import threading

import numpy as np
import pytest

import frames
import qvruncompressed as qvr


def run_threads(count, work):
    """Runs work(index) on threads of their own and raises what they raised."""
    failures = []

    def guarded(index):
        try:
            work(index)
        except BaseException as error:
            failures.append(error)

    threads = [threading.Thread(target=guarded, args=(index,)) for index in range(count)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if failures:
        raise failures[0]


@pytest.fixture
def no_switches():
    """No thread has to give up the interpreter lock: it changes hands only where a thread gives it up by itself."""
    before = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    yield
    sys.setswitchinterval(before)


def sees_the_middle(call):
    """Whether this thread got to run while another one was inside call().

    Between saying that it begins and saying that it has ended the other thread gives up the interpreter lock only in
    the call, if at all. A call can be over before this thread wakes up, so there are many attempts.
    """
    for _ in range(200):
        begun = threading.Event()
        ended = []

        def work():
            begun.set()
            call()
            ended.append(True)

        thread = threading.Thread(target=work)
        thread.start()
        begun.wait()
        in_the_middle = not ended
        thread.join()
        if in_the_middle:
            return True
    return False


def test_the_interpreter_runs_on_while_frames_are_coded(no_switches):
    frame = np.zeros((2048, 2048, 4), np.uint8)
    frame[...] = np.arange(2048, dtype=np.uint32).astype(np.uint8)[:, None]
    stream = qvr.encode(frame, "RGBA", alpha_rle=True)
    qcx = bytearray(5000)
    qcx[24:28], qcx[40:44] = (2048).to_bytes(2, "big") * 2, (1300).to_bytes(4, "big")
    wrapped = qvr.wrap(qcx, frame[..., 3], alpha_rle=True)
    out = np.empty_like(frame)
    encoder, decoder = qvr.Encoder(), qvr.Decoder()
    alpha = frame[..., 3].copy()
    assert not sees_the_middle(lambda: sum(range(100000)))
    assert sees_the_middle(lambda: encoder.encode(frame, "RGBA", alpha_rle=True))
    assert sees_the_middle(lambda: decoder.decode(stream, "RGBA", out=out))
    assert sees_the_middle(lambda: encoder.wrap(qcx, alpha, alpha_rle=True))
    assert sees_the_middle(lambda: decoder.unwrap(wrapped))


@pytest.mark.parametrize("threads", [1, 3])
def test_one_handle_serves_many_threads(rng, threads):
    made = [frames.noise(rng, (8 + 5 * index, 40 + 7 * index, 4), np.uint8) for index in range(6)]
    streams = [qvr.encode(frame, "RGBA", alpha_rle=True) for frame in made]
    with qvr.Encoder(threads) as encoder, qvr.Decoder(threads) as decoder:

        def work(index):
            for turn in range(40):
                which = (index + turn) % len(made)
                assert encoder.encode(made[which], "RGBA", alpha_rle=True) == streams[which]
                assert (decoder.decode(streams[which], "RGBA") == made[which]).all()
                with pytest.raises(qvr.DecodeError, match=f"^pack box size.{len(streams[which])}. is greater"):
                    decoder.info(streams[which][:-1])

        run_threads(6, work)


def test_a_handle_may_be_closed_while_others_use_it(rng):
    frame = frames.noise(rng, (64, 64, 4), np.uint8)
    stream = qvr.encode(frame, "RGBA", alpha_rle=True)
    decoder = qvr.Decoder(2)
    ready = threading.Barrier(4)

    def work(index):
        ready.wait()
        if index == 0:
            decoder.close()
            return
        with pytest.raises(qvr.ArgumentError, match="^the decoder is closed$"):
            while True:
                assert (decoder.decode(stream, "RGBA") == frame).all()

    run_threads(4, work)


def test_a_handle_made_before_a_fork_works_in_the_child(rng):
    frame = frames.noise(rng, (64, 64, 4), np.uint8)
    encoder = qvr.Encoder(2)
    stream = encoder.encode(frame, "RGBA", alpha_rle=True)
    child = os.fork()
    if child == 0:
        signal.alarm(30)  # rather than hanging
        same = False
        try:
            same = encoder.encode(frame, "RGBA", alpha_rle=True) == stream
            encoder.close()
        finally:
            os._exit(0 if same else 1)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
    assert encoder.encode(frame, "RGBA", alpha_rle=True) == stream


def test_the_interpreter_may_end_while_frames_are_coded():
    code = """if True:
        import threading
        import numpy as np, qvruncompressed as qvr
        frame = np.zeros((1024, 1024, 4), np.uint8)
        encoder, begun = qvr.Encoder(), threading.Event()
        def work():
            while True:
                begun.set()
                encoder.encode(frame, "RGBA", alpha_rle=True)
        for _ in range(4):
            threading.Thread(target=work, daemon=True).start()
        begun.wait()
    """
    for _ in range(5):
        done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
        assert (done.returncode, done.stderr) == (0, "")


def test_closed_handles_say_so():
    for codec, use in ((qvr.Encoder(), lambda it: it.encode(np.zeros((1, 1), np.uint8), "Alpha")),
                       (qvr.Decoder(), lambda it: it.info(b""))):
        with codec as same:
            assert same is codec
        codec.close()
        with pytest.raises(qvr.ArgumentError, match=f"^the {type(codec).__name__.lower()} is closed$"):
            use(codec)


@pytest.mark.parametrize("threads", [0, 2, 5])
def test_bytes_do_not_depend_on_threads(rng, threads):
    frame = frames.noise(rng, (33, 20, 4), np.uint16)
    stream = qvr.encode(frame, "RGBA", "U16", alpha_rle=True)
    assert qvr.encode(frame, "RGBA", "U16", alpha_rle=True, threads=threads) == stream
    assert (qvr.decode(stream, "RGBA", threads=threads) == frame).all()
