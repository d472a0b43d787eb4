#!/usr/bin/env bash
# Changing recordings: edit in place, byte by byte; cut, concat, diff, dump and tracks.
# Usage: edit.sh PATH-OF-VELMAR-VIDEO
. "$(dirname "$0")/lib.sh"

# changed BEFORE AFTER: the offsets of the bytes that differ, as ranges from 0
changed() {
  { cmp -l "$1" "$2" || true; } |
    awk '{o=$1-1; if (o!=last+1) printf "%s%d-", (NR>1?last" ":""), o; last=o} END {if (NR) print last}'
}
# edited FILE RANGES OPTION...: edit changes just these bytes and says so
edited() {
  local file=$1 ranges=$2
  shift 2
  cp "$file" before
  expect 0 "" edit "$file" "$@" --dry-run
  cmp "$file" before
  cp out said
  expect 0 "" edit "$file" "$@"
  cmp out said
  grep -q -- ' -> ' out || fail "nothing said"
  [ "$(changed before "$file")" = "$ranges" ] || fail "$file $*: changed $(changed before "$file")"
}

expect 0 "" sample a.img --frames 3 --size 96x64

for version in 02 03 04; do
  expect 0 "" sample $version.rtv --frames 3 --size 96x64 --rtv-version $version
done

# Times lie in the index, 8 + 28 * frame; the metadata stay as they are.
edited a.img "36-43" --sensor-time 1=220995460302988919
edited a.img "44-51 64-71" --arrived-time 1=220995460302988919 --sensor-time 2=220995460302988919
"$tool" frames a.img --csv | sed 's/,1700000000/,1800000001/g; s/,220995460302988919/,1800000000000002/g' >all.csv
expect 0 "" edit a.img --times all.csv
"$tool" frames a.img --csv | cmp - all.csv
size=$(stat -c %s a.img)
expect 0 "" edit a.img --shift-time -100000001000000
"$tool" frames a.img --csv | grep -q '^0,1700000000000000,1700000000040000,' || fail "shift"
[ "$(stat -c %s a.img)" -eq "$size" ] || fail "size after a shift"

# The header of an rtv: device id 14, start time 38, flags 64 or 68, tags from 68 or 72.
for version in 02 03 04; do
  flags=68 table=72 size=36
  [ $version != 02 ] || { flags=64 table=68 size=29; }
  [ $version != 04 ] || size=145
  id=$(printf 'ee%.0s' $(seq 24))
  edited $version.rtv 14-37 --device-id "$id"
  edited $version.rtv 38-42 --start-time 2030-01-01T00:00:00.123Z
  edited $version.rtv "$((table + size))-$((table + size))" --sensor-time 1=2030-01-01T00:00:00.124Z
  if [ $version = 02 ]; then
    expect 1 "02.rtv: --undistorted: version 02 of rtv cannot say so" edit 02.rtv --undistorted off
    expect 1 "02.rtv: --tagging-flags: " edit 02.rtv --tagging-flags 1
  else
    edited $version.rtv "$flags-$flags" --undistorted off
    edited $version.rtv "$flags-$((flags + 3))" --tagging-flags 4294967295
  fi
  "$tool" frames $version.rtv --csv >shifted
  expect 0 "" edit $version.rtv --shift-time +2.5s
  "$tool" frames $version.rtv --csv | cut -d, -f2 | tail -1 >after
  [ $(($(tail -1 shifted | cut -d, -f2) + 2500000)) -eq "$(cat after)" ] || fail "shift of $version"
done

# An id is shown as the file holds it.
expect 0 "" edit 03.rtv --device-id 0a01 --dry-run
grep -q -- " -> 0a010\{44\}$" out || fail "id: $(cat out)"

# The metadata of an img, by themselves; a resolution that is wrong is found.
echo '{"k": [1, {"deep": true}]}' >params.json
metadata=$(od -An -tu1 -N8 a.img | awk '{n=0; for (i=1;i<=8;i++) n=n*256+$i; print n}')
head -c "$metadata" a.img >frames-before
expect 0 "" edit a.img --device-id 00ff --undistorted off --camera-params params.json --extended-info - <params.json
head -c "$metadata" a.img | cmp - frames-before
expect 0 "" info a.img --json
grep -q '"undistorted":false,"device_id":"00ff".*"camera_params":{"k":\[1,{"deep":true}\]},"extended_info":{"k":' out || fail "info: $(cat out)"
sed -i 's/"width" : 96/"width" : 77/' a.img
expect 0 "" edit a.img --fix-resolution
grep -q 'resolution: 77x64 -> 96x64' out || fail "resolution: $(cat out)"
expect 0 "" edit a.img --fix-resolution
grep -q 'nothing to change' out || fail "nothing to change"

