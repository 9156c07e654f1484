// The exported DFTI entries: C (scalars by value, variable arguments,
// per-dimension arrays in row-major order) and Fortran (every argument by
// address, arrays first-dimension fastest).
#include <stdarg.h>
#include <string.h>
#include <type_traits>

#include "dft/dfti/descriptor.h"
#include "service/fortran.h"

using namespace nxl::dft;

// The parameter number is an enumeration in the prototypes; it is passed as
// an int, which va_start handles alike.
#pragma clang diagnostic ignored "-Wvarargs"

extern "C" const char *nxl_dft_dfti_version_text(void);

namespace {

// C lengths and strides come last-dimension fastest; the record holds them
// first-dimension fastest.
void reverse(nxl_int *a, int n) {
  for (int i = 0, j = n - 1; i < j; ++i, --j) {
    nxl_int t = a[i];
    a[i] = a[j];
    a[j] = t;
  }
}

nxl_int c_create(DFTI_DESCRIPTOR_HANDLE *h, int prec, int dom, int dim, va_list ap) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  *h = nullptr;
  if (dim < 1 || dim > kMaxRank) return DFTI_INVALID_CONFIGURATION;
  nxl_int len[kMaxRank];
  if (dim == 1) {
    len[0] = va_arg(ap, nxl_int);
    if (len[0] <= 0) return DFTI_INVALID_CONFIGURATION;
  } else {
    const nxl_int *l = va_arg(ap, const nxl_int *);
    if (!l) return DFTI_INCONSISTENT_CONFIGURATION;
    for (int i = 0; i < dim; ++i) {
      len[i] = l[i];
      if (len[i] == 0) return DFTI_INVALID_CONFIGURATION;
    }
    reverse(len, dim);
  }
  nxl_int p = prec, d = dom, n = dim;
  if (prec == DFTI_DOUBLE) return nxl_dft_dfti_create_descriptor_d_md(h, &p, &d, &n, len);
  if (prec == DFTI_SINGLE) return nxl_dft_dfti_create_descriptor_s_md(h, &p, &d, &n, len);
  return DFTI_INVALID_CONFIGURATION;
}

}  // namespace

// An enumerated argument as the caller passed it. Callers may pass any
// integer, so it is read as the enumeration's underlying integer rather than
// loaded as the enumeration, whose valid range is narrower.
template <class E> static nxl_int enum_number(const E &e) {
  std::underlying_type_t<E> v;
  memcpy(&v, &e, sizeof v);
  return static_cast<nxl_int>(v);
}

