#!/usr/bin/env bash
# Builds everything and passes all tests: formatting and lint, the native suite, the Windows libraries and
# their tests under Wine, the native suite under AddressSanitizer with UndefinedBehaviorSanitizer, some
# fuzzing, and what has threads under ThreadSanitizer. Ends with one line, "N passed, N failed". Logs
# stay in build/logs.
#
# In the whole run the tests of the core, which need nothing of the system, run sanitized only, and the
# tests of a stage, which mostly wait, run beside the build of the next.
#
#   ./test.sh            all of it
#   ./test.sh linux      only the named stages: lint linux windows sanitize tsan fuzz, and
#                        tidy, which is not part of the whole run: clang-tidy over all native files
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1
# shellcheck source=scripts/wine-session.sh
source scripts/wine-session.sh

stages=("$@")
[ ${#stages[@]} -eq 0 ] && stages=(lint linux windows sanitize tsan fuzz)
wanted() { [[ " ${stages[*]} " == *" $1 "* ]]; }

passed=0
failed=0
logs=$PWD/build/logs
mkdir -p "$logs"
say() { printf '== %s  [%ds]\n' "$*" "$SECONDS"; }

scripts/install-packages.sh || exit 1

# The tests make and delete many thousand small files; in memory that costs seconds, on disk minutes.
if [ -w /dev/shm ]; then
  TMPDIR=$(mktemp -d /dev/shm/tvrscn-test-XXXXXX)
  export TMPDIR
fi
declare -A beside=()
clean_up() {
  [ ${#beside[@]} -eq 0 ] || kill "${beside[@]}" 2>/dev/null
  [[ "${TMPDIR:-}" == /dev/shm/* ]] && rm -rf "$TMPDIR"
}
trap clean_up EXIT

export LSAN_OPTIONS="suppressions=$PWD/tests/support/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1"

# A check that is one thing: passes or fails as its command does.
check() {
  local name=$1 log="$logs/${1// /-}.log"
  shift
  if "$@" >"$log" 2>&1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: $name (the whole of it: $log)"
    tail -n 40 "$log"
  fi
}

# build PRESET TARGET...: all targets without names.
build() {
  local preset=$1 log="$logs/build-$1.log" target=() options=(-DTVRSCN_BUILD_TESTS=ON)
  shift
  # Reading headers once saves a third of the time. Where gcc optimises it sees phantoms in such headers,
  # so it has them for the tests alone.
  case "$preset" in
    linux)
      options+=(-DTVRSCN_BUILD_BENCHMARKS=ON -DTVRSCN_PRECOMPILE=TESTS -DTVRSCN_TEST_CORE=ON)
      # They run sanitized.
      if wanted sanitize; then options+=(-DTVRSCN_TEST_CORE=OFF); fi
      ;;
    windows) options+=(-DTVRSCN_PRECOMPILE=TESTS) ;;
    sanitize | fuzz | tsan) options+=(-DTVRSCN_PRECOMPILE=ALL) ;;
  esac
  for name in "$@"; do target+=(--target "$name"); done
  # demo.sh may have configured without tests and benchmarks.
  if { cmake --preset "$preset" "${options[@]}" && cmake --build --preset "$preset" "${target[@]}"; } >"$log" 2>&1; then
    return 0
  fi
  failed=$((failed + 1))
  echo "FAILED: build of $preset (the whole of it: $log)"
  grep -E '(error|FAILED|Error)[: ]' "$log" | head -n 30
  return 1
}

# Whole jobs mostly wait for their devices, so their programs run in parts beside one another; under Wine
# they share a registry and a mutex and stay in one.
parts_of() {
  if [ -z "$1" ] && [[ $2 == e2e_tests || $2 == tool_tests ]]; then echo 3; else echo 1; fi
}

# run_programs PRESET RUNNER LANES PROGRAM...: test programs, so many at a time; each counts its own
# tests, and one that ends without a summary has failed.
run_programs() {
  local preset=$1 runner=$2 lanes=$3 name log good bad parts part runs=()
  shift 3
  if [ $# -eq 0 ]; then
    failed=$((failed + 1))
    echo "FAILED: there are no test programs of $preset"
    return
  fi
  for name in "$@"; do
    parts=$(parts_of "$runner" "$name")
    for ((part = 0; part < parts; part++)); do runs+=("$name $part $parts"); done
  done
  printf '%s\n' "${runs[@]}" | xargs -P "$lanes" -L 1 sh -c \
    "GTEST_SHARD_INDEX=\$1 GTEST_TOTAL_SHARDS=\$2 \
       timeout 300 $runner build/$preset/tests/\$0 --gtest_brief=1 >'$logs/$preset-'\$0-\$1.log 2>&1
     echo \"exit code \$?\" >>'$logs/$preset-'\$0-\$1.log"
  for run in "${runs[@]}"; do
    read -r name part parts <<<"$run"
    log="$logs/$preset-$name-$part.log"
    sed -i 's/\r$//' "$log"
    good=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) tests\{0,1\}\.$/\1/p' "$log" | tail -n 1)
    bad=$(sed -n 's/^\[  FAILED  \] \([0-9]*\) tests\{0,1\}, listed below:$/\1/p' "$log" | tail -n 1)
    # In brief, failed tests are not counted out but told one by one.
    [ -n "$bad" ] || bad=$(grep -cE '^\[  FAILED  \] [^ ]+ \([0-9]+ ms\)|^\[  FAILED  \] .*GetParam' "$log")
    good=${good:-0}
    if [ "$bad" -eq 0 ] && { [ "$good" -eq 0 ] || ! grep -qx 'exit code 0' "$log"; }; then bad=1; fi
    passed=$((passed + good))
    failed=$((failed + bad))
    if [ "$bad" -ne 0 ]; then
      echo "FAILED: $name of $preset: $bad failed (the whole of it: $log)"
      grep -vE '^\[( RUN|       OK)' "$log" | tail -n 60
    fi
  done
}

# beside NAME FUNCTION: runs FUNCTION, which counts as all do, beside what comes next.
beside() {
  (
    passed=0
    failed=0
    "$2"
    echo "$passed $failed" >"$logs/$1.count"
  ) >"$logs/$1.out" 2>&1 &
  beside[$1]=$!
}

# collect NAME: waits for it, tells what it told, and counts what it counted.
collect() {
  local good=0 bad=1
  wait "${beside[$1]}"
  unset "beside[$1]"
  cat "$logs/$1.out"
  [ ! -f "$logs/$1.count" ] || read -r good bad <"$logs/$1.count"
  passed=$((passed + good))
  failed=$((failed + bad))
}

native_tests() {
  mapfile -t programs <build/linux/tests/programs.txt
  run_programs linux "" 4 "${programs[@]}"
  check "contract driver" tests/contract/check-installed-driver.sh linux build/linux
  check "example driver" tests/contract/check-example-driver.sh linux build/linux
}

windows_tests() {
  trap end_wine_session EXIT
  check "exports of the DLLs" tests/contract/check-windows-exports.sh build/windows
  if ! start_wine_session; then
    failed=$((failed + 1))
    echo "FAILED: Wine session"
    return
  fi
  mapfile -t programs <build/windows/tests/programs.txt
  use_windows_build build/windows
  run_programs windows wine 1 "${programs[@]/%/.exe}"
  check "contract driver on Windows" tests/contract/check-installed-driver.sh windows build/windows
  check "example driver on Windows" tests/contract/check-example-driver.sh windows build/windows
  check "alerts on Windows" tests/alerts/check-windows-alerts.sh build/linux build/windows
  check "tvrscan on both systems" tests/windows/check-tvrscan.sh build/linux build/windows
  check "pages of both systems" tests/windows/compare-pages.sh build/linux build/windows "$wine_output/pages"
}

sanitized_tests() {
  mapfile -t programs <build/fuzz/tests/programs.txt
  run_programs fuzz "" 4 "${programs[@]}"
}

threaded=(platform_tests alerts_tests status_server_tests e2e_tests)
thread_sanitized_tests() {
  run_programs tsan "" 4 "${threaded[@]}"
}

if wanted lint; then
  say "lint"
  mapfile -t sources < <(git ls-files -co --exclude-standard -- '*.cpp' '*.h')
  check "clang-format" clang-format --dry-run -Werror "${sources[@]}"
  check "man page" mandoc -T lint -W warning tools/tvrscan/tvrscan.1
fi

if wanted tidy; then
  say "clang-tidy"
  # The files of the Windows side alone have no place in a native build.
  mapfile -t product < <(git ls-files -co --exclude-standard -- 'src/*.cpp' 'virtual/*.cpp' 'tools/*.cpp' |
    grep -v /windows/)
  cmake --preset linux -B build/tidy >"$logs/tidy-configure.log" 2>&1
  tidy() {
    printf '%s\0' "${product[@]}" | xargs -0 -n 3 -P "$(nproc)" clang-tidy --quiet -p build/tidy
  }
  check "clang-tidy" tidy
fi

rm -f "$logs"/*.count

if wanted linux || wanted windows; then
  say "native build"
  build linux || exit 1
  if wanted linux; then beside native native_tests; fi
fi

if wanted windows; then
  say "Windows build"
  if build windows; then beside windows windows_tests; fi
fi

# clang's sanitizers see more than gcc's, and its build is that of the fuzz targets as well.
if wanted sanitize; then
  say "sanitized build"
  if build fuzz; then beside sanitized sanitized_tests; fi
  # What others build for tests of their own.
  if build sanitize tvrscn_USBClient tvrscan; then
    check "sanitized tvrscan" build/sanitize/tvrscan --version
  fi
fi

if wanted tsan; then
  say "thread-sanitized build"
  if build tsan "${threaded[@]}"; then beside threads thread_sanitized_tests; fi
fi

# fuzz_target NAME: a short run from the kept corpus; what it finds stays in build/fuzz.
fuzz_target() {
  mkdir -p "build/fuzz/corpus/$1"
  "build/fuzz/tests/$1_fuzzer" -max_total_time=20 -timeout=20 -rss_limit_mb=3000 -print_final_stats=1 \
    -artifact_prefix=build/fuzz/ "build/fuzz/corpus/$1" "tests/fuzz/corpus/$1"
}

# fuzz_verdict PID LOG
fuzz_verdict() {
  wait "$1"
  local code=$?
  cat "$2"
  return "$code"
}

if wanted fuzz; then
  say "fuzzing"
  fuzzing=()
  fuzzers=(hp_answers lowend_documents lowend_stream qz_replies qz_settings_line ipp_answer)
  if build fuzz "${fuzzers[@]/%/_fuzzer}"; then
    for fuzzer in "${fuzzers[@]}"; do
      fuzz_target "$fuzzer" >"$logs/$fuzzer-fuzzer.log" 2>&1 &
      fuzzing+=($!)
    done
    for number in "${!fuzzers[@]}"; do
      check "fuzzing ${fuzzers[number]}" fuzz_verdict "${fuzzing[number]}" "$logs/${fuzzers[number]}-fuzzer.log"
    done
  fi
fi

for name in native windows sanitized threads; do
  [ -n "${beside[$name]:-}" ] || continue
  say "waiting for the tests: $name"
  collect "$name"
done

say "done"
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
