#!/usr/bin/env bash
# Builds and installs with each of CMake's usual generators, in a folder that is empty: what a build
# expects to find there shows only once. Ninja, which ./dev uses all the time, builds the library.
set -euo pipefail
source=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# configure GENERATOR: not optimised, which is quicker
configure() {
  cmake -G "$1" -S "$source" -B build -DVELMAR_BUILD_TESTS=OFF -DCMAKE_CXX_FLAGS_RELEASE=-O0 \
    >/dev/null
  grep -qx 'CMAKE_BUILD_TYPE:.*=Release' build/CMakeCache.txt || { echo "not Release"; exit 1; }
}
# build [TARGET]
build() {
  cmake --build build --parallel "$(nproc)" --target "${1:-all}" >log 2>&1 || {
    tail -n 20 log
    exit 1
  }
}

configure Ninja
build velmar_video
rm -r build

configure "Unix Makefiles"
build
cmake --install build --prefix installed >/dev/null
installed/bin/velmar-video --version
[ -s installed/share/man/man1/velmar-video.1 ] || { echo "no manual"; exit 1; }
