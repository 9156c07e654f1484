#!/usr/bin/env bash
# Installs the build into a scratch prefix, then builds and runs a small C
# program outside the tree twice: linked through pkg-config and through the
# CMake package with its imported target.
set -euo pipefail
build=$1
work=$2
rm -rf "$work"
mkdir -p "$work/src"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" > "$work/install.log"

cat > "$work/src/main.c" <<'C'
#include <stdio.h>
#include <nxl.h>
int main(void) {
  nxl_int n = nxl_get_max_threads();
  printf("threads %lld\n", n);
  return n >= 1 ? 0 : 1;
}
C

# pkg-config
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig:$prefix/lib64/pkgconfig
cc -std=c99 -Wall -Werror "$work/src/main.c" -o "$work/pc_main" $(pkg-config --cflags --libs nxl)
LD_LIBRARY_PATH=$prefix/lib:$prefix/lib64 "$work/pc_main"

# find_package
cat > "$work/src/CMakeLists.txt" <<'CM'
cmake_minimum_required(VERSION 3.20)
project(consumer C)
find_package(NXL REQUIRED)
add_executable(cm_main main.c)
target_link_libraries(cm_main PRIVATE NXL::nxl)
CM
cmake -S "$work/src" -B "$work/cm" -DCMAKE_PREFIX_PATH="$prefix" > "$work/cm.log"
cmake --build "$work/cm" > "$work/cm-build.log"
"$work/cm/cm_main"
echo "install consumers: OK"
