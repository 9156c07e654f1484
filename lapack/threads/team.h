// The thread-team layer of the threaded factorizations.
//
// A team is a set of OpenMP threads that share one context (size, stop flag,
// the first numerical failure, a shared work area from the memory manager)
// and run a task graph whose tasks are listed in a topological order. Each
// member claims the next task of the list with one atomic increment and waits
// (spinning, then yielding) until the task's inputs are complete. Since every
// input of a task comes from a task earlier in the list, and that task was
// claimed by a member that is already running it, no wait can be circular:
// the graph runs without locks and without a central scheduler, and the order
// of the list decides the look-ahead.
//
// Two graphs use the layer:
//   - cdag1d: a one-dimensional graph over the panels of LU. Panel k's
//     factorization waits for the update of its columns by panel k-1; the
//     updates by panel k (column chunks of the trailing matrix) wait for the
//     factorization of panel k and for the previous update of their columns.
//     nb_dist gives the panel widths.
//   - dag1st: a graph over the tiles of one triangle for Cholesky: potrf of a
//     diagonal tile, trsm of the tiles below (or right of) it, and the
//     syrk/gemm updates of the trailing tiles.
#ifndef NXL_LAPACK_THREADS_TEAM_H
#define NXL_LAPACK_THREADS_TEAM_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <omp.h>
#include "nxl_types.h"

namespace nxl {
namespace lapack {

using tidx = nxl_int;

// A counter alone on its cache line, so that members polling different
// counters do not disturb each other.
struct alignas(64) team_counter {
  std::atomic<tidx> v;
  char pad[64 - sizeof(std::atomic<tidx>)];
};

// ---------------------------------------------------------------------------
// Team context.
struct thread_team_ctxt {
  int nthreads = 1;                    // team size
  std::atomic<int> stop{0};            // set to end every member's loop
  std::atomic<int> stopped{0};         // the progress function asked to stop
  std::atomic<tidx> info{0};           // first numerical failure (0: none)
  void *work = nullptr;                // shared work area (alignment 64)
  size_t work_bytes = 0;
};

// Sets up a team of `nthreads` with a shared work area of `work_bytes`.
// Returns 0, or 1089 when the memory manager has no room (nothing is held).
int thread_team_ctxt_init(thread_team_ctxt *c, int nthreads, size_t work_bytes);
// Releases the work area.
void thread_team_ctxt_destroy(thread_team_ctxt *c);
// Records a numerical failure, keeping the smallest positive one.
void thread_team_note_info(thread_team_ctxt *c, tidx info);
// Waits until counter >= target; false when the team was stopped meanwhile.
bool thread_team_wait(const thread_team_ctxt *c, const team_counter &counter, tidx target);

// Runs body(member) on every member: an OpenMP team of c->nthreads, or the
// calling thread alone for a team of one.
template <class F> void thread_team_run(thread_team_ctxt *c, F &&body) {
  if (c->nthreads <= 1) {
    body(0);
    return;
  }
#pragma omp parallel num_threads(c->nthreads)
  body(omp_get_thread_num());
}

// A task of a graph: its kind and up to three indices.
struct team_task {
  int kind;
  int pad;
  tidx a, b, c;
};

// Every member claims the tasks of the list in order and runs
// body(member, task) on each, until the list is exhausted, the team is
// stopped, or body returns false (it was stopped while waiting).
template <class F>
void thread_team_run_tasks(thread_team_ctxt *c, team_counter *next, const team_task *tasks, tidx ntasks, F &&body) {
  thread_team_run(c, [&](int me) {
    for (;;) {
      if (c->stop.load(std::memory_order_relaxed)) return;
      tidx q = next->v.fetch_add(1);
      if (q >= ntasks || !body(me, tasks[q])) return;
    }
  });
}

// ---------------------------------------------------------------------------
// Panel widths of LU. Columns 0..min(m,n) are cut into the factored panels,
// the columns beyond them (wide matrices) into blocks that are only updated.
struct nb_dist {
  tidx m = 0, n = 0, mn = 0;
  tidx nb = 0;          // nominal panel width
  tidx npanels = 0;     // panels that are factored
  tidx nblocks = 0;     // panels plus the update-only blocks
  tidx *start = nullptr;  // nblocks + 1 column boundaries
};
// Distributes the columns for nominal width nb: full panels, with the last
// panels of the factored part halved (the end of LU is bound by the panel
// factorizations, which narrower panels shorten). Returns 0 or 1089.
int nb_dist_init(nb_dist *d, tidx m, tidx n, tidx nb);
tidx nb_dist_get_nb(const nb_dist *d);
// Column offset and width of panel (or block) k.
void nb_dist_get_panel(const nb_dist *d, tidx k, tidx *j0, tidx *jb);
void nb_dist_destroy(nb_dist *d);

// ---------------------------------------------------------------------------
// One-dimensional graph of LU over the panels of an nb_dist.
enum : int { kCdagFactor = 0, kCdagUpdate = 1 };
struct cdag1d {
  const nb_dist *dist = nullptr;
  // level[b]: panels applied to block b; a factored panel k has level k + 1.
  team_counter *level = nullptr;
  team_counter *next = nullptr;  // next task to claim
  team_task *tasks = nullptr;
  tidx ntasks = 0;
};
// Bytes of shared work area the graph needs for this distribution and team.
size_t cdag1d_datasize(const nb_dist *d, int nthreads);
// Lays the graph out in `area` (cdag1d_datasize bytes, alignment 64) and
// lists its tasks: F(0), then per panel k the update of panel k+1's columns,
// the first chunk of the rest, F(k+1), the other chunks. A team of one gets one
// chunk per step; larger teams get enough chunks to share the update.
void cdag1d_team_init(cdag1d *g, const nb_dist *d, int nthreads, void *area);
void cdag1d_destroy(cdag1d *g);

// ---------------------------------------------------------------------------
// Tile graph of Cholesky over one triangle of order n in tiles of order t.
enum : int { kDagPotrf = 0, kDagTrsm = 1, kDagSyrk = 2, kDagGemm = 3 };
struct dag1st {
  tidx n = 0, t = 0, nt = 0;
  // done[tile(i, j)], i >= j: updates applied (0..j), j + 1 once final.
  team_counter *done = nullptr;
  team_counter *next = nullptr;
  team_task *tasks = nullptr;
  tidx ntasks = 0;
};
// Initialises the header for order n and tile order t (nt tiles a side).
void dag1st_init(dag1st *g, tidx n, tidx t);
// Bytes of the data area of the graph as initialised.
size_t dag1st_dagdatasize(const dag1st *g);
// Largest number of tiles a side worth scheduling for a team of `threads`:
// beyond it the tasks get too small for the matrix-product kernels.
tidx dag1st_maxtiles(const dag1st *g, int threads);
// The bound for a team that turned out to have one member: a few large tiles.
tidx dag1st_maxtilesreduce(const dag1st *g, tidx maxtiles);
// Lays the graph out in `area` and lists its tasks in a topological order
// with a look-ahead of one step. Returns the number of tasks.
tidx dag1st_committiles(dag1st *g, void *area);
// Index of tile (i, j), i >= j, in the done array.
inline tidx dag1st_tile(const dag1st *g, tidx i, tidx j) { return i + j * g->nt - j * (j + 1) / 2; }

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_THREADS_TEAM_H
