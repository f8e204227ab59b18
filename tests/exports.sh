#!/usr/bin/env bash
# exports.sh LIBRARY SOURCE_DIR C_COMPILER
# Holds the library's dynamic symbols against the export list and the headers, in both directions, and its imports
# against the eight names of the core library.
set -euo pipefail
library=$1 source=$2 compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

same() {  # same WHAT LEFT RIGHT: two sorted files hold the same names
  if ! diff "$2" "$3" > "$work/diff"; then
    echo "$1 differ (< $(basename "$2"), > $(basename "$3")):"
    head -n 40 "$work/diff"
    exit 1
  fi
}

sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$source"/tevcv/exports/*.txt | sort > "$work/listed"
uniq -d "$work/listed" > "$work/twice"
[ ! -s "$work/twice" ] || { echo "listed twice:"; cat "$work/twice"; exit 1; }
nm -D --defined-only "$library" | awk '{print $NF}' | sort > "$work/exported"
same "the export list and the library's symbols" "$work/listed" "$work/exported"

# Public names: what the umbrella header declares.
"$compiler" -E -P -I "$source/include" "$source/include/tevcv.h" > "$work/header.i"
{ grep -oE '\b(tevs|tevib?|tevcv)[A-Z][A-Za-z0-9_]*[[:space:]]*\(' "$work/header.i" | tr -d '( '
  printf '%s\n' i_malloc i_calloc i_realloc i_free; } | sort -u > "$work/declared"
grep -E '^(tevs|tevi|tevib|tevcv)[A-Z]|^i_(malloc|calloc|realloc|free)$' "$work/listed" |
  grep -v '_omp$' > "$work/public"  # a parallel twin is a worker, whatever its name begins with
same "the header and the public names" "$work/declared" "$work/public"

# Workers and tables: what the internal header declares besides. Every declaration that is visible to the linker carries
# the same attribute.
grep -vxFf "$work/public" "$work/listed" > "$work/workers"
echo '#include "tevcv_internal.h"' | "$compiler" -x c++ -std=c++20 -E -P -I "$source/include" - | tr '\n' ' ' |
  sed -e 's/__attribute__((visibility("default")))/\n@/g' |
  sed -nE 's/^@ [^(;=]*[ *&]([A-Za-z_][A-Za-z0-9_]*) *(\(|\[|;).*/\1/p' | sort -u > "$work/internal"
grep -vxFf "$work/public" "$work/internal" > "$work/declaredworkers"
same "the internal headers and the workers" "$work/declaredworkers" "$work/workers"

# Imports from the core library: these eight names and no others.
nm -D --undefined-only "$library" | awk '{print $NF}' | grep -E '^tev|^threads_' | sort > "$work/imported"
printf '%s\n' tevConstantOfINF_64f tevConstantOfINF_NEG_64f tevConstantOfNAN_32f tevConstantOfNAN_64f \
  tevGetMaxCacheSizeB tevGetNumCoresOnDie tevGetNumThreads threads_omp_of_n_tev > "$work/core"
same "the imports and the core library's names" "$work/imported" "$work/core"

soname=$(objdump -p "$library" | awk '$1 == "SONAME" {print $2}')
[ "$soname" = libtevcvpx.so.5.2 ] || { echo "SONAME is $soname"; exit 1; }
echo "$(wc -l < "$work/public") public names and $(wc -l < "$work/workers") workers agree"
