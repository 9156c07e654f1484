// Configuration of a descriptor: the parameter table with its checks, and
// the set/get implementations shared by the C and Fortran entries.
#include <string.h>

#include "dft/dfti/descriptor.h"

using namespace nxl::dft;

namespace {

constexpr const char kVersion[] = "Ortex NXL 1.0.0 DFTI, descriptor interface with mixed-radix, "
                                   "real-input and Bluestein plans";

// Runs fn on every descriptor of the chain.
template <class F> void on_chain(DFTI_DESCRIPTOR *d, F fn) {
  for (; d; d = d->next) fn(d);
}

}  // namespace

extern "C" {

nxl_int nxl_dft_dfti_set_value_intval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const nxl_int *value) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  // Every call through here leaves the descriptor uncommitted.
  d->forward = nullptr;
  d->backward = nullptr;
  d->flags &= static_cast<uint8_t>(~1u);
  d->commit_status = DFTI_UNCOMMITTED;
  uncommit(d);
  const nxl_int v = *value;
  const int32_t e = static_cast<int32_t>(v);
  constexpr int kBad = DFTI_INCONSISTENT_CONFIGURATION;
  switch (*param) {
    case DFTI_NUMBER_OF_TRANSFORMS: return d->methods->setNumberOfTransforms(d, v);
    case DFTI_INPUT_DISTANCE: return d->methods->setInputDistance(d, v);
    case DFTI_OUTPUT_DISTANCE: return d->methods->setOutputDistance(d, v);
    case DFTI_THREAD_LIMIT: return d->methods->setThreadLimit(d, v);
    case DFTI_COMPLEX_STORAGE:
      if (v == DFTI_COMPLEX_COMPLEX || v == DFTI_REAL_REAL) {
        on_chain(d, [&](DFTI_DESCRIPTOR *x) { x->cstorage = e; });
        return 0;
      }
      return v == DFTI_COMPLEX_REAL || v == DFTI_REAL_COMPLEX ? DFTI_UNIMPLEMENTED : kBad;
    case DFTI_REAL_STORAGE:
      if (v == DFTI_REAL_REAL) {
        on_chain(d, [&](DFTI_DESCRIPTOR *x) { x->rstorage = e; });
        return 0;
      }
      return v == DFTI_REAL_COMPLEX ? DFTI_UNIMPLEMENTED : kBad;
    case DFTI_CONJUGATE_EVEN_STORAGE:
      if (v == DFTI_COMPLEX_COMPLEX || v == DFTI_COMPLEX_REAL) {
        on_chain(d, [&](DFTI_DESCRIPTOR *x) {
          x->cestorage = e;
          if (e == DFTI_COMPLEX_COMPLEX) x->packed = DFTI_CCE_FORMAT;
        });
        return 0;
      }
      return v == DFTI_REAL_COMPLEX || v == DFTI_REAL_REAL ? DFTI_UNIMPLEMENTED : kBad;
    case DFTI_PLACEMENT:
      if (v != DFTI_INPLACE && v != DFTI_NOT_INPLACE) return kBad;
      on_chain(d, [&](DFTI_DESCRIPTOR *x) { x->placement = e; });
      return 0;
    case DFTI_WORKSPACE:
      if (v != DFTI_ALLOW && v != DFTI_AVOID) return kBad;
      d->workspace = e;
      return 0;
    case DFTI_ORDERING:
      if (v == DFTI_ORDERED || (v == DFTI_BACKWARD_SCRAMBLED && d->domain != DFTI_REAL)) {
        on_chain(d, [&](DFTI_DESCRIPTOR *x) { x->ordering = e; });
        return 0;
      }
      return v == DFTI_BACKWARD_SCRAMBLED || v == DFTI_FORWARD_SCRAMBLED ? DFTI_UNIMPLEMENTED : kBad;
    case DFTI_PACKED_FORMAT:
      if (v < DFTI_CCS_FORMAT || v > DFTI_CCE_FORMAT) return kBad;
      on_chain(d, [&](DFTI_DESCRIPTOR *x) { x->packed = e; });
      return 0;
    case DFTI_NUMBER_OF_USER_THREADS:
      if (v < INT32_MIN || v > INT32_MAX) return kBad;
      on_chain(d, [&](DFTI_DESCRIPTOR *x) { x->user_threads = e; });
      return 0;
    case DFTI_DESTROY_INPUT:
      if (v == DFTI_ALLOW) d->options |= kDestroyInputBit;
      else if (v == DFTI_AVOID) d->options &= ~kDestroyInputBit;
      else return kBad;
      return 0;
    default:   // read-only, reserved or unknown parameters
      return kBad;
  }
}

