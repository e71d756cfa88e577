#!/usr/bin/env bash
# Builds the libFuzzer targets (preset `fuzz`, clang, AddressSanitizer +
# UndefinedBehaviorSanitizer) and runs each one for SECONDS (default 60),
# starting from its seed corpus in fuzz/corpus/<target>/. Fails on the first
# crash, sanitizer report, leak or broken invariant; the input that caused
# it is left as build/fuzz/artifacts/<target>/crash-*.
#   tools/run-fuzz.sh [SECONDS] [TARGET...]
# With QWZ_FUZZ_RUNS=N a target also stops after N executions. The mutation
# seed is fixed (QWZ_FUZZ_SEED, default 1) so that a run can be repeated.
# The time zone is pinned: UTC for every target, and the datetime
# arithmetic target a second time in a zone with summer time.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-deps.sh
seconds=${1:-60}
shift || true
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake --preset fuzz "${launcher[@]}" >/dev/null
cmake --build build/fuzz --target fuzzers -j"$(nproc)"

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(date_text_fuzz datetime_text_fuzz zone_text_fuzz interval_text_fuzz
           datetime_array_fuzz interval_number_fuzz date_arith_fuzz datetime_arith_fuzz)
fi
runs=()
for t in "${targets[@]}"; do
  runs+=("$t UTC0")
  [ "$t" = datetime_arith_fuzz ] && runs+=("$t CET-1CEST,M3.5.0,M10.5.0/3")
done

summary=build/fuzz/summary.txt
: >"$summary"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
for run in "${runs[@]}"; do
  t=${run%% *}
  zone=${run#* }
  work=build/fuzz/corpus/$t
  artifacts=build/fuzz/artifacts/$t
  mkdir -p "$work" "$artifacts"
  log=build/fuzz/$t.${zone%%[-,]*}.log
  echo "== $t for ${seconds}s in TZ=$zone"
  if ! TZ=$zone "build/fuzz/fuzz/$t" -max_total_time="$seconds" -runs="${QWZ_FUZZ_RUNS:--1}" -timeout=10 -seed="${QWZ_FUZZ_SEED:-1}" \
      -print_final_stats=1 -artifact_prefix="$artifacts/" "$work" "fuzz/corpus/$t" \
      >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "FAILED: $t (TZ=$zone), log $log, input in $artifacts/"
    exit 1
  fi
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  cov=$(grep -E '^#[0-9]+' "$log" | tail -n 1 | sed -n 's/.* cov: \([0-9]*\).*/\1/p')
  printf '%-22s %-28s executions %12s  cov %s\n' "$t" "TZ=$zone" "$execs" "$cov" | tee -a "$summary"
done
echo "fuzz targets ran ${seconds}s each with no finding"
