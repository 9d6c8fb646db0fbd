# SPDX-License-Identifier: MIT
"""Social golfers: nine players in three groups of three, so that in four weeks everybody plays with everybody once."""
from itertools import combinations

import koru

GROUPS, SIZE, WEEKS = 3, 3, 4
PLAYERS = GROUPS * SIZE

m = koru.Model()
group = m.grid(WEEKS, PLAYERS, 0, GROUPS - 1, "group")
for week in group:
    m.post(koru.cardinality(week, range(GROUPS), [SIZE] * GROUPS))
for a, b in combinations(range(PLAYERS), 2):
    m.post(koru.sum(week[a] == week[b] for week in group) <= 1)
# Weeks, groups and players may change places: the first week is fixed, and the first player is always in group 0.
m.post(v == p // SIZE for p, v in enumerate(group[0]))
m.post(week[0] == 0 for week in group)
m.post(koru.lex_lt(a, b) for a, b in zip(group[1:], group[2:]))

r = m.solve([v for week in group for v in week], order=koru.smallest)
for i, week in enumerate(group):
    teams = ["".join("ABCDEFGHI"[p] for p in range(PLAYERS) if r[week[p]] == g) for g in range(GROUPS)]
    print(f"week {i + 1}: {' '.join(teams)}")
