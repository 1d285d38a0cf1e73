#!/usr/bin/env bash
# Runs the Windows tests under Wine.
#
#   scripts/run-wine-tests.sh [BUILD_FOLDER] [PROGRAM...]
#
# BUILD_FOLDER is build/windows unless given; without names, all programs of its tests/programs.txt run.
# Wine gets a folder and a display of its own, both gone at the end. What a program says goes to standard
# output and to BUILD_FOLDER/test-output/PROGRAM.log; pictures of the dialogs are kept there too.
# GTEST_BRIEF=0 in the environment shows every test. The exit code is 0 when all programs passed.
set -uo pipefail

build=$(cd "${1:-build/windows}" && pwd) || exit 1
shift || true
programs=("$@")
[ ${#programs[@]} -gt 0 ] || mapfile -t programs < <(grep . "$build/tests/programs.txt")

output="$build/test-output"
mkdir -p "$output"
rm -f "$output"/dialog-*.png

private=$(mktemp -d "${TMPDIR:-/tmp}/tvrscn-wine-XXXXXX")
xvfb=
cleanUp() {
  timeout 20 wineserver -k >/dev/null 2>&1
  timeout 20 wineserver -w >/dev/null 2>&1
  [ -z "$xvfb" ] || kill "$xvfb" 2>/dev/null
  rm -rf "$private"
}
trap cleanUp EXIT

export WINEPREFIX="$private/prefix"
export WINEDEBUG=-all
# Nothing of this machine's desktop, and no offers to download anything.
export WINEDLLOVERRIDES="winemenubuilder.exe=d;mscoree=d;mshtml=d"
# The libraries stand in the build folder itself.
export WINEPATH="$build"
export TVRSCN_TEST_OUTPUT
TVRSCN_TEST_OUTPUT="Z:${output//\//\\}"

# Xvfb chooses a free display and says which.
mkfifo "$private/display"
Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$private/display" >"$private/xvfb.log" 2>&1 &
xvfb=$!
read -r -t 30 number <"$private/display" || { echo "FAILED: no display"; cat "$private/xvfb.log"; exit 1; }
export DISPLAY=":$number"

if ! timeout 120 wineboot -i >"$output/wineboot.log" 2>&1; then
  echo "FAILED: Wine cannot be prepared (the whole of it: $output/wineboot.log)"
  exit 1
fi
# There is no window manager. Wine would wait two seconds for one whenever a window comes or goes.
timeout 60 wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >>"$output/wineboot.log" 2>&1

status=0
for program in "${programs[@]}"; do
  log="$output/$program.log"
  start=$SECONDS
  timeout 180 wine "$build/tests/$program.exe" --gtest_brief="${GTEST_BRIEF:-1}" >"$log" 2>"$log.err"
  code=$?
  # Programs of Windows end their lines in two characters.
  sed -i 's/\r$//' "$log"
  cat "$log"
  echo "$program: exit code $code, $((SECONDS - start)) s"
  if [ "$code" -ne 0 ]; then
    status=1
    tail -n 20 "$log.err"
  fi
done
exit "$status"
