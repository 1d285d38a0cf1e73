#!/usr/bin/env bash
# Builds tvrscan and scans with it from virtual scanners: real page images that went the whole
# road, from device tree to files, into the folder demo-pages (or the one given).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
out=${1:-demo-pages}

scripts/install-packages.sh --build
if [ ! -e build/linux/build.ninja ]; then
  # A machine without the test libraries still gets its demo.
  tests=ON benchmarks=ON
  [ -e /usr/include/gtest/gtest.h ] || tests=OFF
  [ -e /usr/include/benchmark/benchmark.h ] || benchmarks=OFF
  cmake --preset linux -DTVRSCN_BUILD_TESTS=$tests -DTVRSCN_BUILD_BENCHMARKS=$benchmarks >/dev/null
fi
cmake --build --preset linux --target tvrscan >/dev/null
tvrscan=build/linux/tvrscan

run() {
  printf '\n$ tvrscan %s\n' "$*"
  "$tvrscan" "$@"
}

mkdir -p "$out"
run scan --virtual hp --resolution 300 --mode color --size a4 --out "$out/flatbed"
run scan --virtual hp --feeder 2 --sides two --resolution 200 --mode gray --size a4 \
  --out "$out/feeder" --name 'sheet-%02d'
run scan --virtual hp --resolution 300 --mode bw --size a5 --background on --out "$out/black-and-white"
run scan --virtual lowend --feeder 3 --mode bw --resolution 200 --size a4 --out "$out/lowend"
run scan --virtual qz --feeder 2 --sides two --mode bw --resolution 200 --size a4 --out "$out/qz"
printf '\nThe pages:\n'
find "$out" -name '*.jpg' -o -name '*.tif' | sort | xargs ls -l
