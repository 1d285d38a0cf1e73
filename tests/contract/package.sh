# For the checks that use the libraries as others do: the build is installed into a folder that goes
# with the check. Sourced with the system (linux, windows) and the build folder as arguments; Windows
# programs run under Wine, in the prefix that WINEPREFIX names.
#
# shellcheck shell=bash
# shellcheck disable=SC2034  # the variables are for the scripts that source it

if [ $# -ne 2 ] || [[ "$1" != linux && "$1" != windows ]] || [ ! -f "$2/CMakeCache.txt" ]; then
  echo "usage: $0 linux|windows BUILD_FOLDER" >&2
  exit 2
fi
system=$1
build=$(cd "$2" && pwd)
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/tvrscn-package-XXXXXX")
prefix=$work/prefix
background=
failed=0

end_background() {
  [ -n "$background" ] || return 0
  kill -INT "$background" 2>/dev/null
  # A program that does not heed is ended for good after ten seconds.
  for _ in $(seq 100); do
    kill -0 "$background" 2>/dev/null || break
    sleep 0.1
  done
  kill -KILL "$background" 2>/dev/null && fail "the program in the background had to be killed"
  wait "$background" 2>/dev/null
  background=
}

clean_up() {
  end_background
  rm -rf "$work"
}
trap clean_up EXIT

fail() {
  echo "FAILED: $*"
  failed=1
}

# must LOG COMMAND...: what everything else rests on; shows the log and ends the check when it fails.
must() {
  local log=$work/$1.log
  shift
  "$@" >"$log" 2>&1 && return 0
  echo "FAILED: $*"
  tail -n 40 "$log"
  exit 1
}

# run COMMAND...: a program of the system, at most a minute; lines end as on Linux.
run() {
  local status
  if [ "$system" = windows ]; then
    WINEDEBUG=-all WINEPATH="$(windows_path "$prefix/bin")" \
      timeout 60 wine "$@" >"$work/run.out" 2>"$work/run.err"
    status=$?
    sed -i 's/\r$//' "$work/run.out" "$work/run.err"
  else
    timeout 60 "$@" >"$work/run.out" 2>"$work/run.err"
    status=$?
  fi
  return $status
}

# A path of this system as Wine shows it to programs.
windows_path() {
  local path=$1
  printf '%s' "Z:${path//\//\\}"
}

# native_path PATH: as the programs under check take it.
native_path() {
  if [ "$system" = windows ]; then windows_path "$1"; else printf '%s' "$1"; fi
}

case $system in
  linux)
    compiler=g++
    program_suffix=
    # Programs that are linked into the folder find the libraries by this.
    export LD_LIBRARY_PATH=$prefix/lib
    export TVRSCN_DEVICE_PATH=$work/devices
    mkdir "$work/devices"
    ;;
  windows)
    compiler=x86_64-w64-mingw32-g++-posix
    program_suffix=.exe
    if [ -z "${WINEPREFIX:-}" ]; then
      echo "WINEPREFIX has to name a Wine prefix that is ready" >&2
      exit 2
    fi
    ;;
esac

must install cmake --install "$build" --prefix "$prefix"
