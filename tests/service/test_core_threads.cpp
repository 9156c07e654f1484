// Environment reader, thread settings and their one-time read (in fresh
// processes), per-thread counts, topology, and the partition helpers.
#include <gtest/gtest.h>
#include <omp.h>
#include <stdlib.h>

#include <string>
#include <thread>
#include <vector>

#include "nxl_service.h"
#include "service/core_spawn.h"
#include "service/serv_core.h"

namespace {

spawn_result threads_with(std::vector<std::string> env, const char *cmd = "threads",
                          const char *arg = nullptr) {
  std::vector<std::string> args = {cmd};
  if (arg) args.push_back(arg);
  return run_fresh(SVC_CORE_DRIVER, args, env);
}

}  // namespace

TEST(Environment, BoundedReaderAndEnvMode) {
  setenv("NXL_TEST_VALUE", "abcdef", 1);
  char buf[8];
  EXPECT_EQ(nxl_serv_getenv("NXL_TEST_VALUE", buf, 8), 6);
  EXPECT_STREQ(buf, "abcdef");
  EXPECT_EQ(nxl_serv_getenv("NXL_TEST_VALUE", buf, 6), -6);  // does not fit
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(nxl_serv_getenv("NXL_TEST_ABSENT", buf, 8), 0);
  EXPECT_STREQ(buf, "");
  std::string huge(5000, 'q');
  setenv("NXL_TEST_VALUE", huge.c_str(), 1);
  std::vector<char> big(6000);
  EXPECT_EQ(nxl_serv_getenv("NXL_TEST_VALUE", big.data(), 6000), 4096);  // length ceiling

  setenv("LANG", "C", 1);
  nxl_serv_set_envmode_variable(1);
  EXPECT_EQ(nxl_serv_get_envmode_variable(), 1);
  EXPECT_EQ(nxl_serv_getenv("NXL_TEST_VALUE", big.data(), 6000), 0);
  EXPECT_EQ(nxl_serv_getenv("LANG", buf, 8), 1);
  nxl_serv_set_envmode_variable(0);
  unsetenv("NXL_TEST_VALUE");
}

TEST(Environment, ThreadCountParsing) {
  // Digits only; anything else means a serial run; "0" leaves it unset.
  // (dynamic off: it would cap the counts at the machine's physical cores)
  EXPECT_EQ(field(threads_with({"NXL_NUM_THREADS=4", "NXL_DYNAMIC=false"}).out, "max"), 4);
  EXPECT_EQ(field(threads_with({"NXL_NUM_THREADS= 4", "NXL_DYNAMIC=false"}).out, "max"), 1);
  EXPECT_EQ(field(threads_with({"NXL_NUM_THREADS=-3", "NXL_DYNAMIC=false"}).out, "max"), 1);
  auto r = threads_with({"NXL_NUM_THREADS=0", "OMP_NUM_THREADS=3", "NXL_DYNAMIC=false"});
  EXPECT_EQ(field(r.out, "max"), 3);
  r = threads_with({"OMP_NUM_THREADS=2,1", "NXL_DYNAMIC=false"});  // a list is not digits
  EXPECT_EQ(field(r.out, "omp"), 2);
  // An over-long value reads as absent.
  r = threads_with({"NXL_NUM_THREADS=" + std::string(300, '5'), "OMP_NUM_THREADS=2", "NXL_DYNAMIC=false"});
  EXPECT_EQ(field(r.out, "max"), 2);
  // The API wins before and after the first query.
  EXPECT_EQ(field(threads_with({"NXL_NUM_THREADS=2", "NXL_DYNAMIC=false"}, "threads-api", "8").out, "max"), 8);
  EXPECT_EQ(field(threads_with({"NXL_NUM_THREADS=2", "NXL_DYNAMIC=false"}, "threads-after", "8").out, "max"), 8);
}

