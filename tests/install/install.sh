#!/usr/bin/env bash
# Installs the build and uses it as a stranger would: by find_package, by pkg-config, by the tool.
# Usage: install.sh BUILD-FOLDER COMPILER
set -euo pipefail
build=$1
compiler=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null

check() {  # check PROGRAM: it records, reads and says what it found
  local said
  said=$("$1" "$work/$(basename "$1").img")
  [ "$said" = "VELMAR_ERROR_CODE_SUCCESS_E 1" ] || { echo "$1 said: $said"; exit 1; }
}

cmake -G Ninja -S "$here/consumer" -B "$work/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/by-cmake" >/dev/null
check "$work/by-cmake/consumer"

pkgconfig=$(dirname "$(find "$prefix" -name velmar_video.pc)")
flags=$(PKG_CONFIG_PATH=$pkgconfig pkg-config --define-variable=prefix="$prefix" \
  --cflags --libs velmar_video)
# shellcheck disable=SC2086  # flags are words
"$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Werror "$here/consumer/main.cpp" $flags \
  -o "$work/by-pkg-config"
library_folder=$(dirname "$(find "$prefix" -name libvelmar_video.so)")
export LD_LIBRARY_PATH=$library_folder
check "$work/by-pkg-config"

"$prefix/bin/velmar-video" --version >/dev/null

# The manual and the completions are where the programs that read them look.
for file in man/man1/velmar-video.1 bash-completion/completions/velmar-video \
  zsh/site-functions/_velmar-video fish/vendor_completions.d/velmar-video.fish; do
  [ -s "$prefix/share/$file" ] || { echo "$file is not installed"; exit 1; }
done
