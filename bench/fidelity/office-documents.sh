#!/usr/bin/env bash
# The fidelity table for the office documents of the corpus (Word, RTF, HTML), imported to ODT by
# LibreOffice as the officeToWP job imports them, then written as WordPerfect and read back.
# Not part of the tests: it prints the table.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus/office"
bench="$root/build/bin/bench_fidelity"
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
[ -x "$bench" ] || { echo "build first: scripts/build build"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sources=()
for file in "$corpus"/*; do
    case "${file,,}" in
        *.doc|*.docx|*.rtf|*.html|*.htm) sources+=("$file") ;;
    esac
done
# One suite start for all of them. a.doc and a.docx both become a.odt: the later one is measured.
soffice -env:UserInstallation="file://$work/profile" --headless --convert-to odt --outdir "$work/odt" \
    "${sources[@]}" >/dev/null 2>&1
"$bench" "$work"/odt/*.odt
