// Descriptor interface: status codes and messages, creation, configuration
// parameters and their checks, copy, free, commit rules and compute checks.
#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <string>
#include <vector>

#include "dft/dfti/descriptor.h"
#include "nxl_dfti.h"

namespace {

using Handle = DFTI_DESCRIPTOR_HANDLE;
const auto P = [](int p) { return static_cast<DFTI_CONFIG_PARAM>(p); };

struct Desc {
  Handle h = nullptr;
  ~Desc() {
    if (h) DftiFreeDescriptor(&h);
  }
};

nxl_int create1(Handle *h, DFTI_CONFIG_VALUE prec, DFTI_CONFIG_VALUE dom, nxl_int n) {
  return DftiCreateDescriptor(h, prec, dom, 1, n);
}

// ---- Status codes ----------------------------------------------------------

TEST(DftiStatus, MessagesAndClasses) {
  const char *texts[] = {"Ortex NXL DFTI SUCCESS: No error",
                         "Ortex NXL DFTI ERROR: Not enough memory to allocate",
                         "Ortex NXL DFTI ERROR: Invalid configuration parameters",
                         "Ortex NXL DFTI ERROR: Inconsistent configuration parameters",
                         "Ortex NXL DFTI ERROR: Incorrect status",
                         "Ortex NXL DFTI ERROR: Descriptor is uncommitted or corrupted",
                         "Ortex NXL DFTI ERROR: Functionality is not implemented",
                         "Ortex NXL DFTI ERROR: Internal error",
                         "Ortex NXL DFTI ERROR: Configuration parameter DFTI_NUMBER_OF_USER_THREADS is not set ",
                         "Ortex NXL DFTI ERROR: Size of one of transform dimensions exceeds 2^32 (32 bits)"};
  for (int s = 0; s < 10; ++s) EXPECT_STREQ(DftiErrorMessage(s), texts[s]) << s;
  const char *unknown = "Ortex NXL DFTI ERROR: Incorrect status";
  EXPECT_STREQ(DftiErrorMessage(-1), unknown);
  EXPECT_STREQ(DftiErrorMessage(10), unknown);
  // The C entry looks at the low 32 bits only.
  EXPECT_STREQ(DftiErrorMessage((nxl_int(1) << 32) + 1), texts[1]);

  EXPECT_EQ(DftiErrorClass(5, DFTI_BAD_DESCRIPTOR), 1);
  EXPECT_EQ(DftiErrorClass(5, 0), 0);
  nxl_int s = 3, c = 3, c2 = 2;
  EXPECT_EQ(dfti_error_class_external(&s, &c), 1);
  EXPECT_EQ(dfti_error_class_external_(&s, &c2), 0);
}

TEST(DftiStatus, FortranMessageBuffer) {
  char buf[200];
  nxl_int st = 1;
  std::memset(buf, 'x', sizeof buf);
  dfti_error_message_external(buf, 20, &st);
  EXPECT_EQ(std::string(buf, 20), std::string("Ortex NXL DFTI ERROR: Not enough memory").substr(0, 20));
  EXPECT_EQ(buf[20], 'x');   // nothing beyond the buffer, no NUL
  dfti_error_message_external_(buf, 200, &st);
  std::string t = "Ortex NXL DFTI ERROR: Not enough memory to allocate";
  EXPECT_EQ(std::string(buf, t.size()), t);
  for (size_t i = t.size(); i < 200; ++i) ASSERT_EQ(buf[i], ' ') << i;
  // The Fortran form compares all 64 bits: 2^32 + 1 is unknown.
  st = (nxl_int(1) << 32) + 1;
  dfti_error_message_external(buf, 200, &st);
  EXPECT_EQ(std::string(buf, 38), "Ortex NXL DFTI ERROR: Incorrect status");
  st = -3;
  dfti_error_message_external(buf, 200, &st);
  EXPECT_EQ(std::string(buf, 38), "Ortex NXL DFTI ERROR: Incorrect status");
}

// ---- Creation ----------------------------------------------------------------

TEST(DftiCreate, ArgumentChecks) {
  Desc d;
  EXPECT_EQ(DftiCreateDescriptor(nullptr, DFTI_DOUBLE, DFTI_COMPLEX, 1, nxl_int(8)), 3);
  d.h = reinterpret_cast<Handle>(0x1234);
  EXPECT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 0, nxl_int(8)), 2);
  EXPECT_EQ(d.h, nullptr);   // the handle is cleared first
  nxl_int lens[8] = {2, 2, 2, 2, 2, 2, 2, 2};
  EXPECT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 8, lens), 2);
  EXPECT_EQ(DftiCreateDescriptor_s_md(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 8, lens), 2);
  EXPECT_EQ(DftiCreateDescriptor_d_md(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 8, lens), 2);
  EXPECT_EQ(DftiCreateDescriptor_s_1d(&d.h, DFTI_SINGLE, DFTI_COMPLEX, 8, nxl_int(4)), 2);
  EXPECT_EQ(DftiCreateDescriptor_d_1d(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 8, nxl_int(4)), 2);
  nxl_int prec = DFTI_DOUBLE, dom = DFTI_COMPLEX, dim = 8, one = 1, len = 4;
  EXPECT_EQ(dfti_create_descriptor_highd(&d.h, &prec, &dom, &dim, lens), 2);
  EXPECT_EQ(dfti_create_descriptor_1d(&d.h, &prec, &dom, &dim, &len), 2);
  EXPECT_EQ(dfti_create_descriptor_s_md_(&d.h, &prec, &dom, &dim, lens), 2);
  EXPECT_EQ(dfti_create_descriptor_d_1d_(&d.h, &prec, &dom, &dim, &len), 2);

  EXPECT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 0), 2);
  EXPECT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, -4), 2);
  EXPECT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 2, static_cast<nxl_int *>(nullptr)), 3);
  nxl_int zero[2] = {4, 0};
  EXPECT_EQ(DftiCreateDescriptor(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 2, zero), 2);
  EXPECT_EQ(create1(&d.h, DFTI_CCE_FORMAT, DFTI_COMPLEX, 8), 2);   // not a precision
  EXPECT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_SINGLE, 8), 2);        // not a domain
  len = 0;
  EXPECT_EQ(dfti_create_descriptor_1d(&d.h, &prec, &dom, &one, &len), 2);
  nxl_int two = 2, l2[2] = {3, 0};
  EXPECT_EQ(dfti_create_descriptor_highd(&d.h, &prec, &dom, &two, l2), 2);
  EXPECT_EQ(d.h, nullptr);
}

