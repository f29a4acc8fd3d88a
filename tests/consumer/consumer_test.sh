#!/usr/bin/env bash
# Builds the programs of two guides outside the tree against the library, the way that the first argument names.
# They print what they print in the build that the library comes from.
#
# usage: consumer_test.sh installed|subdirectory|platform|packages BUILD [CXX...]
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
source=$(cd "$here/../.." && pwd)
way=$1 build=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "$way: $*" >&2; exit 1; }
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "$*"; }; }
programs=(consumer reader viewer)
expect() { diff <("$build/snippets/$1") <("$2") || fail "$2 prints something else"; }

# consumer <compiler> <cmake argument>... configures, builds and runs the programs.
consumer() {
  local compiler=$1 folder=$work/consumer-${1##*/}
  shift
  quietly cmake -S "$here" -B "$folder" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" "$@"
  quietly cmake --build "$folder" --target "${programs[@]}"
  expect layout "$folder/consumer"
  expect read "$folder/reader"
  [ ! -e "$folder/viewer" ] || expect view "$folder/viewer"
}

# What is installed below $1 is what callers may see, and knows neither where it was built nor where it was.
inspect() {
  local found
  found=$(cd "$1/include/om-1" && find . -name '*.h' | wc -l)
  [ "$found" -eq "$(cd "$source" && find backend platform display -name '*.h' -not -name '[!C]*Data.h' | wc -l)" ] ||
    fail "$found headers"
  # Debug information aside, which only libraries have.
  found=$(grep -rlI -e "$source" -e "$build" -e "$work/first" "$1" || true)
  [ -z "$found" ] || fail "these files name a folder of the build: $found"
}

case $way in
installed)
  quietly cmake --install "$build" --prefix "$work/first"
  mv "$work/first" "$work/moved"
  inspect "$work/moved"
  for compiler in "$@"; do
    consumer "$compiler" -DCMAKE_PREFIX_PATH="$work/moved"
  done
  config=$(dirname "$(find "$work/moved" -name om.pc)")
  read -ra flags <<<"$(PKG_CONFIG_PATH=$config pkg-config --cflags --libs om)"
  quietly "$1" -std=c++20 "$source/docs/snippets/read.cpp" -o "$work/plain" "${flags[@]}" "-Wl,-rpath,$(dirname "$config")"
  expect read "$work/plain"
  ;;
subdirectory)
  consumer "$1" -DOM_SOURCE_DIR="$source" -DBUILD_SHARED_LIBS=OFF
  ;;
platform)
  programs=(consumer reader)  # what front ends ask needs more than the least platform has
  consumer "$1" -DOM_SOURCE_DIR="$source" -DBUILD_SHARED_LIBS=ON -DOTHER_PLATFORM=ON
  # Nothing of the replaced platform is left in the library.
  ! grep -aq 'platform/memory/MemoryRegion.cpp' "$work"/consumer-*/om/backend/tables/libom.so ||
    fail "the library holds the platform that was replaced"
  ;;
packages)
  quietly cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/packages"
  for package in libom1 libom-dev libom-doc libomdisplay1 libomdisplay-dev; do
    quietly dpkg -x "$work/packages/$package"_*.deb "$work/root"
  done
  dpkg-deb --field "$work"/packages/libom1_*.deb Depends | grep -q libstdc++6 || fail "libom1 lacks its libraries"
  dpkg-deb --contents "$work"/packages/libom1_*.deb | grep -q 'libom\.so$' && fail "libom.so is for developers"
  dpkg-deb --field "$work"/packages/libomdisplay1_*.deb Depends | grep -q 'libom1 (= ' ||
    fail "libomdisplay1 may meet another libom1"
  inspect "$work/root/usr"
  consumer "$1" -DCMAKE_PREFIX_PATH="$work/root/usr"
  ;;
*) fail "no such way" ;;
esac
