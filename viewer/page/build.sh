#!/bin/sh
# Builds the page into a folder: index.html, page.css, page.js with what the first picture needs,
# main.js with all else, and chunk.js with what both need.
# Needs the Debian packages esbuild, libjs-leaflet and libjs-dygraphs.
set -eu
[ $# -eq 1 ] || { echo "usage: $0 OUT-DIRECTORY" >&2; exit 2; }
here=$(dirname "$0")
mkdir -p "$1"
NODE_PATH=${NODE_PATH:-/usr/share/javascript} ${ESBUILD:-esbuild} "page=$here/first.ts" "page=$here/style.css" --bundle --minify \
  --format=esm --splitting --target=es2020 --charset=utf8 --define:process.env.NODE_ENV='"production"' \
  --loader:.png=dataurl --log-level=warning --chunk-names=[name] --outdir="$1"
cp "$here/index.html" "$1/index.html"