nxl_int nxl_dft_dfti_get_value_intval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, nxl_int *value) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  const MethodTable *m = d->methods;
  switch (*param) {
    case DFTI_FORWARD_DOMAIN: *value = d->domain; return 0;
    case DFTI_DIMENSION: *value = d->dimension; return 0;
    case DFTI_LENGTHS:
      if (d->dimension != 1) return DFTI_INCONSISTENT_CONFIGURATION;
      return m->getLengths(d, value);
    case DFTI_PRECISION: *value = d->precision; return 0;
    case DFTI_NUMBER_OF_TRANSFORMS: return m->getNumberOfTransforms(d, value);
    case DFTI_COMPLEX_STORAGE: *value = d->cstorage; return 0;
    case DFTI_REAL_STORAGE: *value = d->rstorage; return 0;
    case DFTI_CONJUGATE_EVEN_STORAGE: *value = d->cestorage; return 0;
    case DFTI_PLACEMENT: *value = d->placement; return 0;
    case DFTI_INPUT_DISTANCE: return m->getInputDistance(d, value);
    case DFTI_OUTPUT_DISTANCE: return m->getOutputDistance(d, value);
    case DFTI_WORKSPACE: *value = d->workspace; return 0;
    case DFTI_ORDERING: *value = d->ordering; return 0;
    case DFTI_TRANSPOSE: *value = d->transpose; return 0;
    case DFTI_PACKED_FORMAT: *value = d->packed; return 0;
    case DFTI_COMMIT_STATUS: *value = d->commit_status; return 0;
    case DFTI_NUMBER_OF_USER_THREADS: *value = d->user_threads; return 0;
    case DFTI_THREAD_LIMIT: return m->getThreadLimit(d, value);
    case DFTI_DESTROY_INPUT: *value = (d->options & kDestroyInputBit) ? DFTI_ALLOW : DFTI_AVOID; return 0;
    default: return DFTI_INCONSISTENT_CONFIGURATION;
  }
}

nxl_int nxl_dft_dfti_set_value_dblval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const double *value) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  if (*param != DFTI_FORWARD_SCALE && *param != DFTI_BACKWARD_SCALE) return DFTI_INCONSISTENT_CONFIGURATION;
  return d->methods->setScale(d, static_cast<int>(*param), *value);
}

nxl_int nxl_dft_dfti_set_value_sglval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const float *value) {
  double v = *value;
  return nxl_dft_dfti_set_value_dblval(h, param, &v);
}

nxl_int nxl_dft_dfti_get_value_dblval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, double *value) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  if (*param != DFTI_FORWARD_SCALE && *param != DFTI_BACKWARD_SCALE) return DFTI_INCONSISTENT_CONFIGURATION;
  return d->methods->getScale(d, static_cast<int>(*param), value);
}

nxl_int nxl_dft_dfti_get_value_sglval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, float *value) {
  double v = 0;
  nxl_int st = nxl_dft_dfti_get_value_dblval(h, param, &v);
  if (!st) *value = static_cast<float>(v);
  return st;
}

nxl_int nxl_dft_dfti_set_value_intvec(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const nxl_int *values) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  if (*param != DFTI_INPUT_STRIDES && *param != DFTI_OUTPUT_STRIDES) return nxl_dft_dfti_set_value_intval(h, param, values);
  if (!values) return DFTI_INCONSISTENT_CONFIGURATION;
  return *param == DFTI_INPUT_STRIDES ? d->methods->setInputStrides(d, values)
                                      : d->methods->setOutputStrides(d, values);
}

nxl_int nxl_dft_dfti_get_value_intvec(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, nxl_int *values) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  if (!values) return DFTI_INCONSISTENT_CONFIGURATION;
  switch (*param) {
    case DFTI_INPUT_STRIDES: return d->methods->getInputStrides(d, values);
    case DFTI_OUTPUT_STRIDES: return d->methods->getOutputStrides(d, values);
    case DFTI_LENGTHS: return d->methods->getLengths(d, values);
    default: return nxl_dft_dfti_get_value_intval(h, param, values);
  }
}

nxl_int nxl_dft_dfti_set_value_chars(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const char *chars,
                                     size_t length, char pad) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  if (*param != DFTI_DESCRIPTOR_NAME || !chars) return DFTI_INCONSISTENT_CONFIGURATION;
  return d->methods->setDescriptorName(d, chars, length, pad);
}

nxl_int nxl_dft_dfti_get_value_chars(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, char *chars, size_t length) {
  if (!chars) return DFTI_INCONSISTENT_CONFIGURATION;
  if (*param == DFTI_VERSION) {
    memset(chars, ' ', length);
    size_t n = nxl_serv_strnlen_s(kVersion, sizeof kVersion);
    memcpy(chars, kVersion, n < length ? n : length);
    return 0;
  }
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *d = *h;
  if (!valid(d)) return DFTI_BAD_DESCRIPTOR;
  if (*param != DFTI_DESCRIPTOR_NAME) return DFTI_INCONSISTENT_CONFIGURATION;
  memset(chars, ' ', length);
  return d->methods->getDescriptorName(d, chars, length);
}

// The version text for the C entry (NUL-terminated).
const char *nxl_dft_dfti_version_text(void) { return kVersion; }

}  // extern "C"
