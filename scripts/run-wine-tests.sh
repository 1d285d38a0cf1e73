#!/usr/bin/env bash
# Runs the Windows tests under Wine, in a session of their own.
#
#   scripts/run-wine-tests.sh [BUILD_FOLDER] [PROGRAM...]
#
# BUILD_FOLDER is build/windows unless given; without names, all programs of its tests/programs.txt run.
# What a program says goes to standard output and to BUILD_FOLDER/test-output/PROGRAM.log; pictures of the
# dialogs are kept there too. GTEST_BRIEF=0 in the environment shows every test. The exit code is 0 when all
# programs passed.
set -uo pipefail
# shellcheck source=wine-session.sh
source "$(dirname "${BASH_SOURCE[0]}")/wine-session.sh"

build=$(cd "${1:-build/windows}" && pwd) || exit 1
programs=("${@:2}")
[ ${#programs[@]} -gt 0 ] || mapfile -t programs < <(grep . "$build/tests/programs.txt")

trap end_wine_session EXIT
start_wine_session || exit 1
use_windows_build "$build"
rm -f "$wine_output"/dialog-*.png

status=0
for program in "${programs[@]}"; do
  log="$wine_output/$program.log"
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
