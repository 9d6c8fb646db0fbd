#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check who includes whom under src/.

The folders are rooms. Everyone may include a public header. A room includes itself, every room but core includes core,
nogood and explain also include search, record these two, solve these two, solvers all that have state, linear, relational and scheduling also logic,
counting also relational; no other pair. Includes are written relative to src/ ("core/post.h").

Within the core each module, a header and its source, stands on a floor and includes only modules of lower floors. The
list below says where, lowest floor first; a module that is missing there is a violation. docs/architecture.md names all.

    check_includes.py [ROOT]     prints file:line of each violation and a verdict; exit status 1 if there is one
"""
import re
import sys
from pathlib import Path

MAY_INCLUDE = {
    "core": {"core"},
    "constraints/arith": {"constraints/arith", "core"},
    "constraints/counting": {"constraints/counting", "constraints/relational", "core"},
    "constraints/global": {"constraints/global", "core"},
    "constraints/logic": {"constraints/logic", "core"},
    "constraints/linear": {"constraints/linear", "constraints/logic", "core"},
    "constraints/relational": {"constraints/relational", "constraints/logic", "core"},
    "constraints/scheduling": {"constraints/scheduling", "constraints/logic", "core"},
    "constraints/strong": {"constraints/strong", "core"},
    "search": {"search", "core"},
    "nogood": {"nogood", "search", "core"},
    "profiler": {"profiler", "core"},
    "solve": {"solve", "nogood", "search", "core"},
    "solvers": {"solvers", "solve", "search", "profiler", "core"},
    "explain": {"explain", "search", "core"},
    "record": {"record", "explain", "search", "core"},
}
CORE_FLOORS = (
    ("bit_scan", "build_mode", "int128", "int_math", "state", "ticks"),
    ("lifetime", "meter"),
    ("errors", "ports"),
    ("alloc",),
    ("block_stack", "growing", "pool", "shared_record"),
    ("context_stack", "domain_bits", "posters"),
    ("check", "site", "variable"),
    ("constraint", "domain_walk", "fixpoint", "format"),
    ("agenda", "event_queue", "log"),
    ("queue",),
    ("trail",),
    ("attach", "branch_set", "create", "follow", "moment", "narrow", "refusal", "take", "trial"),
    ("domain_words", "posting_phase", "reversible"),
    ("context", "invariants", "post", "private_variable"),
    ("solver", "user_constraints"),
)
FLOOR_OF = {module: floor for floor, modules in enumerate(CORE_FLOORS) for module in modules}
INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')


def room_of(path):
    """The room of a path relative to src/, or None."""
    folder = path.rpartition("/")[0]
    return folder if folder in MAY_INCLUDE else None


def core_module(path):
    """The module of the core that a path relative to src/ belongs to, or None outside the core."""
    folder, _, name = path.rpartition("/")
    return name.rpartition(".")[0] if folder == "core" else None


def floor_fault(path, target):
    """What the floors of the core have against including target from the file at path, or None."""
    module, wanted = core_module(path), core_module(target)
    if module is None or wanted in (None, module):
        return None
    if wanted not in FLOOR_OF:
        return f"{wanted} stands on no floor of the core"
    if module in FLOOR_OF and FLOOR_OF[wanted] >= FLOOR_OF[module]:
        return f"{module} may not include {wanted}, which is not on a lower floor"
    return None


def fault_of(path, quote, target, public):
    """What is wrong with including target from the file at path, or None."""
    room = room_of(path)
    if target in public:
        return None
    target_room = room_of(target)
    if target_room is None:
        return None if quote == "<" else f'"{target}" is neither a public header nor written relative to src/'
    if not target.endswith(".h"):
        return f"{target} is not a header"
    if target_room not in MAY_INCLUDE[room]:
        return f"{room} may not include {target_room} ({target})"
    return floor_fault(path, target)


def check_file(path, name, public):
    if room_of(name) is None:
        return [f"src/{name}:1: belongs to no room"]
    faults = []
    if core_module(name) not in (None, *FLOOR_OF):
        faults.append(f"src/{name}:1: {core_module(name)} stands on no floor of the core")
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        fault = match and fault_of(name, match[1], match[2], public)
        if fault:
            faults.append(f"src/{name}:{number}: {fault}")
    return faults


def check_page(root):
    """The rooms and the modules of the core that docs/architecture.md does not name; none where there is no page."""
    page = root / "docs" / "architecture.md"
    text = page.read_text(encoding="utf-8") if page.exists() else None
    names = [f"`src/{room}/`" for room in MAY_INCLUDE] + [f"`{module}`" for module in FLOOR_OF]
    return [f"docs/architecture.md: does not name {name}" for name in names if text is not None and name not in text]


def check_tree(root):
    """The number of files looked at, and the list of violations."""
    public = {header.name for header in (root / "include").glob("*.h")}
    files = sorted(path for path in (root / "src").rglob("*") if path.suffix in (".h", ".cc", ".c"))
    faults = [fault for path in files for fault in check_file(path, path.relative_to(root / "src").as_posix(), public)]
    return len(files), faults + check_page(root)


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    count, faults = check_tree(root)
    for fault in faults:
        print(fault)
    print(f"check_includes: {count} files, {len(faults)} violations")
    return 1 if faults or not count else 0


if __name__ == "__main__":
    sys.exit(main())
