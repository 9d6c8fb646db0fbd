#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compare fzn-koru with another solver on MiniZinc models.

The models are a folder with bench.json: a list of {name, model, data: [...]} and what else there may be, paths relative
to the folder. Each is compiled for each solver, then solved under a limit of processor time that begins after
the compilation. What is reported for each run: status, objective, seconds, failures. Statuses and objectives of runs
that have ended are compared; times where both solvers went through the same tree, and fails a second where both were
stopped. The table may also be had in Markdown, times sorted as a cactus plot in SVG.

    bench.py FOLDER KORU.msc [PEER.msc] [--free] [--seconds S] [--only NAME...] [--json FILE] [--markdown FILE] [--svg FILE]
             [--check]
"""
import argparse
import json
import os
import re
import resource
import signal
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path


def read_msc(path):
    """The executable of a solver's description, which may end lists with commas."""
    text = re.sub(r",(\s*[\]}])", r"\1", Path(path).read_text())
    executable = json.loads(text)["executable"]
    return str(Path(path).parent / executable)


def compile_model(folder, instance, msc, fzn):
    data = [str(folder / d) for d in instance["data"]]
    command = ["minizinc", "--solver", msc, "-c", "--fzn", fzn, "--no-output-ozn", "--output-objective",
               str(folder / instance["model"]), *data]
    done = subprocess.run(command, capture_output=True, text=True, check=False, timeout=300)
    compiled = done.returncode == 0 and Path(fzn).exists()
    if compiled:
        show_objective(Path(fzn))
    return compiled, done.stderr


def show_objective(fzn):
    """Not all solvers tell it among their statistics: it is put out as a variable."""
    goal, text = goal_of(fzn), fzn.read_text()
    if goal:
        text = re.sub(rf"^(var [^;]*?: {re.escape(goal)}\b(?![^;]*output_var)[^;=]*)", r"\1 :: output_var", text, flags=re.M)
        fzn.write_text(text)


def processor_time(pid):
    try:
        fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    except OSError:
        return None
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def run(command, seconds):
    """Output and seconds of processor time; SIGINT at the limit, SIGKILL two seconds later."""
    with tempfile.TemporaryFile("w+") as out:
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        process = subprocess.Popen(command, stdout=out, stderr=subprocess.DEVNULL)
        used, limit, sign = 0.0, seconds, signal.SIGINT
        while process.poll() is None:
            time.sleep(0.02)
            used = processor_time(process.pid) or used
            if used > limit:
                process.send_signal(sign)
                limit, sign = limit + 2, signal.SIGKILL
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        out.seek(0)
        return out.read(), used, process.returncode


def value_of(text, key):
    found = re.findall(rf"%%%mzn-stat: {key}=(-?[0-9.e+-]+)", text)
    return float(found[-1]) if found else None


def goal_of(fzn):
    """The name of the objective; compiled so that it is put out."""
    found = re.search(r"(?:minimize|maximize) (\w+);\s*$", Path(fzn).read_text())
    return found[1] if found else None


def kind_of(fzn):
    found = re.search(r"(minimize|maximize) \w+;\s*$", Path(fzn).read_text())
    return {"minimize": "min", "maximize": "max"}[found[1]] if found else "sat"


def result_of(text, code, kind, seconds, goal):
    found = text.count("----------")
    objective = value_of(text, "objective") if kind != "sat" and found else None
    if "=====UNSATISFIABLE" in text:
        status = "unsat"
    elif kind != "sat" and "==========" in text:
        status = "optimal"
    elif found:
        status = "sat"
    else:
        status = "unknown" if code in (0, -2, -9, 2) or "UNKNOWN" in text else f"error {code}"
    if kind != "sat" and found and objective is None and goal:
        values = re.findall(rf"^{re.escape(goal)} = (-?\d+);", text, re.M)
        objective = float(values[-1]) if values else None
    return {"status": status, "objective": None if objective is None else int(objective), "seconds": round(seconds, 3),
            "failures": None if value_of(text, "failures") is None else int(value_of(text, "failures"))}


