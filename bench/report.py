"""Prints the benchmark figures as scripts/bench.sh shows them.

  report.py library LIBRARY.json   Google Benchmark's JSON (median aggregates)
  report.py install INSTALL.txt    lines "mode <how 32-bit programs ran>",
                                   "payload <1x|10x> <files> <bytes>" and
                                   "run <1x|10x> <kind> <ms> <files> <ok|failed>"
"""
import json
import itertools
import statistics
import sys
from collections import defaultdict


def library(path):
    with open(path) as f:
        runs = json.load(f)["benchmarks"]
    medians = {}
    for run in runs:
        if run.get("aggregate_name") != "median":
            continue
        parts = run["run_name"].split("/")
        family = parts[0]
        args = tuple(int(p) for p in parts[1:] if p.isdigit())
        medians[(family, args)] = run

    def per_item_ns(run):
        return 1e9 / run["items_per_second"]

    def total_ms(run):
        scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[run["time_unit"]]
        return run["real_time"] * scale

    def series(family, size, item=None, extra=()):
        item = item or size[:-1]
        rows = sorted(
            (args, run) for (fam, args), run in medians.items()
            if fam == family and args[1:] == tuple(extra))
        print(f"{family}{''.join('/' + str(e) for e in extra)}:")
        for args, run in rows:
            print(f"  {args[0]:>9,} {size}: {per_item_ns(run):9.2f} ns/{item}"
                  f"   {total_ms(run):10.3f} ms per run")
        times = [per_item_ns(run) for _, run in rows]
        return rows, (max(times) / min(times) if times else 0)

    print("-- configuration files (50-character values, every tenth read-only)")
    rows, spread = series("BM_ConfigRead", "vars")
    read10k = dict(rows)[(10000,)]
    print(f"RESULT config read of 10,000 variables: {total_ms(read10k):.2f} ms "
          f"(goal < 5 ms)")
    print(f"RESULT config read time per variable, slowest/fastest size "
          f"100..100,000: {spread:.2f}x (goal <= 2x)")
    _, spread = series("BM_ConfigWrite", "vars")
    print(f"  (write: slowest/fastest per variable {spread:.2f}x; a file of "
          f"100 is mostly creating the file)")
    _, spread = series("BM_Set", "vars")
    print(f"  (Set into an empty list: slowest/fastest per variable "
          f"{spread:.2f}x)")

    print("-- stream writes: log lines, text mode, indentation, checksum")
    for crc, label in ((0, "additive checksum"), (1, "CRC-32")):
        rows, _ = series("BM_StreamWrite", "lines", extra=(crc,))
        for (lines, _), run in rows:
            fw = medians[("BM_Fwrite", (lines,))]
            ratio = run["bytes_per_second"] / fw["bytes_per_second"]
            print(f"RESULT stream ({label}) {lines:,} lines: "
                  f"{run['bytes_per_second'] / 1e6:.0f} MB/s, fwrite of the "
                  f"same bytes {fw['bytes_per_second'] / 1e6:.0f} MB/s: "
                  f"{ratio:.2f} of fwrite (goal >= 0.5)")

    print("-- template expansion (a placeholder about every 40 characters)")
    _, spread = series("BM_ExpandVarList", "chars", "char")
    print(f"RESULT expansion against 200 variables, time per character "
          f"slowest/fastest size: {spread:.2f}x (goal <= 2x)")
    _, spread = series("BM_FormatItems", "chars", "char")
    print(f"RESULT format items, time per character slowest/fastest size: "
          f"{spread:.2f}x (goal <= 2x)")

    print("-- path parsing: paths of growing component count, per character")
    _, spread = series("BM_PathSet", "components", "char")
    _, spread2 = series("BM_PathAppend", "components", "char")
    print(f"  (per character slowest/fastest: set {spread:.2f}x, append "
          f"{spread2:.2f}x; short paths are mostly fixed cost)")


