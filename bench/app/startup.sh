#!/usr/bin/env bash
# Cold start of the real application under Xvfb: milliseconds from launch to
# the main window on screen, and resident memory once idle. Prints the median
# of RUNS (default 5) launches. Needs a build (scripts/build build).
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
runs=${1:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/measure.sh" <<MEASURE
set -euo pipefail
export XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state" QT_QPA_PLATFORM=xcb
for i in \$(seq $runs); do
    start=\$(date +%s%N)
    "$root/build/bin/quillmorph" 2>/dev/null &
    app=\$!
    # xdotool's own --sync polls every half second: poll finer here.
    until xdotool search --onlyvisible --name '^Quillmorph\$' >/dev/null 2>&1; do sleep 0.005; done
    shown=\$(date +%s%N)
    sleep 2
    rss=\$(awk '/VmRSS/ {print \$2}' /proc/\$app/status)
    echo "\$(( (shown - start) / 1000000 )) \$rss"
    kill \$app; wait \$app 2>/dev/null || true
done
MEASURE
xvfb-run -a -s "-screen 0 1280x960x24" bash "$work/measure.sh" >"$work/figures"
m=$(( (runs + 1) / 2 ))
ms=$(cut -d' ' -f1 "$work/figures" | sort -n)
kib=$(cut -d' ' -f2 "$work/figures" | sort -n)
echo "cold start to main window shown: median $(sed -n "${m}p" <<<"$ms") ms over $runs launches" \
     "(min $(head -n1 <<<"$ms"), max $(tail -n1 <<<"$ms"))"
echo "resident memory when idle: median $(( $(sed -n "${m}p" <<<"$kib") / 1024 )) MiB"
