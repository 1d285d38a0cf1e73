#!/usr/bin/env bash
# Builds examples/driver as its readers do, from the installed package, and runs it against virtual
# scanners in a process of their own: a job of three pages, one that breaks off, a device that is not
# there.
#
#   tests/contract/check-example-driver.sh linux|windows BUILD_FOLDER
set -u -o pipefail
# shellcheck source=package.sh
source "$(dirname "${BASH_SOURCE[0]}")/package.sh"

configure=(-Dtvrscn_DIR="$prefix/lib/cmake/tvrscn" -DCMAKE_BUILD_TYPE=Release)
if [ "$system" = windows ]; then
  configure+=(--toolchain "$root/cmake/mingw-w64.cmake" -DCMAKE_EXE_LINKER_FLAGS=-static)
fi
must configure cmake -S "$root/examples/driver" -B "$work/driver" -G Ninja "${configure[@]}"
must build cmake --build "$work/driver"
driver=$work/driver/driver$program_suffix

# start_scanner OPTION...: sets hardware_id.
start_scanner() {
  local command=("$prefix/bin/tvrscan$program_suffix" virtual hp "$@")
  [ "$system" = windows ] && command=(env WINEDEBUG=-all wine "${command[@]}")
  "${command[@]}" >"$work/scanner.out" 2>"$work/scanner.err" &
  background=$!
  for _ in $(seq 300); do
    hardware_id=$(tr -d '\r' <"$work/scanner.out" | sed -n 's/^hardware id: //p')
    # The endpoint is the second line; with it the scanner is ready.
    grep -q '^endpoint: ' "$work/scanner.out" && [ -n "$hardware_id" ] && return 0
    kill -0 "$background" 2>/dev/null || break
    sleep 0.1
  done
  cat "$work/scanner.out" "$work/scanner.err"
  echo "FAILED: the virtual scanner does not come up"
  exit 1
}

# expect NAME STATUS LINES HARDWARE_ID: runs the driver and compares its result and its lines.
expect() {
  local name=$1 status=$2 lines=$3 actual
  run "$driver" "$4" "$(native_path "$work/pages-$name")"
  actual=$?
  if [ "$actual" -ne "$status" ]; then fail "$name: ended with $actual instead of $status"; fi
  if ! diff <(printf '%s' "$lines") "$work/run.out"; then fail "$name: other lines than expected"; fi
  if [ "$failed" -ne 0 ]; then cat "$work/run.err" "$work/scanner.err"; fi
}

# expect_pages NAME COUNT: so many JPEG files of their full length, and nothing else.
expect_pages() {
  local count=0 page
  for page in "$work/pages-$1"/*; do
    [ -e "$page" ] || continue
    count=$((count + 1))
    if [ "$(head -c 2 "$page" | od -An -tx1)" != " ff d8" ] ||
      [ "$(tail -c 2 "$page" | od -An -tx1)" != " ff d9" ]; then
      fail "$1: $page is no whole JPEG"
    fi
  done
  [ "$count" -eq "$2" ] || fail "$1: $count files instead of $2"
}

start_scanner --feeder 3
expect three-pages 0 "state: waiting for the device
state: transferring
page: Image_1.JPG
page: Image_2.JPG
page: Image_3.JPG
state: done
" "$hardware_id"
expect_pages three-pages 3
end_background

start_scanner --feeder 3 --fault paper-jam=2
expect broken-off 1 "state: waiting for the device
state: transferring
page: Image_1.JPG
state: the device or the link to it failed
" "$hardware_id"
expect_pages broken-off 1
end_background

expect no-device 3 "" "VID_0000&PID_FFFF"
expect_pages no-device 0

[ "$failed" -eq 0 ] && echo "the example driver scans: 3 jobs as expected"
exit "$failed"
