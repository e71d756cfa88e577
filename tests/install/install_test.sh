#!/usr/bin/env bash
# install_test.sh BUILD_DIR SOURCE_DIR SCRATCH
# Installs the built library into SCRATCH/prefix, then builds and runs the C
# client through pkg-config and through find_package(qwz), and runs the
# text-reading client against the installed header.
set -euo pipefail
build=$1; src=$2; scratch=$3
rm -rf "$scratch"; mkdir -p "$scratch"
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
test -f "$prefix/include/qwz/qwz.h"
test -e "$prefix/lib/libqwz.so"
test -f "$prefix/lib/pkgconfig/qwz.pc"

export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
cc -std=c99 -Wall -Wextra -Werror -o "$scratch/client_pc" "$src/client.c" $(pkg-config --cflags --libs qwz)
LD_LIBRARY_PATH=$prefix/lib "$scratch/client_pc"
cc -std=c99 -Wall -Wextra -Werror -o "$scratch/text_reading" "$src/text_reading_client.c" $(pkg-config --cflags --libs qwz)
LD_LIBRARY_PATH=$prefix/lib "$scratch/text_reading"

cmake -S "$src/find_package" -B "$scratch/fp" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/fp" >/dev/null
LD_LIBRARY_PATH=$prefix/lib "$scratch/fp/client"
echo "install test passed"