TEST(DftiCreate, TypedFormsFixThePrecisionAndCOrderIsReversed) {
  Desc a, b;
  ASSERT_EQ(DftiCreateDescriptor_s_1d(&a.h, DFTI_DOUBLE, DFTI_REAL, 1, nxl_int(12)), 0);
  int v = 0;
  ASSERT_EQ(DftiGetValue(a.h, DFTI_PRECISION, &v), 0);
  EXPECT_EQ(v, DFTI_SINGLE);
  ASSERT_EQ(DftiGetValue(a.h, DFTI_FORWARD_DOMAIN, &v), 0);
  EXPECT_EQ(v, DFTI_REAL);

  nxl_int lens[3] = {2, 3, 5};
  ASSERT_EQ(DftiCreateDescriptor_d_md(&b.h, DFTI_SINGLE, DFTI_COMPLEX, 3, lens), 0);
  nxl_int got[3], dim = 0;
  ASSERT_EQ(DftiGetValue(b.h, DFTI_LENGTHS, got), 0);
  EXPECT_EQ(got[0], 2);
  EXPECT_EQ(got[2], 5);
  ASSERT_EQ(DftiGetValue(b.h, DFTI_DIMENSION, &dim), 0);
  EXPECT_EQ(dim, 3);
  // Internally first-dimension fastest: the Fortran view is reversed.
  nxl_int p = DFTI_LENGTHS, f[3];
  ASSERT_EQ(dfti_get_value_intvec(&b.h, &p, f), 0);
  EXPECT_EQ(f[0], 5);
  EXPECT_EQ(f[2], 2);
  // Default strides are dense: C order {offset, 15, 5, 1}.
  nxl_int s[4];
  ASSERT_EQ(DftiGetValue(b.h, DFTI_INPUT_STRIDES, s), 0);
  EXPECT_EQ(s[0], 0);
  EXPECT_EQ(s[1], 15);
  EXPECT_EQ(s[2], 5);
  EXPECT_EQ(s[3], 1);
  // Set in C order, read in Fortran order.
  nxl_int cs[4] = {7, 100, 10, 2};
  ASSERT_EQ(DftiSetValue(b.h, DFTI_OUTPUT_STRIDES, cs), 0);
  p = DFTI_OUTPUT_STRIDES;
  ASSERT_EQ(dfti_get_value_intvec(&b.h, &p, s), 0);
  EXPECT_EQ(s[0], 7);
  EXPECT_EQ(s[1], 2);
  EXPECT_EQ(s[3], 100);
  // The scalar lengths query is for one dimension only.
  nxl_int one = 0;
  p = DFTI_LENGTHS;
  EXPECT_EQ(dfti_get_value_intval(&b.h, &p, &one), 3);
  EXPECT_EQ(dfti_get_value_intval(&a.h, &p, &one), 0);
  EXPECT_EQ(one, 12);
}

