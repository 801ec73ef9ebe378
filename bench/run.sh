#!/usr/bin/env bash
# All benchmarks: kernels by Google Benchmark, then whole runs beside their peers.
set -euo pipefail
cd "$(dirname "$0")/.."
for kernel in build/bench/bench/*_bench; do
    "$kernel" --benchmark_min_time=0.5
done
build/bench/bench/decryption_ratio
python3 bench/plain_video_ratio.py
python3 bench/whole_program.py --program build/bench/src/main/mediasplit "$@"
