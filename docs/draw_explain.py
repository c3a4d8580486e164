#!/usr/bin/env python3
"""Draws docs/explain.svg, a terminal with two calls of `korvat explain`, from what the program prints.

  docs/draw_explain.py PROGRAM > docs/explain.svg
  docs/draw_explain.py PROGRAM --compare docs/explain.svg    fails when the picture is another one
"""

import pathlib
import re
import subprocess
import sys
from xml.sax.saxutils import escape

COMMANDS = (["explain", "SNVT_setting", "0164FA24"], ["explain", "SNVT_switch", "FAFF"])
CELL, LINE, MARGIN, FONT = 8.4, 20, 16, 14  # width of a character, then heights, in pixels
STYLES = {
    "prompt": 'fill="#7a8490"',
    "0": "",
    "1": 'font-weight="bold" fill="#ffffff"',
    "31": 'fill="#ff7b72"',
    "32": 'fill="#7ee787"',
}


def read_lines(program):
    """Lines of the terminal, each a list of (style, text)."""
    lines = []
    for arguments in COMMANDS:
        lines += [[]] if lines else []
        lines.append([("prompt", "$ "), ("1", "korvat " + " ".join(arguments))])
        output = subprocess.run([program, *arguments, "--color", "always"], check=True,
                                capture_output=True, text=True).stdout
        for line in output.splitlines():
            parts = re.split(r"\033\[(\d+)m", "\033[0m".join(["", line]))
            lines.append(list(zip(parts[1::2], parts[2::2])))
    return lines


def draw(lines):
    columns = max(sum(len(text) for _, text in line) for line in lines)
    width, height = round(columns * CELL + 2 * MARGIN), len(lines) * LINE + 2 * MARGIN
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
           f'height="{height}" font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" '
           f'font-size="{FONT}" fill="#c9d1d9">',
           f'<rect width="{width}" height="{height}" rx="8" fill="#0d1117"/>']
    for row, line in enumerate(lines):
        column = 0
        for style, text in line:
            # The length is given: fonts differ, and the columns have to stand below each other.
            word, start = text.strip(), column + len(text) - len(text.lstrip())
            if word:
                svg.append(f'<text x="{MARGIN + start * CELL:.1f}" y="{MARGIN + row * LINE + FONT}" '
                           f'textLength="{len(word) * CELL:.1f}" xml:space="preserve" {STYLES[style]}>'
                           f'{escape(word)}</text>'.replace(" >", ">"))
            column += len(text)
    return "\n".join([*svg, "</svg>", ""])


picture = draw(read_lines(sys.argv[1]))
if sys.argv[2:3] == ["--compare"]:
    if pathlib.Path(sys.argv[3]).read_text() != picture:
        sys.exit(f"{sys.argv[3]} shows something else than what the program prints: draw it again")
else:
    sys.stdout.write(picture)
