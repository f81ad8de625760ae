#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Runs the code blocks of Markdown pages, so that what the documentation shows is what happens.

    run_page.py --source REPOSITORY --build BUILD PAGE.md    runs the blocks of a page
    run_page.py --skipped PAGE.md...                         lists the blocks that are not run, with the reasons

Each part of PARTS that was not built is named by --without.

Each page has a temporary folder of its own, where its blocks run from top to bottom. It looks like the root of the
repository (links to all that lies there), the build folders that the page has its reader make (MAKERS) have what was built
(BUILT), and it holds the files of INPUTS. Everything is installed in $HOME/qvr, where compilers, CMake, pkg-config and
the loader look. 'qvr' is not on PATH: a page says how it gets there.

What is done with a block depends on its language:

    sh              run by bash; any command that fails fails the test; what it exports, the blocks behind have too
    python          run by /usr/bin/python3, behind the Python blocks before it, as cells of a notebook are
    c, cpp          compiled, without a warning; not run
    none, or text   nothing: a drawing, a file name, an output

To add a block, write it. A comment on the line before it says when something else is wanted:

    <!-- docs-test: output -->          (no language) is what the block before printed, on both streams. A line "..."
                                        stands for any lines, "..." within a line for any text
    <!-- docs-test: bytes of PATH -->   explains that file: behind the line's offset stand bytes, up to two blanks
    <!-- docs-test: file PATH -->       is the file of the repository
    <!-- docs-test: part of PATH -->    is a part of that file, in one piece
    <!-- docs-test: write NAME -->      is written to a file for the blocks behind
    <!-- docs-test: needs NAME -->      is run where that command exists, or that optional part of the build (PARTS);
                                        elsewhere it is skipped and listed
    <!-- docs-test: skip: REASON -->    is not run; listed with its reason

Links to files of the repository must lead somewhere.

Blocks that install something or run the tests are not for running: apt-get, sudo and ctest refuse to work.

