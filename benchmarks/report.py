"""Prints how the library's rates compare with its peers', from Google Benchmark's JSON files.

usage: report.py GOALS FILE...

Rows are named GROUP/NAME[/ARGUMENTS]; the row named `mdtools` is ours. A ratio is the peer's median
time divided by ours (above 1: we are faster). GOALS holds lines `GROUP[/ARGUMENTS] PEER RATIO`, where
PEER may be `best` for the fastest of all peers present; a line without arguments holds for all of its
group that have no line of their own.
"""

import json
import sys


def split_name(name):
    """GROUP and ARGUMENTS joined, and the NAME between them."""
    parts = [part for part in name.split("/") if part != "real_time"]
    group, who, rest = parts[0], parts[1], parts[2:]
    return "/".join([group] + rest), who


def medians(files):
    table = {}
    for file in files:
        with open(file, encoding="utf-8") as stream:
            for row in json.load(stream)["benchmarks"]:
                if row.get("aggregate_name") != "median" or row.get("error_occurred"):
                    continue
                scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]]
                group, who = split_name(row["run_name"])
                table.setdefault(group, {})[who] = row["real_time"] * scale
    return table


def goals(file):
    table = {}
    with open(file, encoding="utf-8") as stream:
        for line in stream:
            words = line.split("#")[0].split()
            if words:
                table[(words[0], words[1])] = float(words[2])
    return table


def goal_of(wanted, group, peer):
    """The goal of a group with its arguments, or of the shortened group; None if there is none."""
    while True:
        if (group, peer) in wanted:
            return wanted[(group, peer)]
        if "/" not in group:
            return None
        group = group.rsplit("/", 1)[0]


def main(arguments):
    if len(arguments) < 2:
        sys.exit(__doc__)
    wanted = goals(arguments[0])
    print(f"{'group':44} {'peer':22} {'ours':>12} {'peer':>12} {'ratio':>8} {'goal':>6}")
    for group, rows in sorted(medians(arguments[1:]).items()):
        ours = rows.pop("mdtools", None)
        if ours is None or not rows:
            continue
        best = min(rows, key=rows.get)
        for peer, time in sorted(rows.items(), key=lambda row: row[1]):
            ratio = time / ours
            goal = goal_of(wanted, group, peer)
            if goal is None and peer == best:
                goal = goal_of(wanted, group, "best")
            mark = "" if goal is None else f"{goal:6.2f}" + ("" if ratio >= goal else "  MISSED")
            print(f"{group:44} {peer:22} {ours:10.1f}ns {time:10.1f}ns {ratio:8.2f} {mark}")


if __name__ == "__main__":
    main(sys.argv[1:])
