#!/usr/bin/env python3
"""Changes the library in one place at a time and tells which changes no test notices.

    tests/mutants/mutate.py WORK [--count N] [--seed N] [--only PATH] [--again] [--list]

All changes are compiled into the library at once, each behind a question for its number, which an
environment variable of the test program answers: a mutant then costs no more than the tests that
kill it. Only changes within one line can be made that way.

WORK is a folder for copies and builds; what is there already is used again, so that a run can go on
where an earlier one with the same arguments ended; --again tries those that survived, and only
those, once more. One line is added to WORK/results.txt for each mutant that was tried: its state,
its place and the change. The last one of a mutant counts. States:

    killed     a test failed, or did not end
    survived   all tests passed
"""

import argparse
import concurrent.futures
import os
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Where mutants are made, and the tests that are run first for it; all the others follow where those
# pass.
SOURCES = {
    "korvat/members/RawCodec.cpp": "*Codec*:*BitSlot*:*Field*:*Bits*:*NcType*:*Float*",
    "korvat/members/Scaling.cpp": "*Scaling*:*Physical*:*MemScalar*",
    "korvat/members/MemScalar.cpp": "*MemScalar*:*Scaling*",
    "korvat/members/MemFloat.cpp": "*MemFloat*",
    "korvat/members/MemBitfield.cpp": "*MemBitfield*",
    "korvat/members/MemNumeric.cpp": "*Numeric*",
    "korvat/members/MemNumeric.h": "*Numeric*:*MemScalar*:*MemFloat*:*MemBitfield*",
    "korvat/convert/ConversionPlan.cpp": "*Plan*",
    "korvat/convert/ConversionPlanToJson.cpp": "*Plan*",
    "korvat/convert/ConversionPlanToRaw.cpp": "*Plan*",
    "korvat/convert/DynamicArrays.cpp": "*Dynamic*:*Counted*",
    "korvat/convert/JsonConverter.cpp": "*JsonConverter*:*RawToJson*",
    "korvat/convert/JsonConverterToRaw.cpp": "*JsonToRaw*:*Patch*",
    "korvat/convert/LeafWriter.cpp": "*LeafWriter*:*JsonToRaw*",
    "korvat/convert/PacketConverter.cpp": "*Packet*",
    "korvat/builder/TStateMachine.h": "*StateMachine*:*Builder*",
}

# What is compiled again for a change of a header; else it is the changed file alone.
USERS = {
    "korvat/members/MemNumeric.h": [
        "korvat/members/MemNumeric.cpp", "korvat/members/MemScalar.cpp",
        "korvat/members/MemFloat.cpp", "korvat/members/MemBitfield.cpp",
        "korvat/convert/LeafWriter.cpp", "tests/members/MemNumericTest.cpp"],
    "korvat/builder/TStateMachine.h": [
        "korvat/builder/EnumBuilder.cpp", "korvat/builder/FpBuilder.cpp",
        "korvat/builder/VarBuilder.cpp", "tests/builder/TStateMachineTest.cpp"],
}

# Tests that take most of the time and are run last.
SLOW = ("RoundTrip.*:*EveryStandardType*:*RandomTypes:*RawNumberOfTwoBytes*:*TooManyVisits*:Limits.*:"
        "*CatalogueLimits*:*SurvivesAFile*:RawValue.Reaches*")

TESTS = ["tests/members/*Test.cpp", "tests/convert/*Test.cpp", "tests/builder/*Test.cpp"]

COMPILE = (["ccache"] if shutil.which("ccache") else []) + [
    "g++", "-std=c++20", "-O0", "-fPIC", "-w", "-I.", "-include", "Switch.h"]
CPU_LIMIT = 60  # seconds for all tests; they take a few
SWITCH_HEADER = 'extern "C" bool isMutant(int number);\n'
SWITCH_SOURCE = """#include <cstdlib>
extern "C" bool isMutant(int number) {
  static const char* const text = std::getenv("MUTANT");
  static const int chosen = text == nullptr ? -1 : std::atoi(text);
  return number == chosen;
}
"""

