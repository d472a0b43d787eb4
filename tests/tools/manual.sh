#!/usr/bin/env bash
# The manual page and the completions know what --help does, and every example in --help runs.
# Usage: manual.sh PATH-OF-VELMAR-VIDEO FOLDER-OF-MANUAL-AND-COMPLETIONS
folder=$(realpath "$2")
. "$(dirname "$0")/lib.sh"
set -o pipefail

commands_of() {  # commands_of [GROUP]
  "$tool" "$@" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]\+\) .*/\1/p'
}
commands=$(commands_of)
groups=$(for command in $commands; do [ -z "$(commands_of $command)" ] || echo $command; done)
[ "$groups" = catalog ] || fail "groups: $groups"
names() {  # all commands, those in groups behind the group's name
  printf '%s\n' "$commands"
  for group in $groups; do commands_of $group | sed "s/^/$group /"; done
}
options() {  # options [COMMAND...]: their long names, as --help has them
  "$tool" "$@" --help | sed -n 's/^  \(-[h0],\)\?\(--[a-z-]*\).*/\2/p' | sort
}
same() {  # same WHAT COMMAND: standard input names the command's options
  diff <(grep -o -- '^--[a-z-]*' | sort -u) <(options $2) >err || fail "$1 of $2"
}

# The manual: what a section names, and what all commands have.
section() { sed -n "/^\.S[HS] $1\$/,/^\.S[HS]/p" "$folder/velmar-video.1"; }
named_in() {
  section "$1" | grep --no-group-separator -A 1 '^\.TP' | sed 's/\\-/-/g; s/\\f[BIR]//g; s/^-[h0], //' | grep '^--' || true
}
while read -r command; do
  { named_in "$command"; named_in OPTIONS | grep -v -- --version; } | same "manual" "$command"
done < <(names)
diff <(named_in OPTIONS | grep -o -- '^--[a-z-]*' | sort) <(options) >err || fail "manual's options"
! section create | grep -qw cat || fail "sections of the manual"

# bash: as a user who presses the tab key; the last word is the one to complete.
. "$folder/velmar-video"
tab() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  _velmar_video || true  # outside an editor compopt fails
  printf '%s\n' "${COMPREPLY[@]}"
}
[ "$(tab velmar-video c | tr '\n' ' ')" = "create cat cut concat convert catalog " ] || fail "bash: commands"
[ "$(tab velmar-video extract --as = p | tr '\n' ' ')" = "png ppm " ] || fail "bash: choices"
[ -z "$(tab velmar-video create x.img '')" ] || fail "bash: files are left to the shell"
for group in $groups; do
  diff <(tab velmar-video $group '' | grep -v -- ^-) <(commands_of $group) >err || fail "bash: $group"
done
while read -r command; do tab velmar-video --quiet $command -- | same bash "$command"; done < <(names)

if command -v fish >/dev/null; then
  complete_in_fish() { fish -c "source '$folder/velmar-video.fish'; complete -C '$*'" | cut -f1; }
  diff <(complete_in_fish 'velmar-video ' | sort) <(tr ' ' '\n' <<<"$commands" | sort) >err ||
    fail "fish: commands"
  for group in $groups; do
    diff <(complete_in_fish "velmar-video $group ") <(commands_of $group | sort) >err ||
      fail "fish: $group"
  done
  while read -r command; do
    complete_in_fish "velmar-video $command --" </dev/null | same fish "$command"
  done < <(names)
fi

if command -v zsh >/dev/null; then
  # Without an editor around them its builtins cannot run: these say what they were given.
  said_in_zsh() {
    zsh -fc '_arguments() {
        [[ $1 == -C ]] || { print -rl -- "$@"; return }
        shift words
        (( $#words )) && state=argument || state=command
      }
      _describe() { print -rl -- "${(@P)2}" }
      words=(velmar-video $=1); source "$2"' - "$1" "$folder/_velmar-video"
  }
  for group in "" $groups; do
    diff <(said_in_zsh "$group" | cut -d: -f1) <(commands_of $group) >err ||
      fail "zsh: commands $group"
  done
  while read -r command; do
    [[ " $groups " != *" $command "* ]] || continue  # behind it is a command
    said_in_zsh "$command" | sed 's/^([^)]*)//; s/^\*//' | same zsh "$command"
  done < <(names)
fi

recoverable() {  # whether all that was sent is in the temporary file
  velmar-video recover "$1.tmp" "probe.$1" --force >/dev/null 2>&1
  [ "$(frames_in "probe.$1" 2>/dev/null)" -eq 5 ]
}

# The examples, each in a folder with what it speaks of.
mkdir bin inputs
ln -s "$tool" bin/velmar-video
PATH=$work/bin:$PATH
(
  cd inputs
  velmar-video --quiet sample drive.img --size 160x120 --fps 10 --frames 130
  velmar-video --quiet extract drive.img --output frames --range 0:5
  velmar-video frames drive.img --range 0:5 --csv |
    awk -F, 'NR == 1 { print "file,sensor_time_us,arrived_time_us" }
      NR > 1 { printf "frame_%06d.jpg,%s,%s\n", $1, $2, $3 }' >times.csv
  printf '%s\n' index,x,y,vehicle_speed 0,0,0,9.5 1,10,95, 2,20,9,9 3,0,0, 4,40,380,9.75 >tags.csv
  velmar-video --quiet sample drive.rtv --size 160x120 --frames 5 --rtv-version 04
  velmar-video --quiet cut drive.img morning.img --range 0:5
  velmar-video --quiet cut drive.img evening.img --range 5:10
  cp drive.img copy.img
  mkfifo pipe
  for file in drive.img drive.rtv; do
    velmar-video create "$file" - --fps 10 --force <pipe &
    exec 3>pipe
    cat frames/*.jpg >&3
    wait_for recoverable "$file"
    kill -KILL $!
    wait $! || true  # the next one would write to a reader that is ending
    exec 3>&-
  done
  rm pipe probe.*
  mkdir day parts
  cp drive.rtv drive.img.tmp drive.img.tmp.index day
  velmar-video catalog add fleet.db day
  velmar-video split drive.rtv parts/part.rtv --duration 100ms
  velmar-video export drive.img drive.mp4
) 2>err || fail "the examples' inputs"

run_example() {  # run_example COMMAND LINE
  local status=0 limit=()
  rm -rf play
  cp -r inputs play
  cd play
  case $1 in
    create | sample | '') rm drive.img* drive.rtv* ;;
    recover) rm drive.img drive.rtv ;;
    convert) rm drive.rtv* ;;
    view) limit=(timeout --preserve-status 3) ;;  # it ends when it is told to
  esac
  "${limit[@]}" bash -o pipefail -c "$2" >../out 2>../err </dev/null || status=$?
  cd ..
  # Status 3: an rtv does not hold all that an img does, nor its header before it is finished.
  case $1$status in
    *0 | convert3 | recover3) ;;
    *) fail "status $status: $2" ;;
  esac
}
examples() { "$tool" "$@" --help | sed -n '/^Example:\|For a start:$/,/^$/s/^  //p'; }
while read -r command; do
  [ -n "$(examples $command)" ] || fail "$command has no example"
  while read line; do  # a backslash at its end joins the next one
    case $line in
      *ffmpeg*) command -v ffmpeg >/dev/null || continue ;;
    esac
    run_example "$command" "$line"
  done < <(examples $command)
done < <(echo; names)
