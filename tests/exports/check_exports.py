#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compare what the public headers declare and what libkoru.so or koru.dll exports and needs with what they should.

    check_exports.py header  koru.h     --list exports.txt                       names declared with KORU_API or KORU_POST_API
    check_exports.py library libkoru.so --list exports.txt exports_extras.txt    dynamic symbols defined
    check_exports.py needed  libkoru.so                                          libraries it is linked with

A DLL is read by the objdump of its toolchain: --objdump.
"""
import argparse
import re
import subprocess
import sys

ALLOWED_LIBRARIES = re.compile(r"(libstdc\+\+|libgcc_s|libc|libm|ld-linux[\w-]*)\.so\.\d+|(KERNEL32|msvcrt)\.dll")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def listed_names(paths):
    """The names of all lists together."""
    names = []
    for path in paths:
        with open(path, encoding="ascii") as file:
            more = file.read().split()
        if more != sorted(set(more)):
            sys.exit(f"{path}: names are not sorted, or occur twice")
        if again := sorted(set(names) & set(more)):
            sys.exit(f"{path}: listed elsewhere as well: {again}")
        names += more
    return names


def declared_names(path):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    text = re.sub(r"/\*.*?\*/|//[^\n]*", " ", text, flags=re.S)
    text = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", "", text, flags=re.M)
    text = re.sub(r"__attribute__\s*\(\(.*?\)\)", " ", text, flags=re.S)
    return re.findall(r"\bKORU_(?:API|POST_API)\b[^;(]*?\b(\w+)\s*\(", text)


def exported_names(path, objdump):
    if path.endswith(".dll"):
        table = run(objdump, "-p", path).partition("[Ordinal/Name Pointer] Table\n")[2].partition("\n\n")[0]
        return [line.split()[-1] for line in table.splitlines()]
    lines = run("nm", "-D", "--defined-only", path).splitlines()
    return [line.split()[-1] for line in lines]


def needed_libraries(path, objdump):
    if path.endswith(".dll"):
        return re.findall(r"DLL Name: (.*)", run(objdump, "-p", path))
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", path))


def compare(what, actual, wanted):
    faults = [f"listed, but not {what}: {name}" for name in sorted(set(wanted) - set(actual))]
    faults += [f"{what}, but not listed: {name}" for name in sorted(set(actual) - set(wanted))]
    if len(actual) != len(set(actual)):
        faults.append(f"{what} twice: {sorted(name for name in set(actual) if actual.count(name) > 1)}")
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("check", choices=["header", "library", "needed"])
    parser.add_argument("file")
    parser.add_argument("--list", nargs="+", default=[], help="lists of names, one a line")
    parser.add_argument("--objdump", help="the program that shows what is in a DLL")
    args = parser.parse_args()
    if args.check == "needed":
        found = needed_libraries(args.file, args.objdump)
        faults = [f"needs {name}" for name in found if not ALLOWED_LIBRARIES.fullmatch(name)]
        faults += [] if found else ["needs no library at all: is it one?"]
    elif args.check == "header":
        found = declared_names(args.file)
        faults = compare("declared", found, listed_names(args.list))
    else:
        found = exported_names(args.file, args.objdump)
        faults = compare("exported", found, listed_names(args.list))
    for fault in faults:
        print(f"{args.file}: {fault}")
    print(f"{args.check}: {len(found)} names, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
