"""Compares a run with the ratios that were last accepted, or accepts the ratios of a run.

check.py DHCPBENCH ACCEPTED.json [--accept] [options of DHCPBENCH]

A row is a step back if its ratios to libtins and to the floor are both more than 15 % above the accepted ones, if it
allocates more often, or if a worst case takes more than 2 ms. Accepted are the medians of three runs. A disturbance
rarely slows the library down in three runs, so a suspicious row is measured up to three times, and the best run counts.
The exit status is 1 if a row is a step back, or is not in ACCEPTED.json.
"""

import json
import os
import re
import statistics
import subprocess
import sys
import tempfile

from ratios import FLOOR, LIBRARY, TINS, WORST, WORST_LIMIT, medians, ratio

SLACK = 1.15
RUNS = 3
ALLOCATIONS_SLACK = 0.05  # for means over many frames


def run(program, options, rows=None):
    """name -> contenders, of all rows or of `rows`"""
    if rows:
        options = [*options, "--benchmark_filter=^(" + "|".join(map(re.escape, rows)) + ")/"]
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "run.json")
        subprocess.run([program, *options, f"--benchmark_out={out}", "--benchmark_out_format=json"], check=True,
                       stdout=subprocess.DEVNULL)
        return {"/".join(name): contenders for name, contenders in medians(out).items()}


def summary(contenders):
    row = {"allocations": round(contenders[LIBRARY][1], 2)}
    for other in (TINS, FLOOR):
        if other in contenders:
            row[other] = round(ratio(contenders, other), 3)
    return row


def faults(name, contenders, accepted):
    """How the row is worse than accepted: texts."""
    now = summary(contenders)
    if name not in accepted:
        yield "not accepted yet"
        return
    before = accepted[name]
    ratios = [key for key in (TINS, FLOOR) if key in now]
    if ratios and all(now[key] > SLACK * before[key] for key in ratios):
        yield ", ".join(f"{now[key]:.2f} of {key}, accepted {before[key]:.2f}" for key in ratios)
    if now["allocations"] > before["allocations"] + ALLOCATIONS_SLACK:
        yield f"{now['allocations']:.2f} allocations, accepted {before['allocations']:.2f}"
    if name.startswith(WORST) and contenders[LIBRARY][0] > WORST_LIMIT:
        yield f"{contenders[LIBRARY][0] / 1e6:.2f} ms"


def main():
    program, path, *options = sys.argv[1:]
    if "--accept" in options:
        options.remove("--accept")
        runs = [{name: summary(contenders) for name, contenders in run(program, options).items()} for _ in range(RUNS)]
        rows = {name: {key: statistics.median(each[name][key] for each in runs) for key in runs[0][name]}
                for name in runs[0]}
        with open(path, "w", encoding="utf-8") as file:
            file.write("{\n" + ",\n".join(f"  {json.dumps(name)}: {json.dumps(rows[name])}" for name in sorted(rows))
                       + "\n}\n")
        print(f"{len(rows)} rows accepted")
        return 0
    with open(path, encoding="utf-8") as file:
        accepted = json.load(file)
    suspects = None
    for attempt in range(RUNS):
        measured = run(program, options, suspects)
        found = {name: list(faults(name, contenders, accepted)) for name, contenders in measured.items()}
        count = len(measured) if attempt == 0 else count
        suspects = [name for name, texts in found.items() if texts]
        if not suspects:
            print(f"{count} rows, none slower than accepted")
            return 0
        if attempt + 1 < RUNS:
            print(f"measured again: {' '.join(suspects)}", flush=True)
    for name in suspects:
        print(f"{name}: {'; '.join(found[name])}")
    return 1


if __name__ == "__main__":
    sys.exit(main())
