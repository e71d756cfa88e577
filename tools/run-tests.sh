#!/usr/bin/env bash
# Builds and runs the whole test suite.
#   tools/run-tests.sh             optimised build with assertions (build/test)
#   tools/run-tests.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer,
#                                  leak detection on (build/asan)
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-deps.sh
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
