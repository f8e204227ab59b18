#!/usr/bin/env bash
# fuzz.sh MINUTES [i386]
# Fuzzes every public function for MINUTES with two jobs under AddressSanitizer and UndefinedBehaviorSanitizer, beginning
# with the inputs in tests/exercise/corpus.bin, and leaves there what reaches every edge that has been reached, in as few
# and short inputs as do. Inputs that crash are left in build/fuzz*/crashes.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/setup.sh
minutes=${1:?usage: tools/fuzz.sh MINUTES [i386]}
preset=fuzz${2:+-$2}
need_build_tools
need clang libclang-rt-14-dev libomp-14-dev

build "$preset"
build x86_64 exercise_replay
replay=build/x86_64/bin/exercise_replay
fuzz=build/$preset/bin/exercise_fuzz
corpus=tests/exercise/corpus.bin
work=build/$preset/inputs crashes=build/$preset/crashes
export UBSAN_OPTIONS=print_stacktrace=1

mkdir -p "$work" "$crashes"
[ ! -e "$corpus" ] || "$replay" --unpack "$corpus" "$work"
"$fuzz" -fork=2 -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1 -timeout=120 -max_len=160 \
  -max_total_time=$((60 * minutes)) -print_funcs=0 -print_final_stats=1 -artifact_prefix="$crashes/" "$work" > "build/$preset/fuzz.log" 2>&1 || true
grep -E '^#[0-9]+: cov' "build/$preset/fuzz.log" | tail -n 1

rm -rf "$work.merged"
mkdir "$work.merged"
"$fuzz" -set_cover_merge=1 -use_counters=0 -print_funcs=0 -timeout=120 "$work.merged" "$work" > "build/$preset/merge.log" 2>&1
"$replay" --pack "$work.merged" "$corpus"
found=$(find "$crashes" -type f ! -name 'slow-unit-*' | wc -l)  # slow ones are kept too, and are no fault
[ "$found" -eq 0 ] || { echo "$found inputs in $crashes crash; run one alone: $fuzz FILE"; exit 1; }