extern "C" {

NXL_API nxl_int DftiCreateDescriptor(DFTI_DESCRIPTOR_HANDLE *h, enum DFTI_CONFIG_VALUE prec,
                                     enum DFTI_CONFIG_VALUE dom, int dim, ...) {
  va_list ap;
  va_start(ap, dim);
  nxl_int st = c_create(h, enum_number(prec), enum_number(dom), dim, ap);
  va_end(ap);
  return st;
}

// The typed forms: the precision of the name, whatever the argument says.
#define NXL_DFTI_C_TYPED(name, PREC, ONE_D)                                                        \
  NXL_API nxl_int name(DFTI_DESCRIPTOR_HANDLE *h, enum DFTI_CONFIG_VALUE, enum DFTI_CONFIG_VALUE dom, \
                       int dim, ...) {                                                              \
    va_list ap;                                                                                    \
    va_start(ap, dim);                                                                             \
    nxl_int st;                                                                                    \
    if (ONE_D) {                                                                                   \
      nxl_int len = va_arg(ap, nxl_int), p = PREC, d = enum_number(dom), n = dim;                               \
      if (h) *h = nullptr;                                                                         \
      st = PREC == DFTI_DOUBLE ? nxl_dft_dfti_create_descriptor_d_1d(h, &p, &d, &n, &len)           \
                               : nxl_dft_dfti_create_descriptor_s_1d(h, &p, &d, &n, &len);          \
    } else {                                                                                       \
      st = c_create(h, PREC, enum_number(dom), dim, ap);                                                        \
    }                                                                                              \
    va_end(ap);                                                                                    \
    return st;                                                                                     \
  }
NXL_DFTI_C_TYPED(DftiCreateDescriptor_s_1d, DFTI_SINGLE, true)
NXL_DFTI_C_TYPED(DftiCreateDescriptor_d_1d, DFTI_DOUBLE, true)
NXL_DFTI_C_TYPED(DftiCreateDescriptor_s_md, DFTI_SINGLE, false)
NXL_DFTI_C_TYPED(DftiCreateDescriptor_d_md, DFTI_DOUBLE, false)
#undef NXL_DFTI_C_TYPED

NXL_API nxl_int DftiSetValue(DFTI_DESCRIPTOR_HANDLE h, enum DFTI_CONFIG_PARAM param, ...) {
  if (!valid(h)) return DFTI_BAD_DESCRIPTOR;
  nxl_int p = enum_number(param);
  if (p < 0 || p > kLastParam) return DFTI_INCONSISTENT_CONFIGURATION;
  va_list ap;
  va_start(ap, param);
  nxl_int st = DFTI_INCONSISTENT_CONFIGURATION;
  switch (p) {
    case DFTI_FORWARD_SCALE:
    case DFTI_BACKWARD_SCALE: {
      double v = va_arg(ap, double);
      st = nxl_dft_dfti_set_value_dblval(&h, &p, &v);
      break;
    }
    case DFTI_INPUT_STRIDES:
    case DFTI_OUTPUT_STRIDES: {
      const nxl_int *s = va_arg(ap, const nxl_int *);
      if (!s) break;
      nxl_int tmp[kMaxRank + 1];
      int n = h->dimension;
      memcpy(tmp, s, sizeof(nxl_int) * (n + 1));
      reverse(tmp + 1, n);
      st = nxl_dft_dfti_set_value_intvec(&h, &p, tmp);
      break;
    }
    case DFTI_DESCRIPTOR_NAME: {
      const char *s = va_arg(ap, const char *);
      if (!s) break;
      st = nxl_dft_dfti_set_value_chars(&h, &p, s, nxl_serv_strnlen_s(s, 4096), '\0');
      break;
    }
    case DFTI_NUMBER_OF_TRANSFORMS: case DFTI_INPUT_DISTANCE: case DFTI_OUTPUT_DISTANCE:
    case DFTI_NUMBER_OF_USER_THREADS: case DFTI_THREAD_LIMIT: {
      nxl_int v = va_arg(ap, nxl_int);
      st = nxl_dft_dfti_set_value_intval(&h, &p, &v);
      break;
    }
    case DFTI_DIMENSION: case DFTI_LENGTHS: case 6: case 16: case DFTI_VERSION: case 24: case 25:
      break;
    default: {   // enumerated values
      nxl_int v = va_arg(ap, int);
      st = nxl_dft_dfti_set_value_intval(&h, &p, &v);
      break;
    }
  }
  va_end(ap);
  return st;
}

NXL_API nxl_int DftiGetValue(DFTI_DESCRIPTOR_HANDLE h, enum DFTI_CONFIG_PARAM param, ...) {
  nxl_int p = enum_number(param);
  va_list ap;
  va_start(ap, param);
  nxl_int st = DFTI_INCONSISTENT_CONFIGURATION;
  if (p == DFTI_VERSION) {
    char *buf = va_arg(ap, char *);
    if (buf) {
      const char *v = nxl_dft_dfti_version_text();
      memcpy(buf, v, strlen(v) + 1);
      st = 0;
    }
    va_end(ap);
    return st;
  }
  if (!valid(h)) {
    va_end(ap);
    return DFTI_BAD_DESCRIPTOR;
  }
  void *out = va_arg(ap, void *);
  va_end(ap);
  if (p < 0 || p > kLastParam || !out) return DFTI_INCONSISTENT_CONFIGURATION;
  switch (p) {
    case DFTI_FORWARD_SCALE:
    case DFTI_BACKWARD_SCALE: {
      double v = 0;
      st = nxl_dft_dfti_get_value_dblval(&h, &p, &v);
      if (st) return st;
      if (h->precision == DFTI_SINGLE) *static_cast<float *>(out) = static_cast<float>(v);
      else *static_cast<double *>(out) = v;
      return 0;
    }
    case DFTI_LENGTHS:
    case DFTI_INPUT_STRIDES:
    case DFTI_OUTPUT_STRIDES: {
      nxl_int tmp[kMaxRank + 1];
      st = nxl_dft_dfti_get_value_intvec(&h, &p, tmp);
      if (st) return st;
      int n = h->dimension;
      if (p == DFTI_LENGTHS) {
        reverse(tmp, n);
        memcpy(out, tmp, sizeof(nxl_int) * n);
      } else {
        reverse(tmp + 1, n);
        memcpy(out, tmp, sizeof(nxl_int) * (n + 1));
      }
      return 0;
    }
    case DFTI_DESCRIPTOR_NAME: {
      char *buf = static_cast<char *>(out);
      h->methods->getDescriptorName(h, buf, kNameLength);
      buf[kNameLength] = '\0';
      return 0;
    }
    case DFTI_DIMENSION: case DFTI_NUMBER_OF_TRANSFORMS: case DFTI_INPUT_DISTANCE: case DFTI_OUTPUT_DISTANCE:
    case DFTI_NUMBER_OF_USER_THREADS: case DFTI_THREAD_LIMIT:
      return nxl_dft_dfti_get_value_intval(&h, &p, static_cast<nxl_int *>(out));
    default: {   // enumerated values, written as 32-bit integers
      nxl_int v = 0;
      st = nxl_dft_dfti_get_value_intval(&h, &p, &v);
      if (!st) *static_cast<int *>(out) = static_cast<int>(v);
      return st;
    }
  }
}

NXL_API nxl_int DftiCopyDescriptor(DFTI_DESCRIPTOR_HANDLE src, DFTI_DESCRIPTOR_HANDLE *dst) {
  return nxl_dft_dfti_copy_descriptor_external(&src, dst);
}

NXL_API nxl_int DftiFreeDescriptor(DFTI_DESCRIPTOR_HANDLE *h) { return nxl_dft_dfti_free_descriptor_external(h); }

NXL_API nxl_int DftiCommitDescriptor(DFTI_DESCRIPTOR_HANDLE h) { return nxl_dft_dfti_commit_descriptor_external(&h); }

// Compute: the further arrays are read only as far as the descriptor needs.
// With tracing off (the mode word read and 0) the committed routine is
// called at once.
static nxl_int c_compute(DFTI_DESCRIPTOR_HANDLE h, int forward, void *a1, va_list ap) {
  if (!h) return DFTI_BAD_DESCRIPTOR;
  const nxl::dft::ComputeFn fn = forward ? h->forward : h->backward;
  if (!fn) return DFTI_INVALID_CONFIGURATION;
  if (!a1) return DFTI_INCONSISTENT_CONFIGURATION;
  void *a[3] = {nullptr, nullptr, nullptr};
  for (int i = 1; i < h->narrays && i < 4; ++i) {
    a[i - 1] = va_arg(ap, void *);
    if (!a[i - 1]) return DFTI_INCONSISTENT_CONFIGURATION;
  }
  const int *mode = nxl::dft::g_verbose_word.load(std::memory_order_relaxed);
  if (mode && *mode == 0) return fn(h, a1, a[0], a[1], a[2]);
  return nxl_dft_dfti_compute(h, forward, a1, a[0], a[1], a[2]);
}

NXL_API nxl_int DftiComputeForward(DFTI_DESCRIPTOR_HANDLE h, void *a1, ...) {
  va_list ap;
  va_start(ap, a1);
  nxl_int st = c_compute(h, 1, a1, ap);
  va_end(ap);
  return st;
}

NXL_API nxl_int DftiComputeBackward(DFTI_DESCRIPTOR_HANDLE h, void *a1, ...) {
  va_list ap;
  va_start(ap, a1);
  nxl_int st = c_compute(h, 0, a1, ap);
  va_end(ap);
  return st;
}

}  // extern "C"

