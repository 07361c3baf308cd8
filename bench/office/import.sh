#!/usr/bin/env bash
# Per-file time of the office import as the app runs it, through LibreOffice
# (a fresh private profile per conversion) and through pandoc, on every docx,
# rtf, html and txt of the corpus (doc needs LibreOffice, so it is left out).
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus/office"
bench="$root/build/bin/bench_office"
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
[ -x "$bench" ] || { echo "build first: scripts/build build"; exit 1; }
command -v pandoc >/dev/null || { echo "needs pandoc (scripts/setup)"; exit 1; }
exec "$bench" "$corpus"/*.docx "$corpus"/*.rtf "$corpus"/*.html "$corpus"/*.txt