// ---- Configuration -----------------------------------------------------------

TEST(DftiConfig, DefaultsAndReadOnlyParameters) {
  Desc d;
  ASSERT_EQ(create1(&d.h, DFTI_SINGLE, DFTI_COMPLEX, 16), 0);
  struct {
    int param, value;
  } defaults[] = {{DFTI_COMPLEX_STORAGE, DFTI_COMPLEX_COMPLEX}, {DFTI_REAL_STORAGE, DFTI_REAL_REAL},
                  {DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_REAL}, {DFTI_PLACEMENT, DFTI_INPLACE},
                  {DFTI_PACKED_FORMAT, DFTI_CCS_FORMAT}, {DFTI_WORKSPACE, DFTI_ALLOW},
                  {DFTI_ORDERING, DFTI_ORDERED}, {DFTI_TRANSPOSE, DFTI_NONE},
                  {DFTI_COMMIT_STATUS, DFTI_UNCOMMITTED}, {DFTI_DESTROY_INPUT, DFTI_AVOID}};
  for (auto &e : defaults) {
    int v = -1;
    ASSERT_EQ(DftiGetValue(d.h, P(e.param), &v), 0) << e.param;
    EXPECT_EQ(v, e.value) << e.param;
  }
  nxl_int n = -1;
  EXPECT_EQ(DftiGetValue(d.h, DFTI_NUMBER_OF_TRANSFORMS, &n), 0);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(DftiGetValue(d.h, DFTI_INPUT_DISTANCE, &n), 0);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(DftiGetValue(d.h, DFTI_NUMBER_OF_USER_THREADS, &n), 0);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(DftiGetValue(d.h, DFTI_THREAD_LIMIT, &n), 0);
  EXPECT_EQ(n, 0);
  float fs = 0;   // single precision: scales read as float
  EXPECT_EQ(DftiGetValue(d.h, DFTI_BACKWARD_SCALE, &fs), 0);
  EXPECT_EQ(fs, 1.0f);
  char name[DFTI_MAX_NAME_LENGTH + 1];
  EXPECT_EQ(DftiGetValue(d.h, DFTI_DESCRIPTOR_NAME, name), 0);

  // Read-only, reserved and unknown parameters.
  for (int p : {0, 1, 2, 3, 6, 16, 19, 22, 23, 24, 25, 29, 100}) EXPECT_EQ(DftiSetValue(d.h, P(p), 36), 3) << p;
  int dummy;
  for (int p : {6, 16, 24, 25, 29}) EXPECT_EQ(DftiGetValue(d.h, P(p), &dummy), 3) << p;
  nxl_int par = 4, v = 0;
  EXPECT_EQ(dfti_get_value_intval(&d.h, &par, &v), 3);   // a scale is not an integer
  EXPECT_EQ(DftiSetValue(d.h, DFTI_PRECISION, DFTI_DOUBLE), 3);
  int status = 0;
  EXPECT_EQ(DftiGetValue(d.h, DFTI_COMMIT_STATUS, &status), 0);
  EXPECT_EQ(status, DFTI_UNCOMMITTED);
}

