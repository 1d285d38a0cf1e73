# shellcheck shell=bash
# Sourced by scripts that run Windows programs: a Wine of our own for the length of a run.
#
#   start_wine_session     a private prefix, prepared once, and a display without a window manager;
#                          exports WINEPREFIX, WINEDEBUG, WINEDLLOVERRIDES, LC_ALL and DISPLAY
#   use_windows_build DIR  makes the libraries of a build folder found, and names in wine_output the
#                          folder where its tests leave pictures
#   end_wine_session       ends all of it and removes the prefix; call it from an EXIT trap
#
# The first and the last may be called when there is nothing to do. What the preparation says goes to wineboot.log in the
# private folder, and is shown when it fails.

wine_private=
wine_xvfb=
wine_output=

start_wine_session() {
  [ -z "$wine_private" ] || return 0
  wine_private=$(mktemp -d "${TMPDIR:-/tmp}/tvrscn-wine-XXXXXX") || return 1
  export WINEPREFIX="$wine_private/prefix"
  export WINEDEBUG=-all
  # Names of files have the characters that people give them, whatever this machine is set to.
  export LC_ALL=C.UTF-8
  # Nothing of this machine's desktop, and no offers to download anything.
  export WINEDLLOVERRIDES="winemenubuilder.exe=d;mscoree=d;mshtml=d"

  # Xvfb chooses a free display and says which.
  local number
  mkfifo "$wine_private/display"
  Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$wine_private/display" \
    >"$wine_private/xvfb.log" 2>&1 &
  wine_xvfb=$!
  if ! read -r -t 30 number <"$wine_private/display"; then
    echo "no display for Wine:"
    cat "$wine_private/xvfb.log"
    return 1
  fi
  export DISPLAY=":$number"

  # The server stays for the whole session: a program that starts while the server of the last one is
  # going away would fail.
  mkdir -p "$WINEPREFIX"
  if ! timeout 20 wineserver -p >"$wine_private/wineserver.log" 2>&1; then
    echo "Wine's server cannot be started:"
    cat "$wine_private/wineserver.log"
    return 1
  fi

  if ! timeout 120 wineboot -i >"$wine_private/wineboot.log" 2>&1; then
    echo "Wine cannot be prepared:"
    tail -n 40 "$wine_private/wineboot.log"
    return 1
  fi
  # Without a window manager Wine would wait two seconds for one whenever a window comes or goes.
  timeout 60 wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f \
    >>"$wine_private/wineboot.log" 2>&1
}

use_windows_build() {
  local build
  build=$(cd "$1" && pwd)
  export WINEPATH="$build"
  wine_output="$build/test-output"
  mkdir -p "$wine_output"
  export TVRSCN_TEST_OUTPUT="Z:${wine_output//\//\\}"
}

end_wine_session() {
  [ -n "$wine_private" ] || return 0
  timeout 20 wineserver -k >/dev/null 2>&1
  timeout 20 wineserver -w >/dev/null 2>&1
  [ -z "$wine_xvfb" ] || kill "$wine_xvfb" 2>/dev/null
  rm -rf "$wine_private"
  wine_private=
  wine_xvfb=
}
