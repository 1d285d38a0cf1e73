#!/usr/bin/env bash
# Compares what the three DLLs of a Windows build export with the pinned lists, name by name, and looks
# that an import library stands beside each. Reads the files only; nothing of them is run.
#
#   tests/contract/check-windows-exports.sh BUILD_FOLDER
set -u -o pipefail

if [ $# -ne 1 ] || [ ! -d "$1" ]; then
  echo "usage: $0 BUILD_FOLDER" >&2
  exit 2
fi
build=$1
lists=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
prefix=x86_64-w64-mingw32
failed=0

fail() {
  echo "FAILED: $*"
  failed=1
}

# The table of names in the export section, with strings as people write them. The constructors and
# destructors of a class come in several forms of one name each.
exports_of() {
  "$prefix-objdump" -p "$1" |
    sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^[[:space:]]*\[ *[0-9]*\] *//p' |
    "$prefix-c++filt" |
    sed -E -e 's/\[abi:cxx11\]//g' \
      -e 's/std::(__cxx11::)?basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' \
      -e 's/std::(__cxx11::)?basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >/std::wstring/g' |
    LC_ALL=C sort -u
}

check_library() {
  local library=$1 list=$2 exported promised
  if [ ! -f "$build/$library.dll" ]; then
    fail "$build/$library.dll is missing"
    return
  fi
  if [ ! -f "$build/lib$library.dll.a" ]; then
    fail "the import library $build/lib$library.dll.a is missing"
  fi
  exported=$(exports_of "$build/$library.dll")
  promised=$(grep -v -e '^#' -e '^$' "$lists/$list" | LC_ALL=C sort -u)
  if [ -z "$exported" ] || [ -z "$promised" ]; then
    fail "$library: the list of its exports, or $list, is empty"
  elif ! diff --unchanged-line-format= --old-line-format='  promised, not there: %L' \
    --new-line-format='  leaves, not promised: %L' \
    <(printf '%s\n' "$promised") <(printf '%s\n' "$exported"); then
    fail "$library.dll does not export what $list says"
  else
    echo "$library.dll: $(printf '%s\n' "$exported" | wc -l) names, as promised"
  fi
}

check_library tvrscn_USBClient exports-windows.txt
check_library tvrscn_tevrautil exports-tevrautil-windows.txt
check_library tvrscn_TDSPClient exports-TDSPClient-windows.txt
exit "$failed"
