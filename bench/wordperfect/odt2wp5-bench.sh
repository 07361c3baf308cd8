#!/usr/bin/env bash
# odt2wp5's speed: a 500-page document (corpus content repeated) to
# WordPerfect 6 and 5.1, seconds and peak memory; then every corpus ODT against LibreOffice
# saving the same ODT as .doc, as a ratio. Usage: bench/wordperfect/odt2wp5-bench.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build}
tool=$build/bin/Resources/Files/odt2wp5
corpus=$root/../shared/corpus/office
[ -x "$tool" ] || { echo "build odt2wp5 first ($tool is missing)" >&2; exit 1; }
[ -d "$corpus" ] || { echo "../shared/corpus is absent: nothing to measure" >&2; exit 0; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The 500 pages: the body of cjk-office.odt (text, headings, a table of contents: about ten pages)
# repeated 50 times, each copy from a new page. BENCH_COUNT_PAGES=1 has LibreOffice count them.
copies=${BENCH_COPIES:-50}
python3 - "$corpus/cjk-office.odt" "$work/big.odt" "$copies" <<'PY'
import sys, zipfile
source, target, copies = sys.argv[1], sys.argv[2], int(sys.argv[3])
with zipfile.ZipFile(source) as zin, zipfile.ZipFile(target, "w") as zout:
    for item in zin.infolist():
        data = zin.read(item.filename)
        if item.filename == "content.xml":
            text = data.decode("utf-8")
            start = text.index(">", text.index("<office:text")) + 1
            end = text.index("</office:text>")
            style = ('<style:style style:name="QmPageBreak" style:family="paragraph">'
                     '<style:paragraph-properties fo:break-before="page"/></style:style>')
            head = text[:start].replace("</office:automatic-styles>", style + "</office:automatic-styles>", 1)
            copy = '<text:p text:style-name="QmPageBreak"/>' + text[start:end]
            data = (head + copy * copies + text[end:]).encode("utf-8")
        zout.writestr(item, data, compress_type=zipfile.ZIP_STORED if item.filename == "mimetype" else zipfile.ZIP_DEFLATED)
PY
if [ "${BENCH_COUNT_PAGES:-0}" = 1 ]; then
    soffice -env:UserInstallation=file://$work/profile --headless --convert-to pdf --outdir "$work" "$work/big.odt" >/dev/null 2>&1
    printf 'LibreOffice lays the document out on %s pages\n' "$(pdfinfo "$work/big.pdf" | awk '/^Pages:/ {print $2}')"
fi
printf 'big document: %s bytes of ODT, %s copies of cjk-office.odt\n' "$(stat -c %s "$work/big.odt")" "$copies"
for version in wp6 wp5; do
    /usr/bin/time -f "%e %M" -o "$work/time" "$tool" --$version "$work/big.odt" "$work/big.$version" 2>/dev/null
    read -r seconds kilobytes <"$work/time"
    printf '500 pages to %s: %6.2f s, peak %5.1f MB, %s bytes\n' "$version" "$seconds" "$(echo "$kilobytes / 1024" | bc -l)" \
        "$(stat -c %s "$work/big.$version")"
done

if ! command -v soffice >/dev/null; then
    echo "soffice is not installed: no per-file ratio" >&2
    exit 0
fi
printf '\n%-36s %10s %10s %8s\n' file odt2wp5 soffice ratio
total_ours=0
total_theirs=0
for file in "$corpus"/*.odt "$corpus"/*.fodt; do
    name=$(basename "$file")
    [ "$name" = testODTEncrypted.odt ] && continue
    start=$(date +%s.%N)
    "$tool" --wp6 "$file" "$work/one.wpd" 2>/dev/null
    ours=$(echo "$(date +%s.%N) - $start" | bc -l)
    mkdir -p "$work/doc"
    start=$(date +%s.%N)
    soffice -env:UserInstallation=file://$work/profile --headless --convert-to doc --outdir "$work/doc" "$file" >/dev/null 2>&1
    theirs=$(echo "$(date +%s.%N) - $start" | bc -l)
    total_ours=$(echo "$total_ours + $ours" | bc -l)
    total_theirs=$(echo "$total_theirs + $theirs" | bc -l)
    printf '%-36s %9.3fs %9.3fs %7.0fx\n' "$name" "$ours" "$theirs" "$(echo "$theirs / $ours" | bc -l)"
done
printf '%-36s %9.3fs %9.3fs %7.0fx\n' total "$total_ours" "$total_theirs" "$(echo "$total_theirs / $total_ours" | bc -l)"
