#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""The runner itself: a page that is right passes, and each way to be wrong is found."""
import pathlib
import tempfile
import time
import unittest

import run_page


class Blocks(unittest.TestCase):
    def setUp(self):
        self.kept = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.kept.name)
        self.values = {"PATH": "/usr/bin:/bin"}

    def tearDown(self):
        self.kept.cleanup()

    def run_text(self, *lines):
        """Runs a page of these lines, in a folder with nothing in it."""
        page = self.folder / "page.md"
        page.write_text("\n".join(lines) + "\n")
        printed = None
        for block in run_page.blocks_of(page):
            printed = run_page.treat(block, self.folder, self.folder, self.values, printed)
        return printed

    def refused(self, *lines):
        with self.assertRaises(run_page.Failure) as caught:
            self.run_text(*lines)
        return str(caught.exception)

    def test_commands_run_in_one_folder(self):
        self.assertEqual(self.run_text("```sh", "echo one > f", "```", "```sh", "cat f", "```"), "one\n")

    def test_what_a_block_exports_stays(self):
        lines = ["```sh", "export A='a b' B=1", "C=2", "mkdir f", "cd f", "```", "```sh", "echo $A $B ${C-none} ${PWD##*/}", "```"]
        self.assertEqual(self.run_text(*lines), f"a b 1 none {self.folder.name}\n")

    def test_build_folders_are_those_that_the_page_makes(self):
        self.assertEqual(run_page.made_folders("build/demo/x, build/release"), set())
        self.assertEqual(run_page.made_folders("After `./scripts/demo`:\ncmake -S . -B build/it -DA=B\n"), {"demo", "it"})

    def test_any_command_that_fails_counts(self):
        self.assertIn("ended with 1", self.refused("```sh", "false", "echo on", "```"))
        self.assertIn("ended with 1", self.refused("```sh", "false | cat", "```"))
        self.assertIn("unbound", self.refused("```sh", "echo $NO_SUCH_NAME", "```"))

    def test_a_block_that_does_not_end_is_ended(self):
        limit, run_page.LIMIT = run_page.LIMIT, 0.5
        self.addCleanup(setattr, run_page, "LIMIT", limit)
        self.assertIn("did not end", self.refused("```sh", "sleep 3 && touch late | cat", "```"))
        time.sleep(3)
        self.assertFalse((self.folder / "late").exists())

    def test_commands_that_no_page_may_run(self):
        self.values = run_page.environment(self.folder, self.folder / "prefix")
        for name in ("apt-get update", "sudo true", "ctest -N"):
            self.assertIn("not for blocks", self.refused("```sh", name, "```"))

    def test_output_is_compared(self):
        command = ["```sh", "echo one; echo two >&2; echo three", "```", "<!-- docs-test: output -->", "```"]
        self.run_text(*command, "one", "two", "three", "```")
        self.run_text(*command, "one", "...", "```")
        self.run_text(*command, "o...", "two", "th...e", "```")
        for wrong in (["one", "two"], ["one", "two", "three", "four"], ["one", "...", "four"], ["One", "..."], []):
            self.assertIn("printed was", self.refused(*command, *wrong, "```"))

    def test_python_blocks_are_a_notebook(self):
        cells = ["```python", "x = 20", "print(x)", "```", "```python", "x += 3", "print(x)", "```"]
        self.assertEqual(self.run_text(*cells), "23\n")
        self.assertEqual(self.run_text("```python", "print(x)", "```"), "23\n")
        self.assertIn("NameError", self.refused("```python", "print(y)", "```"))

    def test_programs_are_compiled(self):
        for language in ("c", "cpp"):
            self.run_text("```" + language, "int main(void) { return 0; }", "```")
            self.assertIn("ended with 1", self.refused("```" + language, "int main(void) { return x; }", "```"))
            self.assertIn("unused", self.refused("```" + language, "int main(void) { int x = 0; }", "```"))

    def test_files_are_compared(self):
        (self.folder / "given").write_text("one\ntwo\n")
        self.run_text("<!-- docs-test: file given -->", "```c", "one", "two", "```")
        self.run_text("<!-- docs-test: part of given -->", "```c", "two", "```")
        self.assertIn("is not file given", self.refused("<!-- docs-test: file given -->", "```c", "one", "```"))
        self.assertIn("is not part of", self.refused("<!-- docs-test: part of given -->", "```c", "three", "```"))

    def test_files_are_written(self):
        lines = ["<!-- docs-test: write a/b.txt -->", "```cmake", "text", "```", "```sh", "cat a/b.txt", "```"]
        self.assertEqual(self.run_text(*lines), "text\n")

    def test_bytes_are_explained(self):
        (self.folder / "data").write_bytes(bytes([1, 0xAB, 0]))
        start = ["<!-- docs-test: bytes of data -->", "```", " at  bytes"]
        self.run_text(*start, "  0  01 ab   two", "  2    00", "```")
        self.assertIn("tells of", self.refused(*start, "  0  01 ab   two", "```"))
        self.assertIn("tells of", self.refused(*start, "  0  01 ab 01", "```"))
        self.assertIn("says 3", self.refused(*start, "  0  01 ab   two", "  3  00", "```"))

    def test_what_is_not_run(self):
        self.assertIsNone(self.run_text("<!-- docs-test: skip: a reason -->", "```sh", "false", "```"))
        self.assertIsNone(self.run_text("<!-- docs-test: needs no_such_command -->", "```sh", "false", "```"))
        self.assertIn("ended with", self.refused("<!-- docs-test: needs cat -->", "```sh", "false", "```"))

    def test_pages_that_are_not_understood(self):
        self.assertIn("no end", self.refused("```sh", "true"))
        self.assertIn("not understood", self.refused("<!-- docs-test: skipp: it -->", "```sh", "true", "```"))
        self.assertIn("nothing is known", self.refused("```fortran", "end", "```"))

    def test_links_lead_somewhere(self):
        page = self.folder / "page.md"
        page.write_text("[a](page.md#b) [b](#c) ![c](page.md) [d](https://example.org/x)\n```\n[e](none)\n```\n")
        run_page.check_links(page)
        wrong_pages = ["[a](none.md)", "[a](none.md#b)", "![a](none.svg)", "[a](page.md) [`b`](no/n.c)", "[a\nb](none.md)"]
        for wrong in wrong_pages:
            page.write_text(wrong + "\n")
            with self.assertRaises(run_page.Failure):
                run_page.check_links(page)

    def test_skipping_needs_a_reason(self):
        page = self.folder / "page.md"
        page.write_text("<!-- docs-test: skip -->\n```sh\ntrue\n```\n")
        with self.assertRaises(run_page.Failure):
            run_page.list_skipped([page])


if __name__ == "__main__":
    unittest.main()
