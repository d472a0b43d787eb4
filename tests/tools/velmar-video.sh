#!/usr/bin/env bash
# What only a process can show of velmar-video: exit statuses, messages, pipes, signals, and what
# is in the folder afterwards.
# Usage: velmar-video.sh PATH-OF-VELMAR-VIDEO
. "$(dirname "$0")/lib.sh"

# Twelve frames to work with: 0.jpg to 11.jpg.
expect 0 "" sample sample.img --frames 12 --size 96x64
expect 0 "" extract sample.img --output taken
mkdir in
for i in $(seq 0 11); do cp "taken/$(printf 'frame_%06d.jpg' "$i")" "in/$i.jpg"; done
for i in $(seq 0 11); do cat "in/$i.jpg"; done >stream
find in -type f -exec cksum {} + | sort >in.sum

# From files to a recording and back, in natural order.
expect 0 "" create drive.img in --fps 25 --start-time 2023-11-14T22:13:20Z --device-id 0AfF
expect 0 "" cat drive.img
cmp out stream
expect 0 "" extract drive.img --output back/deeper --jobs 3
for i in $(seq 0 11); do cmp "in/$i.jpg" "back/deeper/$(printf 'frame_%06d.jpg' "$i")"; done
expect 0 "" info drive.img --json
grep -q '^{"file":"drive.img","container":"img","version":"1.0","frames_count":12,"frames_max":4294967295,"width":96,"height":64,"frame_format":"BGR","frame_codec":"JPG","undistorted":false,"device_id":"0aff","start_time_us":1700000000000000,"duration_us":440000,"camera_params":{},"extended_info":{},"file_bytes":[0-9]*}$' out || fail "info: $(cat out)"

# Times from a table; all that describes a recording.
(
  echo file,sensor_time_us,arrived_time_us
  echo 2.jpg,30,31
  echo in/10.jpg,20,22
) >times.csv
echo '{"b": [1.5, null], "a": "x"}' >params.json
expect 0 "" create timed.img in/10.jpg in/2.jpg --times times.csv --camera-params params.json \
  --extended-info params.json --undistorted --frame-format GRAY
expect 0 "" frames timed.img --csv
[ "$(cut -d, -f1-3 out | tr '\n' ' ')" = "index,sensor_time_us,arrived_time_us 0,20,22 1,30,31 " ] ||
  fail "times: $(cat out)"
expect 0 "" info timed.img --json
grep -qF '"frame_format":"GRAY","frame_codec":"JPG","undistorted":true,"device_id":"","start_time_us":22,"duration_us":10,"camera_params":{"a":"x","b":[1.5,null]},"extended_info":{"a":"x","b":[1.5,null]}' out || fail "info: $(cat out)"

# Pictures: size after scaling and cutting.
expect 0 "" extract drive.img --output pnm --as ppm --scale 1/2 --crop-top 10 --crop-bottom 3 --range 2:3
expect 0 "" extract drive.img --output pnm --as ppm --format gray --range 2:3 --no-table
expect 0 "" extract timed.img --output small --scale 1/2 --quality 50
expect 0 "" create again.img small --times small/frames.csv
expect 0 "" frames again.img --csv
[ "$(cut -d, -f1-3 out | tr '\n' ' ')" = "index,sensor_time_us,arrived_time_us 0,20,22 1,30,31 " ] ||
  fail "times by frames.csv: $(cat out)"
[ "$(stat -c %s pnm/frame_000002.p?m | tr '\n' ' ')" = "6157 3613 " ] || fail "sizes of pictures"

