#!/usr/bin/env bash
# Installs the Debian packages the panel needs to build, test and run.
# Only packages that are missing are installed; runs apt-get through sudo when not root.
# With --fuzz also clang and its runtime (libFuzzer, sanitizers) for `make fuzz`.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-httpserver-dev qt6-websockets-dev libgl-dev libqcustomplot-dev
  libgtest-dev libgmock-dev
  xvfb xauth fonts-dejavu-core
  clang-format
  prometheus python3
)
if [ "${1:-}" = "--fuzz" ]; then
  packages+=(clang libclang-rt-dev)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
