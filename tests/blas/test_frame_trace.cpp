// The trace line of the Fortran layer: one line per call with the upper-case
// routine name and its arguments formatted from their types (flags %c,
// INTEGERs dereferenced, everything else an address), also for a call whose
// check failed and for a call that came through CBLAS.
#include <gtest/gtest.h>
#include <cstdio>
#include <regex>
#include <string>

static std::string run(const char *env) {
  std::string cmd = std::string(env) + " " FRAME_DRIVER " 2>&1";
  FILE *p = popen(cmd.c_str(), "r");
  std::string out;
  char buf[4096];
  while (p && fgets(buf, sizeof buf, p)) out += buf;
  if (p) pclose(p);
  return out;
}

TEST(FrameTrace, OneLinePerCallWithTypedArguments) {
  const std::string out = run("NXL_VERBOSE=1");
  const std::string P = "0x[0-9a-f]+";
  auto has = [&](const std::string &re) { return std::regex_search(out, std::regex(re)); };
  EXPECT_TRUE(has("NXL_VERBOSE DDOT\\(5," + P + ",1," + P + ",2\\) ")) << out;
  EXPECT_TRUE(has("NXL_VERBOSE DAXPY\\(5," + P + "," + P + ",1," + P + ",1\\) ")) << out;
  EXPECT_TRUE(has("NXL_VERBOSE IDAMAX\\(5," + P + ",1\\) ")) << out;
  EXPECT_TRUE(has("NXL_VERBOSE DROTG\\(" + P + "," + P + "," + P + "," + P + "\\) ")) << out;
  EXPECT_TRUE(has("NXL_VERBOSE ZDOTC\\(2," + P + ",1," + P + ",1\\) ")) << out;
  EXPECT_TRUE(has("NXL_VERBOSE DGEMM\\(N,T,2,2,4," + P + "," + P + ",2," + P + ",2," + P + "," + P + ",2\\) ")) << out;
  // The failed call is traced too (and reported).
  EXPECT_TRUE(has("NXL_VERBOSE DGEMM\\(X,N,-1,2,4,")) << out;
  EXPECT_TRUE(has("Parameter 1 was incorrect on entry to DGEMM")) << out;
  // CBLAS traces under the Fortran name, with the operands exchanged.
  EXPECT_TRUE(has("NXL_VERBOSE DGEMM\\(N,N,2,2,4," + P + "," + P + ",2," + P + ",4,")) << out;
  // Results are unchanged by tracing.
  EXPECT_NE(out.find("ddot=15"), std::string::npos) << out;
}

TEST(FrameTrace, SilentWhenOff) {
  const std::string out = run("NXL_VERBOSE=0");
  EXPECT_EQ(out.find("NXL_VERBOSE"), std::string::npos) << out;
  EXPECT_NE(out.find("Parameter 1 was incorrect on entry to DGEMM"), std::string::npos) << out;
}