def solve(folder, instance, msc, options, verify):
    with tempfile.TemporaryDirectory() as scratch:
        fzn = f"{scratch}/model.fzn"
        compiled, why = compile_model(folder, instance, msc, fzn)
        if not compiled:
            instance.setdefault("kind", "sat")
            return {"status": "error: " + why.strip().splitlines()[-1] if why else "error", "objective": None,
                    "seconds": 0, "failures": None}
        instance["kind"] = kind_of(fzn)
        flags = ["-s"] + (["-f"] if options.free else []) + (["-a"] if instance["kind"] != "sat" else []) + verify
        text, seconds, code = run([read_msc(msc), *flags, fzn], options.seconds)
        return result_of(text, code, instance["kind"], seconds, goal_of(fzn))


ENDED = {"optimal", "unsat"}


def disagree(a, b, kind):
    """What two runs cannot both be right about."""
    if a["status"] in ENDED and b["status"] in ENDED:
        return a["status"] != b["status"] or (a["objective"] != b["objective"] and None not in (a["objective"], b["objective"]))
    for x, y in ((a, b), (b, a)):
        if x["status"] == "unsat" and y["status"] == "sat":
            return True
        if x["status"] == "optimal" and None not in (x["objective"], y["objective"]):
            if (y["objective"] < x["objective"]) if kind == "min" else (y["objective"] > x["objective"]):
                return True
    return False


def better(a, b, kind):
    """1 when run a came to more than b, -1 for less: proofs, then objectives."""
    def rank(r):
        solved = r["status"] in ENDED or (kind == "sat" and r["status"] == "sat")
        objective = r["objective"] if r["objective"] is not None else float("inf") if kind == "min" else float("-inf")
        return (solved, r["status"] not in ("unknown",) and not r["status"].startswith("error"),
                -objective if kind == "min" else objective if kind == "max" else 0)
    if rank(a)[0] and rank(b)[0]:
        return 0
    return (rank(a) > rank(b)) - (rank(a) < rank(b))


def shown(number):
    return "" if number is None else str(number)


def show(name, results):
    cells = "  ".join(f"{r['status'][:20]:>9} {shown(r['objective']):>8} {r['seconds']:8.2f} s {shown(r['failures']):>9}"
                      for r in results)
    print(f"{name:32} {cells}", flush=True)


def markdown(rows, names, path):
    """A row an instance; in bold what has been solved or proved."""
    def cells(row, i):
        r = row["results"][i]
        status = f"**{r['status']}**" if is_done(row, i) else r["status"][:20]
        return f"{status} {shown(r['objective'])}".strip() + f" | {r['seconds']:.2f} | {shown(r['failures'])}"
    lines = ["| instance | " + " | ".join(f"{n} | s | fails" for n in names) + " |",
             "|---|" + "---|---:|---:|" * len(names)]
    lines += [f"| {row['name']} | " + " | ".join(cells(row, i) for i in range(len(names))) + " |" for row in rows]
    Path(path).write_text("\n".join(lines) + "\n")


def show_speed(rows, names):
    """Times on equal trees, fails but for 2 % as many, and fails a second of runs that were stopped."""
    same, stopped = [], []
    for row in rows:
        a, b = row["results"]
        if not a["failures"] or not b["failures"]:
            continue
        if is_done(row, 0) and is_done(row, 1):
            if abs(a["failures"] - b["failures"]) <= 0.02 * b["failures"] and b["seconds"] >= 0.05:
                same.append(b["seconds"] / max(a["seconds"], 0.01))
        elif not is_done(row, 0) and not is_done(row, 1):
            stopped.append(a["failures"] / a["seconds"] / (b["failures"] / b["seconds"]))
    if same:
        print(f"on {len(same)} equal trees: {names[1]} takes {statistics.median_high(same):.2f} times as long as {names[0]} in the median "
              f"({min(same):.2f} to {max(same):.2f})")
    if stopped:
        print(f"on {len(stopped)} that neither has ended: {names[0]} has {statistics.median_high(stopped):.2f} times as many fails a second")


