# SPDX-License-Identifier: MIT
"""What notebooks show: tables as HTML, charts and grids as SVG. All of it is well-formed."""
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

import koru

SVG = "{http://www.w3.org/2000/svg}"


def cells(html):
    """The rows of the tables in a text of HTML."""
    return [["".join(cell.itertext()) for cell in row] for row in xml.fromstring(f"<p>{html}</p>").iter("tr")]


class Tables(unittest.TestCase):
    def test_of_a_model(self):
        m = koru.Model()
        x = m.ints(2, 0, 9, "<x>")
        m.var(3, 3)
        m.post(x[0] != 4)
        self.assertEqual(cells(m._repr_html_()), [["variable", "values", "domain"], ["<x>[0]", "9", "{0..3, 5..9}"],
                                                  ["<x>[1]", "10", "{0..9}"], ["#2", "1", "3"]])
        self.assertEqual("".join(xml.fromstring(x[0]._repr_html_()).itertext()), "<x>[0]: {0..3, 5..9}")
        m.ints(300, 0, 1)
        shown = cells(m._repr_html_())
        self.assertEqual((len(shown), shown[-1]), (202, ["... and 103 more"]))

    def test_of_a_result(self):
        m = koru.Model()
        x = m.ints(2, 0, 9, "x")
        m.post(x[0] + x[1] == 17)
        r = m.maximize(x[0], x)
        shown = cells(r._repr_html_())
        self.assertIn(["x[0]", "9"], shown)
        self.assertIn(["choice points", str(r.statistics.choice_points)], shown)
        self.assertIn("<b>optimal</b>", r._repr_html_())
        self.assertIn(" 2 solutions", repr(r))
        self.assertEqual(repr(r.best), "Solution(x[0]: 9, x[1]: 8)")
        self.assertEqual(r.statistics.as_dict()["fails"], r.statistics.fails)


class Pictures(unittest.TestCase):
    def shapes(self, picture):
        root = xml.fromstring(picture.svg)
        return [list(root.iter(SVG + name)) for name in ("rect", "text", "line")]

    def test_gantt(self):
        boxes, texts, _ = self.shapes(koru.gantt([("a & b", 5, 10, "job", 3), ("c", 15, 1, "much too long", 1), ("a & b", 20, 5)]))
        self.assertEqual(len(boxes), 3)
        self.assertEqual([t.text for t in texts][:3], ["a & b", "c", "job"])
        self.assertNotIn("much too long", [t.text for t in texts])  # but it is told on pointing at the bar
        self.assertEqual(boxes[1].find(SVG + "title").text, "much too long 15..16")
        ends = [float(b.get("x")) + float(b.get("width")) for b in boxes]
        self.assertAlmostEqual(float(boxes[2].get("width")), float(boxes[0].get("width")) / 2)
        self.assertEqual(max(ends), ends[2])
        self.shapes(koru.gantt([]))

    def test_grid(self):
        boxes, texts, lines = self.shapes(koru.grid([["1", "<"], ["", 4]], colours=[[0, None], [-1, 1]], box=(1, 2)))
        self.assertEqual((len(boxes), len(lines), [t.text for t in texts]), (4, 5, ["1", "<", "4"]))
        self.assertEqual([b.get("fill") for b in boxes][1:3], ["#fff", "#333"])
        self.shapes(koru.grid([]))

    def test_save(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "grid.svg"
            picture = koru.grid([[1]])
            picture.save(path)
            self.assertEqual(path.read_text(encoding="utf-8"), picture._repr_svg_())


if __name__ == "__main__":
    unittest.main()
