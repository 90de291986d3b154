#!/usr/bin/env python3
"""Runs the benchmarks and writes their last results into the documents.

    bench/report.py [BUILD_FOLDER [TABLE...]]   default build/release, and all tables
    bench/report.py --plots                     draws the plots again, from the tables as they stand

Writes the tables of docs/benchmarks.md (between the markers there) and the plots in
docs/plots. Needs valgrind for the instruction counts.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile

from plots import write_plots

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/release").resolve()

# Title, program, our benchmark, and the peers with the ratio aimed at (None: for
# comparison only).
BASE = [
    ("render, 12 digits", "render_number/12", [("to_chars of int128", "render_int128_to_chars/12", 0.5)]),
    ("render, 38 digits", "render_number/38", [("to_chars of int128", "render_int128_to_chars/38", 0.5)]),
    ("read, 12 digits", "read_number/12", [("cpp_dec_float<40>", "read_boost/12", 0.5)]),
    ("read, 38 digits", "read_number/38", [("cpp_dec_float<40>", "read_boost/38", 0.5)]),
    ("`OCINumberFromInt`", "from_int",
     [("snprintf", "integer_snprintf", 0.5), ("`OCINumberAssign`", "assign", 2)]),
    ("`OCINumberToInt`", "to_int",
     [("snprintf", "integer_snprintf", 0.5), ("`OCINumberAssign`", "assign", 2)]),
    ("`OCINumberCmp`", "cmp", [("`OCINumberAssign`", "assign", 1)]),
] + [
    (f"`OCINumber{name}`", ours, [("`OCINumberAssign`", "assign", aim)])
    for name, ours, aim in [("Abs", "abs_value", 4), ("Neg", "neg", 4), ("Shift", "shift", 1.7),
                            ("Inc", "inc", 4), ("Dec", "dec", 4), ("Prec", "prec", 4),
                            ("Round", "round_places", 4), ("Trunc", "trunc_places", 4)]
]
TEXT = [
    ("`OCINumberToText`, TM9", "to_text_tm9", [("cpp_dec_float<40>", "to_text_boost", 0.05)]),
    ("`OCINumberToText`, 20 positions", "to_text_model",
     [("cpp_dec_float<40>", "to_text_boost_fixed", 0.08)]),
    ("`OCINumberFromText`", "from_text", [("cpp_dec_float<40>", "from_text_boost", 0.3)]),
] + [
    (f"`OCINumberToReal`, {n} digits", f"to_real/{n}", [("strtod", f"to_real_strtod/{n}", 0.6)])
    for n in (6, 15, 38)
] + [
    (f"`OCINumberFromReal`, up to 1E{n}", f"from_real/{n}",
     [("snprintf %.15g", f"from_real_snprintf/{n}", 0.33)])
    for n in (0, 20, 100)
]
COLUMN = [
    (f"to {title}", ours, [(f"loop over `OCINumber{name}`", peer, 0.25)])
    for title, ours, name, peer in [("int64, 12 digits", "to_int64/12", "ToInt", "loop_int64/12"),
                                    ("int64, 16 digits", "to_int64/16", "ToInt", "loop_int64/16"),
                                    ("double, 12 digits", "to_double/12", "ToReal", "loop_double/12"),
                                    ("double, 38 digits", "to_double/38", "ToReal", "loop_double/38")]
] + [
    ("to decimal128, 12 digits", "to_decimal128/12", [("copy of the bytes", "copy_bytes", 1.67)]),
    ("to decimal256, 12 digits", "to_decimal256/12", [("copy of the bytes", "copy_bytes", None)]),
    ("to text, 12 digits", "to_text/12", [("loop over `OCINumberToText`", "loop_text/12", None)]),
] + [
    (f"exact sum, {n} digits", f"sum/{n}", [("loop over `OCINumberAdd`", f"loop_sum/{n}", 0.2)])
    for n in (12, 38)
] + [
    (f"product, {n} digits", f"product/{n}", [("loop over `OCINumberMul`", f"loop_product/{n}", None)])
    for n in (12, 38)
] + [
    ("to double, two threads", "to_double_threads/2/real_time",
     [("one thread", "to_double_threads/1/real_time", 0.56)]),
]
# Ratios aimed at, by peer; of decimal128 for 34 and 12 digits.
AIMS = {
    "boost": {"Add": 1, "Sub": 1, "Mul": 1, "Div": 0.15},
    "arb": {"Sqrt": 0.8},
    "decimal128": {"Add": (1.2, None), "Sub": (1.2, None), "Mul": (0.8, 1.3), "Div": (0.8, 0.8)},
}
COMPARED = {"Mod", "Ceil", "Floor", "IntPower"}
ORDER = ["Add", "Sub", "Mul", "Div", "Mod", "Sqrt", "Ceil", "Floor", "Exp", "Ln", "Log", "Power",
         "IntPower", "Sin", "Cos", "Tan", "ArcSin", "ArcCos", "ArcTan", "ArcTan2", "HypSin",
         "HypCos", "HypTan"]


def calculations():
    rows = []
    for name in ORDER:
        algebraic = name in COMPARED or any(name in aims for aims in AIMS.values())
        for digits in (40, 34, 12):
            key = f"{name}/{digits}/"
            decimal128 = AIMS["decimal128"].get(name, (None, None))
            peers = [("decimal128", key + "decimal128", decimal128[digits == 12])]
            if digits != 34:
                peers += [("Boost", key + "boost", AIMS["boost"].get(name)),
                          ("MPFR", key + "mpfr", None if algebraic else 0.3),
                          ("Arb", key + "arb", AIMS["arb"].get(name) if algebraic else 0.5)]
            rows.append((f"`OCINumber{name}`, {digits} digits", key + "oci", peers))
    return rows


def run(program, time="cpu_time"):
    """Median times in ns by benchmark name."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([BUILD / "bench" / program, f"--benchmark_out={out.name}",
                        "--benchmark_out_format=json", "--benchmark_repetitions=5",
                        "--benchmark_min_time=0.05",
                        "--benchmark_enable_random_interleaving=true",
                        "--benchmark_report_aggregates_only=true"],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        results = json.load(open(out.name))["benchmarks"]
    return {r["run_name"]: r[time] for r in results if r["aggregate_name"] == "median"}


