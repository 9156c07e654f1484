// Every backend of every list (code path x type x precision) commits some
// configuration on its own and computes it correctly; the lists have the
// documented order and end with the backends that accept everything.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "dft/dfti/descriptor.h"
#include "dft_check.h"

using namespace dftcheck;
using nxl::dft::BackendRecord;

namespace {

Case dense(int domain, int rank, std::initializer_list<long> n, long howmany = 1) {
  Case c;
  c.domain = domain;
  c.rank = rank;
  int k = 0;
  for (long v : n) c.n[k++] = v;
  long ri = 1, ro = 1;
  for (k = 0; k < rank; ++k) {
    long m = domain == DFTI_REAL && k == 0 ? half(c.n[0]) : c.n[k];
    c.is[k] = ri;
    c.os[k] = ro;
    ri *= c.n[k];
    ro *= m;
  }
  c.howmany = howmany;
  c.idist = ri;
  c.odist = ro;
  c.inplace = false;
  c.thread_limit = 2;
  return c;
}

std::vector<Case> candidates(int type) {
  std::vector<Case> v;
  auto split = [](Case c) {
    c.split = true;
    return c;
  };
  if (type == nxl::dft::kComplex1D) {
    v.push_back(dense(DFTI_COMPLEX, 1, {16}));
    v.push_back(dense(DFTI_COMPLEX, 1, {100}, 4));
    Case col = dense(DFTI_COMPLEX, 1, {24}, 6);
    col.is[0] = col.os[0] = 6;
    col.idist = col.odist = 1;
    v.push_back(col);
    v.push_back(split(dense(DFTI_COMPLEX, 1, {20})));
    v.push_back(split(dense(DFTI_COMPLEX, 1, {20}, 3)));
    v.push_back(dense(DFTI_COMPLEX, 1, {96}, 2));
    v.push_back(dense(DFTI_COMPLEX, 1, {168}));
    v.push_back(dense(DFTI_COMPLEX, 1, {32}, 300));
    v.push_back(dense(DFTI_COMPLEX, 1, {256}, 3));
    v.push_back(dense(DFTI_COMPLEX, 1, {1024}));
    v.push_back(dense(DFTI_COMPLEX, 1, {263}));
    v.push_back(dense(DFTI_COMPLEX, 1, {1L << 15}));
  } else if (type == nxl::dft::kComplexMD) {
    v.push_back(dense(DFTI_COMPLEX, 3, {4, 4, 4}, 2));
    v.push_back(dense(DFTI_COMPLEX, 2, {8, 8}));
    v.push_back(dense(DFTI_COMPLEX, 2, {40, 36}));
    v.push_back(dense(DFTI_COMPLEX, 2, {40, 40}));
    v.push_back(dense(DFTI_COMPLEX, 3, {20, 18, 16}));
    v.push_back(dense(DFTI_COMPLEX, 4, {3, 4, 5, 6}));
    v.push_back(split(dense(DFTI_COMPLEX, 2, {6, 10}, 2)));
    v.push_back(split(dense(DFTI_COMPLEX, 2, {1, 20}, 3)));
    v.push_back(split(dense(DFTI_COMPLEX, 2, {20, 1})));
    v.push_back(dense(DFTI_COMPLEX, 5, {2, 3, 2, 3, 2}));
  } else if (type == nxl::dft::kReal1D) {
    for (long n : {32L, 100L, 201L, 263L}) {
      Case c = dense(DFTI_REAL, 1, {n});
      c.format = DFTI_CCE_FORMAT;
      v.push_back(c);
    }
    v.push_back(dense(DFTI_REAL, 1, {128}, 20));
    v.push_back(dense(DFTI_REAL, 1, {256}, 3));
  } else {
    v.push_back(dense(DFTI_REAL, 2, {8, 8}));
    v.push_back(dense(DFTI_REAL, 3, {4, 4, 4}));
    v.push_back(dense(DFTI_REAL, 3, {20, 18, 16}));
    v.push_back(dense(DFTI_REAL, 2, {40, 36}));
    v.push_back(dense(DFTI_REAL, 2, {16, 16}, 10));
    v.push_back(dense(DFTI_REAL, 4, {2, 3, 4, 5}));
  }
  return v;
}

bool force(DFTI_DESCRIPTOR_HANDLE h, void *arg) {
  static thread_local const BackendRecord *one[2];
  one[0] = static_cast<const BackendRecord *>(arg);
  one[1] = nullptr;
  h->bkdlist = one;
  return DftiCommitDescriptor(h) == 0 && h->backend == one[0];
}

long total(const Case &c) {
  long t = c.howmany;
  for (int k = 0; k < c.rank; ++k) t *= c.n[k];
  return t;
}

TEST(DftiBackends, EveryBackendAcceptsAConfigurationAndComputesIt) {
  std::map<const BackendRecord *, std::string> verified;
  const char *types[] = {"complex 1-D", "complex md", "real 1-D", "real md"};
  for (int cp = 0; cp < 7; ++cp)
    for (int type = 0; type < 4; ++type)
      for (int prec : {DFTI_SINGLE, DFTI_DOUBLE}) {
        const BackendRecord *const *list = nxl_dft_dfti_backend_list(cp, prec, type);
        ASSERT_NE(list, nullptr);
        ASSERT_NE(list[0], nullptr);
        for (; *list; ++list) {
          const BackendRecord *rec = *list;
          if (verified.count(rec)) continue;
          bool ok = false;
          for (Case c : candidates(type)) {
            c.prec = prec;
            for (bool fwd : {true, false}) {
              c.forward = fwd;
              if (!fwd && c.domain == DFTI_REAL) {   // the spectrum is now the input
                for (int k = 0; k < c.rank; ++k) std::swap(c.is[k], c.os[k]);
                std::swap(c.idist, c.odist);
              }
              // The stand-in engine is quadratic: very long transforms are
              // only committed there.
#ifdef NXL_DFT_REF_ENGINE
              if (c.n[0] * c.n[0] * total(c) / c.n[0] > (1L << 28)) {
                DFTI_DESCRIPTOR_HANDLE h = nullptr;
                ASSERT_EQ(make_descriptor(c, &h), 0);
                bool acc = force(h, const_cast<BackendRecord *>(rec));
                DftiFreeDescriptor(&h);
                if (!acc) break;
                ok = true;
                continue;
              }
#endif
              Result r = c.prec == DFTI_SINGLE ? run_case<float>(c, 11, force, const_cast<BackendRecord *>(rec))
                                               : run_case<double>(c, 11, force, const_cast<BackendRecord *>(rec));
              if (r.status == -1) break;   // not this backend's configuration
              ASSERT_EQ(r.status, 0) << rec->name << ": " << r.what << " " << c.describe();
              long double eps = prec == DFTI_SINGLE ? 5.96e-8L : 1.11e-16L;
              EXPECT_LE(r.err, 10 * eps * log2l(2.0L * total(c))) << rec->name << ": " << r.what << " " << c.describe();
              ok = true;
            }
            if (ok) break;
          }
          EXPECT_TRUE(ok) << rec->name << " accepted no configuration (" << types[type] << ", cp " << cp << ")";
          if (ok) verified[rec] = rec->name;
        }
      }
  EXPECT_GT(verified.size(), 100u);
}

std::vector<std::string> names(int cp, int prec, int type) {
  std::vector<std::string> v;
  for (const BackendRecord *const *l = nxl_dft_dfti_backend_list(cp, prec, type); *l; ++l) v.push_back((*l)->name);
  return v;
}

TEST(DftiBackends, ListOrder) {
  using V = std::vector<std::string>;
  EXPECT_EQ(names(0, DFTI_DOUBLE, nxl::dft::kComplex1D),
            (V{"nxl_dft_bkd_cr2cr_1d_batched", "nxl_dft_def_bkd_cr2cr_1d_d", "nxl_dft_def_bkd_c2c_1d_small_d",
               "nxl_dft_bkd_c2c_1d_default_d", "nxl_dft_def_bkd_c2c_1d_bluestein_d"}));
  EXPECT_EQ(names(4, DFTI_SINGLE, nxl::dft::kComplex1D),
            (V{"nxl_dft_avx2_bkd_c2c_1d_rowbatch_s", "nxl_dft_avx2_bkd_c2c_1d_colbatch_s", "nxl_dft_avx2_bkd_gene_c96",
               "nxl_dft_avx2_bkd_cpmd_c168", "nxl_dft_avx2_bkd_c2c_1d_bigbatch_s", "nxl_dft_bkd_cr2cr_1d_batched",
               "nxl_dft_avx2_bkd_cr2cr_1d_s", "nxl_dft_avx2_bkd_c2c_1d_small_s", "nxl_dft_bkd_c2c_1d_default_s",
               "nxl_dft_avx2_bkd_c2c_1d_bluestein_s"}));
  EXPECT_EQ(names(3, DFTI_DOUBLE, nxl::dft::kComplex1D)[1], "nxl_dft_avx_bkd_gene_z96");
  EXPECT_EQ(names(6, DFTI_DOUBLE, nxl::dft::kComplex1D)[0], "nxl_dft_avx512_bkd_c2c_1d_mg_d");
  EXPECT_EQ(names(5, DFTI_DOUBLE, nxl::dft::kComplex1D)[1], "nxl_dft_avx512_mic_bkd_c2c_1d_square_d");
  // Real multi-dimensional: single tries 2-D tiny first, double 3-D tiny.
  EXPECT_EQ(names(1, DFTI_SINGLE, nxl::dft::kRealMD)[0], "nxl_dft_mc_bkd_r2c_2d_tiny_s");
  EXPECT_EQ(names(1, DFTI_DOUBLE, nxl::dft::kRealMD)[0], "nxl_dft_mc_bkd_r2c_3d_tiny_d");
  EXPECT_EQ(names(6, DFTI_DOUBLE, nxl::dft::kReal1D)[0], "nxl_dft_avx512_bkd_r2c_1d_mg_d");
  EXPECT_EQ(names(3, DFTI_DOUBLE, nxl::dft::kReal1D)[0], "nxl_dft_avx_bkd_r2c_1d_small_d");
  // The rectangular 2-D backend exists for single precision only.
  auto s = names(4, DFTI_SINGLE, nxl::dft::kComplexMD), d = names(4, DFTI_DOUBLE, nxl::dft::kComplexMD);
  EXPECT_EQ(s.size(), d.size() + 1);
  EXPECT_EQ(s[3], "nxl_dft_avx2_bkd_c2c_2d_rectang_s");
  EXPECT_EQ(names(5, DFTI_SINGLE, nxl::dft::kComplexMD)[0], "nxl_dft_avx512_mic_bkd_c2c_2d_square_s");
  // Lists end with the fallbacks.
  for (int cp = 0; cp < 7; ++cp)
    for (int prec : {DFTI_SINGLE, DFTI_DOUBLE}) {
      const char p = prec == DFTI_SINGLE ? 's' : 'd';
      EXPECT_NE(names(cp, prec, 0).back().find(std::string("c2c_1d_bluestein_") + p), std::string::npos);
      EXPECT_EQ(names(cp, prec, 1).back(), std::string("nxl_dft_bkd_c2c_md_default_") + p);
      EXPECT_NE(names(cp, prec, 2).back().find(std::string("r2c_1d_bluestein_") + p), std::string::npos);
      EXPECT_EQ(names(cp, prec, 3).back(), std::string("nxl_dft_bkd_r2c_md_default_") + p);
    }
}

// Commit picks the first backend of the list that applies.
TEST(DftiBackends, CommitTakesTheFirstApplicable) {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  ASSERT_EQ(DftiCreateDescriptor_d_1d(&h, DFTI_DOUBLE, DFTI_COMPLEX, 1, nxl_int(16)), 0);
  h->bkdlist = nxl_dft_dfti_backend_list(0, DFTI_DOUBLE, 0);
  ASSERT_EQ(DftiCommitDescriptor(h), 0);
  EXPECT_STREQ(nxl_dft_dfti_committed_backend(h), "nxl_dft_def_bkd_c2c_1d_small_d");
  ASSERT_EQ(DftiSetValue(h, DFTI_COMPLEX_STORAGE, DFTI_REAL_REAL), 0);
  ASSERT_EQ(DftiCommitDescriptor(h), 0);
  EXPECT_STREQ(nxl_dft_dfti_committed_backend(h), "nxl_dft_def_bkd_cr2cr_1d_d");
  ASSERT_EQ(DftiSetValue(h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(4)), 0);
  ASSERT_EQ(DftiCommitDescriptor(h), 0);
  EXPECT_STREQ(nxl_dft_dfti_committed_backend(h), "nxl_dft_bkd_cr2cr_1d_batched");
  // An empty list commits nothing, and compute then refuses.
  static const BackendRecord *const empty[] = {nullptr};
  h->bkdlist = empty;
  EXPECT_EQ(DftiCommitDescriptor(h), 0);
  double a[64] = {0}, b[64] = {0};
  EXPECT_EQ(DftiComputeForward(h, a, b), 2);
  DftiFreeDescriptor(&h);
}

}  // namespace
