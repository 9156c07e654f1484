// The backends and their lists per code path and type.
//
// A backend is a constant record: its commit routine, its private data (what
// kind of transform it serves and for which precision) and its name. The
// commit routine judges the normalised working layout; when the backend does
// not apply it answers kNotApplicable, otherwise it builds its plan on the
// engine. Every list ends with backends that accept any valid configuration
// of its type (`default` for multi-dimensional lists, `bluestein` for 1-D).
#include "dft/backends/exec.h"
#include "dft/engine/engine.h"

namespace nxl::dft {

namespace {

enum Kind {
  // complex
  kCr2crBatched, kCr2cr1d, kSmall, kDefault1d, kBluestein, kRowBatch, kColBatch, kGene96, kCpmd168,
  kBigBatch, kLarge, kMg, kSquare1d, kTiny3d, kTiny2d, kMain2d, kRectang2d, kSquare2d, k3d, k4d, kCr2crMd,
  kMdDefault,
  // real
  kR1dMg, kR1dSmall, kR1dEven, kR1dDnnSmall, kR1dDefault, kR1dBluestein, kR2dTiny, kR3dTiny, kR3d, kR2d,
  kR2dDnnSmall, kRMdDefault
};

struct BackendTraits {
  Kind kind;
  int precision;   // 0: either
};

// Largest prime factor that the mixed-radix plans of `default` take; longer
// prime factors go to the Bluestein backend.
constexpr long kMaxRadix = 127;

bool unit_first(const Layout &L) { return L.is[0] == 1 && L.os[0] == 1; }
bool cce(const DFTI_DESCRIPTOR *d) { return d->cestorage == DFTI_COMPLEX_COMPLEX || d->packed == DFTI_CCE_FORMAT; }

int backend_commit(const BackendRecord *self, DFTI_DESCRIPTOR *d) {
  const BackendTraits &s = *static_cast<const BackendTraits *>(self->priv);
  if (s.precision && s.precision != d->precision) return kNotApplicable;
  const Layout L = working_layout(d);
  const bool cplx = d->domain == DFTI_COMPLEX;
  const bool split = is_split(d);
  const long n0 = L.n[0];
  const nxl_int total = total_length(L);
  const int T = d->nthreads;
  ExecOptions o;
  bool ok = false;
  switch (s.kind) {
    // ---- complex, one dimension after normalisation ----
    case kCr2crBatched: ok = cplx && split && L.rank == 1 && L.howmany > 1; break;
    case kCr2cr1d: ok = cplx && split && L.rank == 1; break;
    case kSmall: ok = cplx && !split && L.rank == 1 && n0 <= 64; break;
    case kDefault1d: ok = cplx && L.rank == 1 && largest_prime_factor(n0) <= kMaxRadix; break;
    case kBluestein: ok = cplx && L.rank == 1; break;
    case kRowBatch:
      ok = cplx && !split && L.rank == 1 && L.howmany > 1 && unit_first(L) && n0 <= 1024;
      break;
    case kColBatch:
      ok = cplx && !split && L.rank == 1 && L.howmany > 1 && L.idist == 1 && L.odist == 1;
      o.batch_as_vector = true;
      break;
    case kGene96: ok = cplx && !split && L.rank == 1 && n0 == 96; break;
    case kCpmd168: ok = cplx && !split && L.rank == 1 && n0 == 168; break;
    case kBigBatch: ok = cplx && !split && L.rank == 1 && L.howmany >= 256 && n0 <= 4096; break;
    case kLarge:
      ok = cplx && !split && L.rank == 1 && n0 >= (1L << 15) && L.howmany < 2L * T;
      o.split_loops = false;   // the engine threads the long transform
      break;
    case kMg:
      ok = cplx && !split && L.rank == 1 && L.howmany >= 2 && n0 >= 128 && n0 <= (1L << 14) && unit_first(L);
      break;
    case kSquare1d: {
      long m = 1;
      while ((m + 1) * (m + 1) <= n0) ++m;
      ok = cplx && !split && L.rank == 1 && m >= 32 && m * m == n0;
      o.split_loops = false;
      break;
    }
    // ---- complex, several dimensions ----
    case kTiny3d: ok = cplx && !split && L.rank == 3 && total <= 4096; break;
    case kTiny2d: ok = cplx && !split && L.rank == 2 && total <= 1024; break;
    case kMain2d: ok = cplx && !split && L.rank == 2 && unit_first(L); break;
    case kRectang2d: ok = cplx && !split && L.rank == 2 && L.n[0] != L.n[1]; break;
    case kSquare2d: ok = cplx && !split && L.rank == 2 && L.n[0] == L.n[1]; break;
    case k3d: ok = cplx && !split && L.rank == 3 && unit_first(L); break;
    case k4d: ok = cplx && !split && L.rank == 4 && unit_first(L); break;
    case kCr2crMd: ok = cplx && split && L.rank >= 2; break;
    case kMdDefault: ok = cplx; break;
    // ---- real ----
    case kR1dMg: ok = !cplx && L.rank == 1 && L.howmany >= 2 && n0 % 2 == 0 && cce(d) && unit_first(L); break;
    case kR1dSmall: ok = !cplx && L.rank == 1 && n0 <= 64; break;
    case kR1dEven: ok = !cplx && L.rank == 1 && n0 % 2 == 0 && largest_prime_factor(n0) <= kMaxRadix; break;
    case kR1dDnnSmall: ok = !cplx && L.rank == 1 && n0 <= 512 && L.howmany >= 16; break;
    case kR1dDefault: ok = !cplx && L.rank == 1 && largest_prime_factor(n0) <= kMaxRadix; break;
    case kR1dBluestein: ok = !cplx && L.rank == 1; break;
    case kR2dTiny: ok = !cplx && L.rank == 2 && cce(d) && total <= 1024; break;
    case kR3dTiny: ok = !cplx && L.rank == 3 && cce(d) && total <= 4096; break;
    case kR3d: ok = !cplx && L.rank == 3 && cce(d); break;
    case kR2d: ok = !cplx && L.rank == 2 && cce(d); break;
    case kR2dDnnSmall: ok = !cplx && L.rank == 2 && cce(d) && total <= 4096 && L.howmany >= 8; break;
    case kRMdDefault: ok = !cplx && (L.rank <= 2 || cce(d)); break;
  }
  if (!ok) return kNotApplicable;
  return cplx ? commit_complex(d, self, L, o) : commit_real(d, self, L, o);
}

#define NXL_BACKEND_TRAITS(name, kind, prec) constexpr BackendTraits name = {kind, prec};
NXL_BACKEND_TRAITS(sp_cr2cr_batched, kCr2crBatched, 0)
NXL_BACKEND_TRAITS(sp_cr2cr_md, kCr2crMd, 0)
#define NXL_BACKEND_TRAITS_P(base, kind)                 \
  NXL_BACKEND_TRAITS(base##_s, kind, DFTI_SINGLE)        \
  NXL_BACKEND_TRAITS(base##_d, kind, DFTI_DOUBLE)
NXL_BACKEND_TRAITS_P(sp_cr2cr_1d, kCr2cr1d)
NXL_BACKEND_TRAITS_P(sp_small, kSmall)
NXL_BACKEND_TRAITS_P(sp_default_1d, kDefault1d)
NXL_BACKEND_TRAITS_P(sp_bluestein, kBluestein)
NXL_BACKEND_TRAITS_P(sp_rowbatch, kRowBatch)
NXL_BACKEND_TRAITS_P(sp_colbatch, kColBatch)
NXL_BACKEND_TRAITS(sp_gene_c96, kGene96, DFTI_SINGLE)
NXL_BACKEND_TRAITS(sp_gene_z96, kGene96, DFTI_DOUBLE)
NXL_BACKEND_TRAITS(sp_cpmd_c168, kCpmd168, DFTI_SINGLE)
NXL_BACKEND_TRAITS(sp_cpmd_z168, kCpmd168, DFTI_DOUBLE)
NXL_BACKEND_TRAITS_P(sp_bigbatch, kBigBatch)
NXL_BACKEND_TRAITS_P(sp_large, kLarge)
NXL_BACKEND_TRAITS_P(sp_mg, kMg)
NXL_BACKEND_TRAITS_P(sp_square_1d, kSquare1d)
NXL_BACKEND_TRAITS_P(sp_tiny3d, kTiny3d)
NXL_BACKEND_TRAITS_P(sp_tiny2d, kTiny2d)
NXL_BACKEND_TRAITS_P(sp_main2d, kMain2d)
NXL_BACKEND_TRAITS(sp_rectang2d_s, kRectang2d, DFTI_SINGLE)
NXL_BACKEND_TRAITS_P(sp_square2d, kSquare2d)
NXL_BACKEND_TRAITS_P(sp_3d, k3d)
NXL_BACKEND_TRAITS_P(sp_4d, k4d)
NXL_BACKEND_TRAITS_P(sp_md_default, kMdDefault)
NXL_BACKEND_TRAITS_P(sp_r1d_mg, kR1dMg)
NXL_BACKEND_TRAITS_P(sp_r1d_small, kR1dSmall)
NXL_BACKEND_TRAITS_P(sp_r1d_even, kR1dEven)
NXL_BACKEND_TRAITS_P(sp_r1d_dnnsmall, kR1dDnnSmall)
NXL_BACKEND_TRAITS_P(sp_r1d_default, kR1dDefault)
NXL_BACKEND_TRAITS_P(sp_r1d_bluestein, kR1dBluestein)
NXL_BACKEND_TRAITS_P(sp_r2d_tiny, kR2dTiny)
NXL_BACKEND_TRAITS_P(sp_r3d_tiny, kR3dTiny)
NXL_BACKEND_TRAITS_P(sp_r3d, kR3d)
NXL_BACKEND_TRAITS_P(sp_r2d, kR2d)
NXL_BACKEND_TRAITS_P(sp_r2d_dnnsmall, kR2dDnnSmall)
NXL_BACKEND_TRAITS_P(sp_rmd_default, kRMdDefault)

}  // namespace

}  // namespace nxl::dft

using nxl::dft::BackendRecord;

// ---- Backend records ---------------------------------------------------------
#define NXL_BKD(sym, traits) \
  extern "C" const BackendRecord sym = {nxl::dft::backend_commit, &nxl::dft::traits, #sym};

// Shared by every code path.
NXL_BKD(nxl_dft_bkd_cr2cr_1d_batched, sp_cr2cr_batched)
NXL_BKD(nxl_dft_bkd_cr2cr_md, sp_cr2cr_md)
NXL_BKD(nxl_dft_bkd_c2c_1d_default_s, sp_default_1d_s)
NXL_BKD(nxl_dft_bkd_c2c_1d_default_d, sp_default_1d_d)
NXL_BKD(nxl_dft_bkd_c2c_md_default_s, sp_md_default_s)
NXL_BKD(nxl_dft_bkd_c2c_md_default_d, sp_md_default_d)
NXL_BKD(nxl_dft_bkd_r2c_1d_default_s, sp_r1d_default_s)
NXL_BKD(nxl_dft_bkd_r2c_1d_default_d, sp_r1d_default_d)
NXL_BKD(nxl_dft_bkd_r2c_md_default_s, sp_rmd_default_s)
NXL_BKD(nxl_dft_bkd_r2c_md_default_d, sp_rmd_default_d)

// One set per code path and precision.
#define NXL_BKD_CP_P(cp, p)                                          \
  NXL_BKD(nxl_dft_##cp##_bkd_cr2cr_1d_##p, sp_cr2cr_1d_##p)          \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_1d_small_##p, sp_small_##p)         \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_1d_bluestein_##p, sp_bluestein_##p) \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_3d_##p, sp_3d_##p)                  \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_4d_##p, sp_4d_##p)                  \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_1d_small_##p, sp_r1d_small_##p)     \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_1d_even_##p, sp_r1d_even_##p)       \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_1d_bluestein_##p, sp_r1d_bluestein_##p) \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_3d_##p, sp_r3d_##p)                 \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_2d_##p, sp_r2d_##p)
#define NXL_BKD_CP(cp) NXL_BKD_CP_P(cp, s) NXL_BKD_CP_P(cp, d)
NXL_BKD_CP(def)
NXL_BKD_CP(mc)
NXL_BKD_CP(mc3)
NXL_BKD_CP(avx)
NXL_BKD_CP(avx2)
NXL_BKD_CP(avx512_mic)
NXL_BKD_CP(avx512)

// Multi-dimensional tiny and 2-D main backends (mc and above).
#define NXL_BKD_TINY_P(cp, p)                                          \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_3d_tiny_##p, sp_tiny3d_##p)           \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_2d_tiny_##p, sp_tiny2d_##p)           \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_2d_tiny_##p, sp_r2d_tiny_##p)         \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_3d_tiny_##p, sp_r3d_tiny_##p)
#define NXL_BKD_TINY(cp) NXL_BKD_TINY_P(cp, s) NXL_BKD_TINY_P(cp, d)
NXL_BKD_TINY(mc)
NXL_BKD_TINY(mc3)
NXL_BKD_TINY(avx)
NXL_BKD_TINY(avx2)
NXL_BKD_TINY(avx512_mic)
NXL_BKD_TINY(avx512)

#define NXL_BKD_AVX_P(cp, p)                                             \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_1d_colbatch_##p, sp_colbatch_##p)       \
  NXL_BKD(nxl_dft_##cp##_bkd_c2c_2d_main_##p, sp_main2d_##p)             \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_1d_dnnsmall_##p, sp_r1d_dnnsmall_##p)   \
  NXL_BKD(nxl_dft_##cp##_bkd_r2c_2d_dnnsmall_##p, sp_r2d_dnnsmall_##p)
#define NXL_BKD_AVX(cp) NXL_BKD_AVX_P(cp, s) NXL_BKD_AVX_P(cp, d)
NXL_BKD_AVX(avx)
NXL_BKD_AVX(avx2)
NXL_BKD_AVX(avx512_mic)
NXL_BKD_AVX(avx512)

NXL_BKD(nxl_dft_avx_bkd_gene_c96, sp_gene_c96)
NXL_BKD(nxl_dft_avx_bkd_gene_z96, sp_gene_z96)
NXL_BKD(nxl_dft_avx_bkd_cpmd_c168, sp_cpmd_c168)
NXL_BKD(nxl_dft_avx_bkd_cpmd_z168, sp_cpmd_z168)
NXL_BKD(nxl_dft_avx2_bkd_gene_c96, sp_gene_c96)
NXL_BKD(nxl_dft_avx2_bkd_gene_z96, sp_gene_z96)
NXL_BKD(nxl_dft_avx2_bkd_cpmd_c168, sp_cpmd_c168)
NXL_BKD(nxl_dft_avx2_bkd_cpmd_z168, sp_cpmd_z168)
NXL_BKD(nxl_dft_avx_bkd_c2c_2d_rectang_s, sp_rectang2d_s)
NXL_BKD(nxl_dft_avx2_bkd_c2c_2d_rectang_s, sp_rectang2d_s)
NXL_BKD(nxl_dft_avx2_bkd_c2c_1d_rowbatch_s, sp_rowbatch_s)
NXL_BKD(nxl_dft_avx2_bkd_c2c_1d_rowbatch_d, sp_rowbatch_d)
#define NXL_BKD_BIG(cp, p) NXL_BKD(nxl_dft_##cp##_bkd_c2c_1d_bigbatch_##p, sp_bigbatch_##p)
NXL_BKD_BIG(avx2, s) NXL_BKD_BIG(avx2, d)
NXL_BKD_BIG(avx512, s) NXL_BKD_BIG(avx512, d)
NXL_BKD_BIG(avx512_mic, s) NXL_BKD_BIG(avx512_mic, d)
NXL_BKD(nxl_dft_avx512_bkd_c2c_1d_large_s, sp_large_s)
NXL_BKD(nxl_dft_avx512_bkd_c2c_1d_large_d, sp_large_d)
NXL_BKD(nxl_dft_avx512_mic_bkd_c2c_1d_large_s, sp_large_s)
NXL_BKD(nxl_dft_avx512_mic_bkd_c2c_1d_large_d, sp_large_d)
NXL_BKD(nxl_dft_avx512_bkd_c2c_1d_mg_s, sp_mg_s)
NXL_BKD(nxl_dft_avx512_bkd_c2c_1d_mg_d, sp_mg_d)
NXL_BKD(nxl_dft_avx512_bkd_r2c_1d_mg_s, sp_r1d_mg_s)
NXL_BKD(nxl_dft_avx512_bkd_r2c_1d_mg_d, sp_r1d_mg_d)
NXL_BKD(nxl_dft_avx512_mic_bkd_c2c_1d_square_s, sp_square_1d_s)
NXL_BKD(nxl_dft_avx512_mic_bkd_c2c_1d_square_d, sp_square_1d_d)
NXL_BKD(nxl_dft_avx512_mic_bkd_c2c_2d_square_s, sp_square2d_s)
NXL_BKD(nxl_dft_avx512_mic_bkd_c2c_2d_square_d, sp_square2d_d)

// ---- Lists --------------------------------------------------------------------
#define B(x) &x
#define COMMA ,
#define LIST(name, ...) static const BackendRecord *const name[] = {__VA_ARGS__, nullptr};

// def
#define DEF_LISTS(cp, p)                                                                                      \
  LIST(cp##_c1d_##p, B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_##cp##_bkd_cr2cr_1d_##p),                         \
       B(nxl_dft_##cp##_bkd_c2c_1d_small_##p), B(nxl_dft_bkd_c2c_1d_default_##p),                                 \
       B(nxl_dft_##cp##_bkd_c2c_1d_bluestein_##p))                                                                \
  LIST(cp##_r1d_##p, B(nxl_dft_##cp##_bkd_r2c_1d_small_##p), B(nxl_dft_##cp##_bkd_r2c_1d_even_##p),               \
       B(nxl_dft_bkd_r2c_1d_default_##p), B(nxl_dft_##cp##_bkd_r2c_1d_bluestein_##p))
DEF_LISTS(def, s)
DEF_LISTS(def, d)
DEF_LISTS(mc, s)
DEF_LISTS(mc, d)
DEF_LISTS(mc3, s)
DEF_LISTS(mc3, d)
LIST(def_cmd_s, B(nxl_dft_def_bkd_c2c_3d_s), B(nxl_dft_def_bkd_c2c_4d_s), B(nxl_dft_bkd_cr2cr_md),
     B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_def_bkd_cr2cr_1d_s), B(nxl_dft_bkd_c2c_md_default_s))
LIST(def_cmd_d, B(nxl_dft_def_bkd_c2c_3d_d), B(nxl_dft_def_bkd_c2c_4d_d), B(nxl_dft_bkd_cr2cr_md),
     B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_def_bkd_cr2cr_1d_d), B(nxl_dft_bkd_c2c_md_default_d))
LIST(def_rmd_s, B(nxl_dft_def_bkd_r2c_3d_s), B(nxl_dft_def_bkd_r2c_2d_s), B(nxl_dft_bkd_r2c_md_default_s))
LIST(def_rmd_d, B(nxl_dft_def_bkd_r2c_3d_d), B(nxl_dft_def_bkd_r2c_2d_d), B(nxl_dft_bkd_r2c_md_default_d))

// mc, mc3: complex and real multi-dimensional lists.
#define MC_LISTS(cp)                                                                                              \
  LIST(cp##_cmd_s, B(nxl_dft_##cp##_bkd_c2c_3d_tiny_s), B(nxl_dft_##cp##_bkd_c2c_2d_tiny_s),                      \
       B(nxl_dft_##cp##_bkd_c2c_3d_s), B(nxl_dft_##cp##_bkd_c2c_4d_s), B(nxl_dft_bkd_cr2cr_md),                   \
       B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_##cp##_bkd_cr2cr_1d_s), B(nxl_dft_bkd_c2c_md_default_s))        \
  LIST(cp##_cmd_d, B(nxl_dft_##cp##_bkd_c2c_3d_tiny_d), B(nxl_dft_##cp##_bkd_c2c_2d_tiny_d),                      \
       B(nxl_dft_##cp##_bkd_c2c_3d_d), B(nxl_dft_##cp##_bkd_c2c_4d_d), B(nxl_dft_bkd_cr2cr_md),                   \
       B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_##cp##_bkd_cr2cr_1d_d), B(nxl_dft_bkd_c2c_md_default_d))        \
  LIST(cp##_rmd_s, B(nxl_dft_##cp##_bkd_r2c_2d_tiny_s), B(nxl_dft_##cp##_bkd_r2c_3d_tiny_s),                      \
       B(nxl_dft_##cp##_bkd_r2c_3d_s), B(nxl_dft_##cp##_bkd_r2c_2d_s), B(nxl_dft_bkd_r2c_md_default_s))           \
  LIST(cp##_rmd_d, B(nxl_dft_##cp##_bkd_r2c_3d_tiny_d), B(nxl_dft_##cp##_bkd_r2c_2d_tiny_d),                      \
       B(nxl_dft_##cp##_bkd_r2c_3d_d), B(nxl_dft_##cp##_bkd_r2c_2d_d), B(nxl_dft_bkd_r2c_md_default_d))
MC_LISTS(mc)
MC_LISTS(mc3)

// avx and above: real lists.
#define AVX_REAL_LISTS(cp, MG_S, MG_D)                                                                            \
  LIST(cp##_r1d_s, MG_S B(nxl_dft_##cp##_bkd_r2c_1d_small_s), B(nxl_dft_##cp##_bkd_r2c_1d_even_s),                \
       B(nxl_dft_##cp##_bkd_r2c_1d_dnnsmall_s), B(nxl_dft_bkd_r2c_1d_default_s),                                  \
       B(nxl_dft_##cp##_bkd_r2c_1d_bluestein_s))                                                                  \
  LIST(cp##_r1d_d, MG_D B(nxl_dft_##cp##_bkd_r2c_1d_small_d), B(nxl_dft_##cp##_bkd_r2c_1d_even_d),                \
       B(nxl_dft_##cp##_bkd_r2c_1d_dnnsmall_d), B(nxl_dft_bkd_r2c_1d_default_d),                                  \
       B(nxl_dft_##cp##_bkd_r2c_1d_bluestein_d))                                                                  \
  LIST(cp##_rmd_s, B(nxl_dft_##cp##_bkd_r2c_2d_tiny_s), B(nxl_dft_##cp##_bkd_r2c_3d_tiny_s),                      \
       B(nxl_dft_##cp##_bkd_r2c_3d_s), B(nxl_dft_##cp##_bkd_r2c_2d_s), B(nxl_dft_##cp##_bkd_r2c_2d_dnnsmall_s),   \
       B(nxl_dft_bkd_r2c_md_default_s))                                                                           \
  LIST(cp##_rmd_d, B(nxl_dft_##cp##_bkd_r2c_3d_tiny_d), B(nxl_dft_##cp##_bkd_r2c_2d_tiny_d),                      \
       B(nxl_dft_##cp##_bkd_r2c_3d_d), B(nxl_dft_##cp##_bkd_r2c_2d_d), B(nxl_dft_##cp##_bkd_r2c_2d_dnnsmall_d),   \
       B(nxl_dft_bkd_r2c_md_default_d))
AVX_REAL_LISTS(avx, , )
AVX_REAL_LISTS(avx2, , )
AVX_REAL_LISTS(avx512_mic, , )
AVX_REAL_LISTS(avx512, B(nxl_dft_avx512_bkd_r2c_1d_mg_s) COMMA, B(nxl_dft_avx512_bkd_r2c_1d_mg_d) COMMA)

// Complex 1-D lists of avx and above.
LIST(avx_c1d_s, B(nxl_dft_avx_bkd_c2c_1d_colbatch_s), B(nxl_dft_avx_bkd_gene_c96), B(nxl_dft_avx_bkd_cpmd_c168),
     B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_avx_bkd_cr2cr_1d_s), B(nxl_dft_avx_bkd_c2c_1d_small_s),
     B(nxl_dft_bkd_c2c_1d_default_s), B(nxl_dft_avx_bkd_c2c_1d_bluestein_s))
LIST(avx_c1d_d, B(nxl_dft_avx_bkd_c2c_1d_colbatch_d), B(nxl_dft_avx_bkd_gene_z96), B(nxl_dft_avx_bkd_cpmd_z168),
     B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_avx_bkd_cr2cr_1d_d), B(nxl_dft_avx_bkd_c2c_1d_small_d),
     B(nxl_dft_bkd_c2c_1d_default_d), B(nxl_dft_avx_bkd_c2c_1d_bluestein_d))
LIST(avx2_c1d_s, B(nxl_dft_avx2_bkd_c2c_1d_rowbatch_s), B(nxl_dft_avx2_bkd_c2c_1d_colbatch_s),
     B(nxl_dft_avx2_bkd_gene_c96), B(nxl_dft_avx2_bkd_cpmd_c168), B(nxl_dft_avx2_bkd_c2c_1d_bigbatch_s),
     B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_avx2_bkd_cr2cr_1d_s), B(nxl_dft_avx2_bkd_c2c_1d_small_s),
     B(nxl_dft_bkd_c2c_1d_default_s), B(nxl_dft_avx2_bkd_c2c_1d_bluestein_s))
LIST(avx2_c1d_d, B(nxl_dft_avx2_bkd_c2c_1d_rowbatch_d), B(nxl_dft_avx2_bkd_c2c_1d_colbatch_d),
     B(nxl_dft_avx2_bkd_gene_z96), B(nxl_dft_avx2_bkd_cpmd_z168), B(nxl_dft_avx2_bkd_c2c_1d_bigbatch_d),
     B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_avx2_bkd_cr2cr_1d_d), B(nxl_dft_avx2_bkd_c2c_1d_small_d),
     B(nxl_dft_bkd_c2c_1d_default_d), B(nxl_dft_avx2_bkd_c2c_1d_bluestein_d))
#define AVX512_C1D(cp, p, FIRST)                                                                                  \
  LIST(cp##_c1d_##p, FIRST B(nxl_dft_##cp##_bkd_c2c_1d_large_##p), B(nxl_dft_##cp##_bkd_c2c_1d_bigbatch_##p),     \
       B(nxl_dft_bkd_cr2cr_1d_batched), B(nxl_dft_##cp##_bkd_cr2cr_1d_##p), B(nxl_dft_##cp##_bkd_c2c_1d_small_##p), \
       B(nxl_dft_bkd_c2c_1d_default_##p), B(nxl_dft_##cp##_bkd_c2c_1d_bluestein_##p))
AVX512_C1D(avx512, s, B(nxl_dft_avx512_bkd_c2c_1d_mg_s) COMMA B(nxl_dft_avx512_bkd_c2c_1d_colbatch_s) COMMA)
AVX512_C1D(avx512, d, B(nxl_dft_avx512_bkd_c2c_1d_mg_d) COMMA B(nxl_dft_avx512_bkd_c2c_1d_colbatch_d) COMMA)
AVX512_C1D(avx512_mic, s,
           B(nxl_dft_avx512_mic_bkd_c2c_1d_colbatch_s) COMMA B(nxl_dft_avx512_mic_bkd_c2c_1d_square_s) COMMA)
AVX512_C1D(avx512_mic, d,
           B(nxl_dft_avx512_mic_bkd_c2c_1d_colbatch_d) COMMA B(nxl_dft_avx512_mic_bkd_c2c_1d_square_d) COMMA)

// Complex multi-dimensional lists of avx and above.
#define AVX_CMD(cp, p, FIRST, RECT)                                                                               \
  LIST(cp##_cmd_##p, FIRST B(nxl_dft_##cp##_bkd_c2c_3d_tiny_##p), B(nxl_dft_##cp##_bkd_c2c_2d_tiny_##p),          \
       B(nxl_dft_##cp##_bkd_c2c_2d_main_##p), RECT B(nxl_dft_##cp##_bkd_c2c_3d_##p),                              \
       B(nxl_dft_##cp##_bkd_c2c_4d_##p), B(nxl_dft_bkd_cr2cr_md), B(nxl_dft_bkd_cr2cr_1d_batched),                \
       B(nxl_dft_##cp##_bkd_cr2cr_1d_##p), B(nxl_dft_bkd_c2c_md_default_##p))
AVX_CMD(avx, s, , B(nxl_dft_avx_bkd_c2c_2d_rectang_s) COMMA)
AVX_CMD(avx, d, , )
AVX_CMD(avx2, s, , B(nxl_dft_avx2_bkd_c2c_2d_rectang_s) COMMA)
AVX_CMD(avx2, d, , )
AVX_CMD(avx512, s, , )
AVX_CMD(avx512, d, , )
AVX_CMD(avx512_mic, s, B(nxl_dft_avx512_mic_bkd_c2c_2d_square_s) COMMA, )
AVX_CMD(avx512_mic, d, B(nxl_dft_avx512_mic_bkd_c2c_2d_square_d) COMMA, )

namespace nxl::dft {

const BackendRecord *const *backend_list(int cp, int precision, ListType type) {
  // [code path][type][precision: 0 single, 1 double]
  static const BackendRecord *const *const lists[7][4][2] = {
      {{def_c1d_s, def_c1d_d}, {def_cmd_s, def_cmd_d}, {def_r1d_s, def_r1d_d}, {def_rmd_s, def_rmd_d}},
      {{mc_c1d_s, mc_c1d_d}, {mc_cmd_s, mc_cmd_d}, {mc_r1d_s, mc_r1d_d}, {mc_rmd_s, mc_rmd_d}},
      {{mc3_c1d_s, mc3_c1d_d}, {mc3_cmd_s, mc3_cmd_d}, {mc3_r1d_s, mc3_r1d_d}, {mc3_rmd_s, mc3_rmd_d}},
      {{avx_c1d_s, avx_c1d_d}, {avx_cmd_s, avx_cmd_d}, {avx_r1d_s, avx_r1d_d}, {avx_rmd_s, avx_rmd_d}},
      {{avx2_c1d_s, avx2_c1d_d}, {avx2_cmd_s, avx2_cmd_d}, {avx2_r1d_s, avx2_r1d_d}, {avx2_rmd_s, avx2_rmd_d}},
      {{avx512_mic_c1d_s, avx512_mic_c1d_d},
       {avx512_mic_cmd_s, avx512_mic_cmd_d},
       {avx512_mic_r1d_s, avx512_mic_r1d_d},
       {avx512_mic_rmd_s, avx512_mic_rmd_d}},
      {{avx512_c1d_s, avx512_c1d_d}, {avx512_cmd_s, avx512_cmd_d}, {avx512_r1d_s, avx512_r1d_d}, {avx512_rmd_s, avx512_rmd_d}},
  };
  if (cp < 0 || cp > 6 || type < 0 || type > 3) return nullptr;
  return lists[cp][type][precision == DFTI_DOUBLE ? 1 : 0];
}

}  // namespace nxl::dft
