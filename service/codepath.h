// Code-path kernels and their lazily chosen entries.
//
// A kernel source compiled once per code path (cmake: nxl_add_codepath_sources)
// sees NXL_CP (the path number, 100 for the reproducible build), NXL_CP_NS
// (its private namespace) and NXL_CP_TAG (its symbol infix). It defines its
// extern "C" kernels as NXL_KERNEL(nxl_blas_, _xddot), which becomes
// nxl_blas_avx2_xddot, nxl_blas_cnr_def_xddot and so on.
//
// A code-path entry keeps one static kernel pointer, chosen on the first call
// from the code-path number and the reproducibility mode, and never revisited
// (racing first callers store the same pointer).
#ifndef NXL_CODEPATH_H
#define NXL_CODEPATH_H

#include "service/nxl_serv.h"

#define NXL_PASTE3_(a, b, c) a##b##c
#define NXL_PASTE3(a, b, c) NXL_PASTE3_(a, b, c)
#define NXL_KERNEL(prefix, suffix) NXL_PASTE3(prefix, NXL_CP_TAG, suffix)

#if defined(NXL_CP)
#define NXL_CP_IS_CNR (NXL_CP == 100)
#endif

// Declares the eight builds of one kernel.
#define NXL_CP_DECLARE(ret, prefix, suffix, params)        \
  extern "C" ret prefix##def##suffix params;               \
  extern "C" ret prefix##mc##suffix params;                \
  extern "C" ret prefix##mc3##suffix params;               \
  extern "C" ret prefix##avx##suffix params;               \
  extern "C" ret prefix##avx2##suffix params;              \
  extern "C" ret prefix##avx512_mic##suffix params;        \
  extern "C" ret prefix##avx512##suffix params;            \
  extern "C" ret prefix##cnr_def##suffix params;

// The table of the eight builds, in the order of nxl::cp_kernel_index().
#define NXL_CP_TABLE(prefix, suffix)                                        \
  { prefix##def##suffix, prefix##mc##suffix, prefix##mc3##suffix,           \
    prefix##avx##suffix, prefix##avx2##suffix, prefix##avx512_mic##suffix,  \
    prefix##avx512##suffix, prefix##cnr_def##suffix }

#ifdef __cplusplus
namespace nxl {

// Index of the kernel build to run: 0 def, 1 mc, 2 mc3, 3 avx, 4 avx2,
// 5 avx512_mic, 6 avx512, 7 the reproducible build. Paths 0 to 2 take the
// reproducible build unless the reproducibility mode is OFF. An unknown path
// prints message 1213, ends the process through the exit hook and, if the hook
// returns, gives -1.
int cp_kernel_index(void);
// The same without the reproducible build (small-matrix LAPACK kernels).
int cp_kernel_index_nocnr(void);

template <class F>
inline F pick_kernel(const F (&table)[8]) {
  int i = cp_kernel_index();
  return i < 0 ? nullptr : table[i];
}

}  // namespace nxl

// Defines the code-path entry `entry` forwarding to prefix<cp>suffix.
#define NXL_CP_ENTRY(ret, entry, prefix, suffix, params, args)             \
  NXL_CP_DECLARE(ret, prefix, suffix, params)                              \
  extern "C" ret entry params {                                            \
    using fn_t = ret(*) params;                                            \
    static fn_t kernel;                                                    \
    fn_t k = kernel;                                                       \
    if (!k) {                                                              \
      static const fn_t table[8] = NXL_CP_TABLE(prefix, suffix);           \
      k = nxl::pick_kernel(table);                                         \
      if (!k) return ret();                                                \
      kernel = k;                                                          \
    }                                                                      \
    return k args;                                                         \
  }
#endif  // __cplusplus

#endif  // NXL_CODEPATH_H
