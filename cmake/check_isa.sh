#!/usr/bin/env bash
# Instruction-set check of the built library.
#
# Disassembles LIBRARY and fails when a function uses instructions or
# registers above the code path its name marks:
#   AVX-512 paths   (_avx512_ / _avx512_mic_ infix, nxl::cp_avx512[_mic])  anything
#   AVX2 path       (_avx2_ infix, nxl::cp_avx2)    ymm, VEX, FMA, F16C, BMI
#   AVX path        (_avx_ infix, nxl::cp_avx)      ymm and VEX-encoded forms
#   SSE4.2 path     (_mc3_ infix, nxl::cp_mc3)      SSE4.1/4.2, POPCNT, CRC32
#   SSSE3 path      (_mc_ infix, nxl::cp_mc)        SSSE3
#   every other function (def, the reproducible build, services): SSE2 only.
# AVX-512 usage is any zmm register, any opmask register, or xmm/ymm 16-31.
#
# usage: check_isa.sh LIBRARY
set -euo pipefail
lib=${1:?usage: check_isa.sh LIBRARY}
[ -r "$lib" ] || { echo "check_isa: cannot read $lib" >&2; exit 2; }

objdump -d -C --no-show-raw-insn "$lib" | awk '
function allowed(name) {
  if (name ~ /_avx512_|cp_avx512(_mic)?::/) return 5
  if (name ~ /_avx2_|cp_avx2::/) return 4
  if (name ~ /_avx_|cp_avx::/) return 3
  if (name ~ /_mc3_|cp_mc3::/) return 2
  if (name ~ /_mc_|cp_mc::/) return 1
  return 0
}
# The level an instruction needs: 0 SSE2, 1 SSSE3, 2 SSE4.x, 3 AVX, 4 AVX2
# group, 5 AVX-512.
function needs(insn,   op) {
  op = insn
  sub(/[ \t].*/, "", op)
  if (insn ~ /%zmm|%k[0-7]([^0-9]|$)|%[xy]mm(1[6-9]|2[0-9]|3[01])([^0-9]|$)/) return 5
  if (op ~ /^v?f(n)?m(add|sub)/ || op ~ /^vcvt(ph2ps|ps2ph)/ || \
      op ~ /^(shlx|shrx|sarx|rorx|pdep|pext|mulx|andn|bextr|blsi|blsr|blsmsk|bzhi)$/) return 4
  if (insn ~ /%ymm/) return 3
  if (op ~ /^v/ && insn ~ /%xmm/) return 3
  if (op ~ /^(pblendw|pblendvb|blendv?p[sd]|dpp[sd]|extractps|insertps|movntdqa|mpsadbw|packusdw|pcmpeqq|pcmpgtq|pextr[bdq]|pinsr[bdq]|pmax(s[bd]|u[wd])|pmin(s[bd]|u[wd])|pmov[sz]x|pmuldq|pmulld|ptest|round[ps][sd]|pcmp[ei]str[im]|crc32|popcnt|phminposuw)$/) return 2
  if (op ~ /^(pshufb|palignr|pabs[bwd]|phadd(w|d|sw)|phsub(w|d|sw)|pmaddubsw|pmulhrsw|psign[bwd])$/) return 1
  return 0
}
BEGIN { nfun = 0; bad = 0 }
/^[0-9a-f]+ <.*>:$/ {
  fn = $0
  sub(/^[0-9a-f]+ </, "", fn)
  sub(/>:$/, "", fn)
  limit = allowed(fn)
  reported = 0
  nfun++
  next
}
/^ *[0-9a-f]+:\t/ {
  n = split($0, part, "\t")
  if (n < 2) next
  insn = part[2]
  for (i = 3; i <= n; i++) insn = insn "\t" part[i]
  gsub(/^[ \t]+/, "", insn)
  if (insn == "" || reported) next
  lvl = needs(insn)
  if (lvl > limit) {
    printf "check_isa: %s (allowed level %d) uses level %d: %s\n", fn, limit, lvl, insn
    reported = 1
    bad++
  }
}
END {
  if (nfun == 0) { print "check_isa: no functions found"; exit 2 }
  printf "check_isa: %d functions checked, %d above their code path\n", nfun, bad
  exit bad > 0 ? 1 : 0
}'
