#!/usr/bin/env bash
# Splits the clip in demo/ and shows what came out.
set -euo pipefail
cd "$(dirname "$0")/.."
rm -rf out/demo
mkdir -p out
build/release/src/main/mediasplit -i demo/clip.mp4 -o out/demo
echo
echo "Streams in out/demo:"
for stream in out/demo/*; do
    printf '  %-40s %8d bytes\n' "$(basename "$stream")" "$(stat -c %s "$stream")"
done
