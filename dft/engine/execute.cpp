// Plan execution: the node walk (Stockham passes, Bluestein, four-step), the
// batch loop (per transform or in blocks of transforms in [j][q] layout), the
// direct fast paths for unit-stride data, backward transforms by exchanging
// real and imaginary parts, and the OpenMP team over blocks or over the rows
// and columns of the four-step phases.
#include <omp.h>

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

#include "dft/engine/plan.h"
#include "dft/engine/plan_impl.h"

namespace nxl::dft {

namespace {

// Runs body(thread, lo, hi) over [0, units) split statically among nt
// threads; with one thread, directly on the caller (no parallel region).
// The parallel region stays out of line: a function that contains one pays
// the runtime's thread lookup on every call, taken or not.
template <class F> __attribute__((noinline)) void team_region(int nt, long units, F &body) {
#pragma omp parallel num_threads(nt)
  {
    const int t = omp_get_thread_num(), m = omp_get_num_threads();
    body(t, units * t / m, units * (t + 1) / m);
  }
}
template <class F> void team(int nt, long units, F &&body) {
  if (nt <= 1) {
    body(0, 0L, units);
    return;
  }
  team_region(nt, units, body);
}

template <class R> inline SBuf<const R> cst(SBuf<R> b) { return {b.r, b.i, b.step}; }

// Butterflies per pass (n * s0) from which one transform's passes are shared
// among threads.
constexpr long kStockhamThreadMin = 1L << 15;

// Longest single transform whose pass buffers go on the stack.
constexpr long kStackMax = 512;

// Split buffer of c complex values at w: real half then imaginary half.
template <class R> inline SBuf<R> carve(R *&w, long c) {
  SBuf<R> b{w, w + pad16(c), 1};
  w += 2 * pad16(c);
  return b;
}

template <class R> inline int io_of(int xs, int ys) { return (xs == 2 ? 1 : 0) | (ys == 2 ? 2 : 0); }

template <class R> void copy_seq(long cnt, SBuf<const R> x, SBuf<R> y) {
  for (long e = 0; e < cnt; ++e) {
    const R a = x.r[e * x.step], b = x.i[e * x.step];
    y.r[e * y.step] = a;
    y.i[e * y.step] = b;
  }
}

// Layout mode of a buffer for the first pass's input / last pass's output.
template <class R> inline int mode_of(const R *r, const R *i, int step) {
  if (step != 2) return 0;
  return i == r + 1 ? 1 : 2;
}
template <class R> inline const R *base_of(const R *r, const R *i, int step) {
  return step == 2 ? (r < i ? r : i) : r;
}

// Part of [0, tot) of thread t of nt, cut at multiples of 64.
inline void share(long tot, int t, int nt, long &lo, long &hi) {
  lo = t == 0 ? 0 : (tot * t / nt) & ~63L;
  hi = t == nt - 1 ? tot : (tot * (t + 1) / nt) & ~63L;
}

// The passes of a Stockham node for thread t of nt (Sync: a team shares the
// passes, with a barrier after each; without it no OpenMP call is made).
template <bool Sync, class R>
void stockham_passes(const Node<R> *nd, const KernelTable<R> *k, long s0, SBuf<const R> x, SBuf<R> y, SBuf<R> A,
                     SBuf<R> B, bool alias, bool first_p, int t, int nt) {
  const long n = nd->n, tot = n * s0;
  long lo, hi;
  SBuf<const R> src = x;
  if (x.step != 1 && !first_p) {
    // Interleaved input the first pass cannot read: split it into B first.
    if (t == 0) k->gather(n * s0, 1, 1, x.r, x.i, 2, 0, B.r, B.i);
    src = cst(B);
    if constexpr (Sync) {
#pragma omp barrier
    }
  }
  long s = s0;
  for (int i = 0; i < nd->nst; ++i) {
    const Stage &st = nd->st[i];
    const bool last = i == nd->nst - 1;
    const bool use_p = i == 0 && first_p;
    const bool q_pass = st.slot >= 0 && !use_p;
    // The last pass writes y itself unless it cannot produce y's layout.
    const bool to_y = last && !alias && (y.step == 1 || q_pass);
    SBuf<R> dst = to_y ? y : (i % 2 == 0 ? A : B);
    const int im = use_p ? mode_of(src.r, src.i, src.step) : 0;
    const R *sr = use_p ? base_of(src.r, src.i, src.step) : src.r;
    const int om = to_y ? mode_of<R>(dst.r, dst.i, dst.step) : 0;
    R *dr = to_y ? const_cast<R *>(base_of<R>(dst.r, dst.i, dst.step)) : dst.r;
    if constexpr (Sync) {
      share(tot / st.r, t, nt, lo, hi);
    } else {
      lo = 0;
      hi = tot / st.r;
    }
    if (st.slot >= 0) {
      const typename KernelTable<R>::Pass f = use_p ? (st.vec ? k->passv[im] : k->pass1[st.slot][im])
                                              : (s & (k->lanes - 1)) == 0 ? k->passqv[st.slot][om]
                                              : k->lanes >= 8 && (s & (k->lanes / 2 - 1)) == 0
                                                  ? k->passqh[st.slot][om]
                                              : s == 4 ? k->pass4[st.slot][om]
                                              : s == 8 ? k->pass8[st.slot][om]
                                                       : k->pass[st.slot][om];
      const long tw = use_p ? st.tw1 : st.tw;
      f(st.m, s, lo, hi, nd->ar + tw, nd->ai + tw, sr, src.i, dr, dst.i);
    } else {
      k->gen(st.r, st.m, s, lo, hi, nd->ar + st.tw, nd->ai + st.tw, nd->ar + st.roots, nd->ai + st.roots, src.r,
             src.i, dst.r, dst.i);
    }
    if constexpr (Sync) {
#pragma omp barrier
    }
    src = SBuf<const R>{dst.r, dst.i, to_y ? y.step : 1};
    s *= st.r;
    if (last && !to_y && t == 0) k->scatter(n * s0, 1, 1, dst.r, dst.i, y.r, y.i, y.step, 0, R(1), nullptr, nullptr, 0);
  }
}

// Stockham passes. With threads > 1 every pass is shared among the team
// (each thread a range of butterflies, a barrier between passes); the
// arithmetic is the same for every thread count.
// `spare` (optional): split storage for n * s0 values apart from x, used as
// the passes' second buffer; the last pass must not read it (see
// spare_fits).
template <class R>
void exec_stockham(const Node<R> *nd, const KernelTable<R> *k, long s0, SBuf<const R> x, SBuf<R> y, R *work,
                   int threads, const SBuf<R> *spare = nullptr) {
  const long n = nd->n;
  if (nd->nst == 0) {
    copy_seq<R>(n * s0, x, y);
    return;
  }
  if (s0 == 1 && nd->small_e >= 0) {
    const typename KernelTable<R>::Small f =
        small_kernel<R>(nd, k, mode_of(x.r, x.i, x.step), mode_of<R>(y.r, y.i, y.step));
    if (f) {
      f(1, base_of(x.r, x.i, x.step), x.i, 0, const_cast<R *>(base_of<R>(y.r, y.i, y.step)), y.i, 0,
        nd->ar + nd->small_tw, nd->ai + nd->small_tw, R(1));
      return;
    }
  }
  R *w = work;
  SBuf<R> A = carve(w, n * s0), B = carve(w, n * s0);
  if (spare) {
    // Pass i writes A for even i, B for odd i; the last pass reads what
    // pass nst - 2 wrote, which must not be the spare.
    const SBuf<R> S = *spare;
    if (nd->nst % 2) {
      B = A;
      A = S;
    } else {
      B = S;
    }
  }
  const bool alias = nd->nst == 1 && (static_cast<const void *>(x.r) == y.r || static_cast<const void *>(x.i) == y.i ||
                                      static_cast<const void *>(x.r) == y.i || static_cast<const void *>(x.i) == y.r);
  const Stage &first = nd->st[0];
  const bool first_p = s0 == 1 && first.slot >= 0 && first.tw1 >= 0;
  const int nt = threads > 1 && n * s0 >= kStockhamThreadMin ? threads : 1;
  if (nt == 1) {
    stockham_passes<false, R>(nd, k, s0, x, y, A, B, alias, first_p, 0, 1);
    return;
  }
  team(nt, nt, [&](int t, long, long) { stockham_passes<true, R>(nd, k, s0, x, y, A, B, alias, first_p, t, nt); });
}

template <class R>
void exec_bluestein(const Node<R> *nd, const KernelTable<R> *k, long s0, SBuf<const R> x, SBuf<R> y, R *work,
                    int threads) {
  const long n = nd->n, M = nd->M;
  R *w = work;
  SBuf<R> a = carve(w, M * s0);
  const R *cr = nd->ar, *ci = nd->ai, *kr = nd->ar + n, *ki = nd->ai + n;
  k->bmul[io_of<R>(x.step, 1)](n, s0, cr, ci, x.r, x.i, a.r, a.i);
  std::memset(a.r + n * s0, 0, sizeof(R) * static_cast<std::size_t>((M - n) * s0));
  std::memset(a.i + n * s0, 0, sizeof(R) * static_cast<std::size_t>((M - n) * s0));
  exec_node<R>(nd->sub, k, s0, cst(a), a, w, threads);
  k->bmul[0](M, s0, kr, ki, a.r, a.i, a.r, a.i);
  // Inverse transform by exchanging real and imaginary parts.
  SBuf<R> sw{a.i, a.r, 1};
  exec_node<R>(nd->sub, k, s0, cst(sw), sw, w, threads);
  k->bmul[io_of<R>(1, y.step)](n, s0, cr, ci, a.r, a.i, y.r, y.i);
}

template <class R>
void exec_fourstep(const Node<R> *nd, const KernelTable<R> *k, SBuf<const R> x, SBuf<R> y, R *work, int threads) {
  const long n1 = nd->n1, n2 = nd->n2, n1p = nd->n1p, B = nd->fs_block, mx = std::max(n1, n2);
  R *w = work;
  SBuf<R> W = carve(w, n2 * n1p);
  const long per = node_work(nd, 1, 1) - 2 * pad16(n2 * n1p);
  R *tbase = w;
  const long nb1 = (n2 + B - 1) / B, nb2 = (n1 + B - 1) / B;
  const int nt = static_cast<int>(std::min<long>(threads, std::max(nb1, nb2)));
  // Columns: n2 transforms of length n1, element j1 of column j2 at j1*n2 + j2,
  // B adjacent columns at a time; their results, times the twiddles, go to
  // rows j2 of W (W[j2][k1]), transposed in registers.
  team(nt, nb1, [&](int t, long lo, long hi) {
    R *tw = tbase + static_cast<long>(t) * per;
    SBuf<R> G = carve(tw, mx * B), Y = carve(tw, mx * B);
    for (long bl = lo; bl < hi; ++bl) {
      const long q0 = bl * B, b = std::min(B, n2 - q0);
      k->gather(n1, b, b, x.r + x.step * q0, x.i + x.step * q0, x.step * n2, x.step, G.r, G.i);
      exec_node<R>(nd->sub, k, b, cst(G), Y, tw, 1);
      k->tscatter(n1, b, b, Y.r, Y.i, W.r + q0 * n1p, W.i + q0 * n1p, n1p, nd->ar + q0 * n1, nd->ai + q0 * n1, n1);
    }
  });
  // Rows: n1 transforms of length n2 over j2, B adjacent k1 at a time (the
  // columns of W); X[k1 + n1*k2] from transform k1.
  team(nt, nb2, [&](int t, long lo, long hi) {
    R *tw = tbase + static_cast<long>(t) * per;
    SBuf<R> G = carve(tw, mx * B), Y = carve(tw, mx * B);
    for (long bl = lo; bl < hi; ++bl) {
      const long k0 = bl * B, b = std::min(B, n1 - k0);
      k->gather(n2, b, b, W.r + k0, W.i + k0, n1p, 1, G.r, G.i);
      exec_node<R>(nd->sub2, k, b, cst(G), Y, tw, 1);
      k->scatter(n2, b, b, Y.r, Y.i, y.r + y.step * k0, y.i + y.step * k0, y.step * n1, y.step, R(1), nullptr,
                 nullptr, 0);
    }
  });
}

// Takes a free work slot of the plan (one per concurrent caller).
template <class R> int acquire(const PlanBase<R> *pl) {
  for (;;) {
    for (int i = 0; i < pl->users; ++i) {
      int z = 0;
      if (pl->busy[i].load(std::memory_order_relaxed) == 0 &&
          pl->busy[i].compare_exchange_strong(z, 1, std::memory_order_acquire))
        return i;
    }
    std::this_thread::yield();
  }
}
template <class R> void release(const PlanBase<R> *pl, int slot) { pl->busy[slot].store(0, std::memory_order_release); }

template <class R> int team_size(const PlanBase<R> *pl, long units) {
  if (pl->threads <= 1 || units <= 1 || omp_in_parallel()) return 1;
  return static_cast<int>(std::min<long>(pl->threads, units));
}

// Width of the blocks a batch of hm transforms runs in (1: one at a time).
// Short transforms use the plan's block width; column-like batches, whose
// neighbouring transforms lie closer together than the elements of one
// transform, use the column width, so that gathering a block reads
// contiguous runs instead of single elements far apart.
template <class R> long batch_width(const PlanBase<R> *pl, long hm, long is, long id, long os, long od) {
  if (hm < 2) return 1;
  if (pl->block > 1) return pl->block;
  auto mag = [](long v) { return v < 0 ? -v : v; };
  if (pl->cblock > 1 && (mag(id) < mag(is) || mag(od) < mag(os))) return pl->cblock;
  return 1;
}

// Whether the threads share each transform (four-step phases, or the passes
// of a long transform when there are fewer transforms than threads) rather
// than taking whole transforms.
template <class R> bool inner_parallel(const PlanBase<R> *pl, long units) {
  if (pl->root->kind == Node<R>::kFourStep) return true;
  const long len = pl->root->kind == Node<R>::kBluestein ? pl->root->M : pl->root->n;
  return pl->threads > 1 && units < pl->threads && len >= kStockhamThreadMin;
}

// Unit-stride views the passes can read or write directly: step 2 for
// interleaved pairs, step 1 for split arrays.
template <class R> int direct_step(const R *re, const R *im, long stride) {
  if (stride == 2 && (im == re + 1 || im + 1 == re)) return 2;
  if (stride == 1 && re != im) return 1;
  return 0;
}

template <class R> bool ranges_overlap(const R *a, long alen, const R *b, long blen) {
  const R *a1 = a + alen, *b1 = b + blen;
  return a < b1 && b < a1;
}

// Extent [lo, hi) in reals of a strided view of cnt elements, both parts.
template <class R> void view_extent(const R *re, const R *im, long stride, long cnt, const R *&lo, long &len) {
  const long span = stride >= 0 ? stride * (cnt - 1) : -stride * (cnt - 1);
  const R *s0 = stride >= 0 ? re : re + stride * (cnt - 1);
  const R *s1 = stride >= 0 ? im : im + stride * (cnt - 1);
  lo = std::min(s0, s1);
  len = (std::max(s0, s1) - lo) + span + 1;
}

// Whether a Stockham node of one sequence can take the output's storage as
// its second buffer: two passes or more, the first reading the input
// itself, the last writing the output itself (so that neither copies
// between the buffers and the output).
template <class R> bool spare_fits(const Node<R> *nd) {
  return nd->kind == Node<R>::kStockham && nd->small_e < 0 && nd->nst >= 2 && nd->st[0].slot >= 0 &&
         nd->st[0].tw1 >= 0 && nd->st[nd->nst - 1].slot >= 0;
}

}  // namespace

template <class R>
void exec_node(const Node<R> *nd, const KernelTable<R> *k, long s0, SBuf<const R> x, SBuf<R> y, R *work,
               int threads) {
  switch (nd->kind) {
    case Node<R>::kStockham: exec_stockham<R>(nd, k, s0, x, y, work, threads); break;
    case Node<R>::kBluestein: exec_bluestein<R>(nd, k, s0, x, y, work, threads); break;
    case Node<R>::kFourStep: exec_fourstep<R>(nd, k, x, y, work, threads); break;
  }
}

template <class R>
int c2c_execute(const C2CPlan<R> *pl, int sign, CView<const R> in, CView<R> out, R scale, long howmany) {
  if (!pl) return 3;
  const long hm = howmany < 0 ? pl->howmany : howmany;
  if (hm == 0) return 0;
  if (sign > 0) {
    std::swap(in.re, in.im);
    std::swap(out.re, out.im);
  }
  const KernelTable<R> *k = pl->k;
  const long n = pl->n;
  const Node<R> *root = pl->root;
  // Short power-of-two transforms of unit-stride data: each straight from
  // the input to the output through the in-register kernel, scale included;
  // no work areas, gathers or scatters.
  if (root->kind == Node<R>::kStockham && root->small_e >= 0) {
    const int xs = direct_step(in.re, in.im, in.stride), ys = direct_step(out.re, out.im, out.stride);
    const typename KernelTable<R>::Small f =
        xs && ys ? small_kernel<R>(root, k, mode_of(in.re, in.im, xs), mode_of<R>(out.re, out.im, ys)) : nullptr;
    if (f) {
      const R *xb = base_of(in.re, in.im, xs);
      R *yb = const_cast<R *>(base_of<R>(out.re, out.im, ys));
      const R *tr = root->ar + root->small_tw, *ti = root->ai + root->small_tw;
      // Threads only for batches long enough to pay for the parallel region.
      const int nt = hm * n >= kStockhamThreadMin ? team_size(pl, hm) : 1;
      team(nt, hm, [&](int, long lo, long hi) {
        f(hi - lo, xb + lo * in.dist, in.im + lo * in.dist, in.dist, yb + lo * out.dist, out.im + lo * out.dist,
          out.dist, tr, ti, scale);
      });
      return 0;
    }
  }
  // One short transform between unit-stride arrays: straight to the passes,
  // with their work on the stack (no work slot to take). With two passes or
  // more the first reads all of x before the last writes y, so x and y may
  // be the same.
  if (hm == 1 && n <= kStackMax && root->kind == Node<R>::kStockham && root->nst >= 2) {
    const int xs = direct_step(in.re, in.im, in.stride), ys = direct_step(out.re, out.im, out.stride);
    if (xs && ys) {
      alignas(64) R w[4 * pad16(kStackMax)];
      exec_stockham<R>(root, k, 1, SBuf<const R>{in.re, in.im, xs}, SBuf<R>{out.re, out.im, ys}, w, 1);
      if (scale != R(1)) {
        k->scale(n, 1, out.re, out.stride, 0, scale);
        k->scale(n, 1, out.im, out.stride, 0, scale);
      }
      return 0;
    }
  }
  const int slot = acquire(pl);
  R *base = pl->work + static_cast<long>(slot) * (pl->shared + pl->threads * pl->per_thread);

  const long B = batch_width(pl, hm, in.stride, in.dist, out.stride, out.dist);
  if (B > 1) {
    const long nb = (hm + B - 1) / B;
    const int nt = team_size(pl, nb);
    team(nt, nb, [&](int th, long lo, long hi) {
      R *w = base + static_cast<long>(th) * pl->per_thread;
      SBuf<R> G = carve(w, (n + 1) * B), Y = carve(w, (n + 1) * B);
      for (long bl = lo; bl < hi; ++bl) {
        const long q0 = bl * B, b = std::min(B, hm - q0);
        k->gather(n, b, b, in.re + q0 * in.dist, in.im + q0 * in.dist, in.stride, in.dist, G.r, G.i);
        exec_node<R>(root, k, b, cst(G), Y, w, 1);
        k->scatter(n, b, b, Y.r, Y.i, out.re + q0 * out.dist, out.im + q0 * out.dist, out.stride, out.dist, scale,
                   nullptr, nullptr, 0);
      }
    });
    release(pl, slot);
    return 0;
  }

  const bool inner = inner_parallel(pl, hm);
  const int nt = inner ? 1 : team_size(pl, hm);
  const int inner_threads = inner ? team_size(pl, 1L << 30) : 1;
  const int xs = direct_step(in.re, in.im, in.stride), ys = direct_step(out.re, out.im, out.stride);
  // One long transform between unit-stride arrays apart from each other:
  // the output's storage is the passes' second buffer (working set: input,
  // output and one buffer).
  if (hm == 1 && xs && ys && n > kStackMax && spare_fits(root)) {
    const R *lo_x, *lo_y;
    long lx, ly;
    view_extent(in.re, in.im, in.stride, n, lo_x, lx);
    view_extent<R>(out.re, out.im, out.stride, n, lo_y, ly);
    if (!ranges_overlap(lo_x, lx, lo_y, ly)) {
      const SBuf<R> S = ys == 2 ? SBuf<R>{const_cast<R *>(lo_y), const_cast<R *>(lo_y) + n, 1}
                                : SBuf<R>{out.re, out.im, 1};
      exec_stockham<R>(root, k, 1, SBuf<const R>{in.re, in.im, xs}, SBuf<R>{out.re, out.im, ys}, base,
                       inner_threads, &S);
      if (scale != R(1)) {
        k->scale(n, 1, out.re, out.stride, 0, scale);
        k->scale(n, 1, out.im, out.stride, 0, scale);
      }
      release(pl, slot);
      return 0;
    }
  }
  const bool single_pass = root->kind == Node<R>::kStockham && root->nst <= 1;
  team(nt, hm, [&](int th, long lo, long hi) {
    R *w = inner ? base : base + static_cast<long>(th) * pl->per_thread;
    SBuf<R> G = carve(w, n + 1), Y = carve(w, n + 1);
    for (long t = lo; t < hi; ++t) {
      const R *xr = in.re + t * in.dist, *xi = in.im + t * in.dist;
      R *yr = out.re + t * out.dist, *yi = out.im + t * out.dist;
      SBuf<const R> x{xr, xi, xs};
      if (!xs) {
        k->gather(n, 1, 1, xr, xi, in.stride, 0, G.r, G.i);
        x = cst(G);
      } else if (single_pass && ys) {
        const R *lo_x, *lo_y;
        long lx, ly;
        view_extent(xr, xi, in.stride, n, lo_x, lx);
        view_extent<R>(yr, yi, out.stride, n, lo_y, ly);
        if (ranges_overlap(lo_x, lx, lo_y, ly)) {
          k->gather(n, 1, 1, xr, xi, in.stride, 0, G.r, G.i);
          x = cst(G);
        }
      }
      if (ys) {
        exec_node<R>(root, k, 1, x, SBuf<R>{yr, yi, ys}, w, inner_threads);
        if (scale != R(1)) {
          k->scale(n, 1, yr, out.stride, 0, scale);
          k->scale(n, 1, yi, out.stride, 0, scale);
        }
      } else {
        exec_node<R>(root, k, 1, x, Y, w, inner_threads);
        k->scatter(n, 1, 1, Y.r, Y.i, yr, yi, out.stride, 0, scale, nullptr, nullptr, 0);
      }
    }
  });
  release(pl, slot);
  return 0;
}

// Short real transforms one by one: body(f, t, zr, zi, tr, ti) runs
// transform t with the in-register kernel f of the half-length transform, its
// twiddles (tr, ti) and a stack buffer (zr, zi). False when the length has no
// such kernel.
template <class R, class F>
bool short_real_batch(const R2CPlan<R> *pl, long hm, typename KernelTable<R>::Small f, F &&body) {
  if (!f) return false;
  const Node<R> *root = pl->root;
  const long len = root->n;
  const R *tr = root->ar + root->small_tw, *ti = root->ai + root->small_tw;
  const int nt = hm * pl->n >= kStockhamThreadMin ? team_size(pl, hm) : 1;
  team(nt, hm, [&](int, long lo, long hi) {
    alignas(64) R w[2 * pad16(kStackMax + 1)];
    R *zr = w, *zi = w + pad16(len + 1);
    for (long t = lo; t < hi; ++t) body(f, t, zr, zi, tr, ti);
  });
  return true;
}

template <class R> int r2c_execute(const R2CPlan<R> *pl, RView<const R> in, CView<R> out, R scale, long howmany) {
  if (!pl) return 3;
  const long hm = howmany < 0 ? pl->howmany : howmany;
  if (hm == 0) return 0;
  const KernelTable<R> *k = pl->k;
  const long n = pl->n, len = pl->root->n, h = n / 2;
  const bool even = n % 2 == 0;
  const Node<R> *root = pl->root;
  // One short transform of unit-stride real data: its half-length transform
  // and the untangling pass with their work on the stack.
  if (hm == 1 && even && in.stride == 1 && len <= kStackMax && root->kind == Node<R>::kStockham) {
    alignas(64) R w[6 * pad16(kStackMax + 1)];
    R *wp = w;
    SBuf<R> Y = carve(wp, len + 1);
    exec_node<R>(root, k, 1, SBuf<const R>{in.p, in.p + 1, 2}, Y, wp, 1);
    k->r2c_post(h, 1, Y.r, Y.i, pl->ur, pl->ui, out.re, out.im, out.stride, out.dist, scale);
    return 0;
  }
  // Batches of short transforms of unit-stride real data: each through the
  // in-register kernel of its half-length transform into a stack buffer,
  // then the untangling step straight into the output.
  if (hm > 1 && even && in.stride == 1 && len <= kStackMax && root->kind == Node<R>::kStockham &&
      short_real_batch<R>(pl, hm, small_kernel<R>(root, k, 1, 0),
                          [&](auto f, long t, R *zr, R *zi, const R *tr, const R *ti) {
                            const R *xp = in.p + t * in.dist;
                            f(1, xp, xp + 1, 0, zr, zi, 0, tr, ti, R(1));
                            k->r2c_post(h, 1, zr, zi, pl->ur, pl->ui, out.re + t * out.dist,
                                        out.im + t * out.dist, out.stride, 0, scale);
                          }))
    return 0;
  const int slot = acquire(pl);
  R *base = pl->work + static_cast<long>(slot) * (pl->shared + pl->threads * pl->per_thread);
  const bool inner = inner_parallel(pl, 1);
  // One long transform of unit-stride real data to unit-stride interleaved
  // output apart from it: the output's storage is the passes' second
  // buffer, the last pass writes the half-length transform into it and the
  // untangling runs in place there. The working set is the input, the
  // output and one buffer, rather than three buffers besides them.
  if (hm == 1 && even && in.stride == 1 && out.stride == 2 && out.im == out.re + 1 && len > kStackMax &&
      spare_fits(root) && !ranges_overlap<R>(in.p, n, out.re, 2 * (h + 1))) {
    const int it = inner ? team_size(pl, 1L << 30) : 1;
    const SBuf<R> S{out.re, out.re + len, 1};
    exec_stockham<R>(root, k, 1, SBuf<const R>{in.p, in.p + 1, 2}, SBuf<R>{out.re, out.re + 1, 2}, base, it, &S);
    k->r2c_post_ip(h, out.re, pl->ur, pl->ui, scale);
    release(pl, slot);
    return 0;
  }
  const long B = batch_width(pl, hm, in.stride, in.dist, out.stride, out.dist), nb = (hm + B - 1) / B;
  const int nt = inner ? 1 : team_size(pl, nb);
  const int inner_threads = inner ? team_size(pl, 1L << 30) : 1;
  team(nt, nb, [&](int th, long lo, long hi) {
    R *w = inner ? base : base + static_cast<long>(th) * pl->per_thread;
    SBuf<R> G = carve(w, (len + 1) * B), Y = carve(w, (len + 1) * B);
    for (long bl = lo; bl < hi; ++bl) {
      const long q0 = bl * B, b = std::min(B, hm - q0);
      const R *xp = in.p + q0 * in.dist;
      R *yr = out.re + q0 * out.dist, *yi = out.im + q0 * out.dist;
      if (even) {
        SBuf<const R> x{xp, xp + 1, 2};
        if (b > 1 || in.stride != 1) {
          k->gather(h, b, b, xp, xp + in.stride, 2 * in.stride, in.dist, G.r, G.i);
          x = cst(G);
        }
        exec_node<R>(root, k, b, x, Y, w, inner_threads);
        k->r2c_post(h, b, Y.r, Y.i, pl->ur, pl->ui, yr, yi, out.stride, out.dist, scale);
      } else {
        k->gather(n, b, b, xp, xp, in.stride, in.dist, G.r, G.i);
        std::memset(G.i, 0, sizeof(R) * static_cast<std::size_t>(n * b));
        exec_node<R>(root, k, b, cst(G), Y, w, inner_threads);
        k->scatter(h + 1, b, b, Y.r, Y.i, yr, yi, out.stride, out.dist, scale, nullptr, nullptr, 0);
      }
    }
  });
  release(pl, slot);
  return 0;
}

template <class R> int c2r_execute(const R2CPlan<R> *pl, CView<const R> in, RView<R> out, R scale, long howmany) {
  if (!pl) return 3;
  const long hm = howmany < 0 ? pl->howmany : howmany;
  if (hm == 0) return 0;
  const KernelTable<R> *k = pl->k;
  const long n = pl->n, len = pl->root->n, h = n / 2;
  const bool even = n % 2 == 0;
  const Node<R> *root = pl->root;
  // Short transforms to unit-stride real data: the pre-pass of each into a
  // stack buffer, then the in-register kernel of the half-length transform
  // straight into the output, scale included.
  if (even && out.stride == 1 && len <= kStackMax && root->kind == Node<R>::kStockham &&
      short_real_batch<R>(pl, hm, small_kernel<R>(root, k, 0, 2),
                          [&](auto f, long t, R *zr, R *zi, const R *tr, const R *ti) {
                            R *yp = out.p + t * out.dist;
                            k->c2r_pre(h, 1, in.re + t * in.dist, in.im + t * in.dist, in.stride, 0,
                                       pl->ur, pl->ui, zr, zi);
                            f(1, zi, zr, 0, yp, yp, 0, tr, ti, scale);
                          }))
    return 0;
  const int slot = acquire(pl);
  R *base = pl->work + static_cast<long>(slot) * (pl->shared + pl->threads * pl->per_thread);
  const bool inner = inner_parallel(pl, 1);
  const long B = batch_width(pl, hm, in.stride, in.dist, out.stride, out.dist), nb = (hm + B - 1) / B;
  const int nt = inner ? 1 : team_size(pl, nb);
  const int inner_threads = inner ? team_size(pl, 1L << 30) : 1;
  team(nt, nb, [&](int th, long lo, long hi) {
    R *w = inner ? base : base + static_cast<long>(th) * pl->per_thread;
    SBuf<R> G = carve(w, (len + 1) * B), Y = carve(w, (len + 1) * B);
    for (long bl = lo; bl < hi; ++bl) {
      const long q0 = bl * B, b = std::min(B, hm - q0);
      const R *xr = in.re + q0 * in.dist, *xi = in.im + q0 * in.dist;
      R *yp = out.p + q0 * out.dist;
      if (even) {
        k->c2r_pre(h, b, xr, xi, in.stride, in.dist, pl->ur, pl->ui, G.r, G.i);
        SBuf<const R> gs{G.i, G.r, 1};
        if (b == 1 && out.stride == 1) {
          exec_node<R>(root, k, 1, gs, SBuf<R>{yp + 1, yp, 2}, w, inner_threads);
          if (scale != R(1)) k->scale(n, 1, yp, 1, 0, scale);
        } else {
          exec_node<R>(root, k, b, gs, SBuf<R>{Y.i, Y.r, 1}, w, inner_threads);
          k->scatter(h, b, b, Y.r, Y.i, yp, yp + out.stride, 2 * out.stride, out.dist, scale, nullptr, nullptr, 0);
        }
      } else {
        // Full conjugate-even spectrum, then a complex backward transform.
        k->gather(h + 1, b, b, xr, xi, in.stride, in.dist, G.r, G.i);
        for (long q = 0; q < b; ++q) G.i[q] = R(0);
        for (long kk = 1; kk <= h; ++kk)
          for (long q = 0; q < b; ++q) {
            G.r[(n - kk) * b + q] = G.r[kk * b + q];
            G.i[(n - kk) * b + q] = -G.i[kk * b + q];
          }
        exec_node<R>(root, k, b, SBuf<const R>{G.i, G.r, 1}, SBuf<R>{Y.i, Y.r, 1}, w, inner_threads);
        for (long q = 0; q < b; ++q)
          for (long j = 0; j < n; ++j) yp[q * out.dist + j * out.stride] = Y.r[j * b + q] * scale;
      }
    }
  });
  release(pl, slot);
  return 0;
}

namespace {
template <class R> bool small_direct_of(const PlanBase<R> *pl, SmallDirect<R> *d) {
  if (!pl || !pl->root) return false;
  const Node<R> *root = pl->root;
  if (root->kind != Node<R>::kStockham || root->small_e < 0 || root->nst == 0) return false;
  *d = SmallDirect<R>{};
  for (int io = 0; io < kNumSmallIO; ++io) d->kernel[io] = pl->k->small[root->small_e][io];
  d->twr = root->ar + root->small_tw;
  d->twi = root->ai + root->small_tw;
  return true;
}
}  // namespace

template <class R> bool small_direct(const C2CPlan<R> *pl, SmallDirect<R> *d) { return small_direct_of<R>(pl, d); }

template <class R> bool small_direct(const R2CPlan<R> *pl, SmallDirect<R> *d) {
  if (!pl || pl->n % 2 != 0 || pl->n < 4 || !small_direct_of<R>(pl, d)) return false;
  d->post = pl->k->r2c_post;
  d->pre = pl->k->c2r_pre;
  d->ur = pl->ur;
  d->ui = pl->ui;
  d->h = pl->n / 2;
  return true;
}

#define NXL_DFT_INSTANTIATE_EXEC(R)                                                                  \
  template void exec_node<R>(const Node<R> *, const KernelTable<R> *, long, SBuf<const R>, SBuf<R>, R *, \
                             int);                                                                   \
  template int c2c_execute<R>(const C2CPlan<R> *, int, CView<const R>, CView<R>, R, long);          \
  template int r2c_execute<R>(const R2CPlan<R> *, RView<const R>, CView<R>, R, long);               \
  template int c2r_execute<R>(const R2CPlan<R> *, CView<const R>, RView<R>, R, long);              \
  template bool small_direct<R>(const C2CPlan<R> *, SmallDirect<R> *);                            \
  template bool small_direct<R>(const R2CPlan<R> *, SmallDirect<R> *);
NXL_DFT_INSTANTIATE_EXEC(float)
NXL_DFT_INSTANTIATE_EXEC(double)

}  // namespace nxl::dft
