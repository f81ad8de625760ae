#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Draws docs/performance/*.svg and *.png from what qvr_bench wrote with --json.

Usage: bench/plot.py RESULTS.json... [--into FOLDER]
"""

import argparse
import io
import math
import os

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
from matplotlib.colors import LinearSegmentedColormap, TwoSlopeNorm
from matplotlib.ticker import FixedLocator, FuncFormatter, NullLocator

from results import Results, words

INK = "#26323a"
QUIET = "#8a969e"
GRID = "#e3e7ea"
BLUE = "#1f6f9f"
ORANGE = "#d2691e"
GREEN = "#4b8b3b"
PURPLE = "#7a5195"
SIZES = ("1920x1080", "3840x2160")

plt.rcParams.update(
    {
        "font.size": 9,
        "text.color": INK,
        "axes.labelcolor": INK,
        "axes.edgecolor": QUIET,
        "axes.spines.top": False,
        "axes.spines.right": False,
        "axes.titlesize": 10,
        "axes.titlelocation": "left",
        "xtick.color": INK,
        "ytick.color": INK,
        "svg.hashsalt": "qvr",  # the same numbers give the same file
        "savefig.bbox": "tight",
        "savefig.pad_inches": 0.12,
    }
)


def pixel_size(size):
    return size.replace("x", " x ")


def ratio_axis(axis, low, high):
    """Powers of two as 1/2, 1, 2 ... with a line at 1."""
    powers = range(math.floor(math.log2(low) - 0.15), math.ceil(math.log2(high) + 0.15) + 1)
    axis.set_xscale("log", base=2)
    axis.set_xlim(2.0 ** powers[0], 2.0 ** powers[-1])
    step = 1 if len(powers) <= 7 else 2
    axis.xaxis.set_major_locator(FixedLocator([2.0**p for p in powers if p % step == 0]))
    axis.xaxis.set_minor_locator(NullLocator())
    axis.xaxis.set_major_formatter(FuncFormatter(lambda x, _: f"{x:g}" if x >= 1 else f"1/{1 / x:g}"))
    axis.axvline(1, color=QUIET, linewidth=1, zorder=1)
    axis.grid(axis="x", color=GRID, linewidth=0.8)
    axis.set_axisbelow(True)


def plain_rows(axis, labels):
    axis.set_yticks(range(len(labels)), labels)
    axis.set_ylim(len(labels) - 0.5, -0.5)
    axis.tick_params(axis="y", length=0)
    axis.spines["left"].set_visible(False)


def draw_pairs(results, size):
    """Orders by types, a panel for each way; white is memcpy's speed."""
    if not any(row["name"].endswith(size) for row in results.named("pairs/encode/")):
        return None
    orders = results.parts("pairs/encode/", 2)
    types = sorted(results.parts("pairs/encode/", 3), key=lambda name: int(name.split("-")[0]))
    colours = LinearSegmentedColormap.from_list("ratio", ["#a8480f", "#e9a66c", "#fbf8f4", "#7fb3cf", "#1f6f9f"])
    figure, axes = plt.subplots(1, 2, figsize=(11.5, 4.4), sharey=True, layout="constrained")
    for axis, way in zip(axes, ("encode", "decode")):
        table = [[results.median(f"pairs/{way}/{o}/{t}/{size}", "memcpy") for t in types] for o in orders]
        shown = [[value or math.nan for value in line] for line in table]
        image = axis.imshow(shown, cmap=colours, norm=TwoSlopeNorm(1.0, 0.3, 1.5), aspect="auto")
        for y, line in enumerate(table):
            for x, value in enumerate(line):
                if value:
                    ink = "white" if value < 0.42 or value > 1.4 else INK
                    axis.text(x, y, f"{value:.2f}", ha="center", va="center", fontsize=7, color=ink)
        found = [value for line in table for value in line if value]
        mean = math.exp(sum(map(math.log, found)) / len(found))
        axis.set_title(f"{way.capitalize()}, {pixel_size(size)}: mean {mean:.2f}, worst {min(found):.2f}")
        axis.set_xticks(range(len(types)), [words(name).replace("10P", "10\nP") for name in types])
        axis.set_yticks(range(len(orders)), [name.replace("-", "  ") for name in orders])
        axis.spines[:].set_visible(False)
        axis.set_xticks([x - 0.5 for x in range(1, len(types))], minor=True)
        axis.set_yticks([y - 0.5 for y in range(1, len(orders))], minor=True)
        axis.grid(which="minor", color="white", linewidth=1.5)
        axis.tick_params(which="both", length=0)
    bar = figure.colorbar(image, ax=axes, shrink=0.6, aspect=24, pad=0.015, ticks=[0.3, 0.5, 0.75, 1, 1.25, 1.5])
    bar.ax.set_yticklabels(["0.3", "0.5", "0.75", "memcpy", "1.25", "1.5"])
    bar.outline.set_visible(False)
    return figure


