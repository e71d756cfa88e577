#!/usr/bin/env bash
# tests/packages/deb_test.sh [BUILD_DIR]
# Builds the Debian packages (libqwz1, libqwz-dev, qwzdt) with CPack,
# installs them into this machine with dpkg -i, builds the C client from what
# they installed alone (pkg-config and find_package), runs it, runs qwzdt and
# shows its manual page, then removes the packages again. Needs root (CI).
set -euo pipefail
src=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$src/build/deb}
if [ "$(id -u)" -ne 0 ]; then
  echo "deb_test: needs root to install packages; skipped" >&2
  exit 0
fi
export DEBIAN_FRONTEND=noninteractive
need=()
command -v man >/dev/null || need+=(man-db)
command -v dpkg-shlibdeps >/dev/null || need+=(dpkg-dev)
if [ ${#need[@]} -gt 0 ]; then
  apt-get update -qq && apt-get install -y -qq "${need[@]}" >/dev/null
fi

cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
      -DQWZ_BUILD_TESTS=OFF -DQWZ_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" >/dev/null
rm -f "$build"/*.deb
(cd "$build" && cpack -G DEB >/dev/null)
debs=("$build"/libqwz[0-9]*.deb "$build"/libqwz-dev_*.deb "$build"/qwzdt_*.deb)
for d in "${debs[@]}"; do
  test -f "$d"
  echo "== $(basename "$d")"; dpkg-deb -c "$d" | awk '{print "   " $6}'
done

work=$(mktemp -d)
cleanup() {
  dpkg -r qwzdt libqwz-dev libqwz1 >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT
# Some minimal images exclude manual pages from dpkg installs; this test
# wants to see the page, so it asks for them back.
dpkg -i --path-include='/usr/share/man/*' "${debs[@]}" >/dev/null

# A client from the installed files alone.
cc -std=c99 -Wall -Wextra -Werror -o "$work/client_pc" "$src/tests/install/client.c" \
   $(pkg-config --cflags --libs qwz)
"$work/client_pc"
cmake -S "$src/tests/install/find_package" -B "$work/fp" >/dev/null
cmake --build "$work/fp" >/dev/null
"$work/fp/client"

# The tool and its page.
test "$(command -v qwzdt)" = /usr/bin/qwzdt
test "$(TZ=UTC qwzdt date add-days 2024-02-28 1)" = "2024-02-29 00:00:00"
qwzdt --version
MANPAGER=cat MANWIDTH=80 man qwzdt | grep -q 'qwzdt - dates, datetimes and intervals'
MANPAGER=cat MANWIDTH=80 man 3 qwz | grep -q 'qwz - dates, datetimes and intervals'
echo "man qwzdt and man 3 qwz show their pages"

dpkg -r qwzdt libqwz-dev libqwz1 >/dev/null
! command -v qwzdt >/dev/null
echo "deb packages test passed"
