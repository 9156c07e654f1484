#!/usr/bin/env bash
# Builds NXL with warnings as errors and runs every test: unit tests, the
# reference conformance programs, emulated processors, the export and
# instruction-set checks, then the unit tests again under AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
bash cmake/deps.sh
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
jobs=$(nproc)
cc=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)

cmake -S . -B build -G Ninja "${cc[@]}" -DCMAKE_BUILD_TYPE=Release -DNXL_WERROR=ON > /dev/null
cmake --build build -j "$jobs"
ctest --test-dir build -j "$jobs" --output-on-failure --timeout 900 | tee build/ctest-summary.log
total=$(sed -n 's/.*tests passed, 0 tests failed out of \([0-9]*\).*/\1/p' build/ctest-summary.log | tail -1)

# The instrumented stage: the unit tests again under AddressSanitizer and
# UndefinedBehaviorSanitizer; any report fails the run. It is bounded in time
# so that a hang can never use up a CI run.
sanitizers() {
  # -O1 with line tables only keeps the instrumented build of the eight
  # code paths affordable; the reports still name file and line.
  cmake -S . -B build-asan -G Ninja "${cc[@]}" -DCMAKE_BUILD_TYPE=Release -DNXL_WERROR=ON \
        -DCMAKE_C_FLAGS_RELEASE="-O1 -gline-tables-only" -DCMAKE_CXX_FLAGS_RELEASE="-O1 -gline-tables-only" \
        -DNXL_SANITIZE=ON -DNXL_BUILD_BENCH=OFF > /dev/null &&
  timeout 3000 cmake --build build-asan -j "$jobs" &&
  ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    timeout 1800 ctest --test-dir build-asan -j "$jobs" -L unit --output-on-failure --timeout 600 \
    | tee build-asan/ctest-summary.log
}
if [ "${NXL_SKIP_SANITIZERS:-0}" != 1 ]; then
  if ! sanitizers; then
    echo "sanitizer stage: FAILED (see above)"
    exit 1
  fi
  sanitized=$(sed -n 's/.*tests passed, 0 tests failed out of \([0-9]*\).*/\1/p' build-asan/ctest-summary.log | tail -1)
  total=$(( ${total:-0} + ${sanitized:-0} ))
fi
echo "tests: ${total:-0} passed, 0 failed"
