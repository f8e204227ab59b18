#!/usr/bin/env bash
# run.sh [--accept] PROGRAM SOURCE_DIR LIST [GROUP...]
# Runs the command lines of cases/<group>.txt (all groups by default), each in a fresh folder that holds the pictures of
# data/, and compares exit status and results with what stands there. Each successful line is run with 1 and with 3
# threads: the files must be the same. The hashes of all files go to LIST, so that builds can be compared byte for byte.
#
# A case is one line with its results below it, set in by two blanks:
#
#   edges blocks.png -o edges.png
#     edges.png: 64 x 48, grey, 8 bits, checksum 0123456789abcdef
#     table.csv: 12 lines, checksum 0123456789
#   edges missing.png
#     fails: missing.png: no such file
#
# A failing line ends with status 2, writes one line to standard error that holds the text, and leaves no file behind.
# What a successful line prints is held like a file named "output". --accept rewrites the results of successful lines
# as they come; read the difference before you commit it.
set -uo pipefail
accept=no
if [ "$1" = --accept ]; then accept=yes; shift; fi
program=$(realpath "$1") source=$(realpath "$2") list=$(realpath -m "$3")
shift 3
groups=("$@")
[ ${#groups[@]} -gt 0 ] || for file in "$source"/tests/cli/cases/*.txt; do groups+=("$(basename "$file" .txt)"); done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C
passed=0 failed=0
mkdir -p "$(dirname "$list")"
: > "$list"

wrong() {  # wrong WHAT: of the case at hand
  echo "$group: $line"
  printf '    %s\n' "$@"
  bad=yes
}

fresh() {  # fresh FOLDER
  rm -rf "$work/$1"
  mkdir "$work/$1"
  cp "$source"/tests/cli/data/* "$source"/examples/data/face.png "$work/$1/"
}

run() {  # run FOLDER ARGUMENTS: the exit status in $status; what was printed in FOLDER.out and FOLDER.err
  (cd "$work/$1" && eval "\"$program\" $2" > "../$1.out" 2> "../$1.err" < /dev/null)
  status=$?
}

made() {  # made FOLDER: the files that the command made, sorted
  (cd "$work/$1" && find . -type f -printf '%P\n' | sort | comm -23 - "$work/given")
}

describe() {  # describe FOLDER FILE
  case $2 in
    *.png | *.jpg) (cd "$work/$1" && "$program" info "$2") ;;
    *) echo "$2: $(wc -l < "$work/$1/$2") lines, checksum $(sha256sum < "$work/$1/$2" | cut -c 1-16)" ;;
  esac
}

finish() {  # compares what the last case gave with `expected`
  [ -n "$line" ] || return 0
  local bad=no results="" file
  fresh one
  run one "$line"
  if [[ $expected == "fails: "* ]]; then
    results=$expected
    [ "$status" -eq 2 ] || wrong "ended with status $status instead of 2"
    [ "$(wc -l < "$work/one.err")" -eq 1 ] || wrong "wrote $(wc -l < "$work/one.err") lines to standard error" "$(cat "$work/one.err")"
    grep -qF -- "${expected#fails: }" "$work/one.err" || wrong "said: $(cat "$work/one.err")"
    [ -z "$(made one)" ] || wrong "left $(made one)"
  else
    [ "$status" -eq 0 ] || wrong "ended with status $status" "$(cat "$work/one.err")"
    [ ! -s "$work/one.err" ] || wrong "wrote to standard error: $(cat "$work/one.err")"
    [ ! -s "$work/one.out" ] || cp "$work/one.out" "$work/one/output"
    while read -r file; do
      [ -z "$file" ] || results+=${results:+$'\n'}$(describe one "$file")
    done < <(made one)
    if [[ $line != *--threads* && $status -eq 0 ]] && "$program" "${line%% *}" --help | grep -q -- --threads; then
      mv "$work/one" "$work/any"
      for threads in 1 3; do
        fresh one
        run one "$line --threads $threads"
        [ ! -s "$work/one.out" ] || cp "$work/one.out" "$work/one/output"
        diff -rq "$work/any" "$work/one" > /dev/null || wrong "other results with $threads threads"
      done
      rm -rf "$work/any"
    fi
    (cd "$work/one" && made one | xargs -r -d '\n' sha256sum | sed "s|^|$group: $line: |") >> "$list"
    if [ "$accept" = no ] && [ "$results" != "$expected" ]; then
      wrong "gave" "$results" "instead of" "$expected"
    fi
    [ -n "$results" ] || wrong "made nothing"
  fi
  if [ "$bad" = no ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
  if [ "$accept" = yes ]; then
    printf '%s\n' "$line" >> "$work/accepted"
    sed 's/^/  /' <<< "$results" >> "$work/accepted"
  fi
}

fresh one
(cd "$work/one" && find . -type f -printf '%P\n' | sort) > "$work/given"
for group in "${groups[@]}"; do
  line="" expected=""
  : > "$work/accepted"
  while IFS= read -r text; do
    if [[ $text == "  "* ]]; then
      expected+=${expected:+$'\n'}${text#  }
      continue
    fi
    finish
    line="" expected=""
    if [ -z "$text" ] || [[ $text == "#"* ]]; then
      [ "$accept" = no ] || printf '%s\n' "$text" >> "$work/accepted"
    else
      line=$text
    fi
  done < "$source/tests/cli/cases/$group.txt"
  finish
  line=""
  [ "$accept" = no ] || cp "$work/accepted" "$source/tests/cli/cases/$group.txt"
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
