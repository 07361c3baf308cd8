#!/usr/bin/env bash
# Wall time of wpd2odt against LibreOffice's own WordPerfect import, document by document.
#
#   bench/wpd2odt/wpd2odt-vs-soffice.sh [WPD2ODT] [CORPUS_FOLDER]
#
# WPD2ODT defaults to build/bin/Resources/Files/wpd2odt under the source root and CORPUS_FOLDER
# to ../shared/corpus/wp beside it. REPEAT (default 3) runs of each tool per document; the
# median counts. LibreOffice gets a private profile, warmed by one conversion before timing,
# and converts one document per invocation, as the application would run it.
set -euo pipefail

root=$(cd "$(dirname "$0")/../.." && pwd)
wpd2odt=${1:-$root/build/bin/Resources/Files/wpd2odt}
corpus=${2:-$root/../shared/corpus/wp}
repeat=${REPEAT:-3}

[[ -x $wpd2odt ]] || { echo "wpd2odt not found at $wpd2odt (build it, or pass its path)" >&2; exit 2; }
[[ -d $corpus ]] || { echo "no corpus folder at $corpus" >&2; exit 2; }
soffice=$(command -v soffice) || { echo "soffice not found" >&2; exit 2; }

work=$(mktemp -d "${TMPDIR:-/tmp}/wpd2odt-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home" "$work/out"
# LibreOffice wants a writable home even with a private profile.
export HOME=$work/home
profile="-env:UserInstallation=file://$work/profile"

now() { date +%s%N; }

# Median of the numbers on standard input.
median() {
    sort -n | awk '{ v[NR] = $1 }
        END { if (NR % 2) print v[(NR + 1) / 2]; else print (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# Milliseconds of one run of the command, which must succeed.
time_ms() {
    local start end
    start=$(now)
    "$@" > /dev/null 2>&1 || return 1
    end=$(now)
    echo $(((end - start) / 1000000))
}

soffice_convert() {
    # --infilter: some corpus documents carry foreign extensions (.doc, .C3P).
    "$soffice" "$profile" --headless --infilter=WordPerfect --convert-to odt --outdir "$work/out" "$1"
}

documents=()
for f in "$corpus"/*; do
    [[ -f $f ]] && "$wpd2odt" "$f" "$work/check.odt" 2> /dev/null && documents+=("$f")
done
[[ ${#documents[@]} -gt 0 ]] || { echo "wpd2odt converted no document of $corpus" >&2; exit 1; }

echo "warming up LibreOffice's profile..."
soffice_convert "${documents[0]}" > /dev/null 2>&1

row() { printf '%-28s %10s %12s %12s %8s\n' "$@"; }
row document bytes wpd2odt_ms soffice_ms ratio
ratios=()
for f in "${documents[@]}"; do
    ours=() theirs=()
    for ((i = 0; i < repeat; i++)); do
        ours+=("$(time_ms "$wpd2odt" "$f" "$work/ours.odt")")
        theirs+=("$(time_ms soffice_convert "$f" || echo failed)")
    done
    ours_ms=$(printf '%s\n' "${ours[@]}" | median)
    if printf '%s\n' "${theirs[@]}" | grep -q failed; then
        row "$(basename "$f")" "$(stat -c %s "$f")" "$ours_ms" failed -
        continue
    fi
    theirs_ms=$(printf '%s\n' "${theirs[@]}" | median)
    # A run under a millisecond counts as one, so that the ratio stays finite.
    ratio=$(awk -v a="$theirs_ms" -v b="$ours_ms" 'BEGIN { printf "%.1f", a / (b < 1 ? 1 : b) }')
    ratios+=("$ratio")
    row "$(basename "$f")" "$(stat -c %s "$f")" "$ours_ms" "$theirs_ms" "$ratio"
done

echo "documents: ${#ratios[@]}, median ratio soffice/wpd2odt: $(printf '%s\n' "${ratios[@]}" | median)"
