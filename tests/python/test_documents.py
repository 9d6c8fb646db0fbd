# SPDX-License-Identifier: MIT
"""The examples in docstrings, the programs of docs/python.md, and examples/python: they run, and print what they say."""
import contextlib
import doctest
import importlib
import io
import re
import runpy
import sys
import tempfile
import unittest
import unittest.mock
from pathlib import Path

import koru

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = re.compile(r"<!-- program: (\w+) -->\n```python\n(.*?)```\n<!-- output: \1\n(.*?)-->", re.S)
EXAMPLE = re.compile(r"^## \[(\w+\.py)\].*?^```\n(.*?)^```$", re.S | re.M)


class Documents(unittest.TestCase):
    def compare(self, run, expected):
        with contextlib.redirect_stdout(io.StringIO()) as output:
            run()
        self.assertEqual(output.getvalue(), expected)

    def test_docstrings(self):
        tried = 0
        for path in sorted(Path(koru.__file__).parent.glob("*.py")):
            module = importlib.import_module("koru" if path.stem == "__init__" else f"koru.{path.stem}")
            result = doctest.testmod(module)
            self.assertEqual(result.failed, 0, path.name)
            tried += result.attempted
        self.assertGreater(tried, 30)

    def test_page(self):
        text = (ROOT / "docs" / "python.md").read_text(encoding="utf-8")
        programs = PROGRAM.findall(text)
        self.assertEqual(len(programs), text.count("```python"))
        self.assertGreater(len(programs), 3)
        for name, program, output in programs:
            with self.subTest(name):
                self.compare(lambda p=program: exec(p, {"__name__": "__main__"}), output)

    def test_examples(self):
        folder = ROOT / "examples" / "python"
        told = dict(EXAMPLE.findall((folder / "README.md").read_text(encoding="utf-8")))
        self.assertEqual(sorted(told), sorted(path.name for path in folder.glob("*.py")))
        with tempfile.TemporaryDirectory() as scratch:
            for name, output in told.items():
                picture = Path(scratch) / Path(name).with_suffix(".svg")
                with self.subTest(name), unittest.mock.patch.object(sys, "argv", [name, "--svg", str(picture)]):
                    self.compare(lambda n=name: runpy.run_path(str(folder / n), run_name="__main__"), output)
            drawn = {path.name: path.read_text(encoding="utf-8") for path in Path(scratch).iterdir()}
        self.assertEqual(drawn, {path.name: path.read_text(encoding="utf-8") for path in folder.glob("*.svg")})


if __name__ == "__main__":
    unittest.main()
