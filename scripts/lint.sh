#!/usr/bin/env bash
# clang-format and clang-tidy over the product's own sources; a finding is an error.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --build build/debug --target src/main/generated/src/main/build_time.h >/dev/null
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
git ls-files 'base/*.cpp' 'oapinfolib/*.cpp' 'ac4/*.cpp' 'src/*.cpp' |
    xargs -P "$(nproc)" -n 4 clang-tidy -p build/debug --quiet --extra-arg=-Wno-unknown-warning-option
