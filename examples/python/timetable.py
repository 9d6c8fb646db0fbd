# SPDX-License-Identifier: MIT
"""A timetable: lessons of three classes in four rooms, over three days of four hours. Nobody is at two places at a time,
no room is taken twice, lessons of a subject fall on different days, and as few as possible into the last hour."""
import koru

DAYS, HOURS = ["Mon", "Tue", "Wed"], 4
LESSONS = [  # class, teacher, subject, how often, rooms
    ("5a", "Li", "maths", 3, [0, 1]), ("5a", "Ito", "music", 2, [2]), ("5a", "Kay", "sports", 2, [3]),
    ("5b", "Li", "maths", 3, [0, 1]), ("5b", "Ito", "music", 2, [2]), ("5b", "Kay", "sports", 2, [3]),
    ("5c", "Roe", "maths", 3, [0, 1]), ("5c", "Ito", "music", 2, [2]), ("5c", "Roe", "latin", 3, [0, 1])]

m = koru.Model()
taught = [(lesson, m.var(0, len(DAYS) * HOURS - 1), m.var_of(lesson[4])) for lesson in LESSONS for _ in range(lesson[3])]
for who in (0, 1):
    for name in {lesson[who] for lesson in LESSONS}:
        m.post(koru.all_different([t for lesson, t, _ in taught if lesson[who] == name], koru.DOMAIN))
rooms = [room for _, _, room in taught]
m.post(koru.no_overlap([t for _, t, _ in taught], [1] * len(taught), rooms, [1] * len(taught)))
for lesson in LESSONS:
    days = [m.div(t, HOURS) for other, t, _ in taught if other is lesson]
    m.post(koru.strictly_increasing(days))
late = koru.sum(m.mod(t, HOURS) == HOURS - 1 for _, t, _ in taught)

r = m.minimize(late, [v for _, t, room in taught for v in (t, room)], order=koru.dom_wdeg, restart=koru.luby(50),
               last_conflict=True, neighbours=koru.linked_neighbours(), fails=3000)
print(f"{r[late]} lessons in the last hour")
for name in ("5a", "5b", "5c"):
    cells = {r[t]: f"{lesson[2]}/{lesson[1]}" for lesson, t, _ in taught if lesson[0] == name}
    print(name)
    for hour in range(HOURS):
        print("  " + " ".join(f"{cells.get(day * HOURS + hour, '-'):11}" for day in range(len(DAYS))).rstrip())
