#!/usr/bin/env python3
"""Checks that the documentation tells the truth: its commands, its code and its links.

  ```console   Lines that begin with "$ " are commands, "> " continues one. The lines behind a command
               are all that it prints, on standard output and standard error; a line "..." stands for
               any lines. The blocks of a file run in order in one empty folder, with the built program
               first in PATH, and "./run.sh" there hands on to it. /usr/share/korvat, in commands and
               in what they print, is the catalogue of the source tree.
  ```cpp, ```cmake
               Each block stands in a file under examples/, line by line, in any indentation.
  <!-- file NAME -->
               The block behind this line is the content of that file in the folder.
  [text](link) A relative link leads to a file, and to a heading of it when it names one.

With --update, what commands print replaces the output that differs: read the changes before a commit.
"""

import argparse
import dataclasses
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import textwrap

CATALOGUE = "/usr/share/korvat"
SECONDS = 300  # for one command; sanitizers take their time
ANY_LINES = "..."


@dataclasses.dataclass
class Block:
    language: str
    first: int  # index of its first line in the file
    lines: list  # without the fence's indentation
    file: str  # that it is the content of, or empty


@dataclasses.dataclass
class Command:
    first: int  # index of the line with "$ "
    begin: int  # the lines of the output
    end: int
    text: str


def find_blocks(lines, complain):
    """The fenced blocks, and the lines outside them: those inside are replaced by empty ones."""
    blocks, outside, block, fence, file = [], [], None, "", ""
    for index, line in enumerate(lines):
        start = re.match(r"( *)(`{3,})(\w*)\s*$", line)
        if block is None and start:
            fence = start[1] + start[2]
            block = Block(start[3], index + 1, [], file)
        elif block is not None and line.rstrip() == fence:
            blocks.append(block)
            block, file = None, ""
        elif block is not None:
            block.lines.append(line[len(fence) - len(fence.lstrip()):])
        elif named := re.match(r"<!-- file (\S+) -->$", line):
            file = named[1]
        outside.append("" if block is not None or start else line)
    if block is not None:
        complain(block.first, "this block has no end")
    return blocks, outside


def split_commands(block, complain):
    commands = []
    for index, line in enumerate(block.lines, block.first):
        if line.startswith("$ "):
            commands.append(Command(index, index + 1, index + 1, line[2:]))
        elif not commands:
            complain(index + 1, "a console block begins with a command: $ ...")
            return []
        elif line.startswith("> ") and commands[-1].begin == index:
            commands[-1].text += "\n" + line[2:]
            commands[-1].begin = commands[-1].end = index + 1
        else:
            commands[-1].end = index + 1
    return commands


def matches(expected, found):
    parts = [r"(?:.*\n)*?" if line == ANY_LINES else re.escape(line) + r"\n" for line in expected]
    return re.fullmatch("".join(parts), "".join(line + "\n" for line in found)) is not None


class Folder:
    """Where the commands of one file run."""

    def __init__(self, path, program, catalogue):
        self.path = pathlib.Path(path)
        self.catalogue = str(catalogue)
        self.environment = {
            "PATH": f"{program.parent}:/usr/local/bin:/usr/bin:/bin", "LANG": "C", "HOME": path}
        # Sanitizers take their options from there.
        self.environment |= {n: v for n, v in os.environ.items() if n.endswith("SAN_OPTIONS")}
        script = self.path / "run.sh"
        script.write_text('#!/bin/sh\nexec korvat "$@"\n')
        script.chmod(0o755)

    def write(self, name, lines):
        file = self.path / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("".join(line + "\n" for line in lines))

    def run(self, command):
        try:
            result = subprocess.run(
                ["bash", "-c", command.replace(CATALOGUE, self.catalogue)], cwd=self.path,
                env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                stderr=subprocess.STDOUT, timeout=SECONDS, check=False)
        except subprocess.TimeoutExpired:
            return [f"(no end after {SECONDS} seconds)"]
        text = result.stdout.decode("utf-8", "replace").replace(self.catalogue, CATALOGUE)
        return text.removesuffix("\n").split("\n") if text else []


def check_commands(blocks, folder, complain):
    """Runs the commands; returns (begin, end, output) for each whose output differs."""
    changes = []
    for block in blocks:
        if block.file:
            folder.write(block.file, block.lines)
        if block.language != "console":
            continue
        for command in split_commands(block, complain):
            expected = block.lines[command.begin - block.first:command.end - block.first]
            found = folder.run(command.text)
            if not matches(expected, found):
                changes.append((command.begin, command.end, found))
                complain(command.first + 1, "\n".join(
                    ["$ " + command.text, "expected:", *expected, "found:", *found]))
    return changes


def read_examples(root):
    files = [*root.glob("examples/**/*.cpp"), *root.glob("examples/**/CMakeLists.txt")]
    return [file.read_text().splitlines() for file in sorted(files)]


def unindent(lines):
    return textwrap.dedent("\n".join(line.rstrip() for line in lines))


def check_code(blocks, examples, complain):
    for block in blocks:
        if block.language not in ("cpp", "cmake"):
            continue
        text, count = unindent(block.lines), len(block.lines)
        if not any(unindent(example[start:start + count]) == text
                   for example in examples for start in range(len(example) - count + 1)):
            complain(block.first, f"no file under examples/ has this {block.language} block")


def find_anchors(text):
    _, outside = find_blocks(text.splitlines(), lambda line, message: None)
    headings = [match[1] for line in outside if (match := re.match(r"#+ (.*)", line))]
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def check_links(file, outside, complain):
    for index, line in enumerate(outside):
        for link in re.findall(r"\]\(([^)\s]+)\)", line):
            path, _, anchor = link.partition("#")
            target = file.parent / path if path else file
            if re.match(r"\w+:", link):
                continue
            if not target.exists():
                complain(index + 1, f"{link} leads to no file")
            elif anchor and anchor not in find_anchors(target.read_text()):
                complain(index + 1, f"{link} leads to no heading")


def check_file(file, root, program, update):
    """Number of complaints, which are printed, and of console blocks."""
    complaints = []

    def complain(line, message):
        complaints.append(line)
        print(f"{file.relative_to(root)}:{line}: {message}\n", file=sys.stderr)

    lines = file.read_text().splitlines()
    blocks, outside = find_blocks(lines, complain)
    check_links(file, outside, complain)
    check_code(blocks, read_examples(root), complain)
    with tempfile.TemporaryDirectory() as path:
        changes = check_commands(blocks, Folder(path, program, root / "res/korvat"), complain)
    if update and changes:
        for begin, end, found in reversed(changes):
            lines[begin:end] = found
        file.write_text("".join(line + "\n" for line in lines))
    return len(complaints), sum(block.language == "console" for block in blocks)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=pathlib.Path, help="the source tree")
    parser.add_argument("program", type=pathlib.Path, help="the built program")
    parser.add_argument("files", nargs="*", help="all when left out")
    parser.add_argument("--update", action="store_true", help="write what the commands print")
    arguments = parser.parse_args()
    root = arguments.root.resolve()
    files = [pathlib.Path(file).resolve() for file in arguments.files] or sorted(
        [*root.glob("*.md"), *root.glob("docs/**/*.md")])
    if not files:
        sys.exit(f"no documentation in {root}")

    results = [check_file(file, root, arguments.program.resolve(), arguments.update) for file in files]
    complaints, blocks = (sum(column) for column in zip(*results))
    if blocks == 0 and not arguments.files:
        sys.exit("no commands in the documentation")
    print(f"{len(files)} files, {blocks} blocks of commands, {complaints} mistakes")
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
