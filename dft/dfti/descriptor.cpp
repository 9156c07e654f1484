// The descriptor record: node builder, accessors, typed creators, copy and
// free, and the threading services shared by the descriptors of a code path.
#include "dft/dfti/descriptor.h"

#include <omp.h>
#include <string.h>
#include <unistd.h>

#include "service/codepath.h"

namespace nxl::dft {

namespace {

void *mem_alloc(size_t bytes, int alignment) { return nxl_serv_allocate(bytes, alignment); }
void mem_release(void *p) {
  if (p) nxl_serv_deallocate(p);
}

// ---- Threading services --------------------------------------------------
int rt_get_dynamic(void) { return nxl_serv_get_dynamic(); }
void rt_set_dynamic(int f) { nxl_serv_set_dynamic(f); }
int rt_max_threads(void) { return nxl_serv_domain_get_max_threads(2)   /* the FFT domain */; }
int rt_cores_per_socket(void) { return nxl_serv_get_ncorespercpu(); }
int rt_sockets(void) { return nxl_serv_get_ncpus(); }
long rt_cache_size(int level) {
  long v = -1;
  switch (level) {
    case 1: v = sysconf(_SC_LEVEL1_DCACHE_SIZE); break;
    case 2: v = sysconf(_SC_LEVEL2_CACHE_SIZE); break;
    default: v = sysconf(_SC_LEVEL3_CACHE_SIZE); break;
  }
  return v > 0 ? v : 0;
}
void rt_team(int nthr, TeamFn fn, void *arg) {
  if (nthr <= 1) {
    fn(0, 1, arg);
    return;
  }
#pragma omp parallel num_threads(nthr)
  fn(omp_get_thread_num(), omp_get_num_threads(), arg);
}
void rt_barrier(void) {
#pragma omp barrier
}
int rt_is_sequential(void) { return 0; }
void *rt_dispatcher(int) { return nullptr; }

RuntimeServices g_services[7];

// ---- Accessors -------------------------------------------------------------
void tensor_free(const MemMethods *m, void *rec) {
  if (rec) m->release(rec);
}

int m_get_istrides(const DFTI_DESCRIPTOR *d, nxl_int *s) {
  s[0] = d->lengths.ioff;
  for (int i = 0; i < d->dimension; ++i) s[i + 1] = d->lengths.rec[i].istride;
  return 0;
}
int m_get_ostrides(const DFTI_DESCRIPTOR *d, nxl_int *s) {
  s[0] = d->lengths.ooff;
  for (int i = 0; i < d->dimension; ++i) s[i + 1] = d->lengths.rec[i].ostride;
  return 0;
}
int m_set_istrides(DFTI_DESCRIPTOR *d, const nxl_int *s) {
  d->uncommit(d);
  d->lengths.ioff = s[0];
  for (int i = 0; i < d->dimension; ++i) d->lengths.rec[i].istride = s[i + 1];
  return 0;
}
int m_set_ostrides(DFTI_DESCRIPTOR *d, const nxl_int *s) {
  d->uncommit(d);
  d->lengths.ooff = s[0];
  for (int i = 0; i < d->dimension; ++i) d->lengths.rec[i].ostride = s[i + 1];
  return 0;
}
int m_get_lengths(const DFTI_DESCRIPTOR *d, nxl_int *l) {
  for (int i = 0; i < d->dimension; ++i) l[i] = d->lengths.rec[i].length;
  return 0;
}
int m_get_name(const DFTI_DESCRIPTOR *d, char *buf, size_t len) {
  size_t n = len < size_t(kNameLength) ? len : size_t(kNameLength);
  memcpy(buf, d->name, n);
  return 0;
}
int m_set_name(DFTI_DESCRIPTOR *d, const char *s, size_t len, char pad) {
  size_t n = len < size_t(kNameLength) ? len : size_t(kNameLength);
  memcpy(d->name, s, n);
  memset(d->name + n, pad, kNameLength - n);
  return 0;
}
int m_get_scale(const DFTI_DESCRIPTOR *d, int param, double *v) {
  *v = param == DFTI_FORWARD_SCALE ? d->fscale : d->bscale;
  return 0;
}
int m_set_scale(DFTI_DESCRIPTOR *d, int param, double v) {
  double &slot = param == DFTI_FORWARD_SCALE ? d->fscale : d->bscale;
  // Compared bitwise so that a NaN scale set twice keeps the descriptor as it was.
  if (memcmp(&slot, &v, sizeof v) != 0) d->uncommit(d);
  slot = v;
  return 0;
}
int m_get_idist(const DFTI_DESCRIPTOR *d, nxl_int *v) { *v = d->batch.rec[0].idist; return 0; }
int m_get_odist(const DFTI_DESCRIPTOR *d, nxl_int *v) { *v = d->batch.rec[0].odist; return 0; }
int m_get_ntrans(const DFTI_DESCRIPTOR *d, nxl_int *v) { *v = d->batch.rec[0].number; return 0; }
int m_set_idist(DFTI_DESCRIPTOR *d, nxl_int v) { d->batch.rec[0].idist = v; return 0; }
int m_set_odist(DFTI_DESCRIPTOR *d, nxl_int v) { d->batch.rec[0].odist = v; return 0; }
int m_set_fdist(DFTI_DESCRIPTOR *d, nxl_int v) { d->batch.rec[0].fdist = v; return 0; }
int m_set_bdist(DFTI_DESCRIPTOR *d, nxl_int v) { d->batch.rec[0].bdist = v; return 0; }
int m_set_ntrans(DFTI_DESCRIPTOR *d, nxl_int v) {
  if (v == 0) return DFTI_INCONSISTENT_CONFIGURATION;
  d->batch.rec[0].number = v;
  return 0;
}
int m_get_tlimit(const DFTI_DESCRIPTOR *d, nxl_int *v) {
  if (d->rts->isSequential()) {
    *v = 1;
  } else if (d->commit_status == DFTI_COMMITTED) {
    int mx = d->rts->getMaxThreadsDFT();
    *v = d->nthreads < mx ? d->nthreads : mx;
  } else {
    *v = d->thread_limit;
  }
  return 0;
}
int m_set_tlimit(DFTI_DESCRIPTOR *d, nxl_int v) {
  if (v < 0) return DFTI_INCONSISTENT_CONFIGURATION;
  d->thread_limit = d->rts->isSequential() ? 1 : static_cast<int32_t>(v > INT32_MAX ? INT32_MAX : v);
  return 0;
}
int m_get_rank(const DFTI_DESCRIPTOR *d, nxl_int *v) { *v = d->dimension; return 0; }

template <class Rec>
int tensor_clone(const MemMethods *m, const Tensor<Rec> &src, Tensor<Rec> &dst) {
  dst = src;
  dst.rec = static_cast<Rec *>(m->alloc(sizeof(Rec) * (src.count > 0 ? src.count : 1), 64));
  if (!dst.rec) return DFTI_MEMORY_ERROR;
  memcpy(dst.rec, src.rec, sizeof(Rec) * src.count);
  return 0;
}

void destroy_node(DFTI_DESCRIPTOR *d) {
  if (!d) return;
  uncommit(d);
  const MemMethods *m = d->mem;
  tensor_free(m, d->lengths.rec);
  tensor_free(m, d->batch.rec);
  tensor_free(m, d->wlengths.rec);
  tensor_free(m, d->wbatch.rec);
  d->magic = 0;
  m->release(d);
}

int m_copy_node(const DFTI_DESCRIPTOR *s, DFTI_DESCRIPTOR **out) {
  const MemMethods *m = s->mem;
  auto *d = static_cast<DFTI_DESCRIPTOR *>(m->alloc(sizeof(DFTI_DESCRIPTOR), 64));
  if (!d) return DFTI_MEMORY_ERROR;
  memcpy(static_cast<void *>(d), s, sizeof(DFTI_DESCRIPTOR));
  // The clone starts without tensors or plan of its own.
  d->lengths.rec = d->wlengths.rec = nullptr;
  d->batch.rec = d->wbatch.rec = nullptr;
  d->forward = d->backward = nullptr;
  d->backend = nullptr;
  d->plan = nullptr;
  d->plan_free = nullptr;
  d->commit_status = DFTI_UNCOMMITTED;
  d->next = nullptr;
  int st = tensor_clone(m, s->lengths, d->lengths);
  if (!st) st = tensor_clone(m, s->batch, d->batch);
  if (!st) st = tensor_clone(m, s->wlengths, d->wlengths);
  if (!st) st = tensor_clone(m, s->wbatch, d->wbatch);
  if (st) {
    destroy_node(d);
    return st;
  }
  *out = d;
  return 0;
}

}  // namespace

const MemMethods kDefaultMem = {mem_alloc, mem_release};

const MethodTable kMethods = {
    static_dfti_commit, static_dt_commit, m_get_istrides, m_get_ostrides, m_set_istrides, m_set_ostrides,
    m_get_lengths,      m_get_name,       m_set_name,     m_get_scale,    m_set_scale,    m_copy_node,
    m_get_idist,        m_get_odist,      m_get_ntrans,   m_set_idist,    m_set_odist,    m_set_ntrans,
    m_get_tlimit,       m_set_tlimit,     m_get_rank,     m_set_fdist,    m_set_bdist,
};

RuntimeServices *runtime_services(int cp) { return &g_services[cp < 0 || cp > 6 ? 0 : cp]; }

void bless_node_thr(DFTI_DESCRIPTOR *d) {
  RuntimeServices *t = d->rts;
  if (t->getDynamic) return;   // racing first callers store the same values
  t->setDynamic = rt_set_dynamic;
  t->getMaxThreadsDFT = rt_max_threads;
  t->getNumCoresPerSocket = rt_cores_per_socket;
  t->getNumSockets = rt_sockets;
  if (!t->cacheSize) t->cacheSize = rt_cache_size;
  t->parallel_team = rt_team;
  t->parallel_dynamic_team = rt_team;
  t->parallel_syncable_team = rt_team;
  t->parallel_syncable_dynamic_team = rt_team;
  t->parallel_syncable_nested_team = rt_team;
  t->barrier = rt_barrier;
  t->isSequential = rt_is_sequential;
  t->lib_specific_dispatcher = rt_dispatcher;
  __atomic_store_n(&t->getDynamic, rt_get_dynamic, __ATOMIC_RELEASE);
}

int create_node(DFTI_DESCRIPTOR **handle, int precision, int domain, int dimension, const nxl_int *lengths,
                const MemMethods *mem) {
  auto *d = static_cast<DFTI_DESCRIPTOR *>(mem->alloc(sizeof(DFTI_DESCRIPTOR), 64));
  if (!d) return DFTI_MEMORY_ERROR;
  memset(static_cast<void *>(d), 0, sizeof(DFTI_DESCRIPTOR));
  d->mem = mem;
  d->uncommit = uncommit;
  d->destroy = destroy_node;
  d->dimension = dimension;
  d->lengths.count = dimension;
  d->lengths.rec = static_cast<DimRecord *>(mem->alloc(sizeof(DimRecord) * dimension, 64));
  d->batch.count = 1;
  d->batch.rec = static_cast<BatchRecord *>(mem->alloc(sizeof(BatchRecord), 64));
  if (!d->lengths.rec || !d->batch.rec) {
    destroy_node(d);
    return DFTI_MEMORY_ERROR;
  }
  nxl_int stride = 1;
  for (int i = 0; i < dimension; ++i) {
    d->lengths.rec[i] = DimRecord{lengths[i], stride, stride, 0, 0};
    stride *= lengths[i];
  }
  d->batch.rec[0] = BatchRecord{1, 0, 0, 0, 0};
  d->methods = &kMethods;
  memset(d->name, ' ', kNameLength);
  d->domain = domain;
  d->precision = precision;
  d->cstorage = DFTI_COMPLEX_COMPLEX;
  d->rstorage = DFTI_REAL_REAL;
  d->cestorage = DFTI_COMPLEX_REAL;
  d->placement = DFTI_INPLACE;
  d->packed = DFTI_CCS_FORMAT;
  d->workspace = DFTI_ALLOW;
  d->ordering = DFTI_ORDERED;
  d->transpose = DFTI_NONE;
  d->fscale = 1.0;
  d->bscale = 1.0;
  d->user_threads = 1;
  d->magic = kMagic;
  d->commit_status = DFTI_UNCOMMITTED;
  int st = tensor_clone(mem, d->lengths, d->wlengths);
  if (!st) st = tensor_clone(mem, d->batch, d->wbatch);
  if (st) {
    destroy_node(d);
    return st;
  }
  *handle = d;
  return 0;
}

}  // namespace nxl::dft

