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
tool=$prefix/bin/velmar-video
"$tool" --version >/dev/null

check() {  # check PROGRAM: it records, reads and says what it found
  local said
  said=$("$1" "$work/$(basename "$1").img")
  [ "$said" = "VELMAR_ERROR_CODE_SUCCESS_E 1" ] || { echo "$1 said: $said"; exit 1; }
}

cmake -S "$here/consumer" -B "$work/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
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

# The examples do what they say.
cmake -S "$here/../../examples" -B "$work/examples" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Werror" >/dev/null
cmake --build "$work/examples" >/dev/null
cd "$work"
"$tool" sample drive.rtv --frames 3 --size 96x64
"$tool" extract drive.rtv --output frames

says() {  # says TEXT PROGRAM ARGUMENT...
  local text=$1 program=$2 said
  shift 2
  said=$("$work/examples/$program" "$@") || { echo "$program failed: $said"; exit 1; }
  grep -qF -- "$text" <<<"$said" || { echo "no '$text' from $program: $said"; exit 1; }
}
"$tool" sample made02.rtv --rtv-version 02 --frames 3 --size 96x64
for made in made.img made.rtv made02.rtv; do
  [ -e "$made" ] || says SUCCESS record "$made" 96 64 frames/*.jpg
  says "" restamp "$made" -60
  says "frame 0: 1699999940000000 us" browse "$made" 2 picture.ppm
  [ "$(head -c 9 picture.ppm)" = "$(printf 'P6\n48 32\n')" ] || { echo "no picture"; exit 1; }
  says "3 frames decoded, 0 failed" decode_all "$made" 3
done
says "wheel_tick_left_front 80" track drive.rtv

# So does the program of the README.
# shellcheck disable=SC2016  # the back-ticks are the document's
(
  printf '#include <%s>\n' iostream vector
  sed -n '/^```cpp/,/^```$/p' "$here/../../README.md" | sed '/^```/d; /^#include/a int main() {'
  echo '}'
) >readme.cpp
# shellcheck disable=SC2086  # flags are words
"$compiler" -std=c++17 readme.cpp $flags -o readme
cp made.img drive.img
[ "$(./readme)" = "VELMAR_ERROR_CODE_SUCCESS_E: 48 x 32" ] || { echo "README: $(./readme)"; exit 1; }

# The manual and the completions are where the programs that read them look.
for file in man/man1/velmar-video.1 bash-completion/completions/velmar-video \
  zsh/site-functions/_velmar-video fish/vendor_completions.d/velmar-video.fish; do
  [ -s "$prefix/share/$file" ] || { echo "$file is not installed"; exit 1; }
done