# Wrong usage, and what cannot be: nothing is written.
expect 2 "a command is missing"
expect 2 "there is no command inof; did you mean info?" inof drive.img
expect 2 "there is no command bogus (" bogus
"$tool" cut --help >help
expect 0 "" help cut
cmp out help
expect 2 "there is no command ctu; did you mean cut?" help ctu
expect 0 "" help
grep -q '^Subcommands:' out || fail "help: $(cat out)"
expect 2 "frames: there is no option --rnage; did you mean --range?" frames drive.img --rnage=1:2
expect 2 "extract: there is no option --ouput; did you mean --output?" extract drive.img --ouput x
expect 2 "sample: --force has to come after sample" --force sample x.img
expect 2 "cut: one INPUT and one OUTPUT; several inputs need --output-dir" cut drive.img b.img c.img --range 0:1
expect 2 "--times or from --fps" create x.img in
expect 2 "cannot be used with a stream" create x.img - --times times.csv
expect 2 "has to be the only input" create x.img - in --fps 5
expect 2 "--device-id" create x.img in --fps 5 --device-id abc
expect 2 "--format bgr needs --as png" extract drive.img --output x --scale 1/2 --format bgr
expect 2 "--quality needs --as jpg" extract drive.img --output x --as png --quality 50
expect 2 "--compression needs --as png" extract drive.img --output x --compression 5
expect 2 "cat writes frames to standard output" extract drive.img --output -
expect 1 "drive.img: --range goes beyond its 12 frames (VELMAR_ERROR_CODE_OUT_RANGE_E)" cat drive.img --range 3:13
expect 1 "no frame was captured in that time" extract drive.img --output x --time 0:9
expect 1 "leaves nothing of its pictures" extract drive.img --output x --as png --crop-top 64
expect 1 "x.avi: its name has to end in .img or .rtv" create x.avi in --fps 5
echo '{"a": }' >bad.json
expect 1 "bad.json: it is not valid JSON: Line 1" create x.img in --fps 5 --extended-info bad.json
expect 1 "times.csv: it has no row for in/3.jpg" create x.img in/2.jpg in/10.jpg in/3.jpg --times times.csv
expect 1 "params.json: it is not a JPEG picture" create x.img in params.json --fps 5
expect 0 "" sample other.img --frames 1 --size 64x64
"$tool" cat other.img >other.jpg
expect 1 "other.jpg: the picture is 64x64, but the first one is 96x64" create x.img in other.jpg --fps 5
expect 1 "no/x.img: cannot create it: there is no folder no" create no/x.img in --fps 5
expect 1 "drive.img/x.img: cannot create it: Not a directory" create drive.img/x.img in --fps 5
expect 1 "in/none: cannot open it" create x.img in/none --fps 5
absent x.img x.img.tmp x.img.tmp.index

# Outputs that are there, or that are inputs.
cp drive.img kept.img
expect 1 "drive.img: it is already there; --force replaces it" create drive.img in --fps 5
expect 1 "drive.img: it is already there" sample drive.img --frames 1
expect 1 "frame_000000.jpg: it is already there" extract drive.img --output taken
cmp drive.img kept.img
cp in/1.jpg self.img
ln self.img twin.img.tmp
for arguments in "self.img self.img" "self.img twin.img.tmp" "twin.img in self.img" "self.img -"; do
  expect 1 "it would be overwritten, but it is also an input" create $arguments --fps 5 --force <self.img
done
cmp self.img in/1.jpg
rm self.img twin.img.tmp
touch half.img.tmp
expect 1 "half.img.tmp: it is already there, perhaps an interrupted recording" create half.img in --fps 5
expect 0 "" create half.img in --fps 5 --force
# Nothing is written through what has the name of a temporary file, and a journal whose recording was
# moved away stays.
cp kept.img target
touch moved.img.tmp.index
for file in linked.img.tmp linked.img.tmp.index linked.rtv.tmp linked.recovering.img.tmp; do
  for force in "" --force; do
    command="create ${file%%.tmp*} in --fps 5 $force"
    [ "$file" != linked.recovering.img.tmp ] || command="recover kept.img linked.img $force"
    for target in target nothing; do
      ln -s $target $file
      expect 1 "$file: it is already there and is a symbolic link, not a file; move it away" $command
      [ "$(readlink $file)" = $target ] || fail "$file is gone"
      rm $file
    done
    mkfifo $file
    expect 1 "$file: it is already there and is a pipe, not a file; move it away" $command
    rm $file
  done
done
expect 1 "moved.img.tmp.index: it is already there, perhaps an interrupted recording" cut kept.img moved.img --range 0:1
absent nothing moved.img moved.img.tmp
[ -e moved.img.tmp.index ] && cmp target kept.img || fail "a leftover, or what a link leads to"
rm moved.img.tmp.index target
expect 0 "" create drive.img in/3.jpg --fps 5 --force
[ "$(frames_in drive.img)" -eq 1 ] || fail "--force"
cp kept.img drive.img

