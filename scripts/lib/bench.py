"""Evaluates the benchmarks: reads the reports run-*.json of every run in a folder, uses the best of the runs for each
measurement, prints the table, and writes results.json. Writes the names of the benchmarks that missed their bounds to
missed.txt, one in each line. The exit code is 0 if every bound was met, 1 if one was missed, 2 if a measurement is missing.

    bench.py [--quick] FOLDER"""

import glob
import json
import os
import sys

# name of the benchmark: (what is measured, the bound of the ratio or None, the same for --quick). The quick bounds are wider
# if a turn takes milliseconds: the median of few turns includes other work of the machine.
RATIOS = {
    "forward/class_member": ("class member that forwards", 1.15, 1.15),
    "forward/flat_function": ("flat function that forwards", 1.15, 1.15),
    "forward/flat_function_over_member": ("... against a floor that lets exceptions out", None, None),
    "token/60": ("talix_get_token, 60 characters", 1.2, 1.2),
    "token/1200": ("talix_get_token, 1200 characters", 1.2, 1.2),
    "start/cold": ("talix_init, first in a process", 1.2, 1.3),
    "threads/1": ("1 thread forwarding", 1.3, 1.4),
    "threads/2": ("2 threads forwarding", 1.3, 1.4),
    "threads/4": ("4 threads forwarding", 1.3, 1.4),
    "threads/8": ("8 threads forwarding", 1.3, 1.4),
}
FALLBACK = "forward/fallback"
# Nanoseconds over the floor. With --quick, which is a test, the bound is a ratio: a slow machine must not fail it.
FALLBACK_REACH, FALLBACK_RATIO_QUICK = 50, 5
# (which of the first start-ups, its counter, the bound in nanoseconds for the library's own part, the same for --quick). With
# --quick there are few start-ups: perhaps none of them ran undisturbed, so the median has no bound.
OWN = (
    ("least", "own_ns", 2e6, 3e6),
    ("median", "own_median_ns", 2e6, None),
)
# The library's own part against that of the hand-written start-up, minimum of each.
OWN_RATIO, OWN_RATIO_QUICK = 4, 5
EVENTS = {count: f"events/{count}" for count in (1, 10, 1000)}
GROWTH = {
    "entries": "compatibility entries",
    "defective_entries": "compatibility entries, ignored",
    "subkeys": "registry subkeys",
    "directories": "search directories",
}
SIZES = (10, 1000, 10000)
# How much the cost may exceed linear growth. With --quick each size is measured once. A quadratic cost would give ten.
LINEAR, LINEAR_QUICK = 1.5, 3
STEPS = (("trust", "verifying"), ("load", "loading"), ("registry", "registry"), ("files", "files"),
         ("account", "account"), ("rest", "rest"))


def read_runs(folder):
    """The counters of each benchmark, one dictionary for each run."""
    measured = {}
    for file in sorted(glob.glob(os.path.join(folder, "run-*.json"))):
        with open(file, encoding="utf-8") as stream:
            for benchmark in json.load(stream)["benchmarks"]:
                name = benchmark["name"].removesuffix("/manual_time").split("/iterations:")[0]
                measured.setdefault(name, []).append(benchmark)
    return measured


def best(measured, name, counter):
    return min(run[counter] for run in measured[name])


def shown(value):
    """Formats a time in nanoseconds, a list of times, a text, or None."""
    if value is None or isinstance(value, str):
        return value or ""
    if isinstance(value, list):
        return ", ".join(shown(one) for one in value)
    for unit, size in (("ms", 1e6), ("us", 1e3)):
        if value >= size:
            return f"{value / size:.2f} {unit}"
    return f"{value:.1f} ns"


def row(benchmarks, what, library, floor, ratio, reach, good):
    """`benchmarks` are measured again if the bound is missed; times are in nanoseconds; `good` is None if there is no
    bound."""
    return {"benchmarks": benchmarks, "measured": what, "library": library, "floor": floor, "ratio": ratio, "bound": reach,
            "result": "" if good is None else "met" if good else "MISSED"}


def ratio_rows(measured, quick):
    for name, (what, reach, quick_reach) in RATIOS.items():
        run = min(measured[name], key=lambda one: one["ratio"])
        bound = quick_reach if quick else reach
        yield row([name], what, run["library_ns"], run["floor_ns"], run["ratio"], f"<= {bound}" if bound else "",
                  run["ratio"] <= bound if bound else None)