using namespace nxl::dft;

// ---- Typed creators, one build per code path --------------------------------
// Each builds the record with the common node builder and installs its code
// path's backend list for the type.
#define NXL_DFT_CP_CREATORS(cp, cpi)                                                                  \
  extern "C" int nxl_dft_##cp##_dfti_create_node(DFTI_DESCRIPTOR **h, int prec, int dom, int dim,     \
                                                 const nxl_int *len, const MemMethods *mem) {         \
    int st = create_node(h, prec, dom, dim, len, mem);                                                \
    if (!st) {                                                                                        \
      (*h)->rts = runtime_services(cpi);                                                              \
      (*h)->cp_index = cpi;                                                                           \
      if (!(*h)->rts->cacheSize) (*h)->rts->cacheSize = rt_cache_size;                                \
    }                                                                                                 \
    return st;                                                                                        \
  }                                                                                                   \
  NXL_DFT_CP_CREATOR(cp, cpi, s, c, 1d, DFTI_SINGLE, DFTI_COMPLEX, kComplex1D)                        \
  NXL_DFT_CP_CREATOR(cp, cpi, s, c, md, DFTI_SINGLE, DFTI_COMPLEX, kComplexMD)                        \
  NXL_DFT_CP_CREATOR(cp, cpi, s, r, 1d, DFTI_SINGLE, DFTI_REAL, kReal1D)                              \
  NXL_DFT_CP_CREATOR(cp, cpi, s, r, md, DFTI_SINGLE, DFTI_REAL, kRealMD)                              \
  NXL_DFT_CP_CREATOR(cp, cpi, d, c, 1d, DFTI_DOUBLE, DFTI_COMPLEX, kComplex1D)                        \
  NXL_DFT_CP_CREATOR(cp, cpi, d, c, md, DFTI_DOUBLE, DFTI_COMPLEX, kComplexMD)                        \
  NXL_DFT_CP_CREATOR(cp, cpi, d, r, 1d, DFTI_DOUBLE, DFTI_REAL, kReal1D)                              \
  NXL_DFT_CP_CREATOR(cp, cpi, d, r, md, DFTI_DOUBLE, DFTI_REAL, kRealMD)

