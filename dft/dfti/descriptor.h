// The DFTI descriptor record and the internal interfaces around it.
//
// The record is allocated zeroed and 64-byte aligned through its memory
// methods. Lengths and strides are held first-dimension fastest; the C
// entries reverse per-dimension arrays on the way in and out. Every accessor
// of the lengths, strides, name, scales, distances, transform count and
// thread limit goes through the method table.
#ifndef NXL_DFT_DFTI_DESCRIPTOR_H
#define NXL_DFT_DFTI_DESCRIPTOR_H

#include <stddef.h>
#include <stdint.h>

#include <atomic>

#include "nxl_dfti.h"
#include "service/nxl_serv.h"

namespace nxl::dft {

constexpr uint32_t kMagic = 0x544644;     // "DFT" as a little-endian word
constexpr int kMaxRank = 7;
constexpr int kLastParam = 28;
constexpr int kNotApplicable = 100;       // a backend that does not apply
constexpr int kNameLength = 10;

using ComputeFn = nxl_int (*)(DFTI_DESCRIPTOR *, void *, void *, void *, void *);

struct MemMethods {
  void *(*alloc)(size_t bytes, int alignment);
  void (*release)(void *p);
};

// One dimension: length, input and output stride, two spare words.
struct DimRecord { nxl_int length, istride, ostride, spare1, spare2; };
// The batch: number of transforms, input, output, forward-domain and
// backward-domain distances.
struct BatchRecord { nxl_int number, idist, odist, fdist, bdist; };

template <class Rec> struct Tensor {
  int count;          // number of records
  nxl_int ioff, ooff; // input and output offsets (lengths tensor only)
  Rec *rec;
};

struct BackendRecord {
  int (*commit)(const BackendRecord *self, DFTI_DESCRIPTOR *d);
  const void *priv;
  const char *name;
};

// Accessors, in slot order.
struct MethodTable {
  int (*commit)(DFTI_DESCRIPTOR *);
  int (*dt_commit)(DFTI_DESCRIPTOR *);
  int (*getInputStrides)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*getOutputStrides)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*setInputStrides)(DFTI_DESCRIPTOR *, const nxl_int *);
  int (*setOutputStrides)(DFTI_DESCRIPTOR *, const nxl_int *);
  int (*getLengths)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*getDescriptorName)(const DFTI_DESCRIPTOR *, char *, size_t);
  int (*setDescriptorName)(DFTI_DESCRIPTOR *, const char *, size_t, char pad);
  int (*getScale)(const DFTI_DESCRIPTOR *, int param, double *);
  int (*setScale)(DFTI_DESCRIPTOR *, int param, double);
  int (*copy_node)(const DFTI_DESCRIPTOR *, DFTI_DESCRIPTOR **);
  int (*getInputDistance)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*getOutputDistance)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*getNumberOfTransforms)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*setInputDistance)(DFTI_DESCRIPTOR *, nxl_int);
  int (*setOutputDistance)(DFTI_DESCRIPTOR *, nxl_int);
  int (*setNumberOfTransforms)(DFTI_DESCRIPTOR *, nxl_int);
  int (*getThreadLimit)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*setThreadLimit)(DFTI_DESCRIPTOR *, nxl_int);
  int (*getRank)(const DFTI_DESCRIPTOR *, nxl_int *);
  int (*setFwdDistance)(DFTI_DESCRIPTOR *, nxl_int);
  int (*setBwdDistance)(DFTI_DESCRIPTOR *, nxl_int);
};

// The threading layer seen by descriptors, one table per code path.
using TeamFn = void (*)(int ithr, int nthr, void *arg);
struct RuntimeServices {
  int (*getDynamic)(void);
  void (*setDynamic)(int);
  int (*getMaxThreadsDFT)(void);
  int (*getNumCoresPerSocket)(void);
  int (*getNumSockets)(void);
  long (*cacheSize)(int level);
  void (*parallel_team)(int nthr, TeamFn fn, void *arg);
  void (*parallel_dynamic_team)(int nthr, TeamFn fn, void *arg);
  void (*parallel_syncable_team)(int nthr, TeamFn fn, void *arg);
  void (*parallel_syncable_dynamic_team)(int nthr, TeamFn fn, void *arg);
  void (*parallel_syncable_nested_team)(int nthr, TeamFn fn, void *arg);
  void (*barrier)(void);
  int (*isSequential)(void);
  void *(*lib_specific_dispatcher)(int what);
};

}  // namespace nxl::dft

struct DFTI_DESCRIPTOR {
  nxl::dft::ComputeFn forward;
  nxl::dft::ComputeFn backward;
  const nxl::dft::MemMethods *mem;
  const nxl::dft::BackendRecord *const *bkdlist;
  int32_t narrays;
  uint8_t flags;
  uint32_t magic;
  int32_t commit_status;
  nxl::dft::Tensor<nxl::dft::DimRecord> lengths;
  nxl::dft::Tensor<nxl::dft::BatchRecord> batch;
  int32_t dimension;
  nxl::dft::Tensor<nxl::dft::DimRecord> wlengths;    // working copy used by commit
  nxl::dft::Tensor<nxl::dft::BatchRecord> wbatch;
  void (*uncommit)(DFTI_DESCRIPTOR *);
  void (*destroy)(DFTI_DESCRIPTOR *);
  const nxl::dft::MethodTable *methods;
  nxl::dft::RuntimeServices *rts;
  char name[nxl::dft::kNameLength];
  int32_t domain;
  int32_t precision;
  int32_t cstorage;
  int32_t rstorage;
  int32_t cestorage;
  int32_t placement;
  int32_t packed;
  int32_t workspace;
  int32_t ordering;
  int32_t transpose;
  double fscale;
  double bscale;
  DFTI_DESCRIPTOR *next;
  int32_t user_threads;
  int32_t nthreads;        // committed thread count
  int32_t thread_limit;
  int32_t options;         // bit 4: input may be destroyed

