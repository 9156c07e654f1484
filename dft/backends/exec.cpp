// Executors of committed descriptors (see exec.h).
#include "dft/backends/exec.h"

#include <omp.h>
#include <sched.h>
#include <string.h>

#include <atomic>
#include <new>

#include "dft/engine/engine.h"

namespace nxl::dft {

namespace {

enum Kind { kC2C = 0, kR2C = 1, kC2R = 2 };

// One looped dimension: count, input and output stride in real units.
struct Loop {
  long n, is, os;
};

// 1-D transforms of length n along one dimension, for every index of the
// other dimensions: `cnt` of them per engine call (the vector dimension,
// distances ivd/ovd), `M` engine calls over the outer loops.
struct Pass {
  int kind;
  long n;
  long is, os;           // along the transform, real units
  long cnt, ivd, ovd;    // the engine's batch
  int nout;
  long on[kMaxRank + 1], ois[kMaxRank + 1], oos[kMaxRank + 1];
  long M;
  void *plan;            // C2CPlan<R> or R2CPlan<R>, owned by the plan cache
  // Column blocking: transforms far apart in memory but adjacent to each
  // other (large stride, unit vector distance) are gathered kBlock at a time
  // into a contiguous worker buffer, transformed there and scattered back.
  bool block;
  void *blk;             // kBlock * n complex values per worker
  long blk_per;          // reals per worker
  int workers;           // threads per slot
};

constexpr long kBlock = 8;
// Span (bytes) of one transform above which column passes are blocked: up
// to the size of a last-level cache the engine's own column batches (which
// gather neighbouring columns too) are as fast or faster.
long g_block_span = 32L << 20;

// The caller's slot of the plan (set after acquire, and by each thread of a
// team that runs whole transforms).
__attribute__((tls_model("initial-exec"))) thread_local int g_slot = 0;
__attribute__((tls_model("initial-exec"))) thread_local int g_tid = 0;   // the thread's number within the slot's workers

Pass make_pass(int kind, Loop t, const Loop *others, int nothers, int prefer) {
  Pass p{};
  p.kind = kind;
  p.n = t.n;
  p.is = t.is;
  p.os = t.os;
  int v = -1;
  if (prefer >= 0 && prefer < nothers && others[prefer].n > 1) v = prefer;
  if (v < 0) {
    long best = -1, best_is = -1;
    for (int i = 0; i < nothers; ++i) {
      if (others[i].n <= 1) continue;
      long s = others[i].os < 0 ? -others[i].os : others[i].os;
      long si = others[i].is < 0 ? -others[i].is : others[i].is;
      if (v < 0 || s < best || (s == best && si < best_is)) {
        v = i;
        best = s;
        best_is = si;
      }
    }
  }
  p.cnt = 1;
  p.ivd = p.ovd = 0;
  if (v >= 0) {
    p.cnt = others[v].n;
    p.ivd = others[v].is;
    p.ovd = others[v].os;
  }
  p.M = 1;
  for (int i = 0; i < nothers; ++i) {
    if (i == v || others[i].n <= 1) continue;
    p.on[p.nout] = others[i].n;
    p.ois[p.nout] = others[i].is;
    p.oos[p.nout] = others[i].os;
    ++p.nout;
    p.M *= others[i].n;
  }
  return p;
}

// ---- Plan ------------------------------------------------------------------

enum RealFwd { kFwdDirect, kFwdRow, kFwdStaged, kFwdPacked2 };
enum RealBwd { kBwdDirect, kBwdRow, kBwdPerTransform, kBwdPacked2 };

// The direct path of short transforms, decided at commit: the in-register
// kernel of the engine plan and the few values a call needs, so that compute
// goes from the descriptor straight to the kernel (no passes, views, slots or
// layout checks). Offsets and distances in real units.
template <class R> struct Direct {
  typename KernelTable<R>::Small kf = nullptr, kb = nullptr;   // forward, backward kernel
  const R *twr = nullptr, *twi = nullptr;
  long ioff = 0, ooff = 0;
  long hm = 1, idist = 0, odist = 0;
  R fscale = 1, bscale = 1;
  // Real transforms: the untangling steps and the conjugate-even side
  // (stride between X[k] and X[k+1], offset of the imaginary part) of the
  // forward output and the backward input; the backward offsets.
  decltype(KernelTable<R>::r2c_post) post = nullptr;
  decltype(KernelTable<R>::c2r_pre) pre = nullptr;
  const R *ur = nullptr, *ui = nullptr;
  long h = 0;
  long f_ce_s = 2, f_ce_im = 1, b_ce_s = 2, b_ce_im = 1;
  long bin_off = 0, bout_off = 0;
};

template <class R> struct Plan {
  Direct<R> direct;   // first: a direct compute call reads only this

  // Engine plans, one per (kind, length), shared by the passes.
  struct Cached {
    int kind;
    long n;
    void *p;
  };
  Cached cache[2 * kMaxRank + 2];
  int ncache = 0;

  bool real = false;
  bool split = false;       // complex data in separate re/im arrays
  bool inplace = false;
  int T = 1;                // committed threads
  int slots = 1;            // concurrent callers (user threads)
  bool split_loops = true;
  std::atomic<int> *busy = nullptr;

  // Complex: the passes, run with the sign of the direction.
  Pass fwd[kMaxRank + 1];
  int nfwd = 0;
  Pass bwd[kMaxRank + 1];
  int nbwd = 0;

  // Geometry in real units.
  long howmany = 1;
  long ioff = 0, ooff = 0;   // offsets of element 0 (real units)
  long idist = 0, odist = 0;

  // Real transforms.
  int fmode = kFwdDirect, bmode = kBwdDirect;
  int format = DFTI_CCE_FORMAT;
  long n0 = 1;               // real length of the first dimension
  // Along the first dimension, real units: the real side and the
  // conjugate-even side (stride between X[k] and X[k+1] for CCE, the
  // format's unit stride otherwise; offset of the imaginary part), for the
  // forward (f) and backward (b) directions.
  long f_ri_s = 1, f_ce_s = 2, f_ce_im = 1;
  long b_ri_s = 1, b_ce_s = 2, b_ce_im = 1;
  Pass row{};                // row mode: one r2c/c2r transform into the buffer
  // Two-dimensional CCS/PACK/PERM: real strides along dimensions 0 and 1
  // (f: forward input, b: backward output) and the format's strides (fp:
  // forward output, bp: backward input); engine plans r2c of n0 and c2c of n1.
  long n1 = 1;
  long f_ri_s1 = 0, b_ri_s1 = 0, fp_s0 = 1, fp_s1 = 0, bp_s0 = 1, bp_s1 = 0;
  Pass p2r{}, p2c{};
  Pass stage{};              // staged forward: the input geometry of one transform
  long fin_off = 0, fout_off = 0, bin_off = 0, bout_off = 0;
  long fidist = 0, fodist = 0, bidist = 0, bodist = 0;
  long spectrum = 0;         // complex elements of one half spectrum
  long realsize = 0;         // real elements of one transform
  R *work = nullptr;         // per-worker buffers
  long per_worker = 0;       // reals per worker
  R *blk = nullptr;          // per-worker column-block buffers

  R fscale = 1, bscale = 1;

  ~Plan() {
    for (int i = 0; i < ncache; ++i) {
      if (cache[i].kind == kC2C) destroy(static_cast<C2CPlan<R> *>(cache[i].p));
      else destroy(static_cast<R2CPlan<R> *>(cache[i].p));
    }
    if (work) nxl_serv_deallocate(work);
    if (blk) nxl_serv_deallocate(blk);
    delete[] busy;
  }

  void *engine(int kind, long n, long howmany_hint) {
    int k = kind == kC2C ? kC2C : kR2C;
    for (int i = 0; i < ncache; ++i)
      if (cache[i].kind == k && cache[i].n == n) return cache[i].p;
    if (ncache == int(sizeof cache / sizeof cache[0])) return nullptr;
    int users = slots * T;
    void *p = k == kC2C ? static_cast<void *>(c2c_create<R>(n, howmany_hint, T, users))
                        : static_cast<void *>(r2c_create<R>(n, howmany_hint, T, users));
    if (p) cache[ncache++] = Cached{k, n, p};
    return p;
  }

  // A free slot for this caller (callers beyond the user-thread count wait).
  int acquire() {
    for (;;) {
      for (int s = 0; s < slots; ++s) {
        int z = 0;
        if (busy[s].load(std::memory_order_relaxed) == 0 &&
            busy[s].compare_exchange_strong(z, 1, std::memory_order_acquire))
          return s;
      }
      sched_yield();
    }
  }
  void release(int s) { busy[s].store(0, std::memory_order_release); }
  R *worker(int slot, int tid) { return work + (static_cast<long>(slot) * T + tid) * per_worker; }
};

// Runs one pass on the arrays (element 0 of the transform set).
template <class R>
int run_one(const Pass &p, int sign, const R *ire, const R *iim, R *ore, R *oim, R scale, long m, long v0,
            long vn) {
  long io = v0 * p.ivd, oo = v0 * p.ovd, r = m;
  for (int k = 0; k < p.nout; ++k) {
    long i = r % p.on[k];
    r /= p.on[k];
    io += i * p.ois[k];
    oo += i * p.oos[k];
  }
  if (p.block) {
    R *w = static_cast<R *>(p.blk) + (static_cast<long>(g_slot) * p.workers + g_tid) * p.blk_per;
    const long n = p.n;
    for (long b0 = 0; b0 < vn; b0 += kBlock) {
      const long bn = vn - b0 < kBlock ? vn - b0 : kBlock;
      const R *xr = ire + io + b0 * p.ivd, *xi = iim + io + b0 * p.ivd;
      for (long j = 0; j < n; ++j)
        for (long b = 0; b < bn; ++b) {
          w[2 * (b * n + j)] = xr[j * p.is + b * p.ivd];
          w[2 * (b * n + j) + 1] = xi[j * p.is + b * p.ivd];
        }
      int st = c2c_execute<R>(static_cast<const C2CPlan<R> *>(p.plan), sign, CView<const R>{w, w + 1, 2, 2 * n},
                              CView<R>{w, w + 1, 2, 2 * n}, scale, bn);
      if (st) return st;
      R *yr = ore + oo + b0 * p.ovd, *yi = oim + oo + b0 * p.ovd;
      for (long j = 0; j < n; ++j)
        for (long b = 0; b < bn; ++b) {
          yr[j * p.os + b * p.ovd] = w[2 * (b * n + j)];
          yi[j * p.os + b * p.ovd] = w[2 * (b * n + j) + 1];
        }
    }
    return 0;
  }
  switch (p.kind) {
    case kC2C:
      return c2c_execute<R>(static_cast<const C2CPlan<R> *>(p.plan), sign,
                            CView<const R>{ire + io, iim + io, p.is, p.ivd}, CView<R>{ore + oo, oim + oo, p.os, p.ovd},
                            scale, vn);
    case kR2C:
      return r2c_execute<R>(static_cast<const R2CPlan<R> *>(p.plan), RView<const R>{ire + io, p.is, p.ivd},
                            CView<R>{ore + oo, oim + oo, p.os, p.ovd}, scale, vn);
    default:
      return c2r_execute<R>(static_cast<const R2CPlan<R> *>(p.plan), CView<const R>{ire + io, iim + io, p.is, p.ivd},
                            RView<R>{ore + oo, p.os, p.ovd}, scale, vn);
  }
}

// Runs a pass with up to T threads: over the outer loops when there are
// enough of them, else over chunks of the vector dimension, else the engine
// threads each call.
template <class R>
int run_pass(const Pass &p, int sign, const R *ire, const R *iim, R *ore, R *oim, R scale, int T, bool split) {
  if (T > 1 && split && !omp_in_parallel()) {
    const int slot = g_slot;
    if (p.M >= T) {
      std::atomic<int> err{0};
#pragma omp parallel for num_threads(T) schedule(static)
      for (long m = 0; m < p.M; ++m) {
        g_slot = slot;
        g_tid = omp_get_thread_num();
        int st = run_one<R>(p, sign, ire, iim, ore, oim, scale, m, 0, p.cnt);
        if (st) err.store(st);
      }
      return err.load();
    }
    if (p.cnt >= 2L * T) {
      std::atomic<int> err{0};
      long chunks = p.M * T;
#pragma omp parallel for num_threads(T) schedule(static)
      for (long c = 0; c < chunks; ++c) {
        g_slot = slot;
        g_tid = omp_get_thread_num();
        long m = c / T, t = c % T;
        long q = p.cnt / T, rem = p.cnt % T;
        long v0 = t * q + (t < rem ? t : rem), vn = q + (t < rem ? 1 : 0);
        int st = run_one<R>(p, sign, ire, iim, ore, oim, scale, m, v0, vn);
        if (st) err.store(st);
      }
      return err.load();
    }
  }
  for (long m = 0; m < p.M; ++m) {
    int st = run_one<R>(p, sign, ire, iim, ore, oim, scale, m, 0, p.cnt);
    if (st) return st;
  }
  return 0;
}

// Runs a list of passes: the first reads the input, the rest work in place
// on the output.
template <class R>
int run_passes(const Pass *ps, int np, int sign, const R *ire, const R *iim, R *ore, R *oim, R scale, int T,
               bool split) {
  for (int i = 0; i < np; ++i) {
    int st = i == 0 ? run_pass<R>(ps[i], sign, ire, iim, ore, oim, scale, T, split)
                    : run_pass<R>(ps[i], sign, ore, oim, ore, oim, R(1), T, split);
    if (st) return st;
  }
  return 0;
}

// ---- Complex transforms ------------------------------------------------------

template <class R> nxl_int complex_compute(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *a3, void *a4, int sign) {
  Plan<R> *P = static_cast<Plan<R> *>(d->plan);
  R *ire, *iim, *ore, *oim;
  if (P->split) {
    ire = static_cast<R *>(a1) + P->ioff;
    iim = static_cast<R *>(a2) + P->ioff;
    ore = (P->inplace ? static_cast<R *>(a1) : static_cast<R *>(a3)) + P->ooff;
    oim = (P->inplace ? static_cast<R *>(a2) : static_cast<R *>(a4)) + P->ooff;
  } else {
    ire = static_cast<R *>(a1) + P->ioff;
    iim = ire + 1;
    ore = (P->inplace ? static_cast<R *>(a1) : static_cast<R *>(a2)) + P->ooff;
    oim = ore + 1;
  }
  const R scale = sign < 0 ? P->fscale : P->bscale;
  // The slots guard the column-block buffers; without those the engine's
  // own work slots suffice.
  if (!P->blk) return run_passes<R>(P->fwd, P->nfwd, sign, ire, iim, ore, oim, scale, P->T, P->split_loops);
  int slot = P->acquire();
  g_slot = slot;
  g_tid = 0;
  int st = run_passes<R>(P->fwd, P->nfwd, sign, ire, iim, ore, oim, scale, P->T, P->split_loops);
  P->release(slot);
  return st;
}

template <class R> nxl_int complex_forward(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *a3, void *a4) {
  return complex_compute<R>(d, a1, a2, a3, a4, -1);
}
template <class R> nxl_int complex_backward(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *a3, void *a4) {
  return complex_compute<R>(d, a1, a2, a3, a4, +1);
}

// Direct complex transforms: interleaved (kernels kIO11 forward, kIO22 on
// the same pointers backward) or split arrays (kIO00, real and imaginary
// parts exchanged backward).
template <class R, bool Fwd, bool InPlace>
nxl_int direct_c2c(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *, void *) {
  const Direct<R> &D = static_cast<const Plan<R> *>(d->plan)->direct;
  const R *x = static_cast<const R *>(a1) + D.ioff;
  R *y = static_cast<R *>(InPlace ? a1 : a2) + D.ooff;
  if constexpr (Fwd) D.kf(D.hm, x, x + 1, D.idist, y, y + 1, D.odist, D.twr, D.twi, D.fscale);
  else D.kb(D.hm, x, x + 1, D.idist, y, y + 1, D.odist, D.twr, D.twi, D.bscale);
  return 0;
}

template <class R, bool Fwd, bool InPlace>
nxl_int direct_c2c_split(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *a3, void *a4) {
  const Direct<R> &D = static_cast<const Plan<R> *>(d->plan)->direct;
  const R *xr = static_cast<const R *>(a1) + D.ioff, *xi = static_cast<const R *>(a2) + D.ioff;
  R *yr = static_cast<R *>(InPlace ? a1 : a3) + D.ooff, *yi = static_cast<R *>(InPlace ? a2 : a4) + D.ooff;
  if constexpr (Fwd) D.kf(D.hm, xr, xi, D.idist, yr, yi, D.odist, D.twr, D.twi, D.fscale);
  else D.kf(D.hm, xi, xr, D.idist, yi, yr, D.odist, D.twr, D.twi, D.bscale);
  return 0;
}

// Split buffer of the direct real transforms (h + 1 complex values).
constexpr long kDirectHalf = 1L << kSmallMaxLog;
constexpr long kDirectPad = (kDirectHalf + 1 + 15) & ~15L;

// Direct real forward transform: the half-length kernel from the real data
// read as pairs into the buffer, then the untangling step into the output.
template <class R, bool InPlace> nxl_int direct_r2c(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *, void *) {
  const Direct<R> &D = static_cast<const Plan<R> *>(d->plan)->direct;
  alignas(64) R w[2 * kDirectPad];
  const R *x = static_cast<const R *>(a1) + D.ioff;
  R *y = static_cast<R *>(InPlace ? a1 : a2) + D.ooff;
  R *zr = w, *zi = w + kDirectPad;
  D.kf(1, x, x + 1, 0, zr, zi, 0, D.twr, D.twi, R(1));
  D.post(D.h, 1, zr, zi, D.ur, D.ui, y, y + D.f_ce_im, D.f_ce_s, 0, D.fscale);
  return 0;
}

// Direct real backward transform: the pre-pass into the buffer, then the
// half-length kernel (parts exchanged) writing the real output as pairs.
template <class R, bool InPlace> nxl_int direct_c2r(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *, void *) {
  const Direct<R> &D = static_cast<const Plan<R> *>(d->plan)->direct;
  alignas(64) R w[2 * kDirectPad];
  const R *x = static_cast<const R *>(a1) + D.bin_off;
  R *y = static_cast<R *>(InPlace ? a1 : a2) + D.bout_off;
  R *zr = w, *zi = w + kDirectPad;
  D.pre(D.h, 1, x, x + D.b_ce_im, D.b_ce_s, 0, D.ur, D.ui, zr, zi);
  D.kb(1, zi, zr, 0, y, y, 0, D.twr, D.twi, D.bscale);
  return 0;
}

template <class R> void free_plan(void *p) { delete static_cast<Plan<R> *>(p); }

template <class R> void install(DFTI_DESCRIPTOR *d, const BackendRecord *self, Plan<R> *P, ComputeFn f, ComputeFn b) {
  d->plan = P;
  d->plan_free = free_plan<R>;
  d->backend = self;
  d->forward = f;
  d->backward = b;
  d->commit_status = DFTI_COMMITTED;
  d->flags |= 1;
}

template <class R> Plan<R> *new_plan(const DFTI_DESCRIPTOR *d, const ExecOptions &o) {
  Plan<R> *P = new (std::nothrow) Plan<R>();
  if (!P) return nullptr;
  P->T = d->nthreads > 0 ? d->nthreads : 1;
  P->slots = d->user_threads > 0 ? d->user_threads : 1;
  P->split_loops = o.split_loops;
  P->inplace = d->placement == DFTI_INPLACE;
  P->busy = new (std::nothrow) std::atomic<int>[P->slots];
  if (!P->busy) {
    delete P;
    return nullptr;
  }
  for (int s = 0; s < P->slots; ++s) P->busy[s].store(0);
  P->fscale = static_cast<R>(d->c_fscale);
  P->bscale = static_cast<R>(d->c_bscale);
  return P;
}

template <class R> int attach_plans(Plan<R> *P, Pass *ps, int np) {
  for (int i = 0; i < np; ++i) {
    ps[i].plan = P->engine(ps[i].kind, ps[i].n, ps[i].cnt);
    if (!ps[i].plan) return DFTI_MEMORY_ERROR;
  }
  return 0;
}

// Marks the c2c passes worth column blocking and makes their buffers:
// transforms of 32 points or more, 32 elements or more apart, whose
// neighbours in the batch are adjacent in memory.
template <class R> int attach_blocks(Plan<R> *P, Pass *ps, int np, long unit) {
  long need = 0;
  for (int i = 0; i < np; ++i) {
    Pass &p = ps[i];
    auto mag = [](long v) { return v < 0 ? -v : v; };
    // Only worth it when one transform spans more than the caches hold.
    const long span = p.n * (mag(p.is) / unit) * static_cast<long>(2 * sizeof(R));
    p.block = p.kind == kC2C && p.n >= 32 && p.cnt >= kBlock && mag(p.is) >= 32 * unit && mag(p.os) >= 32 * unit &&
              mag(p.ivd) == unit && mag(p.ovd) == unit && span > g_block_span;
    if (p.block) need = need > 2 * kBlock * p.n ? need : 2 * kBlock * p.n;
  }
  if (!need) return 0;
  need = (need + 15) & ~15L;
  if (P->blk) nxl_serv_deallocate(P->blk);
  P->blk = static_cast<R *>(nxl_serv_allocate(sizeof(R) * static_cast<size_t>(need) * P->T * P->slots, 64));
  if (!P->blk) return DFTI_MEMORY_ERROR;
  for (int i = 0; i < np; ++i) {
    ps[i].blk = P->blk;
    ps[i].blk_per = need;
    ps[i].workers = P->T;
  }
  return 0;
}

template <class R>
int commit_complex_t(DFTI_DESCRIPTOR *d, const BackendRecord *self, const Layout &L, const ExecOptions &o) {
  Plan<R> *P = new_plan<R>(d, o);
  if (!P) return DFTI_MEMORY_ERROR;
  P->split = is_split(d);
  const long u = P->split ? 1 : 2;   // reals per element step
  P->ioff = L.ioff * u;
  P->ooff = L.ooff * u;
  Loop loops[kMaxRank + 1];
  int nl = 0;
  for (int k = 0; k < L.rank; ++k) loops[nl++] = Loop{L.n[k], L.is[k] * u, L.os[k] * u};
  int batch = -1;
  if (L.howmany > 1) {
    batch = nl;
    loops[nl++] = Loop{L.howmany, L.idist * u, L.odist * u};
  }
  for (int k = 0; k < L.rank; ++k) {
    Loop others[kMaxRank + 1];
    int no = 0, pb = -1;
    for (int j = 0; j < nl; ++j) {
      if (j == k) continue;
      if (j == batch) pb = no;
      // After the first pass the data lives in the output layout.
      Loop l = loops[j];
      if (k > 0) l.is = l.os;
      others[no++] = l;
    }
    Loop t = loops[k];
    if (k > 0) t.is = t.os;
    P->fwd[P->nfwd++] = make_pass(kC2C, t, others, no, o.batch_as_vector ? pb : -1);
  }
  int st = attach_plans(P, P->fwd, P->nfwd);
  if (!st) st = attach_blocks(P, P->fwd, P->nfwd, u);
  if (st) {
    delete P;
    return st;
  }
  install(d, self, P, complex_forward<R>, complex_backward<R>);
  // The direct path: one dimension of unit strides (both sides), the whole
  // transform one in-register kernel, and a single transform or a batch
  // that the engine would run on one thread anyway.
  SmallDirect<R> sd;
  if (L.rank == 1 && L.is[0] == 1 && L.os[0] == 1 && (L.howmany == 1 || P->T == 1) &&
      small_direct(static_cast<const C2CPlan<R> *>(P->fwd[0].plan), &sd)) {
    Direct<R> &D = P->direct;
    D.kf = P->split ? sd.kernel[kIO00] : sd.kernel[kIO11];
    D.kb = P->split ? sd.kernel[kIO00] : sd.kernel[kIO22];
    if (D.kf && D.kb) {
      D.twr = sd.twr;
      D.twi = sd.twi;
      D.ioff = P->ioff;
      D.ooff = P->ooff;
      D.hm = L.howmany;
      D.idist = L.idist * u;
      D.odist = L.odist * u;
      D.fscale = P->fscale;
      D.bscale = P->bscale;
      const bool ip = P->inplace;
      if (P->split) {
        d->forward = ip ? direct_c2c_split<R, true, true> : direct_c2c_split<R, true, false>;
        d->backward = ip ? direct_c2c_split<R, false, true> : direct_c2c_split<R, false, false>;
      } else {
        d->forward = ip ? direct_c2c<R, true, true> : direct_c2c<R, true, false>;
        d->backward = ip ? direct_c2c<R, false, true> : direct_c2c<R, false, false>;
      }
    }
  }
  return 0;
}

// ---- Real transforms -------------------------------------------------------

// Conjugate-even values X[0..n/2] of one transform: scatter from a dense
// complex buffer into the storage format, and gather back.
template <class R> struct Formats {
  // Real-unit position of the real and imaginary part of X[k]; false when
  // the imaginary part is not stored (it is zero).
  static bool where(int format, long n, long k, long s, long im, long *re_at, long *im_at) {
    switch (format) {
      case DFTI_CCE_FORMAT:   // complex elements, s in reals per element, im offset `im`
        *re_at = k * s;
        *im_at = k * s + im;
        return true;
      case DFTI_CCS_FORMAT:
        *re_at = 2 * k * s;
        *im_at = (2 * k + 1) * s;
        return true;
      case DFTI_PACK_FORMAT:
        if (k == 0) {
          *re_at = 0;
          *im_at = 0;
          return false;
        } else if (2 * k == n) {
          *re_at = (n - 1) * s;
          *im_at = 0;
          return false;
        } else {
          *re_at = (2 * k - 1) * s;
          *im_at = 2 * k * s;
        }
        return true;
      default:   // PERM
        if (k == 0) {
          *re_at = 0;
          *im_at = 0;
          return false;
        } else if (2 * k == n) {
          *re_at = s;
          *im_at = 0;
          return false;
        } else if (n % 2 == 0) {
          *re_at = 2 * k * s;
          *im_at = (2 * k + 1) * s;
        } else {
          *re_at = (2 * k - 1) * s;
          *im_at = 2 * k * s;
        }
        return true;
    }
  }
  static void scatter(int format, long n, const R *w, R *out, long s, long im) {
    long h = n / 2 + 1;
    for (long k = 0; k < h; ++k) {
      long r, i;
      if (where(format, n, k, s, im, &r, &i)) out[i] = w[2 * k + 1];
      out[r] = w[2 * k];
    }
  }
  static void gather(int format, long n, const R *in, R *w, long s, long im) {
    long h = n / 2 + 1;
    for (long k = 0; k < h; ++k) {
      long r, i;
      bool has_im = where(format, n, k, s, im, &r, &i);
      w[2 * k] = in[r];
      w[2 * k + 1] = has_im ? in[i] : R(0);
    }
  }
};

// Two-dimensional conjugate-even storage in the CCS, PACK and PERM formats:
// along dimension 0 every column holds its values in the 1-D format; the
// rows of X[0][*] and (n0 even) X[n0/2][*], which are conjugate-even along
// dimension 1, hold those values in the 1-D format along dimension 1, and
// the other rows hold the real or imaginary parts of X[k0][k1] for every k1.
// CCS keeps the zero imaginary rows (and the two spare columns of the other
// rows, written as zeros), so it spans (n0+2) x (n1+2) reals.
// The dense buffer w holds X[k0][k1] (k0 <= n0/2, every k1) as
// interleaved pairs at w[2*(k1*h0 + k0)].
template <class R> struct Formats2 {
  static bool real_row(long n0, long k0) { return k0 == 0 || 2 * k0 == n0; }
  static long spare_cols(int format, long n1) { return format == DFTI_CCS_FORMAT ? 2 * (n1 / 2 + 1) : n1; }
  static void scatter(int format, long n0, long n1, const R *w, R *out, long s0, long s1) {
    const long h0 = n0 / 2 + 1, h1 = n1 / 2 + 1;
    for (long k0 = 0; k0 < h0; ++k0) {
      long r0, i0;
      Formats<R>::where(format, n0, k0, s0, 0, &r0, &i0);
      if (real_row(n0, k0)) {
        for (long k1 = 0; k1 < h1; ++k1) {
          long r1, i1;
          if (Formats<R>::where(format, n1, k1, s1, 0, &r1, &i1)) out[r0 + i1] = w[2 * (k1 * h0 + k0) + 1];
          out[r0 + r1] = w[2 * (k1 * h0 + k0)];
        }
        if (format == DFTI_CCS_FORMAT)
          for (long c = 0; c < spare_cols(format, n1); ++c) out[i0 + c * s1] = R(0);
        continue;
      }
      for (long k1 = 0; k1 < n1; ++k1) {
        out[r0 + k1 * s1] = w[2 * (k1 * h0 + k0)];
        out[i0 + k1 * s1] = w[2 * (k1 * h0 + k0) + 1];
      }
      for (long c = n1; c < spare_cols(format, n1); ++c) out[r0 + c * s1] = out[i0 + c * s1] = R(0);
    }
  }
  static void gather(int format, long n0, long n1, const R *in, R *w, long s0, long s1) {
    const long h0 = n0 / 2 + 1, h1 = n1 / 2 + 1;
    for (long k0 = 0; k0 < h0; ++k0) {
      long r0, i0;
      Formats<R>::where(format, n0, k0, s0, 0, &r0, &i0);
      if (real_row(n0, k0)) {
        for (long k1 = 0; k1 < h1; ++k1) {
          long r1, i1;
          const bool has = Formats<R>::where(format, n1, k1, s1, 0, &r1, &i1);
          const R re = in[r0 + r1], im = has ? in[r0 + i1] : R(0);
          w[2 * (k1 * h0 + k0)] = re;
          w[2 * (k1 * h0 + k0) + 1] = im;
          if (k1 > 0 && 2 * k1 != n1) {   // X[k0][n1-k1] = conj X[k0][k1]
            w[2 * ((n1 - k1) * h0 + k0)] = re;
            w[2 * ((n1 - k1) * h0 + k0) + 1] = -im;
          }
        }
        continue;
      }
      for (long k1 = 0; k1 < n1; ++k1) {
        w[2 * (k1 * h0 + k0)] = in[r0 + k1 * s1];
        w[2 * (k1 * h0 + k0) + 1] = in[i0 + k1 * s1];
      }
    }
  }
};

template <class R> int for_transforms(Plan<R> *P, int slot, long count, int (*fn)(Plan<R> *, R *, long, void *),
                                      void *arg) {
  if (P->T > 1 && P->split_loops && count >= P->T && !omp_in_parallel()) {
    std::atomic<int> err{0};
#pragma omp parallel num_threads(P->T)
    {
      int tid = omp_get_thread_num(), nt = omp_get_num_threads();
      g_slot = slot;
      g_tid = tid;
      R *w = P->worker(slot, tid);
      for (long b = tid; b < count; b += nt) {
        int st = fn(P, w, b, arg);
        if (st) err.store(st);
      }
    }
    return err.load();
  }
  R *w = P->worker(slot, 0);
  for (long b = 0; b < count; ++b) {
    int st = fn(P, w, b, arg);
    if (st) return st;
  }
  return 0;
}

struct RealArgs {
  void *in;
  void *out;
};

// One transform in row mode (1-D): through the dense half-spectrum buffer.
template <class R> int row_forward(Plan<R> *P, R *w, long b, void *arg) {
  auto *a = static_cast<RealArgs *>(arg);
  const R *in = static_cast<const R *>(a->in) + P->fin_off + b * P->fidist;
  R *out = static_cast<R *>(a->out) + P->fout_off + b * P->fodist;
  int st = r2c_execute<R>(static_cast<const R2CPlan<R> *>(P->row.plan), RView<const R>{in, P->f_ri_s, 0},
                          CView<R>{w, w + 1, 2, 0}, P->fscale, 1);
  if (!st) Formats<R>::scatter(P->format, P->n0, w, out, P->f_ce_s, P->f_ce_im);
  return st;
}

template <class R> int row_backward(Plan<R> *P, R *w, long b, void *arg) {
  auto *a = static_cast<RealArgs *>(arg);
  const R *in = static_cast<const R *>(a->in) + P->bin_off + b * P->bidist;
  R *out = static_cast<R *>(a->out) + P->bout_off + b * P->bodist;
  Formats<R>::gather(P->format, P->n0, in, w, P->b_ce_s, P->b_ce_im);
  return c2r_execute<R>(static_cast<const R2CPlan<R> *>(P->row.plan), CView<const R>{w, w + 1, 2, 0},
                        RView<R>{out, P->b_ri_s, 0}, P->bscale, 1);
}

// One two-dimensional transform in a packed format: r2c along dimension 0
// and c2c along dimension 1 in the dense buffer, then into the format; the
// backward transform the other way round.
template <class R> int packed2_forward(Plan<R> *P, R *w, long b, void *arg) {
  auto *a = static_cast<RealArgs *>(arg);
  const R *in = static_cast<const R *>(a->in) + P->fin_off + b * P->fidist;
  R *out = static_cast<R *>(a->out) + P->fout_off + b * P->fodist;
  const long h0 = P->n0 / 2 + 1;
  int st = r2c_execute<R>(static_cast<const R2CPlan<R> *>(P->p2r.plan), RView<const R>{in, P->f_ri_s, P->f_ri_s1},
                          CView<R>{w, w + 1, 2, 2 * h0}, P->fscale, P->n1);
  if (!st)
    st = c2c_execute<R>(static_cast<const C2CPlan<R> *>(P->p2c.plan), -1, CView<const R>{w, w + 1, 2 * h0, 2},
                        CView<R>{w, w + 1, 2 * h0, 2}, R(1), h0);
  if (!st) Formats2<R>::scatter(P->format, P->n0, P->n1, w, out, P->fp_s0, P->fp_s1);
  return st;
}

template <class R> int packed2_backward(Plan<R> *P, R *w, long b, void *arg) {
  auto *a = static_cast<RealArgs *>(arg);
  const R *in = static_cast<const R *>(a->in) + P->bin_off + b * P->bidist;
  R *out = static_cast<R *>(a->out) + P->bout_off + b * P->bodist;
  const long h0 = P->n0 / 2 + 1;
  Formats2<R>::gather(P->format, P->n0, P->n1, in, w, P->bp_s0, P->bp_s1);
  int st = c2c_execute<R>(static_cast<const C2CPlan<R> *>(P->p2c.plan), +1, CView<const R>{w, w + 1, 2 * h0, 2},
                          CView<R>{w, w + 1, 2 * h0, 2}, R(1), h0);
  if (!st)
    st = c2r_execute<R>(static_cast<const R2CPlan<R> *>(P->p2r.plan), CView<const R>{w, w + 1, 2, 2 * h0},
                        RView<R>{out, P->b_ri_s, P->b_ri_s1}, P->bscale, P->n1);
  return st;
}

// One transform of rank >= 2, forward, from a staged dense copy of its input.
template <class R> int staged_forward(Plan<R> *P, R *w, long b, void *arg) {
  auto *a = static_cast<RealArgs *>(arg);
  const R *in = static_cast<const R *>(a->in) + P->fin_off + b * P->fidist;
  R *out = static_cast<R *>(a->out) + P->fout_off + b * P->fodist;
  // Copy the real input into the dense buffer (first dimension fastest).
  const Pass &p0 = P->stage;
  long total = P->realsize;
  for (long e = 0; e < total; ++e) {
    long r = e, off = 0;
    for (int k = 0; k < p0.nout; ++k) {
      off += (r % p0.on[k]) * p0.ois[k];
      r /= p0.on[k];
    }
    w[e] = in[off];
  }
  bool inner = !omp_in_parallel();
  return run_passes<R>(P->fwd, P->nfwd, -1, w, nullptr, out, out + 1, P->fscale, inner ? P->T : 1, P->split_loops);
}

// One transform of rank >= 2, backward, through the half-spectrum buffer.
template <class R> int per_transform_backward(Plan<R> *P, R *w, long b, void *arg) {
  auto *a = static_cast<RealArgs *>(arg);
  const R *in = static_cast<const R *>(a->in) + P->bin_off + b * P->bidist;
  R *out = static_cast<R *>(a->out) + P->bout_off + b * P->bodist;
  int T = omp_in_parallel() ? 1 : P->T;
  // c2c passes from the input into the buffer, then in place on it.
  int st = 0;
  for (int i = 0; i + 1 < P->nbwd && !st; ++i)
    st = i == 0 ? run_pass<R>(P->bwd[i], +1, in, in + 1, w, w + 1, P->bscale, T, P->split_loops)
                : run_pass<R>(P->bwd[i], +1, w, w + 1, w, w + 1, R(1), T, P->split_loops);
  if (!st) st = run_pass<R>(P->bwd[P->nbwd - 1], +1, w, w + 1, out, nullptr, R(1), T, P->split_loops);
  return st;
}

template <class R> nxl_int real_forward(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *, void *) {
  Plan<R> *P = static_cast<Plan<R> *>(d->plan);
  void *out = P->inplace ? a1 : a2;
  int slot = P->acquire();
  g_slot = slot;
  g_tid = 0;
  int st;
  RealArgs args{a1, out};
  if (P->fmode == kFwdDirect) {
    const R *in = static_cast<const R *>(a1) + P->fin_off;
    R *o = static_cast<R *>(out) + P->fout_off;
    st = run_passes<R>(P->fwd, P->nfwd, -1, in, nullptr, o, o + P->f_ce_im, P->fscale, P->T, P->split_loops);
  } else if (P->fmode == kFwdRow) {
    st = for_transforms<R>(P, slot, P->howmany, row_forward<R>, &args);
  } else if (P->fmode == kFwdPacked2) {
    st = for_transforms<R>(P, slot, P->howmany, packed2_forward<R>, &args);
  } else {
    st = for_transforms<R>(P, slot, P->howmany, staged_forward<R>, &args);
  }
  P->release(slot);
  return st;
}

template <class R> nxl_int real_backward(DFTI_DESCRIPTOR *d, void *a1, void *a2, void *, void *) {
  Plan<R> *P = static_cast<Plan<R> *>(d->plan);
  void *out = P->inplace ? a1 : a2;
  int slot = P->acquire();
  g_slot = slot;
  g_tid = 0;
  int st;
  RealArgs args{a1, out};
  if (P->bmode == kBwdDirect) {
    const R *in = static_cast<const R *>(a1) + P->bin_off;
    R *o = static_cast<R *>(out) + P->bout_off;
    st = run_pass<R>(P->bwd[0], +1, in, in + P->b_ce_im, o, nullptr, P->bscale, P->T, P->split_loops);
  } else if (P->bmode == kBwdRow) {
    st = for_transforms<R>(P, slot, P->howmany, row_backward<R>, &args);
  } else if (P->bmode == kBwdPacked2) {
    st = for_transforms<R>(P, slot, P->howmany, packed2_backward<R>, &args);
  } else {
    st = for_transforms<R>(P, slot, P->howmany, per_transform_backward<R>, &args);
  }
  P->release(slot);
  return st;
}

template <class R>
int commit_real_t(DFTI_DESCRIPTOR *d, const BackendRecord *self, const Layout &L, const ExecOptions &o) {
  const int r = L.rank;
  int format = d->packed;
  if (d->cestorage == DFTI_COMPLEX_COMPLEX) format = DFTI_CCE_FORMAT;
  if (r > 2 && format != DFTI_CCE_FORMAT) return DFTI_INCONSISTENT_CONFIGURATION;
  Plan<R> *P = new_plan<R>(d, o);
  if (!P) return DFTI_MEMORY_ERROR;
  P->real = true;
  P->format = format;
  P->howmany = L.howmany;
  P->n0 = L.n[0];
  const long h0 = L.n[0] / 2 + 1;
  const bool cce = format == DFTI_CCE_FORMAT;
  const bool inplace = P->inplace;
  // Forward: input real (is, idist, ioff), output conjugate-even (os, odist, ooff).
  // Backward: input conjugate-even (is, ...), output real (os, ...).
  // Conjugate-even side in real units.
  auto ce_stride = [&](nxl_int s) -> long { return 2 * s; };
  auto ce_im = [&](nxl_int s0) -> long { return cce ? 1 : s0; };
  auto ce_off = [&](nxl_int off) -> long { return cce ? 2 * off : off; };
  auto ce_dist = [&](nxl_int dist) -> long { return cce ? 2 * dist : dist; };
  P->fin_off = L.ioff;
  P->fidist = L.idist;
  P->fout_off = ce_off(L.ooff);
  P->fodist = ce_dist(L.odist);
  P->bin_off = ce_off(L.ioff);
  P->bidist = ce_dist(L.idist);
  P->bout_off = L.ooff;
  P->bodist = L.odist;
  P->spectrum = h0;
  P->realsize = L.n[0];
  for (int k = 1; k < r; ++k) {
    P->spectrum *= L.n[k];
    P->realsize *= L.n[k];
  }

  // Forward mode.
  bool canon_f = !inplace, canon_b = !inplace;
  if (inplace) {
    bool dist_f = L.howmany == 1, dist_b = L.howmany == 1;
    bool rest_f = true, rest_b = true;
    for (int k = 1; k < r; ++k) {
      rest_f = rest_f && L.is[k] == 2 * L.os[k];
      rest_b = rest_b && L.os[k] == 2 * L.is[k];
    }
    if (cce) {
      canon_f = L.is[0] == 1 && L.os[0] == 1 && L.ioff == 2 * L.ooff && (dist_f || L.idist == 2 * L.odist) && rest_f;
      canon_b = L.is[0] == 1 && L.os[0] == 1 && L.ooff == 2 * L.ioff && (dist_b || L.odist == 2 * L.idist) && rest_b;
    } else if (format == DFTI_CCS_FORMAT) {
      canon_f = canon_b = L.is[0] == L.os[0] && L.ioff == L.ooff && (L.howmany == 1 || L.idist == L.odist);
    }
  }
  bool rowfmt = format == DFTI_PACK_FORMAT || format == DFTI_PERM_FORMAT;
  if (r == 1) {
    P->fmode = (rowfmt || !canon_f) ? kFwdRow : kFwdDirect;
    P->bmode = (rowfmt || !canon_b) ? kBwdRow : kBwdDirect;
  } else if (!cce) {
    P->fmode = kFwdPacked2;
    P->bmode = kBwdPacked2;
  } else {
    P->fmode = canon_f ? kFwdDirect : kFwdStaged;
    P->bmode = kBwdPerTransform;
  }
  // Along the first dimension: forward reads real (is) and writes the
  // conjugate-even side (os); backward the other way round.
  P->f_ri_s = L.is[0];
  P->f_ce_s = 2 * L.os[0];
  P->f_ce_im = ce_im(L.os[0]);
  P->b_ce_s = 2 * L.is[0];
  P->b_ce_im = ce_im(L.is[0]);
  P->b_ri_s = L.os[0];
  if (!cce) {   // CCS, PACK and PERM count real units
    P->f_ce_s = L.os[0];
    P->b_ce_s = L.is[0];
  }
  long per_worker = 0;
  if (P->fmode == kFwdRow || P->bmode == kBwdRow) {
    P->row = make_pass(kR2C, Loop{L.n[0], 1, 2}, nullptr, 0, -1);
    per_worker = 2 * h0;
  }

  if (P->fmode == kFwdPacked2) {
    // The format counts real units along both dimensions.
    P->n1 = L.n[1];
    P->f_ri_s1 = L.is[1];
    P->b_ri_s1 = L.os[1];
    P->fp_s0 = L.os[0];
    P->fp_s1 = L.os[1];
    P->bp_s0 = L.is[0];
    P->bp_s1 = L.is[1];
    P->p2r = make_pass(kR2C, Loop{L.n[0], 1, 2}, nullptr, 0, -1);
    P->p2r.cnt = L.n[1];
    P->p2c = make_pass(kC2C, Loop{L.n[1], 2 * h0, 2 * h0}, nullptr, 0, -1);
    P->p2c.cnt = h0;
    per_worker = 2 * h0 * L.n[1];
  }

  // Forward passes.
  if (P->fmode != kFwdRow && P->fmode != kFwdPacked2) {
    bool staged = P->fmode == kFwdStaged;
    // Conjugate-even loops of dimensions 1.. and the batch, real units.
    Loop oloops[kMaxRank + 1];
    int nl = 0;
    long dense = 1;
    for (int k = 1; k < r; ++k) {
      long in_s = staged ? L.n[0] * dense : L.is[k];
      dense *= L.n[k];
      oloops[nl++] = Loop{L.n[k], in_s, ce_stride(L.os[k])};
    }
    int batch = -1;
    if (L.howmany > 1 && !staged) {
      batch = nl;
      oloops[nl++] = Loop{L.howmany, L.idist, ce_dist(L.odist)};
    }
    long is0 = staged ? 1 : L.is[0];
    P->fwd[P->nfwd++] = make_pass(kR2C, Loop{L.n[0], is0, ce_stride(L.os[0])}, oloops, nl,
                                  o.batch_as_vector ? batch : -1);
    for (int k = 1; k < r; ++k) {
      Loop others[kMaxRank + 1];
      int no = 0, pb = -1;
      others[no++] = Loop{h0, ce_stride(L.os[0]), ce_stride(L.os[0])};
      for (int j = 0; j < nl; ++j) {
        if (j == k - 1) continue;
        if (j == batch) pb = no;
        others[no++] = Loop{oloops[j].n, oloops[j].os, oloops[j].os};
      }
      P->fwd[P->nfwd++] = make_pass(kC2C, Loop{L.n[k], oloops[k - 1].os, oloops[k - 1].os}, others, no,
                                    o.batch_as_vector ? pb : -1);
    }
    if (staged) {
      P->stage.nout = r;
      for (int k = 0; k < r; ++k) {
        P->stage.on[k] = L.n[k];
        P->stage.ois[k] = L.is[k];
      }
      per_worker = per_worker > P->realsize ? per_worker : P->realsize;
    }
  }

  // Backward passes.
  if (P->bmode == kBwdDirect) {
    Loop loops[1];
    int nl = 0;
    if (L.howmany > 1) loops[nl++] = Loop{L.howmany, ce_dist(L.idist), L.odist};
    P->bwd[P->nbwd++] = make_pass(kC2R, Loop{L.n[0], ce_stride(L.is[0]), L.os[0]}, loops, nl, -1);
  } else if (P->bmode == kBwdPerTransform) {
    // Per transform: c2c along dimensions 1..r-1 (input -> dense buffer,
    // then in place), then c2r along dimension 0 into the output.
    long ws[kMaxRank];   // dense buffer strides, real units
    ws[0] = 2;
    for (int k = 1; k < r; ++k) ws[k] = ws[k - 1] * (k == 1 ? h0 : L.n[k - 1]);
    for (int k = 1; k < r; ++k) {
      Loop others[kMaxRank];
      int no = 0;
      for (int j = 0; j < r; ++j) {
        if (j == k) continue;
        long n = j == 0 ? h0 : L.n[j];
        long in_s = k == 1 ? ce_stride(L.is[j]) : ws[j];
        others[no++] = Loop{n, in_s, ws[j]};
      }
      long in_s = k == 1 ? ce_stride(L.is[k]) : ws[k];
      P->bwd[P->nbwd++] = make_pass(kC2C, Loop{L.n[k], in_s, ws[k]}, others, no, -1);
    }
    Loop others[kMaxRank];
    int no = 0;
    for (int j = 1; j < r; ++j) others[no++] = Loop{L.n[j], ws[j], L.os[j]};
    P->bwd[P->nbwd++] = make_pass(kC2R, Loop{L.n[0], ws[0], L.os[0]}, others, no, -1);
    long sp = 2 * P->spectrum;
    per_worker = per_worker > sp ? per_worker : sp;
  }

  int st = attach_plans(P, P->fwd, P->nfwd);
  if (!st && cce && P->fmode != kFwdRow) st = attach_blocks(P, P->fwd, P->nfwd, 2);
  if (!st) st = attach_plans(P, P->bwd, P->nbwd);
  if (!st && (P->fmode == kFwdRow || P->bmode == kBwdRow)) st = attach_plans(P, &P->row, 1);
  if (!st && P->fmode == kFwdPacked2) st = attach_plans(P, &P->p2r, 1);
  if (!st && P->fmode == kFwdPacked2) st = attach_plans(P, &P->p2c, 1);
  if (!st && per_worker > 0) {
    P->per_worker = (per_worker + 15) & ~15L;
    size_t bytes = sizeof(R) * static_cast<size_t>(P->per_worker) * P->T * P->slots;
    P->work = static_cast<R *>(nxl_serv_allocate(bytes, 64));
    if (!P->work) st = DFTI_MEMORY_ERROR;
  }
  if (st) {
    delete P;
    return st;
  }
  install(d, self, P, real_forward<R>, real_backward<R>);
  // The direct paths: one transform of one dimension whose real side has
  // unit stride, in the engine-addressable formats, with the half-length
  // transform one in-register kernel.
  SmallDirect<R> sd;
  const void *half = P->nfwd ? P->fwd[0].plan : P->nbwd ? P->bwd[0].plan : nullptr;
  if (r == 1 && L.howmany == 1 && small_direct(static_cast<const R2CPlan<R> *>(half), &sd) &&
      sd.h <= kDirectHalf && sd.kernel[kIO10] && sd.kernel[kIO02]) {
    Direct<R> &D = P->direct;
    D.kf = sd.kernel[kIO10];
    D.kb = sd.kernel[kIO02];
    D.twr = sd.twr;
    D.twi = sd.twi;
    D.post = sd.post;
    D.pre = sd.pre;
    D.ur = sd.ur;
    D.ui = sd.ui;
    D.h = sd.h;
    D.fscale = P->fscale;
    D.bscale = P->bscale;
    D.ioff = P->fin_off;
    D.ooff = P->fout_off;
    D.f_ce_s = P->nfwd ? P->fwd[0].os : 2;
    D.f_ce_im = P->f_ce_im;
    D.bin_off = P->bin_off;
    D.bout_off = P->bout_off;
    D.b_ce_s = P->nbwd ? P->bwd[0].is : 2;
    D.b_ce_im = P->b_ce_im;
    const bool ip = P->inplace;
    if (P->fmode == kFwdDirect && L.is[0] == 1) d->forward = ip ? direct_r2c<R, true> : direct_r2c<R, false>;
    if (P->bmode == kBwdDirect && L.os[0] == 1) d->backward = ip ? direct_c2r<R, true> : direct_c2r<R, false>;
  }
  return 0;
}

}  // namespace

namespace {
template <class R> bool is_direct_t(ComputeFn f) {
  const ComputeFn all[] = {
      direct_c2c<R, true, true>,        direct_c2c<R, true, false>,        direct_c2c<R, false, true>,
      direct_c2c<R, false, false>,      direct_c2c_split<R, true, true>,   direct_c2c_split<R, true, false>,
      direct_c2c_split<R, false, true>, direct_c2c_split<R, false, false>, direct_r2c<R, true>,
      direct_r2c<R, false>,             direct_c2r<R, true>,               direct_c2r<R, false>};
  for (ComputeFn g : all)
    if (f == g) return true;
  return false;
}
bool is_direct(ComputeFn f) { return f && (is_direct_t<float>(f) || is_direct_t<double>(f)); }
}  // namespace

extern "C" int nxl_dft_dfti_direct_paths(DFTI_DESCRIPTOR_HANDLE h) {
  if (!valid(h) || h->commit_status != DFTI_COMMITTED) return 0;
  return (is_direct(h->forward) ? 1 : 0) | (is_direct(h->backward) ? 2 : 0);
}

extern "C" long nxl_dft_set_block_span(long bytes) {
  long old = g_block_span;
  g_block_span = bytes;
  return old;
}

bool is_split(const DFTI_DESCRIPTOR *d) { return d->domain == DFTI_COMPLEX && d->cstorage == DFTI_REAL_REAL; }

bool real_direct_format(const DFTI_DESCRIPTOR *d) {
  return d->cestorage == DFTI_COMPLEX_COMPLEX || d->packed == DFTI_CCE_FORMAT || d->packed == DFTI_CCS_FORMAT;
}

nxl_int total_length(const Layout &L) {
  nxl_int t = 1;
  for (int k = 0; k < L.rank; ++k) t *= L.n[k];
  return t;
}

int commit_complex(DFTI_DESCRIPTOR *d, const BackendRecord *self, const Layout &L, const ExecOptions &o) {
  return d->precision == DFTI_SINGLE ? commit_complex_t<float>(d, self, L, o) : commit_complex_t<double>(d, self, L, o);
}

int commit_real(DFTI_DESCRIPTOR *d, const BackendRecord *self, const Layout &L, const ExecOptions &o) {
  return d->precision == DFTI_SINGLE ? commit_real_t<float>(d, self, L, o) : commit_real_t<double>(d, self, L, o);
}

}  // namespace nxl::dft
