#!/usr/bin/env bash
# The companion's files per second over the WordPerfect corpus, with one
# and with two conversions at a time, on fresh copies each run.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus/wp"
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state"
count=$(find "$corpus" -type f | wc -l)
declare -A rate
for jobs in 1 2; do
    rm -rf "$work/files" && cp -r "$corpus" "$work/files"
    start=$(date +%s%N)
    "$root/build/bin/quillmorph-convert" --jobs "$jobs" "$work/files" >"$work/out-$jobs" </dev/null || true
    elapsed=$(( $(date +%s%N) - start ))
    rate[$jobs]=$(awk -v n="$count" -v ns="$elapsed" 'BEGIN { printf "%.1f", n / (ns / 1e9) }')
    echo "--jobs $jobs: $count files in $(awk -v ns="$elapsed" 'BEGIN { printf "%.2f", ns / 1e9 }') s," \
         "${rate[$jobs]} files/s ($(tail -n +1 "$work/out-$jobs" | grep -E '^[0-9]+ converted' ))"
done
awk -v a="${rate[1]}" -v b="${rate[2]}" 'BEGIN { printf "speed-up with --jobs 2: %.2fx\n", b / a }'
