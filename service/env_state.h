// Process-wide thread settings shared by the environment reader and the
// thread-count getter. Each is -1 while unset; they are read without locks.
#ifndef NXL_ENV_STATE_H
#define NXL_ENV_STATE_H

#include <atomic>

namespace nxl::env {

extern std::atomic<int> __nxl_num_threads;
extern std::atomic<int> __nxl_blas_num_threads;
extern std::atomic<int> __nxl_fft_num_threads;
extern std::atomic<int> __nxl_vml_num_threads;
extern std::atomic<int> __nxl_pardiso_num_threads;
extern std::atomic<int> __nxl_dynamic;
extern std::atomic<int> __nxl_num_stripes;
extern std::atomic<int> __omp_num_threads;
extern std::atomic<int> __nxl_mpi_ppn;
extern std::atomic<int> __nxl_mpi_thread_level;
extern std::atomic<int> __mpi_SAFETY_BLACS;

// Topology results of the one-time probe.
extern std::atomic<int> __N_Logical_Cores;
extern std::atomic<int> __N_Physical_Cores;
extern std::atomic<int> __N_CPU_Packages;
extern std::atomic<int> __N_Cores_per_Packages;
extern std::atomic<int> __HT;

// The count slot of a domain (0 ALL, 1 BLAS, 2 FFT, 3 VML, 4 PARDISO).
std::atomic<int> &domain_setting(int domain);

// Runs the one-time read of the environment and the topology probe unless
// done already (double-checked under the environment lock).
void ensure_read();

// The topology probe (threads.cpp), run once by ensure_read.
void probe_topology();

}  // namespace nxl::env

#endif  // NXL_ENV_STATE_H
