#!/usr/bin/env bash
# Installs the dependencies, builds NXL and runs the tour program.
set -euo pipefail
cd "$(dirname "$0")/.."
bash cmake/deps.sh
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
cmake -S . -B build -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
      -DCMAKE_BUILD_TYPE=Release > /dev/null
cmake --build build --target nxl_tour
build/examples/nxl_tour "$@"