TEST(Environment, DomainListDynamicAndStripes) {
  auto r = threads_with({"NXL_DOMAIN_NUM_THREADS=NXL_DOMAIN_ALL=2, NXL_DOMAIN_BLAS=4",
                         "NXL_DYNAMIC=FALSE"});
  EXPECT_EQ(field(r.out, "max"), 2);
  EXPECT_EQ(field(r.out, "blas"), 4);
  EXPECT_EQ(field(r.out, "fft"), 2);
  EXPECT_EQ(field(r.out, "dynamic"), 0);
  r = threads_with({"NXL_DOMAIN_NUM_THREADS='NXL_DOMAIN_FFT 3;NXL_DOMAIN_VML=x:NXL_DOMAIN_PARDISO=0;"
                    "NXL_DOMAIN_BOGUS=7'",
                    "NXL_NUM_THREADS=5", "NXL_DYNAMIC=false"});
  EXPECT_EQ(field(r.out, "fft"), 3);
  EXPECT_EQ(field(r.out, "vml"), 1);  // a non-digit value counts as 1
  EXPECT_EQ(field(r.out, "pardiso"), 5);
  EXPECT_EQ(field(r.out, "max"), 5);
  // NXL_NUM_THREADS is read first and so wins over NXL_DOMAIN_ALL.
  r = threads_with({"NXL_NUM_THREADS=3", "NXL_DOMAIN_NUM_THREADS=NXL_DOMAIN_ALL=2", "NXL_DYNAMIC=false"});
  EXPECT_EQ(field(r.out, "max"), 3);

  EXPECT_EQ(field(threads_with({"NXL_DYNAMIC=False"}).out, "dynamic"), 1);
  EXPECT_EQ(field(threads_with({"NXL_DYNAMIC= \"false\""}).out, "dynamic"), 0);
  EXPECT_EQ(field(threads_with({}).out, "dynamic"), 1);
  EXPECT_EQ(field(threads_with({"NXL_NUM_STRIPES=6"}).out, "stripes"), 6);
  EXPECT_EQ(field(threads_with({"NXL_NUM_STRIPES=6a"}).out, "stripes"), 0);
}

TEST(Environment, DynamicCapsAndMessagePassingRules) {
  auto r = threads_with({"NXL_NUM_THREADS=100000"});
  EXPECT_EQ(field(r.out, "max"), field(r.out, "physical"));  // dynamic caps at physical cores
  r = threads_with({"NXL_NUM_THREADS=100000", "NXL_DYNAMIC=false"});
  EXPECT_EQ(field(r.out, "max"), 100000);
  // Inside a parallel region a dynamic query gets one thread.
  EXPECT_EQ(field(threads_with({}, "parallel").out, "inside"), 1);
  EXPECT_EQ(field(threads_with({"NXL_DYNAMIC=false", "NXL_NUM_THREADS=3"}, "parallel").out, "inside"), 3);

  // Processes per node.
  EXPECT_EQ(field(threads_with({"NXL_MPI_PPN=4"}).out, "ppn"), 4);
  EXPECT_EQ(field(threads_with({"NXL_MPI_PPN=4x", "MPI_LOCALNRANKS=3"}).out, "ppn"), 3);
  EXPECT_EQ(field(threads_with({"O_MPI_PIN_MAPPING=6:0 0,1 1"}).out, "ppn"), 6);
  EXPECT_EQ(field(threads_with({"O_MPI_PIN_MAPPING=6", "OMPI_COMM_WORLD_LOCAL_SIZE=2"}).out, "ppn"), 2);
  EXPECT_EQ(field(threads_with({}).out, "ppn"), -1);
  // Known ppn, no explicit setting, no OMP_NUM_THREADS: thread level < 1 -> 1.
  EXPECT_EQ(field(threads_with({"NXL_MPI_PPN=2"}).out, "max"), 1);
  r = threads_with({"NXL_MPI_PPN=1", "O_MPI_THREAD_LEVEL=3"});
  EXPECT_EQ(field(r.out, "max"), std::min(field(r.out, "physical"), field(r.out, "omp")) < 2
                                     ? 1
                                     : std::min(field(r.out, "physical"), field(r.out, "omp")));
  // An explicit count is not touched by those rules.
  EXPECT_EQ(field(threads_with({"NXL_MPI_PPN=2", "NXL_NUM_THREADS=1"}).out, "max"), 1);
}

TEST(ThreadControls, LocalCountDomainsAndExportedForms) {
  // Settings made through the exported forms (arguments by address).
  nxl_int n = 3, d = NXL_DOMAIN_FFT, zero = 0, bad = 7, neg = -1;
  EXPECT_EQ(nxl_domain_set_num_threads(&n, &d), 1);
  EXPECT_EQ(nxl_domain_set_num_threads_(&n, &bad), 0);
  EXPECT_EQ(nxl_domain_set_num_threads(&neg, &d), 0);
  EXPECT_EQ(nxl_domain_get_max_threads(&d), nxl_get_dynamic() ? std::min(3, nxl_serv_get_nphysicalcores()) : 3);
  EXPECT_EQ(nxl_domain_set_num_threads(&zero, &d), 1);  // 0: the global count applies again
  EXPECT_EQ(nxl_domain_get_max_threads_(&d), nxl_get_max_threads());

  nxl_int off = 0, on = 1;
  nxl_set_dynamic(&off);
  EXPECT_EQ(nxl_get_dynamic_(), 0);
  nxl_int five = 5;
  nxl_set_num_threads_(&five);
  EXPECT_EQ(nxl_get_max_threads(), 5);
  nxl_set_num_threads(&zero);  // ignored
  EXPECT_EQ(nxl_get_max_threads(), 5);

  // A local count beats everything, also inside a parallel region with
  // dynamic on, and belongs to the calling thread only.
  nxl_set_dynamic(&on);
  nxl_int three = 3;
  EXPECT_EQ(nxl_set_num_threads_local(&three), 0);
  EXPECT_EQ(nxl_get_max_threads(), 3);
  int inside = -1;
#pragma omp parallel num_threads(2)
  {
#pragma omp master
    inside = nxl_serv_get_max_threads();
  }
  EXPECT_EQ(inside, 3);
  int other = -1;
  std::thread([&] { other = nxl_serv_get_max_threads(); }).join();
  EXPECT_EQ(other, std::min(5, nxl_serv_get_nphysicalcores()));
  EXPECT_EQ(nxl_set_num_threads_local_(&zero), 3);
  nxl_set_dynamic(&off);
  EXPECT_EQ(nxl_get_max_threads(), 5);
}