#define NXL_DFT_CP_CREATOR(cp, cpi, p, dm, r, PREC, DOM, TYPE)                                        \
  extern "C" void nxl_dft_##cp##_dfti_set_bkdlist_##p##dm##r(DFTI_DESCRIPTOR *d) {                    \
    d->bkdlist = backend_list(cpi, PREC, TYPE);                                                       \
  }                                                                                                   \
  extern "C" int nxl_dft_##cp##_dfti_create_##p##dm##r(DFTI_DESCRIPTOR **h, int dim, const nxl_int *len) { \
    int st = nxl_dft_##cp##_dfti_create_node(h, PREC, DOM, dim, len, &kDefaultMem);                   \
    if (!st) nxl_dft_##cp##_dfti_set_bkdlist_##p##dm##r(*h);                                          \
    return st;                                                                                        \
  }

NXL_DFT_CP_CREATORS(def, 0)
NXL_DFT_CP_CREATORS(mc, 1)
NXL_DFT_CP_CREATORS(mc3, 2)
NXL_DFT_CP_CREATORS(avx, 3)
NXL_DFT_CP_CREATORS(avx2, 4)
NXL_DFT_CP_CREATORS(avx512_mic, 5)
NXL_DFT_CP_CREATORS(avx512, 6)

namespace {
using CreatorFn = int (*)(DFTI_DESCRIPTOR **, int, const nxl_int *);

// The dispatched creator of one type: the code-path build is chosen on the
// first call and cached.
#define NXL_DFT_CREATOR(p, dm, r)                                                                      \
  int nxl_dft_dfti_create_##p##dm##r(DFTI_DESCRIPTOR **h, int dim, const nxl_int *len) {             \
    static CreatorFn slot;                                                                            \
    CreatorFn f = slot;                                                                               \
    if (!f) {                                                                                         \
      static const CreatorFn table[7] = {                                                             \
          nxl_dft_def_dfti_create_##p##dm##r,  nxl_dft_mc_dfti_create_##p##dm##r,                     \
          nxl_dft_mc3_dfti_create_##p##dm##r,  nxl_dft_avx_dfti_create_##p##dm##r,                    \
          nxl_dft_avx2_dfti_create_##p##dm##r, nxl_dft_avx512_mic_dfti_create_##p##dm##r,             \
          nxl_dft_avx512_dfti_create_##p##dm##r};                                                     \
      int i = nxl::cp_kernel_index_nocnr();                                                           \
      if (i < 0) return DFTI_NXL_INTERNAL_ERROR;                                                      \
      f = table[i];                                                                                   \
      slot = f;                                                                                       \
    }                                                                                                 \
    return f(h, dim, len);                                                                            \
  }
NXL_DFT_CREATOR(s, c, 1d)
NXL_DFT_CREATOR(s, c, md)
NXL_DFT_CREATOR(s, r, 1d)
NXL_DFT_CREATOR(s, r, md)
NXL_DFT_CREATOR(d, c, 1d)
NXL_DFT_CREATOR(d, c, md)
NXL_DFT_CREATOR(d, r, 1d)
NXL_DFT_CREATOR(d, r, md)

// Calls the typed creator; `md` selects the multi-dimensional ones.
nxl_int create_typed(DFTI_DESCRIPTOR_HANDLE *h, nxl_int prec, nxl_int dom, int dim, const nxl_int *len, bool md) {
  for (int i = 0; i < dim; ++i)
    if (len[i] < 1) return DFTI_INVALID_CONFIGURATION;
  int st;
  if (prec == DFTI_DOUBLE && dom == DFTI_COMPLEX)
    st = md ? nxl_dft_dfti_create_dcmd(h, dim, len) : nxl_dft_dfti_create_dc1d(h, dim, len);
  else if (prec == DFTI_DOUBLE && dom == DFTI_REAL)
    st = md ? nxl_dft_dfti_create_drmd(h, dim, len) : nxl_dft_dfti_create_dr1d(h, dim, len);
  else if (prec == DFTI_SINGLE && dom == DFTI_COMPLEX)
    st = md ? nxl_dft_dfti_create_scmd(h, dim, len) : nxl_dft_dfti_create_sc1d(h, dim, len);
  else if (prec == DFTI_SINGLE && dom == DFTI_REAL)
    st = md ? nxl_dft_dfti_create_srmd(h, dim, len) : nxl_dft_dfti_create_sr1d(h, dim, len);
  else
    return DFTI_INVALID_CONFIGURATION;
  if (!st) nxl_dft_bless_node_thr(*h);
  return st;
}

nxl_int create_1d(DFTI_DESCRIPTOR_HANDLE *h, nxl_int prec, const nxl_int *dom, const nxl_int *dim,
                  const nxl_int *length) {
  if (!h || !dom || !dim || !length) return DFTI_INCONSISTENT_CONFIGURATION;
  *h = nullptr;
  if (*dim != 1 || *length < 1) return DFTI_INVALID_CONFIGURATION;
  return create_typed(h, prec, *dom, 1, length, false);
}

nxl_int create_md(DFTI_DESCRIPTOR_HANDLE *h, nxl_int prec, const nxl_int *dom, const nxl_int *dim,
                  const nxl_int *lengths) {
  if (!h || !dom || !dim) return DFTI_INCONSISTENT_CONFIGURATION;
  *h = nullptr;
  if (*dim < 1 || *dim > kMaxRank) return DFTI_INVALID_CONFIGURATION;
  if (!lengths) return DFTI_INCONSISTENT_CONFIGURATION;
  for (nxl_int i = 0; i < *dim; ++i)
    if (lengths[i] < 1) return DFTI_INVALID_CONFIGURATION;
  return create_typed(h, prec, *dom, static_cast<int>(*dim), lengths, true);
}

}  // namespace

