// Commit: normalise the layout, check it, fix the thread count and offer the
// descriptor to the backends of its list until one accepts it.
#include <string.h>

#include "dft/backends/exec.h"

namespace nxl::dft {

namespace {

nxl_int iabs(nxl_int v) { return v < 0 ? -v : v; }

}  // namespace

void uncommit(DFTI_DESCRIPTOR *d) {
  if (d->plan && d->plan_free) d->plan_free(d->plan);
  d->plan = nullptr;
  d->plan_free = nullptr;
  d->backend = nullptr;
  d->forward = nullptr;
  d->backward = nullptr;
  d->commit_status = DFTI_UNCOMMITTED;
}

// Working copy of the layout. In place, a complex transform writes where it
// reads: its output layout is its input layout. For a complex forward domain
// the dimensions are then sorted by stride, dimensions of length 1 dropped,
// and the batch dropped when it holds one transform.
int static_dt_commit(DFTI_DESCRIPTOR *d) {
  Tensor<DimRecord> &w = d->wlengths;
  Tensor<BatchRecord> &b = d->wbatch;
  if (w.count < d->dimension || !w.rec || !b.rec) return DFTI_NXL_INTERNAL_ERROR;
  memcpy(w.rec, d->lengths.rec, sizeof(DimRecord) * d->dimension);
  w.count = d->dimension;
  w.ioff = d->lengths.ioff;
  w.ooff = d->lengths.ooff;
  b.rec[0] = d->batch.rec[0];
  b.count = 1;
  const bool inplace_complex = d->placement == DFTI_INPLACE && d->domain == DFTI_COMPLEX;
  if (inplace_complex) {
    w.ooff = w.ioff;
    for (int i = 0; i < w.count; ++i) w.rec[i].ostride = w.rec[i].istride;
    b.rec[0].odist = b.rec[0].idist;
  }
  if (d->domain != DFTI_COMPLEX) return 0;
  // Sort by input stride (then output stride): insertion sort of <= 7 records.
  for (int i = 1; i < w.count; ++i) {
    DimRecord r = w.rec[i];
    int j = i - 1;
    while (j >= 0 && (iabs(w.rec[j].istride) > iabs(r.istride) ||
                      (iabs(w.rec[j].istride) == iabs(r.istride) && iabs(w.rec[j].ostride) > iabs(r.ostride)))) {
      w.rec[j + 1] = w.rec[j];
      --j;
    }
    w.rec[j + 1] = r;
  }
  int k = 0;
  for (int i = 0; i < w.count; ++i)
    if (w.rec[i].length != 1) w.rec[k++] = w.rec[i];
  if (k == 0) w.rec[k++] = DimRecord{1, 1, 1, 0, 0};   // a single point: one trivial dimension
  w.count = k;
  if (b.rec[0].number == 1) b.rec[0].idist = b.rec[0].odist = 0;
  return 0;
}

Layout working_layout(const DFTI_DESCRIPTOR *d) {
  Layout L{};
  const Tensor<DimRecord> &w = d->wlengths;
  L.rank = w.count;
  for (int i = 0; i < w.count; ++i) {
    L.n[i] = w.rec[i].length;
    L.is[i] = w.rec[i].istride;
    L.os[i] = w.rec[i].ostride;
  }
  L.howmany = d->wbatch.rec[0].number;
  L.idist = d->wbatch.rec[0].idist;
  L.odist = d->wbatch.rec[0].odist;
  L.ioff = w.ioff;
  L.ooff = w.ooff;
  return L;
}

int static_dfti_commit(DFTI_DESCRIPTOR *d) {
  uncommit(d);
  int st = d->methods->dt_commit(d);
  if (st) return st;
  const Layout L = working_layout(d);
  // Cached values of the working layout.
  d->c_howmany = L.howmany;
  d->c_idist = L.idist;
  d->c_odist = L.odist;
  d->c_rank = L.rank;
  d->c_n0 = L.n[0];
  d->c_is0 = L.is[0];
  d->c_os0 = L.os[0];
  d->c_fscale = d->fscale;
  d->c_bscale = d->bscale;
  d->c_fscale_f = static_cast<float>(d->fscale);
  d->c_bscale_f = static_cast<float>(d->bscale);
  d->c_ioff = L.ioff;
  d->c_ooff = L.ooff;

  // Real in place with complex conjugate-even storage: both descriptions
  // must cover the same memory (real elements on one side, complex ones on
  // the other).
  if (d->placement == DFTI_INPLACE && d->domain == DFTI_REAL && d->cestorage == DFTI_COMPLEX_COMPLEX &&
      L.is[0] == 1 && L.os[0] == 1) {
    bool a = L.ooff == 2 * L.ioff, b = L.ioff == 2 * L.ooff;
    for (int k = 1; k < L.rank; ++k) {
      a = a && L.os[k] == 2 * L.is[k];
      b = b && L.is[k] == 2 * L.os[k];
    }
    if (L.howmany > 1) {
      a = a && L.odist == 2 * L.idist;
      b = b && L.idist == 2 * L.odist;
    }
    if (!a && !b) return DFTI_INCONSISTENT_CONFIGURATION;
  }
  if (L.howmany < 1) return DFTI_INCONSISTENT_CONFIGURATION;
  for (int k = 0; k < L.rank; ++k)
    if (L.n[k] < 1) return DFTI_INVALID_CONFIGURATION;
    else if (L.n[k] > 0xffffffffLL) return DFTI_1D_LENGTH_EXCEEDS_INT32;

  // Threads: the limit when one is set, else the FFT domain's count.
  d->nthreads = d->thread_limit != 0 ? d->thread_limit : d->rts->getMaxThreadsDFT();
  if (d->nthreads < 1) d->nthreads = 1;
  d->c_dynamic = d->rts->getDynamic();

  d->narrays = is_split(d) ? (d->placement == DFTI_INPLACE ? 2 : 4) : (d->placement == DFTI_INPLACE ? 1 : 2);
  const BackendRecord *const *list = d->bkdlist;
  if (!list || !list[0]) return 0;
  st = kNotApplicable;
  for (; *list; ++list) {
    st = (*list)->commit(*list, d);
    if (st == 0) return 0;
  }
  uncommit(d);
  return st == kNotApplicable ? DFTI_INCONSISTENT_CONFIGURATION : st;
}

}  // namespace nxl::dft