// ---- Fortran entries ------------------------------------------------------
#define NXL_DFTI_FWD(UPPER, lower, params, call) \
  NXL_FORTRAN_ENTRY(int, UPPER, lower, params) { return static_cast<int>(call); }

NXL_DFTI_FWD(DFTI_CREATE_DESCRIPTOR_1D, dfti_create_descriptor_1d,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *d, const nxl_int *n, const nxl_int *l),
             nxl_dft_dfti_create_descriptor_1d(h, p, d, n, l))
NXL_DFTI_FWD(DFTI_CREATE_DESCRIPTOR_HIGHD, dfti_create_descriptor_highd,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *d, const nxl_int *n, const nxl_int *l),
             nxl_dft_dfti_create_descriptor_highd(h, p, d, n, l))
NXL_DFTI_FWD(DFTI_CREATE_DESCRIPTOR_S_1D, dfti_create_descriptor_s_1d,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *d, const nxl_int *n, const nxl_int *l),
             nxl_dft_dfti_create_descriptor_s_1d(h, p, d, n, l))
NXL_DFTI_FWD(DFTI_CREATE_DESCRIPTOR_D_1D, dfti_create_descriptor_d_1d,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *d, const nxl_int *n, const nxl_int *l),
             nxl_dft_dfti_create_descriptor_d_1d(h, p, d, n, l))
