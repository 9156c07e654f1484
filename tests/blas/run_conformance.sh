#!/bin/sh
# Runs the reference BLAS and CBLAS test programs against libnxl.so.
#
#   run_conformance.sh BUILD_DIR [PROGRAM...]
#
# The programs load libblas64.so.3; a temporary directory holds that name as a
# link to BUILD_DIR/libnxl.so and comes first in LD_LIBRARY_PATH. The CBLAS
# programs also need two global integers of their reference library, which a
# small test-only object (libcblas_globals.so) supplies through LD_PRELOAD.
#
# Every computational test and every error-exit test of the Fortran programs
# must pass. The CBLAS programs check their error exits through their own
# cblas_xerbla, which the library never calls (its CBLAS errors go to its
# internal cblas_xerbla and from there, under the CBLAS name and position, to
# the application's xerbla); those checks are listed as known and fail the run
# only when NXL_CBLAS_STRICT_ERROR_EXITS=1.
set -u
BUILD=$(cd "${1:?usage: run_conformance.sh BUILD_DIR [PROGRAM...]}" && pwd)
shift
REF=${NXL_REFERENCE_BLAS_TESTS:-/usr/lib/x86_64-linux-gnu/blas64}
LIB=$BUILD/libnxl.so
GLOBALS=$BUILD/tests/blas/libcblas_globals.so
[ -f "$LIB" ] || { echo "no $LIB"; exit 2; }
[ -f "$GLOBALS" ] || { echo "no $GLOBALS"; exit 2; }
[ -d "$REF" ] || { echo "no reference test programs in $REF"; exit 2; }

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
mkdir -p "$WORK/lib"
ln -s "$LIB" "$WORK/lib/libblas64.so.3"

if [ $# -gt 0 ]; then
  PROGRAMS="$*"
else
  PROGRAMS=""
  for p in s d c z; do PROGRAMS="$PROGRAMS xblat1$p xblat2$p xblat3$p"; done
  for p in s d c z; do PROGRAMS="$PROGRAMS x${p}cblat1 x${p}cblat2 x${p}cblat3"; done
fi

failures=0
known=0
for prog in $PROGRAMS; do
  exe=$REF/$prog
  run=$WORK/run_$prog
  mkdir -p "$run"
  # Which input: xblat2d < dblat2.in, xdcblat3 < din3, level 1 none.
  case $prog in
    xblat1?|x?cblat1) input="" ;;
    xblat[23]?) p=${prog#xblat}; input=${p#?}blat${p%?}.in ;;
    x?cblat[23]) p=${prog#x}; input=${p%cblat?}in${p#?cblat} ;;
    *) echo "$prog: unknown program"; failures=$((failures + 1)); continue ;;
  esac
  preload=""
  case $prog in x?cblat?) preload=$GLOBALS ;; esac
  # The program must load this build's library.
  if ! LD_LIBRARY_PATH="$WORK/lib" ldd "$exe" | grep -q "$WORK/lib/libblas64.so.3"; then
    echo "$prog: FAIL (does not load the library under test)"
    failures=$((failures + 1))
    continue
  fi
  (
    cd "$run" || exit 1
    if [ -n "$input" ]; then
      cp "$REF/$input" . && LD_PRELOAD="$preload" LD_LIBRARY_PATH="$WORK/lib" \
        timeout 1200 "$exe" < "$input" > stdout.txt 2>&1
    else
      LD_PRELOAD="$preload" LD_LIBRARY_PATH="$WORK/lib" timeout 1200 "$exe" > stdout.txt 2>&1
    fi
    echo $? > rc.txt
  )
  rc=$(cat "$run/rc.txt")
  # The Fortran level-2/3 programs write their report to the summary file
  # named on the first line of their input; the others to standard output.
  report=$run/stdout.txt
  case $prog in
    xblat[23]?) report=$run/$(sed -n "1s/^'\([^']*\)'.*/\1/p" "$run/$input") ;;
  esac
  [ -f "$report" ] || { echo "$prog: FAIL (no report, exit $rc)"; failures=$((failures + 1)); continue; }
  cat "$run/stdout.txt" >> "$report.all" 2>/dev/null
  status=PASS
  detail=""
  [ "$rc" = 0 ] || { status=FAIL; detail="exit $rc"; }
  case $prog in
    xblat1?|x?cblat1)
      tests=$(grep -c 'Test of subprogram' "$report")
      passed=$(grep -c -- '----- PASS -----' "$report")
      if [ "$tests" -eq 0 ] || [ "$tests" -ne "$passed" ] || grep -qE 'FAIL|ERROR' "$report"; then
        status=FAIL
      fi
      detail="$detail $passed/$tests subprograms passed"
      ;;
    *)
      comp=$(grep -c 'PASSED THE .*COMPUTATIONAL TESTS' "$report")
      if grep -qE 'FATAL|FAILED ON CALL|FAILED THE .*COMPUTATIONAL|\*\*\*\*\*\* FAIL' "$report" \
         || ! grep -q 'END OF TESTS' "$report" || [ "$comp" -eq 0 ]; then
        status=FAIL
      fi
      detail="$detail $comp computational passes"
      case $prog in
        xblat[23]?)
          exits=$(grep -c 'PASSED THE TESTS OF ERROR-EXITS' "$report")
          if grep -qE 'ERROR-EXITS \*|FAILED THE TESTS OF ERROR-EXITS|NOT DETECTED|XERBLA WAS CALLED' "$report"; then
            status=FAIL
          fi
          detail="$detail, $exits error-exit passes"
          ;;
        *)
          bad=$(grep -c 'FAILED THE TESTS OF ERROR-EXITS' "$report")
          if [ "$bad" -gt 0 ]; then
            known=$((known + bad))
            detail="$detail, $bad routines' error-exit checks not passable (internal cblas_xerbla)"
            [ "${NXL_CBLAS_STRICT_ERROR_EXITS:-0}" = 1 ] && status=FAIL
          fi
          ;;
      esac
      ;;
  esac
  echo "$prog: $status ($detail )"
  if [ $status = FAIL ]; then
    failures=$((failures + 1))
    grep -E 'FATAL|FAIL|ERROR|\*\*\*' "$report" | grep -vE 'XERBLA WAS CALLED|NOT DETECTED|TESTS OF ERROR-EXITS' | head -20 | sed 's/^/    /'
  fi
done
echo "conformance: $failures program(s) failed; $known known CBLAS error-exit results"
[ $failures -eq 0 ]
