// Runs one traced transform: with NXL_VERBOSE=1 the call prints its line.
#include <complex>
#include <cstdio>
#include <cstdlib>

#include "nxl_dfti.h"

int main() {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  nxl_int lens[2] = {4, 8};
  if (DftiCreateDescriptor(&h, DFTI_DOUBLE, DFTI_COMPLEX, 2, lens)) return 1;
  DftiSetValue(h, DFTI_PLACEMENT, DFTI_NOT_INPLACE);
  DftiSetValue(h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(3));
  DftiSetValue(h, DFTI_INPUT_DISTANCE, nxl_int(40));
  DftiSetValue(h, DFTI_OUTPUT_DISTANCE, nxl_int(40));
  DftiSetValue(h, DFTI_FORWARD_SCALE, 0.5);
  DftiSetValue(h, DFTI_THREAD_LIMIT, nxl_int(1));
  if (DftiCommitDescriptor(h)) return 2;
  auto *x = static_cast<std::complex<double> *>(std::aligned_alloc(64, 120 * sizeof(std::complex<double>)));
  auto *y = static_cast<std::complex<double> *>(std::aligned_alloc(64, 120 * sizeof(std::complex<double>)));
  for (int i = 0; i < 120; ++i) x[i] = {1.0 * i, 0.0};
  nxl_int st = DftiComputeForward(h, x, y);
  std::fflush(stdout);
  std::free(x);
  std::free(y);
  DftiFreeDescriptor(&h);
  return st ? 3 : 0;
}
