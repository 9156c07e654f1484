// The memory manager: aligned blocks with per-thread reuse.
//
// Every block carries a header just below the address given to the caller.
// Blocks up to kMaxCached bytes belong to a size class; when freed they go
// back to the free list of the cache of the thread that allocated them
// (whichever thread frees them), so a driver that allocates the same work
// areas call after call gets them without a system call. A cache keeps at
// most kMaxPerClass blocks of a class and kMaxCachedPerThread bytes. Large blocks come
// from mmap, small ones from malloc. Failures return null, never abort.
//
// NXL_DISABLE_FAST_MM (any value but "0") turns reuse off;
// NXL_FAST_MEMORY_LIMIT=<MB> caps the bytes the manager holds, cached blocks
// included: an allocation beyond it first releases cached blocks, then fails.
#include <pthread.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

#include <atomic>
#include <new>

#include "service/fortran.h"
#include "service/serv_core.h"
#include "nxl_service.h"

namespace {

constexpr unsigned kMagic = 0x4e584c4du;
constexpr size_t kHeader = 64;
constexpr size_t kMinAlign = 64;
constexpr size_t kMinClass = 256;
constexpr int kClasses = 4 * 21;                // 256 bytes .. 512 MB, quarter steps
constexpr size_t kMmapThreshold = size_t(1) << 20;
constexpr size_t kHugePage = size_t(2) << 20;  // transparent huge page size
constexpr int kMaxPerClass = 8;
constexpr size_t kMaxCachedPerThread = size_t(1) << 30;  // bytes kept per thread

struct thread_cache;

struct alignas(16) block_header {
  void *raw;              // start of the underlying allocation
  size_t footprint;       // bytes of the underlying allocation
  size_t capacity;        // usable bytes from the caller's address
  thread_cache *owner;    // cache the block returns to; null: never cached
  block_header *next;     // free-list link
  int size_class;         // -1: not reusable
  unsigned char mapped;   // 1: from mmap
  unsigned magic;
};
static_assert(sizeof(block_header) <= kHeader);

struct thread_cache {
  nxl_serv_lock_t lock;
  int orphan;             // its thread has ended; may be adopted
  block_header *free_list[kClasses];
  int count[kClasses];
  size_t cached_bytes;    // footprint of the blocks on the free lists
  thread_cache *next_all;
};

// Process-wide state.
std::atomic<int> config_read{0};
nxl_serv_lock_t config_lock = 0;
std::atomic<int> reuse_enabled{1};
std::atomic<size_t> limit_bytes{0};      // 0: no limit

nxl_serv_lock_t registry_lock = 0;
thread_cache *all_caches = nullptr;
pthread_key_t cache_key;
std::atomic<int> cache_key_ready{0};

std::atomic<size_t> held_bytes{0};       // every block, cached ones included
std::atomic<long long> held_blocks{0};
std::atomic<size_t> used_bytes{0};       // blocks given to callers
std::atomic<long long> used_blocks{0};
std::atomic<int> peak_enabled{0};
std::atomic<size_t> peak_bytes{0};

size_t class_size(int c) {
  size_t base = kMinClass << (c / 4);
  return base + (base / 4) * static_cast<size_t>(c % 4);
}

constexpr size_t kMaxCached = (kMinClass << (kClasses / 4 - 1)) * 7 / 4;

int class_of(size_t bytes) {
  if (bytes > kMaxCached) return -1;
  if (bytes <= kMinClass) return 0;
  int log = 63 - __builtin_clzll(static_cast<unsigned long long>(bytes - 1));  // floor log2(bytes-1)
  int c = 4 * (log - 8);
  if (c < 0) c = 0;
  while (class_size(c) < bytes) ++c;
  return c;
}

void note_peak() {
  if (!peak_enabled.load(std::memory_order_relaxed)) return;
  size_t now = held_bytes.load(std::memory_order_relaxed);
  size_t p = peak_bytes.load(std::memory_order_relaxed);
  while (now > p && !peak_bytes.compare_exchange_weak(p, now, std::memory_order_relaxed)) {
  }
}

void release_block(block_header *h) {
  held_bytes.fetch_sub(h->footprint, std::memory_order_relaxed);
  held_blocks.fetch_sub(1, std::memory_order_relaxed);
  h->magic = 0;
  if (h->mapped)
    munmap(h->raw, h->footprint);
  else
    free(h->raw);
}

// Empties a cache's free lists (the cache's lock is held by the caller).
void drain_locked(thread_cache *c) {
  for (int k = 0; k < kClasses; ++k) {
    block_header *h = c->free_list[k];
    while (h != nullptr) {
      block_header *next = h->next;
      release_block(h);
      h = next;
    }
    c->free_list[k] = nullptr;
    c->count[k] = 0;
  }
  c->cached_bytes = 0;
}

void drain(thread_cache *c) {
  nxl_serv_lock(&c->lock);
  drain_locked(c);
  nxl_serv_unlock(&c->lock);
}

void drain_all() {
  nxl_serv_lock(&registry_lock);
  for (thread_cache *c = all_caches; c != nullptr; c = c->next_all) drain(c);
  nxl_serv_unlock(&registry_lock);
}

// A thread ends: its cached blocks go back to the system and the cache waits
// for another thread to adopt it. Blocks still in use return to it later.
void orphan_cache(void *p) {
  thread_cache *c = static_cast<thread_cache *>(p);
  nxl_serv_lock(&c->lock);
  drain_locked(c);
  c->orphan = 1;
  nxl_serv_unlock(&c->lock);
}

// Fork: no lock of the manager may be held by a thread that the child will
// not have. The child keeps only its own cache; the others become orphans.
void fork_prepare() {
  nxl_serv_lock(&registry_lock);
  for (thread_cache *c = all_caches; c != nullptr; c = c->next_all) nxl_serv_lock(&c->lock);
}

void fork_parent() {
  for (thread_cache *c = all_caches; c != nullptr; c = c->next_all) nxl_serv_unlock(&c->lock);
  nxl_serv_unlock(&registry_lock);
}

void fork_child() {
  thread_cache *mine = cache_key_ready.load(std::memory_order_relaxed)
                           ? static_cast<thread_cache *>(pthread_getspecific(cache_key))
                           : nullptr;
  for (thread_cache *c = all_caches; c != nullptr; c = c->next_all) {
    c->lock = 0;
    if (c != mine && !c->orphan) {
      drain_locked(c);
      c->orphan = 1;
    }
  }
  registry_lock = 0;
}

void read_config() {
  if (config_read.load(std::memory_order_acquire)) return;
  nxl_serv_lock(&config_lock);
  if (!config_read.load(std::memory_order_relaxed)) {
    char buf[64];
    int n = nxl_serv_getenv("NXL_DISABLE_FAST_MM", buf, sizeof buf);
    if (n > 0 && strcmp(buf, "0") != 0) reuse_enabled.store(0, std::memory_order_relaxed);
    n = nxl_serv_getenv("NXL_FAST_MEMORY_LIMIT", buf, sizeof buf);
    if (n > 0) {
      char *end = nullptr;
      unsigned long long mb = strtoull(buf, &end, 10);
      bool digits = buf[0] >= '0' && buf[0] <= '9';
      if (digits && (*end == '\0' || strcmp(end, "M") == 0 || strcmp(end, "MB") == 0)) {
        // Saturate instead of wrapping for absurd values.
        size_t bytes = mb > (SIZE_MAX >> 20) ? SIZE_MAX : static_cast<size_t>(mb) << 20;
        limit_bytes.store(bytes, std::memory_order_relaxed);
      }
    }
    pthread_key_t key;
    if (pthread_key_create(&key, orphan_cache) == 0) {
      cache_key = key;
      cache_key_ready.store(1, std::memory_order_release);
    }
    pthread_atfork(fork_prepare, fork_parent, fork_child);
    config_read.store(1, std::memory_order_release);
  }
  nxl_serv_unlock(&config_lock);
}

__attribute__((destructor)) void delete_cache_key() {
  if (cache_key_ready.load(std::memory_order_acquire)) {
    cache_key_ready.store(0, std::memory_order_release);
    pthread_key_delete(cache_key);
  }
}

// The calling thread's cache: its own, an adopted orphan, or a new one.
thread_cache *my_cache() {
  if (!cache_key_ready.load(std::memory_order_acquire)) return nullptr;
  thread_cache *c = static_cast<thread_cache *>(pthread_getspecific(cache_key));
  if (c != nullptr) return c;
  nxl_serv_lock(&registry_lock);
  for (thread_cache *o = all_caches; o != nullptr; o = o->next_all) {
    if (o->orphan) {
      nxl_serv_lock(&o->lock);
      if (o->orphan) {
        o->orphan = 0;
        c = o;
      }
      nxl_serv_unlock(&o->lock);
      if (c != nullptr) break;
    }
  }
  if (c == nullptr) {
    c = static_cast<thread_cache *>(calloc(1, sizeof(thread_cache)));
    if (c != nullptr) {
      c->next_all = all_caches;
      all_caches = c;
    }
  }
  nxl_serv_unlock(&registry_lock);
  if (c != nullptr) pthread_setspecific(cache_key, c);
  return c;
}

// Reserves `footprint` bytes against the limit; may release cached blocks.
bool reserve(size_t footprint) {
  size_t limit = limit_bytes.load(std::memory_order_relaxed);
  for (int attempt = 0;; ++attempt) {
    size_t before = held_bytes.fetch_add(footprint, std::memory_order_relaxed);
    if (limit == 0 || (before + footprint >= before && before + footprint <= limit)) return true;
    held_bytes.fetch_sub(footprint, std::memory_order_relaxed);
    if (attempt == 0) {
      if (thread_cache *c = my_cache()) drain(c);
    } else if (attempt == 1) {
      drain_all();
    } else {
      return false;
    }
  }
}

void *give(block_header *h) {
  used_bytes.fetch_add(h->capacity, std::memory_order_relaxed);
  used_blocks.fetch_add(1, std::memory_order_relaxed);
  return reinterpret_cast<char *>(h) + kHeader;
}

// A mapping of footprint bytes (a multiple of the page). Mappings of a huge
// page or more start on a huge-page boundary and ask the kernel for huge
// pages: the packed panels of the level-3 engine and the large work areas
// are swept again and again, and in 4 KB pages a 4 MB block alone takes a
// thousand translation entries, evicting those of the caller's matrices.
void *map_block(size_t footprint) {
  if (footprint < kHugePage) {
    void *m = mmap(nullptr, footprint, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return m == MAP_FAILED ? nullptr : m;
  }
  if (footprint > SIZE_MAX - kHugePage) return nullptr;
  const size_t span = footprint + kHugePage;
  void *m = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (m == MAP_FAILED) return nullptr;
  char *lo = static_cast<char *>(m);
  char *start = reinterpret_cast<char *>((reinterpret_cast<uintptr_t>(lo) + kHugePage - 1) & ~(uintptr_t(kHugePage) - 1));
  if (start > lo) munmap(lo, size_t(start - lo));
  if (lo + span > start + footprint) munmap(start + footprint, size_t(lo + span - (start + footprint)));
  madvise(start, footprint, MADV_HUGEPAGE);  // advice only: 4 KB pages if refused
  return start;
}

block_header *fresh_block(size_t capacity, size_t align, int cls, thread_cache *owner) {
  if (capacity > SIZE_MAX - align - 2 * kHeader) return nullptr;
  size_t footprint = capacity + align + kHeader;
  bool mapped = footprint >= kMmapThreshold;
  if (mapped) {
    size_t page = 4096;
    footprint = (footprint + page - 1) & ~(page - 1);
  }
  if (!reserve(footprint)) return nullptr;
  void *raw = nullptr;
  for (int attempt = 0; attempt < 2 && raw == nullptr; ++attempt) {
    if (mapped) {
      raw = map_block(footprint);
    } else {
      raw = malloc(footprint);
    }
    if (raw == nullptr && attempt == 0) drain_all();
  }
  if (raw == nullptr) {
    held_bytes.fetch_sub(footprint, std::memory_order_relaxed);
    return nullptr;
  }
  held_blocks.fetch_add(1, std::memory_order_relaxed);
  note_peak();
  uintptr_t user = (reinterpret_cast<uintptr_t>(raw) + kHeader + align - 1) & ~(uintptr_t(align) - 1);
  block_header *h = reinterpret_cast<block_header *>(user - kHeader);
  h->raw = raw;
  h->footprint = footprint;
  h->capacity = capacity;
  h->owner = owner;
  h->next = nullptr;
  h->size_class = cls;
  h->mapped = mapped ? 1 : 0;
  h->magic = kMagic;
  return h;
}

}  // namespace

extern "C" {

void *nxl_serv_allocate(size_t bytes, int alignment) {
  read_config();
  size_t align = alignment <= 0 ? kMinAlign : static_cast<size_t>(alignment);
  if (align & (align - 1)) align = size_t(1) << (64 - __builtin_clzll(static_cast<unsigned long long>(align)));
  if (align < kMinAlign) align = kMinAlign;
  if (bytes == 0) bytes = 1;

  int cls = reuse_enabled.load(std::memory_order_relaxed) ? class_of(bytes) : -1;
  thread_cache *cache = nullptr;
  if (cls >= 0) {
    cache = my_cache();
    if (cache == nullptr) cls = -1;
  }
  if (cls >= 0) {
    nxl_serv_lock(&cache->lock);
    block_header **link = &cache->free_list[cls];
    block_header *h = nullptr;
    for (; *link != nullptr; link = &(*link)->next) {
      if (((reinterpret_cast<uintptr_t>(*link) + kHeader) & (align - 1)) == 0) {
        h = *link;
        *link = h->next;
        --cache->count[cls];
        cache->cached_bytes -= h->footprint;
        break;
      }
    }
    nxl_serv_unlock(&cache->lock);
    if (h != nullptr) {
      h->next = nullptr;
      return give(h);
    }
    block_header *f = fresh_block(class_size(cls), align, cls, cache);
    return f != nullptr ? give(f) : nullptr;
  }
  block_header *f = fresh_block(bytes, align, -1, nullptr);
  return f != nullptr ? give(f) : nullptr;
}

void nxl_serv_deallocate(void *pointer) {
  if (pointer == nullptr) return;
  block_header *h = reinterpret_cast<block_header *>(static_cast<char *>(pointer) - kHeader);
  if (h->magic != kMagic) return;  // not ours: leave it alone
  used_bytes.fetch_sub(h->capacity, std::memory_order_relaxed);
  used_blocks.fetch_sub(1, std::memory_order_relaxed);
  thread_cache *c = h->owner;
  if (c != nullptr && h->size_class >= 0 && reuse_enabled.load(std::memory_order_relaxed)) {
    nxl_serv_lock(&c->lock);
    if (!c->orphan && c->count[h->size_class] < kMaxPerClass &&
        c->cached_bytes + h->footprint <= kMaxCachedPerThread) {
      h->next = c->free_list[h->size_class];
      c->free_list[h->size_class] = h;
      ++c->count[h->size_class];
      c->cached_bytes += h->footprint;
      nxl_serv_unlock(&c->lock);
      return;
    }
    nxl_serv_unlock(&c->lock);
  }
  release_block(h);
}

int nxl_serv_fast_mm_status(void) {
  read_config();
  return reuse_enabled.load(std::memory_order_relaxed) ? 0 : 1;
}

size_t nxl_serv_mem_in_use(int *nbuffers) {
  if (nbuffers != nullptr) *nbuffers = static_cast<int>(used_blocks.load(std::memory_order_relaxed));
  return used_bytes.load(std::memory_order_relaxed);
}

size_t nxl_serv_mem_held(int *nbuffers) {
  if (nbuffers != nullptr) *nbuffers = static_cast<int>(held_blocks.load(std::memory_order_relaxed));
  return held_bytes.load(std::memory_order_relaxed);
}

void nxl_serv_free_buffers(void) {
  read_config();
  drain_all();
}

void nxl_serv_thread_free_buffers(void) {
  read_config();
  if (!cache_key_ready.load(std::memory_order_acquire)) return;
  if (auto *c = static_cast<thread_cache *>(pthread_getspecific(cache_key))) drain(c);
}

int nxl_serv_disable_fast_mm(void) {
  read_config();
  reuse_enabled.store(0, std::memory_order_relaxed);
  drain_all();
  return 1;
}

long long nxl_serv_peak_mem_usage(int mode) {
  switch (mode) {
    case 0:
      peak_enabled.store(0, std::memory_order_relaxed);
      return 0;
    case 1:
      if (!peak_enabled.exchange(1, std::memory_order_relaxed))
        peak_bytes.store(held_bytes.load(std::memory_order_relaxed), std::memory_order_relaxed);
      return 0;
    case 2:
    case 3: {
      if (!peak_enabled.load(std::memory_order_relaxed)) return -1;
      size_t p = peak_bytes.load(std::memory_order_relaxed);
      if (mode == 3) peak_bytes.store(held_bytes.load(std::memory_order_relaxed), std::memory_order_relaxed);
      return static_cast<long long>(p);
    }
    default:
      return -1;
  }
}

// ---------------------------------------------------------------------------
// Exported controls.

NXL_FORTRAN_ENTRY(void, NXL_FREE_BUFFERS, nxl_free_buffers, (void)) { nxl_serv_free_buffers(); }

NXL_FORTRAN_ENTRY(void, NXL_THREAD_FREE_BUFFERS, nxl_thread_free_buffers, (void)) {
  nxl_serv_thread_free_buffers();
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_DISABLE_FAST_MM, nxl_disable_fast_mm, (void)) {
  return nxl_serv_disable_fast_mm();
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_GET_MEM_STAT, nxl_get_mem_stat, (nxl_int *nbuffers)) {
  int n = 0;
  size_t bytes = nxl_serv_mem_held(&n);
  if (nbuffers != nullptr) *nbuffers = n;
  return static_cast<nxl_int>(bytes);
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_GET_PEAK_MEM_USAGE, nxl_get_peak_mem_usage, (const nxl_int *mode)) {
  if (mode == nullptr) return -1;
  nxl_int m = *mode;
  if (m < 0 || m > 3) return -1;
  return nxl_serv_peak_mem_usage(static_cast<int>(m));
}

}  // extern "C"
