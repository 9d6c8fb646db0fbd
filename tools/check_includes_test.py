#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of check_includes.py on small trees of its own."""
import tempfile
import unittest
from pathlib import Path

import check_includes


class CheckIncludes(unittest.TestCase):
    def faults(self, name, *lines):
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            for path, text in (("include/koru.h", ""), ("src/" + name, "\n".join(lines))):
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text, encoding="utf-8")
            return check_includes.check_tree(root)[1]

    def test_allowed(self):
        self.assertEqual([], self.faults("core/pool.cc", '#include "koru.h"', '#include "core/pool.h"', "#include <vector>"))
        for name in ("constraints/arith/a.cc", "constraints/global/a.h", "search/a.cc", "nogood/a.cc", "profiler/a.cc"):
            room = name.rpartition("/")[0]
            self.assertEqual([], self.faults(name, '#include "core/post.h"', f'#include "{room}/b.h"'))
        self.assertEqual([], self.faults("nogood/a.cc", '#include "search/state.h"'))

    def test_core_includes_no_other_room(self):
        for room in ("constraints/arith", "constraints/global", "search", "nogood", "profiler"):
            self.assertEqual(1, len(self.faults("core/pool.cc", f'#include "{room}/b.h"')), room)

    def test_siblings_never_include_each_other(self):
        siblings = ("constraints/arith", "constraints/global", "search", "profiler")
        for room in siblings:
            for other in set(siblings) - {room}:
                self.assertEqual(1, len(self.faults(f"{room}/a.h", f'#include "{other}/b.h"')), (room, other))

    def test_core_modules_include_lower_floors_only(self):
        self.assertEqual([], self.faults("core/queue.cc", '#include "core/log.h"', '#include "core/int_math.h"'))
        self.assertEqual([], self.faults("core/queue.cc", '#include "core/queue.h"'))
        for higher in ("trail", "post"):
            self.assertEqual(1, len(self.faults("core/queue.h", f'#include "core/{higher}.h"')), higher)
        same = "src/core/pool.h:1: pool may not include block_stack, which is not on a lower floor"
        self.assertEqual([same], self.faults("core/pool.h", '#include "core/block_stack.h"'))

    def test_every_core_module_stands_on_one_floor(self):
        self.assertEqual(["src/core/other.h:1: other stands on no floor of the core"], self.faults("core/other.h"))
        self.assertEqual(1, len(self.faults("core/post.h", '#include "core/other.h"')))
        names = [module for floor in check_includes.CORE_FLOORS for module in floor]
        self.assertEqual(len(names), len(set(names)))

    def test_page_names_rooms_and_modules(self):
        names = [f"`src/{room}/`" for room in check_includes.MAY_INCLUDE]
        names += [f"`{module}`" for module in check_includes.FLOOR_OF]
        with tempfile.TemporaryDirectory() as folder:
            page = Path(folder) / "docs" / "architecture.md"
            page.parent.mkdir()
            page.write_text(" ".join(names), encoding="utf-8")
            self.assertEqual([], check_includes.check_page(Path(folder)))
            page.write_text(" ".join(names[1:]), encoding="utf-8")
            self.assertEqual([f"docs/architecture.md: does not name {names[0]}"], check_includes.check_page(Path(folder)))

    def test_place_is_printed(self):
        faults = self.faults("search/a.cc", "// comment", '#  include "profiler/b.h"')
        self.assertEqual(["src/search/a.cc:2: search may not include profiler (profiler/b.h)"], faults)

    def test_angle_brackets_hide_nothing(self):
        self.assertEqual(1, len(self.faults("core/pool.cc", "#include <search/state.h>")))

    def test_badly_written(self):
        self.assertEqual(1, len(self.faults("core/pool.cc", '#include "a.h"')))
        self.assertEqual(1, len(self.faults("core/pool.cc", '#include "../search/a.h"')))
        self.assertEqual(1, len(self.faults("core/pool.cc", '#include "core/alloc.cc"')))
        self.assertEqual(1, len(self.faults("constraints/a.cc", "")))


if __name__ == "__main__":
    unittest.main()
