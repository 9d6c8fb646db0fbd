# SPDX-License-Identifier: MIT
"""A roster for two weeks: shifts that are staffed, five days of work at most in a row, no early shift after a night, and
as few wishes as possible broken."""
import koru

OFF, EARLY, LATE, NIGHT = range(4)
NURSES, DAYS = ["Ana", "Ben", "Cem", "Dia", "Eva", "Finn", "Gro"], 14
WISHES = {("Ana", 5): OFF, ("Ana", 6): OFF, ("Ben", 0): OFF, ("Cem", 2): LATE, ("Dia", 12): OFF, ("Dia", 13): OFF,
          ("Eva", 3): OFF, ("Finn", 8): EARLY, ("Gro", 6): OFF, ("Gro", 7): NIGHT, ("Gro", 8): NIGHT,
          ("Ben", 6): OFF, ("Cem", 6): OFF, ("Eva", 6): OFF, ("Finn", 6): OFF}

m = koru.Model()
shift = {nurse: m.ints(DAYS, OFF, NIGHT, nurse) for nurse in NURSES}
for day in range(DAYS):
    column = [shift[nurse][day] for nurse in NURSES]
    m.post(koru.cardinality(column, [EARLY, LATE, NIGHT], [m.var(1, 2), m.var(1, 2), 1]))
# States: 0..5 days of work so far, and 6..10 the same with a night before; an early shift after one is no transition.
after = [[0, n + 1, n + 1, n + 6] if n < 5 else [0, -1, -1, -1] for n in range(6)]
after += [[0, -1, n + 1, n + 6] if n < 5 else [0, -1, -1, -1] for n in range(1, 6)]
for row in shift.values():
    m.post(koru.regular(row, koru.Automaton(after, finals=range(11))), koru.count(row, OFF).between(4, 6))
    m.post(koru.count(row, NIGHT).between(1, 3))

broken = koru.sum(shift[nurse][day] != wish for (nurse, day), wish in WISHES.items())
r = m.minimize(broken, [v for row in zip(*shift.values()) for v in row], order=koru.dom_wdeg, last_conflict=True,
               restart=koru.luby(50), neighbours=koru.linked_neighbours(), fails=20000)
print(f"{r.status}, {r[broken]} wishes broken")
for nurse, row in shift.items():
    print(f"{nurse:5}", " ".join(".eln"[v] for v in r[row]))
