#!/usr/bin/env bash
# Static checks: a warnings-as-errors build with clang and the format check.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh --tests
CXX=clang++ CC=clang cmake -S . -B build-clang-werror -DTARVO_WERROR=ON \
  -DTARVO_BUILD_TESTS=ON -DTARVO_BUILD_BENCHMARKS=ON > /dev/null
cmake --build build-clang-werror -j "$(nproc)"
echo "clang -Werror build: ok"

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
echo "clang-format: ok"
