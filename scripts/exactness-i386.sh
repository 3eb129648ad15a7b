#!/usr/bin/env bash
# Builds the geometry's exactness tests for 32-bit x86 (Debian's i386
# default is x87 arithmetic) with the project's own settings and runs them.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh --i386
cmake -S tests/i386 -B build-i386 -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_FLAGS=-m32 > /dev/null
cmake --build build-i386 -j "$(nproc)"
ctest --test-dir build-i386 --output-on-failure
