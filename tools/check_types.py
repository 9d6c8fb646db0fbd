#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check that no type is defined in two files under one qualified name.

Two definitions of koru::test::Call in one program are undefined behaviour that neither compiler nor linker reports: the
inline functions of one may be used for the other. Which files make up a program is not asked: names are to be unique
over all of them. Types in unnamed namespaces, in functions and in C files cannot clash and are left alone.

    check_types.py [ROOT]     prints file:line of both definitions and a verdict; exit status 1 if there is a clash
"""
import re
import sys
from pathlib import Path

FOLDERS = ("include", "src", "tests", "bench", "profile", "examples")
# What holds braces that are none, and preprocessor lines.
OPAQUE = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\''
                    r'|^[ \t]*#(?:\\\n|[^\n])*', re.S | re.M)
NAMESPACE = re.compile(r"\bnamespace\s*([\w:]*)\s*$")
TYPE = re.compile(r"\b(?:struct|class|union|enum(?:\s+(?:class|struct))?)\s+(?:\[\[.*?\]\]\s*|alignas\([^)]*\)\s*)*"
                  r"([A-Za-z_][\w:]*(?:<[^{};]*>)?)(?:\s+final)?(?:\s*:[^{};=]*)?\s*$", re.S)
NOWHERE = None  # the scope of what cannot clash


def blank(match):
    return re.sub(r"[^\n]", " ", match[0])


def scope_of(head, outer):
    """The qualified name that a brace opens after `head`, and whether it is a type's; NOWHERE within functions."""
    if outer is NOWHERE:
        return NOWHERE, False
    space = NAMESPACE.search(head)
    if space:
        return (outer + (space[1],) if space[1] else NOWHERE), False
    kind = TYPE.search(head)
    if kind:
        return outer + (re.sub(r"\s+", "", kind[1]),), True
    return (outer if head.strip() == "extern" else NOWHERE), False


def types_of(text):
    """The qualified names of the types that a text defines, each with its line."""
    found, scopes, start = [], [()], 0
    text = OPAQUE.sub(blank, text)
    for mark in re.finditer(r"[{};]", text):
        if mark[0] == "{":
            scope, is_type = scope_of(text[start:mark.start()], scopes[-1])
            if is_type:
                found.append(("::".join(scope), text.count("\n", 0, mark.start()) + 1))
            scopes.append(scope)
        elif mark[0] == "}" and len(scopes) > 1:
            scopes.pop()
        start = mark.end()
    return found


def check_tree(root):
    """The number of types, and the list of clashes."""
    places = {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cc"):
                name = path.relative_to(root).as_posix()
                for kind, line in types_of(path.read_text(encoding="utf-8")):
                    # Twice in one file is an alternative of the preprocessor's, or the compiler says so.
                    places.setdefault(kind, {}).setdefault(name, line)
    clashes = []
    for kind, files in sorted(places.items()):
        if len(files) > 1:
            clashes.append(f"{' '.join(f'{name}:{line}' for name, line in files.items())}: {kind} is defined twice")
    return len(places), clashes


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    count, clashes = check_tree(root)
    for clash in clashes:
        print(clash)
    print(f"check_types: {count} types, {len(clashes)} clashes")
    return 1 if clashes or not count else 0


if __name__ == "__main__":
    sys.exit(main())
