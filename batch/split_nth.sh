#!/usr/bin/env bash
# Splits one input of a list: number 0, 1, ... of the lines that are neither empty nor begin with "#".
#   split_nth.sh LIST RESULTS NUMBER [options of mediasplit-report...]
set -euo pipefail

if [ $# -lt 3 ]; then
    echo "usage: $0 LIST RESULTS NUMBER [options of mediasplit-report...]" >&2
    exit 64
fi
list=$1
results=$2
number=$3
shift 3
here=$(dirname "$(realpath "$0")")

input=$(sed -e '/^#/d' -e '/^$/d' "$list" | sed -n "$((number + 1))p")
if [ -z "$input" ]; then
    echo "$0: $list has no input number $number" >&2
    exit 64
fi
exec "$here/split_one.sh" "$results" "$input" "$@"
