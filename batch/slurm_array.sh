#!/usr/bin/env bash
# One task of a Slurm job array splits one input of LIST into RESULTS; both lie on a file system that all nodes share.
#   LIST=list.txt RESULTS=results sbatch --array=0-99%20 slurm_array.sh [options of mediasplit-report...]
#SBATCH --job-name=mediasplit
#SBATCH --cpus-per-task=2
#SBATCH --mem=1G
#SBATCH --time=02:00:00
#SBATCH --output=mediasplit-%A_%a.log
set -euo pipefail

: "${LIST:?names no list of inputs}" "${RESULTS:?names no folder for results}"
# Slurm runs a copy of this script, so its own place tells nothing.
exec "${MEDIASPLIT_BATCH:-/usr/share/mediasplit/batch}/split_nth.sh" "$LIST" "$RESULTS" "$SLURM_ARRAY_TASK_ID" "$@"
