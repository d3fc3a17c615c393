#!/bin/sh
# The plug-in's share of a capo chord run, in instructions counted by
# callgrind: everything executed inside Brevado but inside the simulated
# host's entry points (fximpl_*, which hold the store and all it calls).
# Usage: bench/brevado_share.sh [brevado_bench] [benchmark name]
set -eu
bench=${1:-build-release/bench/brevado_bench}
name=${2:-BM_BrevadoFirstRun}
out=$(mktemp)
trap 'rm -f "$out"' EXIT
valgrind --tool=callgrind --callgrind-out-file="$out" "$bench" \
  --benchmark_filter="^$name" --benchmark_min_time=0.001 >/dev/null 2>&1
callgrind_annotate --inclusive=yes --threshold=100 "$out" | awk '
  { n = $1; gsub(",", "", n) }
  /\?\?\?:Brevado\(/ { run = n }
  /\?\?\?:fximpl_/ { host += n }
  END {
    if (run == 0) { print "no Brevado in the profile"; exit 1 }
    printf "Brevado %d Ir, host entry points %d Ir, plug-in %d Ir: plug-in share %.1f%%\n",
      run, host, run - host, 100 * (run - host) / run
  }'