# Recordings that are no recordings; the good one is shown all the same.
head -c 3000 kept.img >cut.img
: >empty.img
expect 1 "cut.img: it is cut short: it has 3000 bytes, but its metadata were at byte" frames cut.img
expect 1 "empty.img: the file is empty (VELMAR_ERROR_CODE_FILE_SIZE_IS_ZERO_E)" info empty.img kept.img --json
grep -q '"file":"kept.img"' out || fail "info stops at a bad file"
expect 1 "none.img: there is no such file (VELMAR_ERROR_CODE_FILE_NOT_EXIST_E)" cat none.img
cp kept.img really.rtv
"$tool" sample really.rtv.rtv --frames 1 --size 64x64
mv really.rtv.rtv really.img
head -c 50 really.img >half.rtv
mkdir folder.img
mkfifo pipe.img
ln -s loop.img loop.img
echo "some words, and not few of them" >words.img
while IFS=: read -r file words; do
  expect 1 "$file: $words" info "$file"
done <<'TEXT'
really.rtv:it is an img, but its name ends in .rtv; rename it to .img
really.img:it is an rtv, but its name ends in .img; rename it to .rtv
half.rtv:it is cut short, damaged or unfinished
words.img:it is not a recording
folder.img:there is no recording in it
in:there is no recording in it
pipe.img:it is a pipe, not a recording
/dev/null:it is a device, not a recording
loop.img:cannot open it: Too many levels of symbolic links
kept.img.tmp:there is no such file
TEXT
expect 1 "folder.img: it is already there and is a folder, not a file" create folder.img in --fps 5 --force
expect 1 "pipe.img: it is a pipe, not a file" recover pipe.img x.img
expect 1 "" verify really.img
grep -q "does not open: it is an rtv, but its name ends in .img" out || fail "verify: $(cat out)"
got=0
"$tool" --verbose info cut.img 2>err || got=$?
[ "$got" -eq 1 ] && [ "$(wc -l <err)" -gt 1 ] || fail "--verbose"

# Neither a name nor a file commands the terminal; what is text in a name stays.
escape=$(printf '\033[31m\302\233\233')
LC_ALL=C sed 's/"camera_id" : "/&\\u001b[31m\\u009b/; s/"version" : "/&'"$escape"'/' kept.img >"nä$escape.img"
"$tool" sample id.rtv --frames 1 --size 64x64
printf '\033\302\233\377' | dd of=id.rtv bs=1 seek=14 conv=notrunc status=none
cp cut.img "cut$escape.img"
: >"cut$escape.img.undo"
for arguments in "edit --device-id 01 --dry-run nä" "info nä" "--verbose info cut" "verify cut" \
  "recover cut" "recover cut.img nä2" "extract --range 9:99 --output x nä"; do
  "$tool" $arguments"$escape.img" >out 2>err || true
  ! cat out err | LC_ALL=C grep -q "$(printf '[\033\233]')" || fail "$arguments: $(cat -v out err)"
done
grep -qF 'nä\x1B[31m' err || fail "names: $(cat -v err)"
"$tool" dump id.rtv >out
! LC_ALL=C grep -q "$(printf '[\033\233\377]')" out || fail "dump: $(cat -v out)"

# A frame that does not decode is left out.
head -c 100 /dev/zero >zeros
expect 0 "" create two.img in/0.jpg in/1.jpg --fps 5
offset=$(grep -abo "$(printf 'JFIF')" two.img | tail -1 | cut -d: -f1)
dd if=/dev/zero of=two.img bs=1 seek="$((offset - 6))" count=400 conv=notrunc status=none
expect 3 "two.img: frame 0 is skipped: the picture does not decode (VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E)" \
  extract two.img --output some --as png

# Stored bytes that are no picture are left out as well, but not of recordings.
for command in "extract two.img --output stored" "cat two.img"; do
  expect 3 "two.img: frame 0 is skipped: its bytes are no JPEG picture" $command
done
cmp out in/1.jpg
for command in "cut two.img copy.img" "convert two.img copy.img" "concat copy.img two.img"; do
  expect 3 "two.img: frame 0 is copied unchanged: its bytes are no JPEG picture" $command --force
done
rm copy.img

