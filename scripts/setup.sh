#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those that are missing.
# Usage: scripts/setup.sh [--tests | --fuzz | --i386]
#   --tests adds what the test suite uses, --fuzz clang and libFuzzer,
#   --i386 the 32-bit x86 compiler for the exactness check.
set -euo pipefail

packages=(cmake g++ make pkgconf libsqlite3-dev libsdl2-mixer-dev libboost-dev
          nlohmann-json3-dev libpugixml-dev libgps-dev
          libespeak-ng-dev espeak-ng-data
          help2man pybind11-dev python3-dev)
case "${1:-}" in
  --tests) packages+=(libgtest-dev libgmock-dev libbenchmark-dev sqlite3 sox lame
                      chromium clang gpsd gpsd-clients
                      doxygen dpkg-dev python3-pytest python3-pandas) ;;
  --fuzz) packages+=(clang libclang-rt-dev) ;;
  --i386) packages+=(g++-multilib libgtest-dev) ;;
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
$sudo apt-get -o DPkg::Lock::Timeout=600 update -qq
$sudo apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}"
