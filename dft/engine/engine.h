// The transform engine: one-dimensional complex and real discrete Fourier
// transforms of any length n >= 1, batched and strided, in single and double
// precision.
//
//   forward  (sign = -1):  y[k] = scale * sum_j x[j] exp(-2 pi i j k / n)
//   backward (sign = +1):  y[k] = scale * sum_j x[j] exp(+2 pi i j k / n)
//
// A plan is made once for a length and a batch count: factorisation of n,
// every twiddle factor (computed in extended precision), the sub-plans of a
// Bluestein convolution, and the work buffers. Executing a plan allocates
// nothing and makes no system call. Plans are immutable after creation except
// for their work buffers, which are handed out one per concurrent caller (see
// `user_threads`), so one plan may be executed from several threads at once.
//
// Layout. Offsets are in REAL units (elements of R), not complex elements:
//   complex element j of transform b is at  re[b*dist + j*stride], im[b*dist + j*stride]
//   real element j of transform b is at     p[b*dist + j*stride]
// Interleaved complex data is  {re = base, im = base + 1, stride = 2*s, dist = 2*d};
// split data (separate real and imaginary arrays) gives two pointers. Strides
// and distances may be any value, negative included (the pointers then address
// element 0, the caller having applied its offsets). The engine detects the
// interleaved unit-stride case (im == re + 1, stride == 2) and the split
// unit-stride case (stride == 1) and reads/writes those directly; other
// layouts go through the plan's work buffers.
//
// In place: `in` and `out` may describe the same storage (in.re == out.re,
// same strides) or overlap in any way when the layouts are equal; the engine
// reads a whole transform before it writes any element of it. For r2c/c2r in
// place, the real and the complex view may share storage as the caller's
// storage format arranges (e.g. real x[j] at p[j], complex X[k] at p[2k],
// p[2k+1]); the engine reads all input of a transform before writing it.
// Different transforms of a batch must not overlap each other.
//
// Return value of the execute functions: 0 on success, otherwise a status
// (1: a memory problem, 3: an invalid argument such as a null plan).
#ifndef NXL_DFT_ENGINE_H
#define NXL_DFT_ENGINE_H

#include <cstddef>

#include "dft/engine/kernel_table.h"

namespace nxl::dft {

template <class R> struct CView {
  R *re;
  R *im;
  long stride;
  long dist;
};

template <class R> struct RView {
  R *p;
  long stride;
  long dist;
};

// Opaque plans (defined in dft/engine/plan.h).
template <class R> struct C2CPlan;
template <class R> struct R2CPlan;

// Complex n-point transforms, `howmany` of them per execute call.
//   threads:      largest number of OpenMP threads one execute call may use
//                 (1 = never starts a parallel region; inside an active
//                 parallel region the engine runs on the calling thread only).
//   user_threads: how many callers may execute this plan at the same time
//                 (each gets its own work buffers; more callers wait).
// Returns nullptr when n < 1, howmany < 1 or memory runs out.
template <class R> C2CPlan<R> *c2c_create(long n, long howmany, int threads, int user_threads = 1);

// sign -1 forward, +1 backward. `howmany` < 0 uses the plan's batch count;
// a smaller or larger non-negative count may be given per call (the plan's
// count only steers the choice of batch vectorisation and threading).
template <class R>
int c2c_execute(const C2CPlan<R> *plan, int sign, CView<const R> in, CView<R> out, R scale,
                long howmany = -1);

// Real n-point forward transforms to the n/2+1 complex values X[0..n/2]
// (the rest follow from X[n-k] = conj(X[k])), and the backward transforms
// from those n/2+1 values to n real values. c2r ignores the imaginary parts
// of X[0] and, for even n, of X[n/2] (it treats the input as conjugate-even).
template <class R> R2CPlan<R> *r2c_create(long n, long howmany, int threads, int user_threads = 1);
template <class R>
int r2c_execute(const R2CPlan<R> *plan, RView<const R> in, CView<R> out, R scale, long howmany = -1);
template <class R>
int c2r_execute(const R2CPlan<R> *plan, CView<const R> in, RView<R> out, R scale, long howmany = -1);

template <class R> void destroy(C2CPlan<R> *plan);
template <class R> void destroy(R2CPlan<R> *plan);

// What a plan does, for backends that want to report "not applicable" or
// describe themselves.
struct PlanInfo {
  long n;                // transform length
  long largest_prime;    // largest prime factor of n (1 for n = 1)
  bool bluestein;        // a chirp-z convolution carries (part of) the transform
  bool four_step;        // the length is split into rows and columns (large n)
  bool small;            // n is handled by a single in-register pass
  std::size_t bytes;     // memory held by the plan (twiddles and buffers)
};
template <class R> PlanInfo info(const C2CPlan<R> *plan);
template <class R> PlanInfo info(const R2CPlan<R> *plan);

// The kernels behind a plan whose whole transform is one in-register kernel
// (complex: n = 2^e; real: even n with n/2 = 2^e), for callers that decide a
// layout once and then call the kernel straight, without the execute
// functions' layout checks. `kernel[io]` is null where the layout pair has no
// kernel. The kernels compute forward transforms; a backward complex one
// exchanges real and imaginary parts of input and output (interleaved data:
// the kIO22 kernel on the same pointers). Real plans: forward = kIO10 kernel
// from the real data (as h interleaved pairs) into split buffers of h + 1
// values, then `post`; backward = `pre` into split buffers of h values, then
// the kIO02 kernel with the buffer's parts exchanged (see r2c/c2r_execute).
template <class R> struct SmallDirect {
  typename KernelTable<R>::Small kernel[kNumSmallIO];
  const R *twr, *twi;
  // Real plans only.
  decltype(KernelTable<R>::r2c_post) post;
  decltype(KernelTable<R>::c2r_pre) pre;
  const R *ur, *ui;
  long h;
};
template <class R> bool small_direct(const C2CPlan<R> *plan, SmallDirect<R> *out);
template <class R> bool small_direct(const R2CPlan<R> *plan, SmallDirect<R> *out);

// Largest prime factor of n >= 1 (1 for n = 1).
long largest_prime_factor(long n);

}  // namespace nxl::dft

#endif  // NXL_DFT_ENGINE_H
