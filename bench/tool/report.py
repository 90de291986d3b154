#!/usr/bin/env python3
"""Times the tool's commands beside the usual tools and writes the table of docs/tool.md.

    bench/tool/report.py [TOOL [COUNT]]    default build/release/tools/number_tool/ocinumber, ten million

Every command reads a file of COUNT amounts and writes a file. A figure is the best of three runs;
a peak is the largest resident memory. Needs the packages mawk, time and xxd.
"""
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOL = sys.argv[1] if len(sys.argv) > 1 else str(ROOT / "build/release/tools/number_tool/ocinumber")
COUNT = int(sys.argv[2]) if len(sys.argv) > 2 else 10_000_000

# What is done; our command; whether --jobs 2 makes sense; the peers. $t are texts, $h hex, $r
# records, $c lines of three columns.
PYTHON = "python3 -c 'from decimal import Decimal as D; import sys\n{}'"
ROWS = [
    ("text to hex", "ocinumber encode -f $t", {}),
    ("text to records", "ocinumber encode --to raw -f $t", {}),
    ("hex to text", "ocinumber decode -f $h", {"`xxd -r -p`, hex to bytes": "xxd -r -p $h"}),
    ("records to text", "ocinumber decode --from raw -f $r",
     {"`xxd -p`, bytes to hex": "xxd -p -c 22 $r"}),
    ("text to sortable", "ocinumber convert --to sortable -f $t", {}),
    ("text to json", "ocinumber convert --to json -f $t", {}),
    ("round to 1 place", "ocinumber round --places 1 -f $t",
     {"`numfmt --format=%.1f`": "numfmt --format=%.1f --round=from-zero <$t",
      "`mawk`, printf %.1f": "mawk '{printf \"%.1f\\n\", $0}' $t",
      "Python's Decimal": PYTHON.format("for line in sys.stdin: print(round(D(line), 1))") + " <$t"}),
    ("trunc", "ocinumber trunc --places 1 -f $t", {}),
    ("prec", "ocinumber prec --digits 5 -f $t", {}),
    ("shift", "ocinumber shift --by 2 -f $t", {}),
    ("abs", "ocinumber abs -f $t", {}),
    ("neg", "ocinumber neg -f $t", {}),
    ("format", "ocinumber format -m 9999999990.99 -f $t", {}),
    ("parse", "ocinumber parse -m 9999999990.99 -f $t", {}),
    ("field 2 of 3 rounded", "ocinumber round --places 1 -k 2 -f $c",
     {"`numfmt --field`": "numfmt -d '\t' --field 2 --format=%.1f --round=from-zero <$c",
      "`mawk`": "mawk -F '\t' -v OFS='\t' '{$2 = sprintf(\"%.1f\", $2); print}' $c"}),
    ("calc, $2 * 1.19 + $3", "ocinumber calc '$2 * 1.19 + $3' $c",
     {"`mawk`": "mawk -F'\t' '{print $2 * 1.19 + $3}' $c",
      "Python's Decimal": PYTHON.format(
          "for line in sys.stdin:\n a, b, c = line.split(chr(9)); print(D(b) * D(\"1.19\") + D(c))") +
      " <$c"}),
    ("stats", "ocinumber stats -f $t",
     {"`mawk`, sum": "mawk '{s += $0} END {printf \"%.2f\\n\", s}' $t",
      "Python's Decimal, sum": PYTHON.format("print(sum(map(D, sys.stdin)))") + " <$t"}),
    ("sorted",
     "ocinumber convert --to sortable -f $t | sort -S 256M | "
     "ocinumber convert --from sortable",
     {"`sort -n`": "sort -n -S 256M $t", "`sort -g`": "sort -g -S 256M $t"}),
    ("inspect", "ocinumber inspect -f $t", {}),
]
ALONE = {"sorted"}


def run(command, files, rounds=3):
    """Seconds and the peak in MB of the shell's largest process; the best of the rounds."""
    env = {**os.environ, "LC_ALL": "C", "PATH": os.path.dirname(TOOL) + ":" + os.environ["PATH"], **files}
    # A shell would hide a smaller peak than its own.
    measured = command if "|" not in command else "bash -o pipefail -c " + shlex.quote(command)
    script = f"/usr/bin/time -f %M -o {files['o']}.peak {measured} >$o"
    best, peak = 1e9, 0
    for _ in range(rounds):
        start = time.monotonic()
        subprocess.run(["bash", "-c", script], env=env, check=True)
        best = min(best, time.monotonic() - start)
        peak = max(peak, int(pathlib.Path(files["o"] + ".peak").read_text()) / 1024)
        if best > 20:
            break
    return best, peak


def make_files(folder):
    names = {name: os.path.join(folder, name) for name in "thrco"}
    subprocess.run(["mawk", "-v", f"n={COUNT}",
                    'BEGIN {srand(1); for (i = 0; i < n; ++i) '
                    'printf "%s%d.%02d\\n", rand() < 0.3 ? "-" : "", rand() * 10 ^ (1 + int(9 * rand())), '
                    '100 * rand()}'], stdout=open(names["t"], "w"), check=True)
    for name, form in ("h", "hex"), ("r", "raw"):
        subprocess.run([TOOL, "encode", "--to", form, "-f", names["t"]],
                       stdout=open(names[name], "w"), check=True)
    subprocess.run(["mawk", '{print NR "\\t" $0 "\\t" NR % 100}', names["t"]],
                   stdout=open(names["c"], "w"), check=True)
    tenth = {name: path + "10" for name, path in names.items()}
    for name in "thrc":
        part = f"-c {COUNT // 10 * 22}" if name == "r" else f"-n {COUNT // 10}"
        subprocess.run(f"head {part} '{names[name]}' >'{tenth[name]}'", shell=True, check=True)
    return names, tenth


def main():
    lines = ["| work | M values/s | with `--jobs 2` | peak MB: a tenth, all, 2 jobs | beside |",
             "|---|---|---|---|---|"]
    with tempfile.TemporaryDirectory() as folder:
        files, tenth = make_files(folder)
        for title, command, peers in ROWS:
            alone, peak = run(command, files)
            figures, peaks = "", f"{run(command, tenth, 1)[1]:.1f}, {peak:.1f}"
            if title not in ALONE:
                both, peak = run(command + " -j 2", files)
                figures = f"{COUNT / both / 1e6:.1f} ({alone / both:.2f} times)"
                peaks += f", {peak:.1f}"
            beside = []
            for name, peer in peers.items():
                seconds, peak = run(peer, files)
                beside.append(f"{name}: {COUNT / seconds / 1e6:.1f}" +
                              (f" ({peak:.0f} MB)" if peak > 100 else ""))
            lines.append(f"| {title.replace('|', chr(92) + '|')} | {COUNT / alone / 1e6:.1f} | {figures} | "
                         f"{peaks} | {'; '.join(beside)} |")
            print(lines[-1], flush=True)
    page = ROOT / "docs/tool.md"
    table = "\n".join(lines)
    page.write_text(re.sub(r"<!-- speed -->\n.*<!-- end -->", lambda _: f"<!-- speed -->\n{table}\n<!-- end -->",
                           page.read_text(), flags=re.S))


main()
