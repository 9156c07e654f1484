// Executors of committed descriptors, built on the one-dimensional engine.
//
// A multi-dimensional or batched transform is a sequence of passes; a pass
// runs 1-D transforms along one dimension for every index of the other
// dimensions (and of the batch). One of those other dimensions is handed to
// the engine as its batch ("vector" dimension), the rest are looped over here
// and, when there are enough of them, divided among the committed threads.
//
// Real forward transforms start with an r2c pass along the first dimension
// and continue with c2c passes on the half spectrum; backward transforms of
// rank 2 and above first gather the half spectrum of a transform into a
// buffer made at commit (so the input is never overwritten), then finish with
// a c2r pass along the first dimension. One-dimensional real transforms whose
// storage the engine cannot address directly (the PACK and PERM formats and
// in-place layouts that are not the canonical padded one) go row by row
// through a commit-time buffer.
#ifndef NXL_DFT_BACKENDS_EXEC_H
#define NXL_DFT_BACKENDS_EXEC_H

#include "dft/dfti/descriptor.h"

namespace nxl::dft {

// The normalised working layout. Strides, distances and offsets count
// elements of the array they describe (complex elements for complex data,
// real elements for real data).
struct Layout {
  int rank;
  nxl_int n[kMaxRank], is[kMaxRank], os[kMaxRank];
  nxl_int howmany, idist, odist, ioff, ooff;
};

// How a backend wants its plan made.
struct ExecOptions {
  // Divide the looped indices (outer loops, or whole transforms in the
  // per-transform modes) among threads when there are at least as many as
  // threads; otherwise the engine threads each call.
  bool split_loops = true;
  // Hand the batch to the engine as its vector dimension whenever there is
  // a batch (column-batched layouts), rather than the smallest stride.
  bool batch_as_vector = false;
};

Layout working_layout(const DFTI_DESCRIPTOR *d);

// Build the plan for the descriptor and install it (compute routines, array
// count, commit status). Returns 0, or a status (1 out of memory, 3 an
// unsupported layout).
int commit_complex(DFTI_DESCRIPTOR *d, const BackendRecord *self, const Layout &L, const ExecOptions &o);
int commit_real(DFTI_DESCRIPTOR *d, const BackendRecord *self, const Layout &L, const ExecOptions &o);

// Helpers for the applicability rules of the backends.
bool is_split(const DFTI_DESCRIPTOR *d);         // complex domain with separate re/im arrays
bool real_direct_format(const DFTI_DESCRIPTOR *d);   // CCE or CCS (engine-addressable)
nxl_int total_length(const Layout &L);

}  // namespace nxl::dft

#endif  // NXL_DFT_BACKENDS_EXEC_H
