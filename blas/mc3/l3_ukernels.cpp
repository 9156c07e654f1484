// The SSE2 micro-kernels, built with this path's flags.
#include "blas/def/l3_ukernels.cpp"
