#!/usr/bin/env python3
"""Prints a header with its plain comments turned into Doxygen's.

The headers are the manual, and are read as they are more often than in a browser: they have plain "//"
comments, in which nothing is written for a tool's sake. This filter gives Doxygen what it needs instead:

  // Text above a declaration.    becomes  ///
  int size = 0;  // bytes         becomes  ///<, also in the lines that go on below it
  //   indented lines             are a table or a drawing, and stay as they are in <pre>

A comment above a namespace is about the file.
"""

import re
import sys

INDENTED = "   "  # or more, behind the slashes


def escape(text):
    return re.sub(r"[\\@<>#%&]", r"\\\g<0>", text)


def print_comment(start, texts):
    """Prints the lines of one comment, each behind `start`."""
    in_table = False
    for index, text in enumerate(texts):
        # An empty line belongs to a table when the table goes on behind it.
        following = next((t for t in texts[index:] if t), "")
        is_table = following.startswith(INDENTED) and (bool(text) or in_table)
        if is_table != in_table:
            print(f"{start} {'<pre>' if is_table else '</pre>'}")
        in_table = is_table
        print(start + escape(text))
    if in_table:
        print(f"{start} </pre>")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        lines = file.read().splitlines()
    position = 0
    while position < len(lines):
        # Strings may hold slashes, and the ends of namespaces have comments that are for readers only.
        match = re.match(r"(\s*|\s*[^\s#}/][^\"]*?)//(.*)", lines[position])
        if match is None:
            print(lines[position])
            position += 1
            continue

        code, texts = match[1], [match[2]]
        position += 1
        column = " " * len(code)
        while position < len(lines) and lines[position].startswith(column + "//"):
            texts.append(lines[position][len(column) + 2:])
            position += 1
        if code.strip():
            print(code + "///<" + escape(texts[0]))
            print_comment(column + "///<", texts[1:])
        else:
            following = next((line for line in lines[position:] if line), "")
            if following.startswith("namespace"):
                print("/// @file")
            print_comment(column + "///", texts)


main()
