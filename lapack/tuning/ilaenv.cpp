// The tuning oracle: block sizes, minimum block sizes, crossover points and
// the other machine parameters of the ilaenv convention, answered from a
// decision tree keyed on the routine name, its precision, the code path of
// this processor, the first option character and the problem dimensions.
#include "lapack/frame.h"
#include "lapack/tuning/tuning.h"

namespace {

using idx = nxl_int;

char up(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; }

// The routine name, upper case, padded with blanks to six characters.
struct Name {
  char c[7];
  Name(const char *s, int len) {
    int i = 0;
    bool end = (s == nullptr);
    for (; i < 6; ++i) {
      if (!end && (len > 0 ? i >= len : false)) end = true;
      if (!end && s[i] == 0) end = true;
      c[i] = end ? ' ' : up(s[i]);
    }
    c[6] = 0;
  }
  bool type(const char *t) const { return c[1] == t[0] && c[2] == t[1]; }
  bool op(const char *o) const { return c[3] == o[0] && c[4] == o[1] && c[5] == o[2]; }
  bool op2(const char *o) const { return c[3] == o[0] && c[4] == o[1]; }
};

// Integer part of 1.6 min(n1, n2), computed in single precision.
idx crossover_svd(idx n1, idx n2) {
  float v = static_cast<float>(n1 < n2 ? n1 : n2) * 1.6f;
  return static_cast<idx>(v);
}

// LU block size (GETRF), by code path, precision and dimensions.
idx getrf_nb(const Name &nm, bool cplx, int cp, idx n1, idx n2, idx n3, idx n4) {
  if (cp >= 6) {
    if (n3 < 2 || n4 != -2) {
      if (n2 < 2001) return 48;
      if (n2 < 4001) return 96;
      if (n2 < 6001) return cplx ? 96 : 224;
      if (n2 <= 14000) return 224;
      return 336;
    }
    if (n2 < 2001) return 48;
    if (n2 <= 7000) return 92;
    if (n2 <= 8000) return cplx ? 92 : 120;
    if (n2 <= 10000) return 120;
    return 168;
  }
  if (cp == 5) {
    idx nb;
    if (n3 == 1) {
      nb = n2 < 1501 ? 48 : n2 < 3501 ? 88 : n2 < 4501 ? 224 : 240;
    } else if (n3 < 5) {
      if (n2 >= 1001 && n2 < 2001) return 128;
      if (n2 >= 2001 && n2 <= 2500) return 160;
      if (n2 > 2500) return 240;
      nb = 24;
    } else {
      nb = n2 < 2001 ? 48 : n2 < 4001 ? 96 : 192;
    }
    // Narrow panels for tall complex matrices with few columns.
    if (n1 != n2 && n2 < 500 &&
        ((nm.c[0] == 'C' && n1 < 5000) || (nm.c[0] == 'Z' && n1 < 2000)))
      nb = 16;
    return nb;
  }
  if (cp == 4 && nxl_serv_get_ncorespercpu() > 8 && n3 > 12 && nxl_serv_cbwr_get(1) == 1) {
    if (n2 < 1001) return 16;
    if (n2 < 2001) return 24;
    if (n2 < 4001) return 64;
    if (n2 < 5001) return 80;
    if (n2 < 7001) return 112;
    if (n2 < 10001) return 144;
    if (n2 <= 20000) return 240;
    return 256;
  }
  // Narrower vector units: blocks that grow more slowly with n.
  if (n2 < 1001) return 32;
  if (n2 < 4001) return 64;
  return 128;
}

// Cholesky block size (POTRF); n2 is the caller's thread hint.
idx potrf_nb(bool cplx, int cp, idx n1, idx n2, idx n4) {
  if (n2 < 2) {
    if (n1 < 129) return 128;
    if (n1 < 451) return 24;
    if (n1 >= 701 && n1 <= 900) return 56;
    if (n1 >= 901 && n1 <= 1050) return 96;
    if (n1 >= 1051 && n1 <= 1400) return 128;
    if (n1 > 1400 && n1 < 1801) return 192;
    if (n1 >= 1801 && n1 < 2001) return 256;
    if (n1 >= 2001 && n1 < 3001) return 384;
    if (n1 >= 3001) return 512;
  } else if (n2 > 16 && n4 == 1) {
    if (cp < 6) return n1 < 6500 ? 128 : 192;
    if (n1 < 200) return 64;
    if (n1 < 700) return 120;
    if (n1 < 2200) return 144;
    if (n1 < 7000) return 168;
    if (n1 < 11000) return 192;
    if (n1 < 16000) return 360;
    return 552;
  }
  // General branch.
  if (n1 < 1000) return cp >= 6 ? 48 : 32;
  if (n1 < 4000) return cp >= 6 ? (cplx ? 96 : 128) : 64;
  return cp >= 6 ? 256 : 128;
}

// Symmetric indefinite block size (SYTRF).
idx sytrf_nb(const Name &nm, int cp, char opt, idx n1) {
  char p = nm.c[0];
  if (cp == 6 && opt == 'U') {
    if (p == 'S') return n1 < 2001 ? 24 : n1 <= 28000 ? 64 : 80;
    if (p == 'Z') return n1 < 8001 ? 48 : n1 < 14001 ? 72 : n1 <= 28000 ? 112 : 128;
    if (p == 'C') return n1 < 4001 ? 64 : n1 < 14001 ? 72 : 80;
  }
  if (cp == 6 && opt == 'L' && p == 'S') return n1 < 2001 ? 24 : n1 < 18001 ? 64 : n1 <= 30000 ? 80 : 96;
  return cp >= 6 ? 64 : 32;
}

// Block sizes of the other blocked routines, by operation: blocks grow with
// the dimension and are wider on the 512-bit code paths.
idx general_nb(const Name &nm, bool cplx, int cp, idx n1) {
  idx base = 32;
  if (nm.op("TRI") || nm.op("UUM") || nm.op2("TR")) base = 64;
  if (nm.type("GB") || nm.type("PB")) base = 32;
  if (nm.op("EBZ") || nm.op("EIN") || nm.op("EQR") || nm.op("ERF")) return 1;
  if (cp >= 6 && n1 >= 1000) base *= 2;
  if (cplx && base > 32 && n1 < 1000) base /= 2;
  return base;
}

}  // namespace

