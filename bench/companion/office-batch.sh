#!/usr/bin/env bash
# Office documents through LibreOffice one per start (the companion today)
# against LibreOfficeBatch (the companion's batch), on the corpus's office
# documents, in one run. A few minutes: every document is converted three times.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus/office"
bench="$root/build/bin/bench_office_batch"
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
[ -x "$bench" ] || { echo "build first: scripts/build build"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR="$work"
exec "$bench" "$corpus"/*.docx "$corpus"/*.doc "$corpus"/*.rtf "$corpus"/*.html