extern "C" {

void nxl_dft_bless_node_thr(DFTI_DESCRIPTOR_HANDLE d) {
  if (d) bless_node_thr(d);
}

nxl_int nxl_dft_dfti_create_descriptor_1d(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                          const nxl_int *dim, const nxl_int *length) {
  if (!prec) return DFTI_INCONSISTENT_CONFIGURATION;
  return create_1d(h, *prec, dom, dim, length);
}
nxl_int nxl_dft_dfti_create_descriptor_s_1d(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *length) {
  return create_1d(h, DFTI_SINGLE, dom, dim, length);
}
nxl_int nxl_dft_dfti_create_descriptor_d_1d(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *length) {
  return create_1d(h, DFTI_DOUBLE, dom, dim, length);
}
nxl_int nxl_dft_dfti_create_descriptor_highd(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                             const nxl_int *dim, const nxl_int *lengths) {
  if (!prec) return DFTI_INCONSISTENT_CONFIGURATION;
  return create_md(h, *prec, dom, dim, lengths);
}
nxl_int nxl_dft_dfti_create_descriptor_s_md(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *lengths) {
  return create_md(h, DFTI_SINGLE, dom, dim, lengths);
}
nxl_int nxl_dft_dfti_create_descriptor_d_md(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *lengths) {
  return create_md(h, DFTI_DOUBLE, dom, dim, lengths);
}

nxl_int nxl_dft_dfti_copy_descriptor_external(DFTI_DESCRIPTOR_HANDLE *src, DFTI_DESCRIPTOR_HANDLE *dst) {
  if (!src) return DFTI_INCONSISTENT_CONFIGURATION;
  if (!valid(*src)) return DFTI_BAD_DESCRIPTOR;
  if (!dst) return DFTI_INCONSISTENT_CONFIGURATION;
  DFTI_DESCRIPTOR *s = *src, *c = nullptr;
  int st = s->methods->copy_node(s, &c);
  if (st) return st;
  if (s->commit_status == DFTI_COMMITTED) {
    st = c->methods->commit(c);
    if (st) {
      c->destroy(c);
      return st;
    }
  }
  *dst = c;
  return 0;
}

nxl_int nxl_dft_dfti_free_descriptor_external(DFTI_DESCRIPTOR_HANDLE *h) {
  if (!h) return DFTI_INCONSISTENT_CONFIGURATION;
  if (!valid(*h)) return DFTI_BAD_DESCRIPTOR;
  if ((*h)->destroy) (*h)->destroy(*h);
  *h = nullptr;
  return 0;
}

nxl_int nxl_dft_dfti_commit_descriptor_external(DFTI_DESCRIPTOR_HANDLE *h) {
  if (!h || !valid(*h)) return DFTI_BAD_DESCRIPTOR;
  if (!(*h)->methods || !(*h)->methods->commit) return DFTI_NXL_INTERNAL_ERROR;
  return (*h)->methods->commit(*h);
}

const char *nxl_dft_dfti_committed_backend(DFTI_DESCRIPTOR_HANDLE h) {
  if (!valid(h) || h->commit_status != DFTI_COMMITTED || !h->backend) return nullptr;
  return h->backend->name;
}

const BackendRecord *const *nxl_dft_dfti_backend_list(int cp, int precision, int type) {
  return backend_list(cp, precision, static_cast<ListType>(type));
}

}  // extern "C"
