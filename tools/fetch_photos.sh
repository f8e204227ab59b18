#!/usr/bin/env bash
# fetch_photos.sh DIR: puts the sample photographs of Debian's package python3-skimage into DIR. The package is unpacked,
# not installed.
set -euo pipefail
mkdir -p "$1"
target=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
cd "$work"
apt-get download -qq python3-skimage 2> /dev/null
for package in ./*.deb; do dpkg -x "$package" unpacked; done
for name in astronaut.png camera.png coins.png page.png lfw_subset.npy; do
  found=$(find unpacked -name "$name" -print -quit)
  [ -z "$found" ] || cp "$found" "$target/"
done
[ -f "$target/astronaut.png" ] || { echo "fetch_photos.sh: the package holds no astronaut.png" >&2; exit 1; }
