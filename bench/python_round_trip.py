#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What a frame's way through the Python package costs, beside a copy of the same frame by NumPy.

Copy, encoding and decoding take turns, so that whatever else the machine does meets all of them. Shown is the median of
each as a multiple of the copy's median: 1.00 is as long as the copy took. Encoding makes new bytes each time, and so
does 'copy, new'; decoding writes into an array that is there, as 'copy' does.
"""

import argparse
import statistics
import time

import numpy as np

import qvruncompressed as qvr

WIDTH, HEIGHT = 1920, 1080


def seconds(call):
    start = time.perf_counter()
    call()
    return time.perf_counter() - start


def measure(order, samples, repeats, threads):
    frame = np.random.default_rng(1).integers(0, 256, (HEIGHT, WIDTH, samples), np.uint8)
    out = np.empty_like(frame)
    with qvr.Encoder(threads) as encoder, qvr.Decoder(threads) as decoder:
        stream = encoder.encode(frame, order)
        if not np.array_equal(decoder.decode(stream, order, out=out), frame):
            raise SystemExit(f"{order}: what came back is not what went in")
        calls = {
            "copy": lambda: np.copyto(out, frame),
            "copy, new": frame.copy,
            "encode": lambda: encoder.encode(frame, order),
            "decode": lambda: decoder.decode(stream, order, out=out),
            "both": lambda: decoder.decode(encoder.encode(frame, order), order, out=out),
        }
        times = {name: [] for name in calls}
        for _ in range(repeats):
            for name, call in calls.items():
                times[name].append(seconds(call))
    medians = {name: statistics.median(taken) for name, taken in times.items()}
    ratios = "".join(f"{medians[name] / medians['copy']:>12.2f}" for name in calls)
    print(f"{order:<6}{medians['copy'] * 1e3:>8.2f} ms{ratios}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--repeats", type=int, default=100, help="turns of each order (default 100)")
    parser.add_argument("--threads", type=int, default=1, help="worker threads of a handle, 0: one per processor")
    chosen = parser.parse_args()
    print(f"{WIDTH}x{HEIGHT}, 8 bits, threads={chosen.threads}, {chosen.repeats} turns; multiples of a copy's time")
    print(f"{'order':<6}{'a copy':>11}" + "".join(f"{name:>12}" for name in
                                                  ("copy", "copy, new", "encode", "decode", "both")))
    measure("UYVY", 2, chosen.repeats, chosen.threads)
    measure("RGBA", 4, chosen.repeats, chosen.threads)


if __name__ == "__main__":
    main()
