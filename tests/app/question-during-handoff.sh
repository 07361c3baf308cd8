#!/usr/bin/env bash
# The running Quillmorph shows a clash question when a second launch hands it two more files:
# it must survive, take the new event up only after the question is answered, and convert every
# file once. Real programs, a real X server (Xvfb), answers typed with xdotool.
set -euo pipefail
bin=$1
samples=$2
corpus=$3
work=$(mktemp -d)
app=""
cleanup() {
    local status=$?
    if [ -n "$app" ]; then
        kill "$app" 2>/dev/null || true
        wait "$app" 2>/dev/null || true
    fi
    rm -rf "$work" || true
    exit "$status"
}
trap cleanup EXIT
trap 'echo "failed at line $LINENO; the first instance logged:"; cat "$log" 2>/dev/null' ERR

[ -f "$samples/min6.wpd" ] || { echo "min6.wpd not in $samples: nothing to convert"; exit 0; }
mkdir -p "$work/run" "$work/docs"
chmod 700 "$work/run"
export XDG_RUNTIME_DIR="$work/run" XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state"
log="$work/state/Quillmorph/Quillmorph.log"
cp "$samples/min6.wpd" "$work/docs/A.wpd"
cp "$samples/min6.wpd" "$work/docs/B.wpd"
printf 'taken' >"$work/docs/A.odt"
printf 'taken' >"$work/docs/B.odt"
second=("$work/docs/B.wpd")
expected=("A (1).odt" "B (1).odt")
if [ -f "$corpus/wpg/WPG.wpg" ]; then
    cp "$corpus/wpg/WPG.wpg" "$work/docs/C.wpg"
    printf 'taken' >"$work/docs/C.png"
    second+=("$work/docs/C.wpg")
    expected+=("C (1).png")
else
    echo "no corpus graphic: the second launch brings one document only"
fi

cat >"$work/session.sh" <<SESSION
set -euo pipefail
export QT_QPA_PLATFORM=xcb
"$bin/quillmorph" "$work/docs/A.wpd" &
app=\$!
echo \$app >"$work/app.pid"
# The clash question for A.wpd is open once A's classification is logged.
for _ in \$(seq 600); do grep -qs "open: classified" "$log" && break; sleep 0.1; done
sleep 1
timeout 60 "$bin/quillmorph" ${second[*]@Q}
echo "second launch exited 0"
sleep 1
grep -q 'openEvent: \["B.wpd"' "$log" && { echo "the second event was taken up during the question"; exit 1; }
# Answer every question with its default button (Keep Both) until all outputs are there.
for _ in \$(seq 60); do
    done=1
    for name in ${expected[*]@Q}; do [ -e "$work/docs/\$name" ] || done=0; done
    [ \$done -eq 1 ] && break
    # Every window but the main one (made first) is a question.
    for w in \$(xdotool search --onlyvisible --pid \$app 2>/dev/null | sort -n | tail -n +2); do
        xdotool windowfocus --sync "\$w" 2>/dev/null || true
        xdotool key --clearmodifiers Return || true
    done
    sleep 1
done
kill -0 \$app || { echo "the first instance died"; exit 1; }
kill \$app; wait \$app || true
SESSION
xvfb-run -a -s "-screen 0 1024x768x24" bash "$work/session.sh"

for name in "${expected[@]}"; do
    [ -s "$work/docs/$name" ] || { echo "missing output $name"; ls "$work/docs"; cat "$log"; exit 1; }
done
[ "$(ls "$work/docs" | grep -c ' (2)')" -eq 0 ] || { echo "a file converted twice"; ls "$work/docs"; exit 1; }
first=$(grep -n 'convert: A.wpd' "$log" | head -n 1 | cut -d: -f1)
event=$(grep -n 'openEvent: \["B.wpd"' "$log" | head -n 1 | cut -d: -f1)
[ -n "$first" ] && [ -n "$event" ] && [ "$event" -gt "$first" ] \
    || { echo "the second open event did not wait for the first file:"; cat "$log"; exit 1; }
[ "$(grep -c 'openEvent: ' "$log")" -eq 2 ] || { echo "expected two open events"; cat "$log"; exit 1; }
echo "question during hand-off ok"
