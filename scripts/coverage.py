#!/usr/bin/env python3
"""Runs every fuzz harness over its corpus and prints how many lines of each reader that reached.

Usage: coverage.py [--corpus FOLDER] [--files]
    --corpus  where the harnesses' folders of inputs are, by default tests/fuzz/corpus; may be given more than once
    --files   a line for each file, not only for each folder
"""

import argparse
import collections
import glob
import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def run_harnesses(harnesses, corpora, scratch):
    """Profiles of all runs, merged."""
    profiles = []
    for harness in harnesses:
        name = os.path.basename(harness)[:-len("_fuzz")]
        folders = [folder for folder in (os.path.join(corpus, name) for corpus in corpora) if os.path.isdir(folder)]
        profile = os.path.join(scratch, name + ".profraw")
        done = subprocess.run([harness, *folders], env=dict(os.environ, LLVM_PROFILE_FILE=profile),
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        if done.returncode != 0:
            sys.exit("%s failed: %s" % (name, done.stderr.decode(errors="replace")[-2000:]))
        profiles.append(profile)
    merged = os.path.join(scratch, "all.profdata")
    subprocess.run(["llvm-profdata", "merge", "-sparse", *profiles, "-o", merged], check=True)
    return merged


def measure(harnesses, profile):
    """Lines and covered lines of each file that a harness is built from, tests and system headers left out."""
    words = ["llvm-cov", "export", "-summary-only", "-instr-profile", profile, harnesses[0]]
    for harness in harnesses[1:]:
        words += ["-object", harness]
    report = json.loads(subprocess.run(words, check=True, stdout=subprocess.PIPE).stdout)
    files = {}
    for file in report["data"][0]["files"]:
        path = os.path.relpath(file["filename"], HERE)
        if path.split(os.sep)[0] in ("base", "src", "oapinfolib", "ac4"):
            lines = file["summary"]["lines"]
            files[path] = (lines["count"], lines["covered"])
    return files


def print_table(rows):
    width = max(len(name) for name in rows)
    print("%-*s %7s %8s %7s" % (width, "", "lines", "reached", "share"))
    for name, (count, covered) in rows.items():
        print("%-*s %7d %8d %6.1f%%" % (width, name, count, covered, 100 * covered / max(count, 1)))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=os.path.join(HERE, "build/coverage"))
    parser.add_argument("--corpus", action="append")
    parser.add_argument("--files", action="store_true")
    options = parser.parse_args()
    harnesses = sorted(glob.glob(os.path.join(options.build, "tests/fuzz/*_fuzz")))
    corpora = options.corpus or [os.path.join(HERE, "tests/fuzz/corpus")]
    with tempfile.TemporaryDirectory() as scratch:
        files = measure(harnesses, run_harnesses(harnesses, corpora, scratch))
    rows = collections.defaultdict(lambda: (0, 0))
    for path, (count, covered) in sorted(files.items()):
        for name in {path if options.files else os.path.dirname(path), "all"}:
            rows[name] = (rows[name][0] + count, rows[name][1] + covered)
    rows["all"] = rows.pop("all")  # last
    print_table(rows)


if __name__ == "__main__":
    main()
