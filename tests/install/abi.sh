#!/usr/bin/env bash
# What programs that are built already rely on: the library's symbols, and the slots of virtual
# operations. src/abi lists both; --write lists them anew.
# Usage: abi.sh BUILD-FOLDER [--write]
set -euo pipefail
build=$1
lists=$(cd "$(dirname "$0")/../../src/abi" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

readable() {
  c++filt | sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g
    s/\[abi:cxx11\]//'
}

nm -D --defined-only "$build/src/libvelmar_video.so" | cut -d ' ' -f 3- | readable | sort -u |
  grep -v '^velmar_logger::set' >"$work/symbols.txt"  # the stand-in's; a device's library is linked

# slots INTERFACE CLASS SOURCE: an interface's own table names nothing but pure operations; that of a
# class which implements it has the same order.
slots() {
  local object=$build/src/CMakeFiles/velmar_video_objects.dir/container/$3.cpp.o
  readelf --relocs --wide "$object" | awk -v table="_ZTV[0-9]+$2'$" '
    /^Relocation section/ { inside = $3 ~ table }
    inside && $3 ~ /^R_.*64$/ && $5 !~ /^_ZTI/ { print $5 }' |
    readable | sed -E '/^non-virtual thunk/,$d; s/^[A-Za-z]+:://; s/^~.*/destructor/' |
    awk -v name="$1" '{ print name, NR - 1 ": " $0 }'
}
{
  slots VelmarVideoFileCreater ImgContainerCreater img/ImgContainerCreater
  slots VelmarVideoFileReader ImgContainerReader img/ImgContainerReader
  slots VelmarVideoFileModifier RtvContainerModifier rtv/RtvContainerModifier
} >"$work/slots.txt"

if [ "${2:-}" = --write ]; then
  mkdir -p "$lists"
  cp "$work"/*.txt "$lists"
  exit
fi
for list in symbols slots; do
  diff -U 0 "$lists/$list.txt" "$work/$list.txt" || {
    echo "The $list are not those of src/abi/$list.txt. What was only added goes into the list"
    echo "($0 $build --write); where a line is gone or has changed, the SO version goes up as well,"
    echo "unless the line stands for a private operation."
    exit 1
  }
done
