#!/usr/bin/env bash
# Sets everything up, builds and runs the whole test suite.
# Usage: scripts/test.sh [--sanitize] [--werror] [--build-dir DIR]
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=build
cmake_args=(-DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_TESTS=ON -DTARVO_BUILD_BENCHMARKS=ON)
while (($#)); do
  case "$1" in
    --sanitize) build_dir=build-sanitize
                cmake_args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVO_SANITIZE=ON
                            -DTARVO_BUILD_TESTS=ON -DTARVO_BUILD_BENCHMARKS=OFF) ;;
    --werror) cmake_args+=(-DTARVO_WERROR=ON) ;;
    --build-dir) build_dir="$2"; shift ;;
    -h|--help) sed -n 2,3p "$0"; exit 0 ;;
    *) echo "test.sh: unknown option '$1'" >&2; exit 2 ;;
  esac
  shift
done

scripts/setup.sh --tests
cmake -S . -B "$build_dir" "${cmake_args[@]}"
cmake --build "$build_dir" -j "$(nproc)"
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