TEST(Topology, CountsAreConsistent) {
  auto r = run_fresh(SVC_CORE_DRIVER, {"topology"}, {});
  int logical = field(r.out, "logical"), physical = field(r.out, "physical");
  int packages = field(r.out, "packages"), percpu = field(r.out, "percpu");
  EXPECT_EQ(logical, omp_get_num_procs());
  EXPECT_GE(physical, 1);
  EXPECT_LE(physical, logical);
  EXPECT_GE(packages, 1);
  EXPECT_EQ(percpu, physical / packages);
  EXPECT_EQ(field(r.out, "ht"), physical != logical ? 1 : 0);
}

TEST(Partition, PlainAndBlocked) {
  const nxl_int starts[] = {0, 3, 6, 8}, lens[] = {3, 3, 2, 2};
  for (nxl_int t = 0; t < 4; ++t) {
    nxl_int nthr = 4, n = 10, len = -1;
    EXPECT_EQ(nxl_serv_divbythreads(&t, &nthr, &n, &len), starts[t]);
    EXPECT_EQ(len, lens[t]);
  }
  for (nxl_int n : {0, 1, 7, 64, 1001}) {
    for (nxl_int nthr : {1, 2, 3, 8, 13}) {
      for (nxl_int nb : {0, 1, 4, 16}) {
        nxl_int next = 0, next_nb = 0;
        for (nxl_int t = 0; t < nthr; ++t) {
          nxl_int len, lennb;
          EXPECT_EQ(nxl_serv_divbythreads(&t, &nthr, &n, &len), next);
          next += len;
          nxl_int s = nxl_serv_divbythreadsnb(&t, &nthr, &n, &nb, &lennb);
          if (nb > 0 || t == 0) EXPECT_EQ(s, next_nb) << n << " " << nthr << " " << nb;
          if (nb > 0 && t != nthr - 1) EXPECT_EQ(lennb % nb, 0);
          if (nb <= 0 && t > 0) EXPECT_EQ(lennb, 0);
          next_nb += lennb;
        }
        EXPECT_EQ(next, n);
        EXPECT_EQ(next_nb, n);
      }
    }
  }
  nxl_int t = 5, nthr = 4, n = 10, nb = 2, len = 9;
  EXPECT_EQ(nxl_serv_divbythreads(&t, &nthr, &n, &len), 0);
  EXPECT_EQ(len, 0);
  EXPECT_EQ(nxl_serv_divbythreadsnb(&t, &nthr, &n, &nb, &len), 0);
  EXPECT_EQ(len, 0);
  nthr = 1;
  t = 1;
  EXPECT_EQ(nxl_serv_divbythreads(&t, &nthr, &n, &len), 0);
  EXPECT_EQ(len, 0);
}

TEST(Partition, TriangleBalancesWork) {
  for (const char *uplo : {"U", "u", "L"}) {
    for (nxl_int n : {1, 10, 100, 1000}) {
      for (nxl_int nthr : {2, 3, 4, 7}) {
        nxl_int next = 0;
        double total = double(n) * (n + 1) / 2, worst = 0;
        for (nxl_int t = 0; t < nthr; ++t) {
          nxl_int len;
          nxl_int s = nxl_serv_divbythreadstr(&t, &nthr, &n, uplo, &len);
          ASSERT_EQ(s, next);
          ASSERT_GE(len, 0);
          // Elements of rows [s, s+len) of an upper (columns of a lower) triangle.
          double work = 0;
          for (nxl_int j = s; j < s + len; ++j) work += (*uplo == 'L' ? n - j : j + 1);
          worst = std::max(worst, work);
          next = s + len;
        }
        EXPECT_EQ(next, n);
        if (n >= 100) EXPECT_LT(worst, 1.25 * total / nthr + n) << uplo << n << " " << nthr;
      }
    }
  }
}
