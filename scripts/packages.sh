#!/usr/bin/env bash
# Builds the Debian packages, lists their contents, installs them on this
# machine and uses them as a host developer would: the example hosts built
# against /usr with CMake and with pkg-config, a pkg-config consumer built
# after `cmake --install` to a non-default prefix (and again after moving
# that prefix), the tool's man page and completion, and the Python module.
# Then removes the packages it installed, leaving the machine as found.
# Usage: scripts/packages.sh [--build-dir DIR]   (default build-packages)
set -euo pipefail
cd "$(dirname "$0")/.."
src=$(pwd)
build_dir=build-packages
case "${1:-}" in
  --build-dir) build_dir=$2 ;;
  -h|--help) sed -n 2,8p "$0"; exit 0 ;;
  "") ;;
  *) echo "packages.sh: unknown option '$1'" >&2; exit 2 ;;
esac
sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi

scripts/setup.sh --tests
# Configured for /usr, so that GNUInstallDirs picks Debian's multiarch
# library directory (lib/<triplet>); the packages install under /usr too.
cmake -S . -B "$build_dir" -DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_TESTS=OFF \
  -DTARVO_BUILD_BENCHMARKS=OFF -DTARVO_BUILD_EXAMPLES=OFF \
  -DCMAKE_INSTALL_PREFIX=/usr > /dev/null
libdir_rel=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:[A-Z]*=//p' "$build_dir/CMakeCache.txt")
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)
[[ "$libdir_rel" == "lib/$multiarch" ]] || {
  echo "packages.sh: library directory is '$libdir_rel', not lib/$multiarch" >&2
  exit 1; }
cmake --build "$build_dir" -j "$(nproc)" > /dev/null
rm -f "$build_dir"/*.deb
(cd "$build_dir" && cpack > /dev/null)
debs=("$build_dir"/*.deb)

echo "== Packages"
for deb in "${debs[@]}"; do
  echo "-- $(basename "$deb")"
  dpkg-deb --field "$deb" Package Version Depends
  dpkg-deb --contents "$deb"
  if dpkg-deb --contents "$deb" | grep -qE '\./usr/lib/[^/]*\.so'; then
    echo "packages.sh: $(basename "$deb") puts a library in /usr/lib, not" \
      "/usr/lib/$multiarch" >&2
    exit 1
  fi
done

work=$(mktemp -d)
installed_here=()
cleanup() {
  if ((${#installed_here[@]})); then
    echo "== Removing ${installed_here[*]}"
    $sudo apt-get -o DPkg::Lock::Timeout=600 purge -y -qq "${installed_here[@]}" \
      > /dev/null
  fi
  rm -rf "$work"
}
trap cleanup EXIT

names=()
for deb in "${debs[@]}"; do
  name=$(dpkg-deb --field "$deb" Package)
  names+=("$name")
  if dpkg-query -W -f='${Status}' "$name" 2>/dev/null | grep -q "ok installed"; then
    echo "packages.sh: $name is installed already; remove it first" >&2
    exit 1
  fi
done
echo "== Installing ${names[*]}"
installed_here=("${names[@]}")
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get -o DPkg::Lock::Timeout=600 install -y -qq \
  "${debs[@]/#/$src/}" > /dev/null

expect() {  # expect PATTERN COMMAND...: runs it, fails unless PATTERN shows
  local pattern=$1 out; shift
  out=$("$@" 2>&1) || { echo "$out"; echo "FAILED: $*" >&2; return 1; }
  if ! grep -qE "$pattern" <<<"$out"; then
    echo "$out"; echo "FAILED: '$pattern' not in the output of: $*" >&2; return 1
  fi
  echo "ok: $*"
}
warned='warning: RWY 09/27 \(example-rwy\), on it'

echo "== The example hosts against the installed packages, with CMake"
for host in host c-host; do
  cmake -S examples/$host -B "$work/cmake-$host" > /dev/null
  cmake --build "$work/cmake-$host" > /dev/null
done
export SDL_AUDIODRIVER=dummy
expect "$warned" "$work/cmake-host/tarvo-example-host" "$work/data-cmake"
expect "$warned" "$work/cmake-c-host/tarvo-example-c-host" "$work/data-cmake-c"

echo "== The example hosts with pkg-config"
read -r -a flags <<<"$(pkg-config --cflags --libs TarvoFramework)"
c++ -std=c++17 examples/host/main.cpp -Iexamples/host "${flags[@]}" -pthread \
  -o "$work/pc-host"
cc -std=c99 examples/c-host/main.c "${flags[@]}" -o "$work/pc-c-host"
expect "$warned" "$work/pc-host" "$work/data-pc"
expect "$warned" "$work/pc-c-host" "$work/data-pc-c"

echo "== A pkg-config consumer after an install to a non-default prefix"
cmake --install "$build_dir" --prefix "$work/opt/tarvo" > /dev/null
consume() {  # consume PREFIX: builds the C host from PREFIX's .pc file, runs it
  local prefix=$1 libdir
  export PKG_CONFIG_PATH=$prefix/$libdir_rel/pkgconfig
  libdir=$(pkg-config --variable=libdir TarvoFramework)
  [[ "$(realpath "$libdir")" == "$(realpath "$prefix/$libdir_rel")" ]] || {
    echo "FAILED: the .pc file points to $libdir, not $prefix/$libdir_rel" >&2
    return 1; }
  read -r -a flags <<<"$(pkg-config --cflags --libs TarvoFramework)"
  cc -std=c99 examples/c-host/main.c "${flags[@]}" -Wl,-rpath,"$(realpath "$libdir")" \
    -o "$work/consumer"
  expect "$warned" "$work/consumer" "$work/data-$RANDOM"
  # It runs the library of that prefix, not the packaged one.
  expect "$prefix/$libdir_rel/libTarvoFramework.so.1" ldd "$work/consumer"
  if [[ -d "$prefix/lib/python3/dist-packages/tarvo" ]]; then
    expect "^$prefix/lib/python3/dist-packages/tarvo/__init__.py 1\.0" \
      env PYTHONPATH="$prefix/lib/python3/dist-packages" /usr/bin/python3 -c \
      "import tarvo; print(tarvo.__file__, tarvo.version)"
    # Its rpath leads to the library of that prefix, wherever libdir is.
    local loaded
    loaded=$(ldd "$prefix"/lib/python3/dist-packages/tarvo/_tarvo*.so |
      awk '/libTarvoFramework/ {print $3}')
    [[ "$(realpath "$loaded")" == "$(realpath "$prefix/$libdir_rel")"/* ]] || {
      echo "FAILED: the Python module loads '$loaded'" >&2; return 1; }
    echo "ok: the Python module loads $prefix/$libdir_rel/libTarvoFramework.so.1"
  fi
  unset PKG_CONFIG_PATH
}
consume "$work/opt/tarvo"
mv "$work/opt/tarvo" "$work/opt/moved"
consume "$work/opt/moved"

echo "== The tool"
expect "^Usage: tarvo" tarvo --help
if [[ -f "$build_dir/docs/tarvo.1" ]]; then
  expect "tarvo" man -w tarvo
  test -f /usr/share/bash-completion/completions/tarvo
  echo "ok: bash completion installed"
fi

if [[ " ${names[*]} " == *" python3-tarvo "* ]]; then
  echo "== The Python module"
  expect "^1\.0" /usr/bin/python3 -c "import tarvo; print(tarvo.version)"
fi
echo "packages.sh: ${#debs[@]} packages built, installed, used and removed"