BINARY = {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ",
          " != ": " == ", " && ": " || ", " || ": " && ", " + ": " - ", " - ": " + ",
          " * ": " / ", " / ": " * ", " % ": " / ", " << ": " >> ", " >> ": " << ",
          " & ": " | ", " | ": " & ", " ^ ": " & "}
WORDS = {"true": "false", "false": "true", "std::min": "std::max", "std::max": "std::min"}

CONDITION = re.compile(r"^(\s*(?:\} else )?(?:if|while) \()(.+)(\)(?: \{|(?: [^;{}]+;))?)$")
RETURN = re.compile(r"^(\s*return )([^{}]+)(;)$")
ASSIGNMENT = re.compile(r"^(\s*[\w:<>*&., \[\]()\->]*[\w\]>*&)] (?:[+\-|&])?= )([^{}]+)(;)$")
STATEMENT = re.compile(r"^(\s*)((?:\+\+|--)?[\w.\->:\[\]*]+(?:\(.*\))?)(;)$")


def blank(text):
    """The text with comments, strings and characters replaced by blanks of the same length."""
    pattern = r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\''
    return re.sub(pattern, lambda m: re.sub(r"[^\n]", "_", m.group()), text, flags=re.S)


def is_silent(line):
    """True for lines that tests need not see: messages for developers, memory that is asked for early
    or given back, and what makes no code."""
    return re.search(r"Logger::(trace|debug)|isTraced|isLogged|shrink_to_fit|reserve\(|^\s*(#|//)|static_assert|using |"
                     r"namespace|template|constexpr|operator", line)


def split(plain, pattern):
    """Where the expression of such a line begins and ends; for a condition up to its bracket."""
    match = pattern.match(plain)
    if not match:
        return None
    start, end = match.start(2), match.end(2)
    if pattern is CONDITION:
        depth = 1
        for end in range(start, len(plain)):
            depth += {"(": 1, ")": -1}.get(plain[end], 0)
            if depth == 0:
                break
        else:
            return None
    text = plain[start:end]
    return None if text.count("(") != text.count(")") or " ; " in text else (start, end)


