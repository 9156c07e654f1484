// The AVX-512 micro-kernels, built with this path's flags.
#include "blas/avx512/l3_ukernels.cpp"