def draw_alpha(results):
    """Speed and size of coded alpha beside LZ4's and zstd's, a row for each matte."""
    sizes = [size for size in SIZES if size in results.parts("alpha/encode/", 4)]
    if not sizes:
        return None
    size = sizes[0]
    mattes = results.parts("alpha/encode/", 2)
    panels = (
        ("Encoding speed", "encode", ("lz4", "zstd-1"), "library faster"),
        ("Decoding speed", "decode", ("lz4", "zstd-1"), "library faster"),
        ("Coded size", "encode", ("size / lz4", "size / zstd-1"), "library larger"),
    )
    figure, axes = plt.subplots(1, 3, figsize=(11.5, 4.1), sharey=True, layout="constrained")
    for axis, (title, way, measures, right) in zip(axes, panels):
        seen = []
        for measure, colour in zip(measures, (BLUE, ORANGE)):
            for depth, filled, shift in (("8-bit", True, -0.12), ("16-bit", False, 0.12)):
                values = [results.median(f"alpha/{way}/{m}/{depth}/{size}", measure) for m in mattes]
                known = [(value, y + shift) for y, value in enumerate(values) if value]
                seen += [value for value, _ in known]
                axis.scatter(
                    *zip(*known),
                    s=34,
                    zorder=3,
                    facecolor=colour if filled else "white",
                    edgecolor=colour,
                    linewidth=1.4,
                    label=f"beside {measure.replace('lz4', 'LZ4').split()[-1]}, {depth}",
                )
        ratio_axis(axis, max(min(seen), 1 / 1024), min(max(seen), 64))
        plain_rows(axis, [name.replace("-", " ") for name in mattes])
        axis.set_title(title)
        axis.set_xlabel(f"1 = the same; further right: {right}")
    handles, labels = axes[0].get_legend_handles_labels()
    figure.legend(handles, labels, loc="lower right", bbox_to_anchor=(1, 1), ncols=4, frameon=False)
    return figure


def draw_threads(results):
    """Speed beside one thread's, a row for each job and a mark for each number of threads."""
    rows = results.named("threads/encode/")
    if not rows:
        return None
    jobs = list(dict.fromkeys("/".join(row["name"].split("/")[2:-1]) for row in rows))
    size = rows[0]["name"].split("/")[-1]
    counts = list(dict.fromkeys(int(row["measure"].split()[0]) for row in rows))
    figure, axes = plt.subplots(1, 2, figsize=(9.5, 0.32 * len(jobs) + 1.3), sharey=True, layout="constrained")
    for axis, way in zip(axes, ("encode", "decode")):
        for count, colour in zip(counts, (BLUE, ORANGE, GREEN, PURPLE)):
            for y, job in enumerate(jobs):
                row = results.values[(f"threads/{way}/{job}/{size}", f"{count} threads / 1")]
                axis.plot([row["low"], row["high"]], [y, y], color=colour, linewidth=4, alpha=0.3, solid_capstyle="round")
                axis.scatter([row["median"]], [y], s=34, color=colour, zorder=3, label=f"{count} threads" if y == 0 else None)
            axis.axvline(count, color=colour, linewidth=0.9, linestyle=(0, (4, 3)), zorder=1)
        axis.axvline(1, color=QUIET, linewidth=1, zorder=1)
        axis.set_xlim(left=min(0.9, min(row["low"] for row in results.named("threads/"))), right=max(counts) * 1.04)
        axis.grid(axis="x", color=GRID, linewidth=0.8)
        axis.set_axisbelow(True)
        plain_rows(axis, [words(job) for job in jobs])
        axis.set_title(f"{way.capitalize()}, {pixel_size(size)}")
        axis.set_xlabel("times the speed of one thread (dashed: all that there is)")
    figure.legend(*axes[0].get_legend_handles_labels(), loc="lower right", bbox_to_anchor=(1, 1), ncols=4, frameon=False)
    return figure


