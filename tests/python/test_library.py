# SPDX-License-Identifier: MIT
"""What the package says of the library's functions, against the headers; and that it is written for Python 3.9."""
import ast
import os
import re
import unittest
from pathlib import Path

import koru
from koru import _library, expressions, options, results

ROOT = Path(__file__).resolve().parents[2]
FOLDER = Path(koru.__file__).resolve().parent
WORDS = {"CSerrHandler": "ErrorHandler", "CSprofilerLocator": "Locator", "CSeventAllKnownCallback": "Run", "CSmodel": "Model", "void": "void",
         "bool": "bool", "int": "int", "long long": "long", "size_t": "size", "CSstatus": "int"}
TEXTS = {"const char *", "char *"}


def word(declared):
    """The word of _library.TYPES for a type in C."""
    declared = re.sub(r"\s+", " ", declared.strip())
    return "text" if declared in TEXTS else WORDS.get(declared, "pointer" if "*" in declared else declared)


def prototypes():
    text = "".join((ROOT / "include" / name).read_text(encoding="utf-8") for name in ("koru.h", "koru_extras.h"))
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    found = {}
    for result, name, parameters in re.findall(r"KORU_(?:POST_)?API ([\w ]+?\**)\s*(\w+)\(([^)]*)\);", text):
        types = [re.sub(r"\w+$", "", p.strip()) for p in parameters.split(",")] if parameters != "void" else []
        found[name] = [word(result), *map(word, types)]
    return text, found


@unittest.skipUnless((ROOT / "include").exists(), "without the headers")
class Headers(unittest.TestCase):
    def test_signatures(self):
        _, declared = prototypes()
        for line in filter(None, _library.SIGNATURES.split("\n")):
            result, name, *parameters = line.split()
            self.assertEqual([result, *parameters], declared.get(name), name)

    def test_numbers(self):
        text, _ = prototypes()
        numbers = {name: int(value) for name, value in re.findall(r"\b(CS_\w+) = (-?\d+)", text)}
        for name in ("EQ", "NEQ", "LE", "LT", "GE", "GT"):
            self.assertEqual(getattr(expressions, name), numbers[f"CS_METHOD_{name}"])
        names = {"TIME": "TIME_LIMIT", "FAILS": "FAIL_LIMIT", "CHOICE_POINTS": "CHOICE_LIMIT",
                 "SOLUTIONS": "SOLUTION_LIMIT"}
        statuses = {names.get(n[10:], n[10:]): v for n, v in numbers.items() if n.startswith("CS_STATUS_")}
        self.assertEqual(statuses.pop("REFUSED"), 10)
        self.assertEqual({s.name: s.value for s in results.Status}, statuses)
        explained = {n[13:]: v for n, v in numbers.items() if n.startswith("CS_EXPLAINED_")}
        self.assertEqual({e.name: e.value for e in koru.Explained}, explained)
        orders = {"input_order": "INPUT"}
        for name in ("input_order", "smallest", "largest", "smallest_min", "largest_max", "regret", "most_constrained",
                     "dom_wdeg", "activity"):
            self.assertEqual(getattr(koru, name).kind, numbers["CS_ORDER_" + orders.get(name, name.upper())])
        for name in ("min_value", "max_value", "middle_value", "median_value", "low_half", "high_half", "random_value"):
            self.assertEqual(getattr(koru, name).kind, numbers["CS_VALUE_" + name.replace("_value", "").upper()])
        for made, name in ((koru.constant(1), "CONSTANT"), (koru.luby(1), "LUBY"), (koru.geometric(1, 1), "GEOMETRIC")):
            self.assertEqual(made.kind, numbers["CS_RESTARTS_" + name])
        for made, name in ((koru.random_neighbours(), "RANDOM"), (koru.linked_neighbours(), "LINKED"),
                           (koru.chosen_neighbours(list), "HOST")):
            self.assertEqual(made.kind, numbers["CS_NEIGHBOURS_" + name])
        self.assertEqual((options.HOST_ORDER, options.HOST_VALUE), (numbers["CS_ORDER_HOST"], numbers["CS_VALUE_HOST"]))

    def test_fields(self):
        text, _ = prototypes()
        for structure, name in ((_library.SearchOptions, "CSsearchOptions"), (_library.SearchStats, "CSsearchStats"),
                                (_library.ExplainOptions, "CSexplainOptions"), (_library.Reason, "CSreason"),
                                (_library.Explanation, "CSexplanation"), (_library.Removal, "CSremoval"),
                                (_library.Removals, "CSremovals")):
            body = re.search(r"typedef struct " + name + r" \{(.*?)\}", text, re.S).group(1)
            self.assertEqual([field for field, _ in structure._fields_], re.findall(r"(\w+)(?:\)\([^;]*\))?;", body))


class Sources(unittest.TestCase):
    def test_are_for_python_3_9(self):
        paths = [*FOLDER.glob("*.py"), *ROOT.glob("examples/python/*.py"), *ROOT.glob("python/*.py")]
        self.assertGreater(len(paths), 10)
        for path in paths:
            ast.parse(path.read_text(encoding="utf-8"), str(path), feature_version=(3, 9))

    def test_everything_public_has_a_docstring_or_is_a_value(self):
        for name in koru.__all__:
            thing = getattr(koru, name)
            if callable(thing):
                self.assertTrue(thing.__doc__, name)

    def test_a_library_that_is_not_there_is_told(self):
        before = os.environ.get("KORU_LIBRARY")
        os.environ["KORU_LIBRARY"] = "/nowhere/libkoru.so.3"
        try:
            with self.assertRaisesRegex(ImportError, "KORU_LIBRARY(.|\n)*nowhere"):
                _library._load()
        finally:
            os.environ.pop("KORU_LIBRARY")
            if before is not None:
                os.environ["KORU_LIBRARY"] = before


if __name__ == "__main__":
    unittest.main()
