#!/usr/bin/env bash
# rtv recordings through the tool: all versions, tags, and the way to img and back.
# Usage: rtv.sh PATH-OF-VELMAR-VIDEO
. "$(dirname "$0")/lib.sh"

expect 0 "" sample sample.img --frames 3 --size 96x64
expect 0 "" extract sample.img --output in
cat in/*.jpg >stream
(
  echo file,sensor_time_us,arrived_time_us
  for i in 0 1 2; do echo "frame_00000$i.jpg,$((1700000000000000 + 40000 * i)),$((1700000000035000 + 40000 * i))"; done
) >times.csv
printf 'index,x,y,relative_distance,speed,direction\n0,0,0,0,1388,359\n1,-56,8388607,56,1388,0\n2,-112,3,112,1388,1\n' >tags.csv
paste -d, tags.csv <(printf 'vehicle_speed,abs_active,wheel_tick_left_front\n13.875,0,\n,,7\n,1,\n') >tags04.csv

id=000102030405060708090a0b0c0d0e0f1011121314151617
for version in 02 03 04; do
  tags=tags.csv
  [ $version != 04 ] || tags=tags04.csv
  expect 0 "" create $version.rtv in --times times.csv --rtv-version $version --tags $tags \
    --device-id $id --start-time 2023-11-14T22:13:19Z --frame-format RGB
  expect 0 "" info $version.rtv --json
  grep -q "^{\"file\":\"$version.rtv\",\"container\":\"rtv\",\"version\":\"0.${version#0}\",\"frames_count\":3,\"frames_max\":3,\"width\":96,\"height\":64,\"frame_format\":\"RGB\",\"frame_codec\":\"JPG\",\"undistorted\":false,\"device_id\":\"$id\",\"start_time_us\":1699999999000000,\"duration_us\":80000,\"camera_params\":{},\"extended_info\":{}" out || fail "info: $(cat out)"
  expect 0 "" cat $version.rtv
  cmp out stream
  expect 0 "" frames $version.rtv --json
  grep -q "^{\"index\":1,\"sensor_time_us\":1700000000040000,\"arrived_time_us\":1700000000040000,\"size\":[0-9]*,\"time_flag_ms\":1040,\"x\":-56,\"y\":8388607,\"z\":0,\"relative_distance\":56,\"speed\":1388,\"direction\":0" out || fail "frames: $(cat out)"

  # The table of the frames is one to record by.
  "$tool" frames $version.rtv --csv >table.csv
  expect 0 "" create copy.rtv in --times table.csv --tags table.csv --rtv-version $version \
    --start-time 2023-11-14T22:13:19Z --force
  "$tool" frames copy.rtv --csv | cmp - table.csv

  # What an img cannot hold is said; what it can comes out as it went in.
  expect 3 "back.img: it does not hold positions, distances, speeds and headings" convert $version.rtv back.img --force
  expect 1 "strict.img: it could not hold positions" convert $version.rtv strict.img --strict
  expect 0 "" convert back.img again.rtv --rtv-version $version --force
  for other in back.img again.rtv; do
    expect 0 "" cat $other
    cmp out stream
    expect 0 "" frames $other --csv
    cut -d, -f1-4 out >columns
    "$tool" frames $version.rtv --csv | cut -d, -f1-4 | cmp - columns
    "$tool" info $other --json | grep -q "\"frame_format\":\"RGB\".*\"device_id\":\"$id\"" || fail "info of $other"
  done
done
absent strict.img strict.img.tmp
expect 0 "" frames 04.rtv --json
sed -n 1p out | grep -q '"can":{"vehicle_speed":13.875,"abs_active":0}}$' || fail "can: $(cat out)"
sed -n 2p out | grep -q '"can":{"wheel_tick_left_front":7}}$' || fail "can: $(cat out)"

# Between the versions nothing is lost upwards.
expect 0 "" convert 02.rtv up.rtv --rtv-version 04
expect 3 "down.rtv: it does not hold CAN signals" convert 04.rtv down.rtv --rtv-version 02
cmp <("$tool" frames 02.rtv --csv) <("$tool" frames down.rtv --csv) || fail "down"

# From img to rtv: what gets lost is listed.
echo '{"a": 1}' >params.json
sed 's/000,/001,/' times.csv >uneven.csv
expect 0 "" create rich.img in --times uneven.csv --camera-params params.json --extended-info params.json --undistorted
expect 3 "rich.rtv: it does not hold arrival times, microseconds of the capture times, camera parameters, extended information" convert rich.img rich.rtv
"$tool" info rich.rtv --json | grep -q '"undistorted":true' || fail "undistorted"

# A sample has it all; it is the same every time.
for file in s.rtv t.rtv; do expect 0 "" sample $file --frames 2 --size 64x64; done
cmp s.rtv t.rtv

# Logs: what create records of one, edit makes of a recording without, in every version; nothing is
# written if a line is wrong.
cat >log.csv <<'CSV'
Clock;lat;lng;alt;SPEED_KMH;Heading;SWA
14.11.2023 23:13:20;48,1374;11,5755;519,5;36,0;359;1,5
14.11.2023 23:13:21;48,1375;11,5757;520,5;72,0;1;
CSV
map=(--log log.csv --log-map 'time=Clock:%d.%m.%Y %T' --log-map steering_wheel_angle=SWA:deg
  --log-offset -0.02s)
export TZ=CET-1
for version in 02 03 04; do
  case $version in 02) lost="heights, CAN signals" ;; 03) lost="CAN signals" ;; *) lost="" ;; esac
  status=3 said="logged.rtv: it does not hold $lost"
  [ -n "$lost" ] || status=0 said="time from Clock (%d.%m.%Y %T)"
  expect $status "$said" create logged.rtv in --times times.csv --rtv-version $version "${map[@]}" --force
  "$tool" create edited.rtv in --times times.csv --rtv-version $version --force
  expect $status "log.csv: time from" edit edited.rtv "${map[@]}" --dry-run
  expect $status "log.csv: time from" edit edited.rtv "${map[@]}"
  grep -q "^tags: as recorded -> 3 of 3 frames changed" out || fail "edit --log: $(cat out)"
  cmp logged.rtv edited.rtv
  expect 0 "" verify edited.rtv
done
# 20 and 60 ms behind the first row: 0.3 and 0.9 m east, 0.22 and 0.67 m north, 0.2 and 0.6 m/s.
"$tool" frames logged.rtv --csv | cut -d, -f2,6-11 | tail -n +2 >got
printf '1700000000000000,30,22,2,0,1020,359\n1700000000040000,89,67,6,0,1060,359\n1700000000080000,149,111,10,0,1100,359\n' |
  diff - got
expect 0 "" frames logged.rtv --gpx track.gpx
expect 0 "frames without a value, of 3: x 1, y 1, z 1" create tracked.rtv in --fps 25 \
  --start-time 2023-11-14T22:13:20.04Z --log track.gpx
sed 's/520,5;72/520,5;-72/' log.csv >wrong.csv
cp edited.rtv before.rtv
expect 1 "wrong.csv: line 3: SPEED_KMH cannot be -72,0 km/h" edit edited.rtv --log wrong.csv "${map[@]:2}"
cmp edited.rtv before.rtv
expect 1 "wrong.csv: line 3: " create x.rtv in --fps 5 --log wrong.csv "${map[@]:2}"
expect 1 "log.csv: it goes from " create x.rtv in --fps 5 --start-time 0 "${map[@]}"
expect 2 "--log goes by" edit sample.img --log log.csv --shift-time +1s
expect 2 "create: --log needs an .rtv" create x.img in --fps 5 --log log.csv
expect 2 "there is no field sped; did you mean speed?" create x.rtv in --fps 5 --log log.csv --log-map sped=v
expect 2 "give one of them" create x.rtv in --fps 5 --log log.csv --tags tags.csv
expect 2 "--log-max-age is a duration" create x.rtv in --fps 5 --log log.csv --log-max-age 5
absent x.rtv x.rtv.tmp x.img
unset TZ

# Several recordings in one list: what is wrong with one hides no other.
expect 0 "" frames 04.rtv back.img --range 2:3 --columns file,index,speed_km_h,abs_active --csv
diff out - <<<$'file,index,speed_km_h,abs_active\n04.rtv,2,49.968,1\nback.img,2,,'
expect 1 "03.rtv: --where: none of the frames has abs_active" frames 03.rtv 04.rtv --where 'abs_active == 1' --columns file
grep -q '^04.rtv *$' out || fail "found beside a failure: $(cat out)"
expect 1 "2 recordings: none of the frames fulfils --where" frames 03.rtv 04.rtv --where 'speed_m_s > 30'
expect 1 "missing.rtv: there is no such file" frames missing.rtv 04.rtv --hash
expect 0 "" frames 04.rtv --hash --columns index,xxh3_128,time --csv
[ "$(head -1 out)" = index,xxh3_128,time ] || fail "columns: $(head -1 out)"
expect 2 "--hash: 04.rtv is neither xxh3 nor sha256" frames --hash 04.rtv
expect 2 "--columns: there is no spede; did you mean speed?" frames 04.rtv --columns spede
expect 2 "--gpx and --geojson are of one recording" frames 03.rtv 04.rtv --gpx x.gpx
told 1 "standard output: cannot write to it" bash -c '"$0" frames 03.rtv 04.rtv --csv >/dev/full' "$tool"
absent x.gpx

# Scenes by what frames know: 1388 hundredths a second are 49.968 km/h.
expect 0 "" cut 04.rtv scene.rtv --where 'speed_km_h == 49.968 && !(index == 1)'
grep -q '^scene-0001.rtv: frames 0 to 0, 2023-11-14T22:13:20.000000Z to ' out || fail "cut: $(cat out)"
cmp <("$tool" frames 04.rtv --csv --where 'index == 2' | cut -d, -f2-) <("$tool" frames scene-0002.rtv --csv | cut -d, -f2-)
expect 1 "scene-0001.rtv: it is already there" cut 04.rtv scene.rtv --where 'index > 1'
expect 0 "" cut 04.rtv 's_%02d.rtv' --where 'index != 1' --join 80ms
[ "$(frames_in s_01.rtv)" -eq 3 ] || fail "joined: $(frames_in s_01.rtv)"
absent s_02.rtv scene.rtv
expect 1 "back.img: --where: none of the frames has speed_m_s" cut back.img x.img --where 'speed_m_s > 2'
expect 1 "none of the frames fulfils --where" export 04.rtv x.avi --where 'speed_m_s > 20'
expect 2 "--where: character 1: speed needs a unit: speed_m_s" cat missing.rtv --where 'speed > 20'
expect 2 "--join" cut 04.rtv x.rtv --join 1s
expect 2 "--every" cut 04.rtv x.rtv --where index --every 2
absent x.img x.avi x.rtv x-0001.rtv

# Streams keep the default version; the clock of a version 02 begins in 2015.
expect 0 "" create stream.rtv - --fps 25 --start-time 2023-11-14T22:13:20Z <stream
expect 0 "" cat stream.rtv
cmp out stream
for i in $(seq 800); do cat stream; done >long
expect 3 "slow.rtv: an rtv holds 65535 frames and 24 days at the most; the rest is left out" create slow.rtv - --fps 0.001 <long
[ "$(frames_in slow.rtv)" -eq 2148 ] || fail "frames in 24 days: $(frames_in slow.rtv)"
expect 1 "x.rtv: version 02 of rtv holds no start before 2015" create x.rtv in --fps 5 --start-time 0 --rtv-version 02
expect 1 "x.rtv: frame 0 was captured before the start" create x.rtv in --times times.csv --start-time 2023-11-14T22:13:21Z

# A clock that goes back by an hour is kept, one that is a month ahead is refused. What another
# recorder has stored as before the start is named before it turns into another time.
for shift in -3600 2592000; do
  awk -F, -v OFS=, -v by=$shift 'NR == 3 { $2 += by * 1000000; $3 = $2 } { print }' OFMT=%.0f CONVFMT=%.0f times.csv >$shift.csv
done
expect 0 "" create back.rtv in --times -3600.csv --force
[ "$("$tool" frames back.rtv --csv | cut -d, -f2 | tr '\n' ' ')" = "$(cut -d, -f2 ./-3600.csv | tr '\n' ' ')" ] || fail "an hour back: $("$tool" frames back.rtv --csv)"
expect 1 "x.rtv: frame 1 was captured before the start, or more than 24 days after it" create x.rtv in --times 2592000.csv
cp 03.rtv past.rtv
printf '\200\356\36\377' | dd of=past.rtv bs=1 seek=$((72 + 36)) conv=notrunc status=none
misread="a time before the start or more than 24 days after it, which readers misread"
expect 3 "past.rtv: frame 1 is copied with another time: it has $misread" convert past.rtv past.img
expect 1 "times before the start" convert past.rtv x.img --strict
expect 0 "" cut past.rtv kept.rtv --range 1:3
"$tool" frames kept.rtv --json | grep -q '"time_flag_ms":-14750080' || fail "time of a cut frame: $("$tool" frames kept.rtv --json)"
expect 3 "past.rtv: frame 1 is copied with another time" concat both.rtv past.rtv back.rtv --force=past.rtv
expect 3 "past.rtv: frame 1 is recovered with $misread" recover past.rtv found.rtv
expect 1 "x.rtv: an rtv holds 65535 frames at the most, not 65536" create x.rtv $(yes in/frame_000000.jpg | head -65536) --fps 5
expect 3 "less.rtv: it does not hold CAN signals" create less.rtv in --fps 5 --tags tags04.csv
sed 's/^/odd,/' tags.csv >odd.csv
expect 0 "odd.csv: columns that are not read: odd" create odd.rtv in --fps 5 --tags odd.csv
expect 2 "--rtv-version needs an .rtv" create x.img in --fps 5 --rtv-version 03
expect 2 "--camera-params: an rtv holds none" create x.rtv in --fps 5 --camera-params params.json
expect 2 "--undistorted: version 02 of rtv cannot say so" create x.rtv in --fps 5 --rtv-version 02 --undistorted
absent x.rtv x.rtv.tmp x.img

# What info says of a start position makes the same again; what does not fit exactly is said.
place() { "$tool" info "$1" --json | sed 's/.*"lng_deg":\([^,]*\),"lat_deg":\([^,]*\),"alt_m":\(.*\)}}/\1,\2,\3/'; }
located() { expect "$1" "$2" create "$3" in --fps 5 --start-time 0 --rtv-version "$4" --start-position "$5" --force; }
for position in 11.5755,48.1374,519.37 180,-89.99999,-3.5 -0.00000012,0.00000021,0; do
  located 0 "" one.rtv 04 "$position"
  located 0 "" two.rtv 04 "$(place one.rtv)"
  cmp one.rtv two.rtv
done
located 3 "one.rtv: its start position is 520 m high, the nearest to 519.63 that its version holds" one.rtv 03 8,47,519.63
[ "$(place one.rtv)" = 8.000000026,46.999999965,520.00 ] || fail "start position: $(place one.rtv)"

# A full disk: what was recorded of a stream is complete, files can be read again.
told 1 "the frames recorded so far are in full.rtv (" limited 2500 create full.rtv - --fps 25 \
  < <(for i in $(seq 400); do cat stream; done)
[ "$(frames_in full.rtv)" -gt 10 ] || fail "frames on a full disk"