# Tags by a table, in place: frame 1 of version 04 begins at 72 + 145, x at 16 and brake_active at 142 of it.
expect 0 "" sample tags.rtv --frames 3 --size 96x64
printf 'index,x,brake_active,speed\n1,-1,1,\n' >some.csv
edited tags.rtv "233-236 249-250 359-359" --tags some.csv
grep -qx 'tags: as recorded -> 1 of 3 frames changed' out || fail "tags: $(cat out)"
"$tool" frames 04.rtv --csv >table.csv
expect 0 "" edit 04.rtv --tags table.csv
grep -qx 'nothing to change' out || fail "the table of the same tags: $(cat out)"
edited tags.rtv 46-55 --start-position 8.55,47.37,408.5
expect 1 "03.rtv: --start-position: version 03 of rtv holds whole metres" edit 03.rtv --start-position 8,47,408.5
expect 2 "--start-position is LNG,LAT or LNG,LAT,ALT" edit 03.rtv --start-position 8
expect 2 "--tags and --log both give" edit 04.rtv --tags some.csv --log table.csv

# Nothing is left of what is cleared.
cp 04.rtv clear.rtv
expect 0 "" edit clear.rtv --clear positions,speed --clear can
"$tool" frames clear.rtv --json | grep -v '"x":0,"y":0,"z":0,"relative_distance":0,"speed":0,"direction":0,.*"can":{}}' && fail "tags are left"
"$tool" info clear.rtv | grep -q '0.000000000 E, 0.000000000 N, 0.00 m' || fail "the start is left"
expect 2 "--clear: " edit clear.rtv --clear places
expect 2 "--clear and --device-id contradict each other" edit clear.rtv --clear device-id --device-id 01

# Several at once: a bad one hides no other, and none is changed twice.
mkdir many
cp a.img 02.rtv 04.rtv many
head -c 500 a.img >many/bad.img
cp -r many old
expect 1 "bad.img: " edit many many/a.img --shift-time 1s --clear device-id
[ "$(sed '$d' out | cut -d: -f1 | uniq | tr '\n' ' ')" = "many/02.rtv many/04.rtv many/a.img " ] || fail "order: $(cat out)"
[ "$(tail -1 out)" = "4 files, 3 with changes, 1 failed" ] || fail "summary: $(cat out)"
[ "$(changed old/04.rtv many/04.rtv | wc -w)" -le 2 ] || fail "04.rtv: $(changed old/04.rtv many/04.rtv)"
shifted() { [ $(($("$tool" frames old/$1 --csv | sed -n 2p | cut -d, -f2) + 1000000)) -eq "$("$tool" frames many/$1 --csv | sed -n 2p | cut -d, -f2)" ]; }
shifted a.img && shifted 02.rtv || fail "not shifted once"
! "$tool" info many/a.img many/04.rtv | grep -q 'device  *[0-9a-f]' || fail "an id is left"
expect 2 "for the frames of one recording" edit many --sensor-time 0=5
cmp many/bad.img old/bad.img

# What cannot be is refused before anything is written.
cp a.img kept.img
exec 9<a.img
flock 9
expect 1 "a.img: another edit is changing it; try again later" edit a.img --device-id 01
exec 9<&-
echo '{' >bad.json
expect 1 "--sensor-time: there is no frame 3, only 3 frames (VELMAR_ERROR_CODE_OUT_RANGE_E)" edit a.img --device-id 01 --sensor-time 3=5
expect 1 "bad.json: it is not valid JSON" edit a.img --device-id 01 --camera-params bad.json
expect 2 "there is no change to make" edit a.img
expect 2 "--sensor-time is I=TIME" edit a.img --sensor-time 5
expect 2 "excludes" edit a.img --shift-time 5 --times all.csv
cmp a.img kept.img

