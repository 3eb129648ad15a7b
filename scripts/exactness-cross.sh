#!/usr/bin/env bash
# Builds the library and its exactness tests for another CPU and runs them:
# i386 natively (32-bit x86 on this 64-bit machine), arm64 and armhf under
# qemu-user. Installs the compilers and the target's SQLite runtime first.
# Usage: scripts/exactness-cross.sh i386|arm64|armhf [...]
set -euo pipefail
cd "$(dirname "$0")/.."
(($#)) || { sed -n 2,5p "$0"; exit 2; }
for arch in "$@"; do
  case "$arch" in
    i386) toolchain=i386-linux-gnu ;;
    arm64) toolchain=aarch64-linux-gnu ;;
    armhf) toolchain=arm-linux-gnueabihf ;;
    -h|--help) sed -n 2,5p "$0"; exit 0 ;;
    *) echo "exactness-cross.sh: unknown target '$arch'" >&2; exit 2 ;;
  esac
  echo "== exactness on $arch"
  scripts/setup.sh --cross "$arch"
  build=build-$arch
  cmake -S tests/cross -B "$build" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/toolchains/$toolchain.cmake" > /dev/null
  cmake --build "$build" -j "$(nproc)"
  ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
done
