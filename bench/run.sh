#!/usr/bin/env bash
# All benchmarks: kernels by Google Benchmark and beside the bare cipher, then whole runs beside their peers. Writes
# docs/performance.md. Arguments go to whole_program.py.
set -euo pipefail
cd "$(dirname "$0")/.."
kernels=$(mktemp)
trap 'rm -f "$kernels"' EXIT
for kernel in build/bench/bench/*_bench; do
    "$kernel" --benchmark_min_time=0.5 2>/dev/null | tee -a "$kernels"
done
# In memory where there is room, since writing back of its 1.25 GB to a disk takes longer than the cipher.
(
    if [ -w /dev/shm ] && [ "$(df --output=avail -k /dev/shm | tail -1)" -gt 4000000 ]; then export TMPDIR=/dev/shm; fi
    build/bench/bench/decryption_ratio
) | tee -a "$kernels"
python3 bench/plain_video_ratio.py | tee -a "$kernels"
python3 bench/whole_program.py --program build/bench/src/main/mediasplit --table docs/performance.md \
    --kernels "$kernels" "$@"