# Little memory is enough for a small file, whatever its header claims.
LC_ALL=C sed 's/"width" : 96/"width" : 18000/; s/"height" : 64/"height" : 18000/' kept.img >claims.img
(
  ulimit -S -v 400000
  # AddressSanitizer takes terabytes of addresses.
  "$tool" --version >out 2>&1 || ulimit -S -v unlimited
  expect 1 "claims.img: its header claims pictures of 18000x18000 pixels, which take too much" \
    extract claims.img --output claimed --as png
  expect 1 "claims.img: no frame can be had; frame 0 is skipped: the picture does not decode: far" \
    extract claims.img --output claimed --as png --scale 1/8
) || exit
absent claimed

# A picture ends at its end marker, whatever follows.
head -c -2 in/1.jpg >cut.jpg
cat in/1.jpg bad.json zeros >trailer.jpg
expect 1 "cut.jpg: the picture has no end marker; --allow-truncated takes it" create ends.img cut.jpg --fps 5
expect 2 "--allow-truncated is for files" create ends.img - --fps 5 --allow-truncated
expect 0 "" create ends.img trailer.jpg --fps 5
expect 0 "" create ends.img trailer.jpg cut.jpg --fps 5 --allow-truncated --force
expect 0 "" verify ends.img
[ "$(grep -c "frame 1 .*no end marker" out)" -eq 1 ] || fail "verify: $(cat out)"

# Streams: what ends inside a frame or holds something else is recorded as far as it goes.
expect 0 "" create stream.img - --fps 25 <stream
expect 0 "" cat stream.img
cmp out stream
head -c -10 stream >short
expect 3 "standard input: it ends inside a frame" create short.img - --fps 25 <short
[ "$(frames_in short.img)" -eq 11 ] || fail "frames of a short stream"
cat in/0.jpg other.jpg zeros bad.json in/1.jpg >mixed
expect 3 "standard input: frame 1 is skipped: the picture is 64x64" create mixed.img - --fps 25 --start-time 0 <mixed
grep -q "bytes skipped" err || fail "skipped bytes"
"$tool" frames mixed.img --csv | cut -d, -f1,2 | tr '\n' ' ' | grep -q '0,0 1,80000 ' || fail "times"
expect 1 "none.img: there was no frame to record" create none.img - --fps 25 <bad.json
absent none.img none.img.tmp none.img.tmp.index

# Signals finish the recording.
mkfifo pipe
"$tool" create live.img - --fps 25 <pipe 2>err &
exec 3>pipe
cat stream >&3
wait_for holds live.img.tmp "$(stat -c %s stream)"
kill -TERM $!
got=0
wait $! || got=$?
exec 3>&-
[ "$got" -eq 0 ] && [ ! -s err ] || fail "status $got after a signal"
[ "$(frames_in live.img)" -eq 12 ] || fail "frames after a signal"
"$tool" sample long.img --frames 10000000 --size 64x64 2>err &
wait_for holds long.img.tmp 100000
kill -TERM $!
got=0
wait $! || got=$?
[ "$got" -eq 3 ] && grep -q "long.img: stopped by a signal after .* of 10000000 frames" err ||
  fail "status $got after a signal"
[ "$(frames_in long.img)" -gt 0 ] || fail "nothing recorded until the signal"

# A disk that is full: files can be read again, a stream cannot.
told 1 "full.img: cannot write frame" limited 8 create full.img in in in --fps 5
absent full.img full.img.tmp full.img.tmp.index
cat stream stream | told 1 "the frames recorded so far are in full.img.tmp" limited 8 create full.img - --fps 5
absent full.img

# What it left becomes a recording, which is whole; what is not is said.
expect 3 "bytes belong to no whole frame" recover full.img.tmp full.img --device-id 0aff
[ "$(frames_in full.img)" -gt 0 ] || fail "no frame recovered"
"$tool" cat full.img | cmp - stream -n "$("$tool" cat full.img | wc -c)"
expect 1 "full.img: it is already there" recover full.img.tmp full.img
expect 2 "no --fps or --times" recover full.img.tmp full.rtv --fps 5
# Many files: folders, lists; a bad one does not hide the others. Manifests.
mkdir -p many/deeper
cp full.img many/10.img
cp full.img many/2.img
cp full.img "many/deeper/a b.img"
expect 0 "" verify many --jobs 3 --manifest-out many/manifest
cut -d: -f1 out | tr '\n' ' ' | grep -q "^many/2.img many/10.img 2 files" || fail "order: $(cat out)"
expect 0 "" verify many --recursive --only-problems
[ "$(cat out)" = "3 files, 0 bad, 0 with warnings" ] || fail "recursive: $(cat out)"
[ "$("$tool" frames many --recursive --where 'index == 0' --csv --columns file | tr '\n' ' ')" = \
  "file many/2.img many/10.img many/deeper/a b.img " ] || fail "frames of many"
