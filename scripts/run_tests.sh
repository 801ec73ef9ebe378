#!/usr/bin/env bash
# The whole check, as `make test` and CI run it:
#   1. the suite, optimised                  2. the same under AddressSanitizer and UBSan
#   3. the threaded tests under TSan         4. every fuzz harness for a few seconds over its corpus
# Warnings are errors in all four builds.
#   FUZZ_SECONDS=N   seconds for each harness (default 4)
#   STAGES="..."     some of: release asan tsan fuzz (default: all)
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
# The tests write many small files; memory takes them faster than a disk.
if [ -z "${TMPDIR:-}" ] && [ -w /dev/shm ] && [ "$(df --output=avail -k /dev/shm | tail -1)" -gt 2000000 ]; then
    export TMPDIR=/dev/shm
fi
stages=${STAGES:-release asan tsan fuzz}
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

build() {
    echo "== $1: build"
    local options=("${launcher[@]}")
    [ "$1" = release ] && options+=(-DMEDIASPLIT_TESTS=ON)
    cmake --preset "$1" "${options[@]}" >/dev/null
    cmake --build --preset "$1" -j "$jobs" ${2:+--target "$2"} -- --quiet
}

for stage in $stages; do
    started=$SECONDS
    case "$stage" in
        release | asan)
            build "$stage"
            echo "== $stage: tests"
            ctest --test-dir "build/$stage" --output-on-failure -j "$jobs" --no-tests=error
            ;;
        tsan)
            build tsan threaded_tests
            echo "== tsan: threaded tests"
            ctest --test-dir build/tsan --output-on-failure -L threads --no-tests=error
            ;;
        fuzz)
            build fuzz
            for harness in build/fuzz/tests/fuzz/*_fuzz; do
                name=$(basename "$harness" _fuzz)
                echo "== fuzz: $name"
                scratch=$(mktemp -d)
                if ! "$harness" -max_total_time="${FUZZ_SECONDS:-4}" -timeout=60 -rss_limit_mb=2048 \
                    -artifact_prefix="$scratch/" -print_final_stats=0 -verbosity=0 \
                    "$scratch" "tests/fuzz/corpus/$name" >"$scratch.log" 2>&1; then
                    tail -40 "$scratch.log"
                    echo "fuzz harness $name failed; its input is in $scratch" >&2
                    exit 1
                fi
                rm -rf "$scratch" "$scratch.log"
            done
            ;;
        *) echo "unknown stage $stage" >&2; exit 2 ;;
    esac
    echo "== $stage: done in $((SECONDS - started)) s"
done
