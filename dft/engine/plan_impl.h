// Functions shared by the plan-creation and execution sources of the engine.
#ifndef NXL_DFT_PLAN_IMPL_H
#define NXL_DFT_PLAN_IMPL_H

#include "dft/engine/plan.h"

namespace nxl::dft {

// A split complex sequence set: element e at r[e*step], i[e*step] (step 1 or 2).
template <class R> struct SBuf {
  R *r;
  R *i;
  int step;
};

// The in-register kernel of a node for input and output layout modes (0
// split, 1 interleaved, 2 interleaved exchanged), or null.
template <class R> inline typename KernelTable<R>::Small small_kernel(const Node<R> *nd, const KernelTable<R> *k,
                                                                       int im, int om) {
  if (nd->small_e < 0) return nullptr;
  const int io = im == om ? (im == 0 ? kIO00 : im == 1 ? kIO11 : kIO22)
                 : im == 1 && om == 0 ? kIO10
                 : im == 0 && om == 2 ? kIO02
                                      : -1;
  return io < 0 ? nullptr : k->small[nd->small_e][io];
}

// Reals of work a node needs for s0 interleaved sequences with `threads` threads.
template <class R> long node_work(const Node<R> *nd, long s0, int threads);

// Forward transforms of s0 sequences in [j][q] layout from x to y (x and y may
// be the same storage when both have step 1). `work` holds node_work() reals.
template <class R>
void exec_node(const Node<R> *nd, const KernelTable<R> *k, long s0, SBuf<const R> x, SBuf<R> y, R *work,
               int threads);

}  // namespace nxl::dft

#endif  // NXL_DFT_PLAN_IMPL_H
