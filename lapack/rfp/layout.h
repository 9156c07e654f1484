// Rectangular full packed (RFP) storage of a triangular or Hermitian
// (symmetric) matrix of order n in n (n + 1) / 2 entries.
//
// The matrix is cut into the diagonal blocks A11 (order n1) and A22 (order
// n2) and the off-diagonal block (A21 for uplo 'L', A12 for 'U'); n1 = n2 =
// n/2 for even n, and the larger block comes first for 'L', second for 'U'
// when n is odd. In the normal layout (transr 'N') the array has ld = n (odd
// n) or n + 1 (even n) rows and the blocks sit so that they tile it:
//   T1, lower triangle, holds A11 for 'L' and A11^H for 'U';
//   T2, upper triangle, holds A22^H for 'L' and A22 for 'U';
//   S holds the off-diagonal block itself.
// The transposed layout (transr 'T' for real, 'C' for complex) is the
// conjugate transpose of the whole normal array (ld = (n + 1) / 2), so T1
// becomes an upper triangle, T2 a lower one and S holds the conjugate
// transpose of the off-diagonal block.
//
// Every algorithm on this storage works on the three blocks with level-3
// calls; a block that holds the conjugate transpose of the logical block is
// used with the opposite transpose flag (and, for a triangle, the opposite
// triangle), which covers the eight combinations of uplo, transr and parity
// with one code path.
#ifndef NXL_LAPACK_RFP_LAYOUT_H
#define NXL_LAPACK_RFP_LAYOUT_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T> inline T rfp_conj(T x, bool c) { return c ? nxl::conj(x) : x; }

// The transpose flag that undoes a conjugate transpose.
template <class T> inline char flip_trans(char t) { return t == 'N' ? (is_complex_v<T> ? 'C' : 'T') : 'N'; }
template <class T> inline char eff_trans(char t, bool h) { return h ? flip_trans<T>(t) : t; }

// A triangular block: its physical triangle and whether it holds the
// conjugate transpose of the logical block.
template <class T> struct RfpTri {
  T *p;
  idx ld, n;
  char uplo;
  bool h;
};

template <class T> struct Rfp {
  idx n, n1, n2, ld;
  bool lower, normal;
  T *base;
  // Block origins in the coordinates of the normal layout.
  idx r1, r2, c2, rs;

  Rfp(idx n_, bool lower_, bool normal_, T *base_) : n(n_), lower(lower_), normal(normal_), base(base_) {
    const bool odd = n % 2 != 0;
    n2 = lower ? n / 2 : n - n / 2;
    n1 = n - n2;
    ld = normal ? (odd ? n : n + 1) : (n + 1) / 2;
    if (lower) {
      r1 = odd ? 0 : 1;
      r2 = 0;
      c2 = odd ? 1 : 0;
      rs = n1 + (odd ? 0 : 1);
    } else {
      r1 = n1 + 1;
      r2 = n1;
      c2 = 0;
      rs = 0;
    }
  }
  // Offset of normal-layout position (r, c) in the array.
  idx at(idx r, idx c) const { return normal ? r + c * ld : c + r * ld; }
  char logical() const { return lower ? 'L' : 'U'; }
  RfpTri<T> t1() const {
    char u = normal ? 'L' : 'U';
    return {base + at(r1, 0), ld, n1, u, u != logical()};
  }
  RfpTri<T> t2() const {
    char u = normal ? 'U' : 'L';
    return {base + at(r2, c2), ld, n2, u, u != logical()};
  }
  // The off-diagonal block (A21 n2 x n1 for 'L', A12 n1 x n2 for 'U') and
  // whether it is stored conjugate-transposed.
  T *s() const { return base + at(rs, 0); }
  bool s_h() const { return !normal; }

  // Offset of logical entry (i, j) of the stored triangle and whether the
  // array holds its conjugate.
  idx locate(idx i, idx j, bool &cj) const {
    idx r, c;
    if (lower) {
      if (j < n1 && i < n1) { r = r1 + i; c = j; cj = false; }
      else if (j < n1) { r = rs + i - n1; c = j; cj = false; }
      else { r = r2 + j - n1; c = c2 + i - n1; cj = true; }
    } else {
      if (j < n1) { r = r1 + j; c = i; cj = true; }
      else if (i < n1) { r = rs + i; c = j - n1; cj = false; }
      else { r = r2 + i - n1; c = c2 + j - n1; cj = false; }
    }
    if (!normal) cj = !cj;
    return at(r, c);
  }
};

// transr: 'N', or the conjugate transpose of the type ('T' real, 'C' complex).
template <class T> inline bool rfp_transr_ok(const char *transr) {
  return same(transr, 'N') || same(transr, is_complex_v<T> ? 'C' : 'T');
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_RFP_LAYOUT_H
