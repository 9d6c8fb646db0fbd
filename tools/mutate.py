#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Change the library in one place at a time, and see whether the quick tests notice.

    mutate.py [--build build/release] [--count 400] [--seed 1] [--jobs 2] [--report FILE]
    mutate.py --only 'src/core/queue.cc:41:12:comparison'     one mutant again, with its diff
    mutate.py --list                                          all of them

The build tree is a complete one, whose tests pass. A mutant is one file compiled, and test programs linked with it in
the place of the original. One that does not compile or link, or compiles to the same object, does not count and is
replaced by the next one drawn; lines that are marked as out of every test's reach are left alone. The tests of the
mutant's own room run first, the others after them, until one fails; a test program that takes five times as long as it
should has failed, too. Exit status 1 when fewer than --floor percent of the mutants are killed.
"""
import argparse
import concurrent.futures
import difflib
import itertools
import json
import os
import random
import re
import shlex
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
MUTATED = ["src/constraints/arith/*.cc", "src/constraints/global/*.cc", "src/core/narrow.cc", "src/core/queue.cc"]
PROGRAMS = ["unit_constraints", "semantic", "unit_core", "model", "callbacks", "golden", "limits", "memory", "unit_search",
            "unit_nogood", "unit_profiler"]

# ----- what can be changed

SIMPLE = [
    ("comparison", re.compile(r"(?<= )(<=|>=|==|!=|<|>)(?= )"),
     {"<": ">", "<=": ">=", ">": "<", ">=": "<=", "==": "!=", "!=": "=="}),
    ("off by one", re.compile(r"(?<= )(<=|>=|<|>)(?= )"), {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}),
    ("off by one", re.compile(r"(?<= )([+-]) 1\b"), {"+": "+ 2", "-": "- 2"}),
    ("off by one", re.compile(r"(?<= )([+-]) 1\b"), {"+": "+ 0", "-": "- 0"}),
    ("logic", re.compile(r"(?<= )(&&|\|\|)(?= )"), {"&&": "||", "||": "&&"}),
    ("result", re.compile(r"(?<=return )(true|false)(?=;)"), {"true": "false", "false": "true"}),
]
MIN_MAX = re.compile(r"\b(\w*?)(min|max|Min|Max)(\w*)\b(?=\s*[-+*/<>=!;,.()\[\]&|?: ])")
OPPOSITE = {"min": "max", "max": "min", "Min": "Max", "Max": "Min"}
UNREACHED = re.compile(r"[^\n]*GCOVR_EXCL_LINE|GCOVR_EXCL_START.*?GCOVR_EXCL_STOP", re.DOTALL)
ONE_SIDED = re.compile(r"[^\n]*GCOVR_EXCL_BR_LINE|GCOVR_EXCL_BR_START.*?GCOVR_EXCL_BR_STOP", re.DOTALL)
CALL = re.compile(r"^\s+(?!return\b|case\b|else\b)(?:if \(!.*\) return \w+;|[\w:.>\-*]+\([^{}]*\);)$")
ATTACH = re.compile(r"^\s*(?:for \(.*\) )?\w+\.attach\(.*\);$")
SLOT = re.compile(r"\.(newMin|newMax|minBound|maxBound|bound|removed) = (on<.+?>)(?=[,}])")


def masked(text):
    """The text with comments and strings blanked out, at the same positions."""
    pattern = re.compile(r'//[^\n]*|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'|^#[^\n]*', re.MULTILINE)
    return pattern.sub(lambda match: "~" * len(match.group()), text)


def simple_changes(code):
    for kind, pattern, table in SIMPLE:
        for match in pattern.finditer(code):
            yield kind, match.start(), match.end(), table[match.group(1)]


def min_max_changes(code):
    for match in MIN_MAX.finditer(code):
        head, word, tail = match.groups()
        if word[0].islower() and head or tail[:1].islower():
            continue
        yield "min and max", match.start(), match.end(), head + OPPOSITE[word] + tail


def slot_changes(code):
    for table in re.finditer(r"handlers<\w+>\(\s*\{.*?\}\)", code, re.DOTALL):
        slots = list(SLOT.finditer(code, table.start(), table.end()))
        for a, b in itertools.pairwise(slots) if hasattr(itertools, "pairwise") else zip(slots, slots[1:]):
            if a.group(2) != b.group(2):
                between = code[a.end(2):b.start(2)]
                yield "slots", a.start(2), b.end(2), b.group(2) + between + a.group(2)
        for slot in slots:
            yield "slots", slot.start(), slot.end(), f".{slot.group(1)} = {{}}"


def line_changes(code):
    start = 0
    lines = code.splitlines(keepends=True)
    for line, after in zip(lines, lines[1:] + [""]):
        end = start + len(line)
        if CALL.match(line.rstrip("\n")):
            yield "dropped call", start, end, "\n"
        if ATTACH.match(line.rstrip("\n")) and ATTACH.match(after.rstrip("\n")):
            yield "order of attaching", start, end + len(after), None
        start = end


def out_of_reach(text, kind, position):
    """Whether no test gets there, as the marks say: to the line, or to the result of a narrowing that cannot fail."""
    patterns = [UNREACHED, ONE_SIDED] if kind == "result" else [UNREACHED]
    return any(match.start() <= position < match.end() for pattern in patterns for match in pattern.finditer(text))


class Mutant:
    def __init__(self, path, text, change):
        self.path = path
        self.kind, start, end, replacement = change
        if replacement is None:  # two lines change places
            first, second = text[start:end].splitlines(keepends=True)
            replacement = second + first
        line = text.count("\n", 0, start) + 1
        column = start - text.rfind("\n", 0, start)
        self.key = f"{path}:{line}:{column}:{self.kind}:{replacement.strip()[:20]}"
        self.text = text[:start] + replacement + text[end:]
        self.original = text

    def diff(self):
        lines = difflib.unified_diff(self.original.splitlines(), self.text.splitlines(), lineterm="", n=0)
        return "\n".join(line for line in lines if not line.startswith(("---", "+++", "@@")))


def all_mutants():
    for pattern in MUTATED:
        for path in sorted(ROOT.glob(pattern)):
            text = path.read_text()
            code = masked(text)
            name = str(path.relative_to(ROOT))
            for change in itertools.chain(simple_changes(code), min_max_changes(code), slot_changes(code),
                                          line_changes(code)):
                if not out_of_reach(text, *change[:2]):
                    yield Mutant(name, text, change)


# ----- building and testing one

class Bench:
    """A build tree, its test programs, and how long they take when all is well."""

    def __init__(self, build):
        self.build = build.resolve()
        commands = json.loads((self.build / "compile_commands.json").read_text())
        self.commands = {str(Path(entry["file"]).resolve().relative_to(ROOT)): entry for entry in commands
                         if Path(entry["file"]).resolve().is_relative_to(ROOT / "src")}
        self.programs = [name for name in PROGRAMS if (self.build / "tests" / f"test_{name}").exists()]
        self.links = {name: self.link_command(name) for name in self.programs}
        self.limits = {}
        self.originals = {}
        self.lock = threading.Lock()

    def link_command(self, name):
        """The words of the command that links the program, and where in them the library stands."""
        shown = subprocess.run(["ninja", "-C", self.build, "-t", "commands", "-s", f"tests/test_{name}"],
                               capture_output=True, text=True, check=True).stdout
        command = next(line for line in shown.splitlines() if f"-o tests/test_{name} " in line)
        command = next(part for part in command.split(" && ") if " -o " in part)
        words = shlex.split(command)
        return words, next(i for i, word in enumerate(words) if word.endswith("libkoru_checked.a"))

    def measure(self):
        for name in self.programs:
            start = time.monotonic()
            if not self.run(self.build / "tests" / f"test_{name}", 600):
                sys.exit(f"{name} fails without any change")
            self.limits[name] = 5 * (time.monotonic() - start) + 10
        print("tests:", ", ".join(f"{name} {(limit - 10) / 5:.1f} s" for name, limit in self.limits.items()), flush=True)

    def run(self, program, limit):
        """Whether all its quick tests pass."""
        command = ["bash", "-c", 'ulimit -v 8000000 -c 0; exec "$0" "$@"', program, "--gtest_filter=-*Heavy*",
                   "--gtest_fail_fast", "--gtest_brief=1"]
        process = subprocess.Popen(command, cwd=ROOT, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   start_new_session=True)
        try:
            return process.wait(limit) == 0
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, 9)
            process.wait()
            return False

    def compile(self, path, text, folder):
        """The object that the file with this text becomes, as bytes; none when it does not compile."""
        entry = self.commands[path]
        source, made = folder / "mutant.cc", folder / "mutant.o"
        source.write_text(text)
        words = [word for word in shlex.split(entry["command"]) if not word.startswith("-W") and word != "-MD"]
        for option in ("-MT", "-MF"):
            if option in words:
                del words[words.index(option):words.index(option) + 2]
        words[words.index("-o") + 1] = str(made)
        words[words.index("-c") + 1] = str(source)
        words.append("-g0")
        done = subprocess.run(words, cwd=entry["directory"], capture_output=True, check=False)
        return made.read_bytes() if done.returncode == 0 else None

    def changes_code(self, mutant, folder):
        """Whether the mutant compiles, to another object than the original; its own is then in the folder."""
        with self.lock:
            if mutant.path not in self.originals:
                self.originals[mutant.path] = self.compile(mutant.path, mutant.original, folder)
        return self.compile(mutant.path, mutant.text, folder) not in (None, self.originals[mutant.path])

    def link(self, name, folder):
        """The program with the mutant: what it defines is not taken from the library any more. None when something that
        the original defines is missing."""
        words, library = self.links[name]
        program = folder / f"test_{name}"
        words = [*words[:library], str(folder / "mutant.o"), *words[library:]]
        words[words.index("-o") + 1] = str(program)
        done = subprocess.run(words, cwd=self.build, capture_output=True, check=False)
        return program if done.returncode == 0 else None

    def judge(self, mutant):
        """The program whose tests failed; "survived", or "no mutant" when there is none."""
        own = "unit_core" if mutant.path.startswith("src/core") else "unit_constraints"
        with tempfile.TemporaryDirectory(prefix="mutant-") as name:
            folder = Path(name)
            if not self.changes_code(mutant, folder):
                return "no mutant"
            for each in sorted(self.programs, key=lambda program: program != own):
                program = self.link(each, folder)
                if program is None:
                    return "no mutant"
                if not self.run(program, self.limits[each]):
                    return each
                program.unlink()
            return "survived"


def judge_sample(bench, mutants, count, jobs):
    """Judges the first `count` of the mutants that compile."""
    judged = []
    pending = iter(mutants)
    lock = threading.Lock()

    def work():
        while True:
            with lock:
                mutant = next(pending, None) if len(judged) < count else None
            if mutant is None:
                return
            verdict = bench.judge(mutant)
            with lock:
                if verdict == "no mutant" or len(judged) >= count:
                    continue
                judged.append((mutant, verdict))
                if verdict == "survived":
                    print(f"survived  {mutant.key}\n{mutant.diff()}", flush=True)
                if len(judged) % 20 == 0:
                    print(f"{len(judged)} of {count}", flush=True)

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for future in [pool.submit(work) for _ in range(jobs)]:
            future.result()
    return judged


def summary(judged):
    kinds = {}
    for mutant, verdict in judged:
        killed, total = kinds.get(mutant.kind, (0, 0))
        kinds[mutant.kind] = (killed + (verdict != "survived"), total + 1)
    for kind, (killed, total) in sorted(kinds.items()):
        yield f"{kind:20} {killed:4} of {total:4} killed"
    killed = sum(killed for killed, _ in kinds.values())
    yield f"{'all':20} {killed:4} of {len(judged):4} killed, {100 * killed / max(1, len(judged)):.1f} %"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release")
    parser.add_argument("--count", type=int, default=400)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--floor", type=float, default=95)
    parser.add_argument("--report", type=Path)
    parser.add_argument("--only")
    parser.add_argument("--list", action="store_true")
    options = parser.parse_args()
    mutants = list(all_mutants())
    if options.list:
        print("\n".join(mutant.key for mutant in mutants), f"\n{len(mutants)} mutants")
        return
    if options.only:
        mutants = [mutant for mutant in mutants if mutant.key.startswith(options.only)]
        print("\n".join(f"{mutant.key}\n{mutant.diff()}" for mutant in mutants))
    else:
        random.Random(options.seed).shuffle(mutants)
    bench = Bench(options.build)
    bench.measure()
    judged = judge_sample(bench, mutants, len(mutants) if options.only else options.count, options.jobs)
    lines = list(summary(judged))
    print("\n".join(lines))
    if options.report:
        options.report.write_text(json.dumps(
            [{"mutant": mutant.key, "verdict": verdict, "diff": mutant.diff()} for mutant, verdict in judged], indent=1))
    killed = sum(verdict != "survived" for _, verdict in judged)
    sys.exit(0 if 100 * killed >= options.floor * len(judged) else 1)


if __name__ == "__main__":
    main()
