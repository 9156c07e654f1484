// Shared pieces of the CBLAS layer: the enumerations' values, the flag
// translations, the argument checks (reported through cblas_xerbla with the
// CBLAS name and position, the layout counting as 1) and the declarations of
// the Fortran-layer bodies that the CBLAS entries call.
#ifndef NXL_BLAS_INTERFACE_CBLAS_COMMON_H
#define NXL_BLAS_INTERFACE_CBLAS_COMMON_H

#include <complex>
#include "blas/blas_internal.h"
#include "blas/interface/frame.h"
#include "service/scalar.h"

namespace nxl {
namespace cblas {

enum : int {
  RowMajor = 101, ColMajor = 102,
  NoTrans = 111, Trans = 112, ConjTrans = 113,
  Upper = 121, Lower = 122,
  NonUnit = 131, Unit = 132,
  Left = 141, Right = 142
};

inline const char *trans_char(int t) {
  static const char table[3][2] = {"N", "T", "C"};
  return table[t - NoTrans];
}
inline const char *uplo_char(int u) { return u == Upper ? "U" : "L"; }
inline const char *uplo_swapped(int u) { return u == Upper ? "L" : "U"; }
inline const char *diag_char(int d) { return d == Unit ? "U" : "N"; }
inline const char *side_char(int s) { return s == Left ? "L" : "R"; }
inline const char *side_swapped(int s) { return s == Left ? "R" : "L"; }

inline bool trans_bad(int t) { return t != NoTrans && t != Trans && t != ConjTrans; }
inline bool uplo_bad(int u) { return u != Upper && u != Lower; }
inline bool diag_bad(int d) { return d != NonUnit && d != Unit; }
inline bool side_bad(int s) { return s != Left && s != Right; }
inline bool layout_bad(int l) { return l != RowMajor && l != ColMajor; }
inline nxl_int mx1(nxl_int v) { return v > 1 ? v : 1; }

// Runs the checks in order; the first failing one is reported.
struct checks {
  const char *name;
  bool failed = false;
  checks &operator()(bool bad, int position) {
    if (!failed && bad) {
      failed = true;
      cblas_xerbla(name, position);
    }
    return *this;
  }
};

// Unit-stride copy of the conjugate of an n-vector in logical order, for the
// row-major forms of the Hermitian and conjugated routines; null (after a
// report) when memory is exhausted.
template <class T> T *conj_copy(const char *name, nxl_int n, const T *x, nxl_int incx) {
  T *t = static_cast<T *>(nxl_serv_allocate(sizeof(T) * static_cast<size_t>(n > 0 ? n : 1), 64));
  if (!t) {
    cblas_xerbla_malloc_error(name);
    return nullptr;
  }
  const T *p = x + vec_start(n, incx);
  for (nxl_int i = 0; i < n; ++i) t[i] = nxl::conj(p[i * incx]);
  return t;
}

// Conjugates an n-vector in place.
template <class T> void conj_inplace(nxl_int n, T *x, nxl_int incx) {
  if constexpr (is_complex_v<T>) {
    T *p = x + vec_start(n, incx);
    for (nxl_int i = 0; i < n; ++i) p[i * incx] = nxl::conj(p[i * incx]);
  }
}

template <class T> inline const T *cp(const void *p) { return static_cast<const T *>(p); }
template <class T> inline T *mp(void *p) { return static_cast<T *>(p); }

}  // namespace cblas
}  // namespace nxl

// Declarations of the Fortran-layer bodies (DGEMM, ZDOTC ...) from the
// routine tables.
namespace nxl {
namespace cblas {
using F = const char *;
using I = const nxl_int *;
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;
#define NXL_ROW(ret, UP, lo, params, args, checks) extern "C" ret UP params;
#define NXL_ROW1(ret, UP, lo, params, args) extern "C" ret UP params;
#define NXL_ROWC(T, UP, lo, params, args) extern "C" decltype(nxl::frame::to_c(T())) UP params;
#include "blas/interface/table_level1.inc"
#include "blas/interface/table_level2.inc"
#include "blas/interface/table_level3.inc"
#undef NXL_ROW
#undef NXL_ROW1
#undef NXL_ROWC
}  // namespace cblas
}  // namespace nxl

#endif
