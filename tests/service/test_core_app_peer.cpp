// A program that also has another LAPACK library in its global scope, ahead
// of libnxl.so, and no error routine of its own: reports keep the library's
// default text instead of going to the other library's xerbla_ (which would
// end the process).
#include <gtest/gtest.h>

#include "nxl_service.h"

TEST(ApplicationRoutines, OtherLibrarysXerblaIsNotTheApplications) {
  nxl_int info = 3;
  testing::internal::CaptureStdout();
  xerbla("DGETRF", &info, 6);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nOrtex NXL ERROR: Parameter 3 was incorrect on entry to DGETRF.\n");
}
