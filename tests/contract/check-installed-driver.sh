#!/usr/bin/env bash
# Compiles the contract driver with nothing but what is installed, by a plain call of the compiler, and
# runs it: every exported class is made, every public operation called, and the layout compared, while
# no device is there.
#
#   tests/contract/check-installed-driver.sh linux|windows BUILD_FOLDER
set -u -o pipefail
# shellcheck source=package.sh
source "$(dirname "${BASH_SOURCE[0]}")/package.sh"

driver=$work/contract_driver$program_suffix
flags=(-std=c++17 -Wall -Wextra -Wpedantic -Werror)
libraries=(-ltvrscn_USBClient -ltvrscn_tevrautil -ltvrscn_TDSPClient)
if [ "$system" = windows ]; then
  # The compiler's own runtime goes into the program; import libraries are not looked for among
  # static ones.
  flags+=(-static)
  libraries=(-Wl,-Bdynamic "${libraries[@]}" -Wl,-Bstatic)
fi
# The driver's own headers are found from its folder; none of the tree's include folder is named.
must compile "$compiler" "${flags[@]}" -I "$prefix/include" -I "$root/tests/contract" \
  "$root"/tests/contract/driver/*.cpp -o "$driver" \
  -L "$prefix/lib" "${libraries[@]}"

mkdir "$work/files"
run "$driver" "$(native_path "$work/files")"
status=$?
cat "$work/run.out"
if [ "$status" -ne 0 ]; then
  fail "the contract driver ended with $status"
  cat "$work/run.err"
elif ! grep -q '^[1-9][0-9]* checked, 0 failed$' "$work/run.out"; then
  fail "the contract driver did not come to its end"
fi
exit "$failed"
