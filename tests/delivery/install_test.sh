#!/usr/bin/env bash
# install_test.sh builds BUILD_DIR...     what `cmake --install` makes of these builds
# install_test.sh packages PACKAGE...     Debian packages
# Installs them into a root of their own and uses them there as a stranger would: the README's program compiled with
# pkg-config and with CMake for both ABIs, and run; the build of the library that the loader picks. Prints one line a test
# and ends with the counts.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source=$(cd "$here/../.." && pwd)
. "$source/tools/setup.sh"
need pkg-config cmake ninja-build
kind=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
export LC_ALL=C CMAKE_GENERATOR=Ninja
unset LD_LIBRARY_PATH GLIBC_TUNABLES
version=5.2
triplets=(x86_64-linux-gnu i386-linux-gnu)

passed=0 failed=0
check() {  # check NAME COMMAND...: the test passes if every line of the command does
  local status
  set +e
  (set -euo pipefail; "${@:2}") > "$work/log" 2>&1
  status=$?
  set -e
  if [ $status -eq 0 ]; then
    echo "PASS $1"
    passed=$((passed + 1))
  else
    echo "FAIL $1"
    sed 's/^/     /' "$work/log" | tail -n 40
    failed=$((failed + 1))
  fi
}

same() {  # same EXPECTED ACTUAL
  diff <(printf '%s\n' "$1") <(printf '%s\n' "$2")
}

with() {  # with NAME=VALUE COMMAND...
  export "$1"
  "${@:2}"
}

fails_with() {  # fails_with TEXT COMMAND...: the command fails, and says so
  local output
  if output=$("${@:2}" 2>&1); then
    echo "does not fail: ${*:2}"
    return 1
  fi
  grep -F -e "$1" <<< "$output" > /dev/null || { echo "$output"; return 1; }
}

machine_flag() { [ "$1" = x86_64-linux-gnu ] || echo -m32; }
libraries() { echo "$root/usr/lib/$1"; }

# ---- into the root --------------------------------------------------------------------------------------------------

install_builds() {
  local build
  for build in "$@"; do DESTDIR=$root cmake --install "$build" --prefix /usr; done
}

# A root whose packages are, by name and version, those of this machine that ours depend on, for both architectures.
# dpkg itself then holds dependencies, clashes of files and what packages of two architectures may share.
install_packages() {
  local package architecture name
  mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers}
  printf '%s\n' amd64 i386 > "$root/var/lib/dpkg/arch"
  for name in $(for package in "$@"; do names_of_dependencies "$package"; done | grep -vE '^(libtevcvpx|tevcv)' | sort -u); do
    for architecture in amd64 i386; do
      printf 'Package: %s\nStatus: install ok installed\nMaintainer: none <none@example.org>\nArchitecture: %s\n' \
        "$name" $architecture
      dpkg-query -W -f 'Multi-Arch: ${Multi-Arch}\nVersion: ${Version}\n' "$name:amd64"
      printf 'Description: on this machine\n\n'
      touch "$root/var/lib/dpkg/info/$name:$architecture.list"
    done
  done > "$root/var/lib/dpkg/status"
  in_root -i "$@"
}

in_root() {
  local root_rights=()
  [ "$(id -u)" -eq 0 ] || root_rights=(fakeroot)
  PATH=$PATH:/usr/sbin:/sbin "${root_rights[@]}" dpkg --root="$root" --log=/dev/null "$@"
}

# ---- what is there --------------------------------------------------------------------------------------------------

