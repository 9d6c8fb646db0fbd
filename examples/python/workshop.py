# SPDX-License-Identifier: MIT
"""A workshop: jobs go from machine to machine, and the last one is to be done as early as possible.

workshop.py [--svg FILE]     FILE gets a Gantt chart
"""
import sys

import koru

JOBS = {  # machine and time of each step
    "table": [("saw", 3), ("lathe", 4), ("paint", 5)],
    "chair": [("saw", 2), ("lathe", 6), ("paint", 2)],
    "shelf": [("saw", 6), ("paint", 4)],
    "lamp": [("lathe", 3), ("paint", 3), ("saw", 1)],
    "bench": [("saw", 4), ("lathe", 2), ("paint", 4)]}

m = koru.Model()
horizon = sum(time for steps in JOBS.values() for _, time in steps)
end = m.var(0, horizon, "end")
tasks = [(job, machine, time, m.var(0, horizon)) for job, steps in JOBS.items() for machine, time in steps]
for (job, _, time, start), (after, _, _, next) in zip(tasks, tasks[1:] + [("", "", 0, end)]):
    m.post(start + time <= (next if job == after else end))
machines = list(dict.fromkeys(machine for _, machine, _, _ in tasks))
for name in machines:
    own = [(start, time) for _, machine, time, start in tasks if machine == name]
    m.post(koru.disjunctive([start for start, _ in own], [time for _, time in own]))

starts = [start for _, _, _, start in tasks]
r = m.minimize(end, starts, order=koru.dom_wdeg, restart=koru.luby(100), guided=True, then=[koru.Phase([end])])
print(f"{r.status}: {r[end]}")
for name in machines:
    line = ["."] * r[end]
    for job, machine, time, start in tasks:
        if machine == name:
            line[r[start]:r[start] + time] = job[0] * time
    print(f"{name:6}", "".join(line))
if sys.argv[1:2] == ["--svg"]:
    jobs = list(JOBS)
    koru.gantt((machine, r[start], time, job, jobs.index(job)) for job, machine, time, start in tasks).save(sys.argv[2])
