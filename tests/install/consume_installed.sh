#!/usr/bin/env bash
# Installs the library into a temporary prefix, builds the example host
# against it with find_package and the C example with pkg-config, and runs
# both.
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
# The relocatable .pc file: a C host built from it alone, run on that prefix.
libdir=$(PKG_CONFIG_PATH="$work_dir/prefix/lib/pkgconfig" \
  pkg-config --variable=libdir TarvoFramework)
read -r -a flags <<<"$(PKG_CONFIG_PATH="$work_dir/prefix/lib/pkgconfig" \
  pkg-config --cflags --libs TarvoFramework)"
cc -std=c99 "$source_dir/examples/c-host/main.c" "${flags[@]}" \
  -Wl,-rpath,"$(realpath "$libdir")" -o "$work_dir/pc-c-host"
"$work_dir/pc-c-host" "$work_dir/pc-data"
