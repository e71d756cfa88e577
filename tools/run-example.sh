#!/usr/bin/env bash
# Builds the library (Release) and runs the example client program.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DQWZ_BUILD_TESTS=OFF -DQWZ_BUILD_EXAMPLES=ON
cmake --build build/release -j"$(nproc)"
echo "== the date family"
./build/release/examples/date_walkthrough
echo "== datetimes and intervals"
./build/release/examples/datetime_interval_walkthrough
