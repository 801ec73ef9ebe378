#!/usr/bin/env bash
# Splits one input in a working folder of its own and keeps what came out.
#   split_one.sh RESULTS INPUT [options of mediasplit-report...]
# Leaves the folder RESULTS/NAME-HASH, NAME being the end of the input and HASH telling inputs of one name apart:
#   streams/      the elementary streams
#   report.json   what was found
#   run.log       what the run printed
#   input         the input, as it was given
#   status        the exit status: 0, 1 for a failed run, 2 for a finding that --fail-on names
# An input whose folder has a status of 0 or 2 is passed over, so that a broken batch goes on where it was. Ends with
# the status of the run.
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: $0 RESULTS INPUT [options of mediasplit-report...]" >&2
    exit 64
fi
results=$(realpath "$1")
given=$2
shift 2

input=$given
case $input in
    http://* | https://* | /*) ;;
    *) input=$PWD/$input ;; # the program runs in another folder
esac

name=$(basename -- "$given" | tr -c 'A-Za-z0-9._\n-' _ | cut -c 1-100)
name=$name-$(printf %s "$input" | sha256sum | cut -c 1-12)
kept=$results/$name
if [ -f "$kept/status" ] && [ "$(cat "$kept/status")" != 1 ]; then
    exit "$(cat "$kept/status")"
fi

# Beside the results, so that moving there is one step: a folder in RESULTS is whole or not there.
mkdir -p "$results/.work"
work=$(mktemp -d "$results/.work/$name.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work/run" "$work/kept"
status=0
(cd "$work/run" && exec "${MEDIASPLIT_REPORT:-mediasplit-report}" -i "$input" -o "$work/kept/streams" \
    --report "$work/kept/report.json" --quiet "$@") >"$work/kept/run.log" 2>&1 || status=$?
printf '%s\n' "$given" >"$work/kept/input"
printf '%s\n' "$status" >"$work/kept/status"
chmod a+rx "$work/kept"
rm -rf "$kept"
mv -T "$work/kept" "$kept"
exit "$status"