TEST(DftiConfig, EnumeratedValues) {
  Desc c, r;
  ASSERT_EQ(create1(&c.h, DFTI_DOUBLE, DFTI_COMPLEX, 16), 0);
  ASSERT_EQ(create1(&r.h, DFTI_DOUBLE, DFTI_REAL, 16), 0);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_COMPLEX_STORAGE, DFTI_REAL_REAL), 0);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_COMPLEX_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_COMPLEX_STORAGE, DFTI_COMPLEX_REAL), 6);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_COMPLEX_STORAGE, DFTI_REAL_COMPLEX), 6);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_COMPLEX_STORAGE, DFTI_INPLACE), 3);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_REAL_STORAGE, DFTI_REAL_REAL), 0);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_REAL_STORAGE, DFTI_REAL_COMPLEX), 6);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_REAL_STORAGE, DFTI_COMPLEX_COMPLEX), 3);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_REAL_STORAGE, DFTI_COMPLEX_REAL), 3);
  EXPECT_EQ(DftiSetValue(r.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_REAL_REAL), 6);
  EXPECT_EQ(DftiSetValue(r.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_REAL_COMPLEX), 6);
  EXPECT_EQ(DftiSetValue(r.h, DFTI_CONJUGATE_EVEN_STORAGE, 77), 3);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_PLACEMENT, DFTI_ALLOW), 3);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_WORKSPACE, DFTI_AVOID), 0);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_WORKSPACE, DFTI_NONE), 3);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_DESTROY_INPUT, DFTI_ALLOW), 0);
  int v = 0;
  EXPECT_EQ(DftiGetValue(c.h, DFTI_DESTROY_INPUT, &v), 0);
  EXPECT_EQ(v, DFTI_ALLOW);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_DESTROY_INPUT, DFTI_AVOID), 0);
  EXPECT_EQ(DftiGetValue(c.h, DFTI_DESTROY_INPUT, &v), 0);
  EXPECT_EQ(v, DFTI_AVOID);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_DESTROY_INPUT, 1), 3);
  for (int f : {DFTI_CCS_FORMAT, DFTI_PACK_FORMAT, DFTI_PERM_FORMAT, DFTI_CCE_FORMAT})
    EXPECT_EQ(DftiSetValue(r.h, DFTI_PACKED_FORMAT, f), 0);
  EXPECT_EQ(DftiSetValue(r.h, DFTI_PACKED_FORMAT, 53), 3);
  EXPECT_EQ(DftiSetValue(r.h, DFTI_PACKED_FORMAT, 58), 3);

  // Ordering: scrambled backward output for complex only.
  EXPECT_EQ(DftiSetValue(c.h, DFTI_ORDERING, DFTI_BACKWARD_SCRAMBLED), 0);
  EXPECT_EQ(DftiSetValue(r.h, DFTI_ORDERING, DFTI_BACKWARD_SCRAMBLED), 6);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_ORDERING, DFTI_FORWARD_SCRAMBLED), 6);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_ORDERING, 47), 3);
  EXPECT_EQ(DftiSetValue(c.h, DFTI_TRANSPOSE, DFTI_NONE), 3);

  // Conjugate-even storage COMPLEX_COMPLEX switches the format to CCE; back
  // to COMPLEX_REAL leaves it.
  ASSERT_EQ(DftiSetValue(r.h, DFTI_PACKED_FORMAT, DFTI_PACK_FORMAT), 0);
  ASSERT_EQ(DftiSetValue(r.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  EXPECT_EQ(DftiGetValue(r.h, DFTI_PACKED_FORMAT, &v), 0);
  EXPECT_EQ(v, DFTI_CCE_FORMAT);
  ASSERT_EQ(DftiSetValue(r.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_REAL), 0);
  EXPECT_EQ(DftiGetValue(r.h, DFTI_PACKED_FORMAT, &v), 0);
  EXPECT_EQ(v, DFTI_CCE_FORMAT);
}

TEST(DftiConfig, IntegerValuesNameAndVersion) {
  Desc d;
  ASSERT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 16), 0);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(0)), 3);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(-1)), 0);
  nxl_int v = 0;
  EXPECT_EQ(DftiGetValue(d.h, DFTI_NUMBER_OF_TRANSFORMS, &v), 0);
  EXPECT_EQ(v, -1);
  EXPECT_EQ(DftiCommitDescriptor(d.h), 3);   // judged by commit
  EXPECT_EQ(DftiSetValue(d.h, DFTI_NUMBER_OF_USER_THREADS, nxl_int(1) << 31), 3);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_NUMBER_OF_USER_THREADS, (nxl_int(1) << 31) - 1), 0);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_NUMBER_OF_USER_THREADS, nxl_int(1)), 0);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_THREAD_LIMIT, nxl_int(-1)), 3);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_THREAD_LIMIT, nxl_int(3)), 0);
  EXPECT_EQ(DftiGetValue(d.h, DFTI_THREAD_LIMIT, &v), 0);
  EXPECT_EQ(v, 3);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_INPUT_DISTANCE, nxl_int(-12345)), 0);   // no check
  EXPECT_EQ(DftiGetValue(d.h, DFTI_INPUT_DISTANCE, &v), 0);
  EXPECT_EQ(v, -12345);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_INPUT_STRIDES, static_cast<nxl_int *>(nullptr)), 3);

  // Names keep 10 characters.
  EXPECT_EQ(DftiSetValue(d.h, DFTI_DESCRIPTOR_NAME, "abcdefghijkl"), 0);
  char name[DFTI_MAX_NAME_LENGTH + 1];
  EXPECT_EQ(DftiGetValue(d.h, DFTI_DESCRIPTOR_NAME, name), 0);
  EXPECT_STREQ(name, "abcdefghij");
  EXPECT_EQ(DftiSetValue(d.h, DFTI_DESCRIPTOR_NAME, static_cast<const char *>(nullptr)), 3);
  // Fortran: blank padding, the whole buffer blank-filled.
  nxl_int p = DFTI_DESCRIPTOR_NAME;
  EXPECT_EQ(dfti_set_value_chars(&d.h, &p, "xyz", 3), 0);
  char fbuf[16];
  EXPECT_EQ(dfti_get_value_chars(&d.h, &p, fbuf, 16), 0);
  EXPECT_EQ(std::string(fbuf, 16), "xyz             ");

  // The version text can be read without a descriptor.
  char ver[DFTI_VERSION_LENGTH];
  EXPECT_EQ(DftiGetValue(nullptr, DFTI_VERSION, ver), 0);
  EXPECT_EQ(std::string(ver).rfind("Ortex NXL", 0), 0u);
  Handle none = nullptr;
  p = DFTI_VERSION;
  char fver[300];
  EXPECT_EQ(dfti_get_value_chars(&none, &p, fver, sizeof fver), 0);
  EXPECT_EQ(std::string(fver, std::strlen(ver)), std::string(ver));
  EXPECT_EQ(fver[299], ' ');

  // Bad handles.
  EXPECT_EQ(DftiSetValue(nullptr, DFTI_PLACEMENT, DFTI_INPLACE), 5);
  EXPECT_EQ(DftiGetValue(nullptr, DFTI_PLACEMENT, &v), 5);
  unsigned char junk[512] = {0};
  Handle bad = reinterpret_cast<Handle>(junk);
  EXPECT_EQ(DftiSetValue(bad, DFTI_PLACEMENT, DFTI_INPLACE), 5);
  EXPECT_EQ(DftiCommitDescriptor(bad), 5);
  nxl_int one = 1;
  p = DFTI_PLACEMENT;
  EXPECT_EQ(dfti_set_value_intval(nullptr, &p, &one), 3);
}

