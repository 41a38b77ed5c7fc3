"""Prints the medians of a run, one line per operation and case, with the ratio of the library's time to the others'.

ratios.py RUN.json [--markdown]; RUN.json as --benchmark_format=json writes it with repetitions. The cases of "worst"
have no other contender; their limit is 2 ms.
"""

import json
import sys

LIBRARY, TINS, FLOOR = "DhcpLib", "libtins", "floor"
HEADINGS = ("operation", "case", "ns", "allocations", "of libtins", "of floor", "libtins ns", "libtins allocations")
WORST, WORST_LIMIT = "worst", 2e6  # nanoseconds


def medians(path):
    """(operation, case) -> contender -> (nanoseconds, allocations)"""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    measured = {}
    for run in runs:
        if run.get("aggregate_name") == "median":
            operation, case, contender = run["run_name"].split("/")[:3]
            measured.setdefault((operation, case), {})[contender] = (run["cpu_time"], run["allocations"])
    if not measured:
        sys.exit(f"{path} holds no medians: run with repetitions")
    return measured


def ratio(contenders, other):
    return contenders[LIBRARY][0] / contenders[other][0] if other in contenders else None


def line(name, contenders):
    own, own_allocations = contenders[LIBRARY]
    of_tins, of_floor = ratio(contenders, TINS), ratio(contenders, FLOOR)
    tins = contenders.get(TINS)
    return (*name, f"{own:.1f}", f"{own_allocations:.1f}", f"{of_tins:.2f}" if of_tins else "-",
            f"{of_floor:.1f}" if of_floor else "-", f"{tins[0]:.1f}" if tins else "-", f"{tins[1]:.1f}" if tins else "-")


def print_table(rows, markdown):
    widths = [max(map(len, column)) for column in zip(*rows)]
    for number, row in enumerate(rows):
        cells = [cell.ljust(width) if i < 2 else cell.rjust(width) for i, (cell, width) in enumerate(zip(row, widths))]
        print(f"| {' | '.join(cells)} |" if markdown else "  ".join(cells))
        if markdown and number == 0:
            print("|" + "|".join("-" * (width + 1) + ("-" if i < 2 else ":") for i, width in enumerate(widths)) + "|")


def main():
    measured = medians(sys.argv[1])
    # The run's order is random; numbers of options sort as numbers.
    rows = [line(name, measured[name]) for name in sorted(measured, key=lambda name: (name[0], name[1].zfill(4)))]
    print_table([HEADINGS, *rows], "--markdown" in sys.argv[2:])


if __name__ == "__main__":
    main()