def fallback_row(measured, quick):
    run = min(measured[FALLBACK], key=lambda one: one["library_ns"] - one["floor_ns"])
    over = run["library_ns"] - run["floor_ns"]
    if quick:
        bound, good = f"<= {FALLBACK_RATIO_QUICK}", run["ratio"] <= FALLBACK_RATIO_QUICK
    else:
        bound, good = f"<= {FALLBACK_REACH} ns over it", over <= FALLBACK_REACH
    return row([FALLBACK], "fallback without plugin", run["library_ns"], run["floor_ns"], run["ratio"], bound, good)


def own_rows(measured, quick):
    """The minimum is a start-up without disturbance, the median an ordinary one."""
    for what, counter, reach, quick_reach in OWN:
        bound = quick_reach if quick else reach
        own = best(measured, "start/cold", counter)
        yield row(["start/cold"], f"the library's own part of it, {what}", own,
                  best(measured, "start/cold", f"floor_{counter}"), None, f"< {bound / 1e6:.0f} ms" if bound else "",
                  own < bound if bound else None)


def own_ratio_row(measured, quick):
    """The hand-written start-up reads the same files and the same key. It searches, locks and compares nothing."""
    run = min(measured["start/cold"], key=lambda one: one["own_ns"] / one["floor_own_ns"])
    bound = OWN_RATIO_QUICK if quick else OWN_RATIO
    ratio = run["own_ns"] / run["floor_own_ns"]
    return row(["start/cold"], "... against the hand-written start-up's own part", run["own_ns"], run["floor_own_ns"], ratio,
               f"<= {bound}", ratio <= bound)


def event_rows(measured):
    """Linear: an additional callback costs the library what it costs the floor. The first one includes the plugin call."""
    library = {count: best(measured, name, "library_ns") for count, name in EVENTS.items()}
    floor = {count: best(measured, name, "floor_ns") for count, name in EVENTS.items()}
    for count in EVENTS:
        yield row([EVENTS[count]], f"event to {count} callbacks", library[count], floor[count],
                  library[count] / floor[count], "", None)
    growth = (library[1000] - library[10]) / (floor[1000] - floor[10])
    yield row([EVENTS[10], EVENTS[1000]], "each callback from the 11th to the 1000th",
              (library[1000] - library[10]) / 990, (floor[1000] - floor[10]) / 990, growth,
              f"linear: <= {LINEAR}", growth <= LINEAR)


def growth_rows(measured, quick):
    linear = LINEAR_QUICK if quick else LINEAR
    for name, what in GROWTH.items():
        benchmarks = [f"growth/{name}/{size}" for size in SIZES]
        small, middle, large = (best(measured, benchmark, "own_ns") for benchmark in benchmarks)
        # Subtracts the cost of a start-up that does not depend on the size.
        factor = (large - small) / (middle - small) if middle > small else float("inf")
        expected = (SIZES[2] - SIZES[0]) / (SIZES[1] - SIZES[0])
        yield row(benchmarks, f"10, 1,000, 10,000 {what}", [small, middle, large], None, factor / expected, f"linear: <= {linear}",
                  factor <= linear * expected)


def print_table(rows):
    columns = ("measured", "library", "floor", "ratio", "bound", "result")
    lines = [columns]
    for one in rows:
        ratio = "" if one["ratio"] is None else f"{one['ratio']:.2f}"
        lines.append([ratio if column == "ratio" else shown(one[column]) for column in columns])
    widths = [max(len(line[column]) for line in lines) for column in range(len(columns))]
    for line in lines:
        print(" | ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())


def print_profile(measured):
    run = min(measured["start/cold"], key=lambda one: one["own_ns"])
    print("\nWhere the first start-up spends its time: " +
          ", ".join(f"{title} {shown(run[step + '_ns'])}" for step, title in STEPS))
    return {title: run[step + "_ns"] for step, title in STEPS}


def main():
    arguments = sys.argv[1:]
    quick = "--quick" in arguments
    folder = arguments[-1]
    measured = read_runs(folder)
    try:
        rows = [*ratio_rows(measured, quick), fallback_row(measured, quick), *own_rows(measured, quick),
                own_ratio_row(measured, quick), *event_rows(measured), *growth_rows(measured, quick)]
        print_table(rows)
        profile = print_profile(measured)
    except KeyError as missing:
        print(f"error: no measurement of {missing} in {folder}", file=sys.stderr)
        return 2
    with open(os.path.join(folder, "results.json"), "w", encoding="utf-8") as stream:
        json.dump({"quick": quick, "rows": rows, "firstStartNanoseconds": profile}, stream, indent=2)
    missed = [one for one in rows if one["result"] == "MISSED"]
    with open(os.path.join(folder, "missed.txt"), "w", encoding="utf-8") as stream:
        stream.writelines(sorted({name + "\n" for one in missed for name in one["benchmarks"]}))
    print("\nMissed: " + "; ".join(one["measured"] for one in missed) if missed else "\nEvery bound was met.")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