def install(path):
    times, dropped, payload = defaultdict(list), defaultdict(int), {}
    by_round = defaultdict(dict)  # (product, kind) -> {round: ms}
    mode, start = "", "cold"
    with open(path) as f:
        for line in f:
            word, rest = line.split(maxsplit=1)
            if word == "mode":
                mode = rest.strip()
            elif word == "start":
                start = rest.strip()
            elif word == "payload":
                product, count, size = rest.split()
                payload[product] = (int(count), int(size) / 1e6)
            else:
                product, kind, ms, _, verdict, *round_ = rest.split()
                if verdict == "ok":
                    times[(product, kind)].append(int(ms))
                    if round_:
                        by_round[(product, kind)][round_[0]] = int(ms)
                else:
                    dropped[(product, kind)] += 1
    med = {key: statistics.median(values) for key, values in times.items()}
    ran = {kind for _, kind in med}
    # The columns, in this order, of the kinds that ran.
    names = {k: v for k, v in (("copy", "plain copy"),
                               ("copy-gdi", "copy + GDI floor"),
                               ("nsis", "NSIS"), ("msi", "MSI"),
                               ("setup", "Setup")) if k in ran}
    peers = [k for k in ("copy", "copy-gdi", "nsis", "msi") if k in names]
    print(f"32-bit programs ran {mode}; every run started Wine {start}" +
          (" (its server and services start inside the timed run)"
           if start == "cold" else " (a server already running)"))
    if mode != "natively":
        print("(every installer ran emulated alike: the ratios compare like "
              "with like, the absolute times are not those of a machine that "
              "runs 32-bit code natively)")
    if "copy-gdi" in names:
        print("(copy + GDI floor: the plain copy, then a memory device context "
              "and a WM_FONTCHANGE broadcast, the least an installer of fonts "
              "adds to a copy)")
    runs = max((len(v) for v in times.values()), default=0)
    print(f"medians of up to {runs} checked runs, ms; dropped runs (install "
          f"did not check out): " + (", ".join(
              f"{p} {k} {n}" for (p, k), n in sorted(dropped.items()))
              or "none"))

    def get(product, kind):
        return med.get((product, kind), float("nan"))

    print("| payload | " + " | ".join(names.values()) + " | " +
          " | ".join(f"Setup/{names[k]}" for k in peers) + " |")
    print("|---|" + "---|" * (len(names) + len(peers)))
    for product in ("1x", "10x"):
        count, mb = payload[product]
        cells = [f"{get(product, k):.0f}" for k in names]
        setup = get(product, "setup")
        ratios = [f"{setup / get(product, k):.2f}x" for k in peers]
        print(f"| {product}: {count} files, {mb:.2f} MB | " +
              " | ".join(cells + ratios) + " |")
    growth = {k: get("10x", k) - get("1x", k) for k in names}
    print("| growth 1x->10x | " + " | ".join(
        f"{growth[k]:+.0f} ({get('10x', k) / get('1x', k):.2f}x)"
        for k in names) + " |" + " |" * len(peers))
    variants = (("setup-before", "the earlier Setup.exe"),
                ("setup-unsigned", "the release unsigned, so that Setup "
                 "checks no signature,"))
    for (kind, label), product in itertools.product(variants, ("1x", "10x")):
        if (product, kind) in med:
            other = get(product, kind)
            print(f"  ({label} {product}: {other:.0f} ms, "
                  f"{other / get(product, 'copy'):.2f}x the copy, "
                  f"{other / get(product, 'nsis'):.2f}x NSIS; this one "
                  f"{get(product, 'setup') - other:+.0f} ms)")
    for product in ("1x", "10x"):
        if (product, "setup-nofonts") in med:
            print(f"  (Setup.exe -s -i -nofonts {product}: "
                  f"{get(product, 'setup-nofonts'):.0f} ms)")
    for product in ("1x", "10x"):
        setup, copy, nsis = (get(product, k) for k in ("setup", "copy", "nsis"))
        floor = (f"; the copy + GDI floor is "
                 f"{get(product, 'copy-gdi') / copy:.2f}x"
                 if "copy-gdi" in names else "")
        print(f"RESULT install {product}: Setup {setup:.0f} ms, plain copy "
              f"{copy:.0f} ms: {setup / copy:.2f}x the copy (goal <= 1.2x"
              f"{floor}); NSIS {nsis:.0f} ms: Setup {setup / nsis:.2f}x NSIS "
              f"(goal < 1x)")
    # Runs of one round follow each other, so a slow spell of the machine
    # falls on both sides of a ratio taken within a round.
    for product in ("1x", "10x"):
        setup = by_round[(product, "setup")]
        for peer, label in (("copy", "plain copy"), ("nsis", "NSIS"),
                            ("setup-before", "earlier Setup"),
                            ("setup-unsigned", "unsigned Setup")):
            other = by_round[(product, peer)]
            ratios = sorted(setup[r] / other[r] for r in setup if r in other)
            if ratios:
                print(f"  ({product} Setup/{label} within each round: "
                      f"median {statistics.median(ratios):.2f}x, "
                      f"{ratios[0]:.2f}x to {ratios[-1]:.2f}x over "
                      f"{len(ratios)} rounds)")
    print(f"RESULT install growth 1x->10x: Setup {growth['setup']:+.0f} ms, "
          f"plain copy {growth['copy']:+.0f} ms (goal: Setup's no more than "
          f"the copy's)")
    print("  runs (ms): " + "; ".join(
        f"{p} {k} {times[(p, k)]}" for p, k in sorted(times)))


if __name__ == "__main__":
    {"library": library, "install": install}[sys.argv[1]](sys.argv[2])