[ "$(echo many | "$tool" info --files-from - --json | wc -l)" -eq 2 ] || fail "info of many"
find many/deeper -name '*.img' -print0 >list
expect 0 "" verify --files-from list -0 --only-problems
mkdir none
expect 1 "none: there is no recording in it" verify none many --only-problems
printf 'x' | dd of=many/2.img bs=1 seek=3000 conv=notrunc status=none
expect 1 "" verify many --against many/manifest --only-problems
grep -q "^many/2.img: error: .*is not that of the manifest" out || fail "against: $(cat out)"
tail -n 1 out | grep -q "^2 files, 1 bad, 0 with warnings" || fail "against: $(cat out)"
mkdir -p others/1 others/2
cp many/10.img others/1
cp many/10.img others/2
"$tool" verify others --recursive --manifest-out others/manifest >out
! "$tool" verify many/10.img --against others/manifest >out 2>err || fail "a copy of two"
[ "$(grep -c "^velmar-video: many/10.img: several recordings of others/manifest could be" err)" -eq 1 ] ||
  fail "a copy of two: $(cat err)"
expect 1 "manifest: it is already there" verify many --manifest-out many/manifest
expect 3 "many/2.img: the manifest has it, but it was not checked" verify many/10.img --against many/manifest
expect 2 "verify: file is required, or --files-from" verify
expect 0 "" verify full.img kept.img --decode
head -c 5000 kept.img >cut.img
expect 1 "" verify kept.img cut.img --json
grep -q '^{"file":"cut.img","frames":0,"errors":1,"warnings":0,"findings":\[{"severity":"error","text":"does not open' out ||
  fail "verify: $(cat out)"
rm cut.img full.img
expect 0 "" create synced.img in --fps 5 --sync 1
cmp <("$tool" cat synced.img) <("$tool" cat kept.img)

# Standard output: a full one, a closed one, one that nobody reads, the input itself.
told 1 "standard output: cannot write to it" "$tool" cat kept.img >/dev/full
told 1 "standard output: cannot write to it" "$tool" frames kept.img >&-
told 1 "kept.img: it is also where standard output goes" "$tool" cat kept.img >>kept.img
(
  set +e
  "$tool" create wide.img $(yes in | head -200) --fps 5
  "$tool" cat wide.img | head -c 1 >/dev/null
  [ "${PIPESTATUS[0]}" -eq 141 ]
) || fail "a pipe that nobody reads does not end it"

# Somebody who may only read.
chmod 755 .
cp kept.img readable.img
chmod 444 readable.img
as_reader=()
[ "$(id -u)" -ne 0 ] || as_reader=(setpriv --reuid 65534 --regid 65534 --clear-groups)
printf '#!/bin/sh\nexec %s "%s" "$@"\n' "${as_reader[*]}" "$tool" >reader
chmod 755 reader
if ./reader --version >/dev/null 2>&1; then
  [ "$(id -u)" -eq 0 ] || chmod 555 .
  (
    tool=./reader
    expect 0 "" edit readable.img --device-id 01 --dry-run
    expect 1 "readable.img: cannot change it: Permission denied" edit readable.img --device-id 01
    (umask 777 && : >readable.img.undo)
    expect 1 "" verify readable.img
    grep -q "^readable.img: error: does not open: /.*readable.img.undo: cannot open it: Perm" out ||
      fail "verify: $(cat out)"
    for output in new.img new.rtv; do
      expect 1 "$output: cannot create it: Permission denied" create $output in --fps 5
    done
    ! ./reader recover full.img.tmp new.img --device-id 01 2>err
    grep -q ": new.img: cannot create it: Permission denied" err || fail "the name of the output"
  )
  chmod 755 .
fi

# All that was only read is as it was.
cmp drive.img kept.img
find in -type f -exec cksum {} + | sort | cmp - in.sum
[ -z "$(find . -name '*.tmp*' ! -name 'full.img.tmp*')" ] || fail "temporary files: $(ls -R)"