expected_files() {
  local triplet level
  (cd "$source" && printf 'usr/%s\n' include/tevcv.h include/tevcore.h include/tevcv/*.h)
  for triplet in "${triplets[@]}"; do
    printf "usr/lib/$triplet/%s\n" libtevcvpx.so libtevcore.so "libtevcvpx.so.$version" "libtevcore.so.$version" \
      pkgconfig/tevcvpx.pc cmake/tevcv/tevcv{Config,ConfigVersion,Targets,Targets-none}.cmake
  done
  for level in "${levels[@]}"; do
    echo "usr/lib/x86_64-linux-gnu/glibc-hwcaps/$level/libtevcvpx.so.$version"
  done
  printf 'usr/share/doc/%s\n' {"libtevcvpx$version",libtevcvpx-dev}/{copyright,changelog.gz} libtevcvpx-dev/README.md
  if [ -n "$with_program" ]; then
    printf 'usr/%s\n' bin/tevcv share/man/man1/tevcv.1.gz share/doc/tevcv-tools/{copyright,changelog.gz}
  fi
  (cd "$source" && find examples -type f ! -name CMakeLists.txt -printf 'usr/share/doc/libtevcvpx-dev/%p\n')
}

all_files_are_there_and_no_others() {
  same "$(expected_files | sort)" "$(cd "$root" && find usr ! -type d | sort)"
}

headers_are_those_of_the_source() {
  local header
  for header in tevcv.h tevcore.h tevcv; do diff -r "$source/include/$header" "$root/usr/include/$header"; done
}

needed() { readelf -d "$1" | sed -nE 's/.*\(NEEDED\).*\[(.*)\].*/\1/p'; }

# The class is read from the file, so that a library of the other ABI in this place is found.
library_is_linked_as_told() {  # TRIPLET FILE NEEDED...
  local class=ELF64 file=$2
  [ "$1" = x86_64-linux-gnu ] || class=ELF32
  readelf -h "$file" | grep -E "Class: +$class\$"
  same "$(basename "$file")" "$(readelf -d "$file" | sed -nE 's/.*\(SONAME\).*\[(.*)\].*/\1/p')"
  same "$(printf '%s\n' "${@:3}")" "$(needed "$file")"
  if readelf -d "$file" | grep -E 'RPATH|RUNPATH'; then return 1; fi
}

# Each build in its place: the plain one and that of 32 bits run on every processor.
vector_registers_are() {  # FILE REGISTERS
  same "$2" "$(objdump -d --no-show-raw-insn "$1" | grep -oE '%[xyz]mm' | sort -u | tr -d '\n')"
}

links_lead_to_the_libraries() {
  local name
  for name in libtevcvpx libtevcore; do same "$name.so.$version" "$(readlink "$(libraries "$1")/$name.so")"; done
}

# ---- programs built against it --------------------------------------------------------------------------------------

prints_what_the_readme_says() {  # COMMAND...
  same "3 1 1 3, by libtevcvpx.so.$version" "$("$@")"
}

compile() {  # compile TRIPLET PROGRAM SOURCE FLAGS...
  "${CC:-cc}" $(machine_flag "$1") -std=c99 -Wall -Wextra -Wpedantic -Werror "$3" -o "$2" "${@:4}"
}

readme_program_with_pkg_config() {  # TRIPLET [OPTION...]: options of pkg-config
  local flags
  flags=$(pkg-config "${@:2}" --cflags --libs "tevcvpx = $version")
  echo "$flags"
  compile "$1" "$work/ten-$1" "$work/ten.c" $flags
  prints_what_the_readme_says env LD_LIBRARY_PATH="$(libraries "$1")" "$work/ten-$1"
}

configure() {  # configure TRIPLET WANTED BUILD_DIR [OPTION...]
  rm -rf "$3"
  cmake -S "$here/consumer" -B "$3" -DREADME_PROGRAM="$work/ten.c" -DWANTED="$2" \
    -DCMAKE_C_FLAGS="$(machine_flag "$1")" -DCMAKE_LIBRARY_ARCHITECTURE="$1" -DCMAKE_PREFIX_PATH="$root/usr" "${@:4}"
}

readme_program_with_cmake() {
  configure "$1" $version "$work/consumer-$1"
  cmake --build "$work/consumer-$1"
  prints_what_the_readme_says env LD_LIBRARY_PATH="$(libraries "$1")" "$work/consumer-$1/ten"
}

calls_end_in() {  # calls_end_in TRIPLET DIRECTORY COMMAND...
  same "$(libraries "$1")/$2libtevcvpx.so.$version
$(libraries "$1")/libtevcore.so.$version" "$(LD_LIBRARY_PATH=$(libraries "$1") "${@:3}")"
}

cmake_refuses_other_versions() {
  local other
  for other in 5.3 6 4.9; do fails_with "version: $version" configure "$1" $other "$work/refused"; done
  configure "$1" 5 "$work/accepted"
}

cmake_refuses_the_other_abi() {
  local other=i386-linux-gnu
  [ "$1" = x86_64-linux-gnu ] || other=x86_64-linux-gnu
  fails_with "bit)" configure "$1" $version "$work/refused" \
    -DCMAKE_PREFIX_PATH= -Dtevcv_DIR="$(libraries $other)/cmake/tevcv"
}

# The command-line program, which tells the library that it uses.
program_runs() {  # TRIPLET DIRECTORY [OTHER_LIBRARIES]
  local told
  told=$(LD_LIBRARY_PATH=$(libraries "$1"):${3:-} "$root/usr/bin/tevcv" info)
  echo "$told"
  [[ $told = *"$(libraries "$1")/$2libtevcvpx.so.$version"* ]]
  if readelf -d "$root/usr/bin/tevcv" | grep -E 'RPATH|RUNPATH'; then return 1; fi
}

# ---- the loader -----------------------------------------------------------------------------------------------------

loader=/lib64/ld-linux-x86-64.so.2

# The directory of the best installed build that the loader would look for, by its own account: its list begins with the
# best, and plain libraries lie in none of them.
best_directory() {  # [LOADER_OPTION...]
  local level
  for level in $("$loader" "$@" --help | sed -nE 's/^ +(x86-64-v[0-9]+) \(supported, searched\)$/\1/p'); do
    if [[ " ${levels[*]} " = *" $level "* ]]; then
      echo "glibc-hwcaps/$level/"
      return
    fi
  done
}

loader_picks_the_best() {  # [LOADER_OPTION...]
  local best
  best=$(best_directory "$@")
  echo "expected: ${best:-the plain library}"
  calls_end_in x86_64-linux-gnu "$best" "$loader" "$@" "$work/consumer-x86_64-linux-gnu/loaded"
}

loader_picks_the_plain_one() {  # [LOADER_OPTION...]
  calls_end_in x86_64-linux-gnu "" "$loader" "$@" "$work/consumer-x86_64-linux-gnu/loaded"
}

# ---- packages -------------------------------------------------------------------------------------------------------

field() { dpkg-deb -f "$1" "$2"; }

package_is_described() {
  local architecture
  architecture=$(field "$1" Architecture)
  same "tevcv $version" "$(field "$1" Source) $(field "$1" Version)"
  case $(field "$1" Package) in
    libtevcvpx$version) same same "$(field "$1" Multi-Arch)" ;;
    libtevcvpx-dev)
      same same "$(field "$1" Multi-Arch)"
      same "libtevcvpx$version (= $version)" "$(field "$1" Depends)" ;;
    tevcv-tools)
      same foreign "$(field "$1" Multi-Arch)"
      field "$1" Depends | grep -F "libtevcvpx$version (= $version)" ;;
    *) return 1 ;;
  esac
  dpkg-deb --fsys-tarfile "$1" | tar -t > "$work/contents"
  case $architecture in
    amd64) if grep i386-linux-gnu "$work/contents"; then return 1; fi ;;
    i386) if grep -E 'x86_64-linux-gnu|glibc-hwcaps' "$work/contents"; then return 1; fi ;;
    *) return 1 ;;
  esac
}

