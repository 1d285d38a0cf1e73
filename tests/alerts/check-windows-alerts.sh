#!/usr/bin/env bash
# The tests of the status library against real servers once more, asked from the DLL under Wine.
#
#   tests/alerts/check-windows-alerts.sh NATIVE_BUILD WINDOWS_BUILD
#
# Uses the Wine session of its caller (WINEPREFIX, WINEPATH).
set -euo pipefail
native=$(cd "$1" && pwd)
windows=$(cd "$2" && pwd)
: "${WINEPREFIX:?needs a Wine session; see scripts/wine-session.sh}"
[ -f "$windows/tests/status_probe.exe" ] || {
  echo "there is no status_probe.exe in $windows/tests; build it first" >&2
  exit 1
}
work=$(mktemp -d "${TMPDIR:-/tmp}/tvrscn-alerts-XXXXXX")
trap 'rm -rf "$work"' EXIT

# Wine's own processes outlive the program and would hold its output open, were that not a file.
cat >"$work/probe" <<EOF
#!/usr/bin/env bash
timeout 60 wine '$windows/tests/status_probe.exe' "\$@" >'$work/output' 2>'$work/errors'
code=\$?
cat '$work/output'
cat '$work/errors' >&2
exit \$code
EOF
chmod +x "$work/probe"
export TVRSCN_STATUS_PROBE="$work/probe"
# The word to go on ahead of an answer is passed over by Windows; Wine takes it for the answer. Tests of
# StatusClient ask from the native library.
export GTEST_FILTER="-HostileServer.WordToGoOnIsPassedOver:StatusClient.*"
timeout 120 "$native/tests/status_server_tests" --gtest_brief="${GTEST_BRIEF:-1}"