extern "C" nxl_int nxl_lapack_iparmq(const nxl_int *ispec, const char *name, const char *opts,
                                     const nxl_int *n, const nxl_int *ilo, const nxl_int *ihi,
                                     const nxl_int *lwork) {
  // Parameters of the small-bulge multishift QR iteration.
  idx is = *ispec;
  idx nh = (ihi && ilo) ? *ihi - *ilo + 1 : 0;
  idx ns = 2;
  if (nh >= 30) ns = 4;
  if (nh >= 60) ns = 10;
  if (nh >= 150) {
    double l = std::log(static_cast<double>(nh)) / std::log(2.0);
    ns = static_cast<idx>(std::llround(static_cast<double>(nh) / l));
    if (ns < 10) ns = 10;
  }
  if (nh >= 590) ns = 64;
  if (nh >= 3000) ns = 128;
  if (nh >= 6000) ns = 256;
  ns = ns - ns % 2;
  if (ns < 2) ns = 2;
  switch (is) {
    case 12: return 75;                     // smallest matrix for the multishift code
    case 13: return nh <= 500 ? ns : 3 * ns / 2;   // deflation window
    case 14: return 14;                     // percentage of skipped sweeps before a full one
    case 15: return ns;                     // number of simultaneous shifts
    case 16: {                              // accumulate reflections in matrix products
      if (ns >= 14) return 2;
      return 0;
    }
    case 17: return 10;
    default: return 1;
  }
}

