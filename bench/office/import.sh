#!/usr/bin/env bash
# Per-file time of the office import as the app runs it: LibreOffice with a
# fresh private profile per conversion (its seven arguments), against pandoc
# (or our text-to-HTML step plus pandoc for plain text), on every docx, rtf,
# html and txt of the corpus. Prints each file and the medians.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
corpus="$root/../shared/corpus/office"
[ -d "$corpus" ] || { echo "skipped: ../shared/corpus is not beside the checkout"; exit 0; }
soffice=$(command -v soffice || true)
[ -n "$soffice" ] && command -v pandoc >/dev/null || { echo "needs LibreOffice and pandoc (scripts/setup)"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ms() { echo $(( ($(date +%s%N) - $1) / 1000000 )); }
reader() {
    case "${1,,}" in
        *.docx) echo docx ;; *.rtf) echo rtf ;; *.htm|*.html) echo html ;; *) echo text ;;
    esac
}
printf '%-45s %12s %10s %7s\n' file "LibreOffice" "pandoc" ratio
: >"$work/lo"; : >"$work/pd"
for file in "$corpus"/*.docx "$corpus"/*.rtf "$corpus"/*.html "$corpus"/*.txt; do
    name=$(basename "$file"); stem=${name%.*}
    folder="$work/lo-$RANDOM$RANDOM"; mkdir -p "$folder"
    start=$(date +%s%N)
    "$soffice" "-env:UserInstallation=file://$folder/loprofile" --headless --convert-to odt --outdir "$folder" "$file" \
        >/dev/null 2>&1 || true
    lo=$(ms "$start")
    [ -s "$folder/$stem.odt" ] || lo="fail"
    folder="$work/pd-$RANDOM$RANDOM"; mkdir -p "$folder"
    start=$(date +%s%N)
    r=$(reader "$name"); input=$file
    if [ "$r" = text ]; then
        # the same one-paragraph-per-line HTML the app hands pandoc
        python3 -c 'import html,sys; t=open(sys.argv[1],"rb").read()
try: s=t.decode("utf-8")
except UnicodeDecodeError: s=t.decode("latin-1")
print("<html><body>"+"".join("<p>"+html.escape(l.rstrip("\r"))+"</p>\n" for l in s.split("\n"))+"</body></html>")' \
            "$file" >"$folder/plain-text.html"
        r=html; input=$folder/plain-text.html
    fi
    pandoc --from "$r" --to odt --output "$folder/$stem.odt" "$input" >/dev/null 2>&1 || true
    pd=$(ms "$start")
    [ -s "$folder/$stem.odt" ] || pd="fail"
    ratio="-"
    if [ "$lo" != fail ] && [ "$pd" != fail ]; then
        ratio=$(awk -v a="$lo" -v b="$pd" 'BEGIN { printf "%.1f", a / (b > 0 ? b : 1) }')
        echo "$lo" >>"$work/lo"; echo "$pd" >>"$work/pd"
    fi
    printf '%-45s %10s ms %7s ms %7s\n' "$name" "$lo" "$pd" "$ratio"
done
median() { sort -n "$1" | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
echo "median: LibreOffice $(median "$work/lo") ms, pandoc $(median "$work/pd") ms per file" \
     "(LibreOffice starts afresh with a new profile each time, as the app runs it)"
