#!/usr/bin/env bash
# bench/qwzdt_batch_vs_date.sh [QWZDT] [LINES]
# Converts LINES (default 1,000,000) generated datetimes to DD.MM.YYYY twice
# in the same run: with `qwzdt batch` (one process, the library's text
# functions) and with GNU `date -f`, and prints the lines per second of each
# and their ratio. Both run in UTC on the same input; the outputs must agree.
set -euo pipefail
qwzdt=${1:-build/release/tools/qwzdt/qwzdt}
lines=${2:-1000000}
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
export TZ=UTC LC_ALL=C
# Deterministic dates from 1971 to 2037 (inside GNU date's and mktime's range).
awk -v n="$lines" 'BEGIN { s = 12345;
  for (i = 0; i < n; i++) {
    s = (s * 1103515245 + 12345) % 2147483648; y = 1971 + s % 67;
    s = (s * 1103515245 + 12345) % 2147483648; m = 1 + s % 12;
    s = (s * 1103515245 + 12345) % 2147483648; d = 1 + s % 28;
    s = (s * 1103515245 + 12345) % 2147483648; t = s % 86400;
    printf "%04d-%02d-%02d %02d:%02d:%02d\n", y, m, d, t / 3600, (t / 60) % 60, t % 60 } }' \
  >"$work/in.txt"

# Each program runs ROUNDS times (default 5), taking turns, and its best
# round counts: on a shared machine a single round can land on a slow spell
# for one program and not the other.
rounds=${ROUNDS:-5}
[ -n "${EPOCHREALTIME:-}" ] || { echo "bash 5 or later is needed (EPOCHREALTIME)" >&2; exit 2; }
sed "s/.*/date to-text '&' DD.MM.YYYY/" "$work/in.txt" >"$work/cmds.txt"
best_q=1e9 best_g=1e9 best_f=1e9
lower() { awk -v a="$1" -v b="$2" 'BEGIN { print (b < a ? b : a) }'; }
# Times are read from the shell's own clock (EPOCHREALTIME, bash 5):
# `$(date +%s.%N)` would add a process start, several milliseconds, to every
# measured interval.
for ((r = 0; r < rounds; r++)); do
  t0=$EPOCHREALTIME; "$qwzdt" batch date to-text - DD.MM.YYYY <"$work/in.txt" >"$work/qwzdt.txt"; t1=$EPOCHREALTIME
  date -f "$work/in.txt" +%d.%m.%Y >"$work/date.txt"; t2=$EPOCHREALTIME
  cmp -s "$work/qwzdt.txt" "$work/date.txt" || { echo "outputs differ" >&2; exit 1; }
  # The same lines as full commands, one operation per line.
  t3=$EPOCHREALTIME; "$qwzdt" batch <"$work/cmds.txt" >"$work/qwzdt2.txt"; t4=$EPOCHREALTIME
  cmp -s "$work/qwzdt2.txt" "$work/date.txt" || { echo "outputs differ" >&2; exit 1; }
  best_q=$(lower "$best_q" "$(awk -v a="$t0" -v b="$t1" 'BEGIN { print b - a }')")
  best_g=$(lower "$best_g" "$(awk -v a="$t1" -v b="$t2" 'BEGIN { print b - a }')")
  best_f=$(lower "$best_f" "$(awk -v a="$t3" -v b="$t4" 'BEGIN { print b - a }')")
done

awk -v n="$lines" -v r="$rounds" -v tq="$best_q" -v tg="$best_g" -v tf="$best_f" 'BEGIN {
  q = n / tq; g = n / tg; f = n / tf;
  printf "lines                          %d (best of %d rounds each)\n", n, r;
  printf "qwzdt batch (template)         %10.0f lines/s  (%.3f s)\n", q, tq;
  printf "qwzdt batch (full commands)    %10.0f lines/s  (%.3f s)\n", f, tf;
  printf "GNU date -f                    %10.0f lines/s  (%.3f s)\n", g, tg;
  printf "ratio template / date          %10.2f x\n", q / g;
  printf "ratio full commands / date     %10.2f x\n", f / g }'
