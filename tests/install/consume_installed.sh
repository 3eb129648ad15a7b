#!/usr/bin/env bash
# Installs the library into a temporary prefix, builds the example host
# against it with find_package, and runs it.
# Usage: consume_installed.sh BUILD_DIR SOURCE_DIR WORK_DIR
set -euo pipefail
build_dir=$1 source_dir=$2 work_dir=$3

rm -rf "$work_dir"
cmake --install "$build_dir" --prefix "$work_dir/prefix" > /dev/null
test -f "$work_dir/prefix/share/TarvoFramework/localcaution.mp3"
test -f "$work_dir/prefix/lib/pkgconfig/TarvoFramework.pc"
cmake -S "$source_dir/examples/host" -B "$work_dir/host" \
  -DCMAKE_PREFIX_PATH="$work_dir/prefix" > /dev/null
cmake --build "$work_dir/host" > /dev/null
SDL_AUDIODRIVER=dummy "$work_dir/host/tarvo-example-host" "$work_dir/data"
