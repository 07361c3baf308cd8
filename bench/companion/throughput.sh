#!/usr/bin/env bash
# The companion's files per second over the WordPerfect corpus, with one
# and with two conversions at a time, on fresh copies each run; best of
# REPEAT runs (default 3), since other work on the machine only slows a run.
# Twice: the folder as the companion walks it (by name), and the same files
# named on the command line largest first, which the companion keeps in
# that order: one document holds half the corpus's work, and where it falls
# in the order decides how long one core idles at the end.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus/wp"
repeat=${REPEAT:-3}
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state"
count=$(find "$corpus" -type f | wc -l)

# Prints the nanoseconds of one run.
run() { # run JOBS ORDER
    rm -rf "$work/files" && cp -r "$corpus" "$work/files"
    local args=("$work/files")
    [ "$2" = largest ] && mapfile -t args < <(ls -S "$work/files"/*)
    local start=$(date +%s%N)
    "$root/build/bin/quillmorph-convert" --jobs "$1" "${args[@]}" >"$work/out-$1" </dev/null || true
    echo $(( $(date +%s%N) - start ))
}

for order in folder largest; do
    declare -A rate=()
    for jobs in 1 2; do
        best=""
        for _ in $(seq 1 "$repeat"); do
            ns=$(run "$jobs" "$order")
            [ -z "$best" ] || [ "$ns" -lt "$best" ] && best=$ns
        done
        rate[$jobs]=$(awk -v n="$count" -v ns="$best" 'BEGIN { printf "%.1f", n / (ns / 1e9) }')
        echo "$order order, --jobs $jobs: $count files in $(awk -v ns="$best" 'BEGIN { printf "%.2f", ns / 1e9 }') s," \
             "${rate[$jobs]} files/s ($(grep -E '^[0-9]+ converted' "$work/out-$jobs"))"
    done
    awk -v a="${rate[1]}" -v b="${rate[2]}" -v o="$order" 'BEGIN { printf "%s order: speed-up with --jobs 2: %.2fx\n", o, b / a }'
done
