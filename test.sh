#!/usr/bin/env bash
# Builds everything and passes all tests: formatting and lint, the native suite, the same suite under
# AddressSanitizer with UndefinedBehaviorSanitizer, what has threads under ThreadSanitizer, and a minute
# of fuzzing. Ends with one line, "N passed, N failed". Logs stay in build/logs.
#
#   ./test.sh            all of it
#   ./test.sh linux      only the named stages: lint linux sanitize tsan fuzz
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1

stages=("$@")
[ ${#stages[@]} -eq 0 ] && stages=(lint linux sanitize tsan fuzz)
wanted() { [[ " ${stages[*]} " == *" $1 "* ]]; }

passed=0
failed=0
logs=build/logs
mkdir -p "$logs"
say() { printf '== %s  [%ds]\n' "$*" "$SECONDS"; }

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

# A test program: counts its own tests. One that ends without a summary has failed.
run_program() {
  local program=$1 log=$2 good bad
  "$program" --gtest_brief=1 >"$log" 2>&1
  local status=$?
  good=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) tests\{0,1\}\.$/\1/p' "$log" | tail -n 1)
  bad=$(sed -n 's/^\[  FAILED  \] \([0-9]*\) tests\{0,1\}, listed below:$/\1/p' "$log" | tail -n 1)
  good=${good:-0}
  bad=${bad:-0}
  if [ "$status" -ne 0 ] && [ "$bad" -eq 0 ]; then bad=1; fi
  if [ "$good" -eq 0 ] && [ "$bad" -eq 0 ]; then bad=1; fi
  passed=$((passed + good))
  failed=$((failed + bad))
  if [ "$bad" -ne 0 ]; then
    echo "FAILED: $program: $bad failed (the whole of it: $log)"
    grep -vE '^\[( RUN|       OK)' "$log" | tail -n 60
  fi
}

# build PRESET TARGET...: all targets without names.
build() {
  local preset=$1 log="$logs/build-$1.log" target=()
  shift
  for name in "$@"; do target+=(--target "$name"); done
  if { cmake --preset "$preset" && cmake --build --preset "$preset" "${target[@]}"; } >"$log" 2>&1; then
    return 0
  fi
  failed=$((failed + 1))
  echo "FAILED: build of $preset (the whole of it: $log)"
  grep -E 'error|FAILED|Error' "$log" | head -n 30
  return 1
}

run_programs() {
  local preset=$1 name
  shift
  for name in "$@"; do run_program "build/$preset/tests/$name" "$logs/$preset-$name.log"; done
}

export LSAN_OPTIONS="suppressions=$PWD/tests/support/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1"

scripts/install-packages.sh || exit 1

# The tests make and delete many thousand small files; in memory that costs seconds, on disk minutes.
if [ -w /dev/shm ]; then
  TMPDIR=$(mktemp -d /dev/shm/tvrscn-test-XXXXXX)
  export TMPDIR
  trap 'rm -rf "$TMPDIR"' EXIT
fi

mapfile -t sources < <(git ls-files -co --exclude-standard -- '*.cpp' '*.h')
mapfile -t product < <(git ls-files -co --exclude-standard -- 'src/*.cpp' 'virtual/*.cpp' 'tools/*.cpp')

if wanted linux || wanted lint; then
  say "native build"
  build linux || wanted linux || exit 1
fi

# clang-tidy is the longest of the checks and needs nobody's attention: it fills, at low priority, what
# the stages leave of the machine, and is waited for at the end.
tidy=
if wanted lint; then
  say "lint"
  check "clang-format" clang-format --dry-run -Werror "${sources[@]}"
  check "man page" mandoc -T lint -W warning tools/tvrscan/tvrscan.1
  printf '%s\0' "${product[@]}" | nice -n 10 xargs -0 -n 3 -P "$(nproc)" \
    clang-tidy --quiet -p build/linux >"$logs/clang-tidy.log" 2>&1 &
  tidy=$!
fi

if wanted linux; then
  say "native tests"
  mapfile -t programs <build/linux/tests/programs.txt
  run_programs linux "${programs[@]}"
fi

if wanted sanitize; then
  say "sanitized build and tests"
  if build sanitize; then
    mapfile -t programs <build/sanitize/tests/programs.txt
    run_programs sanitize "${programs[@]}"
  fi
fi

if wanted tsan; then
  say "thread-sanitized build and tests"
  threaded=(platform_tests virtual_tests e2e_tests)
  build tsan "${threaded[@]}" && run_programs tsan "${threaded[@]}"
fi

if wanted fuzz; then
  say "fuzzing"
  if build fuzz hp_answers_fuzzer; then
    mkdir -p build/fuzz/corpus
    check "fuzzing the HP answers" build/fuzz/tests/hp_answers_fuzzer -max_total_time=60 \
      -timeout=20 -rss_limit_mb=3000 -print_final_stats=1 \
      -artifact_prefix=build/fuzz/ build/fuzz/corpus tests/fuzz/corpus/hp_answers
  fi
fi

if [ -n "$tidy" ]; then
  say "waiting for clang-tidy"
  if wait "$tidy"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: clang-tidy (the whole of it: $logs/clang-tidy.log)"
  fi
  grep -E '(warning|error):' "$logs/clang-tidy.log" | sort -u | head -n 30
fi

say "done"
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
