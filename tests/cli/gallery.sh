#!/usr/bin/env bash
# gallery.sh PROGRAM SOURCE_DIR WORK: makes the gallery in WORK of pictures that the program draws, and holds the page
# against its promises: every subsystem has its section, every picture named is there and is one, nothing is fetched from
# elsewhere, and a browser shows every picture. Prints one line a test.
set -uo pipefail
program=$(realpath "$1") source=$(realpath "$2") work=$3
rm -rf "$work"
mkdir -p "$work"
cd "$work" || exit 1
failed=0
check() {  # check NAME COMMAND...
  local log
  if log=$("${@:2}" 2>&1); then
    echo "PASS $1"
  else
    echo "FAIL $1"
    sed 's/^/     /' <<< "$log"
    failed=$((failed + 1))
  fi
}

pictures() { grep -oE '<img src="[^"]*"' page/index.html | sed -E 's/.*src="([^"]*)"/\1/' | sort -u; }

makes_the_page() {
  "$program" gallery -o page --docs docs
}
names_every_subsystem() {
  local header missing=0
  for header in "$source"/include/tevcv/*.h; do
    header=$(basename "$header" .h)
    case $header in types | memory | primitives) continue ;; esac
    grep -q "<h2 id=\"$header\">" page/index.html || { echo "no section: $header"; missing=1; }
    [ -s "docs/$header.png" ] || { echo "no picture for the pages: $header"; missing=1; }
  done
  [ $missing -eq 0 ]
}
pictures_are_pictures() {
  [ "$(pictures | wc -l)" -ge 20 ] || { echo "too few pictures"; return 1; }
  (cd page && pictures_here=$(cd .. && pictures) && "$program" info $pictures_here > /dev/null)
  "$program" info docs/*.png > /dev/null
}
every_card_has_its_calls() {
  local cards lines
  cards=$(grep -c '<article ' page/index.html) lines=$(grep -c '^<pre>tevcv ' page/index.html)
  echo "$cards cards, $lines with a shell line, $(grep -c 'ms in the library' page/index.html) with a time"
  [ "$cards" -eq "$lines" ] && [ "$cards" -eq "$(grep -c 'ms in the library' page/index.html)" ] &&
    [ "$cards" -eq "$(grep -c '^<pre>\(/\*\|TevStatus\)' page/index.html)" ]
}
fetches_nothing() {
  ! grep -nE '(https?:)?//|<script|<link|@import|url\(' page/index.html | grep -E 'src=|href=|<script|<link|@import|url\('
}
fails_with_the_line() {
  local log
  log=$("$program" gallery -o other --picture "$source/tests/cli/data/dot.png" 2>&1)
  [ $? -eq 1 ] && grep -q 'this line failed: tevcv .*photos/own.png' <<< "$log" && [ ! -e other/index.html ]
}
takes_no_other_file() {
  local log
  log=$("$program" gallery -o none --picture "$source/tests/cli/data/text.png" 2>&1)
  [ $? -eq 2 ] && grep -q 'text.png: neither a PNG nor a JPEG picture' <<< "$log" && [ ! -e none ]
}
shows_your_own_picture() {
  "$program" gallery -o own --picture "$source/tests/cli/data/portrait.jpg" && grep -q 'photos/own.jpg' own/index.html &&
    ! grep -q 'photos/camera' own/index.html
}

# A page beside it that loads the gallery and tells how many of its pictures have come.
browser=""
for name in chromium chromium-browser google-chrome; do [ -n "$browser" ] || browser=$(command -v $name || true); done
a_browser_shows_every_picture() {
  cat > count.html <<'PAGE'
<!doctype html><title>waiting</title><iframe id="page" src="page/index.html" width="1200" height="900"></iframe><p id="told"></p>
<script>
document.getElementById('page').onload = event => {
  const images = [...event.target.contentDocument.images];
  const come = images.filter(image => image.complete && image.naturalWidth > 0);
  document.getElementById('told').textContent = come.length + ' of ' + images.length + ' pictures';
};
</script>
PAGE
  local profile told count
  profile=$(mktemp -d)
  told=$(timeout 200 "$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-dev-shm-usage \
    --disable-background-networking --disable-component-update --disable-sync --user-data-dir="$profile" \
    --allow-file-access-from-files --virtual-time-budget=60000 --dump-dom "file://$PWD/count.html" 2> browser.log |
    grep -oE '[0-9]+ of [0-9]+ pictures')
  rm -rf "$profile"
  count=$(grep -o '<img ' page/index.html | wc -l)
  echo "the browser tells: $told; the page names $count"
  [ "$told" = "$count of $count pictures" ] || { tail -n 5 browser.log; return 1; }
}

check "the gallery makes its page" makes_the_page
check "every subsystem has a section, and a picture for the pages" names_every_subsystem
check "every picture is there and is a picture" pictures_are_pictures
check "every card has a shell line, C code and a time" every_card_has_its_calls
check "the page fetches nothing from elsewhere" fetches_nothing
check "a line that fails ends the gallery with status 1, and is told" fails_with_the_line
check "a file that is no picture is refused before any work" takes_no_other_file
check "your own picture is in every line" shows_your_own_picture
if [ -n "$browser" ]; then
  check "a browser shows every picture" a_browser_shows_every_picture
else
  echo "SKIP a browser shows every picture: Chromium is not installed"
fi
[ $failed -eq 0 ]