def draw_scaling(results):
    """Cost of a pixel by width and height, and of coded alpha by slices."""
    if not results.named("scaling/width/"):
        return None
    figure, axes = plt.subplots(1, 3, figsize=(11.5, 3.3), layout="constrained")
    for axis, kind, index in ((axes[0], "width", 0), (axes[1], "height", 1)):
        for (order, type_name), colour in zip((("7-RGBA", "1-U8"), ("2-CbYCrY", "3-U10")), (BLUE, ORANGE)):
            rows = results.named(f"scaling/{kind}/{order}/{type_name}/")
            points = sorted((int(row["name"].split("/")[-1].split("x")[index]), 1 / row["median"]) for row in rows)
            axis.plot(*zip(*points), "o-", color=colour, markersize=4.5, linewidth=1.5, label=f"{order[2:]} {type_name[2:]}")
        axis.axhline(1, color=QUIET, linewidth=1, zorder=1)
        axis.set_title(f"Cost of a pixel by {kind}, encoding")
        axis.set_xlabel(f"{kind} (the other side as in 1920 x 1080)")
        axis.set_yscale("log", base=2)
        axis.yaxis.set_major_formatter(FuncFormatter(lambda y, _: f"{y:g}"))
    axes[0].set_ylabel("1 = that of 1920 x 1080")
    axes[1].sharey(axes[0])
    axes[0].legend(frameon=False)
    sizes = [size for size in SIZES if size in results.parts("scaling/slices/", 3)]
    for measure, label, colour in (
        ("16 slices, encoding", "time to encode", BLUE),
        ("16 slices, decoding", "time to decode", ORANGE),
        ("size / 16 slices", "coded size", GREEN),
    ):
        rows = [row for row in results.named("scaling/slices/") if row["measure"] == measure and row["name"].endswith(sizes[0])]
        points = [(int(row["name"].split("/")[2]), row["median"] if "size" in measure else 1 / row["median"]) for row in rows]
        points = sorted(points + [(16, 1)])
        axes[2].plot(*zip(*points), "o-", color=colour, markersize=4.5, linewidth=1.5, label=label)
    axes[2].axhline(1, color=QUIET, linewidth=1, zorder=1)
    low, high = axes[2].get_ylim()
    axes[2].set_ylim(min(low, 0.9), max(high, 1.1))
    axes[2].set_title("Coded alpha by slices, hair, one thread")
    axes[2].set_xlabel("slices")
    axes[2].set_ylabel("1 = that of 16 slices")
    axes[2].legend(frameon=False)
    for axis in axes:
        axis.set_xscale("log", base=2)
        axis.xaxis.set_major_formatter(FuncFormatter(lambda x, _: f"{x:g}"))
        axis.grid(color=GRID, linewidth=0.8)
        axis.set_axisbelow(True)
    return figure


def draw_kernels(results):
    """Row kernels on a hot row: each instruction set beside memcpy, a row for each kernel."""
    rows = [row for row in results.named("kernels/") if row["measure"] == "memcpy"]
    rows = [row for row in rows if not any(left_out in row["name"] for left_out in ("16-bit", "32-bit", "without", "-12/"))]
    if not rows:
        return None
    levels = list(dict.fromkeys(row["name"].split("/")[1] for row in rows))
    jobs = list(dict.fromkeys("/".join(row["name"].split("/")[2:-1]) for row in rows))
    figure, axis = plt.subplots(figsize=(8.5, 0.24 * len(jobs) + 1.1), layout="constrained")
    values = {(row["name"].split("/")[1], "/".join(row["name"].split("/")[2:-1])): row["median"] for row in rows}
    for y, job in enumerate(jobs):
        known = [values[(level, job)] for level in levels if (level, job) in values]
        axis.plot([min(known), max(known)], [y, y], color=GRID, linewidth=3, zorder=2, solid_capstyle="round")
    for level, colour in zip(levels, (QUIET, ORANGE, BLUE, GREEN)):
        known = [(values[(level, job)], y) for y, job in enumerate(jobs) if (level, job) in values]
        axis.scatter(*zip(*known), s=26, color=colour, zorder=3, label=level)
    ratio_axis(axis, min(values.values()), max(values.values()))
    plain_rows(axis, [job.replace("/8-bit", "").replace("/", "  ") for job in jobs])
    axis.set_title("Row kernels on rows in the first-level cache")
    axis.set_xlabel("speed beside memcpy of the same traffic")
    figure.legend(*axis.get_legend_handles_labels(), loc="lower right", bbox_to_anchor=(1, 1), ncols=4, frameon=False)
    return figure


def save(figure, folder, name):
    if figure is None:
        return
    drawn = io.StringIO()
    figure.savefig(drawn, format="svg", metadata={"Date": None, "Creator": None})
    with open(os.path.join(folder, name + ".svg"), "w") as file:
        file.writelines(line.rstrip() + "\n" for line in drawn.getvalue().splitlines())
    figure.savefig(os.path.join(folder, name + ".png"), dpi=120, metadata={"Software": None}, pil_kwargs={"optimize": True})
    plt.close(figure)


def main():
    arguments = argparse.ArgumentParser(description="Draws what qvr_bench wrote with --json.")
    arguments.add_argument("results", nargs="+")
    arguments.add_argument("--into", default=os.path.join(os.path.dirname(__file__), "..", "docs", "performance"))
    chosen = arguments.parse_args()
    results = Results(chosen.results)
    os.makedirs(chosen.into, exist_ok=True)
    for size in SIZES:
        save(draw_pairs(results, size), chosen.into, f"pairs-{size}")
    for name, draw in (
        ("alpha", draw_alpha),
        ("threads", draw_threads),
        ("scaling", draw_scaling),
        ("kernels", draw_kernels),
    ):
        save(draw(results), chosen.into, name)


if __name__ == "__main__":
    main()
