#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Writes the tables of docs/performance.md from what qvr_bench wrote with --json.

Usage: bench/report.py RESULTS.json... [--page FILE]

In the page, what stands between '<!-- table: NAME -->' and '<!-- end -->' is replaced. NAME is one of TABLES below.
"""

import argparse
import math
import os
import re

from results import Results, words

SIZES = ("1920x1080", "3840x2160")


def pixel_size(size):
    return size.replace("x", " x ")


def number(value):
    if value is None:
        return ""
    return f"{value:.2f}" if value < 10 else f"{value:.0f}"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---" + "|---:" * (len(head) - 1) + "|"]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines)


def mean(values):
    return math.exp(sum(map(math.log, values)) / len(values))


def machine(results):
    m = results.machine
    cores = "core" if m["processors"] == 1 else "cores"
    return (
        f"{m['processor']}, {m['processors']} {cores}, {m['l2_bytes'] >> 10} KiB of second-level cache; instruction set "
        f"{results.library['instruction_set']}; g++ {results.library['compiler'].split()[0]}; medians of {results.rounds} "
        "rounds."
    )


def summary(results):
    rows = []
    for size in SIZES:
        for way in ("encode", "decode"):
            found = {
                row["name"]: row["median"] for row in results.named(f"pairs/{way}/") if row["name"].endswith("/" + size)
            }
            if found:
                worst = min(found, key=found.get)
                pair = words("/".join(worst.split("/")[2:4]))
                rows.append(
                    [f"{way}, {pixel_size(size)}", number(mean(found.values())), f"{number(found[worst])} ({pair})"]
                )
    return table(["", "geometric mean", "slowest pair"], rows)


def pairs(results, size):
    types = sorted(results.parts("pairs/encode/", 3), key=lambda name: int(name.split("-")[0]))
    rows = []
    for order in results.parts("pairs/encode/", 2):
        row = [order.replace("-", " ")]
        for type_name in types:
            both = [results.median(f"pairs/{way}/{order}/{type_name}/{size}", "memcpy") for way in ("encode", "decode")]
            row.append(" / ".join(map(number, both)) if all(both) else "")
        rows.append(row)
    return table(["order"] + [name.split("-")[1] for name in types], rows)


def both_ways(results, group, measure, label):
    sizes = [size for size in SIZES if any(row["name"].endswith(size) for row in results.named(group + "/"))]
    names = list(dict.fromkeys("/".join(row["name"].split("/")[2:-1]) for row in results.named(group + "/encode/")))
    rows = []
    for name in names:
        cells = [
            number(results.median(f"{group}/{way}/{name}/{size}", measure)) for size in sizes for way in ("encode", "decode")
        ]
        rows.append([words(name)] + cells)
    return table([label] + [f"{way}, {pixel_size(size)}" for size in sizes for way in ("encode", "decode")], rows)


def libyuv(results):
    return both_ways(results, "libyuv", "libyuv", "beside libyuv")


def instruction_sets(results):
    levels = [name for name in results.parts("instruction-sets/", 1)]
    rows = []
    for row in results.named(f"instruction-sets/{levels[0]}/"):
        _, _, way, order, type_name, size = row["name"].split("/")
        if size != SIZES[0]:
            continue
        cells = [
            number(results.median(f"instruction-sets/{level}/{way}/{order}/{type_name}/{size}", "memcpy")) for level in levels
        ]
        rows.append([f"{order.split('-')[1]} {type_name.split('-')[1]}, {way}"] + cells)
    return table([f"beside memcpy, {pixel_size(SIZES[0])}"] + levels, sorted(rows))


def kernels(results):
    levels = results.parts("kernels/", 1)
    names = list(dict.fromkeys("/".join(row["name"].split("/")[2:-1]) for row in results.named("kernels/")))
    names = [name for name in names if not any(left_out in name for left_out in ("16-bit", "32-bit", "-12/"))]
    rows = []
    for name in names:
        against = [number(results.median(f"kernels/{level}/{name}/L1", "memcpy")) for level in levels]
        gain = number(results.median(f"kernels/{levels[-1]}/{name}/L1", "scalar"))
        rows.append([name.replace("/", " ")] + against + [gain])
    return table(["kernel, beside memcpy"] + levels + [f"{levels[-1]} beside scalar"], rows)


def alpha(results):
    size = next(size for size in SIZES if results.named("alpha/") and size in results.parts("alpha/encode/", 4))
    columns = (
        ("encode", "lz4"),
        ("encode", "zstd-1"),
        ("decode", "lz4"),
        ("decode", "zstd-1"),
        ("encode", "size / raw"),
        ("encode", "size / lz4"),
        ("encode", "size / zstd-1"),
        ("decode", "tokens a second"),
        ("decode", "samples a token"),
    )
    head = ["matte", "encode / LZ4", "/ zstd", "decode / LZ4", "/ zstd", "size / raw", "/ LZ4", "/ zstd"]
    head += ["G tokens a second", "samples a token"]
    rows = []
    for matte in results.parts("alpha/encode/", 2):
        for depth in results.parts("alpha/encode/", 3):
            values = [results.median(f"alpha/{way}/{matte}/{depth}/{size}", measure) for way, measure in columns]
            cells = [number(value) if value is None or value >= 0.01 else f"{value:.1g}" for value in values]
            rows.append([f"{matte.replace('-', ' ')}, {depth.replace('-', ' ')}"] + cells)
    return table(head, rows)


def threads(results):
    measures = list(dict.fromkeys(row["measure"] for row in results.named("threads/")))
    jobs = list(dict.fromkeys("/".join(row["name"].split("/")[2:]) for row in results.named("threads/encode/")))
    rows = []
    for job in jobs:
        cells = [number(results.median(f"threads/{way}/{job}", m)) for m in measures for way in ("encode", "decode")]
        rows.append([words(job.rsplit("/", 1)[0])] + cells)
    return table(["beside one thread"] + [f"{m.split()[0]} threads, {w}" for m in measures for w in ("encode", "decode")], rows)


def scaling(results):
    rows = []
    for kind, index in (("width", 0), ("height", 1)):
        for row in results.named(f"scaling/{kind}/7-RGBA/"):
            size = row["name"].split("/")[-1]
            other = results.median(f"scaling/{kind}/2-CbYCrY/3-U10/{size}", row["measure"])
            rows.append([pixel_size(size), number(1 / row["median"]), number(other and 1 / other)])
    return table(["cost of a pixel, 1920 x 1080 = 1", "RGBA U8", "CbYCrY U10"], rows)


def slices(results):
    rows = []
    for count in results.parts("scaling/slices/", 2):
        name = f"scaling/slices/{count}/{SIZES[0]}"
        measures = ("16 slices, encoding", "16 slices, decoding", "size / 16 slices")
        rows.append([count] + [number(results.median(name, measure)) for measure in measures])
    return table(["slices", "encoding speed, 16 slices = 1", "decoding speed", "coded size"], rows)


def fresh(results):
    rows = []
    for row in results.named("scaling/fresh-destination/"):
        _, _, order, type_name, size = row["name"].split("/")
        rows.append([f"{order.split('-')[1]} {type_name.split('-')[1]}, {pixel_size(size)}", number(1 / row["median"])])
    return table(["encoding into memory never touched before", "times the cost of a reused buffer"], rows)


def latency(results):
    rows = []
    for row in results.named("latency/"):
        _, what, *rest, _ = row["name"].split("/")
        which = rest[0].replace("-", " ") if "threads" in rest[0] else "16 x 16 RGBA U8"
        which = "1 thread" if which == "1 threads" else which
        factor = f"{number(row['median'])} x the speed" if row["median"] >= 1 else f"{number(1 / row['median'])} x the time"
        rows.append([f"{words(what)}, {which}", f"{factor} of {row['measure']}"])
    return table(["", "beside"], rows)


def allocations(results):
    rows = results.named("allocations/")
    worst = max(rows, key=lambda row: row["median"])
    if worst["median"] == 0:
        return f"Allocations a call, once a handle has seen its first frames: none, in all {len(rows)} cases counted."
    return f"Allocations a call: up to {worst['median']:g} ({worst['name']}, {worst['measure']})."


def goals(results):
    rows = []
    for row in results.goals.values():
        if row["measured"]:
            told = [f"{row['value']:.3g}", f"{row['threshold']:g}", "met" if row["met"] else "missed"]
        else:
            told = ["", f"{row['threshold']:g}", "not measured"]
        rows.append([row["goal"], row["beside"].split(".")[0], pixel_size(row["size"])] + told)
    return table(["goal", "beside", "size", "measured", "threshold", ""], rows)


TABLES = {
    "machine": machine,
    "summary": summary,
    "pairs 1920x1080": lambda results: pairs(results, SIZES[0]),
    "pairs 3840x2160": lambda results: pairs(results, SIZES[1]),
    "libyuv": libyuv,
    "instruction sets": instruction_sets,
    "kernels": kernels,
    "alpha": alpha,
    "threads": threads,
    "scaling": scaling,
    "slices": slices,
    "fresh": fresh,
    "latency": latency,
    "allocations": allocations,
    "goals": goals,
}


def main():
    arguments = argparse.ArgumentParser(description="Writes the tables of docs/performance.md.")
    arguments.add_argument("results", nargs="+")
    arguments.add_argument("--page", default=os.path.join(os.path.dirname(__file__), "..", "docs", "performance.md"))
    chosen = arguments.parse_args()
    results = Results(chosen.results)

    def replace(found):
        return f"<!-- table: {found[1]} -->\n{TABLES[found[1]](results)}\n<!-- end -->"

    with open(chosen.page) as page:
        text = page.read()
    text = re.sub(r"<!-- table: (.*?) -->\n.*?<!-- end -->", replace, text, flags=re.DOTALL)
    with open(chosen.page, "w") as page:
        page.write(text)


if __name__ == "__main__":
    main()
