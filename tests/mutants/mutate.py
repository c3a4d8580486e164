#!/usr/bin/env python3
"""Changes the library in one place at a time and tells which changes no test notices.

    tests/mutants/mutate.py WORK [--count N] [--seed N] [--only PATH] [--list]

WORK is a folder for copies and builds; what is there already is used again, so that a run can go on
where an earlier one with the same arguments ended. One line is written to WORK/results.txt for each
mutant: its state, its place and the change. States:

    killed     a test failed, or did not end
    survived   all tests passed
    broken     it does not compile; not counted
"""

import argparse
import pathlib
import random
import re
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

TESTS = ["tests/members/*Test.cpp", "tests/convert/*Test.cpp", "tests/builder/*Test.cpp",
         "tests/types/*Test.cpp"]

COMPILE = ["g++", "-std=c++20", "-O0", "-fPIC", "-w", "-I."]
TIME_LIMIT = 120  # seconds for all tests; they take a few

BINARY = {" < ": [" <= "], " <= ": [" < "], " > ": [" >= "], " >= ": [" > "], " == ": [" != "],
          " != ": [" == "], " && ": [" || "], " || ": [" && "], " + ": [" - "], " - ": [" + "],
          " * ": [" / "], " / ": [" * "], " % ": [" / "], " << ": [" >> "], " >> ": [" << "],
          " & ": [" | "], " | ": [" & "], " += ": [" -= "], " -= ": [" += "], " |= ": [" &= "],
          "++": ["--"], " ^ ": [" & "]}
WORDS = {"true": "false", "false": "true", "std::min": "std::max", "std::max": "std::min"}


def blank(text):
    """The text with comments, strings and characters replaced by blanks of the same length."""
    pattern = r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\''
    return re.sub(pattern, lambda m: re.sub(r"[^\n]", " ", m.group()), text, flags=re.S)


def is_silent(line):
    """True for lines that tests need not see: messages for developers, includes, assertions."""
    return re.search(r"Logger::(trace|debug)|^\s*#|static_assert|using |namespace|template", line)