extern "C" nxl_int nxl_lapack_ilaenv(const nxl_int *ispec, const char *name, const char *opts,
                                     const nxl_int *pn1, const nxl_int *pn2, const nxl_int *pn3,
                                     const nxl_int *pn4, int name_len, int) {
  Name nm(name, name_len);
  int cp = nxl_serv_cpu_detect();
  if (nm.c[0] == 'C' && nm.c[1] == 'P' && nm.c[2] == 'U') return cp;
  idx is = *ispec;
  idx n1 = pn1 ? *pn1 : -1, n2 = pn2 ? *pn2 : -1, n3 = pn3 ? *pn3 : -1, n4 = pn4 ? *pn4 : -1;
  char opt = up(opts ? opts[0] : ' ');

  if (n1 < 11 && n2 < 11) {
    switch (is) {
      case 1: return 1;
      case 2: case 5: return 2;
      case 3: case 18: return n2 < 0 ? 32 : 22;
      case 4: return 6;
      case 6: return crossover_svd(n1, n2);
      case 8: return 50;
      case 9: return 25;
      default:
        if (is >= 16) return nxl_lapack_iparmq(ispec, name, opts, pn1, pn2, pn3, pn4);
        return 1;
    }
  }
  switch (is) {
    case 4: return 6;
    case 5: return 2;
    case 6: return crossover_svd(n1, n2);
    case 8: return 50;
    case 9: return 25;
    case 10: case 11: return 1;
    case 13: case 14: case 15: case 16: return nxl_lapack_iparmq(ispec, name, opts, pn1, pn2, pn3, pn4);
    case 19: return cp;
    case 1: case 2: case 3: case 7: case 12: case 17: case 18: case 20: break;
    default: return -1;
  }

  bool cplx;
  if (nm.c[0] == 'D' || nm.c[0] == 'S') cplx = false;
  else if (nm.c[0] == 'C' || nm.c[0] == 'Z') cplx = true;
  else return 1;

  if (is == 2) return nm.type("SY") && nm.op("TRF") ? 8 : 2;

  if (is == 7) {
    if ((nm.type("SY") || nm.type("HE")) && nm.op("TRD")) {
      if (opt == 'U') return (cp <= 5 && n2 < 1200) ? 18 : n3;
      return n3;
    }
    if ((nm.type("SY") || nm.type("HE")) && nm.op("TD2")) {
      if (opt == 'U') return n2 > 300 ? 8 : 4;
      if (cp < 6) return 24;
      return n2 < 301 ? 18 : n3;
    }
    if ((nm.type("HG") && nm.op("EQZ")) || (nm.type("GG") && nm.op("HRD"))) {
      if (cp <= 2) return 2;
      if (!cplx) return 32;
      if (cp == 6) return 32;
      if (n1 <= 450) return 1;
      return 2 + static_cast<idx>((static_cast<double>(n1) - 450.0) / 175.0);
    }
    return 1;
  }

  if (is == 12) {
    bool qrf = nm.op("QRF"), trf = nm.op("TRF");
    if (qrf && opt == 'P') {
      if (n2 < 401) return 24;
      if (n2 < 551) return 32;
      if (n2 < 801) return 48;
      if (n2 <= 1350) return 64;
      if (n2 < 1901) return 96;
      return 128;
    }
    if (!qrf && !trf) return nxl_lapack_iparmq(ispec, name, opts, pn1, pn2, pn3, pn4);
    return 1;
  }

  if (is == 3 || is == 18) {
    if (nm.type("GE") && nm.op("TRF")) {
      if (n1 + n2 < 300 || n2 < 64) return 1;
      if (n3 < 0) return 0;
      if (nm.c[0] == 'D' && n3 == 8 && n2 >= 4001) return cp < 5 ? 1 : 0;
      return 0;
    }
    if (nm.type("PO") && nm.op("TRF")) return 128;
    if (nm.op("QRF") || nm.op("RQF") || nm.op("LQF") || nm.op("QLF") || nm.op("HRD") ||
        nm.op("BRD") || nm.op("TRD") || nm.op2("GQ") || nm.op2("GR") || nm.op2("GL") ||
        nm.op2("MQ") || nm.op2("MR") || nm.op2("ML"))
      return 128;
    return 1;
  }

  if (is == 17 || is == 20) return 1;

  // ispec 1: block size.
  if (nm.type("GE") && nm.op("TRF")) return getrf_nb(nm, cplx, cp, n1, n2, n3, n4);
  if (nm.type("PO") && nm.op("TRF")) return potrf_nb(cplx, cp, n1, n2, n4);
  if ((nm.type("SY") || nm.type("HE")) && nm.op("TRF")) return sytrf_nb(nm, cp, opt, n1);
  static const char *const known_types[] = {"GE", "GB", "GT", "PO", "PP", "PB", "PT", "SY", "HE", "SP", "HP",
                                            "TR", "TP", "TB", "OR", "UN", "ST", "LA", "HS", "GG", "TG", "BD",
                                            "OP", "UP", "SB", "HB", "PS", "PF", "TF", "TZ", "CS"};
  for (const char *t : known_types)
    if (nm.type(t)) return general_nb(nm, cplx, cp, n1);
  return 1;
}

