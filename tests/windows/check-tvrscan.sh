#!/usr/bin/env bash
# Runs the same commands with the native tvrscan and with tvrscan.exe under Wine: the same exit code, the
# same pages with the same names, and the same words, but for what is the system's own (paths, ids,
# sizes of files, times).
#
#   tests/windows/check-tvrscan.sh NATIVE_BUILD WINDOWS_BUILD
#
# Uses the Wine session of its caller (WINEPREFIX, DISPLAY).
set -uo pipefail
native=$(cd "$1" && pwd)/tvrscan
windows=$(cd "$2" && pwd)/tvrscan.exe
: "${WINEPREFIX:?needs a Wine session; see scripts/wine-session.sh}"
export NO_COLOR=1

work=$(mktemp -d "${TMPDIR:-/tmp}/tvrscn-check-XXXXXX")
trap 'rm -rf "$work"' EXIT
checked=0
failed=0

# Takes the system's own out of a text: line ends, paths and ids, sizes and times, and the reminder that
# comes when a busy machine has been silent for long.
neutral() {
  tr -d '\r' | sed -E \
    -e 's#\\\\#/#g; s#\\#/#g' \
    -e 's#"(instance_id|endpoint)":"[^"]*"#"\1":""#g' \
    -e 's#"bytes":[0-9]+#"bytes":N#g' \
    -e 's#[0-9.]+ (KiB|MiB|bytes?)#N \1#g; s#, [0-9.]+ s$#, T s#' \
    -e '/nothing has happened for [0-9]+ s .*: still waiting/d' \
    -e "s#Z:##g; s#$work/(native|windows)#WORK#g"
}

# run NATIVE|WINDOWS FOLDER ARGUMENT...: leaves out, err and code in the folder.
run() {
  local program=("$native") folder=$2
  [ "$1" = windows ] && program=(timeout 100 wine "$windows")
  mkdir -p "$folder"
  shift 2
  (cd "$folder" && "${program[@]}" "$@" >out 2>err; echo $? >code)
  for text in out err; do neutral <"$folder/$text" >"$folder/$text.neutral"; done
}

# same NAME ARGUMENT...: one command on both systems.
same() {
  local name=$1 a=$work/native/$1 b=$work/windows/$1 difference=
  shift
  run native "$a" "$@"
  run windows "$b" "$@"
  for text in code out.neutral err.neutral; do
    cmp -s "$a/$text" "$b/$text" || difference+=$'\n'"$(diff "$a/$text" "$b/$text")"
  done
  [ "$(ls "$a/pages" 2>/dev/null)" = "$(ls "$b/pages" 2>/dev/null)" ] || difference+=$'\n'"other pages"
  checked=$((checked + 1))
  if [ -n "$difference" ]; then
    failed=$((failed + 1))
    printf 'DIFFERENT: %s (tvrscan %s)%s\n' "$name" "$*" "$difference"
  fi
}

# expect NAME CODE: the exit code of a command that same() ran.
expect() {
  checked=$((checked + 1))
  if [ "$(cat "$work/windows/$1/code")" != "$2" ]; then
    failed=$((failed + 1))
    echo "WRONG EXIT CODE: $1: $(cat "$work/windows/$1/code") instead of $2"
  fi
}

small=(scan --virtual hp --resolution 75 --size 100x80mm --out pages)
same version --version
same help --help
same exit-codes help exit-codes
same models models
same model models 'holly 520'
same sizes help sizes
same faults virtual hp --fault help
same flatbed "${small[@]}"
expect flatbed 0
same json "${small[@]}" --json --mode gray
same feeder "${small[@]}" --feeder 3 --sides two --name 'page-%03d' --quiet
expect feeder 0
[ "$(ls "$work/windows/feeder/pages" | wc -l)" -eq 6 ] || { failed=$((failed + 1)); echo "not six pages"; }
same jam "${small[@]}" --feeder 3 --fault paper-jam=2
expect jam 5
same cover "${small[@]}" --feeder 2 --fault cover-open=1
expect cover 6
same no-paper "${small[@]}" --feeder 2 --fault no-paper=1
expect no-paper 7
same cancelled "${small[@]}" --feeder 2 --fault cancelled=2
expect cancelled 8
same busy "${small[@]}" --fault busy@window
expect busy 4
same warming-up "${small[@]}" --fault warming-up
expect warming-up 11
same stall "${small[@]}" --fault stall@read --timeout 1
expect stall 12
same lowend-faults virtual lowend --fault help
low=(scan --virtual lowend --resolution 75 --out pages)
same lowend "${low[@]}" --size 100x80mm
expect lowend 0
same lowend-bw "${low[@]}" --feeder 3 --mode bw --json
expect lowend-bw 0
[ "$(ls "$work/windows/lowend-bw/pages")" = "$(printf 'Image_%d.tif\n' 1 2 3)" ] ||
  { failed=$((failed + 1)); echo "not three TIFF pages"; }
same lowend-unicode scan --virtual lowend --resolution 75 --size a5 --out 'pages/Blätter 用紙'
expect lowend-unicode 0
same lowend-jam "${low[@]}" --feeder 2 --fault paper-jam
expect lowend-jam 5
same lowend-cancelled "${low[@]}" --fault cancelled
expect lowend-cancelled 8
same lowend-no-answer "${low[@]}" --fault empty@status
expect lowend-no-answer 9
same lowend-refused "${low[@]}" --fault 'refuse=no toner'
expect lowend-refused 11
same lowend-silent "${low[@]}" --fault silent-end --timeout 1
expect lowend-silent 12
same lowend-ranges ranges --virtual lowend --json
expect lowend-ranges 0
same qz-faults virtual qz --fault help
qz=(scan --virtual qz --resolution 75 --size 100x80mm --out pages)
same qz "${qz[@]}"
expect qz 0
same qz-bw "${qz[@]}" --feeder 2 --sides two --mode bw --brightness 20 --json
expect qz-bw 0
same qz-jam "${qz[@]}" --feeder 2 --fault paper-jam=2
expect qz-jam 9
same qz-busy "${qz[@]}" --fault busy@read
expect qz-busy 4
same qz-prohibited "${qz[@]}" --fault 'status@read=35*1'
expect qz-prohibited 11
same qz-stall "${qz[@]}" --fault stall@scan --timeout 1
expect qz-stall 12
same store-help help store
same store-template store --print-template
expect store-template 0
same store-unknown store 999
expect store-unknown 2
same bad-size scan --virtual hp --size a44 --out pages
expect bad-size 2
same no-device scan --device VID_FFFF --out pages
expect no-device 3
same ranges ranges --virtual hp
expect ranges 13

echo "$checked checked, $failed different"
[ "$failed" -eq 0 ]