def changes_of_line(line, plain):
    """Start, end and replacement of each change within one line; `plain` is its blanked form."""
    for old, replacements in BINARY.items():
        for match in re.finditer(re.escape(old), plain):
            for new in replacements:
                yield match.start(), match.end(), new
    for old, new in WORDS.items():
        for match in re.finditer(r"(?<![\w:])" + re.escape(old) + r"\b", plain):
            yield match.start(), match.end(), new
    for match in re.finditer(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+)(?![\w.'])", plain):
        yield match.start(), match.end(), str(int(match.group(), 0) + 1)
    for match in re.finditer(r"(?<![\w)])!(?=[\w(])", plain):
        yield match.start(), match.end(), ""
    for match in re.finditer(r"\bif \((?!constexpr)(.+)\)(?= return|\s*\{?$| [a-z_*+-])", plain):
        yield match.start(1), match.end(1), "true"
        yield match.start(1), match.end(1), "false"
    statement = re.match(r"\s+((?:[\w.>\-:\[\]*]+ [+\-|&]?= |\+\+|[\w.>\-:]+\().*;)\s*$", plain)
    if statement and not re.match(r"\s*(return|static_cast<void>)", plain):
        yield statement.start(1), statement.end(1), ";"


def mutants(name):
    """Path, number of the line, its old and its new text, for each mutant of a file."""
    text = (ROOT / name).read_text()
    lines, plains = text.split("\n"), blank(text).split("\n")
    result = []
    for number, (line, plain) in enumerate(zip(lines, plains), 1):
        if is_silent(line):
            continue
        for start, end, new in changes_of_line(line, plain):
            result.append((name, number, line, line[:start] + new + line[end:]))
    return list(dict.fromkeys(result))


class Build:
    def __init__(self, work):
        self.work = work
        self.tree = work / "tree"
        self.objects = work / "objects"
        self.objects.mkdir(parents=True, exist_ok=True)
        self.tree.mkdir(exist_ok=True)
        for folder in ("korvat", "tests", "res"):
            shutil.rmtree(self.tree / folder, ignore_errors=True)
            shutil.copytree(ROOT / folder, self.tree / folder)
        self.sources = sorted(p.relative_to(self.tree).as_posix()
                              for p in self.tree.glob("korvat/*/*.cpp"))
        self.tests = sorted(p.relative_to(self.tree).as_posix()
                            for pattern in TESTS for p in self.tree.glob(pattern))

    def object_of(self, source, folder=None):
        return (folder or self.objects) / (source.replace("/", "_") + ".o")

    def compile(self, source, target):
        defines = [f'-DKORVAT_SOURCE_DIR="{self.tree}"',
                   f'-DKORVAT_TEST_DATA="{self.tree}/tests/data"']
        command = [*COMPILE, *defines, "-c", source, "-o", str(target)]
        return subprocess.run(command, cwd=self.tree, capture_output=True).returncode == 0

    def link_library(self, objects):
        command = ["g++", "-shared", "-Wl,-Bsymbolic-functions", *map(str, objects), "-lexpat", "-o",
                   str(self.work / "libmutant.so")]
        return subprocess.run(command, capture_output=True).returncode == 0

    def prepare(self):
        for source in self.sources + self.tests:
            target = self.object_of(source)
            path = self.tree / source
            original = ROOT / source
            if target.exists() and target.stat().st_mtime > original.stat().st_mtime:
                continue
            if not self.compile(path.relative_to(self.tree).as_posix(), target):
                sys.exit(f"{source} does not compile")
        if not self.link([]):
            sys.exit("the tests do not link")

    def link(self, changed):
        """Links the library, and the tests where one of them has changed."""
        scratch = self.work / "scratch"

        def objects(sources):
            return [self.object_of(s, scratch if s in changed else None) for s in sources]

        if not self.link_library(objects(self.sources)):
            return False
        self.program = self.work / "tests"
        if changed and not set(changed) & set(self.tests):
            return True
        if changed:
            self.program = self.work / "changed-tests"
        command = ["g++", *map(str, objects(self.tests)), str(self.work / "libmutant.so"),
                   f"-Wl,-rpath,{self.work}", "-lgtest", "-lgmock", "-lgtest_main", "-lexpat",
                   "-o", str(self.program)]
        return subprocess.run(command, capture_output=True).returncode == 0

    def passes(self, gtest_filter):
        command = [str(self.program), "--gtest_brief=1", "--gtest_fail_fast",
                   f"--gtest_filter={gtest_filter}"]
        try:
            run = subprocess.run(command, cwd=self.tree, capture_output=True, timeout=TIME_LIMIT)
        except subprocess.TimeoutExpired:
            return False
        return run.returncode == 0

    def judge(self, name, number, new_line):
        path = self.tree / name
        original = path.read_text()
        lines = original.split("\n")
        lines[number - 1] = new_line
        path.write_text("\n".join(lines))
        scratch = self.work / "scratch"
        scratch.mkdir(exist_ok=True)
        try:
            changed = USERS.get(name, [name])
            if not all(self.compile(source, self.object_of(source, scratch)) for source in changed):
                return "broken"
            if not self.link(changed):
                return "broken"
            first = SOURCES[name]
            return "survived" if self.passes(first) and self.passes("*-" + first) else "killed"
        finally:
            path.write_text(original)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--count", type=int, default=600)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", help="part of the path")
    parser.add_argument("--list", action="store_true")
    options = parser.parse_args()

    todo = [m for name in SOURCES if not options.only or options.only in name
            for m in mutants(name)]
    print(f"{len(todo)} mutants", flush=True)
    random.Random(options.seed).shuffle(todo)
    todo = todo[:options.count]
    if options.list:
        for name, number, line, new in todo:
            print(f"{name}:{number}: {line.strip()} => {new.strip()}")
        return

    work = options.work.resolve()
    work.mkdir(parents=True, exist_ok=True)
    build = Build(work)
    build.prepare()
    if not build.passes("*"):
        sys.exit("the tests fail without any change")

    results = work / "results.txt"
    known = set()
    if results.exists():
        known = {line.split(" ", 1)[1] for line in results.read_text().splitlines()}
    with results.open("a") as out:
        for name, number, line, new in todo:
            text = f"{name}:{number}: {line.strip()} => {new.strip()}"
            if text not in known:
                print(build.judge(name, number, new), text, file=out, flush=True)
    summary = [line.split(" ", 1)[0] for line in results.read_text().splitlines()]
    print({state: summary.count(state) for state in ("killed", "survived", "broken")})


if __name__ == "__main__":
    main()