TEST(DftiConfig, WhatUncommits) {
  Desc d;
  ASSERT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 16), 0);
  auto committed = [&] {
    int s = 0;
    EXPECT_EQ(DftiGetValue(d.h, DFTI_COMMIT_STATUS, &s), 0);
    return s == DFTI_COMMITTED;
  };
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  EXPECT_TRUE(committed());
  EXPECT_EQ(DftiSetValue(d.h, DFTI_FORWARD_SCALE, 1.0), 0);   // unchanged scale
  EXPECT_TRUE(committed());
  EXPECT_EQ(DftiSetValue(d.h, DFTI_DESCRIPTOR_NAME, "n"), 0);
  EXPECT_TRUE(committed());
  EXPECT_EQ(DftiSetValue(d.h, DFTI_FORWARD_SCALE, 0.5), 0);   // changed scale
  EXPECT_FALSE(committed());
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  nxl_int s[2] = {0, 1};
  EXPECT_EQ(DftiSetValue(d.h, DFTI_INPUT_STRIDES, s), 0);
  EXPECT_FALSE(committed());
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_PLACEMENT, 12345), 3);     // even a refused value
  EXPECT_FALSE(committed());
  std::vector<std::complex<double>> x(16);
  EXPECT_EQ(DftiComputeForward(d.h, x.data()), 2);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  EXPECT_EQ(DftiSetValue(d.h, DFTI_PRECISION, DFTI_SINGLE), 3);
  EXPECT_FALSE(committed());
  EXPECT_EQ(DftiComputeForward(d.h, x.data()), 2);
}

