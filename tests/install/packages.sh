#!/usr/bin/env bash
# Installs the packages in a fresh Debian, uses them as a stranger would, and removes them again.
# Usage: packages.sh FOLDER-OF-PACKAGES FOLDER-FOR-THE-FRESH-DEBIAN
# The latter is kept, so that the next time is quicker.
set -euo pipefail
packages=$(realpath "$1")
mkdir -p "$2"
base=$(realpath "$2")
here=$(cd "$(dirname "$0")" && pwd)

impossible() {
  echo "Not checked in a fresh Debian: $1" >&2
  exit 1
}
[ "$(id -u)" -eq 0 ] || impossible "only root can make one"
unshare --mount true 2>/dev/null || impossible "nothing can be mounted here"

if [ ! -e "$base/complete" ]; then
  echo "Making a fresh Debian in $base" >&2
  rm -rf "$base"
  mkdir -p "$base"
  # What programs are built with, so that what the packages themselves need is seen.
  debootstrap --variant=minbase --include=g++,cmake,make,pkg-config bookworm "$base/root" \
    "${DEBIAN_MIRROR:-http://deb.debian.org/debian}" >"$base/log" 2>&1 ||
    impossible "debootstrap failed, see $base/log"
  touch "$base/complete"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -a "$base/root" "$work/root"
mkdir "$work/root/packages"
cp "$packages"/*.deb "$work/root/packages"
cp -r "$here/consumer" "$here/../../examples" "$work/root/packages"
(cd "$here/../.." && cp --parents README.md docs/python.md tests/docs/markdown.py tests/docs/python_test.py \
  "$work/root/packages")
cat >"$work/root/packages/check" <<'TEXT'
set -eux
cd /packages
export DEBIAN_FRONTEND=noninteractive
files() { find / -xdev \( -path /proc -o -path /packages -o -path /tmp -o -path /var/cache -o \
  -path /var/log -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o -print | sort; }
rm -f /var/log/*.log
apt-get -qq update
files >before

# The tool, with nothing but the library.
apt-get -qq install --no-install-recommends ./velmar-video_*.deb ./libvelmar-video1_*.deb
if dpkg-query -W libvelmar-video-dev; then exit 1; fi
velmar-video --quiet sample /tmp/drive.img --frames 3
velmar-video verify /tmp/drive.img --decode
velmar-video --quiet extract /tmp/drive.img --output /tmp/pictures --as png
velmar-video view /tmp/drive.img --no-browser >/tmp/address &
timeout 60 bash -c 'until [ -s /tmp/address ]; do sleep 0.1; done'
IFS=/ read -r _ _ host token _ </tmp/address
exec 3<>"/dev/tcp/${host%:*}/${host#*:}"
printf 'GET /%s/0/frames/2.jpg HTTP/1.0\r\nHost: %s\r\n\r\n' "$token" "$host" >&3
sed '1,/^\r$/d' <&3 | cmp - <(velmar-video cat /tmp/drive.img --range 2:3)
exec 3>&-
kill %1
wait %1
velmar-video --quiet export /tmp/drive.img /tmp/drive.mkv
velmar-video --quiet create /tmp/back.img /tmp/drive.mkv
velmar-video cat /tmp/drive.img >/tmp/drive.mjpeg
velmar-video cat /tmp/back.img | cmp - /tmp/drive.mjpeg
velmar-video --quiet create /tmp/encoded.img /tmp/pictures --encode --fps 30
[ -s /usr/share/man/man1/velmar-video.1.gz ]
bash -ec '. /usr/share/bash-completion/completions/velmar-video; complete -p velmar-video'

# A program, found by CMake and by pkg-config.
apt-get -qq install --no-install-recommends ./libvelmar-video-dev_*.deb
cmake -S consumer -B by-cmake
cmake --build by-cmake
g++ -std=c++17 consumer/main.cpp $(pkg-config --cflags --libs velmar_video) -o by-pkg-config
for program in by-cmake/consumer ./by-pkg-config; do
  [ "$($program /tmp/used.img)" = "VELMAR_ERROR_CODE_SUCCESS_E 1" ]
done

# The examples.
cmake -S examples -B examples/build
cmake --build examples/build
velmar-video --quiet extract /tmp/drive.img --output .
examples/build/record /tmp/mine.rtv 1280 800 frame_*.jpg
examples/build/browse /tmp/mine.rtv 1 /tmp/one.ppm
examples/build/decode_all /tmp/mine.rtv

# The Python package, with and without pandas.
apt-get -qq install --no-install-recommends ./python3-velmar-video_*.deb
cd /tmp
python3 -c 'import velmar_video as vv; assert vv.open("mine.rtv")[0].shape == (800, 1280, 3)'
apt-get -qq install --no-install-recommends python3-pandas
python3 /packages/tests/docs/python_test.py
cd /packages

# Nothing is left of them, nor of what they needed.
apt-get -qq purge --auto-remove velmar-video libvelmar-video1 libvelmar-video-dev \
  python3-velmar-video python3-pandas
files >after
diff before after
TEXT
# The mounts go with the process.
unshare --mount --propagation private bash -c '
  mount -t proc proc "$1/proc"
  exec chroot "$1" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
    bash -o pipefail /packages/check' bash "$work/root" >"$work/log" 2>&1 || {
  tail -n 40 "$work/log"
  exit 1
}
cp "$work/log" "$base/last-check.log"
echo "The packages work in a fresh Debian, and leave nothing when they are removed."
