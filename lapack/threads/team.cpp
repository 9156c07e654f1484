// The thread-team layer: team context, LU panel distribution and panel graph,
// Cholesky tile graph (see team.h).
#include "lapack/threads/team.h"

#include <sched.h>
#include <new>
#include "service/nxl_serv.h"

namespace nxl {
namespace lapack {

namespace {
tidx tmin(tidx a, tidx b) { return a < b ? a : b; }
tidx tmax(tidx a, tidx b) { return a > b ? a : b; }

size_t round64(size_t b) { return (b + 63) & ~size_t(63); }

// Places `count` zeroed counters at `p` and returns them.
team_counter *place_counters(char *p, tidx count) {
  team_counter *c = reinterpret_cast<team_counter *>(p);
  for (tidx i = 0; i < count; ++i) new (&c[i].v) std::atomic<tidx>(0);
  return c;
}
}  // namespace

// ---------------------------------------------------------------------------
// Team context.

int thread_team_ctxt_init(thread_team_ctxt *c, int nthreads, size_t work_bytes) {
  c->nthreads = nthreads < 1 ? 1 : nthreads;
  c->stop.store(0);
  c->stopped.store(0);
  c->info.store(0);
  c->work = nullptr;
  c->work_bytes = 0;
  if (work_bytes > 0) {
    c->work = nxl_serv_allocate(work_bytes, 64);
    if (c->work == nullptr) return 1089;
    c->work_bytes = work_bytes;
  }
  return 0;
}

void thread_team_ctxt_destroy(thread_team_ctxt *c) {
  if (c->work) nxl_serv_deallocate(c->work);
  c->work = nullptr;
  c->work_bytes = 0;
}

void thread_team_note_info(thread_team_ctxt *c, tidx info) {
  if (info <= 0) return;
  tidx cur = c->info.load();
  while ((cur == 0 || info < cur) && !c->info.compare_exchange_weak(cur, info)) {
  }
}

bool thread_team_wait(const thread_team_ctxt *c, const team_counter &counter, tidx target) {
  int spins = 0;
  while (counter.v.load(std::memory_order_acquire) < target) {
    if (c->stop.load(std::memory_order_relaxed)) return false;
    // A short spin covers the usual wait of a few microseconds; after that
    // the core goes to whoever else is runnable (the machine may be shared).
    if (++spins < 200) __builtin_ia32_pause();
    else sched_yield();
  }
  return true;
}

// ---------------------------------------------------------------------------
// Panel widths.

int nb_dist_init(nb_dist *d, tidx m, tidx n, tidx nb) {
  d->m = m;
  d->n = n;
  d->mn = tmin(m, n);
  d->nb = nb < 1 ? 1 : nb;
  d->npanels = 0;
  d->nblocks = 0;
  d->start = nullptr;
  tidx half = d->nb / 2 >= 16 ? d->nb / 2 : d->nb;
  // Upper bound of the block count: every panel halved.
  tidx bound = (d->mn + half - 1) / half + (n - d->mn + d->nb - 1) / d->nb + 2;
  d->start = static_cast<tidx *>(nxl_serv_allocate(sizeof(tidx) * static_cast<size_t>(bound + 1), 64));
  if (d->start == nullptr) return 1089;
  tidx j = 0, k = 0;
  while (j < d->mn) {
    tidx left = d->mn - j;
    tidx w = left <= 2 * d->nb ? half : d->nb;
    if (w > left) w = left;
    d->start[k++] = j;
    j += w;
  }
  d->npanels = k;
  while (j < n) {
    d->start[k++] = j;
    j += tmin(d->nb, n - j);
  }
  d->nblocks = k;
  d->start[k] = n;
  return 0;
}

tidx nb_dist_get_nb(const nb_dist *d) { return d->nb; }

void nb_dist_get_panel(const nb_dist *d, tidx k, tidx *j0, tidx *jb) {
  *j0 = d->start[k];
  *jb = d->start[k + 1] - d->start[k];
}

void nb_dist_destroy(nb_dist *d) {
  if (d->start) nxl_serv_deallocate(d->start);
  d->start = nullptr;
}

// ---------------------------------------------------------------------------
// LU panel graph.

namespace {
// Chunks of the update by one panel: one for a team of one; otherwise up to
// two per member, none narrower than about 192 columns.
tidx cdag_chunks(tidx cols, int nthreads) {
  if (nthreads <= 1) return 1;
  tidx c = cols / 192;
  return tmax(1, tmin(c, 2 * static_cast<tidx>(nthreads)));
}
tidx cdag_task_bound(const nb_dist *d, int nthreads) {
  return 1 + d->npanels * (2 + 2 * static_cast<tidx>(nthreads < 1 ? 1 : nthreads));
}
}  // namespace

size_t cdag1d_datasize(const nb_dist *d, int nthreads) {
  return sizeof(team_counter) * static_cast<size_t>(d->nblocks + 1) +
         round64(sizeof(team_task) * static_cast<size_t>(cdag_task_bound(d, nthreads)));
}

void cdag1d_team_init(cdag1d *g, const nb_dist *d, int nthreads, void *area) {
  char *p = static_cast<char *>(area);
  g->dist = d;
  g->level = place_counters(p, d->nblocks);
  g->next = place_counters(p + sizeof(team_counter) * static_cast<size_t>(d->nblocks), 1);
  g->tasks = reinterpret_cast<team_task *>(p + sizeof(team_counter) * static_cast<size_t>(d->nblocks + 1));
  tidx nt = 0;
  auto emit = [&](int kind, tidx a, tidx b, tidx c) { g->tasks[nt++] = team_task{kind, 0, a, b, c}; };
  if (d->npanels > 0) emit(kCdagFactor, 0, 0, 0);
  for (tidx k = 0; k < d->npanels; ++k) {
    bool ahead = k + 1 < d->npanels;
    if (ahead) emit(kCdagUpdate, k, k + 1, k + 2);
    tidx b0 = ahead ? k + 2 : k + 1;
    tidx cols = d->start[d->nblocks] - d->start[b0 < d->nblocks ? b0 : d->nblocks];
    tidx chunks = b0 < d->nblocks ? tmin(cdag_chunks(cols, nthreads), d->nblocks - b0) : 0;
    // Chunk boundaries at blocks, about equal in columns.
    tidx b = b0;
    for (tidx c = 0; c < chunks; ++c) {
      tidx target = d->start[b0] + cols * (c + 1) / chunks;
      tidx e = b + 1;
      while (e < d->nblocks && d->start[e] < target) ++e;
      if (c == chunks - 1) e = d->nblocks;
      if (e > b) emit(kCdagUpdate, k, b, e);
      b = e;
      if (c == 0 && ahead) emit(kCdagFactor, k + 1, 0, 0);
    }
    if (chunks == 0 && ahead) emit(kCdagFactor, k + 1, 0, 0);
  }
  g->ntasks = nt;
}

void cdag1d_destroy(cdag1d *g) {
  g->level = nullptr;
  g->next = nullptr;
  g->tasks = nullptr;
  g->ntasks = 0;
  g->dist = nullptr;
}

// ---------------------------------------------------------------------------
// Cholesky tile graph.

void dag1st_init(dag1st *g, tidx n, tidx t) {
  g->n = n;
  g->t = t < 1 ? 1 : t;
  g->nt = (n + g->t - 1) / g->t;
  g->done = nullptr;
  g->next = nullptr;
  g->tasks = nullptr;
  g->ntasks = 0;
}

namespace {
tidx dag1st_count(tidx nt) { return nt + nt * (nt - 1) + nt * (nt - 1) * (nt - 2) / 6; }
}  // namespace

size_t dag1st_dagdatasize(const dag1st *g) {
  tidx tiles = g->nt * (g->nt + 1) / 2;
  return sizeof(team_counter) * static_cast<size_t>(tiles + 1) +
         round64(sizeof(team_task) * static_cast<size_t>(dag1st_count(g->nt)));
}

tidx dag1st_maxtiles(const dag1st *g, int threads) {
  // Tiles of at least 96 rows, at most 64 a side (about 44,000 tasks), and
  // no more than a team can keep busy with useful look-ahead.
  tidx byrows = tmax(2, g->n / 96);
  tidx byteam = tmax(4, 12 * static_cast<tidx>(threads));
  return tmin(64, tmin(byrows, byteam));
}

tidx dag1st_maxtilesreduce(const dag1st *g, tidx maxtiles) {
  // One member gains nothing from small tasks: a few large tiles keep its
  // matrix products long.
  (void)g;
  return tmin(maxtiles, 4);
}

tidx dag1st_committiles(dag1st *g, void *area) {
  char *p = static_cast<char *>(area);
  tidx nt = g->nt, tiles = nt * (nt + 1) / 2;
  g->done = place_counters(p, tiles);
  g->next = place_counters(p + sizeof(team_counter) * static_cast<size_t>(tiles), 1);
  g->tasks = reinterpret_cast<team_task *>(p + sizeof(team_counter) * static_cast<size_t>(tiles + 1));
  tidx c = 0;
  auto emit = [&](int kind, tidx i, tidx j, tidx k) { g->tasks[c++] = team_task{kind, 0, i, j, k}; };
  auto update = [&](tidx i, tidx j, tidx k) { emit(i == j ? kDagSyrk : kDagGemm, i, j, k); };
  emit(kDagPotrf, 0, 0, 0);
  for (tidx i = 1; i < nt; ++i) emit(kDagTrsm, i, 0, 0);
  for (tidx k = 0; k < nt; ++k) {
    // Column k+1 first, so that its factorization and solves can start
    // while the rest of step k's updates run.
    if (k + 1 < nt) {
      for (tidx i = k + 1; i < nt; ++i) update(i, k + 1, k);
      emit(kDagPotrf, k + 1, k + 1, k + 1);
      for (tidx i = k + 2; i < nt; ++i) emit(kDagTrsm, i, k + 1, k + 1);
    }
    for (tidx j = k + 2; j < nt; ++j)
      for (tidx i = j; i < nt; ++i) update(i, j, k);
  }
  g->ntasks = c;
  return c;
}

}  // namespace lapack
}  // namespace nxl