// ---- Copy and free ---------------------------------------------------------------

TEST(DftiCopyFree, CopyKeepsStateAndFreeClears) {
  Desc a, b, c;
  ASSERT_EQ(create1(&a.h, DFTI_DOUBLE, DFTI_COMPLEX, 5), 0);
  ASSERT_EQ(DftiSetValue(a.h, DFTI_BACKWARD_SCALE, 0.2), 0);
  ASSERT_EQ(DftiCopyDescriptor(a.h, &b.h), 0);
  int s = 0;
  EXPECT_EQ(DftiGetValue(b.h, DFTI_COMMIT_STATUS, &s), 0);
  EXPECT_EQ(s, DFTI_UNCOMMITTED);
  double sc = 0;
  EXPECT_EQ(DftiGetValue(b.h, DFTI_BACKWARD_SCALE, &sc), 0);
  EXPECT_EQ(sc, 0.2);
  ASSERT_EQ(DftiCommitDescriptor(a.h), 0);
  ASSERT_EQ(DftiCopyDescriptor(a.h, &c.h), 0);
  EXPECT_EQ(DftiGetValue(c.h, DFTI_COMMIT_STATUS, &s), 0);
  EXPECT_EQ(s, DFTI_COMMITTED);
  // The copy computes on its own plan, also after the source is gone.
  DftiFreeDescriptor(&a.h);
  std::vector<std::complex<double>> x(5, {1.0, 0.0});
  ASSERT_EQ(DftiComputeForward(c.h, x.data()), 0);
  EXPECT_NEAR(x[0].real(), 5.0, 1e-12);
  EXPECT_NEAR(std::abs(x[1]), 0.0, 1e-12);

  Handle out = nullptr, none = nullptr;
  EXPECT_EQ(DftiCopyDescriptor(none, &out), 5);
  EXPECT_EQ(DftiCopyDescriptor(c.h, nullptr), 3);
  EXPECT_EQ(dfti_copy_descriptor_external(nullptr, &out), 3);
  EXPECT_EQ(DftiFreeDescriptor(nullptr), 3);
  EXPECT_EQ(DftiFreeDescriptor(&none), 5);
  Handle h = nullptr;
  ASSERT_EQ(create1(&h, DFTI_SINGLE, DFTI_REAL, 7), 0);
  EXPECT_EQ(dfti_free_descriptor_external_(&h), 0);
  EXPECT_EQ(h, nullptr);
}

// ---- Commit --------------------------------------------------------------------