def changed_expressions(code, plain, is_condition):
    for old, new in BINARY.items():
        for match in re.finditer(re.escape(old), plain):
            yield code[:match.start()] + new + code[match.end():]
    for old, new in WORDS.items():
        for match in re.finditer(r"(?<![\w:])" + re.escape(old) + r"\b", plain):
            yield code[:match.start()] + new + code[match.end():]
    for match in re.finditer(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+)(?=u?(?![\w.']))", plain):
        yield code[:match.start()] + str(int(match.group(), 0) + 1) + code[match.end():]
    for match in re.finditer(r"(?<![\w)])!(?=[\w(])", plain):
        yield code[:match.start()] + code[match.end():]
    if is_condition:
        yield "true"
        yield "false"


class Line:
    """One line of the library, and the changes that it can hold."""

    def __init__(self, name, number, text, plain, is_start):
        self.name, self.number, self.text = name, number, text
        self.changes = []  # the expressions, or None for a statement that is left out
        self.span = None
        if is_silent(text) or not is_start:
            return
        for pattern in (CONDITION, RETURN, ASSIGNMENT):
            self.span = split(plain, pattern)
            if self.span:
                start, end = self.span
                expressions = changed_expressions(text[start:end], plain[start:end],
                                                  pattern is CONDITION)
                self.changes = list(dict.fromkeys(expressions))
                # What is declared there is needed; what is assigned may be left out.
                target = plain[:start].strip()
                if pattern is ASSIGNMENT and re.match(r"^[\w.\->\[\]*()]+ [+\-|&]?=$", target):
                    self.changes.append(None)
                return
        statement = STATEMENT.match(plain)
        if statement and plain.count("(") == plain.count(")") and not re.match(r"\s*(break|continue|return|default|case)\b", plain):
            if "(" in plain or "+" in plain or "-" in plain:
                self.span = statement.span(2)
                self.changes = [None]

    def describe(self, change):
        start, end = self.span
        new = "(left out)" if change is None else (
            self.text[:start] + change + self.text[end:]).strip()
        return f"{self.name}:{self.number}: {self.text.strip()} => {new}"

    def switched(self, numbers):
        """The line with its changes behind their numbers."""
        if not numbers:
            return self.text
        start, end = self.span
        code = f"({self.text[start:end]})"
        guards = ""
        for number, change in zip(numbers, self.changes):
            if change is None:
                guards += f"if (!isMutant({number})) "
            else:
                code = f"(isMutant({number}) ? ({change}) : {code})"
        if all(change is None for change in self.changes):
            code = self.text[start:end]
        indent = len(self.text) - len(self.text.lstrip())
        return self.text[:indent] + guards + self.text[indent:start] + code + self.text[end:]


def lines_of(name):
    text = (ROOT / name).read_text()
    lines, last = [], ";"  # what the line of code before ended with
    for number, (line, plain) in enumerate(zip(text.split("\n"), blank(text).split("\n")), 1):
        plain = plain.rstrip("_ ")
        lines.append(Line(name, number, line, plain, last in ";{}:"))
        last = plain[-1] if plain else last
    return lines


def in_parallel(function, items):
    """The results of the function for all items, in their order."""
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        yield from pool.map(function, items)


class Build:
    def __init__(self, work, files):
        self.work = work
        self.tree = work / "tree"
        self.objects = work / "objects"
        self.objects.mkdir(parents=True, exist_ok=True)
        self.tree.mkdir(exist_ok=True)
        for folder in ("korvat", "tests", "res"):
            shutil.rmtree(self.tree / folder, ignore_errors=True)
            shutil.copytree(ROOT / folder, self.tree / folder)
        self.files = files  # name of each changed file: its lines
        self.sources = sorted(p.relative_to(self.tree).as_posix()
                              for p in self.tree.glob("korvat/*/*.cpp"))
        self.tests = sorted(p.relative_to(self.tree).as_posix()
                            for pattern in TESTS for p in self.tree.glob(pattern))
        (self.tree / "Switch.h").write_text(SWITCH_HEADER)
        (self.tree / "Switch.cpp").write_text(SWITCH_SOURCE)
        self.mutants = {}  # number: line and change

    def write_changes(self):
        """Numbers all changes and writes them into the copies of the files."""
        number = 0
        self.mutants = {}
        for name, lines in self.files.items():
            text = []
            for line in lines:
                numbers = range(number, number + len(line.changes))
                number += len(line.changes)
                self.mutants.update({n: (line, c) for n, c in zip(numbers, line.changes)})
                text.append(line.switched(numbers))
            (self.tree / name).write_text("\n".join(text))

    def compile(self, source, target):
        defines = [f'-DKORVAT_SOURCE_DIR="{self.tree}"',
                   f'-DKORVAT_TEST_DATA="{self.tree}/tests/data"']
        command = [*COMPILE, *defines, "-c", source, "-o", str(target)]
        return subprocess.run(command, cwd=self.tree, capture_output=True, text=True)

    def drop_refused_lines(self, errors):
        """Takes the changes back on lines that do not compile with them."""
        refused = {(match[1], int(match[2]))
                   for match in re.finditer(r"^(?:\./)?(korvat/[\w/.]+):(\d+):\d+: error", errors, re.M)}
        dropped = 0
        for name, lines in self.files.items():
            for line in lines:
                if (name, line.number) in refused and line.changes:
                    line.changes = []
                    dropped += 1
        return dropped

    def prepare(self):
        users = [u for name in self.files for u in USERS.get(name, [])]
        changed = sorted({n for n in self.files if n.endswith(".cpp")} | set(users))
        for source in changed:  # which lines take their changes?
            while True:
                self.write_changes()
                run = subprocess.run([*COMPILE, "-fsyntax-only", "-DKORVAT_SOURCE_DIR=\"\"",
                                      "-DKORVAT_TEST_DATA=\"\"", source],
                                     cwd=self.tree, capture_output=True, text=True)
                if run.returncode == 0:
                    break
                if not self.drop_refused_lines(run.stderr):
                    sys.exit(run.stderr)
        objects = []
        # Any header may be part of an object.
        newest_header = max(p.stat().st_mtime for folder in ("korvat", "tests")
                            for p in (ROOT / folder).rglob("*.h"))

        def make(source):
            mark = ".changed.o" if source in changed else ".o"
            target = self.objects / (source.replace("/", "_") + mark)
            original = ROOT / source
            is_current = (source not in changed and original.exists() and target.exists()
                          and target.stat().st_mtime > max(original.stat().st_mtime, newest_header))
            run = None if is_current else self.compile(source, target)
            return source, target, run

        for source, target, run in in_parallel(make, self.sources + self.tests + ["Switch.cpp"]):
            if run is not None and run.returncode != 0:
                sys.exit(run.stderr)
            objects.append((source, target))
        library = self.work / "libmutant.so"
        mine = [str(o) for s, o in objects if not s.startswith("tests/")]
        tests = [str(o) for s, o in objects if s.startswith("tests/")]
        self.program = self.work / "tests"
        subprocess.run(["g++", "-shared", "-Wl,-Bsymbolic-functions", *mine, "-lexpat", "-o",
                        str(library)], check=True)
        subprocess.run(["g++", *tests, str(library), f"-Wl,-rpath,{self.work}", "-lgtest", "-lgmock",
                        "-lgtest_main", "-lexpat", "-o", str(self.program)], check=True)

    def passes(self, gtest_filter, number=-1):
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (CPU_LIMIT, CPU_LIMIT))
            resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        command = [str(self.program), "--gtest_brief=1", "--gtest_fail_fast",
                   f"--gtest_filter={gtest_filter}"]
        run = subprocess.run(command, cwd=self.tree, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL, preexec_fn=limit,
                             env={**os.environ, "MUTANT": str(number)})
        return run.returncode == 0

    def judge(self, number):
        first = SOURCES[self.mutants[number][0].name]
        for gtest_filter in (f"{first}-{SLOW}", f"*-{first}:{SLOW}", SLOW):
            if not self.passes(gtest_filter, number):
                return "killed"
        return "survived"


def states_in(results):
    """Text of a mutant: its state."""
    if not results.exists():
        return {}
    lines = [line.split(" ", 1) for line in results.read_text().splitlines()]
    return {text: state for state, text in lines}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--count", type=int, default=600)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="", help="part of the path")
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--list", action="store_true")
    options = parser.parse_args()

    files = {name: lines_of(name) for name in SOURCES if options.only in name}
    if options.list:
        for line in (line for lines in files.values() for line in lines):
            for change in line.changes:
                print(line.describe(change))
        return

    work = options.work.resolve()
    work.mkdir(parents=True, exist_ok=True)
    build = Build(work, files)
    build.prepare()
    if not build.passes("*"):
        sys.exit("the tests fail without any change")

    todo = list(build.mutants)
    random.Random(options.seed).shuffle(todo)
    print(f"{len(todo)} mutants", flush=True)
    results = work / "results.txt"
    known = states_in(results)
    texts = {n: line.describe(change) for n, (line, change) in build.mutants.items()}
    if options.again:
        todo = [n for n in todo if known.get(texts[n]) == "survived"]
    else:
        todo = [n for n in todo[:options.count] if texts[n] not in known]
    with results.open("a") as out:
        for number, state in zip(todo, in_parallel(build.judge, todo)):
            print(state, texts[number], file=out, flush=True)
    states = list(states_in(results).values())
    print({state: states.count(state) for state in ("killed", "survived")})


if __name__ == "__main__":
    main()
