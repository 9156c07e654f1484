// Test support for the level-2 routines: random operands with sentinel
// padding, storage layouts (full, band, packed) and a long-double oracle.
#ifndef NXL_TEST_LEVEL2_ORACLE_H
#define NXL_TEST_LEVEL2_ORACLE_H

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "nxl_types.h"

namespace l2test {

using idx = nxl_int;
using LD = long double;
using LC = std::complex<long double>;

template <class T> struct Tr {
  using R = T;
  using W = LD;
  static constexpr bool cx = false;
};
template <class R_> struct Tr<std::complex<R_>> {
  using R = R_;
  using W = LC;
  static constexpr bool cx = true;
};
template <class T> using W_t = typename Tr<T>::W;
template <class T> using R_t = typename Tr<T>::R;

template <class T> W_t<T> wid(T v) {
  if constexpr (Tr<T>::cx) return LC(v.real(), v.imag());
  else return LD(v);
}
inline LD mag(LD v) { return std::fabs(v); }
inline LD mag(LC v) { return std::abs(v); }
inline LD cjw(LD v) { return v; }
inline LC cjw(LC v) { return std::conj(v); }
inline LD rew(LD v) { return v; }
inline LD rew(LC v) { return v.real(); }

template <class T> T nan_v() {
  R_t<T> q = std::numeric_limits<R_t<T>>::quiet_NaN();
  if constexpr (Tr<T>::cx) return T(q, q);
  else return q;
}
template <class T> bool same_bits(const T &a, const T &b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

struct Rng {
  std::mt19937_64 g;
  explicit Rng(unsigned long long seed) : g(seed) {}
  idx i(idx lo, idx hi) { return std::uniform_int_distribution<idx>(lo, hi)(g); }
  double u() { return std::uniform_real_distribution<double>(-1.0, 1.0)(g); }
  template <class T> T val() {
    if constexpr (Tr<T>::cx) {
      double re = u();
      return T(R_t<T>(re), R_t<T>(u()));
    } else {
      return T(u());
    }
  }
  // Dimensions: mostly small, some across the block sizes, a few large
  // enough to be split among threads.
  idx dim() {
    int c = int(i(0, 99));
    if (c < 8) return i(0, 1);
    if (c < 70) return i(2, 24);
    if (c < 92) return i(25, 150);
    return i(250, 420);
  }
  idx inc() {
    static const idx incs[] = {1, 1, 1, 2, -1, -3};
    return incs[i(0, 5)];
  }
  template <class T> T scalar() {
    int c = int(i(0, 5));
    if (c == 0) return T(0);
    if (c == 1) return T(1);
    return val<T>();
  }
};

// A strided vector: the logical elements live at pos(i); the gaps hold NaN.
template <class T> struct Vec {
  idx n, inc;
  std::vector<T> buf;
  Vec(idx n_, idx inc_) : n(n_), inc(inc_), buf(size_t(n_ > 0 ? 1 + (n_ - 1) * std::llabs(inc_) : 1), nan_v<T>()) {}
  idx pos(idx i) const { return inc > 0 ? i * inc : (n - 1 - i) * (-inc); }
  T &operator[](idx i) { return buf[size_t(pos(i))]; }
  const T &operator[](idx i) const { return buf[size_t(pos(i))]; }
  T *data() { return buf.data(); }
  void randomize(Rng &r) {
    for (idx i = 0; i < n; ++i) (*this)[i] = r.val<T>();
  }
  bool gaps_untouched(const Vec &orig) const {
    for (size_t k = 0; k < buf.size(); ++k) {
      bool logical = inc != 0 && (idx(k) % std::llabs(inc)) == 0;
      if (!logical && !same_bits(buf[k], orig.buf[k])) return false;
    }
    return true;
  }
};

template <class T> bool all_same_bits(const std::vector<T> &a, const std::vector<T> &b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// Storage of the triangular, symmetric and Hermitian matrices.
enum class Kind { full, band, packed };

// Calls f(i, j, offset) for every stored element of an n x n triangle.
template <class F>
void for_each_stored(Kind kind, bool upper, idx n, idx k, idx lda, F f) {
  for (idx j = 0; j < n; ++j) {
    idx lo = upper ? 0 : j, hi = upper ? j : n - 1;
    if (kind == Kind::band) {
      if (upper) lo = j - k > 0 ? j - k : 0;
      else hi = j + k < n - 1 ? j + k : n - 1;
    }
    for (idx i = lo; i <= hi; ++i) {
      idx off;
      if (kind == Kind::full) off = i + j * lda;
      else if (kind == Kind::band) off = (upper ? k + i - j : i - j) + j * lda;
      else off = upper ? i + j * (j + 1) / 2 : i + j * (2 * n - j - 1) / 2;
      f(i, j, off);
    }
  }
}

inline idx storage_size(Kind kind, idx n, idx lda) {
  if (kind == Kind::packed) return n * (n + 1) / 2 + 1;  // one sentinel past the end
  return lda * (n > 0 ? n : 1);
}

// Relative accuracy check of one element against the oracle.
template <class T>
::testing::AssertionResult close_to(T got, W_t<T> ref, LD gauge, idx terms) {
  LD eps = std::numeric_limits<R_t<T>>::epsilon();
  LD err = mag(wid(got) - ref);
  LD bound = LD(4) * LD(terms + 4) * eps * (gauge > 0 ? gauge : 1e-300L);
  if (err <= bound || (gauge == 0 && err == 0)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "error " << double(err) << " above " << double(bound);
}

}  // namespace l2test

#endif  // NXL_TEST_LEVEL2_ORACLE_H
