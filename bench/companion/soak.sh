#!/usr/bin/env bash
# The companion over a large archive: the corpus (WordPerfect documents and
# graphics, office documents) linked into a tree seven folders deep until it
# holds FILES files (default 10000), converted with --jobs 2 --report.
# Prints files per second, the companion's own peak resident memory, its
# open descriptors over the run, what it left in its temporary folder and
# what processes it left running, the report's lines, and the projected
# hours for 1,000,000 files on 64 cores.
#   bench/companion/soak.sh [FILES]
# KINDS="wp wpg office" picks corpus folders, JOBS=N converts N at a time.
# COMPARE=N first converts N files of the same mix with --jobs 1 and with
# --jobs 2, alternately, best of REPEAT (default 2) each, and prints the
# speed-up (and each run's CPU seconds, to tell a busy machine from a slow
# companion).
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

read -r -a kinds <<<"${KINDS:-wp wpg office}"
sources=()
for kind in "${kinds[@]}"; do
    while IFS= read -r -d '' file; do sources+=("$file"); done < <(find "$corpus/$kind" -type f -print0 | sort -z)
done

# archive DIR COUNT: copy k lands in a/b/c/d/e/f/copy-k, seven folders deep,
# 16 copies per leaf folder; hard links where the file system allows.
archive() {
    local made=0 copy=0 leaf
    while [ $made -lt "$2" ]; do
        leaf="$1/$(printf 'box-%02d/shelf-%d/folder %d/year-%d/month-%d/day-%d/copy-%d' \
            $((copy / 64)) $((copy / 32 % 2)) $((copy / 16 % 2)) $((copy / 8 % 2)) $((copy / 4 % 2)) $((copy / 2 % 2)) $copy)"
        mkdir -p "$leaf"
        for file in "${sources[@]}"; do
            [ $made -lt "$2" ] || break
            cp -l "$file" "$leaf/" 2>/dev/null || cp "$file" "$leaf/"
            made=$((made + 1))
        done
        copy=$((copy + 1))
    done
}

# timed JOBS DIR: converts DIR (outputs into DIR.out); prints "NANOSECONDS CPU_SECONDS".
timed() {
    local start end cpu
    start=$(date +%s%N)
    # The corpus holds files that fail: the exit status is not the bench's.
    /usr/bin/time -o "$work/cpu" -f '%U %S' "$convert" --jobs "$1" --output-dir "$2.out" "$2" >/dev/null 2>&1 </dev/null ||
        true
    cpu=$(tail -1 "$work/cpu" | awk '{ printf "%.1f", $1 + $2 }')
    end=$(date +%s%N)
    rm -rf "$2.out"
    echo "$((end - start)) $cpu"
}

if [ "${COMPARE:-0}" -gt 0 ]; then
    archive "$work/compare" "$COMPARE"
    declare -A best=() cpu=()
    for _ in $(seq 1 "${REPEAT:-2}"); do
        for j in 1 2; do
            read -r ns seconds < <(timed "$j" "$work/compare")
            echo "compare: --jobs $j, $COMPARE files in $(awk -v ns="$ns" 'BEGIN { printf "%.1f", ns / 1e9 }') s" \
                 "($seconds s of CPU, the companion and its converters)"
            if [ -z "${best[$j]:-}" ] || [ "$ns" -lt "${best[$j]}" ]; then best[$j]=$ns; cpu[$j]=$seconds; fi
        done
    done
    awk -v n="$COMPARE" -v a="${best[1]}" -v b="${best[2]}" 'BEGIN {
        printf "compare: best --jobs 1 %.1f files/s, --jobs 2 %.1f files/s: %.2fx (goal >= 1.7x)\n",
            n / (a / 1e9), n / (b / 1e9), a / b }'
    rm -rf "$work/compare"
fi

archive "$work/archive" "$want"
made=$(find "$work/archive" -type f | wc -l)
echo "archive: $made files (${#sources[@]} corpus files of ${kinds[*]}, copied over and over), 7 folders deep"

start=$(date +%s%N)
"$convert" --jobs "$jobs" --report "$work/report.jsonl" "$work/archive" >"$work/out" 2>&1 </dev/null &
pid=$!
peakRSS=0 firstFDs="" maxFDs=0 lastFDs=0 samples=0 mainTicks=0 allTicks=0
while kill -0 $pid 2>/dev/null; do
    # CPU ticks of the main thread (which starts and completes every file) and of the whole companion.
    if ticks=$(awk '{ print $14 + $15 }' /proc/$pid/task/$pid/stat 2>/dev/null) && [ -n "$ticks" ]; then mainTicks=$ticks; fi
    if ticks=$(awk '{ print $14 + $15 }' /proc/$pid/stat 2>/dev/null) && [ -n "$ticks" ]; then allTicks=$ticks; fi
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
# Anything still running that was started for this run names its folder.
running=$(pgrep -c -f -- "$work" || true)
rate=$(awk -v n="$made" -v ns="$elapsed" 'BEGIN { printf "%.1f", n / (ns / 1e9) }')
echo "run: exit status $status, $(awk -v ns="$elapsed" 'BEGIN { printf "%.0f", ns / 1e9 }') s, $rate files/s with --jobs $jobs"
grep -E '^[0-9]+ converted' "$work/out" | sed 's/^/summary: /'
echo "companion resident memory: peak $((peakRSS / 1024)) MB (VmHWM; goal < 100 MB)"
hz=$(getconf CLK_TCK)
echo "companion CPU (itself, not its converters): $((allTicks / hz)) s, of which its main thread $((mainTicks / hz)) s"
echo "companion descriptors: $firstFDs at the first sample, at most $maxFDs, $lastFDs at the last ($samples samples)"
log="$XDG_STATE_HOME/Quillmorph/Quillmorph.log"
if starts=$(grep -c 'run soffice: -env' "$log" 2>/dev/null); then
    echo "LibreOffice: $starts starts for $(grep -c 'open: classified kind=office' "$log") office documents" \
         "(the comparison runs' included)"
fi
echo "left behind: $left entries in its temporary folder, $running processes naming the run's folder"
python3 - "$work/report.jsonl" "$made" <<'PY'
import json, sys, collections
lines = [l for l in open(sys.argv[1], "rb") if l.strip()]
rows = [json.loads(l) for l in lines]
statuses = collections.Counter(r["status"] for r in rows)
inputs = len({r["input"] for r in rows})
print(f"report: {len(lines)} lines, {inputs} distinct inputs, for {sys.argv[2]} files, all JSON; "
      + ", ".join(f"{n} {s}" for s, n in sorted(statuses.items())))
PY
awk -v rate="$rate" -v jobs="$jobs" 'BEGIN {
    perCore = rate / jobs
    printf "projection: 1,000,000 files on 64 cores at %.1f files/s per core: %.1f hours (same mix, linear in cores)\n",
        perCore, 1e6 / (perCore * 64) / 3600 }'