A new input file is a row of INPUTS; a variable that programs need is a line of environment(). Every page that
tests/docs/CMakeLists.txt finds is a test of its own.
"""
import argparse
import os
import pathlib
import re
import shlex
import shutil
import signal
import struct
import subprocess
import sys
import tempfile

COMMENT = re.compile(r"^\s*<!-- docs-test: (output|bytes of|file|part of|write|needs|skip)(?::? (.*?))? -->$")
FENCED = re.compile(r"^ *```\w*$.*?^ *```$", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"\[[^][]*\]\(([^)#\s]*)[^)\s]*\)")
FENCE = re.compile(r"^( *)```(\w*)$")
PARTS = {"python-package", "gstreamer-plug-in"}  # of the build, which may be left out
left_out = set()
LIMIT = 240  # seconds that a block may take


class Failure(Exception):
    pass


class Block:
    def __init__(self, line, language, how, argument):
        self.line, self.language, self.how, self.argument = line, language, how, argument
        self.text = ""


def blocks_of(page):
    """The fenced blocks of a page, each with the comment on the line before its fence."""
    found, current, indent, comment = [], None, "", None
    for number, line in enumerate(page.read_text().splitlines(), 1):
        fence = FENCE.match(line)
        if current is None:
            if fence:
                how, argument = comment.groups("") if comment else ("", "")
                current, indent = Block(number, fence[2], how, argument), fence[1]
            comment = COMMENT.match(line)
            if "docs-test:" in line and not comment:
                raise Failure(f"{page}:{number}: not understood: {line.strip()}")
        elif line.strip() == "```":
            found.append(current)
            current = None
        else:
            current.text += line.removeprefix(indent) + "\n"
    if current is not None:
        raise Failure(f"{page}:{current.line}: the block has no end")
    return found


def check_links(page):
    """Relative links name files that are there; scripts/check docs looks at their anchors."""
    text = FENCED.sub("", page.read_text())
    for target in LINK.findall(text):
        if not re.match("[a-z]+:", target) and not (page.parent / target).exists():
            raise Failure(f"{page}: there is no {target}")


# ---- The folder that blocks run in -----------------------------------------------------------------------------------


def raw(size):
    return bytes((i * 7 + i // 251) % 256 for i in range(size))


def compressed_frame(width, height):
    """A compressed frame as far as it is looked at: a header of compression 1300, then any bytes."""
    frame = bytearray(b"Z" * 5000)
    frame[7] = 0
    frame[24:28] = struct.pack(">HH", height, width)
    frame[40:44] = struct.pack(">I", 1300)
    return bytes(frame)


# What only other programs make: a compressed frame as large as tests/data/flower_small.png, and chunks.
INPUTS = {
    "frame.bin": compressed_frame(320, 240),
    "a.bin": raw(1000),
    "b.bin": raw(2000),
    "c.bin": raw(3000),
}

# What pages look for in a build folder. Not the folder itself: a block must not be able to change it.
BUILT = ("src/libQVRUncompressed*", "tools/qvr/qvr", "examples/*", "plugins/gstreamer/*.so")

# How a page makes a build folder, be it in its text or in a block that is not run.
MAKERS = (r"cmake -S \. -B build/(\w+)", r"\./scripts/(demo)\b")


def made_folders(text):
    return {name for maker in MAKERS for name in re.findall(maker, text)}


def furnish(folder, page, source, build):
    for entry in source.iterdir():
        if entry.name != ".git" and not entry.name.startswith("build"):
            (folder / entry.name).symlink_to(entry)
    for name in made_folders(page.read_text()):
        for pattern in BUILT:
            for file in filter(pathlib.Path.is_file, build.glob(pattern)):
                link = folder / "build" / name / file.relative_to(build)
                link.parent.mkdir(parents=True, exist_ok=True)
                link.symlink_to(file)
    for name, content in INPUTS.items():
        (folder / name).write_bytes(content)


def install(build, prefix):
    command = ["cmake", "--install", build, "--prefix", prefix]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise Failure(f"the library cannot be installed:\n{done.stdout}{done.stderr}")


def stop_commands(folder):
    """Stand-ins for commands that no test may run: blocks that want them are skipped with a reason."""
    folder.mkdir()
    for name in ("apt-get", "sudo", "ctest"):
        reason = f"{name} is not for blocks that are run: say why this one is skipped"
        (folder / name).write_text(f"#!/bin/sh\necho '{reason}'\nexit 1\n")
        (folder / name).chmod(0o755)
    return folder


def environment(build, prefix):
    libraries = sorted({str(path.parent) for path in prefix.rglob("libQVRUncompressed.so")})
    lists = {
        "PATH": [stop_commands(prefix.parent / "stopped")],
        "CPATH": [prefix / "include"],
        "LIBRARY_PATH": libraries,
        "LD_LIBRARY_PATH": libraries,
        "CMAKE_PREFIX_PATH": [prefix],
        "PYTHONPATH": [build / "bindings/python"],
        "PKG_CONFIG_PATH": [folder + "/pkgconfig" for folder in libraries],
    }
    values = dict(os.environ, LC_ALL="C.UTF-8", HOME=str(prefix.parent))
    for name, folders in lists.items():
        values[name] = ":".join([str(each) for each in folders] + list(filter(None, [values.get(name)])))
    return values


# ---- What is done with a block ---------------------------------------------------------------------------------------


def run(command, text, folder, values):
    with subprocess.Popen(command, cwd=folder, env=values, text=True, errors="replace", stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True) as process:
        try:
            printed, _ = process.communicate(text, timeout=LIMIT)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)  # whatever the block has started, too
            raise Failure(f"did not end within {LIMIT} seconds") from None
    if process.returncode != 0:
        raise Failure(f"ended with {process.returncode} and said:\n{printed}")
    return printed


NOTEBOOK = """
import contextlib, io, pathlib, sys
state, file, block = {"__name__": "__main__"}, pathlib.Path(".earlier.py"), sys.stdin.read()
earlier = file.read_text() if file.exists() else ""
with contextlib.redirect_stdout(io.StringIO()):
    exec(compile(earlier, "earlier blocks", "exec"), state)