# An edit that is killed halfway: the times are changed, the metadata are cut off. Readers say so,
# recover and the next edit undo it first.
printf '{"long":"%09000d"}' 0 >long.json
interrupt() {
  cp kept.img half.img
  (ulimit -f $(($(stat -c %s half.img) / 1024 + 2)) -c 0
    "$tool" edit half.img --shift-time +3600s --extended-info long.json) >out 2>&1 && fail "not interrupted"
  [ -e half.img.undo ] && ! cmp -s half.img kept.img || fail "nothing is half done"
}
interrupted="half.img: an edit of it was interrupted and may be half done; velmar-video recover with this file alone undoes it"
interrupt
expect 1 "$interrupted" info half.img
expect 1 "$interrupted" recover half.img made.img --fps 3
absent made.img
expect 1 "" verify half.img
grep -q "half.img: error: does not open: an edit of it was interrupted" out || fail "verify: $(cat out)"
expect 2 "recover: OUTPUT is missing" recover half.img.tmp
expect 2 "--fps needs OUTPUT" recover half.img --fps 3
expect 0 "" recover half.img
grep -qx 'half.img: the interrupted edit is undone' out || fail "recover: $(cat out)"
cmp half.img kept.img
expect 1 "half.img: no edit of it was interrupted" recover half.img
interrupt
cp half.img.undo kept.undo
expect 0 "half.img: an edit of it was interrupted, and is undone first" edit half.img --shift-time +3600s
[ "$(changed kept.img half.img | wc -w)" -eq 6 ] || fail "an edit behind an interrupted one"
absent half.img.undo
cp kept.undo 03.rtv.undo
expect 0 "$(realpath 03.rtv).undo does not belong to it" frames 03.rtv
expect 1 "03.rtv.undo does not belong to it" edit 03.rtv --shift-time 1
expect 1 "03.rtv.undo does not belong to it" recover 03.rtv
expect 0 "03.rtv.undo does not belong to it" recover 03.rtv made.rtv
expect 1 "" verify 03.rtv
rm 03.rtv.undo

