#!/usr/bin/env bash
# Merges the reports of a batch into one JSON document on standard output.
#   merge_reports.sh RESULTS
# "inputs": each input with its result, counts and the folder that holds its streams; "failed": the inputs whose run
# failed or left no report; "rules": each message that was raised, with how often and for which inputs, errors first.
set -euo pipefail

if [ $# -ne 1 ]; then
    echo "usage: $0 RESULTS" >&2
    exit 64
fi
here=$(dirname "$(realpath "$0")")
cd "$1"
find . -mindepth 2 -maxdepth 2 -name status -not -path './.work/*' -printf '%h\n' | sort | while IFS= read -r folder; do
    report=$folder/report.json
    jq -e . "$report" >/dev/null 2>&1 || report=/dev/null
    jq -c -n --arg folder "${folder#./}" --rawfile input "$folder/input" --rawfile status "$folder/status" \
        --slurpfile report "$report" \
        '{folder: $folder, input: ($input | rtrimstr("\n")), status: ($status | tonumber), report: $report[0]}'
done | jq -n -f "$here/merge_reports.jq"