namespace nxl {
namespace lapack {
// Tile size of the threaded Cholesky algorithm.
idx ilaenv_dt_f(char prec, idx n, int threads) {
  int cp = nxl_serv_cpu_detect();
  bool cplx = prec == 'C' || prec == 'Z';
  idx t = cp >= 6 ? 256 : 192;
  if (cplx) t = t * 3 / 4;
  if (n < 2 * t * threads) t = n / (2 * threads);
  if (t < 96) t = 96;
  return t;
}

// Panel width of the threaded LU: the trailing updates are rank-nb products,
// which reach the matrix-product rate from about k = 128 on the 512-bit
// paths; narrower vector units and complex arithmetic (four times the flops
// per element) get there with narrower panels, which also keep the panel
// factorization, the critical path of the look-ahead, short.
idx getrf_team_nb(char prec, idx m, idx n, int threads) {
  idx mn = m < n ? m : n;
  int cp = nxl_serv_cpu_detect();
  bool cplx = prec == 'C' || prec == 'Z';
  // Measured at n = 2000, one thread: real 128-192 within 3 % of each
  // other on the 512-bit paths, 96-128 on the 256-bit ones (64 is 5 % slower);
  // complex best at 96.
  idx nb = mn <= 400 ? 32 : mn <= 1200 ? 64 : mn <= 3000 ? 128 : 192;
  if (cp < 6 && nb > 128) nb = 128;
  if (cplx && nb > 96) nb = 96;
  (void)threads;
  return nb;
}
}  // namespace lapack
}  // namespace nxl

// The exported oracle. The strings print as their first character.
extern "C" nxl_int ILAENV(const nxl_int *ispec, const char *name, const char *opts, const nxl_int *n1,
                          const nxl_int *n2, const nxl_int *n3, const nxl_int *n4, int name_len, int opts_len);
extern "C" NXL_API nxl_int ilaenv(const nxl_int *, const char *, const char *, const nxl_int *, const nxl_int *,
                                  const nxl_int *, const nxl_int *, int, int) __attribute__((alias("ILAENV")));
extern "C" NXL_API nxl_int ilaenv_(const nxl_int *, const char *, const char *, const nxl_int *, const nxl_int *,
                                   const nxl_int *, const nxl_int *, int, int) __attribute__((alias("ILAENV")));

namespace {
nxl_int ilaenv_internal(const nxl_int *ispec, const char *name, const char *opts, const nxl_int *n1,
                        const nxl_int *n2, const nxl_int *n3, const nxl_int *n4) {
  // Fortran callers pass the name's length after the last argument; the
  // name is read up to six characters or its terminator, whichever is first.
  return nxl_lapack_ilaenv(ispec, name, opts, n1, n2, n3, n4, 6, 1);
}
}  // namespace

extern "C" nxl_int ILAENV(const nxl_int *ispec, const char *name, const char *opts, const nxl_int *n1,
                          const nxl_int *n2, const nxl_int *n3, const nxl_int *n4, int, int) {
  static const int *verbose_ptr = &nxl::lapack::kVerboseUnknown;
  return nxl::lapack::entry<nxl_int>("ILAENV", verbose_ptr, nxl::lapack::kNone, nullptr, &ilaenv_internal,
                                     ispec, name, opts, n1, n2, n3, n4);
}
