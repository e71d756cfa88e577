#!/usr/bin/env bash
# Builds and runs the whole test suite.
#   tools/run-tests.sh             optimised build with assertions (build/test)
#   tools/run-tests.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer,
#                                  leak detection on (build/asan)
#   tools/run-tests.sh --threads   the test files that run threads, under
#                                  ThreadSanitizer (build/tsan)
#   tools/run-tests.sh --valgrind  every test under valgrind memcheck: no
#                                  error and no definite or indirect leak
#                                  (build/valgrind)
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-deps.sh
if [ "${1:-}" = "--threads" ]; then
  cmake --preset tsan
  targets=$(grep -rl 'std::thread' tests/unit --include='*_test.cpp' |
            sed -E 's#tests/unit/([^/]+)/([^/]+)\.cpp#\1_\2#' | sort)
  # shellcheck disable=SC2086
  cmake --build build/tsan -j"$(nproc)" --target $targets
  for t in $targets; do
    echo "== $t"
    TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 "build/tsan/tests/$t" --gtest_brief=1
  done
  echo "thread tests passed under ThreadSanitizer"
  exit 0
fi
if [ "${1:-}" = "--valgrind" ]; then
  # Every test executable (and the test discovery) runs through valgrind as
  # the target's emulator; scripts run by cmake -P are not wrapped.
  dir=build/valgrind
  vg="valgrind;--error-exitcode=99;--leak-check=full;--errors-for-leak-kinds=definite,indirect"
  vg="$vg;--show-leak-kinds=definite,indirect;--track-origins=yes;--quiet"
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQWZ_BUILD_TESTS=ON \
    -DQWZ_BUILD_EXAMPLES=OFF "-DCMAKE_CROSSCOMPILING_EMULATOR=$vg"
  cmake --build "$dir" -j"$(nproc)"
  start=$(date +%s)
  ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" --timeout 1500
  echo "valgrind run took $(( $(date +%s) - start )) s"
  exit 0
fi
if [ "${1:-}" = "--sanitize" ]; then
  dir=build/asan
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Debug -DQWZ_SANITIZE=ON -DQWZ_BUILD_TESTS=ON
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
else
  dir=build/test
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQWZ_BUILD_TESTS=ON
fi
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j"$(nproc)"
