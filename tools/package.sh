#!/usr/bin/env bash
# Makes the Debian packages for amd64 and i386 in out/packages/, holds them against Debian's rules, installs them into a
# root of their own and tests them there. Ends with one line: N passed, M failed.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/setup.sh
need_build_tools
need dpkg-dev lintian fakeroot file

for preset in x86_64 i386 x86_64-v3 x86_64-v4; do build "$preset" delivery; done

packages=$PWD/out/packages
rm -rf "$packages"

# pack PRESET [VARIANT...]: the packages of a build, with the libraries of its variants.
pack() {
  local preset projects=""
  for preset in "$@"; do projects+="$PWD/build/$preset;tevcv;ALL;/;"; done
  cpack --config "build/$1/CPackConfig.cmake" -B "$packages" -D CPACK_INSTALL_CMAKE_PROJECTS="${projects%;}" \
    > "build-packages.log" 2>&1 || { cat build-packages.log; return 1; }
  rm -r build-packages.log "$packages/_CPack_Packages"
}
echo "== packing"
pack x86_64 x86_64-v3 x86_64-v4
pack i386
(cd "$packages" && ls -s --block-size=KiB ./*.deb)

echo "== lintian"
lintian --allow-root --no-cfg --fail-on error "$packages"/*.deb

echo "== testing packages"
tests/delivery/install_test.sh packages "$packages"/*.deb
