#!/bin/sh
# Runs the same jobs on a virtual scanner natively and, as a Windows program, under Wine, and
# compares their pages.
#
#   tests/windows/compare-pages.sh NATIVE_BUILD_FOLDER WINDOWS_BUILD_FOLDER [OUTPUT_FOLDER]
#
# Uses $WINEPREFIX where it is set and a prefix of its own where it is not. The pages stay in the
# output folder where one is named, which has to be empty or missing.
set -u
native=$1/tests/page_jobs
compare=$1/tests/compare_pages
windows=$2/tests/page_jobs.exe
for needed in "$native" "$compare" "$windows"; do
  if [ ! -f "$needed" ]; then
    echo "compare-pages: $needed is missing; build it first" >&2
    exit 2
  fi
done

private=$(mktemp -d "${TMPDIR:-/tmp}/tvrscn-pages-XXXXXX")
pages=${3:-$private/pages}
ownPrefix=
leave() {
  [ -z "$ownPrefix" ] || timeout 20 wineserver -k >/dev/null 2>&1
  rm -rf "$private"
}
trap leave EXIT
if [ -z "${WINEPREFIX:-}" ]; then
  export WINEPREFIX="$private/prefix"
  ownPrefix=yes
  timeout 120 wineboot -i >"$private/wineboot.log" 2>&1 || { cat "$private/wineboot.log"; exit 2; }
fi
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEPATH="$2"  # the libraries stand in the build folder itself
mkdir -p "$pages/linux" "$pages/windows"

failed=0
"$native" "$pages/linux" || failed=1
timeout 120 wine "$windows" "$(winepath -w "$pages/windows" 2>/dev/null)" || failed=1
"$compare" "$pages/linux" "$pages/windows" || failed=1

# The comparison itself has to notice a difference: a brighter page is not a darker one.
mkdir "$private/plain" "$private/other"
cp "$pages/linux/color-brighter-1.jpg" "$private/plain/page.jpg"
cp "$pages/linux/color-harder-1.jpg" "$private/other/page.jpg"
"$compare" "$private/plain" "$private/other" >"$private/self" 2>&1
if [ $? -ne 1 ]; then
  echo "compare-pages: the comparison takes different pages for the same"
  failed=1
fi
exit $failed
