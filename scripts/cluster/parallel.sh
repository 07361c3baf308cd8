#!/usr/bin/env bash
# Converts one archive on several machines with GNU parallel over ssh: shard
# K of N runs on whichever host is free, each writes its own report, and the
# reports are fetched back here and merged.
#
#   scripts/cluster/parallel.sh [-S HOSTS] [-n SHARDS] [-r REPORT_DIR] -- [quillmorph-convert OPTIONS] ARCHIVE...
#
#   -S HOSTS       GNU parallel's host list: "host1,host2", "4/host3" (4 shards
#                  at a time there), ":" is this machine (default ":")
#   -n SHARDS      how many shards to cut the archive into (default: one per host)
#   -r REPORT_DIR  where report-K.jsonl land (default ./reports)
#
# Everything after "--" goes to quillmorph-convert on every host, the same
# words everywhere: the archive (and --output-dir) must be reachable there
# under the same paths. QUILLMORPH_CONVERT names another program to run.
set -euo pipefail

hosts=":"
shards=""
reports="reports"
while getopts "S:n:r:h" option; do
    case $option in
        S) hosts=$OPTARG ;;
        n) shards=$OPTARG ;;
        r) reports=$OPTARG ;;
        *) sed -n '2,17p' "$0" | sed 's/^# \{0,1\}//'; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
[ "${1:-}" = "--" ] && shift
[ $# -gt 0 ] || { echo "parallel.sh: no archive given (see -h)" >&2; exit 2; }
command -v parallel >/dev/null || { echo "parallel.sh: GNU parallel is not installed (scripts/setup installs it)" >&2; exit 2; }

if [ -z "$shards" ]; then
    IFS=, read -r -a list <<<"$hosts"
    shards=${#list[@]}
fi
convert=${QUILLMORPH_CONVERT:-quillmorph-convert}
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$reports"
cd "$reports"

# Each shard writes its report in the remote working folder; --return brings
# it back into this one (jobs on ":" write here directly), --cleanup removes
# the remote copy. One shard per host at a time: quillmorph-convert uses all
# the host's cores by itself. A shard that fails (some file did not
# convert) does not stop the others.
status=0
parallel --jobs 1 -S "$hosts" --halt never --tag --line-buffer \
    --return "report-{}.jsonl" --cleanup -q \
    "$convert" --shard "{}/$shards" --report "report-{}.jsonl" "$@" ::: $(seq 1 "$shards") || status=$?
echo "parallel: $status of $shards shards ended with a failure or refusal"

reportFiles=()
for k in $(seq 1 "$shards"); do
    if [ -f "report-$k.jsonl" ]; then
        reportFiles+=("report-$k.jsonl")
    else
        echo "parallel.sh: shard $k left no report" >&2
    fi
done
[ ${#reportFiles[@]} -gt 0 ] || exit 2
"$here/merge-reports" -o merged.jsonl "${reportFiles[@]}"