TEST(DftiCommit, RealInPlaceLayoutPatterns) {
  Desc d;
  ASSERT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_REAL, 16), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  EXPECT_EQ(DftiCommitDescriptor(d.h), 0);   // one transform, zero offsets
  ASSERT_EQ(DftiSetValue(d.h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(2)), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_INPUT_DISTANCE, nxl_int(10)), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_OUTPUT_DISTANCE, nxl_int(10)), 0);
  EXPECT_EQ(DftiCommitDescriptor(d.h), 3);
  int s = 0;
  EXPECT_EQ(DftiGetValue(d.h, DFTI_COMMIT_STATUS, &s), 0);
  EXPECT_EQ(s, DFTI_UNCOMMITTED);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_INPUT_DISTANCE, nxl_int(18)), 0);   // pattern (b): 18 = 2 * 9
  ASSERT_EQ(DftiSetValue(d.h, DFTI_OUTPUT_DISTANCE, nxl_int(9)), 0);
  EXPECT_EQ(DftiCommitDescriptor(d.h), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_INPUT_DISTANCE, nxl_int(9)), 0);    // pattern (a)
  ASSERT_EQ(DftiSetValue(d.h, DFTI_OUTPUT_DISTANCE, nxl_int(18)), 0);
  EXPECT_EQ(DftiCommitDescriptor(d.h), 0);
  nxl_int is[2] = {2, 1}, os[2] = {3, 1};   // offsets match neither pattern
  ASSERT_EQ(DftiSetValue(d.h, DFTI_INPUT_STRIDES, is), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_OUTPUT_STRIDES, os), 0);
  EXPECT_EQ(DftiCommitDescriptor(d.h), 3);

  // Two dimensions: padded rows (pattern (b) for forward).
  Desc m;
  nxl_int lens[2] = {6, 8};   // C order: 6 rows of 8
  ASSERT_EQ(DftiCreateDescriptor(&m.h, DFTI_SINGLE, DFTI_REAL, 2, lens), 0);
  ASSERT_EQ(DftiSetValue(m.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  nxl_int ris[3] = {0, 10, 1}, cos_[3] = {0, 5, 1};
  ASSERT_EQ(DftiSetValue(m.h, DFTI_INPUT_STRIDES, ris), 0);
  ASSERT_EQ(DftiSetValue(m.h, DFTI_OUTPUT_STRIDES, cos_), 0);
  EXPECT_EQ(DftiCommitDescriptor(m.h), 0);
  nxl_int bad[3] = {0, 8, 1};
  ASSERT_EQ(DftiSetValue(m.h, DFTI_INPUT_STRIDES, bad), 0);
  EXPECT_EQ(DftiCommitDescriptor(m.h), 3);
}

TEST(DftiCommit, ThreadCountAndFallbackBackends) {
  Desc d;
  ASSERT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 32), 0);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  EXPECT_EQ(d.h->nthreads, nxl_serv_domain_get_max_threads(2));
  nxl_int v = 0;
  EXPECT_EQ(DftiGetValue(d.h, DFTI_THREAD_LIMIT, &v), 0);
  EXPECT_EQ(v, std::min<nxl_int>(d.h->nthreads, nxl_serv_domain_get_max_threads(2)));
  ASSERT_EQ(DftiSetValue(d.h, DFTI_THREAD_LIMIT, nxl_int(3)), 0);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  EXPECT_EQ(d.h->nthreads, 3);

  // A large prime goes to the Bluestein backend (1-D) ...
  Desc p;
  ASSERT_EQ(DftiCreateDescriptor_d_1d(&p.h, DFTI_DOUBLE, DFTI_COMPLEX, 1, nxl_int(263)), 0);
  ASSERT_EQ(DftiCommitDescriptor(p.h), 0);
  EXPECT_NE(std::string(nxl_dft_dfti_committed_backend(p.h)).find("bkd_c2c_1d_bluestein_d"), std::string::npos);
  Desc rp;
  ASSERT_EQ(DftiCreateDescriptor_s_1d(&rp.h, DFTI_SINGLE, DFTI_REAL, 1, nxl_int(269)), 0);
  ASSERT_EQ(DftiCommitDescriptor(rp.h), 0);
  EXPECT_NE(std::string(nxl_dft_dfti_committed_backend(rp.h)).find("bkd_r2c_1d_bluestein_s"), std::string::npos);
  // ... and an odd 5-D shape to the multi-dimensional default.
  Desc md;
  nxl_int lens[5] = {3, 5, 2, 3, 7};
  ASSERT_EQ(DftiCreateDescriptor(&md.h, DFTI_DOUBLE, DFTI_COMPLEX, 5, lens), 0);
  ASSERT_EQ(DftiCommitDescriptor(md.h), 0);
  EXPECT_STREQ(nxl_dft_dfti_committed_backend(md.h), "nxl_dft_bkd_c2c_md_default_d");
  // Split storage: the number of arrays follows placement.
  ASSERT_EQ(DftiSetValue(md.h, DFTI_COMPLEX_STORAGE, DFTI_REAL_REAL), 0);
  ASSERT_EQ(DftiCommitDescriptor(md.h), 0);
  EXPECT_EQ(md.h->narrays, 2);
  EXPECT_STREQ(nxl_dft_dfti_committed_backend(md.h), "nxl_dft_bkd_cr2cr_md");
  ASSERT_EQ(DftiSetValue(md.h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  ASSERT_EQ(DftiCommitDescriptor(md.h), 0);
  EXPECT_EQ(md.h->narrays, 4);
  // Real two-dimensional transforms take the packed formats (the default CCS).
  Desc rm;
  nxl_int l2[2] = {4, 4};
  ASSERT_EQ(DftiCreateDescriptor(&rm.h, DFTI_DOUBLE, DFTI_REAL, 2, l2), 0);
  EXPECT_EQ(DftiCommitDescriptor(rm.h), 0);
  ASSERT_EQ(DftiSetValue(rm.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  EXPECT_EQ(DftiCommitDescriptor(rm.h), 3);   // in place, the dense strides do not fit
  ASSERT_EQ(DftiSetValue(rm.h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  EXPECT_EQ(DftiCommitDescriptor(rm.h), 0);
}

// ---- Compute checks ---------------------------------------------------------------

TEST(DftiCompute, ArgumentChecks) {
  Desc d;
  ASSERT_EQ(create1(&d.h, DFTI_DOUBLE, DFTI_COMPLEX, 8), 0);
  std::vector<std::complex<double>> x(8), y(8);
  EXPECT_EQ(DftiComputeForward(d.h, x.data()), 2);   // never committed
  EXPECT_EQ(DftiComputeBackward(nullptr, x.data()), 5);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  EXPECT_EQ(DftiComputeForward(d.h, nullptr, y.data()), 3);
  EXPECT_EQ(DftiComputeForward(d.h, x.data(), static_cast<void *>(nullptr)), 3);
  EXPECT_EQ(DftiComputeForward(d.h, x.data(), y.data()), 0);
  // Fortran kinds: an out-of-place descriptor through a one-array kind.
  EXPECT_EQ(dfti_compute_forward_z(&d.h, x.data()), 3);
  EXPECT_EQ(dfti_compute_backward_zz(&d.h, x.data(), y.data()), 0);
  EXPECT_EQ(dfti_compute_forward_dddd(&d.h, x.data(), y.data(), x.data(), y.data()), 3);
  EXPECT_EQ(dfti_compute_forward_zz(nullptr, x.data(), y.data()), 5);
  Handle none = nullptr;
  EXPECT_EQ(dfti_compute_forward_zz_(&none, x.data(), y.data()), 5);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_FORWARD_SCALE, 2.0), 0);
  EXPECT_EQ(dfti_compute_forward_zz(&d.h, x.data(), y.data()), 2);
  // Split storage out of place takes four arrays.
  ASSERT_EQ(DftiSetValue(d.h, DFTI_COMPLEX_STORAGE, DFTI_REAL_REAL), 0);
  ASSERT_EQ(DftiCommitDescriptor(d.h), 0);
  std::vector<double> a(8, 1.0), b(8), c(8), e(8);
  EXPECT_EQ(DftiComputeForward(d.h, a.data(), b.data(), c.data(), static_cast<void *>(nullptr)), 3);
  EXPECT_EQ(dfti_compute_forward_dddd(&d.h, a.data(), b.data(), c.data(), e.data()), 0);
  EXPECT_NEAR(c[0], 16.0, 1e-12);   // forward scale 2
  EXPECT_NEAR(e[0], 0.0, 1e-12);
  EXPECT_EQ(dfti_compute_backward_dd(&d.h, a.data(), b.data()), 3);
}

TEST(DftiCompute, CallDescription) {
  Desc d;
  nxl_int lens[2] = {4, 8};
  ASSERT_EQ(DftiCreateDescriptor(&d.h, DFTI_SINGLE, DFTI_REAL, 2, lens), 0);
  char buf[512];
  alignas(64) static float arr[64];
  nxl::dft::describe_call(d.h, 1, arr, nullptr, buf, sizeof buf);
  std::string s = buf;
  EXPECT_EQ(s.rfind("FFT(srfi8x4,pack:ccs,desc:0x", 0), 0u) << s;
  EXPECT_EQ(s.back(), ')');
  ASSERT_EQ(DftiSetValue(d.h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_BACKWARD_SCALE, 0.25), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_WORKSPACE, DFTI_AVOID), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_DESTROY_INPUT, DFTI_ALLOW), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(3)), 0);
  ASSERT_EQ(DftiSetValue(d.h, DFTI_INPUT_DISTANCE, nxl_int(40)), 0);
  nxl_int os[3] = {0, 5, 1};
  ASSERT_EQ(DftiSetValue(d.h, DFTI_OUTPUT_STRIDES, os), 0);
  nxl::dft::describe_call(d.h, 0, arr + 1, arr, buf, sizeof buf);
  s = buf;
  EXPECT_EQ(s.rfind("FFT(srbo8x4:8:5v3,bScale:0.25,wSpace:avoid,unaligned_input,desc:0x", 0), 0u) << s;
  EXPECT_NE(s.find(",destruct:allow)"), std::string::npos) << s;
}

}  // namespace
