#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The same output for every number of processes: runs a program with the searches of koru.h, then with those of koru_mpi
in one process and, where there is an mpirun, in several; some of them late, stopped or killed on the way, or all of them
killed and others started to go on.

  compare.py PROGRAM [--mpirun MPIRUN] [--processes N,M,...] [--cases short|long|faces|middle|slow]
             [--trouble delay|kill|stop|restart] [--times TIMES] [--seed SEED]
"""
import argparse
import os
import random
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

CASES = {
    "short": [("queens", 6), ("queens", 8), ("first", 12), ("golomb", 6), ("cancel", 8),
              ("count", 7), ("object", 7), ("object", 9), ("objective", 6)],
    "long": [("queens", 10), ("golomb", 8), ("first", 24), ("object", 10), ("objective", 8)],
    "faces": [("all", 6), ("all", 3), ("best", 6), ("longest", 5)],
    "middle": [("golomb", 9), ("objective", 9)],
    "slow": [("golomb", 10), ("first", 28), ("queens", 13), ("object", 13), ("objective", 10)],
}
WRONG = [("rank", "another model"), ("memory", "level"), ("no-goods", "cs_createNoGoodSet"),
         ("element", "cs_VarElementOf"), ("option", "lastConflict")]
PATIENCE = 2
MOST_SECONDS = 300


def children_of(pid):
    listed = subprocess.run(["ps", "-o", "pid=", "--ppid", str(pid)], capture_output=True, text=True, check=False)
    return sorted(int(word) for word in listed.stdout.split())


def kill(pid, what=signal.SIGKILL):
    try:
        os.kill(pid, what)
    except ProcessLookupError:
        pass


def entries_of(text):
    """What is shown, by the words that number it; of those shown again the last."""
    return dict(line.split(" ", 1) for line in text.splitlines() if " " in line)


class Comparison:
    def __init__(self, args, folder):
        self.args = args
        self.folder = folder
        self.rng = random.Random(args.seed)
        self.faults = []
        self.compared = 0
        self.troubles = 0

    def command(self, processes, case, size, recovers=False):
        program = [*self.args.program, "mpi", case, str(size)]
        if processes == 1 or not self.args.mpirun:
            return program
        launch = [self.args.mpirun, *(["--enable-recovery"] if recovers else []), "--allow-run-as-root", "--oversubscribe"]
        return [*launch, "-n", str(processes), *program]

    @staticmethod
    def run(command, **environment):
        result = subprocess.run(command, capture_output=True, text=True, timeout=MOST_SECONDS, check=False,
                                env={**os.environ, **environment})
        return result.returncode, result.stdout, result.stderr

    def start(self, command, processes, **environment):
        """Returns when all processes are at work, with their numbers."""
        for mark in self.folder.glob("mark.*"):
            mark.unlink()
        environment = {**os.environ, "KORU_MPI_PATIENCE": str(PATIENCE), "KORU_TEST_MARK": str(self.folder / "mark"),
                       **environment}
        process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=environment)
        while process.poll() is None and len(list(self.folder.glob("mark.*"))) < processes:
            time.sleep(0.01)
        return process, (children_of(process.pid) if command[0] == self.args.mpirun else [])

    def compare(self, what, outcome, expected):
        self.compared += 1
        status, out, errors = outcome
        if status != 0 or out != expected:
            self.faults.append(f"{what}: status {status}, {len(out)} of {len(expected)} shown: {errors[-500:]}")
            if isinstance(out, dict):
                wrong = [f"{key} {text}" for key, text in out.items() if expected.get(key) != text]
                self.faults.append("  " + "; ".join(wrong[:3]))

    def run_and_trouble(self, processes, case, size):
        """One of the processes, not the first one, is killed, or stopped until the others have lost patience."""
        kills = self.args.trouble == "kill"
        process, workers = self.start(self.command(processes, case, size, True), processes)
        time.sleep(self.rng.uniform(0, 1))
        if workers[1:] and process.poll() is None:
            victim = self.rng.choice(workers[1:])
            kill(victim, signal.SIGKILL if kills else signal.SIGSTOP)
            self.troubles += 1
            if not kills:
                time.sleep(PATIENCE + 1)
                kill(victim, signal.SIGCONT)
        out, errors = process.communicate(timeout=MOST_SECONDS)
        return process.returncode, out, errors

    def run_and_restart(self, case, size):
        """All are killed, some times; then others go on."""
        kept, shown = self.folder / "kept", self.folder / "shown"
        shown.write_text("")
        environment = {"KORU_TEST_CHECKPOINT": str(kept), "KORU_TEST_OUTPUT": str(shown)}
        for left in range(self.args.times, -1, -1):
            processes = int(self.rng.choice(self.args.processes.split(",")))
            process, workers = self.start(self.command(processes, case, size), processes, **environment)
            if left > 0:
                while process.poll() is None and not kept.exists():
                    time.sleep(0.01)
                time.sleep(self.rng.uniform(0, 1.5 if self.args.cases == "slow" else 0.2))
                self.troubles += process.poll() is None
                for pid in [process.pid, *workers]:
                    kill(pid)
            _, errors = process.communicate(timeout=MOST_SECONDS)
            with shown.open("a") as file:
                file.write("\n")  # the last line may have been cut off
            if process.returncode == 0:
                break
        if kept.exists():
            self.faults.append(f"{case} {size}: the checkpoint is still there")
        return process.returncode, entries_of(shown.read_text()), errors

    def refuse_damaged(self):
        kept = self.folder / "damaged"
        for content in b"", b"koru_mpi checkpoint 2\n", b"something else that is long enough to be a checkpoint":
            kept.write_bytes(content)
            status, out, errors = self.run([*self.args.program, "mpi", "queens", "6"], KORU_TEST_CHECKPOINT=str(kept))
            self.compared += 1
            if (status, out, kept.read_bytes()) != (3, "", content) or "stays as it is" not in errors:
                self.faults.append(f"damaged checkpoint: status {status}, {out!r} {errors!r}")

    def refuse_wrong(self):
        for case, words in WRONG:
            status, _, errors = self.run(self.command(3, case, 10))
            self.compared += 1
            if status != 3 or words not in errors:
                self.faults.append(f"{case}: status {status}, {errors[-500:]}")

    def all_of(self, case, size):
        status, expected, _ = self.run([*self.args.program, "plain", case, str(size)])
        if status != 0 or not expected:
            self.faults.append(f"{case} {size}: plain has status {status}")
        trouble = self.args.trouble
        if trouble == "restart":
            return self.compare(f"{case} {size} in several runs", self.run_and_restart(case, size), entries_of(expected))
        if not trouble:
            self.compare(f"{case} {size} alone", self.run(self.command(1, case, size)), expected)
        for processes in map(int, self.args.processes.split(",")) if self.args.mpirun else []:
            what = f"{case} {size} with {processes} processes {trouble or ''}"
            for _ in range(self.args.times):
                if trouble in ("kill", "stop"):
                    self.compare(what, self.run_and_trouble(processes, case, size), expected)
                else:
                    environment = {"KORU_TEST_DELAY": "1"} if trouble else {}
                    self.compare(what, self.run(self.command(processes, case, size), **environment), expected)
        return None

    def all(self):
        for case, size in CASES[self.args.cases]:
            self.all_of(case, size)
        if not self.args.trouble and self.args.cases != "faces":
            self.refuse_damaged()
            if self.args.mpirun:
                self.refuse_wrong()
        if self.args.trouble in ("kill", "stop", "restart") and self.troubles == 0:
            self.faults.append("no process was killed or stopped")
        for fault in self.faults:
            print(fault)
        print(f"compare: {self.compared} runs, {self.troubles} troubles, {len(self.faults)} faults")
        return 1 if self.faults else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", type=lambda words: words.split(","), help="with arguments of its own after commas")
    parser.add_argument("--mpirun")
    parser.add_argument("--processes", default="2,3")
    parser.add_argument("--cases", choices=CASES, default="short")
    parser.add_argument("--trouble", choices=["delay", "kill", "stop", "restart"])
    parser.add_argument("--times", type=int, default=1)
    parser.add_argument("--seed", type=int, default=1)
    args = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        return Comparison(args, Path(folder)).all()


if __name__ == "__main__":
    sys.exit(main())
