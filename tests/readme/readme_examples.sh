#!/usr/bin/env bash
# readme_examples.sh README.md INCLUDE_DIR LIBRARY_DIR WORK_DIR
# Compiles and runs every ```c block of the README as the body of main()
# (see harness.h), in UTC, and checks that it prints, line by line, the
# results written in its comments as "=> result".
set -euo pipefail
readme=$1; inc=$2; lib=$3; work=$4
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"; mkdir -p "$work"
awk -v dir="$work" '
  /^```c$/ { n++; inblock = 1; file = sprintf("%s/example%d.body", dir, n); next }
  /^```$/ && inblock { inblock = 0; close(file); next }
  inblock { print > file }' "$readme"
count=0
for body in "$work"/example*.body; do
  name=$(basename "$body" .body)
  {
    echo "#include \"harness.h\""
    echo "int main(void) {"
    echo "  QWZEnv *env; QWZError *err;"
    echo "  if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS) return 1;"
    echo "  if (QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR) != QWZ_SUCCESS) return 1;"
    cat "$body"
    echo "  QWZHandleFree(env, QWZ_HTYPE_ENV);"
    echo "  return 0;"
    echo "}"
  } >"$work/$name.c"
  grep -o '=> .*' "$body" | sed -E 's/^=> //; s/ *\*\/ *$//' >"$work/$name.expected"
  cc -std=c99 -Wall -Wextra -Werror -Wno-unused-function -I"$here" -I"$inc" \
     -o "$work/$name" "$work/$name.c" -L"$lib" -lqwz -Wl,-rpath,"$lib"
  TZ=UTC "$work/$name" >"$work/$name.out"
  if ! diff -u "$work/$name.expected" "$work/$name.out"; then
    echo "README example $name: output differs from its comments" >&2
    exit 1
  fi
  count=$((count + 1))
done
[ "$count" -gt 0 ] || { echo "no C examples found in $readme" >&2; exit 1; }
echo "$count README examples print what their comments say"
