// The table of transform kernels one code path provides.
//
// All kernels work on SPLIT complex data (separate real and imaginary
// arrays), except where a layout mode says otherwise; `bmul` has "io"
// variants selecting the element step of its input and output: bit 0 set =
// the input has step 2 (interleaved re/im pairs), bit 1 set = the same for the
// output. All kernels compute FORWARD transforms; the engine
// obtains backward ones by exchanging the real and imaginary pointers of both
// input and output (conj(DFT(conj x)) = swap(DFT(swap x))).
//
// Stockham autosort pass of radix r on a sequence in "[j][q]" layout: the
// current sub-transforms have length L = r*m and are interleaved with stride s
// (s counts the transforms already split off times the batch width s0):
//   a_j      = x[q + s*(p + j*m)]                       j < r, p < m, q < s
//   y[q + s*(r*p + k)] = w^(p*k) * sum_j a_j exp(-2 pi i j k / r),  w = exp(-2 pi i / L)
// The twiddles of a pass are w^(p*k) for k = 1..r-1: layout [p][k-1] for the
// q-innermost kernels (`pass`) and [k-1][p] for the p-innermost kernels
// (`pass1`, used when s == 1).
#ifndef NXL_DFT_KERNEL_TABLE_H
#define NXL_DFT_KERNEL_TABLE_H

namespace nxl::dft {

// Radices with an unrolled butterfly, in kernel-table order.
enum RadixSlot { kR2, kR3, kR4, kR5, kR7, kR8, kR11, kR13, kR16, kR9, kNumRadix };
inline constexpr int kRadixOf[kNumRadix] = {2, 3, 4, 5, 7, 8, 11, 13, 16, 9};

// Whole transforms of n = 2^e points held in registers, e <= kSmallMaxLog.
inline constexpr int kSmallMaxLog = 10;
// Input/output layout pairs of the in-register transforms ([in][out] mode,
// modes as the passes' below): split to split, interleaved to interleaved
// in either order, interleaved to split (the real forward transform's
// half-length input) and split to exchanged interleaved (the real backward
// transform's output).
enum SmallIO { kIO00, kIO11, kIO22, kIO10, kIO02, kNumSmallIO };

template <class R> struct KernelTable {
  // A pass computes the part [lo, hi) of its m*s butterflies, numbered
  // p*s + q (so that threads can share a pass); lo and hi are multiples of
  // 64 or m*s.
  using Pass = void (*)(long m, long s, long lo, long hi, const R *twr, const R *twi, const R *xr,
                        const R *xi, R *yr, R *yi);
  // Generic odd radix r: roots exp(-2 pi i e / r), e < r, in rr/ri.
  using GenPass = void (*)(long r, long m, long s, long lo, long hi, const R *twr, const R *twi,
                           const R *rr, const R *ri, const R *xr, const R *xi, R *yr, R *yi);
  // Layout modes of the first pass's input and the last pass's output:
  // 0 split arrays, 1 interleaved pairs at xr[2e], xr[2e+1] (xi unused),
  // 2 interleaved pairs stored (im, re).
  Pass pass[kNumRadix][3];   // any s; [output mode]
  Pass pass4[kNumRadix][3];  // s == 4; [output mode]
  Pass pass8[kNumRadix][3];  // s == 8; [output mode]
  Pass pass1[kNumRadix][3];  // s == 1; [input mode]
  Pass passqv[kNumRadix][3]; // s % lanes == 0, hand-vectorised; [output mode]
  Pass passqh[kNumRadix][3]; // s % (lanes/2) == 0, the same with half vectors
  GenPass gen;
  // In-register transforms: `hm` transforms of n = 2^e points, transform t
  // read from element 0 at xr/xi + t*xd and written at yr/yi + t*yd (reals;
  // interleaved modes use xr/yr as the base of the pairs). The n points are
  // taken as an (n/w) x w matrix: w-point butterflies across vectors, the
  // twiddles w_n^(p k) in [k-1][p] layout (k < w, p < n/w), w x w transposes
  // in registers, then n/w-point butterflies across vectors. Input may be the
  // output (all of a transform is read before any of it is written). Every
  // value is multiplied by `scale`. small[e][io] is null where there is no
  // such kernel; small_w[e] gives w (0: none).
  using Small = void (*)(long hm, const R *xr, const R *xi, long xd, R *yr, R *yi, long yd, const R *twr,
                         const R *twi, R scale);
  Small small[kSmallMaxLog + 1][kNumSmallIO];
  int small_w[kSmallMaxLog + 1];
  // First pass (s == 1) of radix `lanes` (the vector length: 2, 4, 8 or 16),
  // vectorised with in-register transposes; needs m % lanes == 0. [input mode]
  int lanes;
  Pass passv[3];

  // y[(j*s0 + q)*YS] = w_j * x[(j*s0 + q)*XS] for j < n, q < s0 (io variant as above;
  // x == y allowed when the steps are equal).
  void (*bmul[4])(long n, long s0, const R *wr, const R *wi, const R *xr, const R *xi, R *yr, R *yi);

  // Gather b transforms of n points from a strided view into split [j][q]
  // layout with row length ld: y[j*ld + q] = x[q*dist + j*stride].
  void (*gather)(long n, long b, long ld, const R *re, const R *im, long stride, long dist, R *yr,
                 R *yi);
  // The reverse, scaled: x[q*dist + k*stride] = scale * y[k*ld + q]; when wr is
  // not null every value is first multiplied by (wr, wi)[k*wld + q].
  void (*scatter)(long n, long b, long ld, const R *yr, const R *yi, R *re, R *im, long stride,
                  long dist, R scale, const R *wr, const R *wi, long wld);

  // Transposing scatter with twiddles (split arrays):
  // w[q*wld + k] = y[k*ld + q] * t[q*tld + k] for k < n, q < b.
  void (*tscatter)(long n, long b, long ld, const R *yr, const R *yi, R *wr, R *wi, long wld, const R *tr,
                   const R *ti, long tld);

  // Real forward untangle. Z (h values per transform, [k][q] layout, row
  // length s0) is the h-point transform of z_j = x_2j + i x_2j+1; writes
  // X_k, k = 0..h, of each of the s0 transforms to re/im[q*dist + k*stride],
  // scaled. ur/ui: exp(-2 pi i k / 2h), k = 0..h. For s0 == 1, zr/zi have
  // room for h+1 values: the kernel may copy Z_0 to index h.
  void (*r2c_post)(long h, long s0, R *zr, R *zi, const R *ur, const R *ui, R *re, R *im,
                   long stride, long dist, R scale);
  // The same for s0 == 1 in place on interleaved values: Z_k at z[2k],
  // z[2k+1] for k < h become X_k, k <= h (z holds h + 1 pairs); h >= 2.
  void (*r2c_post_ip)(long h, R *z, const R *ur, const R *ui, R scale);
  // Real backward pre-pass: from X_k, k = 0..h, at re/im[q*dist + k*stride],
  // forms Z_k = (X_k + conj X_{h-k}) + i conj(u_k) (X_k - conj X_{h-k}),
  // k < h, in [k][q] layout (row length s0). The imaginary parts of X_0 and
  // X_h are ignored.
  void (*c2r_pre)(long h, long s0, const R *re, const R *im, long stride, long dist, const R *ur,
                  const R *ui, R *zr, R *zi);
  // x[i] *= scale on a strided set: b sequences of n values.
  void (*scale)(long n, long b, R *p, long stride, long dist, R scale);
};

}  // namespace nxl::dft

#endif  // NXL_DFT_KERNEL_TABLE_H
