#!/usr/bin/env bash
# Splits all inputs of a list, several at a time, with GNU parallel.
#   split_list.sh LIST RESULTS [options of mediasplit-report...]
#   JOBS=N          processes at a time on each machine (default: one for each processor)
#   MACHINES=FILE   ssh logins, one a line ("me@host", ":" for this machine). The machines share this folder, the inputs
#                   and RESULTS, and have the package installed. Without it this machine does all.
# Goes on where it was when it is started again. Ends with 0 if all runs succeeded, otherwise with 1; RESULTS/joblog
# tells the times and the status of each.
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: $0 LIST RESULTS [options of mediasplit-report...]" >&2
    exit 64
fi
list=$1
mkdir -p "$2"
results=$(realpath "$2")
shift 2
here=$(dirname "$(realpath "$0")")

where=()
if [ -n "${MACHINES:-}" ]; then
    where=(--sshloginfile "$(realpath "$MACHINES")" --workdir "$PWD")
fi
sed -e '/^#/d' -e '/^$/d' "$list" |
    parallel --will-cite --quote --jobs "${JOBS:-100%}" --joblog "$results/joblog" "${where[@]}" \
        "$here/split_one.sh" "$results" {} "$@" || exit 1
