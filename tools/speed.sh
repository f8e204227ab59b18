#!/usr/bin/env bash
# speed.sh [RUNS]: runs all benchmarks RUNS times (2 unless told) on every variant that this processor can run and writes
# the table of docs/speed.md anew, with the best figure of each entry. A run takes some minutes; the machine must be
# quiet.
set -euo pipefail
cd "$(dirname "$0")/.."
variants=(i386 x86_64)
for level in v3 v4; do
  if /lib64/ld-linux-x86-64.so.2 --help | grep -q "x86-64-$level (supported"; then variants+=("x86_64-$level"); fi
done
mkdir -p build/speed
rm -f build/speed/*
for run in $(seq "${1:-2}"); do
  for variant in "${variants[@]}"; do
    ./bench . "$variant" | tee "build/speed/$variant.$run"
  done
done

# A line of the benchmarks' table: the entry's name, then milliseconds, nanoseconds a pixel, copies, target, a verdict.
for variant in "${variants[@]}"; do
  sed -nE "s/^(.*[^ ]) +[0-9.]+ +[0-9.]+ +([0-9.]+) +([0-9.]+|-)( .*)?$/$variant|\1|\2|\3/p" build/speed/"$variant".*
done | awk -F'|' -v variants="${variants[*]}" '
  {
    if (!($2 in target)) { order[++count] = $2; target[$2] = $4 }
    if (!(($1, $2) in best) || $3 < best[$1, $2]) best[$1, $2] = $3
  }
  END {
    columns = split(variants, names, " ")
    printf "| entry | target |"
    for (c = 1; c <= columns; ++c) printf " %s |", names[c]
    printf "\n|---|---:|"
    for (c = 1; c <= columns; ++c) printf "---:|"
    printf "\n"
    for (i = 1; i <= count; ++i) {
      printf "| %s | %s |", order[i], (target[order[i]] == "-" ? "" : target[order[i]] + 0)
      for (c = 1; c <= columns; ++c) {
        value = best[names[c], order[i]]
        missed = names[c] ~ /v[34]$/ && target[order[i]] != "-" && value > 1.25 * target[order[i]]
        printf " %s |", missed ? "**" value "**" : value
      }
      printf "\n"
    }
  }' > build/speed/table
sed -i -e '/^<!-- table -->$/,/^<!-- end of table -->$/{/^<!-- /!d}' -e '/^<!-- table -->$/r build/speed/table' docs/speed.md