def table(rows, times):
    lines = ["| function | ns | peer | ns | ratio | aim | met |", "|---|---:|---|---:|---:|---:|---|"]
    for title, ours, peers in rows:
        if ours not in times:
            continue
        for label, name, aim in peers:
            if name not in times:
                continue
            ratio = times[ours] / times[name]
            met = "" if aim is None else "yes" if ratio <= aim else "no"
            lines.append(f"| {title} | {times[ours]:.1f} | {label} | {times[name]:.1f} | {ratio:.2f} "
                         f"| {'' if aim is None else f'{aim:g}'} | {met} |")
    return "\n".join(lines)


def counts():
    """Instructions, stack and heap of a call."""
    program = BUILD / "bench" / "bench_count"
    lines = ["| function | instructions | stack, bytes | allocations |", "|---|---:|---:|---:|"]

    def output(*arguments):
        return subprocess.run([program, *arguments], check=True, capture_output=True,
                              text=True).stdout.strip()

    for name in output("--list").split():
        done = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                               f"--toggle-collect=OCINumber{name}", program, name],
                              check=True, capture_output=True, text=True)
        collected = int(re.search(r"Collected : (\d+)", done.stderr).group(1))
        lines.append(f"| `OCINumber{name}` | {collected // 1024} | {output('--stack', name)} "
                     f"| {output('--heap', name)} |")
    return "\n".join(lines)


def main():
    page = ROOT / "docs/benchmarks.md"
    text = page.read_text()
    if sys.argv[1:] == ["--plots"]:
        write_plots(text, ROOT / "docs/plots")
        return

    def put(marker, content):
        nonlocal text
        start = text.index(f"<!-- {marker} -->\n") + len(f"<!-- {marker} -->\n")
        end = text.index("<!-- end -->", start)
        text = text[:start] + "\n" + content + "\n\n" + text[end:]

    tables = {
        "base": lambda: table(BASE, run("bench_base")),
        "text": lambda: table(TEXT, run("bench_text")),
        "columns": lambda: table(COLUMN, run("bench_column", "ns")),
        "calculations": lambda: table(calculations(), run("bench_calc")),
        "counts": counts,
    }
    for marker in sys.argv[2:] or tables:
        put(marker, tables[marker]())
    page.write_text(text)
    write_plots(text, ROOT / "docs/plots")


if __name__ == "__main__":
    main()