# What the libraries of amd64 import, by the packages of this machine. Those of i386 import the same libraries; the newest
# version of the C library that either asks for is compared, as the text of the dependencies is one.
dependencies_cover_the_imports() {
  local found newest stated
  mkdir -p "$work/shlibdeps/debian"
  printf 'Source: tevcv\n\nPackage: libtevcvpx\nArchitecture: any\n' > "$work/shlibdeps/debian/control"
  found=$(cd "$work/shlibdeps" && dpkg-shlibdeps -O --ignore-missing-info -l"$(libraries x86_64-linux-gnu)" \
    $(find "$(libraries x86_64-linux-gnu)" -name '*.so.*') | sed 's/^shlibs:Depends=//' | tr ',' '\n' | sed 's/^ //')
  echo "found: $found"
  stated=$(field "$1" Depends | tr ',' '\n' | sed 's/^ //')
  same "$(sed 's/ .*//' <<< "$stated" | sort)" "$(sed 's/ .*//' <<< "$found" | grep -v "^libtevcvpx" | sort)"
  newest=$(readelf -V $(find "$root/usr/lib" -name '*.so.*') | grep -oE 'GLIBC_[0-9.]+' | sort -Vu | tail -n 1)
  same "libc6 (>= ${newest#GLIBC_})" "$(grep '^libc6 ' <<< "$stated")"
}

