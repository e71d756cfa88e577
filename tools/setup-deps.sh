#!/usr/bin/env bash
# Installs, with apt-get, what building and testing qwz needs and a fresh
# Debian machine may lack. Does nothing when everything is there already.
set -euo pipefail
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v g++ >/dev/null || need+=(g++)
command -v cc >/dev/null || need+=(gcc)
command -v make >/dev/null || need+=(make)
command -v pkg-config >/dev/null || need+=(pkg-config)
command -v nm >/dev/null || need+=(binutils)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
[ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
[ -f /usr/share/zoneinfo/Europe/Berlin ] || need+=(tzdata)
command -v doxygen >/dev/null || need+=(doxygen)
command -v valgrind >/dev/null || need+=(valgrind)
# The fuzz targets: clang with libFuzzer and the sanitizer runtimes.
command -v clang++ >/dev/null || need+=(clang)
ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1 ||
  need+=(libclang-rt-dev)
if [ ${#need[@]} -gt 0 ]; then
  echo "installing: ${need[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${need[@]}"
fi
