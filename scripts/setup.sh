#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those that are missing.
# Usage: scripts/setup.sh [--tests | --fuzz | --cross i386|arm64|armhf]
#   --tests adds what the test suite uses, --fuzz clang and libFuzzer,
#   --cross the compiler, emulator and SQLite runtime of another CPU for the
#   exactness check. The cross compilers and g++-multilib exclude each
#   other on Debian; the versioned g++-N-multilib does not, so both fit.
set -euo pipefail

packages=(cmake g++ make pkgconf libsqlite3-dev libsdl2-mixer-dev
          nlohmann-json3-dev libpugixml-dev libgps-dev
          libespeak-ng-dev espeak-ng-data libjs-leaflet libgdal-dev
          help2man pybind11-dev python3-dev)
case "${1:-}" in
  --tests) packages+=(libgtest-dev libgmock-dev libbenchmark-dev sqlite3 sox lame
                      chromium clang gpsd gpsd-clients gdal-bin python3 jq
                      doxygen dpkg-dev python3-pytest python3-pandas) ;;
  --fuzz) packages+=(clang libclang-rt-dev) ;;
  --cross)
    gcc_major=$(g++ -dumpversion 2>/dev/null | cut -d. -f1)
    case "${2:-}" in
      i386) packages+=("g++-${gcc_major:-12}-multilib") ;;
      arm64) packages+=(g++-aarch64-linux-gnu qemu-user) ;;
      armhf) packages+=(g++-arm-linux-gnueabihf qemu-user) ;;
      *) echo "setup.sh: --cross needs i386, arm64 or armhf" >&2; exit 2 ;;
    esac
    packages+=(libgtest-dev "libsqlite3-0:$2") ;;
esac

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" \
    || missing+=("$p")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

echo "Installing missing packages: ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
for p in "${missing[@]}"; do
  if [[ "$p" == *:* ]] && ! dpkg --print-foreign-architectures | grep -qx "${p#*:}"; then
    $sudo dpkg --add-architecture "${p#*:}"
  fi
done
# A mirror caught mid-sync fails the update for one index (seen for the
# security archive's i386 and armhf lists); the install below still fails
# loudly if a package really cannot be had.
$sudo apt-get -o DPkg::Lock::Timeout=600 update -qq ||
  echo "setup.sh: apt-get update reported errors; installing from the lists it has" >&2
$sudo apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}"
