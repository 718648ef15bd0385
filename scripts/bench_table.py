#!/usr/bin/env python3
"""usage: bench_table.py RESULT.json...

Writes a Markdown table from Google Benchmark's JSON. Benchmarks are named topic/case/size/who; who is `ours`, a peer's
name or `floor:NAME`. A peer's figure is its time over ours (2.0: ours takes half as long), the floor's is ours over it.
"""
import json
import re
import sys

# What Google Benchmark appends to a name that was given such a setting.
SETTING = re.compile(r"/(?:(?:repeats|iterations|threads|min_time|min_warmup_time):[^/]*|(?:real|manual|process)_time)$")
# Where waiting counts, and not the processor's time alone.
WALL = re.compile(r"/(?:real|manual)_time\b")
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def case_and_who(run_name):
    while SETTING.search(run_name):
        run_name = SETTING.sub("", run_name)
    case, _, who = run_name.rpartition("/")
    return case, who


def medians(paths):
    """{case: {who: nanoseconds}} in the order of the files; a benchmark that reports an error ends the program."""
    cases = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            text = file.read()
        for row in json.loads(text)["benchmarks"] if text.strip() else []:
            if row.get("error_occurred"):
                sys.exit(f"{path}: {row['name']}: {row.get('error_message', 'error')}")
            if row.get("aggregate_name") != "median":
                continue
            case, who = case_and_who(row["run_name"])
            time = "real_time" if WALL.search(row["run_name"]) else "cpu_time"
            cases.setdefault(case, {})[who] = row[time] * NANOSECONDS[row["time_unit"]]
    return cases


def duration(nanoseconds):
    for unit in ("ns", "us", "ms"):
        if nanoseconds < 1000:
            return f"{nanoseconds:.3g} {unit}"
        nanoseconds /= 1000
    return f"{nanoseconds:.3g} s"


def table_rows(cases):
    for case, times in cases.items():
        ours = times.get("ours")
        peers = {who: time for who, time in times.items() if who != "ours" and not who.startswith("floor:")}
        floors = {who[len("floor:"):]: time for who, time in times.items() if who.startswith("floor:")}
        if ours is None:
            yield case, "-", "; ".join(f"{who} {duration(time)}" for who, time in peers.items()) or "-", "-"
            continue
        against = [f"{who} {time / ours:.2f}" for who, time in sorted(peers.items(), key=lambda item: item[1])]
        above = [f"{ours / time:.2f} × {who}" for who, time in floors.items()]
        yield case, duration(ours), "; ".join(against) or "-", "; ".join(above) or "-"


def main(paths):
    if not paths:
        sys.exit(__doc__)
    cases = medians(paths)
    if not cases:
        sys.exit("bench_table: no medians in " + " ".join(paths))
    print("| case | ours | peers: time over ours | floor |\n|---|---:|---|---|")
    for row in table_rows(cases):
        print("| " + " | ".join(row) + " |")


if __name__ == "__main__":
    main(sys.argv[1:])
