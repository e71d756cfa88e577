#!/usr/bin/env bash
# run_golden.sh GOLDEN QWZDT_BINARY [--update]
# A golden file is a transcript: each "$ " line is a shell command (the word
# qwzdt runs the binary under test), followed by what it printed: standard
# output as it is, standard error with "2> " in front of each line, and
# "[exit N]". Lines starting with "#" and blank lines between commands are
# kept as they are. The commands run in UTC unless they pass --tz.
# With --update the file is rewritten from the actual output: to add a test,
# write its "$ " line and run with --update, then read what it recorded.
set -uo pipefail
golden=$1; bin=$2; mode=${3:-}
bindir=$(mktemp -d); trap 'rm -rf "$bindir"' EXIT
ln -s "$(realpath "$bin")" "$bindir/qwzdt"
export PATH="$bindir:$PATH" TZ=UTC LC_ALL=C
unset QWZ_TRACE QWZ_TRACE_FILE
actual=$(mktemp); trap 'rm -rf "$bindir" "$actual"' EXIT
in_output=0
while IFS= read -r line || [ -n "$line" ]; do
  if [ "$in_output" = 1 ]; then
    # Expected output of the last command (regenerated above) runs up to its
    # "[exit N]" line, or up to the next command when that line is missing.
    case "$line" in
      '[exit '*']') in_output=0; continue ;;
      '$ '*) in_output=0 ;;
      *) continue ;;
    esac
  fi
  case "$line" in
    '$ '*)
      in_output=1
      printf '%s\n' "$line" >>"$actual"
      out=$(mktemp); err=$(mktemp)
      bash -c "${line#\$ }" >"$out" 2>"$err" </dev/null
      rc=$?
      cat "$out" >>"$actual"
      sed 's/^/2> /' "$err" >>"$actual"
      printf '[exit %d]\n' "$rc" >>"$actual"
      rm -f "$out" "$err"
      ;;
    *) printf '%s\n' "$line" >>"$actual" ;;
  esac
done <"$golden"
if [ "$mode" = "--update" ]; then
  cp "$actual" "$golden"
  exit 0
fi
if diff -u "$golden" "$actual"; then
  echo "golden transcript matches: $(grep -c '^\$ ' "$golden") commands"
else
  echo "golden transcript differs: $golden" >&2
  exit 1
fi