# The symbols file against the libraries, by the tool that made it for every other package.
symbols_are_those_of_the_library() {
  local package=$work/gensymbols/debian/libtevcvpx$version
  rm -rf "$work/gensymbols"
  mkdir -p "$package"
  dpkg-deb -x "$1" "$package"
  dpkg-deb --ctrl-tarfile "$1" | tar -xO ./symbols > "$work/gensymbols/symbols"
  printf 'Source: tevcv\n\nPackage: libtevcvpx%s\nArchitecture: any\n' $version > "$work/gensymbols/debian/control"
  (cd "$work/gensymbols" && dpkg-gensymbols -c4 -plibtevcvpx$version -P"$package" -Isymbols -v$version -O/dev/null \
    $(find "$package" -name '*.so.*' ! -path '*/glibc-hwcaps/*' -printf '-e%p '))
}

# All builds in one cache of the loader's, as ldconfig makes it: the triggered step of the installation.
ldconfig_knows_every_build() {
  printf '%s\n' "$(libraries x86_64-linux-gnu)" "$(libraries i386-linux-gnu)" > "$work/ld.so.conf"
  /sbin/ldconfig -X -f "$work/ld.so.conf" -C "$work/ld.so.cache"
  same "libtevcvpx.so.$version (libc6) => $(libraries i386-linux-gnu)/libtevcvpx.so.$version
libtevcvpx.so.$version (libc6,x86-64) => $(libraries x86_64-linux-gnu)/libtevcvpx.so.$version
$(for level in "${levels[@]}"; do
    echo "libtevcvpx.so.$version (libc6,x86-64, hwcap: \"$level\") => $(libraries x86_64-linux-gnu)/glibc-hwcaps/$level/libtevcvpx.so.$version"
  done)" "$(/sbin/ldconfig -C "$work/ld.so.cache" -p | sed 's/^\t//' | grep -F "$root" | grep libtevcvpx.so.$version | sort)"
}

# The packages of the program take each other's place. That of i386 states what it needs as that of amd64, where it is
# looked up, and runs with the 32-bit picture libraries that it was built with.
other_program_is_installed_and_runs() {  # PACKAGE
  local newest unpacked=$source/build/i386-packages
  same "$(names_of_dependencies "${1/_i386/_amd64}")" "$(names_of_dependencies "$1")"
  in_root -i "$1"
  newest=$(readelf -V "$root/usr/bin/tevcv" | grep -oE 'GLIBC_[0-9.]+' | sort -Vu | tail -n 1)
  dpkg --compare-versions "$(field "$1" Depends | grep -oP 'libc6 \(>= \K[^)]+')" ge "${newest#GLIBC_}"
  program_runs i386-linux-gnu "" "$unpacked/usr/lib/i386-linux-gnu:$unpacked/lib/i386-linux-gnu"
}

names_of_dependencies() { field "$1" Depends | tr ',' '\n' | sed -E 's/^ *([^ ]+).*/\1/' | sort; }