NXL_DFTI_FWD(DFTI_CREATE_DESCRIPTOR_S_MD, dfti_create_descriptor_s_md,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *d, const nxl_int *n, const nxl_int *l),
             nxl_dft_dfti_create_descriptor_s_md(h, p, d, n, l))
NXL_DFTI_FWD(DFTI_CREATE_DESCRIPTOR_D_MD, dfti_create_descriptor_d_md,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *d, const nxl_int *n, const nxl_int *l),
             nxl_dft_dfti_create_descriptor_d_md(h, p, d, n, l))
NXL_DFTI_FWD(DFTI_SET_VALUE_INTVAL, dfti_set_value_intval,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *v), nxl_dft_dfti_set_value_intval(h, p, v))
NXL_DFTI_FWD(DFTI_GET_VALUE_INTVAL, dfti_get_value_intval, (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, nxl_int *v),
             nxl_dft_dfti_get_value_intval(h, p, v))
NXL_DFTI_FWD(DFTI_SET_VALUE_SGLVAL, dfti_set_value_sglval,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const float *v), nxl_dft_dfti_set_value_sglval(h, p, v))
NXL_DFTI_FWD(DFTI_GET_VALUE_SGLVAL, dfti_get_value_sglval, (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, float *v),
             nxl_dft_dfti_get_value_sglval(h, p, v))
NXL_DFTI_FWD(DFTI_SET_VALUE_DBLVAL, dfti_set_value_dblval,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const double *v), nxl_dft_dfti_set_value_dblval(h, p, v))
NXL_DFTI_FWD(DFTI_GET_VALUE_DBLVAL, dfti_get_value_dblval, (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, double *v),
             nxl_dft_dfti_get_value_dblval(h, p, v))
NXL_DFTI_FWD(DFTI_SET_VALUE_INTVEC, dfti_set_value_intvec,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const nxl_int *v), nxl_dft_dfti_set_value_intvec(h, p, v))
NXL_DFTI_FWD(DFTI_GET_VALUE_INTVEC, dfti_get_value_intvec, (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, nxl_int *v),
             nxl_dft_dfti_get_value_intvec(h, p, v))
NXL_DFTI_FWD(DFTI_SET_VALUE_CHARS, dfti_set_value_chars,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, const char *s, size_t len),
             nxl_dft_dfti_set_value_chars(h, p, s, len, ' '))
NXL_DFTI_FWD(DFTI_GET_VALUE_CHARS, dfti_get_value_chars,
             (DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *p, char *s, size_t len), nxl_dft_dfti_get_value_chars(h, p, s, len))
NXL_DFTI_FWD(DFTI_COPY_DESCRIPTOR_EXTERNAL, dfti_copy_descriptor_external,
             (DFTI_DESCRIPTOR_HANDLE *s, DFTI_DESCRIPTOR_HANDLE *d), nxl_dft_dfti_copy_descriptor_external(s, d))
NXL_DFTI_FWD(DFTI_FREE_DESCRIPTOR_EXTERNAL, dfti_free_descriptor_external, (DFTI_DESCRIPTOR_HANDLE *h),
             nxl_dft_dfti_free_descriptor_external(h))
NXL_DFTI_FWD(DFTI_COMMIT_DESCRIPTOR_EXTERNAL, dfti_commit_descriptor_external, (DFTI_DESCRIPTOR_HANDLE *h),
             nxl_dft_dfti_commit_descriptor_external(h))

// Compute entries by argument kind: the kind fixes the number of arrays.
namespace {
int f_compute(DFTI_DESCRIPTOR_HANDLE *h, int forward, int count, void *a1, void *a2, void *a3, void *a4) {
  if (!h || !*h) return DFTI_BAD_DESCRIPTOR;
  DFTI_DESCRIPTOR *d = *h;
  if (d->narrays != count) return DFTI_INCONSISTENT_CONFIGURATION;
  if (!(forward ? d->forward : d->backward)) return DFTI_INVALID_CONFIGURATION;
  return static_cast<int>(nxl_dft_dfti_compute(d, forward, a1, a2, a3, a4));
}
}  // namespace

