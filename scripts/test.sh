#!/usr/bin/env bash
# Sets everything up, builds and runs the whole test suite.
# Usage: scripts/test.sh [--sanitize | --tsan] [--clang] [--werror] [--build-dir DIR]
#   --sanitize  under AddressSanitizer and UndefinedBehaviorSanitizer (build-sanitize)
#   --tsan      the library's tests and the example host under ThreadSanitizer
#               (build-tsan); any report fails the run. Not the tarvo tool: it
#               has no thread of its own, and the other builds test it.
#   --clang     with clang and clang++ (as do CC=clang CXX=clang++)
# A clang build gets a directory of its own (build-clang, build-sanitize-clang,
# build-tsan-clang): a build directory keeps the compiler it was made with.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=plain
build_dir=
werror=()
while (($#)); do
  case "$1" in
    --sanitize) mode=sanitize ;;
    --tsan) mode=tsan ;;
    --clang) export CC=clang CXX=clang++ ;;
    --werror) werror=(-DTARVO_WERROR=ON) ;;
    --build-dir) build_dir="$2"; shift ;;
    -h|--help) sed -n 2,10p "$0"; exit 0 ;;
    *) echo "test.sh: unknown option '$1'" >&2; exit 2 ;;
  esac
  shift
done

case "$mode" in
  plain) default_dir=build
         cmake_args=(-DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_TESTS=ON
                     -DTARVO_BUILD_BENCHMARKS=ON) ;;
  sanitize) default_dir=build-sanitize
            cmake_args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVO_SANITIZE=ON
                        -DTARVO_BUILD_TESTS=ON -DTARVO_BUILD_BENCHMARKS=OFF) ;;
  tsan) default_dir=build-tsan
        cmake_args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVO_SANITIZE=thread
                    -DTARVO_BUILD_TESTS=ON -DTARVO_BUILD_BENCHMARKS=OFF
                    -DTARVO_BUILD_TOOLS=OFF) ;;
esac
if [[ -z "$build_dir" ]]; then
  build_dir=$default_dir
  if [[ "$(basename "${CXX:-c++}")" == clang* ]]; then build_dir+=-clang; fi
fi

scripts/setup.sh --tests
cmake -S . -B "$build_dir" "${cmake_args[@]}" "${werror[@]}"
cmake --build "$build_dir" -j "$(nproc)"

if [[ "$mode" != tsan ]]; then
  ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
  exit
fi

# ThreadSanitizer writes its reports to files here rather than to the test's
# output, so that a report also fails a test whose command is expected to
# exit non-zero, where the exit status alone would hide it.
reports="$(cd "$build_dir" && pwd)/tsan-reports"
rm -rf "$reports"
mkdir -p "$reports"
export TSAN_OPTIONS="log_path=$reports/report ${TSAN_OPTIONS:-}"
status=0
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)" || status=$?
if compgen -G "$reports/report.*" > /dev/null; then
  cat "$reports"/report.*
  echo "test.sh: ThreadSanitizer reports in $reports" >&2
  exit 1
fi
exit "$status"
