"""Prints the benchmark figures as scripts/bench.sh shows them.

  report.py library LIBRARY.json   Google Benchmark's JSON (median aggregates)
  report.py install INSTALL.txt    lines "mode <how 32-bit programs ran>",
                                   "start <cold|warm>",
                                   "payload <scale> <files> <bytes>" and
                                   "run <scale> <kind> <install|repair|remove>
                                    <ms> <files> <ok|failed> <round>"
"""
import json
import itertools
import statistics
import sys


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


NAMES = (("copy", "plain copy"), ("copy-gdi", "copy + GDI"),
         ("copy-fonts", "font floor"), ("nsis", "NSIS"), ("msi", "MSI"),
         ("setup", "Setup"))
VARIANTS = (("setup-before", "the earlier Setup.exe"),
            ("setup-unsigned", "the release unsigned, which checks no "
             "signature"), ("setup-nofonts", "Setup.exe -nofonts"))


class Runs:
    """The checked runs of install.txt: {(scale, kind, op): {round: ms}}."""

    def __init__(self, path):
        self.ms, self.dropped, self.payload = {}, {}, {}
        self.mode, self.start = "", "cold"
        with open(path) as f:
            for line in f:
                word, *rest = line.split()
                if word == "mode":
                    self.mode = " ".join(rest)
                elif word == "start":
                    self.start = rest[0]
                elif word == "payload":
                    self.payload[rest[0]] = (int(rest[1]), int(rest[2]) / 1e6)
                elif word == "run":
                    scale, kind, op, ms, _, verdict, round_ = rest
                    key = (scale, kind, op)
                    if verdict == "ok":
                        self.ms.setdefault(key, {})[round_] = int(ms)
                    else:
                        self.dropped[key] = self.dropped.get(key, 0) + 1
        self.scales = [s for s in ("1x", "10x", "100x") if s in self.payload]

    def median(self, scale, kind, op="install"):
        runs = self.ms.get((scale, kind, op))
        return statistics.median(runs.values()) if runs else float("nan")

    def ratio(self, a, b):
        """The median of a/b taken within each round, where a slow spell of
        the machine falls on both, and the range over the rounds."""
        ra, rb = self.ms.get(a, {}), self.ms.get(b, {})
        ratios = sorted(ra[r] / rb[r] for r in ra if r in rb)
        if not ratios:
            return float("nan"), "n/a"
        mid = statistics.median(ratios)
        return mid, f"{mid:.2f} ({ratios[0]:.2f}-{ratios[-1]:.2f})"


def table(runs, title, columns, ratios):
    """One table: a row per scale, the median ms of each (kind, op) column,
    then each ratio (label, a, b) within rounds, with its range."""
    print(f"\n{title}")
    print("| payload | " + " | ".join(c[0] for c in columns) + " | " +
          " | ".join(r[0] for r in ratios) + " |")
    print("|---|" + "---|" * (len(columns) + len(ratios)))
    for scale in runs.scales:
        count, mb = runs.payload[scale]
        cells = [f"{runs.median(scale, *c[1]) / 1000:.2f} s" for c in columns]
        cells += [runs.ratio((scale, *a), (scale, *b))[1] for _, a, b in ratios]
        print(f"| {scale}: {count} files, {mb:.1f} MB | " +
              " | ".join(cells) + " |")


def install(path):
    runs = Runs(path)
    ran = {kind for _, kind, _ in runs.ms}
    names = [(k, n) for k, n in NAMES if k in ran]
    print(f"32-bit programs ran {runs.mode}; every run started Wine "
          f"{runs.start}" + (" (its server and services start inside the "
                             "timed run)" if runs.start == "cold" else
                             " (a server already running)"))
    if runs.mode != "natively":
        print("(every installer ran emulated alike: the ratios compare like "
              "with like, the absolute times are not those of a machine that "
              "runs 32-bit code natively)")
    print("(font floor: the plain copy, then each font copied into the "
          "Fonts folder with its Fonts value and AddFontResourceA, and one "
          "WM_FONTCHANGE broadcast)")
    count = max((len(v) for v in runs.ms.values()), default=0)
    print(f"medians of up to {count} checked runs; ratios are the median "
          f"of those within each round (range over the rounds); dropped runs "
          f"(not checked out): " + (", ".join(
              f"{' '.join(k)} {n}" for k, n in sorted(runs.dropped.items()))
              or "none"))
    peers = [(f"Setup / {n}", ("setup", "install"), (k, "install"))
             for k, n in names if k in ("copy-fonts", "nsis")]
    table(runs, "Fresh install", [(n, (k, "install")) for k, n in names],
          peers)
    if ("setup" in ran and "nsis" in ran and
            any(op == "repair" for _, _, op in runs.ms)):
        table(runs, "Repair: the installer run again over the installed "
              "product", [("NSIS", ("nsis", "repair")),
                          ("Setup", ("setup", "repair"))],
              [("Setup / NSIS", ("setup", "repair"), ("nsis", "repair")),
               ("Setup repair / install", ("setup", "repair"),
                ("setup", "install"))])
        table(runs, "Removal: until the uninstaller's work is done (Setup's "
              "batch file, NSIS's copy in the temporary folder)",
              [("NSIS uninstaller", ("nsis", "remove")),
               ("Setup -u", ("setup", "remove"))],
              [("Setup / NSIS", ("setup", "remove"), ("nsis", "remove"))])
    first, last = runs.scales[0], runs.scales[-1]
    print(f"\nGrowth {first} -> {last} (ms added; the ratio of the times):")
    for kind, name in names:
        for op in ("install", "repair", "remove"):
            a, b = runs.median(first, kind, op), runs.median(last, kind, op)
            if a == a and b == b:
                print(f"  {name} {op}: {b - a:+.0f} ms ({b / a:.2f}x)")
    for (kind, label), scale, op in itertools.product(
            VARIANTS, runs.scales, ("install", "repair", "remove")):
        if (scale, kind, op) in runs.ms:
            print(f"  ({label}, {op} {scale}: "
                  f"{runs.median(scale, kind, op) / 1000:.2f} s; Setup / it "
                  f"{runs.ratio((scale, 'setup', op), (scale, kind, op))[1]})")
    results(runs, first, last)


def results(runs, first, last):
    def within(scale, a, b):
        return runs.ratio((scale, *a), (scale, *b))[0]

    for scale in runs.scales:
        print(f"RESULT install {scale}: Setup / font floor "
              f"{within(scale, ('setup', 'install'), ('copy-fonts', 'install')):.2f}"
              f" (goal <= 1.10), Setup / NSIS "
              f"{within(scale, ('setup', 'install'), ('nsis', 'install')):.2f}"
              f" (goal <= 0.90); repair / install "
              f"{within(scale, ('setup', 'repair'), ('setup', 'install')):.2f}"
              f" (goal <= 1.3); removal Setup / NSIS "
              f"{within(scale, ('setup', 'remove'), ('nsis', 'remove')):.2f}"
              f" (goal <= 1)")
    growth = {k: runs.median(last, k) - runs.median(first, k)
              for k in ("setup", "copy-fonts")}
    print(f"RESULT install growth {first} -> {last}: Setup "
          f"{growth['setup']:+.0f} ms, font floor {growth['copy-fonts']:+.0f}"
          f" ms (goal: Setup's no more than the floor's)")


if __name__ == "__main__":
    {"library": library, "install": install}[sys.argv[1]](sys.argv[2])