#define NXL_DFTI_CK1(UP, lo, fwd)                                             \
  extern "C" nxl_int nxl_dft_dfti_compute_##lo(DFTI_DESCRIPTOR_HANDLE *h, void *a) { \
    return f_compute(h, fwd, 1, a, nullptr, nullptr, nullptr);                \
  }                                                                           \
  NXL_FORTRAN_ENTRY(int, DFTI_COMPUTE_##UP, dfti_compute_##lo, (DFTI_DESCRIPTOR_HANDLE * h, void *a)) { \
    return static_cast<int>(nxl_dft_dfti_compute_##lo(h, a));                 \
  }
#define NXL_DFTI_CK2(UP, lo, fwd)                                                       \
  extern "C" nxl_int nxl_dft_dfti_compute_##lo(DFTI_DESCRIPTOR_HANDLE *h, void *a, void *b) { \
    return f_compute(h, fwd, 2, a, b, nullptr, nullptr);                                \
  }                                                                                     \
  NXL_FORTRAN_ENTRY(int, DFTI_COMPUTE_##UP, dfti_compute_##lo, (DFTI_DESCRIPTOR_HANDLE * h, void *a, void *b)) { \
    return static_cast<int>(nxl_dft_dfti_compute_##lo(h, a, b));                        \
  }
#define NXL_DFTI_CK4(UP, lo, fwd)                                                                         \
  extern "C" nxl_int nxl_dft_dfti_compute_##lo(DFTI_DESCRIPTOR_HANDLE *h, void *a, void *b, void *c, void *e) { \
    return f_compute(h, fwd, 4, a, b, c, e);                                                              \
  }                                                                                                       \
  NXL_FORTRAN_ENTRY(int, DFTI_COMPUTE_##UP, dfti_compute_##lo,                                            \
                    (DFTI_DESCRIPTOR_HANDLE * h, void *a, void *b, void *c, void *e)) {                   \
    return static_cast<int>(nxl_dft_dfti_compute_##lo(h, a, b, c, e));                                    \
  }

NXL_DFTI_CK1(FORWARD_Z, forward_z, 1)
NXL_DFTI_CK1(FORWARD_C, forward_c, 1)
NXL_DFTI_CK1(FORWARD_D, forward_d, 1)
NXL_DFTI_CK1(FORWARD_S, forward_s, 1)
NXL_DFTI_CK1(BACKWARD_Z, backward_z, 0)
NXL_DFTI_CK1(BACKWARD_C, backward_c, 0)
NXL_DFTI_CK1(BACKWARD_D, backward_d, 0)
NXL_DFTI_CK1(BACKWARD_S, backward_s, 0)
NXL_DFTI_CK2(FORWARD_ZZ, forward_zz, 1)
NXL_DFTI_CK2(FORWARD_CC, forward_cc, 1)
NXL_DFTI_CK2(FORWARD_DD, forward_dd, 1)
NXL_DFTI_CK2(FORWARD_SS, forward_ss, 1)
NXL_DFTI_CK2(BACKWARD_ZZ, backward_zz, 0)
NXL_DFTI_CK2(BACKWARD_CC, backward_cc, 0)
NXL_DFTI_CK2(BACKWARD_DD, backward_dd, 0)
NXL_DFTI_CK2(BACKWARD_SS, backward_ss, 0)
NXL_DFTI_CK2(FORWARD_DZ, forward_dz, 1)
NXL_DFTI_CK2(FORWARD_SC, forward_sc, 1)
NXL_DFTI_CK2(BACKWARD_ZD, backward_zd, 0)
NXL_DFTI_CK2(BACKWARD_CS, backward_cs, 0)
NXL_DFTI_CK4(FORWARD_DDDD, forward_dddd, 1)
NXL_DFTI_CK4(FORWARD_SSSS, forward_ssss, 1)
NXL_DFTI_CK4(BACKWARD_DDDD, backward_dddd, 0)
NXL_DFTI_CK4(BACKWARD_SSSS, backward_ssss, 0)
