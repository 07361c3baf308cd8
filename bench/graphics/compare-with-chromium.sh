#!/usr/bin/env bash
# Our PNG of every corpus graphic against headless Chromium drawing the same
# page (the SVG inline at W×H pixels on white), and render times against
# Chromium and rsvg-convert. Installs Debian's chromium when it is missing.
# Not part of the tests: it prints a table.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus/wpg"
bench="$root/build/bin/bench_graphics"
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
[ -x "$bench" ] || { echo "build first: scripts/build build"; exit 1; }
if ! command -v chromium >/dev/null; then
    sudo=""; [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get install -y -qq --no-install-recommends chromium >/dev/null
fi
command -v rsvg-convert >/dev/null || { echo "rsvg-convert is missing (scripts/setup installs librsvg2-bin)"; exit 1; }

# KEEP=DIR keeps the pages and pictures there for a look.
if [ -n "${KEEP:-}" ]; then
    work=$KEEP; mkdir -p "$work"
else
    work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
fi
"$bench" render "$work" "$corpus"/*.wpg >"$work/ours.txt"

chrome() { # page width height png
    chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --force-device-scale-factor=1 \
        --disable-background-networking --disable-component-update --disable-sync --no-first-run \
        --user-data-dir="$work/profile" --window-size="$2,$3" --screenshot="$4" "file://$1" >/dev/null 2>&1
}
now() { date +%s%N; }

printf '%-40s %11s %9s %9s %10s %9s %9s %s\n' graphic "W×H" "mean|d|" "±16 %" "ours ms" "chrome×" "rsvg×" note
while read -r name w h ms failed; do
    if [ "$w" = "-" ]; then
        printf '%-40s %s\n' "$name" "no SVG (no WordPerfect prefix: wpg2svg writes nothing)"
        continue
    fi
    note=""
    grep -q 'data:image/wmf' "$work/$name.svg" && note="embeds a Windows metafile"
    start=$(now); chrome "$work/$name.html" "$w" "$h" "$work/$name.chrome.png"; chrome_ms=$(( ($(now) - start) / 1000000 ))
    start=$(now); rsvg-convert -w "$w" -h "$h" -b white "$work/$name.svg" -o "$work/$name.rsvg.png"; rsvg_ms=$(( ($(now) - start) / 1000000 ))
    read -r mean share < <("$bench" compare "$work/$name.png" "$work/$name.chrome.png" || echo "- -")
    printf '%-40s %11s %9s %9s %10s %9s %9s %s\n' "$name" "${w}×${h}" "$mean" "$share" "$ms" \
        "$(awk -v a="$chrome_ms" -v b="$ms" 'BEGIN { printf "%.1f", a / b }')" \
        "$(awk -v a="$rsvg_ms" -v b="$ms" 'BEGIN { printf "%.1f", a / b }')" "$note"
done <"$work/ours.txt"
echo "mean|d|: mean absolute difference per channel (of 255); ±16 %: pixels whose channels all lie within ±16;"
echo "chrome× and rsvg×: their wall time (a whole process each) over our render time."
