#!/usr/bin/env bash
# memcheck.sh
# All exercises under valgrind's memcheck, on the 32-bit build: finds results that depend on memory that nobody wrote,
# and memory that is reached or freed wrongly. Digests are not compared: valgrind keeps 64 bits of an 80-bit float.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/setup.sh
need_build_tools
need valgrind patchelf

build i386 exercise_digest

# Memcheck finds functions of the loader by its symbols. So the program runs over a C library of its own, unpacked with
# the debugging package that belongs to it.
root=$PWD/build/i386-memcheck
if [ ! -e "$root/lib/ld-linux.so.2" ]; then
  echo "Unpacking a 32-bit C library with its symbols"
  unpack_i386 "$root" libc6 libc6-dbg libstdc++6 libgcc-s1 libgomp1
  mkdir "$root/lib/i386-linux-gnu/.debug"
  find "$root/usr/lib/debug" -name '*.debug' -exec mv -t "$root/lib/i386-linux-gnu/.debug" {} +
  rm -rf "$root/apt"
fi
program=$root/exercise_digest
patchelf --set-interpreter "$root/lib/ld-linux.so.2" --force-rpath \
  --set-rpath "$PWD/build/i386/lib:$root/lib/i386-linux-gnu:$root/usr/lib/i386-linux-gnu" \
  --output "$program" build/i386/bin/exercise_digest

status=0
valgrind --quiet --error-exitcode=3 --track-origins=yes --num-callers=20 \
  "$program" --heap --brief > build/memcheck.log 2>&1 || status=$?
if [ "$status" -ne 0 ]; then
  grep '^==' build/memcheck.log | head -n 200
  echo "memcheck: exit status $status (build/memcheck.log)"
  exit 1
fi
echo "memcheck: no findings in $(grep -vc '^==' build/memcheck.log) exercises"
