#!/bin/bash
# Runs the standard linear-equation test programs (Debian's liblapack64-test)
# with libnxl.so loaded ahead of the reference LAPACK, so that every routine
# the library exports is taken from it and the others from the reference.
# Fails on any test above its threshold, any error-exit failure, or a run
# that does not reach its end -- except failures that the reference
# implementation alone shows on the same input (the same case lines, test
# ratios aside): those are the test programs' own marginal cases on this
# machine and are listed, not counted. Reports per family which routines
# were ours.
#
# usage: run_conformance.sh BUILD_DIR [PROGRAM...]
set -u
build=${1:?usage: run_conformance.sh BUILD_DIR [PROGRAM...]}
shift
ref=/usr/lib/x86_64-linux-gnu/lapack64
lib=$(ls "$build"/libnxl.so.*.*.* 2>/dev/null | head -1)
[ -n "$lib" ] || lib="$build/libnxl.so"
if [ ! -e "$lib" ]; then echo "conformance: no libnxl.so in $build"; exit 1; fi
lib=$(readlink -f "$lib")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

runs=("xlintsts stest.in" "xlintstd dtest.in" "xlintstc ctest.in" "xlintstz ztest.in"
      "xlintstrfs stest_rfp.in" "xlintstrfd dtest_rfp.in" "xlintstrfc ctest_rfp.in" "xlintstrfz ztest_rfp.in"
      "xlintstds dstest.in" "xlintstzc zctest.in")
if [ $# -gt 0 ]; then
  sel=()
  for r in "${runs[@]}"; do for p in "$@"; do [ "${r%% *}" = "$p" ] && sel+=("$r"); done; done
  runs=("${sel[@]}")
fi

status=0
for r in "${runs[@]}"; do
  prog=${r%% *}; input=${r#* }
  out="$work/$prog.out"
  # Which symbols the program and the reference libraries take from us.
  LD_BIND_NOW=1 LD_DEBUG=bindings LD_PRELOAD="$lib" "$ref/$prog" < /dev/null > /dev/null 2> "$work/$prog.bind"
  grep -F "to $lib" "$work/$prog.bind" | sed -n "s/.*normal symbol \`\([a-z0-9_]*\)'.*/\1/p" \
    | sed 's/_$//' | sort -u > "$work/$prog.ours"
  (cd "$work" && OMP_NUM_THREADS=${OMP_NUM_THREADS:-2} LD_PRELOAD="$lib" timeout 3000 "$ref/$prog" \
      < "$ref/$input" > "$out" 2>&1)
  rc=$?
  bad=$(grep -E "failed|FAIL|\*\*\*|not detected|instead of" "$out")
  ended=$(grep -c "End of tests" "$out")
  noted=""
  if [ $rc -eq 0 ] && [ -n "$bad" ] && [ "$ended" -gt 0 ]; then
    # The same program on the reference libraries alone.
    (cd "$work" && OMP_NUM_THREADS=1 timeout 3000 "$ref/$prog" < "$ref/$input" > "$out.ref" 2>&1)
    norm() { sed -E 's/(test|ratio) *= *[-+0-9.EeDd]+//g; s/ +/ /g'; }
    extra=$(grep -vxF -f <(grep -E "failed|FAIL|\*\*\*|not detected|instead of" "$out.ref" | norm) \
              <(echo "$bad" | norm))
    if [ -z "$extra" ]; then
      echo "pass $prog < $input (failures shown by the reference implementation too:)"
      echo "$bad" | sed 's/^/    /' | head -10
      bad=""
      noted=1
    fi
  fi
  if [ $rc -ne 0 ] || [ -n "$bad" ] || [ "$ended" -eq 0 ]; then
    echo "FAIL $prog < $input (exit $rc)"
    [ -n "$bad" ] && echo "$bad" | head -40
    [ "$ended" -eq 0 ] && tail -5 "$out"
    status=1
  elif [ -z "$noted" ]; then
    echo "pass $prog < $input"
  fi
  # Families the program tested, with the routines of each that were ours.
  for fam in $(sed -n 's/^ *\([SDCZ][A-Z0-9]\{2\}\)[: ].*\(passed\|tests\|routines\).*/\1/p' "$out" | sort -u); do
    low=$(echo "$fam" | tr 'A-Z' 'a-z')
    ours=$(grep -E "^${low}" "$work/$prog.ours" | tr '\n' ' ')
    printf '  %-4s ours: %s\n' "$fam" "${ours:-(none)}"
  done
done
exit $status