def cactus(rows, names, seconds, path):
    """Instances solved against seconds for each, sorted: one line a solver."""
    width, height, colours = 720, 420, ["#1668b8", "#c4501b"]
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
             'font-size="13">', f'<rect width="{width}" height="{height}" fill="white"/>']
    most = max(len(rows), 1)
    x = lambda n: 60 + n * (width - 90) / most
    y = lambda s: height - 50 - min(max(s, 0.0), seconds) * (height - 90) / seconds
    lines.append(f'<path d="M60 30V{height - 50}H{width - 30}" fill="none" stroke="black"/>')
    for n in range(0, most + 1, 10):
        lines.append(f'<text x="{x(n)}" y="{height - 30}" text-anchor="middle">{n}</text>')
    for part in range(5):
        s = seconds * part / 4
        lines.append(f'<text x="54" y="{y(s) + 4}" text-anchor="end">{s:g}</text>')
    lines.append(f'<text x="{width / 2}" y="{height - 10}" text-anchor="middle">instances solved or proved</text>')
    lines.append('<text x="60" y="20">seconds</text>')
    for i, name in enumerate(names):
        times = sorted(r["results"][i]["seconds"] for r in rows if is_done(r, i))
        points = " ".join(f"{x(n + 1):.1f},{y(s):.1f}" for n, s in enumerate(times))
        lines.append(f'<polyline points="{points}" fill="none" stroke="{colours[i]}" stroke-width="2"/>')
        lines.append(f'<text x="80" y="{50 + 18 * i}" fill="{colours[i]}">{name}: {len(times)}</text>')
    Path(path).write_text("\n".join(lines + ["</svg>"]) + "\n")


def is_done(row, i):
    status = row["results"][i]["status"]
    return status in ENDED or (row["kind"] == "sat" and status == "sat")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=Path)
    parser.add_argument("solvers", nargs="+", metavar="SOLVER.msc")
    parser.add_argument("--free", action="store_true")
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--only", nargs="*")
    parser.add_argument("--json")
    parser.add_argument("--markdown")
    parser.add_argument("--svg")
    parser.add_argument("--check", action="store_true", help="let the first solver check its solutions")
    options = parser.parse_args()
    instances = json.loads((options.folder / "bench.json").read_text())
    rows, wrong = [], 0
    names = [Path(s).stem for s in options.solvers]
    for instance in instances:
        if options.only and not any(word in instance["name"] for word in options.only):
            continue
        results = [solve(options.folder, instance, s, options, ["--verify"] if options.check and i == 0 else [])
                   for i, s in enumerate(options.solvers)]
        reference = instance.get("reference")
        row = {"name": instance["name"], "kind": instance["kind"], "annotated": instance.get("annotated"),
               "results": results}
        rows.append(row)
        known = results[1:] + ([reference] if reference else [])
        bad = any(disagree(results[0], other, instance["kind"]) for other in known)
        wrong += bad
        show(instance["name"], results)
        if bad:
            print(f"    DISAGREES with {known}")
    for i, name in enumerate(names):
        print(f"{name}: {sum(is_done(r, i) for r in rows)} of {len(rows)} solved or proved")
    if len(names) == 2:
        counts = [better(r["results"][0], r["results"][1], r["kind"]) for r in rows]
        print(f"{names[0]} came to more in {counts.count(1)}, to less in {counts.count(-1)}")
        show_speed(rows, names)
    if options.json:
        Path(options.json).write_text(json.dumps(rows, indent=1))
    if options.markdown:
        markdown(rows, names, options.markdown)
    if options.svg:
        cactus(rows, names, options.seconds, options.svg)
    print(f"{wrong} disagreements")
    return 1 if wrong else 0


sys.exit(main())
