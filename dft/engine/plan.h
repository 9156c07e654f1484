// Internal structure of the transform engine's plans.
//
// A plan is a tree of nodes over split complex data:
//   Stockham  - mixed-radix autosort passes (radices with unrolled kernels and
//               a generic odd-radix pass),
//   Bluestein - the length-n transform as a chirp-modulated cyclic
//               convolution of smooth length M >= 2n-1 carried by a sub-node,
//   FourStep  - n = n1*n2: n2 column transforms of length n1 in blocks,
//               twiddles, n1 row transforms of length n2 in blocks.
// Every node computes forward transforms of s0 interleaved sequences in the
// "[j][q]" layout (element j of sequence q at j*s0 + q); backward transforms
// exchange real and imaginary parts around a forward one.
#ifndef NXL_DFT_PLAN_H
#define NXL_DFT_PLAN_H

#include <atomic>
#include <cstddef>

#include "dft/engine/engine.h"
#include "dft/engine/kernel_table.h"

namespace nxl::dft {

struct Stage {
  int r;        // radix
  int slot;     // kernel slot, or -1 for the generic odd-radix pass
  long m;       // butterflies per sub-transform (L = r*m)
  long tw;      // offset of the [p][k-1] twiddles in the node's arena
  long tw1;     // offset of the [k-1][p] twiddles (first stage only), else -1
  long roots;   // offset of the r roots of unity (generic pass), else -1
  bool vec;     // first pass through the hand-vectorised kernel
};

template <class R> struct Node {
  enum Kind { kStockham, kBluestein, kFourStep } kind = kStockham;
  long n = 1;
  // Stockham
  int nst = 0;
  Stage st[64];
  // In-register kernel for the whole transform (n = 2^small_e), used when
  // one sequence (s0 == 1) is transformed: its twiddles at small_tw, layout
  // [k-1][p] for k < w, p < n/w (w = the kernel table's small_w); -1: none.
  int small_e = -1;
  long small_tw = -1;
  // Twiddles, chirps and convolution kernel: split arrays in one arena.
  R *ar = nullptr;  // real parts
  R *ai = nullptr;  // imaginary parts
  long arena = 0;   // complex values held
  // Bluestein: chirp c_j = exp(-i pi j^2 / n) at offset 0, kernel at offset n.
  long M = 0;
  // FourStep: n = n1 * n2, twiddles w_n^(j2 k1) at offset 0 in [j2][k1]
  // layout; the intermediate array holds n2 rows of n1 values, row length
  // n1p (padded so that a column of it does not fall into one cache set).
  long n1 = 0, n2 = 0, n1p = 0, fs_block = 0;
  Node *sub = nullptr;   // Bluestein: length M; FourStep: length n1
  Node *sub2 = nullptr;  // FourStep: length n2
};

// Work areas are counted in complex values; each is split into a real and an
// imaginary half, every half padded to a multiple of 16 reals.
constexpr long pad16(long c) { return (c + 15) & ~15L; }

template <class R> struct PlanBase {
  long n = 0;
  long howmany = 1;
  int threads = 1;
  int users = 1;
  long block = 1;            // batch width of the block mode (1 = per transform)
  long cblock = 1;           // batch width for column-like batches (1 = none)
  long per_thread = 0;       // reals of work per thread
  long shared = 0;           // reals of work shared by the threads of one call
  R *work = nullptr;         // users * (shared + threads * per_thread) reals
  std::atomic<int> *busy = nullptr;
  const KernelTable<R> *k = nullptr;
  Node<R> *root = nullptr;   // c2c: length n; r2c: length n/2 (even n) or n (odd n)
  R *ur = nullptr, *ui = nullptr;  // r2c even n: exp(-2 pi i k / n), k = 0..n/2
  std::size_t bytes = 0;
};

template <class R> struct C2CPlan : PlanBase<R> {};
template <class R> struct R2CPlan : PlanBase<R> {};

// Test hooks: force the kernel build (0..7 as nxl::cp_kernel_index(), -1 to
// follow the processor) for plans created afterwards.
void set_kernel_override(int index);

}  // namespace nxl::dft

#endif  // NXL_DFT_PLAN_H
