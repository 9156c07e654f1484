// Test support for DFTI transforms: layouts, a direct long-double
// evaluation, and a checker that runs one configuration through the library
// and compares it with the direct result.
#ifndef NXL_TESTS_DFT_CHECK_H
#define NXL_TESTS_DFT_CHECK_H

#include <cmath>
#include <complex>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "nxl_dfti.h"

namespace dftcheck {

using cld = std::complex<long double>;

// One configuration. Lengths, strides and offsets first-dimension fastest
// (the Fortran order); strides and distances count elements of the side they
// describe (complex elements for complex data and for the CCE format, real
// elements for real data and the CCS, PACK and PERM formats).
struct Case {
  int prec = DFTI_DOUBLE;
  int domain = DFTI_COMPLEX;
  int rank = 1;
  long n[7] = {1, 1, 1, 1, 1, 1, 1};
  long howmany = 1;
  bool inplace = false;
  bool split = false;          // complex: separate real and imaginary arrays
  int format = DFTI_CCE_FORMAT;  // real: CCE (complex storage) or CCS/PACK/PERM
  double fscale = 1, bscale = 1;
  bool forward = true;
  long is[7], os[7];
  long idist = 0, odist = 0, ioff = 0, ooff = 0;
  long thread_limit = 0;
  long user_threads = 1;
  std::string describe() const;
};

long half(long n) { return n / 2 + 1; }

inline std::string Case::describe() const {
  std::string s = prec == DFTI_SINGLE ? "s" : "d";
  s += domain == DFTI_REAL ? "r" : (split ? "c(split)" : "c");
  s += forward ? " fwd" : " bwd";
  s += inplace ? " inplace" : " outofplace";
  if (domain == DFTI_REAL) s += " fmt" + std::to_string(format);
  s += " n=";
  for (int k = 0; k < rank; ++k) s += (k ? "x" : "") + std::to_string(n[k]);
  s += " is=";
  for (int k = 0; k < rank; ++k) s += (k ? "," : "") + std::to_string(is[k]);
  s += " os=";
  for (int k = 0; k < rank; ++k) s += (k ? "," : "") + std::to_string(os[k]);
  s += " howmany=" + std::to_string(howmany) + " idist=" + std::to_string(idist) + " odist=" +
       std::to_string(odist) + " ioff=" + std::to_string(ioff) + " ooff=" + std::to_string(ooff);
  return s;
}

// Kinds of one side of a transform.
enum Side { kComplex, kReal, kCE };

// Reals per element of a side, and the number of stored values per
// transform along dimension 0 for CCS/PACK/PERM.
inline long ce_reals(int format, long n) {
  if (format == DFTI_CCS_FORMAT) return 2 * half(n);
  return n;   // PACK, PERM
}

// Real offsets addressed by a side: calls f(batch, multi-index linear, real offset of re, real offset of im).
struct SideLayout {
  Side kind;
  int rank;
  long m[7];        // elements per dimension on this side
  long s[7];        // strides (side units)
  long dist, off;
  long howmany;
  int format;       // for kCE
  long n0;          // real length of dimension 0
  bool split;       // complex side in two arrays
  long unit() const { return (kind == kComplex && !split) || (kind == kCE && format == DFTI_CCE_FORMAT) ? 2 : 1; }
};

// Every stored real position of the side (for sentinel checks), in reals.
inline void stored_positions(const SideLayout &L, std::vector<long> &pos) {
  long total = 1;
  for (int k = 0; k < L.rank; ++k) total *= L.m[k];
  const long u = L.unit();
  const bool packed = L.kind == kCE && L.format != DFTI_CCE_FORMAT;
  for (long b = 0; b < L.howmany; ++b)
    for (long e = 0; e < total; ++e) {
      long r = e, o = L.off + b * L.dist;
      for (int k = 0; k < L.rank; ++k) {
        o += (r % L.m[k]) * L.s[k];
        r /= L.m[k];
      }
      if (packed) {
        pos.push_back(o);
      } else {
        pos.push_back(o * u);
        if (u == 2) pos.push_back(o * u + 1);
      }
    }
}

// Direct multi-dimensional transform of one dense tensor (first-fastest),
// by exact separable passes in long double.
inline void direct(std::vector<cld> &x, int rank, const long *n, int sign) {
  const long double pi = 3.141592653589793238462643383279502884L;
  long stride = 1, total = 1;
  for (int k = 0; k < rank; ++k) total *= n[k];
  for (int k = 0; k < rank; ++k) {
    long nk = n[k];
    std::vector<cld> w(nk), tmp(nk);
    for (long j = 0; j < nk; ++j) w[j] = cld(cosl(2 * pi * j / nk), sign * sinl(2 * pi * j / nk));
    for (long base = 0; base < total; ++base) {
      if ((base / stride) % nk != 0) continue;
      for (long q = 0; q < nk; ++q) {
        cld acc = 0;
        for (long j = 0; j < nk; ++j) acc += x[base + j * stride] * w[(j * q) % nk];
        tmp[q] = acc;
      }
      for (long q = 0; q < nk; ++q) x[base + q * stride] = tmp[q];
    }
    stride *= nk;
  }
}

// Where X[k] of a 1-D conjugate-even row lives in the CCS/PACK/PERM storage
// (real-unit indices; -1: not stored).
inline void packed_where(int format, long n, long k, long *re, long *im) {
  if (format == DFTI_CCS_FORMAT) {
    *re = 2 * k;
    *im = 2 * k + 1;
  } else if (k == 0) {
    *re = 0;
    *im = -1;
  } else if (2 * k == n) {
    *re = format == DFTI_PACK_FORMAT ? n - 1 : 1;
    *im = -1;
  } else if (format == DFTI_PERM_FORMAT && n % 2 == 0) {
    *re = 2 * k;
    *im = 2 * k + 1;
  } else {
    *re = 2 * k - 1;
    *im = 2 * k;
  }
}

template <class R> struct Buffers {
  std::vector<R> a1, a2, a3, a4;
};

// Result of a check: relative rms error (inf on a failed call or a broken
// sentinel), with a message.
struct Result {
  long double err = 0;
  long status = 0;
  std::string what;
  std::string backend;
};

// Builds the descriptor of a case through the Fortran-order entries.
inline long make_descriptor(const Case &c, DFTI_DESCRIPTOR_HANDLE *h) {
  nxl_int prec = c.prec, dom = c.domain, dim = c.rank;
  nxl_int len[7];
  for (int k = 0; k < c.rank; ++k) len[k] = c.n[k];
  long st = dfti_create_descriptor_highd(h, &prec, &dom, &dim, len);
  if (st) return st;
  auto seti = [&](nxl_int p, nxl_int v) { return dfti_set_value_intval(h, &p, &v); };
  auto setv = [&](nxl_int p, const nxl_int *v) { return dfti_set_value_intvec(h, &p, v); };
  auto setd = [&](nxl_int p, double v) { return dfti_set_value_dblval(h, &p, &v); };
  nxl_int is[8], os[8];
  is[0] = c.ioff;
  os[0] = c.ooff;
  for (int k = 0; k < c.rank; ++k) {
    is[k + 1] = c.is[k];
    os[k + 1] = c.os[k];
  }
  st = st ? st : seti(DFTI_PLACEMENT, c.inplace ? DFTI_INPLACE : DFTI_NOT_INPLACE);
  if (c.domain == DFTI_COMPLEX && c.split) st = st ? st : seti(DFTI_COMPLEX_STORAGE, DFTI_REAL_REAL);
  if (c.domain == DFTI_REAL) {
    if (c.format == DFTI_CCE_FORMAT) st = st ? st : seti(DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX);
    else st = st ? st : seti(DFTI_PACKED_FORMAT, c.format);
  }
  st = st ? st : setv(DFTI_INPUT_STRIDES, is);
  st = st ? st : setv(DFTI_OUTPUT_STRIDES, os);
  st = st ? st : seti(DFTI_NUMBER_OF_TRANSFORMS, c.howmany);
  st = st ? st : seti(DFTI_INPUT_DISTANCE, c.idist);
  st = st ? st : seti(DFTI_OUTPUT_DISTANCE, c.odist);
  st = st ? st : setd(DFTI_FORWARD_SCALE, c.fscale);
  st = st ? st : setd(DFTI_BACKWARD_SCALE, c.bscale);
  st = st ? st : seti(DFTI_THREAD_LIMIT, c.thread_limit);
  st = st ? st : seti(DFTI_NUMBER_OF_USER_THREADS, c.user_threads);
  return st;
}

// Input and output side layouts of a case in its direction.
inline void sides(const Case &c, SideLayout *in, SideLayout *out) {
  for (SideLayout *L : {in, out}) {
    L->rank = c.rank;
    L->howmany = c.howmany;
    L->format = c.format;
    L->n0 = c.n[0];
    L->split = c.split;
    for (int k = 0; k < c.rank; ++k) L->m[k] = c.n[k];
  }
  for (int k = 0; k < c.rank; ++k) {
    in->s[k] = c.is[k];
    out->s[k] = c.os[k];
  }
  in->dist = c.idist;
  in->off = c.ioff;
  out->dist = c.odist;
  out->off = c.ooff;
  if (c.domain == DFTI_COMPLEX) {
    in->kind = out->kind = kComplex;
    return;
  }
  SideLayout *ce = c.forward ? out : in;
  (c.forward ? in : out)->kind = kReal;
  ce->kind = kCE;
  if (c.format == DFTI_CCE_FORMAT) {
    ce->m[0] = half(c.n[0]);
  } else {
    ce->m[0] = ce_reals(c.format, c.n[0]);
  }
}

inline long reals_needed(const SideLayout &L) {
  std::vector<long> pos;
  stored_positions(L, pos);
  long mx = 0;
  for (long p : pos) {
    if (p < 0) return -1;
    mx = std::max(mx, p + 1);
  }
  return mx;
}

// Runs the case (forward or backward) and compares with the direct result.
// `force` (optional) commits with one given backend record only.
template <class R> Result run_case(const Case &c, unsigned seed, bool (*commit_hook)(DFTI_DESCRIPTOR_HANDLE, void *) = nullptr,
                                   void *hook_arg = nullptr) {
  Result res;
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  res.status = make_descriptor(c, &h);
  if (res.status) {
    res.what = "configuration failed";
    if (h) DftiFreeDescriptor(&h);
    return res;
  }
  if (commit_hook) {
    if (!commit_hook(h, hook_arg)) {
      res.status = -1;
      res.what = "not accepted";
      DftiFreeDescriptor(&h);
      return res;
    }
  } else {
    res.status = DftiCommitDescriptor(h);
    if (res.status) {
      res.what = "commit failed";
      DftiFreeDescriptor(&h);
      return res;
    }
  }
  SideLayout in, out;
  sides(c, &in, &out);
  const long nin = reals_needed(in), nout = reals_needed(out);
  std::mt19937_64 rng(seed);
  std::uniform_real_distribution<double> U(-0.5, 0.5);
  const R sentinel = R(-7777.25);
  // Arrays: complex split uses (re, im) pairs; everything else one array per side.
  long sz = c.inplace ? std::max(nin, nout) : nin;
  std::vector<R> ia(sz + 3, sentinel), ib, oa, ob;
  if (c.split) ib.assign(sz + 3, sentinel);
  if (!c.inplace) {
    oa.assign(nout + 3, sentinel);
    if (c.split) ob.assign(nout + 3, sentinel);
  }
  // Dense per-transform tensors of the logical values.
  long total = 1;
  for (int k = 0; k < c.rank; ++k) total *= c.n[k];
  const bool real = c.domain == DFTI_REAL;
  std::vector<std::vector<cld>> X(c.howmany, std::vector<cld>(total));
  for (long b = 0; b < c.howmany; ++b)
    for (long e = 0; e < total; ++e) X[b][e] = cld(U(rng), real ? 0.0 : U(rng));
  if (real && !c.forward) {
    // A conjugate-even spectrum: the transform of real data.
    for (long b = 0; b < c.howmany; ++b) direct(X[b], c.rank, c.n, -1);
  }
  // Write the input through its layout.
  auto elem_off = [&](const SideLayout &L, long b, long e, long *lin) {
    long r = e, o = L.off + b * L.dist;
    for (int k = 0; k < L.rank; ++k) {
      long mk = k == 0 ? c.n[0] : L.m[k];
      long i = r % mk;
      r /= mk;
      lin[k] = i;
      o += i * L.s[k];
    }
    return o;
  };
  long idx[7];
  for (long b = 0; b < c.howmany; ++b)
    for (long e = 0; e < total; ++e) {
      long o = elem_off(in, b, e, idx);
      const cld v = X[b][e];
      if (in.kind == kReal) {
        ia[o] = static_cast<R>(v.real());
      } else if (in.kind == kComplex) {
        if (c.split) {
          ia[o] = static_cast<R>(v.real());
          ib[o] = static_cast<R>(v.imag());
        } else {
          ia[2 * o] = static_cast<R>(v.real());
          ia[2 * o + 1] = static_cast<R>(v.imag());
        }
      } else {   // conjugate-even input: only k0 <= n0/2 is stored
        if (idx[0] >= half(c.n[0])) continue;
        long base = o - idx[0] * in.s[0];
        if (c.format == DFTI_CCE_FORMAT) {
          ia[2 * o] = static_cast<R>(v.real());
          ia[2 * o + 1] = static_cast<R>(v.imag());
        } else {
          long re, im;
          packed_where(c.format, c.n[0], idx[0], &re, &im);
          ia[base + re * in.s[0]] = static_cast<R>(v.real());
          if (im >= 0) ia[base + im * in.s[0]] = static_cast<R>(v.imag());
        }
      }
    }
  // The values actually stored (rounded to R), as the reference input.
  for (long b = 0; b < c.howmany; ++b) {
    for (long e = 0; e < total; ++e) {
      long o = elem_off(in, b, e, idx);
      if (in.kind == kReal) X[b][e] = cld(ia[o], 0);
      else if (in.kind == kComplex) X[b][e] = c.split ? cld(ia[o], ib[o]) : cld(ia[2 * o], ia[2 * o + 1]);
    }
    if (in.kind == kCE) {
      // Rebuild the full spectrum from the stored half (rounded values).
      std::vector<cld> F(total);
      for (long e = 0; e < total; ++e) {
        long o = elem_off(in, b, e, idx);
        if (idx[0] >= half(c.n[0])) continue;
        long base = o - idx[0] * in.s[0];
        if (c.format == DFTI_CCE_FORMAT) {
          F[e] = cld(ia[2 * o], ia[2 * o + 1]);
        } else {
          long re, im;
          packed_where(c.format, c.n[0], idx[0], &re, &im);
          F[e] = cld(ia[base + re * in.s[0]], im >= 0 ? ia[base + im * in.s[0]] : R(0));
        }
      }
      // Hermitian completion: X[k] = conj(X[-k]) for k0 > n0/2.
      for (long e = 0; e < total; ++e) {
        long r = e, neg = 0, mul = 1, k0 = 0;
        for (int k = 0; k < c.rank; ++k) {
          long i = r % c.n[k];
          r /= c.n[k];
          if (k == 0) k0 = i;
          neg += ((c.n[k] - i) % c.n[k]) * mul;
          mul *= c.n[k];
        }
        if (k0 >= half(c.n[0])) F[e] = std::conj(F[neg]);
      }
      // The real transform only sees the conjugate-even part.
      std::vector<cld> G(total);
      for (long e = 0; e < total; ++e) {
        long r = e, neg = 0, mul = 1;
        for (int k = 0; k < c.rank; ++k) {
          long i = r % c.n[k];
          r /= c.n[k];
          neg += ((c.n[k] - i) % c.n[k]) * mul;
          mul *= c.n[k];
        }
        G[e] = (F[e] + std::conj(F[neg])) / 2.0L;
      }
      X[b] = G;
    }
  }
  std::vector<R> ia_copy = ia, ib_copy = ib;
  void *p1 = ia.data(), *p2 = c.split ? (void *)ib.data() : (void *)oa.data();
  void *p3 = oa.data(), *p4 = ob.data();
  long st;
  if (c.split && !c.inplace) st = c.forward ? DftiComputeForward(h, p1, p2, p3, p4) : DftiComputeBackward(h, p1, p2, p3, p4);
  else if (c.split) st = c.forward ? DftiComputeForward(h, p1, p2) : DftiComputeBackward(h, p1, p2);
  else if (!c.inplace) st = c.forward ? DftiComputeForward(h, p1, p2) : DftiComputeBackward(h, p1, p2);
  else st = c.forward ? DftiComputeForward(h, p1) : DftiComputeBackward(h, p1);
  DftiFreeDescriptor(&h);
  if (st) {
    res.status = st;
    res.what = "compute failed";
    return res;
  }
  // Expected values.
  const double scale = c.forward ? c.fscale : c.bscale;
  long double num = 0, den = 0;
  std::vector<R> &ra = c.inplace ? ia : oa;
  std::vector<R> &rb = c.inplace ? ib : ob;
  for (long b = 0; b < c.howmany; ++b) {
    std::vector<cld> Y = X[b];
    direct(Y, c.rank, c.n, c.forward ? -1 : +1);
    for (long e = 0; e < total; ++e) {
      long o = elem_off(out, b, e, idx);
      cld want = Y[e] * (long double)scale, got;
      if (out.kind == kReal) {
        got = cld(ra[o], 0);
        want = cld(want.real(), 0);
      } else if (out.kind == kComplex) {
        got = c.split ? cld(ra[o], rb[o]) : cld(ra[2 * o], ra[2 * o + 1]);
      } else {
        if (idx[0] >= half(c.n[0])) continue;
        long base = o - idx[0] * out.s[0];
        if (c.format == DFTI_CCE_FORMAT) {
          got = cld(ra[2 * o], ra[2 * o + 1]);
        } else {
          long re, im;
          packed_where(c.format, c.n[0], idx[0], &re, &im);
          got = cld(ra[base + re * out.s[0]], im >= 0 ? ra[base + im * out.s[0]] : R(0));
          if (im < 0) want = cld(want.real(), 0);
        }
      }
      num += std::norm(got - want);
      den += std::norm(want);
    }
  }
  res.err = den > 0 ? sqrtl(num / den) : sqrtl(num);
  // Out of place: the input is untouched; everywhere: positions outside the
  // addressed ones keep their sentinel.
  std::vector<long> pos_in, pos_out;
  stored_positions(in, pos_in);
  stored_positions(out, pos_out);
  std::vector<char> mark(ra.size(), 0);
  for (long p : pos_out) mark[p] = 1;
  if (c.inplace) for (long p : pos_in) mark[p] = 1;
  for (size_t i = 0; i < ra.size(); ++i)
    if (!mark[i] && std::memcmp(&ra[i], &sentinel, sizeof(R)) != 0) {
      res.err = INFINITY;
      res.what = "wrote outside its layout at " + std::to_string(i);
      break;
    }
  if (!c.inplace && (std::memcmp(ia.data(), ia_copy.data(), ia.size() * sizeof(R)) != 0 ||
                     (c.split && std::memcmp(ib.data(), ib_copy.data(), ib.size() * sizeof(R)) != 0))) {
    res.err = INFINITY;
    res.what = "input modified";
  }
  return res;
}

}  // namespace dftcheck

#endif  // NXL_TESTS_DFT_CHECK_H
