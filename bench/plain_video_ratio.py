#!/usr/bin/env python3
"""What the rules on enhancement streams cost plain streams: runs two builds of the same walks in turn, with the
rules and without, and prints CPU milliseconds (the least of all turns) and their ratio. No figure is judged."""

import argparse
import json
import os
import subprocess


def times(program):
    out = subprocess.run([program, "--benchmark_format=json", "--benchmark_min_time=0.2"], check=True,
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return {row["name"]: row["cpu_time"] for row in json.loads(out)["benchmarks"]}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--folder", default="build/bench/bench", help="where the two programs are")
    parser.add_argument("--turns", type=int, default=9)
    options = parser.parse_args()
    programs = {name: os.path.join(options.folder, name) for name in ("plain_video_bench", "plain_video_without_rules")}
    least = {name: {} for name in programs}
    for _ in range(options.turns):
        for name, program in programs.items():
            for kernel, time in times(program).items():
                least[name][kernel] = min(time, least[name].get(kernel, time))
    for kernel, time in least["plain_video_bench"].items():
        without = least["plain_video_without_rules"][kernel]
        print("%-6s with rules %8.3f ms   without %8.3f ms   with/without %5.3f" % (kernel, time, without, time / without))


if __name__ == "__main__":
    main()
