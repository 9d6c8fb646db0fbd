#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Throw away the result of every function of a public header: the compilers warn of those that post, and only where the
host has asked for it by KORU_WARN_UNUSED."""
import argparse
import re
import subprocess
import sys
from pathlib import Path

DECLARATION = re.compile(r"\b(KORU_API|KORU_POST_API)\b([^;(]*?)\b(\w+)\s*\(([^;]*)\)\s*;")


def declarations(header):
    """(macro, name, call) for each function, with zeros for its parameters."""
    text = re.sub(r"/\*.*?\*/", " ", header.read_text(encoding="utf-8"), flags=re.S)
    text = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", "", text, flags=re.M)
    for macro, _, name, parameters in DECLARATION.findall(text):
        yield macro, name, f"{name}({', '.join(zeros(parameters))});"


def zeros(parameters):
    for parameter in " ".join(parameters.split()).split(", "):
        if parameter not in ("void", "..."):
            yield f"({re.sub(r'[A-Za-z_]+[0-9]*$', '', parameter)})0"


def warned(compiler, language, define, header, functions):
    """The functions of whose call the compiler warns. Each stands in a line of its own, from the third on."""
    lines = [f'#include "{header.name}"', "void f(void) {", *(call for _, _, call in functions), "}"]
    command = [*compiler, "-x", language, *define, f"-I{header.parent}", "-c", "-o", "/dev/null", "-"]
    result = subprocess.run(command, input="\n".join(lines) + "\n", capture_output=True, text=True, check=False)
    if result.returncode != 0:
        sys.exit(result.stderr)
    numbers = {int(n) for n in re.findall(r"<stdin>:(\d+):\d+: warning: [^\n]*\[-Wunused-(?:result|value)\]", result.stderr)}
    return {functions[n - 3][1] for n in numbers}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("header", type=Path)
    parser.add_argument("--cc", default="gcc")
    parser.add_argument("--cxx", default="g++")
    args = parser.parse_args()
    functions = list(declarations(args.header))
    posting = {name for macro, name, _ in functions if macro == "KORU_POST_API"}
    faults = []
    for compiler, language in ([args.cc, "-std=c99"], "c"), ([args.cxx, "-std=c++11"], "c++"):
        for define, wanted in ([], set()), (["-DKORU_WARN_UNUSED"], posting):
            found = warned(compiler, language, define, args.header, functions)
            faults += [f"{compiler[0]} {define}: {name}" for name in sorted(found ^ wanted)]
    for fault in faults:
        print(fault)
    print(f"check_unused: {len(posting)} of {len(functions)} functions post, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
