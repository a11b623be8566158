#!/usr/bin/env bash
# Uses the library as others do, each way from an empty folder.
#
#     packageTest.sh find-package PREFIX              by CMake, where it is installed
#     packageTest.sh readme PREFIX                    as README says, with what it says pasted
#     packageTest.sh pkg-config PREFIX                by pkg-config, where it is installed
#     packageTest.sh add-subdirectory SOURCE          by CMake, as a part of another project
#     packageTest.sh command PREFIX                   the command, its manual page and its completion
#
# PREFIX may be anything that was installed, and moved since. With --system behind it, programs find its libraries as
# they would find those of the system.
set -euo pipefail
unset CMAKE_PREFIX_PATH PKG_CONFIG_PATH LD_LIBRARY_PATH CXXFLAGS LDFLAGS
export CMAKE_GENERATOR=Ninja
source=$(readlink -f -- "$(dirname -- "${BASH_SOURCE[0]}")/../..")
consumer=$source/tests/package/consumer
way=$1
place=$(realpath -e -- "$2")
work=$(mktemp -d -t foundation-package.XXXXXXXX)
if [[ ${3-} == --system ]]; then
  LD_LIBRARY_PATH=$(dirname -- "$(find "$place" -name 'libfoundation-storage.so.*' -print -quit)")
  export LD_LIBRARY_PATH
fi
trap 'rm -rf -- "$work"' EXIT
cd -- "$work"

fail() { printf '%s\n' "$*" >&2; exit 1; }
expect() { # expect WHAT COMMAND...
  local expected=$1 found
  shift
  found=$("$@") || fail "$* ended with exit code $?"
  [[ $found == "$expected" ]] || fail "$* printed \"$found\" instead of \"$expected\""
}
# One place in PREFIX, below lib or lib/ARCHITECTURE.
found() { find "$place" -path "*/$1" -print -quit | grep .; }
configure() { cmake -S "$consumer" -B build -DCMAKE_BUILD_TYPE=Debug "$@"; }
run_stores() { # run_stores PROGRAM
  printf 'some\nbytes' >source
  expect ErrorCode::ResourceNotFound "$1" "$PWD"
  cmp source copy
}

case $way in
  find-package)
    configure -DCMAKE_PREFIX_PATH="$place" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror"
    cmake --build build
    expect 'Dear reader' build/memory
    run_stores build/stores
    build/kit --gtest_brief=1
    ! ldd build/stores | grep 'libfoundation' | grep -vF "$place" || fail 'these libraries are not the installed ones'
    # Who lacks GoogleTest does without the kit, and who asks for what is not there is told so.
    configure -DCMAKE_PREFIX_PATH="$place" -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON
    cmake --build build --target stores
    printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(wrong LANGUAGES CXX)' \
      'find_package(FoundationStorage 0.1 REQUIRED COMPONENTS Local Cloud)' >CMakeLists.txt
    ! cmake -B wrong -DCMAKE_PREFIX_PATH="$place" 2>error || fail 'a component was found that there is not'
    grep -q 'no component Cloud' error || fail "$(<error)"
    sed -i 's/0.1 REQUIRED .*/9.0 REQUIRED)/' CMakeLists.txt
    ! cmake -B other -DCMAKE_PREFIX_PATH="$place" 2>error || fail 'a version was found that there is not'
    grep -q 'compatible with requested version "9.0"' error || fail "$(<error)"
    ;;
  readme)
    for file in program.cpp:cpp CMakeLists.txt:cmake; do
      awk -v start="^\`\`\`${file#*:}$" '$0 ~ start {inside = 1; next} inside && /^```/ {exit} inside' \
        "$source/README.md" >"${file%:*}"
    done
    (($(wc -l <program.cpp) <= 15)) || fail 'the program in README has more than 15 lines'
    CMAKE_PREFIX_PATH=$place cmake -B build
    cmake --build build
    build/program | sort >listed
    find /etc -mindepth 1 -maxdepth 1 -printf 'file:///etc/%f\n' | sort | diff - listed
    ;;
  pkg-config)
    folder=$(dirname -- "$(found pkgconfig/foundation-storage.pc)")
    export PKG_CONFIG_PATH=$folder
    for name in "$folder"/*.pc; do pkg-config --print-errors --exists "$(basename "$name" .pc)"; done
    for program in memory:memory stores:registry; do
      mapfile -t flags < <(pkg-config --cflags --libs "foundation-storage-${program#*:}" | xargs -n 1)
      "${CXX:-c++}" -std=c++20 "$consumer/${program%:*}.cpp" -o "${program%:*}" "${flags[@]}" \
        -Wl,-rpath,"$folder/.."
    done
    expect 'Dear reader' ./memory
    run_stores ./stores
    ;;
  add-subdirectory)
    configure -DFOUNDATION_SOURCE="$place"
    cmake --build build --target memory
    expect 'Dear reader' build/memory
    # Nothing of ours gets into what the project installs, unless it asks for it.
    cmake --install build --prefix "$work/prefix"
    [[ ! -d prefix || -z $(find prefix -type f) ]] || fail 'something was installed'
    ;;
  command)
    printf 'some bytes' >file
    expect 'some bytes' "$(found bin/fstore)" cat file
    gzip -cdf "$(found man/man1/fstore.1*)" | grep -q '^\.TH' || fail 'there is no manual page'
    bash -n "$(found bash-completion/completions/fstore)"
    ;;
  *) fail "there is no way \"$way\"" ;;
esac
