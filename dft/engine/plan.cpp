// Plan creation: factorisation, twiddles in extended precision, the choice
// between mixed-radix passes, Bluestein's convolution and the four-step split,
// the batch block width and the work areas.
#include <cmath>
#include <cstring>
#include <new>

#include "dft/engine/plan.h"
#include "dft/engine/plan_impl.h"
#include "service/codepath.h"

NXL_CP_DECLARE(const void *, nxl_dft_, _kernels_d, (void))
NXL_CP_DECLARE(const void *, nxl_dft_, _kernels_s, (void))

namespace nxl::dft {

namespace {

std::atomic<int> g_kernel_override{-1};

constexpr long double kPi = 3.141592653589793238462643383279502884L;

// exp(-2 pi i k / n) in long double. The angle is reduced exactly, in integers,
// to an eighth of a turn, so that cos and sin are evaluated on [0, pi/4] only.
void root_ld(unsigned long long k, unsigned long long n, long double &c, long double &s) {
  k %= n;
  const unsigned __int128 t = static_cast<unsigned __int128>(k) * 8u;
  const unsigned long long o = static_cast<unsigned long long>(t / n);
  const unsigned long long r = static_cast<unsigned long long>(t % n);
  long double a;
  unsigned long long base;
  bool neg;
  if (o & 1u) {
    a = static_cast<long double>(n - r) / static_cast<long double>(n);
    base = o + 1;
    neg = true;
  } else {
    a = static_cast<long double>(r) / static_cast<long double>(n);
    base = o;
    neg = false;
  }
  a *= kPi / 4;
  const long double ca = cosl(a), sa = neg ? -sinl(a) : sinl(a);
  long double co, si;  // cos and sin of 2 pi k / n
  switch ((base / 2) & 3u) {
    case 0: co = ca; si = sa; break;
    case 1: co = -sa; si = ca; break;
    case 2: co = -ca; si = -sa; break;
    default: co = sa; si = -ca; break;
  }
  c = co;
  s = -si;
}

template <class R> void root(long k, long n, R &c, R &s) {
  long double lc, ls;
  root_ld(static_cast<unsigned long long>(k), static_cast<unsigned long long>(n), lc, ls);
  c = static_cast<R>(lc);
  s = static_cast<R>(ls);
}

int slot_of(int r) {
  for (int i = 0; i < kNumRadix; ++i)
    if (kRadixOf[i] == r) return i;
  return -1;
}

// Longest power of two (log2) whose passes after the first are 8s.
constexpr int kEightsMaxLog = 14;

// Radices of a Stockham factorisation of n, in pass order. The first pass
// (p innermost, s == 1) has the radix of the vector length (`lanes`, with
// its in-register transposes) when lanes^2 divides n, else a 4 (or 2): its
// outputs interleave with stride r, which the vectorised loop turns into
// shuffles for r <= 4. Then the other powers of two, the odd radices with
// kernels, and the remaining primes (generic pass). Returns the count.
int radices(long n, int *rs, int lanes = 0) {
  int cnt = 0, e = 0, le = 0;
  for (int l = lanes; l > 1; l /= 2) ++le;
  while (n % 2 == 0) { n /= 2; ++e; }
  const bool lanes_first = lanes >= 4 && e >= 2 * le;
  if (lanes_first) { rs[cnt++] = lanes; e -= le; }
  else if (e >= 2) { rs[cnt++] = 4; e -= 2; }
  else if (e == 1) { rs[cnt++] = 2; e = 0; }
  if (lanes_first && n == 1 && e + le <= kEightsMaxLog) {
    // A power of two held in the caches: passes of 8 after the first (a
    // twiddled 16 overflows the registers and loses to two passes of 8 or
    // three of 4), a remaining factor 4 before the last 8, or two 4s last.
    int eights = e / 3;
    const int rest = e % 3;
    if (rest == 1 && eights > 0) --eights;
    for (int i = 0; i < eights; ++i) {
      if (rest == 2 && i == eights - 1) rs[cnt++] = 4;
      rs[cnt++] = 8;
    }
    if (rest == 2 && eights == 0) rs[cnt++] = 4;
    if (rest == 1 && e > 1) { rs[cnt++] = 4; rs[cnt++] = 4; }
    if (e == 1) rs[cnt++] = 2;
    return cnt;
  }
  // Passes of 16 in the middle; the last power-of-two pass is an 8, 4 or 2
  // (its interleaved stores vectorise; a 16's do not), except after a first
  // pass of the vector length: then every later pass runs on whole vectors
  // of q, interleaving its stores by hand, and a last 16 saves a pass.
  int sixteens = e / 4;
  const int rest = e % 4;
  int tail[2], nt = 0;
  if (rest == 0 && sixteens > 0 && !lanes_first) { --sixteens; tail[nt++] = 4; tail[nt++] = 4; }
  else if (rest == 1 && sixteens > 0) { --sixteens; tail[nt++] = 4; tail[nt++] = 8; }
  else if (rest == 1) tail[nt++] = 2;
  else if (rest == 2) tail[nt++] = 4;
  else if (rest == 3) tail[nt++] = 8;
  for (int i = 0; i < sixteens; ++i) rs[cnt++] = 16;
  for (int i = 0; i < nt; ++i) rs[cnt++] = tail[i];
  // Threes in pairs (one pass of 9 for two of 3).
  while (n % 9 == 0) { n /= 9; rs[cnt++] = 9; }
  for (int p : {3, 5, 7, 11, 13})
    while (n % p == 0) { n /= p; rs[cnt++] = p; }
  for (long p = 17; p * p <= n; p += 2)
    while (n % p == 0) { n /= p; rs[cnt++] = static_cast<int>(p); }
  if (n > 1) rs[cnt++] = static_cast<int>(n > 2147483647L ? 0 : n);
  return cnt;
}

// Rough cost in flops of the passes of a Stockham factorisation.
double stockham_cost(long n) {
  int rs[64];
  int c = radices(n, rs);
  double cost = 0;
  for (int i = 0; i < c; ++i) {
    const int r = rs[i];
    if (r == 0) return 1e300;
    cost += slot_of(r) >= 0 ? 6.0 + 3.0 * std::log2(static_cast<double>(r)) : 8.0 + 8.0 * r;
  }
  return cost * static_cast<double>(n);
}

bool smooth7(long m) {
  for (int p : {2, 3, 5, 7})
    while (m % p == 0) m /= p;
  return m == 1;
}

// Convolution length of Bluestein's algorithm: the cheapest 7-smooth length
// >= 2n-1 (searched up to twice the smallest power of two).
long bluestein_length(long n, double *cost) {
  const long lo = 2 * n - 1;
  long p2 = 1;
  while (p2 < lo) p2 *= 2;
  long best = p2;
  double bc = stockham_cost(p2);
  for (long m = lo; m < p2; ++m) {
    if (!smooth7(m)) continue;
    const double c = stockham_cost(m);
    if (c < bc) { bc = c; best = m; }
  }
  *cost = 2 * bc + 20.0 * static_cast<double>(best) + 10.0 * static_cast<double>(n);
  return best;
}

template <class R> R *arena_alloc(long complexes, std::size_t &bytes) {
  const long half = pad16(complexes);
  void *p = nxl_serv_allocate(static_cast<std::size_t>(2 * half) * sizeof(R), 64);
  if (p) bytes += static_cast<std::size_t>(2 * half) * sizeof(R);
  return static_cast<R *>(p);
}

template <class R> void free_node(Node<R> *nd) {
  if (!nd) return;
  free_node(nd->sub);
  free_node(nd->sub2);
  if (nd->ar) nxl_serv_deallocate(nd->ar);
  delete nd;
}

// Four-step split when n is at least this many complex values and the plan
// may use more than one thread (its row and column phases divide among the
// team). On one thread the Stockham passes, which stream through the data,
// are faster at every length.
// Four-step split from this many complex values: there the Stockham passes'
// work copies (four times the data) become the larger cost. Below it the
// passes, which stream through the data (shared among threads pass by pass),
// are faster at every length measured.
template <class R> constexpr long kFourStepMin = 1L << 21;

template <class R> Node<R> *make_node(long n, bool top, const KernelTable<R> *k, std::size_t &bytes);

// Longest transform taken by the in-register kernels (complex values).
template <class R> constexpr long kSmallMax = 512;

template <class R> Node<R> *make_stockham(long n, const KernelTable<R> *k, std::size_t &bytes) {
  const int lanes = k->lanes;
  Node<R> *nd = new (std::nothrow) Node<R>;
  if (!nd) return nullptr;
  nd->kind = Node<R>::kStockham;
  nd->n = n;
  int rs[64];
  const int c = n > 1 ? radices(n, rs, lanes) : 0;
  long total = 0, L = n;
  for (int i = 0; i < c; ++i) {
    const int r = rs[i];
    if (r <= 0) { delete nd; return nullptr; }
    Stage &st = nd->st[i];
    st.r = r;
    st.slot = slot_of(r);
    st.m = L / r;
    st.tw = total;
    total += st.m * (r - 1);
    st.tw1 = -1;
    if (i == 0) { st.tw1 = total; total += st.m * (r - 1); }
    st.roots = -1;
    st.vec = i == 0 && lanes > 1 && r == lanes && st.m % lanes == 0;
    if (st.slot < 0) { st.roots = total; total += r; }
    L /= r;
  }
  nd->nst = c;
  // The in-register kernel of a power-of-two length: its own twiddles.
  int le = 0;
  while ((1L << le) < n) ++le;
  long sw = 0;
  if ((1L << le) == n && le <= kSmallMaxLog && n <= kSmallMax<R> && k->small_w[le] > 0) {
    sw = k->small_w[le];
    nd->small_e = le;
    nd->small_tw = total;
    total += (sw - 1) * (n / sw);
  }
  nd->arena = total;
  if (total > 0) {
    nd->ar = arena_alloc<R>(total, bytes);
    if (!nd->ar) { delete nd; return nullptr; }
    nd->ai = nd->ar + pad16(total);
  }
  L = n;
  for (int i = 0; i < c; ++i) {
    const Stage &st = nd->st[i];
    const int r = st.r;
    for (long p = 0; p < st.m; ++p)
      for (int kk = 1; kk < r; ++kk) {
        R cr, ci;
        root<R>(p * kk, L, cr, ci);
        nd->ar[st.tw + p * (r - 1) + kk - 1] = cr;
        nd->ai[st.tw + p * (r - 1) + kk - 1] = ci;
        if (st.tw1 >= 0) {
          nd->ar[st.tw1 + (kk - 1) * st.m + p] = cr;
          nd->ai[st.tw1 + (kk - 1) * st.m + p] = ci;
        }
      }
    if (st.roots >= 0)
      for (int e = 0; e < r; ++e) root<R>(e, r, nd->ar[st.roots + e], nd->ai[st.roots + e]);
    L /= r;
  }
  if (sw > 0) {
    const long M = n / sw;
    for (long kk = 1; kk < sw; ++kk)
      for (long p = 0; p < M; ++p)
        root<R>(p * kk, n, nd->ar[nd->small_tw + (kk - 1) * M + p], nd->ai[nd->small_tw + (kk - 1) * M + p]);
  }
  return nd;
}

template <class R> const KernelTable<R> *table_for(int index);
template <> const KernelTable<double> *table_for<double>(int i) {
  static const void *(*const tab[8])(void) = NXL_CP_TABLE(nxl_dft_, _kernels_d);
  return i < 0 || i > 7 ? nullptr : static_cast<const KernelTable<double> *>(tab[i]());
}
template <> const KernelTable<float> *table_for<float>(int i) {
  static const void *(*const tab[8])(void) = NXL_CP_TABLE(nxl_dft_, _kernels_s);
  return i < 0 || i > 7 ? nullptr : static_cast<const KernelTable<float> *>(tab[i]());
}

int kernel_index() {
  const int o = g_kernel_override.load(std::memory_order_relaxed);
  return o >= 0 ? o : cp_kernel_index();
}

template <class R> Node<R> *make_bluestein(long n, long M, const KernelTable<R> *k, std::size_t &bytes) {
  Node<R> *nd = new (std::nothrow) Node<R>;
  if (!nd) return nullptr;
  nd->kind = Node<R>::kBluestein;
  nd->n = n;
  nd->M = M;
  nd->sub = make_node<R>(M, false, k, bytes);
  nd->arena = n + M;
  nd->ar = nd->sub ? arena_alloc<R>(nd->arena, bytes) : nullptr;
  if (!nd->ar) { free_node(nd); return nullptr; }
  nd->ai = nd->ar + pad16(nd->arena);
  // Chirp c_j = exp(-i pi j^2 / n): j^2 reduced modulo 2n in integers.
  for (long j = 0; j < n; ++j) {
    const unsigned long long jj = static_cast<unsigned long long>(
        (static_cast<unsigned __int128>(j) * static_cast<unsigned long long>(j)) %
        static_cast<unsigned long long>(2 * n));
    root<R>(static_cast<long>(jj), 2 * n, nd->ar[j], nd->ai[j]);
  }
  // Convolution kernel: DFT of b_j = conj(c_j) for |j| < n (cyclically), over M,
  // computed in double (or higher) precision and scaled by 1/M.
  double *b = static_cast<double *>(nxl_serv_allocate(static_cast<std::size_t>(2 * pad16(M)) * sizeof(double), 64));
  const KernelTable<double> *kd = table_for<double>(kernel_index());
  std::size_t scratch_bytes = 0;
  Node<double> *sd = kd ? make_node<double>(M, false, kd, scratch_bytes) : nullptr;
  const long wlen = sd ? node_work<double>(sd, 1, 1) : 0;
  double *w = sd ? static_cast<double *>(nxl_serv_allocate(static_cast<std::size_t>(wlen + 16) * sizeof(double), 64)) : nullptr;
  if (!b || !sd || !w) {
    if (b) nxl_serv_deallocate(b);
    if (w) nxl_serv_deallocate(w);
    free_node(sd);
    free_node(nd);
    return nullptr;
  }
  double *br = b, *bi = b + pad16(M);
  for (long j = 0; j < M; ++j) br[j] = bi[j] = 0;
  for (long j = 0; j < n; ++j) {
    const unsigned long long jj = static_cast<unsigned long long>(
        (static_cast<unsigned __int128>(j) * static_cast<unsigned long long>(j)) %
        static_cast<unsigned long long>(2 * n));
    double c, s;
    root<double>(static_cast<long>(jj), 2 * n, c, s);
    br[j] = c; bi[j] = -s;
    if (j > 0) { br[M - j] = c; bi[M - j] = -s; }
  }
  exec_node<double>(sd, kd, 1, {br, bi, 1}, {br, bi, 1}, w, 1);
  for (long j = 0; j < M; ++j) {
    nd->ar[n + j] = static_cast<R>(br[j] / static_cast<double>(M));
    nd->ai[n + j] = static_cast<R>(bi[j] / static_cast<double>(M));
  }
  nxl_serv_deallocate(b);
  nxl_serv_deallocate(w);
  free_node(sd);
  return nd;
}

template <class R> Node<R> *make_fourstep(long n, long n1, const KernelTable<R> *k, std::size_t &bytes) {
  Node<R> *nd = new (std::nothrow) Node<R>;
  if (!nd) return nullptr;
  nd->kind = Node<R>::kFourStep;
  nd->n = n;
  nd->n1 = n1;
  nd->n2 = n / n1;
  nd->fs_block = 64 / static_cast<long>(sizeof(R));  // one cache line of each part
  nd->sub = make_node<R>(n1, false, k, bytes);
  nd->sub2 = nd->sub ? make_node<R>(nd->n2, false, k, bytes) : nullptr;
  nd->arena = n;
  nd->ar = nd->sub2 ? arena_alloc<R>(n, bytes) : nullptr;
  if (!nd->ar) { free_node(nd); return nullptr; }
  nd->ai = nd->ar + pad16(n);
  nd->n1p = n1 + 64 / static_cast<long>(sizeof(R));
  for (long j2 = 0; j2 < nd->n2; ++j2)
    for (long k1 = 0; k1 < n1; ++k1)
      root<R>(static_cast<long>((static_cast<unsigned __int128>(j2) * k1) % static_cast<unsigned long long>(n)), n,
              nd->ar[j2 * n1 + k1], nd->ai[j2 * n1 + k1]);
  return nd;
}

template <class R> Node<R> *make_node(long n, bool top, const KernelTable<R> *k, std::size_t &bytes) {
  const long lp = largest_prime_factor(n);
  if (lp > 13) {
    double bc;
    const long M = bluestein_length(n, &bc);
    if (bc < stockham_cost(n)) return make_bluestein<R>(n, M, k, bytes);
  }
  if (top && n >= kFourStepMin<R>) {
    // n1 = the divisor of n closest to sqrt(n) from below.
    long n1 = 1;
    for (long d = 1; d * d <= n; ++d)
      if (n % d == 0) n1 = d;
    if (n1 >= 16) return make_fourstep<R>(n, n1, k, bytes);
  }
  return make_stockham<R>(n, k, bytes);
}

}  // namespace

template <class R> long node_work(const Node<R> *nd, long s0, int threads) {
  switch (nd->kind) {
    case Node<R>::kStockham: return 4 * pad16(nd->n * s0);
    case Node<R>::kBluestein: return 2 * pad16(nd->M * s0) + node_work(nd->sub, s0, threads);
    case Node<R>::kFourStep: {
      const long B = nd->fs_block, mx = nd->n1 > nd->n2 ? nd->n1 : nd->n2;
      long sub = node_work(nd->sub, B, 1), sub2 = node_work(nd->sub2, B, 1);
      return 2 * pad16(nd->n2 * nd->n1p) + threads * (8 * pad16(mx * B) + (sub > sub2 ? sub : sub2));
    }
  }
  return 0;
}

template <class R> void free_tree(Node<R> *nd) { free_node(nd); }

long largest_prime_factor(long n) {
  if (n <= 1) return 1;
  long lp = 1;
  while (n % 2 == 0) { n /= 2; lp = 2; }
  for (long p = 3; p * p <= n; p += 2)
    while (n % p == 0) { n /= p; lp = p; }
  return n > 1 ? n : lp;
}

void set_kernel_override(int index) { g_kernel_override.store(index, std::memory_order_relaxed); }

// Fills the common part of a plan for a root node of length len (the complex
// length carried by the engine: n for c2c, n/2 or n for r2c).
// Longest transform (complex values) taken in blocks of transforms: 256 bytes
// per part, 32 double or 64 single values (measured).
template <class R> constexpr long kBlockMaxLen = 256 / static_cast<long>(sizeof(R));

template <class R> bool setup_plan(PlanBase<R> *pl, long n, long len, long howmany, int threads, int users) {
  pl->n = n;
  pl->howmany = howmany;
  pl->threads = threads < 1 ? 1 : threads;
  pl->users = users < 1 ? 1 : users;
  pl->k = table_for<R>(kernel_index());
  if (!pl->k) return false;
  pl->root = make_node<R>(len, true, pl->k, pl->bytes);
  if (!pl->root) return false;
  // Block mode: sequences handled b at a time in [j][q] layout (vectorised
  // across sequences), b chosen so that one block's data and work stay
  // within about 256 KiB.
  const long eff = pl->root->kind == Node<R>::kBluestein ? pl->root->M : len;
  long b = (256L * 1024 / (6 * 2 * static_cast<long>(sizeof(R)))) / (eff > 0 ? eff : 1);
  const long bmax = 128 / static_cast<long>(sizeof(R));
  if (b > bmax) b = bmax;
  // Above this the per-transform passes (vectorised within one transform, no
  // transposing gather/scatter) are faster.
  if (howmany < 2 || b < 4 || len > kBlockMaxLen<R> || pl->root->kind == Node<R>::kFourStep) b = 1;
  // Whole vectors of transforms, so that their gathers transpose in registers.
  if (b > 1 && b >= pl->k->lanes) b = b / pl->k->lanes * pl->k->lanes;
  pl->block = b;
  // Column-like batches (neighbouring transforms closer in memory than the
  // elements of one transform, e.g. the columns of a matrix) always go in
  // blocks: a block's rows are contiguous runs of the caller's data and every
  // pass is vectorised across the block. The width is a whole number of
  // vectors, smaller for longer transforms so that a block stays in L2.
  long cb = 1;
  if (pl->root->kind != Node<R>::kFourStep && eff <= 16384) {
    const long lanes = pl->k->lanes;
    cb = (512L * 1024 / (8 * 2 * static_cast<long>(sizeof(R)))) / (eff > 0 ? eff : 1);
    cb = cb / lanes * lanes;
    if (cb < lanes) cb = lanes;
    if (cb > 4 * lanes) cb = 4 * lanes;
  }
  pl->cblock = cb;
  const long bw = b > cb ? b : cb;
  const long gy = len + 1;
  if (pl->root->kind == Node<R>::kFourStep) {
    pl->per_thread = 0;
    pl->shared = 4 * pad16(gy) + node_work(pl->root, 1, pl->threads);
  } else {
    pl->per_thread = 4 * pad16(gy * bw) + node_work(pl->root, bw, 1);
    pl->shared = 0;
  }
  const long total = pl->users * (pl->shared + pl->threads * pl->per_thread);
  pl->work = static_cast<R *>(nxl_serv_allocate(static_cast<std::size_t>(total + 16) * sizeof(R), 64));
  if (!pl->work) return false;
  pl->bytes += static_cast<std::size_t>(total + 16) * sizeof(R);
  pl->busy = new (std::nothrow) std::atomic<int>[pl->users];
  if (!pl->busy) return false;
  for (int i = 0; i < pl->users; ++i) pl->busy[i].store(0);
  return true;
}

template <class R> void teardown_plan(PlanBase<R> *pl) {
  free_node(pl->root);
  if (pl->work) nxl_serv_deallocate(pl->work);
  if (pl->ur) nxl_serv_deallocate(pl->ur);
  delete[] pl->busy;
}

template <class R> C2CPlan<R> *c2c_create(long n, long howmany, int threads, int user_threads) {
  if (n < 1 || howmany < 1) return nullptr;
  C2CPlan<R> *pl = new (std::nothrow) C2CPlan<R>;
  if (!pl) return nullptr;
  if (!setup_plan<R>(pl, n, n, howmany, threads, user_threads)) {
    teardown_plan<R>(pl);
    delete pl;
    return nullptr;
  }
  return pl;
}

template <class R> R2CPlan<R> *r2c_create(long n, long howmany, int threads, int user_threads) {
  if (n < 1 || howmany < 1) return nullptr;
  R2CPlan<R> *pl = new (std::nothrow) R2CPlan<R>;
  if (!pl) return nullptr;
  const bool even = n % 2 == 0;
  bool ok = setup_plan<R>(pl, n, even ? n / 2 : n, howmany, threads, user_threads);
  if (ok && even) {
    const long h = n / 2;
    pl->ur = static_cast<R *>(nxl_serv_allocate(static_cast<std::size_t>(2 * pad16(h + 1)) * sizeof(R), 64));
    ok = pl->ur != nullptr;
    if (ok) {
      pl->bytes += static_cast<std::size_t>(2 * pad16(h + 1)) * sizeof(R);
      pl->ui = pl->ur + pad16(h + 1);
      for (long kk = 0; kk <= h; ++kk) root<R>(kk, n, pl->ur[kk], pl->ui[kk]);
    }
  }
  if (!ok) {
    teardown_plan<R>(pl);
    delete pl;
    return nullptr;
  }
  return pl;
}

template <class R> void destroy(C2CPlan<R> *pl) {
  if (!pl) return;
  teardown_plan<R>(pl);
  delete pl;
}
template <class R> void destroy(R2CPlan<R> *pl) {
  if (!pl) return;
  teardown_plan<R>(pl);
  delete pl;
}

template <class R> static PlanInfo info_of(const PlanBase<R> *pl) {
  PlanInfo in{};
  if (!pl) return in;
  in.n = pl->n;
  in.largest_prime = largest_prime_factor(pl->n);
  in.bluestein = pl->root->kind == Node<R>::kBluestein;
  in.four_step = pl->root->kind == Node<R>::kFourStep;
  in.small = pl->root->kind == Node<R>::kStockham && pl->root->nst <= 1;
  in.bytes = pl->bytes;
  return in;
}
template <class R> PlanInfo info(const C2CPlan<R> *pl) { return info_of<R>(pl); }
template <class R> PlanInfo info(const R2CPlan<R> *pl) { return info_of<R>(pl); }

#define NXL_DFT_INSTANTIATE_PLAN(R)                                                   \
  template long node_work<R>(const Node<R> *, long, int);                            \
  template C2CPlan<R> *c2c_create<R>(long, long, int, int);                           \
  template R2CPlan<R> *r2c_create<R>(long, long, int, int);                           \
  template void destroy<R>(C2CPlan<R> *);                                             \
  template void destroy<R>(R2CPlan<R> *);                                             \
  template PlanInfo info<R>(const C2CPlan<R> *);                                      \
  template PlanInfo info<R>(const R2CPlan<R> *);
NXL_DFT_INSTANTIATE_PLAN(float)
NXL_DFT_INSTANTIATE_PLAN(double)

}  // namespace nxl::dft
