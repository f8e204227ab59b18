#!/usr/bin/env bash
# digest.sh PROGRAM EXPORTS_DIR [OPTION...]
# Runs the digest and holds the names that succeeded against the public names of the export list. The digest is left in
# the file that TEVCV_DIGEST names.
set -euo pipefail
program=$1 exports=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C
"$program" --names "$work/names" "$@" > "${TEVCV_DIGEST:-$work/digest}"

sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$exports"/*.txt |
  grep -E '^(tevs|tevi|tevib|tevcv)[A-Z]|^i_(malloc|calloc|realloc|free)$' | grep -v '_omp$' | sort > "$work/public"
sort -u "$work/names" > "$work/succeeded"
if ! diff "$work/public" "$work/succeeded" > "$work/diff"; then
  echo "public names (<) and names that succeeded in an exercise (>) differ:"
  cat "$work/diff"
  exit 1
fi
echo "$(wc -l < "$work/public") public names succeeded"
