# Sourced by check, demo, bench and the CI script: puts on a Debian machine what is missing, asking nothing.

# need PACKAGE...: installs those that are not there. Uses sudo only where the user is not root.
need() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "Installing ${missing[*]}"
  local root=()
  [ "$(id -u)" -eq 0 ] || root=(sudo)
  # Lists that cannot be renewed now may still do: the installation decides.
  local attempt
  for attempt in 1 2 3; do
    if "${root[@]}" apt-get update -qq; then break; fi
    sleep 5
  done
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    -o Acquire::Retries=3 "${missing[@]}" > /dev/null
}

need_build_tools() {
  need ca-certificates cmake ninja-build g++ g++-multilib googletest ccache libpng-dev libjpeg-dev libcli11-dev
  need_i386_libraries
}

# unpack_i386 DIR PACKAGE...: unpacks 32-bit packages into DIR. They come by a package state of their own under DIR, so
# that the machine's stays as it is and needs no second architecture.
unpack_i386() {
  local root=$1
  shift
  mkdir -p "$root/apt/lists/partial" "$root/apt/archives/partial"
  (
    cd "$root/apt"
    state=(-o Dir::State::lists="$PWD/lists" -o Dir::State::status=/dev/null -o Dir::Cache="$PWD"
      -o APT::Architecture=i386 -o APT::Architectures::=i386 -o APT::Sandbox::User="$(id -un)" -o Debug::NoLocking=1)
    apt-get "${state[@]}" update -qq || true  # the download says whether it is enough
    apt-get "${state[@]}" download -qq "$@"
    for package in *.deb; do dpkg -x "$package" "$root"; done
  ) > "$root/apt/log" 2>&1
}

# The picture libraries of the 32-bit command-line program. Without them that program is left out.
need_i386_libraries() {
  local root=$PWD/build/i386-packages
  [ ! -e "$root/usr/lib/i386-linux-gnu/libpng16.so.16" ] || return 0
  echo "Unpacking 32-bit picture libraries"
  unpack_i386 "$root" libpng-dev libpng16-16 zlib1g-dev zlib1g libjpeg62-turbo-dev libjpeg62-turbo ||
    echo "They cannot be had here: the 32-bit command-line program is left out"
  rm -rf "$root/apt"
}

# The newest variant of the 64-bit library that this machine's processor can run, as the system's loader sees it.
newest_variant() {
  local level
  for level in v4 v3; do
    if /lib64/ld-linux-x86-64.so.2 --help | grep -q "x86-64-$level (supported"; then
      echo "x86_64-$level"
      return
    fi
  done
  echo x86_64
}

build() {  # build PRESET [TARGET...]
  echo "== building $1"
  cmake --preset "$1" > "build-$1.log" 2>&1 || { cat "build-$1.log"; return 1; }
  cmake --build --preset "$1" ${2:+--target "${@:2}"} >> "build-$1.log" 2>&1 || { grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Creating)' "build-$1.log"; return 1; }
  rm -f "build-$1.log"
}
