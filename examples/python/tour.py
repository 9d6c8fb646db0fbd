# SPDX-License-Identifier: MIT
"""A round trip: each of twelve towns is visited once, by the shortest way.

tour.py [--svg FILE]     FILE gets a map
"""
import sys
from math import hypot

import koru

TOWNS = [(6, 58), (14, 12), (20, 36), (31, 66), (35, 22), (44, 45), (52, 8), (58, 63), (66, 30), (75, 52), (84, 14), (93, 40)]
n = len(TOWNS)
miles = [[round(hypot(x - u, y - v)) for u, v in TOWNS] for x, y in TOWNS]

m = koru.Model()
after = m.ints(n, 0, n - 1, "after")
m.post(koru.circuit(after))
m.post(koru.all_different(after, koru.DOMAIN))
# The way out of each town is an element of its row; so is the way into it, which says nothing new and bounds the sum.
before = m.ints(n, 0, n - 1, "before")
m.post(koru.inverse(after, before))
length = m.var(koru.sum(m.element(row, v) for row, v in zip(miles, after)), name="length")
m.post(koru.sum(m.element(row, v) for row, v in zip(miles, before)) == length)

r = m.minimize(length, after, order=koru.regret, restart=koru.luby(100), guided=True, last_conflict=True,
               then=[koru.Phase(before), koru.Phase([length])])
trip = [0]
while r[after[trip[-1]]] != 0:
    trip.append(r[after[trip[-1]]])
print(f"{r.status}: {r[length]} miles")
print(" ".join(str(town) for town in trip))
if sys.argv[1:2] == ["--svg"]:
    at = [(5 * x + 20, 5 * y + 20) for x, y in TOWNS]
    way = " ".join(f"{x},{y}" for x, y in (at[town] for town in trip))
    koru.Picture(520, 370, [
        '<rect width="520" height="370" fill="#fff"/>',
        f'<polygon points="{way}" fill="none" stroke="#1f77b4" stroke-width="3"/>',
        *(f'<circle cx="{x}" cy="{y}" r="6" fill="#d62728"/>' for x, y in at),
        *(f'<text x="{x + 9}" y="{y - 4}">{town}</text>' for town, (x, y) in enumerate(at))]).save(sys.argv[2])
