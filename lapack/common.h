// Helpers shared by the LAPACK templates: flags, argument reports, machine
// parameters, workspace sizes and work buffers from the memory manager.
#ifndef NXL_LAPACK_COMMON_H
#define NXL_LAPACK_COMMON_H

#include <cfloat>
#include <cmath>
#include <complex>
#include <limits>
#include "service/nxl_serv.h"
#include "service/scalar.h"
#include "lapack/blas.h"

extern "C" nxl_int nxl_lapack_ilaenv(const nxl_int *ispec, const char *name, const char *opts,
                                     const nxl_int *n1, const nxl_int *n2, const nxl_int *n3,
                                     const nxl_int *n4, int name_len = 6, int opts_len = 1);

namespace nxl {
namespace lapack {

using idx = nxl_int;
using ::nxl::real_t;
using ::nxl::is_complex_v;

inline idx imax(idx a, idx b) { return a > b ? a : b; }
inline idx imin(idx a, idx b) { return a < b ? a : b; }

// Case-insensitive comparison of a character flag with an upper-case letter.
inline bool same(const char *c, char upper) {
  if (!c) return false;
  char x = *c;
  if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 32);
  return x == upper;
}
inline char upper(const char *c) {
  char x = c ? *c : ' ';
  if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 32);
  return x;
}

// Precision letter of the routine names.
template <class T> constexpr char prefix() {
  if constexpr (std::is_same_v<T, float>) return 'S';
  else if constexpr (std::is_same_v<T, double>) return 'D';
  else if constexpr (std::is_same_v<T, std::complex<float>>) return 'C';
  else return 'Z';
}

// Routine name of precision T, padded with blanks to six characters (longer
// names keep their length: DGEEQUB has seven).
template <class T> struct Name {
  char s[12];
  int len;
  explicit Name(const char *stem) {
    s[0] = prefix<T>();
    int i = 1;
    for (; stem[i - 1] && i < 11; ++i) s[i] = stem[i - 1];
    for (; i < 6; ++i) s[i] = ' ';
    s[i] = 0;
    len = i;
  }
};

// Reports illegal argument `pos` of routine `stem` (precision T) and sets info.
template <class T> inline void report(const char *stem, idx pos, idx *info) {
  if (info) *info = -pos;
  Name<T> nm(stem);
  idx p = pos;
  nxl_serv_xerbla(nm.s, &p, nm.len);
}
inline void report_name(const char *name6, idx pos, idx *info) {
  if (info) *info = -pos;
  idx p = pos;
  nxl_serv_xerbla(name6, &p, 6);
}

// Block size and crossover from the tuning oracle.
inline idx ilaenv(idx ispec, const char *name, const char *opts, idx n1, idx n2, idx n3, idx n4) {
  return nxl_lapack_ilaenv(&ispec, name, opts, &n1, &n2, &n3, &n4, 6, 1);
}
template <class T> inline idx ilaenv_t(idx ispec, const char *stem, const char *opts, idx n1, idx n2, idx n3,
                                       idx n4) {
  Name<T> nm(stem);
  return ilaenv(ispec, nm.s, opts, n1, n2, n3, n4);
}

// Machine parameters of the real type R (the standard's lamch letters).
template <class R> inline R lamch(char c) {
  using L = std::numeric_limits<R>;
  switch (c) {
    case 'E': return L::epsilon() * R(0.5);   // relative machine precision (rounding)
    case 'S': return L::min();                 // safe minimum: 1/sfmin does not overflow
    case 'B': return R(L::radix);
    case 'P': return L::epsilon();             // eps * base
    case 'N': return R(L::digits);
    case 'R': return R(1);                     // rounding mode
    case 'M': return R(L::min_exponent);
    case 'U': return L::min();
    case 'L': return R(L::max_exponent);
    case 'O': return L::max();
    default: return R(0);
  }
}

// An integer workspace size stored as a value of T, rounded upwards so that
// reading it back never gives less than n.
template <class T> inline T work_size(idx n) {
  using R = real_t<T>;
  R r = static_cast<R>(n);
  if (static_cast<double>(r) < static_cast<double>(n)) r = std::nextafter(r, std::numeric_limits<R>::infinity());
  return T(r);
}

// A work area from the memory manager, released on scope exit. A null
// pointer after construction means memory is exhausted.
template <class T> class Work {
 public:
  explicit Work(idx n) : p_(n > 0 ? static_cast<T *>(nxl_serv_allocate(sizeof(T) * static_cast<size_t>(n), 64)) : nullptr) {}
  ~Work() { if (p_) nxl_serv_deallocate(p_); }
  Work(const Work &) = delete;
  Work &operator=(const Work &) = delete;
  T *get() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }
 private:
  T *p_;
};

// |z| without undue overflow.
template <class T> inline real_t<T> absv(T x) {
  if constexpr (is_complex_v<T>) return std::hypot(x.real(), x.imag());
  else return std::fabs(x);
}
// Reciprocal 1/z computed without overflow for complex z (Smith's method).
template <class T> inline T recip(T x) {
  if constexpr (is_complex_v<T>) {
    using R = real_t<T>;
    R a = x.real(), b = x.imag();
    if (std::fabs(a) >= std::fabs(b)) {
      R r = b / a, d = a + b * r;
      return T(R(1) / d, -r / d);
    }
    R r = a / b, d = b + a * r;
    return T(r / d, R(-1) / d);
  } else {
    return T(1) / x;
  }
}
// p / q: div() of service/scalar.h (Smith's method for complex values).
template <class T> inline bool isnan_v(T x) {
  if constexpr (is_complex_v<T>) return std::isnan(x.real()) || std::isnan(x.imag());
  else return std::isnan(x);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_COMMON_H
