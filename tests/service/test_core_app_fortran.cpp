// An application that defines its own xerbla_ (with the hidden name length
// of a Fortran routine) and nxl_progress_, linked against libnxl.so: every
// report and every progress call of the library must arrive here.
#include <gtest/gtest.h>
#include <stddef.h>

#include <string>

// A Fortran program sees no C header: declare what this one calls.
typedef long long nxl_int;
extern "C" void xerbla(const char *name, const nxl_int *info, int len);
extern "C" int nxl_progress(const nxl_int *thread, const nxl_int *step, const char *stage, nxl_int len);

// The test tree builds with hidden visibility; an application's routines are
// visible, as they are by default.
#define APP_ROUTINE __attribute__((visibility("default")))

namespace {
std::string got_name;
nxl_int got_info = 0;
size_t got_len = 0;
int got_calls = 0;
nxl_int got_step = -1;
}  // namespace

extern "C" APP_ROUTINE void xerbla_(const char *name, const nxl_int *info, size_t len) {
  got_name.assign(name, len);
  got_info = *info;
  got_len = len;
  ++got_calls;
}

extern "C" APP_ROUTINE int nxl_progress_(const nxl_int *thread, const nxl_int *step, const char *stage, nxl_int len) {
  got_step = *step;
  return *step > 3;
}

TEST(ApplicationRoutines, FortranXerblaReceivesNameInfoAndLength) {
  nxl_int info = 4;
  // The library's own C spelling forwards to the application's routine.
  xerbla("DGEMM ", &info, 5);
  EXPECT_EQ(got_calls, 1);
  EXPECT_EQ(got_name, "DGEMM");
  EXPECT_EQ(got_info, 4);
  EXPECT_EQ(got_len, 5u);
}

TEST(ApplicationRoutines, ProgressReachesApplication) {
  nxl_int thread = 0, step = 2;
  EXPECT_EQ(nxl_progress(&thread, &step, "DGETRF", 6), 0);
  EXPECT_EQ(got_step, 2);
  step = 5;
  EXPECT_EQ(nxl_progress(&thread, &step, "DGETRF", 6), 1);
  EXPECT_EQ(got_step, 5);
}
