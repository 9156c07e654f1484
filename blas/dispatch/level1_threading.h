// Threading of the level-1 dispatch layer: the choice of the team size, the
// chunk of each team member, the partial-result array and the fixed order in
// which partial sums are combined.
#ifndef NXL_BLAS_DISPATCH_LEVEL1_THREADING_H
#define NXL_BLAS_DISPATCH_LEVEL1_THREADING_H

#include <omp.h>
#include <complex>
#include "blas/level1.h"
#include "service/nxl_serv.h"
#include "service/scalar.h"

namespace nxl {
namespace l1 {

// Team size for n elements with threshold t (a power of two): at least t/2
// elements per thread, no more than the BLAS domain allows; 1 below t or
// when the increments forbid a split.
inline int team_size(idx n, idx t, bool splittable) {
  if (n < t || !splittable) return 1;
  int maximum = nxl_serv_domain_get_max_threads(1);
  if (maximum <= 1) return 1;
  const idx half = t / 2;
  const int shift = __builtin_ctzll(static_cast<unsigned long long>(half));
  const idx want = (n + half - 1) >> shift;
  return want < maximum ? static_cast<int>(want) : maximum;
}

// Chunk of member t in a team of p over n logical elements.
struct Chunk {
  idx start, size;
};
inline Chunk chunk(idx n, int t, int p) {
  const idx q = n / p, c = q > 0 ? q : 1;
  idx r = n - static_cast<idx>(p) * c;
  if (r < 0) r = 0;
  Chunk k = t < r ? Chunk{t * (c + 1), c + 1} : Chunk{t * c + r, c};
  if (k.start >= n) return {0, 0};
  if (k.start + k.size > n) k.size = n - k.start;
  return k;
}

// Offset of a chunk's base within a vector of n elements with increment inc:
// with a negative increment the chunk holds the same logical elements as with
// a positive one (logical element i at (n-1-i)*|inc|).
inline idx offset(idx n, Chunk k, idx inc) {
  return inc >= 0 ? k.start * inc : inc * (k.start - n + k.size);
}

// Runs body(t, p) on a team of `threads` (or on the calling thread when it is
// 1) and returns the team size the runtime gave.
template <class Body> int run(int threads, Body body) {
  if (threads <= 1) {
    body(0, 1);
    return 1;
  }
  int actual = 1;
#pragma omp parallel num_threads(threads)
  {
    const int p = omp_get_num_threads();
    const int t = omp_get_thread_num();
    if (t == 0) actual = p;
    body(t, p);
  }
  if (nxl_blas_l1_team_hook) nxl_blas_l1_team_hook(threads, actual);
  return actual;
}

// Update without a result: each member works on its own chunk.
template <class Member> void update(idx n, idx t, bool splittable, Member member) {
  const int threads = team_size(n, t, splittable);
  run(threads, [&](int m, int p) {
    Chunk k = chunk(n, m, p);
    if (k.size > 0) member(k);
  });
}

// Reduction: member(chunk) gives the partial result of a chunk, combine(parts,
// p) the result from the p partials in index order. Up to 512 partials live on
// the stack; above, they come from the memory manager, and when that fails the
// whole vector is reduced on the calling thread.
template <class P, class Member, class Combine>
P reduce(idx n, idx t, bool splittable, Member member, Combine combine) {
  const int threads = team_size(n, t, splittable);
  if (threads <= 1) return member(Chunk{0, n});
  P local[512];
  P *parts = local;
  if (threads > 512) {
    parts = static_cast<P *>(nxl_serv_allocate(sizeof(P) * static_cast<size_t>(threads), 128));
    if (nxl_serv_check_ptr_and_warn(parts, "nxl_blas_level1")) return member(Chunk{0, n});
  }
  const int p = run(threads, [&](int m, int q) {
    Chunk k = chunk(n, m, q);
    parts[m] = k.size > 0 ? member(k) : P(0);
  });
  P result = combine(parts, p);
  if (parts != local) nxl_serv_deallocate(parts);
  return result;
}

// The fixed combination order of partial sums: left to right for up to eight
// partials; otherwise four two-lane accumulators over blocks of eight after
// the first, folded as (A + B) + (C + D), the two lanes added, then the
// partials after the last full block one at a time.
template <class P> P sum_fixed(const P *s, int p) {
  if (p == 1) return s[0];
  if (p - 1 < 8) {
    P r = s[0];
    for (int i = 1; i < p; ++i) r = r + s[i];
    return r;
  }
  P a0 = s[0], a1 = P(0), b0 = P(0), b1 = P(0), c0 = P(0), c1 = P(0), d0 = P(0), d1 = P(0);
  int i = 1;
  for (; i + 8 <= p; i += 8) {
    a0 = a0 + s[i], a1 = a1 + s[i + 1];
    b0 = b0 + s[i + 2], b1 = b1 + s[i + 3];
    c0 = c0 + s[i + 4], c1 = c1 + s[i + 5];
    d0 = d0 + s[i + 6], d1 = d1 + s[i + 7];
  }
  a0 = (a0 + b0) + (c0 + d0);
  a1 = (a1 + b1) + (c1 + d1);
  P r = a0 + a1;
  for (; i < p; ++i) r = r + s[i];
  return r;
}

}  // namespace l1
}  // namespace nxl

#endif
