#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, when any is missing.
# clang's runtime libraries (libFuzzer, the sanitizers; only recommended by clang, hence named) are Debian
# 12's libclang-rt-14-dev, for the fuzz targets.
set -euo pipefail

packages=(
  cmake ninja-build g++ ccache pkg-config
  libxml2-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  libglib2.0-dev libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-tools
  libgupnp-1.6-dev libsoup-3.0-dev libasound2-dev
  python3-gi gir1.2-gupnp-1.6 gir1.2-gssdp-1.6 iproute2 nodejs
  chromium
  dpkg-dev lintian systemd
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done

if ((${#missing[@]} > 0)); then
  echo "== installing: ${missing[*]}"
  if [[ $(id -u) -ne 0 ]]; then sudo=sudo; else sudo=; fi
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The Node control point of the integration tests needs npm; Debian ships it apart from nodejs.
if ! command -v npm >/dev/null; then
  if [[ $(id -u) -ne 0 ]]; then sudo=sudo; else sudo=; fi
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends npm
fi
