#!/usr/bin/env bash
# Builds the library and qwzdt (Release, build/release), then takes a short
# tour of the three families from the shell. Every line below is one call of
# the library; `qwzdt --help` lists them all.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DQWZ_BUILD_TESTS=OFF >/dev/null
cmake --build build/release -j"$(nproc)" >/dev/null
export PATH="$PWD/build/release/tools/qwzdt:$PATH" TZ=UTC
# Shows a command as it would be typed (words with blanks in quotes), then
# runs it; a failing command is part of the tour.
run() {
  local w line='$'
  for w in "$@"; do
    case "$w" in *' '*|*'|'*) line+=" '$w'" ;; *) line+=" $w" ;; esac
  done
  printf '%s\n' "$line"
  "$@" || true
}
cet='CET-1CEST,M3.5.0,M10.5.0/3'

echo "== dates (QWZDate)"
run qwzdt date add-months 2024-01-31 1
run qwzdt date next-day 2024-01-01 monday
run qwzdt date days-between 2024-03-01 2024-02-28
run qwzdt date to-text '2024-05-17 10:20:30' DD.MM.YYYY
run qwzdt date from-text 17.05.2024 DD.MM.YYYY
run qwzdt --tz "$cet" date add-days '2024-03-30 12:00:00' 1
echo "== datetimes (QWZDateTime)"
run qwzdt datetime add '2024-03-15 10:30:00 +02:00' '1 02:03:04'
run qwzdt datetime diff '2024-03-30 12:00:00 +01:00' '2024-03-30 12:00:00 -05:00'
run qwzdt datetime compare '2024-03-15 10:00:00 +02:00' '2024-03-15 09:00:00 +01:00'
run qwzdt datetime to-text '2024-05-17 10:20:30.123 -05:30' 'DD.MM.YYYY HH24:MI:SS.FF3 TZH:TZM'
echo "== intervals (QWZInterval)"
run qwzdt interval add +01-11 +00-01
run qwzdt interval mul '1 12:00:00' 2
run qwzdt interval from-number ds 1.5
run qwzdt interval to-number +01-06
echo "== format models and failures"
run qwzdt format explain 'DD.MM.YYYY HH24:MI'
run qwzdt date add-days 2024-02-30 1
echo "== a column of values in one process"
echo "$ printf '%s\\n' 2024-02-28 2023-12-31 2024-02-30 | qwzdt batch date add-days - 1"
printf '%s\n' 2024-02-28 2023-12-31 2024-02-30 | qwzdt batch date add-days - 1 || true