nothing_is_left_of_removed_packages() {
  in_root -r $(dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${Package}:${Architecture}\n' | grep tevcv)
  same "" "$(cd "$root" && find . ! -type d ! -path './var/lib/dpkg/*')"
}

# ---- the tests ------------------------------------------------------------------------------------------------------

case $kind in
  builds)
    levels=($(for build in "$@"; do sed -nE 's/^TEVCV_VARIANT:STRING=(.+)/\1/p' "$build/CMakeCache.txt"; done | sort))
    with_program=$(for build in "$@"; do [ ! -x "$build/bin/tevcv" ] || echo true; done | sort -u)
    check "builds are installed" install_builds "$@" ;;
  packages)
    need dpkg-dev fakeroot
    levels=(x86-64-v3 x86-64-v4)
    others=() together=()
    for package in "$@"; do
      if [[ $package = */tevcv-tools_*_i386.deb ]]; then others+=("$package"); else together+=("$package"); fi
    done
    with_program=$([[ " $* " != */tevcv-tools_*_amd64.deb* ]] || echo true)
    check "packages of both architectures are installed side by side" install_packages "${together[@]}"
    for package in "$@"; do check "$(basename "$package") is described" package_is_described "$package"; done
    for package in "$@"; do
      [ "$(field "$package" Package)" = libtevcvpx$version ] || continue
      check "$(basename "$package") depends on what its libraries import" dependencies_cover_the_imports "$package"
      check "$(basename "$package") lists the symbols of its libraries" symbols_are_those_of_the_library "$package"
    done
    check "ldconfig knows every build" ldconfig_knows_every_build ;;
  *)
    echo "usage: install_test.sh builds|packages WHAT..." >&2
    exit 2 ;;
esac

awk '/^```c$/ {inside = 1; next} /^```$/ && inside {exit} inside' "$source/README.md" > "$work/ten.c"
imports=("libtevcore.so.$version" libgomp.so.1 libm.so.6 libc.so.6)

check "all files are there and no others" all_files_are_there_and_no_others
check "headers are those of the source" headers_are_those_of_the_source
declare -A registers=([x86-64-v3]=%xmm%ymm [x86-64-v4]=%xmm%ymm%zmm)
for level in "${levels[@]}"; do
  library=$(libraries x86_64-linux-gnu)/glibc-hwcaps/$level/libtevcvpx.so.$version
  check "$level: library is linked as told" library_is_linked_as_told x86_64-linux-gnu "$library" "${imports[@]}"
  check "$level: library is built for such processors" vector_registers_are "$library" "${registers[$level]}"
done
for triplet in "${triplets[@]}"; do
  export PKG_CONFIG_LIBDIR=$(libraries $triplet)/pkgconfig
  check "$triplet: library is linked as told" \
    library_is_linked_as_told $triplet "$(libraries $triplet)/libtevcvpx.so.$version" "${imports[@]}"
  check "$triplet: library is built for every processor" \
    vector_registers_are "$(libraries $triplet)/libtevcvpx.so.$version" %xmm
  check "$triplet: core library is linked as told" \
    library_is_linked_as_told $triplet "$(libraries $triplet)/libtevcore.so.$version" libstdc++.so.6 libc.so.6
  check "$triplet: links lead to the libraries" links_lead_to_the_libraries $triplet
  check "$triplet: README's program by pkg-config" readme_program_with_pkg_config $triplet
  check "$triplet: README's program by pkg-config in a system root" \
    with PKG_CONFIG_SYSROOT_DIR="$root" readme_program_with_pkg_config $triplet
  check "$triplet: README's program by pkg-config with a prefix of its own" \
    readme_program_with_pkg_config $triplet --define-prefix
  check "$triplet: README's program by CMake" readme_program_with_cmake $triplet
  check "$triplet: CMake refuses other versions" cmake_refuses_other_versions $triplet
  check "$triplet: CMake refuses the other ABI" cmake_refuses_the_other_abi $triplet
done

check "i386-linux-gnu: the library and its core library are loaded" \
  calls_end_in i386-linux-gnu "" "$work/consumer-i386-linux-gnu/loaded"
check "loader picks the best build" loader_picks_the_best
check "loader picks the plain build where all others are masked" loader_picks_the_plain_one --glibc-hwcaps-mask ''
check "loader picks the best build of those that a mask leaves" loader_picks_the_best --glibc-hwcaps-mask x86-64-v3
check "loader picks the best build without AVX-512" with GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F loader_picks_the_best
check "loader picks the plain build without AVX2" \
  with GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2 loader_picks_the_plain_one

if [ -n "$with_program" ]; then
  check "command-line program runs with the best build" program_runs x86_64-linux-gnu "$(best_directory)"
fi
if [ "$kind" = packages ]; then
  for package in "${others[@]}"; do
    check "command-line program is installed for the other architecture, and runs" \
      other_program_is_installed_and_runs "$package"
  done
  check "nothing is left of removed packages" nothing_is_left_of_removed_packages
fi

echo
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
