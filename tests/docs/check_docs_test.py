#!/usr/bin/env python3
"""Checks the checker: each kind of mistake in a page is found, at its line, and nothing else is."""

import contextlib
import io
import pathlib
import tempfile
import unittest

import check_docs


def block(language, *lines):
    return "\n".join(["```" + language, *lines, "```", ""])


class CheckDocs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve()
        self.page = self.root / "docs/page.md"
        self.page.parent.mkdir()
        (self.root / "examples").mkdir()
        (self.root / "bin").mkdir()
        self.program = self.root / "bin/korvat"
        self.program.write_text('#!/bin/sh\necho "args: $*"\n')
        self.program.chmod(0o755)

    def check(self, text, update=False):
        """What is complained about: "line: first line of the message"."""
        self.page.write_text(text)
        errors = io.StringIO()
        with contextlib.redirect_stderr(errors):
            check_docs.check_file(self.page, self.root, self.program, update)
        return [line.removeprefix("docs/page.md:") for line in errors.getvalue().splitlines()
                if line.startswith("docs/page.md:")]

    def test_true_output_passes(self):
        self.assertEqual(self.check(block("console", "$ korvat a b", "args: a b")), [])

    def test_run_sh_hands_on_to_the_program(self):
        self.assertEqual(self.check(block("console", "$ ./run.sh 'a  b'", "args: a  b")), [])

    def test_other_output_is_found(self):
        self.assertEqual(self.check("text\n\n" + block("console", "$ korvat a", "args: b")),
                         ["4: $ korvat a"])

    def test_missing_output_is_found(self):
        self.assertEqual(self.check(block("console", "$ korvat a")), ["2: $ korvat a"])

    def test_output_too_much_is_found(self):
        self.assertEqual(self.check(block("console", "$ true", "x")), ["2: $ true"])

    def test_blanks_count(self):
        self.assertEqual(self.check(block("console", "$ korvat", "args:")), ["2: $ korvat"])

    def test_standard_error_counts(self):
        self.assertEqual(self.check(block("console", "$ echo oh >&2")), ["2: $ echo oh >&2"])

    def test_each_command_has_its_own_output(self):
        self.assertEqual(
            self.check(block("console", "$ echo 1", "1", "$ echo 2", "1", "$ echo 3", "3")),
            ["4: $ echo 2"])

    def test_three_points_stand_for_any_lines(self):
        self.assertEqual(self.check(block("console", "$ seq 9", "1", "...", "9")), [])
        self.assertEqual(self.check(block("console", "$ seq 2", "1", "...", "2")), [])
        self.assertEqual(self.check(block("console", "$ seq 9", "1", "...", "8")), ["2: $ seq 9"])

    def test_command_goes_on_in_the_next_line(self):
        self.assertEqual(self.check(block("console", "$ cat <<'END'", "> a", "> END", "a")), [])

    def test_later_block_sees_the_files_of_an_earlier_one(self):
        self.assertEqual(
            self.check(block("console", "$ echo 1 > f") + block("console", "$ cat f", "1")), [])

    def test_named_block_is_a_file(self):
        self.assertEqual(self.check(
            "<!-- file a/b.xml -->\n" + block("xml", "<x/>") + block("console", "$ cat a/b.xml", "<x/>")),
            [])

    def test_catalogue_is_that_of_the_source_tree(self):
        self.assertEqual(self.check(block(
            "console", "$ echo /usr/share/korvat/x", "/usr/share/korvat/x",
            "$ test /usr/share/korvat = " + str(self.root / "res/korvat"))), [])

    def test_output_before_a_command_is_found(self):
        self.assertEqual(self.check(block("console", "korvat")),
                         ["2: a console block begins with a command: $ ..."])

    def test_block_without_an_end_is_found(self):
        self.assertEqual(self.check("```console\n$ true\n"), ["1: this block has no end"])

    def test_block_in_a_list_is_checked(self):
        self.assertEqual(self.check("- a\n\n  ```console\n  $ echo 1\n  2\n  ```\n"), ["4: $ echo 1"])

    def test_code_of_an_example_passes_in_any_indentation(self):
        (self.root / "examples/a.cpp").write_text("int main() {\n  if (a) {  \n    b();\n  }\n}\n")
        self.assertEqual(self.check(block("cpp", "if (a) {", "  b();", "}")), [])

    def test_code_of_no_example_is_found(self):
        (self.root / "examples/a.cpp").write_text("  a();\n\n  b();\n")
        self.assertEqual(self.check(block("cpp", "a();", "b();")),
                         ["1: no file under examples/ has this cpp block"])

    def test_part_of_a_line_is_no_code_of_an_example(self):
        (self.root / "examples/a.cpp").write_text("return a();\n")
        self.assertEqual(self.check(block("cpp", "a();")),
                         ["1: no file under examples/ has this cpp block"])

    def test_links_lead_somewhere(self):
        (self.root / "README.md").write_text("# On `a`, b\n\n```sh\n# No heading\n```\n")
        self.assertEqual(self.check("[a](../README.md#on-a-b) [b](https://none.test/x) [c](#d)\n\n## D\n"), [])

    def test_links_that_lead_nowhere_are_found(self):
        (self.root / "README.md").write_text("# On\n\n```sh\n# No heading\n```\n")
        self.assertEqual(
            self.check("[a](README.md)\n[b](../README.md#no-heading)\n![c](none.svg) [d](#e)\n"),
            ["1: README.md leads to no file", "2: ../README.md#no-heading leads to no heading",
             "3: none.svg leads to no file", "3: #e leads to no heading"])

    def test_update_writes_what_is_printed(self):
        self.check(block("console", "$ echo 1", "2", "3", "$ seq 9", "1", "...", "$ true", "x"),
                   update=True)
        self.assertEqual(self.page.read_text(),
                         block("console", "$ echo 1", "1", "$ seq 9", "1", "...", "$ true"))


if __name__ == "__main__":
    unittest.main()
