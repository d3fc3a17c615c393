#!/bin/sh
# zemlo-host apply --capo 3 on a large generated score against
# xmllint --format on the same file: the best wall time of RUNS runs and the
# largest peak resident memory of each, and their ratios. The goal is a
# ratio of 2 at most in both.
# Usage: bench/apply_vs_xmllint.sh [BUILD_DIR] [RUNS] [PARTS] [MEASURES]
# BUILD_DIR (build-release by default) must hold hostsim/zemlo-host and
# bench/timemem; the score has PARTS x MEASURES x 4 chords (8 x 1000).
set -eu
build=${1:-build-release}
runs=${2:-5}
parts=${3:-8}
measures=${4:-1000}
here=$(cd "$(dirname "$0")" && pwd)
host=$build/hostsim/zemlo-host
timemem=$build/bench/timemem
for f in "$host" "$timemem"; do
  [ -x "$f" ] || { echo "$0: no $f (build it first)" >&2; exit 1; }
done
command -v xmllint >/dev/null || { echo "$0: no xmllint (libxml2-utils)" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
score=$work/large.musicxml
awk -v P="$parts" -v M="$measures" -f "$here/large_score.awk" >"$score"

# "SECONDS KB": the best wall time and the largest peak of RUNS runs.
measure() {
  i=0
  while [ "$i" -lt "$runs" ]; do
    if ! "$timemem" "$@" >>"$work/runs" 2>"$work/errors"; then
      echo "$0: failed: $*" >&2
      cat "$work/errors" >&2
      exit 1
    fi
    i=$((i + 1))
  done
  awk -F'[= ]' '{ if (NR == 1 || $2 < s) s = $2; if ($4 > kb) kb = $4 }
    END { print s, kb }' "$work/runs"
  rm -f "$work/runs"
}

lint=$(measure xmllint --format "$score" -o "$work/x.musicxml")
apply=$(measure "$host" apply "$score" --capo 3 -o "$work/y.musicxml")
echo "$lint $apply" | awk -v parts="$parts" -v measures="$measures" -v runs="$runs" \
  -v bytes="$(wc -c <"$score")" '{
  printf "Score: %d parts x %d measures x 4 chords = %d chords, %d bytes; best of %d runs\n",
    parts, measures, parts * measures * 4, bytes, runs
  printf "%-20s %10s %12s\n", "", "wall (s)", "peak (MB)"
  printf "%-20s %10.3f %12.1f\n", "xmllint --format", $1, $2 / 1024
  printf "%-20s %10.3f %12.1f\n", "zemlo-host apply", $3, $4 / 1024
  printf "%-20s %10.2f %12.2f   (goal: 2 at most)\n", "ratio", $3 / $1, $4 / $2
}'
