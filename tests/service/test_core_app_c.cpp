// An application that defines a C xerbla, linked against libnxl.so: reports
// that reach the library's xerbla_ arrive in the application's xerbla, and a
// routine that calls back into the library does not loop.
#include <gtest/gtest.h>

#include <string>

#include "nxl_service.h"

// The test tree builds with hidden visibility; an application's routines are
// visible, as they are by default.
#define APP_ROUTINE __attribute__((visibility("default")))

namespace {
std::string got_name;
nxl_int got_info = 0;
int got_len = 0;
int depth = 0;
}  // namespace

extern "C" APP_ROUTINE void xerbla(const char *name, const nxl_int *info, int len) {
  got_name.assign(name, static_cast<size_t>(len));
  got_info = *info;
  got_len = len;
  if (++depth == 1 && *info == 99) xerbla_(name, info, len);  // back into the library
}

TEST(ApplicationRoutines, CXerblaReceivesReports) {
  nxl_int info = 2;
  xerbla_("ZHEMM", &info, 5);
  EXPECT_EQ(got_name, "ZHEMM");
  EXPECT_EQ(got_info, 2);
  EXPECT_EQ(got_len, 5);

  depth = 0;
  info = 99;
  testing::internal::CaptureStdout();
  xerbla_("DTRSM", &info, 5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nOrtex NXL ERROR: Parameter 99 was incorrect on entry to DTRSM.\n");
  EXPECT_EQ(depth, 1);
}

TEST(ApplicationRoutines, DefaultProgressGoesOn) {
  nxl_int thread = 0, step = 100;
  EXPECT_EQ(nxl_progress_(&thread, &step, "ZPOTRF", 6), 0);
  EXPECT_EQ(nxl_progress(&thread, &step, "ZPOTRF", 6), 0);
}