  // Values cached by commit from the normalised working layout.
  nxl_int c_howmany, c_idist, c_odist;
  int32_t c_rank;
  nxl_int c_n0, c_is0, c_os0;
  double c_fscale, c_bscale;
  float c_fscale_f, c_bscale_f;
  nxl_int c_ioff, c_ooff;
  int32_t c_dynamic;
  int32_t cp_index;        // code path whose backend list was installed

  // Backend-private: the accepted backend and its plan.
  const nxl::dft::BackendRecord *backend;
  void *plan;
  void (*plan_free)(void *plan);
};

namespace nxl::dft {

constexpr int kDestroyInputBit = 16;

inline bool valid(const DFTI_DESCRIPTOR *d) { return d && d->magic == kMagic; }

// Node building and the method table (descriptor.cpp).
int create_node(DFTI_DESCRIPTOR **handle, int precision, int domain, int dimension, const nxl_int *lengths,
                const MemMethods *mem);
void bless_node_thr(DFTI_DESCRIPTOR *d);
extern const MethodTable kMethods;
extern const MemMethods kDefaultMem;
RuntimeServices *runtime_services(int cp);

// Backend lists by code path (0 def .. 6 avx512) and type (backends/lists.cpp).
enum ListType { kComplex1D = 0, kComplexMD = 1, kReal1D = 2, kRealMD = 3 };
const BackendRecord *const *backend_list(int cp, int precision, ListType type);

// Commit (backends/commit.cpp).
int static_dfti_commit(DFTI_DESCRIPTOR *d);
int static_dt_commit(DFTI_DESCRIPTOR *d);
void uncommit(DFTI_DESCRIPTOR *d);

// The service's verbose-mode word, once a compute call has looked it up
// (null before): 0 lets a compute entry call the committed routine at once.
extern std::atomic<int *> g_verbose_word;

// Tracing description of a compute call (dfti/compute.cpp).
int describe_call(const DFTI_DESCRIPTOR *d, int forward, const void *in, const void *out, char *buf,
                  size_t size);

}  // namespace nxl::dft

// The internal implementations behind the exported entries (every argument
// by reference, as the Fortran entries pass them).
extern "C" {
nxl_int nxl_dft_dfti_create_descriptor_1d(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                          const nxl_int *dim, const nxl_int *length);
nxl_int nxl_dft_dfti_create_descriptor_highd(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                             const nxl_int *dim, const nxl_int *lengths);
nxl_int nxl_dft_dfti_create_descriptor_s_1d(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *length);
nxl_int nxl_dft_dfti_create_descriptor_d_1d(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *length);
nxl_int nxl_dft_dfti_create_descriptor_s_md(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *lengths);
nxl_int nxl_dft_dfti_create_descriptor_d_md(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *prec, const nxl_int *dom,
                                            const nxl_int *dim, const nxl_int *lengths);
nxl_int nxl_dft_dfti_set_value_intval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const nxl_int *value);
nxl_int nxl_dft_dfti_get_value_intval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, nxl_int *value);
nxl_int nxl_dft_dfti_set_value_dblval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const double *value);
nxl_int nxl_dft_dfti_get_value_dblval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, double *value);
nxl_int nxl_dft_dfti_set_value_sglval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const float *value);
nxl_int nxl_dft_dfti_get_value_sglval(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, float *value);
nxl_int nxl_dft_dfti_set_value_intvec(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const nxl_int *values);
nxl_int nxl_dft_dfti_get_value_intvec(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, nxl_int *values);
nxl_int nxl_dft_dfti_set_value_chars(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, const char *chars,
                                     size_t length, char pad);
nxl_int nxl_dft_dfti_get_value_chars(DFTI_DESCRIPTOR_HANDLE *h, const nxl_int *param, char *chars, size_t length);
nxl_int nxl_dft_dfti_copy_descriptor_external(DFTI_DESCRIPTOR_HANDLE *src, DFTI_DESCRIPTOR_HANDLE *dst);
nxl_int nxl_dft_dfti_free_descriptor_external(DFTI_DESCRIPTOR_HANDLE *h);
nxl_int nxl_dft_dfti_commit_descriptor_external(DFTI_DESCRIPTOR_HANDLE *h);
nxl_int nxl_dft_dfti_compute(DFTI_DESCRIPTOR_HANDLE h, int forward, void *a1, void *a2, void *a3, void *a4);
void nxl_dft_bless_node_thr(DFTI_DESCRIPTOR_HANDLE d);
int nxl_dft_transfer_vpp_nxl_error(int status);
// Internal hooks for tests: the name of the backend that committed the
// descriptor (null when uncommitted), and the backend lists.
const char *nxl_dft_dfti_committed_backend(DFTI_DESCRIPTOR_HANDLE h);
const nxl::dft::BackendRecord *const *nxl_dft_dfti_backend_list(int cp, int precision, int type);
// Which directions of a committed descriptor take the direct path of short
// transforms (bit 0 forward, bit 1 backward).
int nxl_dft_dfti_direct_paths(DFTI_DESCRIPTOR_HANDLE h);
// The span of one transform (bytes) from which strided passes are gathered
// in blocks; returns the previous value (tests lower it to reach that path).
long nxl_dft_set_block_span(long bytes);
}

#endif  // NXL_DFT_DFTI_DESCRIPTOR_H