exec(compile(block, "block", "exec"), state)
file.write_text(earlier + block)
"""


def shell_script(text, folder):
    """A block between what the ones before it have exported and what it exports itself."""
    exported, folder = shlex.quote(str(folder / ".exported")), shlex.quote(str(folder))
    return f"[ ! -e {exported} ] || . {exported}\ncd {folder}\n{text}export -p > {exported}\n"


def compile_only(language, text, folder, values):
    command = {"c": ["cc", "-std=c11"], "cpp": ["c++", "-std=c++17"]}[language]
    source = {"c": "c", "cpp": "c++"}[language]
    warnings = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
    run(command + warnings + ["-x", source, "-c", "-", "-o", os.devnull], text, folder, values)


def compare(shown, printed):
    """Shown text as a pattern: "..." alone on a line is any lines, within a line any text."""
    pattern = ""
    for line in shown.splitlines():
        if line.strip() == "...":
            pattern += r"(?:.*\n)*?"
        else:
            pattern += r"[^\n]*".join(re.escape(part) for part in line.rstrip().split("...")) + r"[ \t]*\n"
    if not re.fullmatch(pattern, printed):
        raise Failure(f"shown is\n{shown}but printed was\n{printed}")


def compare_bytes(shown, file):
    """Lines "offset  hexadecimal bytes  explanation" against the file that they explain."""
    told = bytearray()
    for line in shown.splitlines():
        fields = re.match(r" *(\d+) +((?:[0-9a-f]{2} )*[0-9a-f]{2})(?:  |$)", line)
        if fields:
            if int(fields[1]) != len(told):
                raise Failure(f"says {fields[1]} where {len(told)} is right:\n{line}")
            told += bytes.fromhex(fields[2])
    if told != file.read_bytes():
        raise Failure(f"tells of\n{told.hex(' ')}\nbut {file.name} is\n{file.read_bytes().hex(' ')}")


def missing(name):
    return name in left_out if name in PARTS else shutil.which(name.split()[0]) is None


def treat(block, folder, source, values, printed):
    """Returns what the block printed, for an output block behind it."""
    shell = ["bash", "-euo", "pipefail", "-s"]
    if block.how == "skip" or (block.how == "needs" and missing(block.argument)):
        return None
    if block.how == "output":
        if printed is not None:
            compare(block.text, printed)
    elif block.how == "bytes of":
        compare_bytes(block.text, folder / block.argument)
    elif block.how in ("file", "part of"):
        wanted = (source / block.argument).read_text()
        if block.text != wanted if block.how == "file" else block.text not in wanted:
            raise Failure(f"is not {block.how} {block.argument} of the repository")
    elif block.how == "write":
        (folder / block.argument).parent.mkdir(parents=True, exist_ok=True)
        (folder / block.argument).write_text(block.text)
    elif block.language == "sh":
        return run(shell, shell_script(block.text, folder), folder, values)
    elif block.language == "python":
        return run(["/usr/bin/python3", "-c", NOTEBOOK], block.text, folder, values)
    elif block.language in ("c", "cpp"):
        compile_only(block.language, block.text, folder, values)
    elif block.language not in ("", "text"):
        raise Failure(f"is in {block.language}, of which nothing is known: a comment before it must say what to do")
    return printed


def run_page(page, source, build):
    check_links(page)
    with tempfile.TemporaryDirectory(prefix="qvr-docs-") as name:
        root = pathlib.Path(name)
        folder, prefix = root / "work", root / "qvr"
        folder.mkdir()
        install(build, prefix)
        furnish(folder, page, source, build)
        values = environment(build, prefix)
        printed, count = None, 0
        for block in blocks_of(page):
            try:
                printed = treat(block, folder, source, values, printed)
            except Failure as problem:
                raise Failure(f"{page}:{block.line}: the block {problem}") from problem
            count += block.language not in ("", "text") or block.how == "output"
        print(f"{page.name}: {count} blocks")


def list_skipped(pages):
    for page in pages:
        for block in blocks_of(page):
            if block.how == "skip" and not block.argument:
                raise Failure(f"{page}:{block.line}: skipped without a reason")
            if block.how == "skip" or (block.how == "needs" and missing(block.argument)):
                reason = block.argument if block.how == "skip" else block.argument + " is not there"
                print(f"{page}:{block.line}: {reason}: {block.text.splitlines()[0]}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--source", type=pathlib.Path)
    parser.add_argument("--build", type=pathlib.Path)
    parser.add_argument("--skipped", action="store_true")
    parser.add_argument("--without", choices=sorted(PARTS), action="append", default=[])
    parser.add_argument("pages", type=pathlib.Path, nargs="+")
    given = parser.parse_args()
    left_out.update(given.without)
    try:
        if given.skipped:
            return list_skipped(given.pages)
        for page in given.pages:
            run_page(page, given.source.resolve(), given.build.resolve())
    except Failure as problem:
        sys.exit(str(problem))


if __name__ == "__main__":
    main()
