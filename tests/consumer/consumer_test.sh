#!/usr/bin/env bash
# Builds the programs of three guides outside the tree against the library, the way that the first argument names.
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
declare -A programs=([consumer]=layout [reader]=read [viewer]=view)  # and whose output theirs is
expect() { diff <("$build/snippets/$1") <("$2") || fail "$2 prints something else"; }

# consumer <compiler> <cmake argument>... configures, builds and runs the programs in each of $configurations.
configurations=Release
consumer() {
  local compiler=$1 folder=$work/consumer-${1##*/} configuration
  shift
  quietly cmake -S "$here" -B "$folder" -G "Ninja Multi-Config" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" "$@"
  for configuration in $configurations; do
    quietly cmake --build "$folder" --config "$configuration" --target "${!programs[@]}"
    for program in "${!programs[@]}"; do
      expect "${programs[$program]}" "$folder/$configuration/$program"
    done
  done
}

# What is installed below $1 is what callers may see, and knows neither where it was built nor where it was.
inspect() {
  local found
  diff <(cd "$1/include/om-1" && find . -type f | sort) \
    <(sed -n 's,^public ,./,p' "$build"/files/om*.txt | sort) || fail "other headers than the public ones"
  # Debug information aside, which only libraries have. A path starts where no other one goes on: the sources may be
  # in a folder as short as /om.
  local folders
  folders=$(printf '%s|' "$source" "$build" "$work/first" | sed 's/[.+]/\\&/g')
  found=$(grep -rlIE "(^|[^[:alnum:]_./-]|-[IL])(${folders%|})([^[:alnum:]_.-]|\$)" "$1" || true)
  [ -z "$found" ] || fail "these files name a folder of the build: $found"
}

case $way in
installed)
  quietly cmake --install "$build" --prefix "$work/first"
  mv "$work/first" "$work/moved"
  inspect "$work/moved"
  configurations="Debug Release"  # one library serves both
  for compiler in "$@"; do
    consumer "$compiler" -DCMAKE_PREFIX_PATH="$work/moved"
  done
  config=$(dirname "$(find "$work/moved" -name om.pc)")
  read -ra flags <<<"$(PKG_CONFIG_PATH=$config pkg-config --cflags --libs om)"
  quietly "$1" -std=c++20 "$source/docs/snippets/read.cpp" -o "$work/plain" "${flags[@]}" "-Wl,-rpath,$(dirname "$config")"
  expect read "$work/plain"
  # A program of the other hardening mode does not link, and the symbols that it misses say why.
  case ${flags[*]} in
  *OM_HARDENING*) other=-UOM_HARDENING missing=off ;;
  *) other=-DOM_HARDENING=1 missing=on ;;
  esac
  ! "$1" -std=c++20 "$source/docs/snippets/read.cpp" -o "$work/mixed" "${flags[@]}" $other -Wl,--gc-sections \
    2>"$work/log" || fail "a program of the other hardening mode links"
  for library in libom libomplatform; do
    grep -q "${library}_with_OM_HARDENING_$missing" "$work/log" || { cat "$work/log" >&2; fail "no word of $library"; }
  done
  ;;
subdirectory)
  consumer "$1" -DOM_SOURCE_DIR="$source" -DBUILD_SHARED_LIBS=OFF -DOM_HARDENING=ON -DCMAKE_CXX_FLAGS= \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DOM_BUILD_TESTS=ON -DOM_BUILD_EXAMPLES=OFF
  folder=$work/consumer-${1##*/}
  quietly cmake --build "$folder" --config Release --target misuse
  ! "$folder/Release/misuse" 2>"$work/log" && grep -q 'OmVector::operator\[\]' "$work/log" ||
    fail "hardening asks for the configuration"
  # The fuzzers need no sample program; the one that is about the sample is left out.
  quietly cmake --build "$folder" --config Release --target om_fuzz
  diff <("$folder/om/fuzz/Release/om_fuzz" --list) <(cd "$source/fuzz/corpus" && printf '%s\n' [!.]* | grep -vx csv) ||
    fail "other fuzzers"
  # Warnings, debug symbols and the generation of code are the affair of the build around the library.
  generated=$(grep '"command".*/Release/.*/\(backend\|platform\|display\)/' "$folder/compile_commands.json" |
    grep -oE ' -[Wgfm][^ ]*' | sort -u | tr -d '\n')
  [ "$generated" = " -fvisibility-inlines-hidden -fvisibility=hidden" ] ||
    fail "flags in somebody else's build:$generated"
  ;;
platform)
  unset 'programs[viewer]'  # what front ends ask needs more than the least platform has
  consumer "$1" -DOM_SOURCE_DIR="$source" -DBUILD_SHARED_LIBS=ON -DOTHER_PLATFORM=ON
  # Nothing of the replaced platform is left in the library.
  libom=$(find "$work" -name libom.so)
  [ -f "$libom" ] && ! grep -aq 'platform/memory/MemoryRegion.cpp' "$libom" ||
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
