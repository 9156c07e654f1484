// The exported processor and reproducibility entries, as an application
// linked against libnxl.so sees them (each test runs in its own process).
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "nxl_service.h"

namespace {

std::string name_with(nxl_int len) {
  char buf[64];
  memset(buf, '#', sizeof buf);
  nxl_get_cpu_name(buf, &len);
  return std::string(buf, sizeof buf);
}

}  // namespace

TEST(CpuExports, BothSpellingsAgree) {
  const nxl_int path = nxl_get_code_path();
  EXPECT_TRUE(path == 0 || (path >= 2 && path <= 7)) << path;
  EXPECT_EQ(nxl_get_code_path_(), path);
  EXPECT_EQ(nxl_get_cpu_level_(), nxl_get_cpu_level());
  EXPECT_EQ(nxl_get_cbwr_branch_(), nxl_get_cbwr_branch());
  const nxl_int level = nxl_get_cpu_level();
  EXPECT_TRUE(level >= 0 && level <= 14 && level != 11 && level != 13) << level;
}

TEST(CpuExports, NameIsCutToTheBuffer) {
  nxl_int len = 256;
  char full[256];
  nxl_get_cpu_name_(full, &len);
  ASSERT_GT(strlen(full), 20u);
  EXPECT_EQ(strncmp(full, "Ortex(R) ", 9), 0) << full;
  // Room for 9 characters and the terminator; the rest is untouched.
  std::string cut = name_with(10);
  EXPECT_EQ(cut.substr(0, 9), std::string(full, 9));
  EXPECT_EQ(cut[9], '\0');
  EXPECT_EQ(cut[10], '#');
  EXPECT_EQ(name_with(1)[0], '\0');
  EXPECT_EQ(name_with(1)[1], '#');
  EXPECT_EQ(name_with(0)[0], '#');
  EXPECT_EQ(name_with(-5)[0], '#');
}

TEST(CpuExports, BranchFrozenOnceThePathIsChosen) {
  if (getenv("NXL_CBWR")) GTEST_SKIP() << "NXL_CBWR is set";
  nxl_int compatible = 3;
  EXPECT_EQ(nxl_set_cbwr_branch(&compatible), 0);
  EXPECT_EQ(nxl_get_cbwr_branch(), 3);
  EXPECT_EQ(nxl_get_code_path(), 0);
  nxl_int avx2 = 10, strict = 3 | NXL_CBWR_STRICT_FLAG;
  EXPECT_EQ(nxl_set_cbwr_branch_(&avx2), -8);
  EXPECT_EQ(nxl_set_cbwr_branch_(&strict), -8);
  EXPECT_EQ(nxl_set_cbwr_branch_(&compatible), 0);
  EXPECT_EQ(nxl_get_cbwr_branch(), 3);
}

TEST(CpuExports, SetRejectsUnknownValues) {
  if (getenv("NXL_CBWR")) GTEST_SKIP() << "NXL_CBWR is set";
  nxl_int values[] = {5, 15, 0x20003, 0x100000000LL};
  for (nxl_int v : values) EXPECT_EQ(nxl_set_cbwr_branch(&v), -2) << v;
  EXPECT_EQ(nxl_set_cbwr_branch(nullptr), -2);
  EXPECT_EQ(nxl_get_cbwr_branch(), 1);
}