# cut and concat are each other's inverse; every tag and text survives.
for file in a.img 02.rtv 03.rtv 04.rtv; do
  kind=${file#*.}
  expect 0 "" cut $file one.$kind --range 0:1 --force
  expect 0 "" cut $file rest.$kind --range 1:3 --force
  overlap=""
  [ $file != a.img ] || overlap="were captured before"
  expect 0 "$overlap" concat whole.$kind one.$kind rest.$kind --in-order --force
  cmp <("$tool" frames $file --csv) <("$tool" frames whole.$kind --csv) || fail "frames of whole.$kind"
  cmp <("$tool" cat $file) <("$tool" cat whole.$kind) || fail "bytes of whole.$kind"
  cmp <("$tool" info $file | grep -vE '^[^ ]|size|room') <("$tool" info whole.$kind | grep -vE '^[^ ]|size|room') ||
    fail "info of whole.$kind"
  expect 0 "" diff $file whole.$kind
  grep -qx 'no difference' out || fail "diff: $(cat out)"
  expect 1 "" diff $file rest.$kind
  grep -qx "frames 1 to 2: frames 0 to 1 of rest.$kind" out || fail "diff: $(cat out)"
done
expect 1 "nosuch.img: there is no such file" diff a.img nosuch.img
expect 2 "b is required" diff a.img
expect 1 "x.rtv: it is of another container than a.img" cut a.img x.rtv --range 0:1
expect 0 "" sample big.img --frames 1 --size 160x64
expect 1 "big.img: its size is 160x64, that of a.img is 96x64; --force=INPUT says which one wins" concat x.img a.img big.img
absent x.img x.rtv
expect 3 "a.img: its size is 96x64, that of big.img is 160x64" concat x.img a.img big.img --force=big.img
"$tool" info x.img --json | grep -q '"width":160' || fail "the winner"
expect 1 "03.rtv: its version is another one than that of 02.rtv" concat x.rtv 02.rtv 03.rtv
expect 2 "names none of the inputs" concat x.img a.img --force=b.img

# Positions are counted from one start; the frames stay where they were, within half a centimetre.
expect 0 "" extract a.img --output pics
printf 'index,x,y,z\n0,0,0,0\n1,123456,-654321,5\n2,-500000,400000,-7\n' >tags.csv
places() { "$tool" frames "$1" --json | sed 's/.*"z":\([-0-9]*\).*"lng_deg":\([^,]*\),"lat_deg":\([^,]*\).*/\2 \3 \1/'; }
for version in 02 03 04; do
  heights=,519 rise=8100 status=0 said=
  [ $version != 02 ] || heights= rise=0 status=3 said="does not hold heights"
  expect $status "$said" create p.rtv pics --fps 3 --rtv-version $version --tags tags.csv --start-position 179.99,48.1374$heights --force
  expect $status "$said" create q.rtv pics --fps 3 --rtv-version $version --tags tags.csv --start-position -179.98,48.5${heights:+,600} --force
  expect 0 "q.rtv: 2 of its 3 frames were captured before" concat pq.rtv p.rtv q.rtv --force
  paste -d' ' <(places p.rtv; places q.rtv) <(places pq.rtv) | awk -v rise="$rise" '
    function off(a, b) { return a > b ? a - b : b - a }
    { far += off($1, $4) > 7e-8 || off($2, $5) > 5e-8 || $6 - $3 != (NR > 3 ? rise : 0) }
    END { exit far > 0 || NR != 6 }' || fail "places of version $version: $(places pq.rtv)"
done
expect 0 "" create n.rtv pics --fps 3 --rtv-version 02
expect 0 "" create far.rtv pics --fps 3 --rtv-version 02 --start-position 8,47
expect 3 "does not hold heights" create p.rtv pics --fps 3 --rtv-version 02 --tags tags.csv --start-position 10,47 --force
expect 1 "far.rtv: frame 0 lies more than 83 km from the start position" concat no.rtv p.rtv far.rtv --in-order
expect 1 "n.rtv: its start position is not known, that of p.rtv is known; --force=INPUT" concat no.rtv p.rtv n.rtv --in-order
absent no.rtv no.rtv.tmp
expect 3 "n.rtv: its start position is not known" concat no.rtv p.rtv n.rtv --in-order --force=p.rtv

# The dump, a log call a line.
expect 0 "" dump 03.rtv
sed -n 5p out | grep -qx "device_id: $id" || fail "dump: $(sed -n 5p out)"
[ "$(wc -l <out)" -eq $((13 + 2 * 3)) ] || fail "lines of a dump: $(wc -l <out)"
expect 1 "a.img: only rtv recordings can be dumped" dump a.img

# Tracks: the second frame of a sample is 0.574 m east and 0.557 m north of the start.
expect 0 "" sample t.rtv --frames 3 --size 64x64
expect 0 "" frames t.rtv --gpx t.gpx --geojson t.json
[ ! -s out ] || fail "a list beside the track"
grep -q '^<trkpt lat="48.137405038" lon="11.575507636"><ele>519.00</ele><time>2023-11-14T22:13:20.033000Z</time></trkpt>$' t.gpx || fail "gpx: $(cat t.gpx)"
grep -q '"type":"LineString","coordinates":\[\[11.575499978,48.137400001,519.00\],\[11.575507636,48.137405038,519.00\]' t.json || fail "geojson: $(cat t.json)"
expect 1 "t.gpx: it is already there" frames t.rtv --gpx t.gpx
expect 1 "a.img: an img holds no positions" frames a.img --gpx x.gpx
expect 1 "nosuch.txt: there is no such file" frames nosuch.txt --gpx x.gpx
expect 1 "tags.csv: its name has to end in .img or .rtv" frames tags.csv --gpx x.gpx
expect 2 "need a file each" frames t.rtv --gpx x.gpx --geojson x.gpx
expect 2 "standard output takes one" frames t.rtv --gpx - --json
expect 1 "no/x.json: cannot create it" frames t.rtv --gpx x.gpx --geojson no/x.json
absent x.gpx
ln -s t.rtv o.gpx.tmp
cp t.rtv kept.rtv
expect 0 "" frames t.rtv --gpx o.gpx
cmp t.rtv kept.rtv

# An id that is no plain hexadecimal text is not changed in silence.
sed 's/"camera_id" : "00ff"/"camera_id" : "00FFe"/' a.img >odd.img
expect 3 "odd.img: its device id is not hexadecimal text" cut odd.img x.img --range 0:1 --force
expect 3 "the length of the device id, which is padded to 24 bytes" convert a.img x.rtv
expect 3 "the exact text of the device id" convert odd.img y.rtv
