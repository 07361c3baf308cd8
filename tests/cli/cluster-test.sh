#!/usr/bin/env bash
# The cluster recipe: merge-reports over handmade reports, then
# parallel.sh with two local slots over a stand-in converter that takes
# --shard and --report as quillmorph-convert does.
#   cluster-test.sh SOURCE_DIR
set -euo pipefail
source_dir=$1
cluster="$source_dir/scripts/cluster"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
check() { # check DESCRIPTION EXPECTED ACTUAL
    if [ "$2" != "$3" ]; then
        echo "FAILED: $1"; echo "  expected: $2"; echo "  actual:   $3"
        failures=$((failures + 1))
    fi
}

# --- merge-reports --------------------------------------------------------
rec() { # rec INPUT STATUS REASON
    local reason=null
    [ -n "${3:-}" ] && reason="\"$3\""
    printf '{"input":"%s","size":1,"sha256":null,"kind":"wpDocument","family":"WordPerfect 5","job":null,"output":null,"outputSha256":null,"status":"%s","reason":%s,"losses":[],"milliseconds":3}\n' "$1" "$2" "$reason"
}
{
    rec /a/one.wpd converted
    rec /a/two.wpd failed "I could not read two.wpd."
    rec '/a/caf\udce9.wpd' failed "bad bytes kept"
    rec /a/three.wpd "converted with losses"
} >"$work/r1.jsonl"
{
    rec /a/one.wpd skipped "up to date"
    rec /a/two.wpd converted
    rec /a/four.wpd skipped "unknown type"
    printf '      '
} >"$work/r2.jsonl"
status=0
out=$("$cluster/merge-reports" -o "$work/merged.jsonl" "$work/r1.jsonl" "$work/r2.jsonl") || status=$?
check "merge-reports exit status with a failure" 1 "$status"
expected=$(printf '%s\n' "5 files in 2 reports" "  converted: 2" "  converted with losses: 1" "  failed: 1" \
    "  skipped: 1" "failed:" "  /a/caf$(printf '\351').wpd: bad bytes kept")
check "merge-reports totals and failures" "$expected" "$out"
check "merged report has one line per file" 5 "$(wc -l <"$work/merged.jsonl")"
check "the later conversion wins, a later skip does not" "converted" \
    "$(python3 -c 'import json,sys; print({json.loads(l)["input"]: json.loads(l)["status"] for l in open(sys.argv[1])}["/a/one.wpd"])' "$work/merged.jsonl")"

printf '{"input":"/a/x.wpd","status":"converted"}\n{"input":"/a/cut' >"$work/bad.jsonl"
status=0
"$cluster/merge-reports" "$work/bad.jsonl" >/dev/null 2>"$work/err" || status=$?
check "a line that is not a record makes status 2" 2 "$status"
check "and is named with its place" "merge-reports: $work/bad.jsonl:2: not JSON" "$(cut -d'(' -f1 "$work/err" | sed 's/ $//')"

# --- parallel.sh with two local slots -------------------------------------
if ! command -v parallel >/dev/null; then
    echo "skipped parallel.sh: GNU parallel is not installed (scripts/setup installs it)"
    exit $((failures > 0))
fi
cat >"$work/fake-convert" <<'PY'
#!/usr/bin/env python3
# Takes the files of its shard (first 8 bytes of SHA-256 of the path relative
# to the argument, mod N, plus 1) and reports each; names with "bad" fail.
import hashlib, json, os, sys
any_failed = False
args = sys.argv[1:]
shard = args[args.index("--shard") + 1]
report = args[args.index("--report") + 1]
k, n = (int(x) for x in shard.split("/"))
root = args[-1]
with open(report, "a") as out:
    for folder, _, files in os.walk(root):
        for name in files:
            key = os.path.relpath(os.path.join(folder, name), root)
            if int.from_bytes(hashlib.sha256(key.encode()).digest()[:8], "big") % n + 1 != k:
                continue
            failed = "bad" in name
            any_failed = any_failed or failed
            out.write(json.dumps({"input": os.path.join(folder, name), "size": 1, "sha256": None, "kind": "wpDocument",
                                  "family": "WordPerfect 5", "job": None, "output": None, "outputSha256": None,
                                  "status": "failed" if failed else "converted",
                                  "reason": "shard %s could not" % shard if failed else None,
                                  "losses": [], "milliseconds": 1}) + "\n")
sys.exit(1 if any_failed else 0)
PY
chmod +x "$work/fake-convert"
mkdir -p "$work/archive/x/y" "$work/archive/z"
for i in $(seq 1 20); do echo "$i" >"$work/archive/x/y/doc $i.wpd"; echo "$i" >"$work/archive/z/$i.wp"; done
echo bad >"$work/archive/z/bad.wpd"
status=0
out=$(cd "$work" && QUILLMORPH_CONVERT="$work/fake-convert" "$cluster/parallel.sh" -S 2/: -n 2 -r "$work/reports" -- \
    "$work/archive" 2>&1) || status=$?
check "parallel.sh status follows the merged reports" 1 "$status"
check "two shard reports" "report-1.jsonl report-2.jsonl" "$(cd "$work/reports" && ls report-*.jsonl | tr '\n' ' ' | sed 's/ $//')"
check "every file exactly once over the shards" "41 41" \
    "$(cat "$work/reports"/report-*.jsonl | wc -l) $(cat "$work/reports"/report-*.jsonl | python3 -c 'import json,sys; print(len({json.loads(l)["input"] for l in sys.stdin}))')"
check "the merged summary" "41 files in 2 reports" "$(echo "$out" | grep 'files in')"
check "the failure is listed" "1" "$(echo "$out" | grep -c "  $work/archive/z/bad.wpd: shard [12]/2 could not")"
[ $failures -eq 0 ] && echo "all cluster checks passed"
exit $((failures > 0))
