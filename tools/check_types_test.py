#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of check_types.py on small trees of its own."""
import tempfile
import unittest
from pathlib import Path

import check_types


class CheckTypes(unittest.TestCase):
    def names(self, *lines):
        return [name for name, _ in check_types.types_of("\n".join(lines))]

    def clashes(self, **files):
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            for name, text in files.items():
                path = root / "tests" / name.replace("_dot_", ".")
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return check_types.check_tree(root)[1]

    def test_kinds_of_types(self):
        self.assertEqual(["A", "B", "C", "D", "E"], self.names(
            "struct A { int a; };", "class B final : public std::vector<int> {};", "union C {};", "enum D { d };",
            "enum class E : char { e };"))
        self.assertEqual(["A", "A<int>"], self.names("template <class T>", "struct A {};", "template <> struct A<int> {};"))
        self.assertEqual(["A"], self.names("struct [[nodiscard]] alignas(8) A {};"))

    def test_qualified_names(self):
        self.assertEqual(["k::t::A", "k::t::A::B", "k::C"], self.names(
            "namespace k {", "namespace t {", "struct A { struct B {}; void f() { while (true) {} } };", "}",
            "class C {};", "}"))
        self.assertEqual(["k::t::A"], self.names("namespace k::t {", "struct A;", "struct A {};", "}"))
        self.assertEqual(["A"], self.names('extern "C" {', "struct A {};", "}"))

    def test_what_is_no_definition(self):
        self.assertEqual([], self.names("struct A;", "struct A f(struct A *a) { return A{}; }", "A a{};",
                                        "template <class T>", "void g() {", "  struct Local {};", "}"))
        self.assertEqual([], self.names("namespace {", "struct A {};", "namespace n { struct B {}; }", "}"))

    def test_braces_that_are_none(self):
        self.assertEqual(["n::A"], self.names(
            "namespace n {", 'const char *s = "}";', "const char c = '}';  // }", "/* } */", "#define END }",
            "const int i = 1'000;", 'const char *r = R"(}"})";', "struct A {};", "}"))

    def test_clash(self):
        self.assertEqual(
            ["tests/a.h:2 tests/b.cc:1: k::A is defined twice"],
            self.clashes(a_dot_h="namespace k {\nstruct A {};\n}", b_dot_cc="namespace k { struct A {}; }"))

    def test_no_clash(self):
        self.assertEqual([], self.clashes(a_dot_h="namespace k { struct A {}; }", b_dot_h="struct A {};"))
        self.assertEqual([], self.clashes(a_dot_cc="namespace { struct A {}; }", b_dot_cc="namespace { struct A {}; }"))
        self.assertEqual([], self.clashes(a_dot_c="struct A {};", b_dot_c="struct A {};"))
        self.assertEqual([], self.clashes(a_dot_h="#if X\nstruct A {};\n#else\nstruct A {};\n#endif\n"))


if __name__ == "__main__":
    unittest.main()
