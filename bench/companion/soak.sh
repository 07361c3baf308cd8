#!/usr/bin/env bash
# The companion over a large archive: the corpus's WordPerfect documents and
# graphics copied into a deep tree until it holds FILES files (default
# 10000), converted with --jobs 2 (and --report when the companion has it).
# Prints files per second, the companion's peak resident memory, its open
# descriptors over the run, what it left in its temporary folder, and the
# projected hours for 1,000,000 files on 64 cores.
#   bench/companion/soak.sh [FILES]
# OFFICE=1 adds the office documents, KINDS="wp" takes only those corpus
# folders, JOBS=N converts N at a time.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus"
convert="$root/build/bin/quillmorph-convert"
want=${1:-10000}
jobs=${JOBS:-2}
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
[ -x "$convert" ] || { echo "build first: scripts/build build"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state" TMPDIR="$work/tmp"
mkdir -p "$TMPDIR"

read -r -a kinds <<<"${KINDS:-wp wpg}"
[ "${OFFICE:-0}" = 1 ] && kinds+=(office)
sources=()
for kind in "${kinds[@]}"; do
    while IFS= read -r -d '' file; do sources+=("$file"); done < <(find "$corpus/$kind" -type f -print0 | sort -z)
done
# Copy k lands in a/b/c/d/e/f/copy-k, seven folders deep, 16 copies per leaf folder.
made=0
copy=0
while [ $made -lt "$want" ]; do
    leaf="$work/archive/$(printf 'box-%02d/shelf-%d/folder %d/year-%d/month-%d/day-%d/copy-%d' \
        $((copy / 64)) $((copy / 32 % 2)) $((copy / 16 % 2)) $((copy / 8 % 2)) $((copy / 4 % 2)) $((copy / 2 % 2)) $copy)"
    mkdir -p "$leaf"
    for file in "${sources[@]}"; do
        [ $made -lt "$want" ] || break
        cp "$file" "$leaf/"
        made=$((made + 1))
    done
    copy=$((copy + 1))
done
echo "archive: $made files (${#sources[@]} corpus files × $copy copies, ${kinds[*]}), 7 folders deep"

options=(--jobs "$jobs")
if "$convert" --help | grep -q -- '--report'; then
    options+=(--report "$work/report.jsonl")
else
    echo "note: this quillmorph-convert has no --report yet; running without it"
fi
start=$(date +%s%N)
"$convert" "${options[@]}" "$work/archive" >"$work/out" 2>&1 </dev/null &
pid=$!
peakRSS=0 firstFDs="" maxFDs=0 lastFDs=0 samples=0
while kill -0 $pid 2>/dev/null; do
    if hwm=$(awk '/^VmHWM/ { print $2 }' /proc/$pid/status 2>/dev/null) && [ -n "$hwm" ]; then
        [ "$hwm" -gt "$peakRSS" ] && peakRSS=$hwm
        fds=$(ls /proc/$pid/fd 2>/dev/null | wc -l)
        if [ "$fds" -gt 0 ]; then
            [ -z "$firstFDs" ] && firstFDs=$fds
            [ "$fds" -gt "$maxFDs" ] && maxFDs=$fds
            lastFDs=$fds
            samples=$((samples + 1))
        fi
    fi
    sleep 0.5
done
status=0
wait $pid || status=$?
elapsed=$(( $(date +%s%N) - start ))

left=$(find "$TMPDIR" -mindepth 1 -maxdepth 1 | wc -l)
rate=$(awk -v n="$made" -v ns="$elapsed" 'BEGIN { printf "%.1f", n / (ns / 1e9) }')
echo "run: exit status $status, $(awk -v ns="$elapsed" 'BEGIN { printf "%.0f", ns / 1e9 }') s, $rate files/s with --jobs $jobs"
grep -E '^[0-9]+ converted' "$work/out" | sed 's/^/summary: /'
echo "companion resident memory: peak $((peakRSS / 1024)) MB (VmHWM; goal < 100 MB)"
echo "companion descriptors: $firstFDs at the first sample, at most $maxFDs, $lastFDs at the last ($samples samples)"
echo "left in its temporary folder: $left entries"
if [ -f "$work/report.jsonl" ]; then
    python3 - "$work/report.jsonl" "$made" <<'PY'
import json, sys, collections
lines = [l for l in open(sys.argv[1], "rb") if l.strip()]
statuses = collections.Counter(json.loads(l)["status"] for l in lines)
print(f"report: {len(lines)} lines for {sys.argv[2]} files, all JSON; " + ", ".join(f"{n} {s}" for s, n in sorted(statuses.items())))
PY
fi
awk -v rate="$rate" -v jobs="$jobs" 'BEGIN {
    perCore = rate / jobs
    printf "projection: 1,000,000 files on 64 cores at %.1f files/s per core: %.1f hours (same mix, linear in cores)\n",
        perCore, 1e6 / (perCore * 64) / 3600 }'
