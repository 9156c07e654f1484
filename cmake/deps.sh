#!/usr/bin/env bash
# Installs what building, testing and benchmarking NXL needs on Debian 12.
# The library itself needs only clang, CMake, Ninja and the LLVM OpenMP
# runtime; the rest serves the tests (GoogleTest, qemu-user for emulated
# processors, the reference test programs) and the benchmark peers.
set -euo pipefail
packages=(
  clang cmake ninja-build libomp-dev ccache pkg-config python3 binutils
  libgtest-dev qemu-user
  libblas64-test liblapack64-test libblas64-3 liblapack64-3
  libopenblas64-0-openmp libfftw3-dev
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=; [ "$(id -u)" -eq 0 ] || SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
