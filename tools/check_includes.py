#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check who includes whom under src/.

The folders are rooms. Everyone may include a public header. A room includes itself, every room but core includes core,
nogood also includes search; no other pair. Includes are written relative to src/ ("core/post.h").

    check_includes.py [ROOT]     prints file:line of each violation and a verdict; exit status 1 if there is one
"""
import re
import sys
from pathlib import Path

MAY_INCLUDE = {
    "core": {"core"},
    "constraints/arith": {"constraints/arith", "core"},
    "constraints/global": {"constraints/global", "core"},
    "search": {"search", "core"},
    "nogood": {"nogood", "search", "core"},
    "profiler": {"profiler", "core"},
}
INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')


def room_of(path):
    """The room of a path relative to src/, or None."""
    folder = path.rpartition("/")[0]
    return folder if folder in MAY_INCLUDE else None


def fault_of(room, quote, target, public):
    """What is wrong with including target from a file of the room, or None."""
    if target in public:
        return None
    target_room = room_of(target)
    if target_room is None:
        return None if quote == "<" else f'"{target}" is neither a public header nor written relative to src/'
    if not target.endswith(".h"):
        return f"{target} is not a header"
    if target_room not in MAY_INCLUDE[room]:
        return f"{room} may not include {target_room} ({target})"
    return None


def check_file(path, name, public):
    room = room_of(name)
    if room is None:
        return [f"src/{name}:1: belongs to no room"]
    faults = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        fault = match and fault_of(room, match[1], match[2], public)
        if fault:
            faults.append(f"src/{name}:{number}: {fault}")
    return faults


def check_tree(root):
    """The number of files looked at, and the list of violations."""
    public = {header.name for header in (root / "include").glob("*.h")}
    files = sorted(path for path in (root / "src").rglob("*") if path.suffix in (".h", ".cc", ".c"))
    faults = [fault for path in files for fault in check_file(path, path.relative_to(root / "src").as_posix(), public)]
    return len(files), faults


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    count, faults = check_tree(root)
    for fault in faults:
        print(fault)
    print(f"check_includes: {count} files, {len(faults)} violations")
    return 1 if faults or not count else 0


if __name__ == "__main__":
    sys.exit(main())
