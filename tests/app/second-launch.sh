#!/usr/bin/env bash
# A second launch hands its files to the running Quillmorph as one open
# event and exits 0; the first converts them. Runs the real programs offscreen.
set -euo pipefail
bin=$1
samples=$2
work=$(mktemp -d)
first=""
cleanup() {
    local status=$?
    # The first instance may still be writing its log or a conversion: let it end before the
    # folder goes, and never let the tidying decide the outcome.
    if [ -n "$first" ]; then
        kill "$first" 2>/dev/null || true
        wait "$first" 2>/dev/null || true
    fi
    rm -rf "$work" || true
    exit "$status"
}
trap cleanup EXIT
# Whatever step fails, the first instance's log says what it saw.
trap 'echo "failed at line $LINENO; the first instance logged:"; cat "$log" 2>/dev/null' ERR
# A runtime folder of its own: a Quillmorph the user has open is never met.
mkdir -p "$work/run"
chmod 700 "$work/run"
export QT_QPA_PLATFORM=offscreen XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state" XDG_RUNTIME_DIR="$work/run"
log="$work/state/Quillmorph/Quillmorph.log"

"$bin/quillmorph" &
first=$!
# A sanitizer build on a busy machine may take a while to start.
for _ in $(seq 600); do
    grep -qs "launch: didFinishLaunching" "$log" && break
    sleep 0.1
done
grep -q "launch: didFinishLaunching (bundle=$(readlink -f "$bin/quillmorph"))" "$log"

if [ -f "$samples/min51.wp5" ]; then
    cp "$samples/min51.wp5" "$work/Letter one.wp5"
else
    printf '\377WPC' >"$work/Letter one.wp5" # converts or fails: the hand-off is what counts
fi
cp "$work/Letter one.wp5" "$work/Second.wp5"
XDG_STATE_HOME="$work/second-state" timeout 60 "$bin/quillmorph" "$work/Letter one.wp5" "$work/Second.wp5"
echo "second launch exited 0"

for _ in $(seq 100); do
    grep -qs "converted → $work/Second.odt\|convert: Second.wp5" "$log" && break
    sleep 0.1
done
grep -q 'openEvent: \["Letter one.wp5", "Second.wp5"\]' "$log" || { echo "no single open event:"; cat "$log"; exit 1; }
[ "$(grep -c 'openEvent: ' "$log")" -eq 1 ] || { echo "more than one open event"; exit 1; }
[ ! -e "$work/second-state" ] || ! grep -qs openEvent "$work/second-state/Quillmorph/Quillmorph.log" \
    || { echo "the second launch converted by itself"; exit 1; }
kill -0 "$first" || { echo "the first instance died"; exit 1; }
echo "hand-off ok"
