#!/usr/bin/env python3
"""Compares the library with independent calculations on new random cases for some time.

    tools/compare.py SECONDS        shares the time between the comparisons
    tools/compare.py SECONDS SEED   starts from this seed, which the last run printed

Prints the cases and the mismatches of each comparison and, for a mismatch, the test's own words
and the command that repeats it. The status is 1 when there was one.
"""
import json
import os
import secrets
import subprocess
import sys
import tempfile
import time

COMPARISONS = (
    ("engine with MPFR", "oci_calc_number/calc_number_tests", "*RandomOracle*"),
    ("codec with GMP", "number_tests", "DecimalText.RandomValues"),
    ("text layout with the plain layout", "number_tests", "ToText.RandomNumbersAndModels"),
    ("reals with exact arithmetic", "number_tests", "RealConvert.Random*:RealDigits.*:Scan.*Random*"),
    ("cuts, shifts and steps with GMP", "number_tests", "Exact.*:-Exact.CutsOfAllShortValues"),
    ("integers with exact text", "number_tests", "IntConvert.*Random*"),
)


def run(program, tests, seed, scale):
    """One run of the tests: its cases, failures and output."""
    with tempfile.NamedTemporaryFile(suffix=".json") as report:
        done = subprocess.run(
            [program, f"--gtest_filter={tests}", f"--gtest_output=json:{report.name}"],
            env={**os.environ, "TEST_SEED": str(seed), "TEST_SCALE": str(scale),
                 "LOCPATH": "build/release/tests/locales"},
            capture_output=True, text=True)
        result = json.load(report)
    suites = [test for suite in result["testsuites"] for test in suite["testsuite"]]
    # The counts of one program add up from test to test.
    cases = max((int(test["cases"]) for test in suites if "cases" in test), default=0)
    failures = result["failures"] or (done.returncode != 0)
    return cases, failures, done.stdout


def main():
    seconds = float(sys.argv[1])
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else secrets.randbelow(10 ** 9)
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    subprocess.run(["cmake", "--preset", "release"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", "release", "--target", "locales",
                    "number_tests", "calc_number_tests", "--", "--quiet"], check=True)
    print(f"from seed {seed}")
    mismatches = 0
    for name, program, tests in COMPARISONS:
        program = "build/release/tests/" + program
        end = time.monotonic() + seconds / len(COMPARISONS)
        all_cases = all_failures = 0
        scale = 1
        while time.monotonic() < end:
            start = time.monotonic()
            cases, failures, output = run(program, tests, seed, scale)
            if cases == 0:
                sys.exit(f"{name}: no cases in {tests}")
            all_cases += cases
            all_failures += failures
            if failures:
                print(output[-2000:], f"TEST_SEED={seed} TEST_SCALE={scale} {program} "
                      f"--gtest_filter='{tests}'", sep="\n")
            seed += 1
            # Rounds of some ten seconds, none far beyond the end.
            pace = scale / (time.monotonic() - start)
            scale = max(1, int(pace * min(10, end - time.monotonic())))
        print(f"{name:36} {all_cases:12,} cases {all_failures:6} mismatches", flush=True)
        mismatches += all_failures
    return mismatches != 0


sys.exit(main())
