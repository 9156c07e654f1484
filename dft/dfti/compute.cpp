// The compute step shared by the C and Fortran entries: call the committed
// routine, and when tracing is on, time the call and describe it.
#include <stdint.h>
#include <string.h>

#include "dft/dfti/descriptor.h"

namespace nxl::dft {

namespace {

struct Writer {
  char *buf;
  size_t size;
  size_t pos = 0;
  template <class... A> void put(const char *fmt, A... args) {
    if (pos + 1 >= size) return;
    int n = nxl_serv_snprintf_s(buf + pos, size - pos, size - pos - 1, fmt, args...);
    if (n > 0) pos += static_cast<size_t>(n);
    if (pos >= size) pos = size - 1;
  }
};

}  // namespace

// "FFT(" precision, domain, direction, placement letters, the lengths (with
// their strides when these differ from the dense ones) and the transform
// count, then the settings that differ from their defaults, ")".
int describe_call(const DFTI_DESCRIPTOR *d, int forward, const void *in, const void *out, char *buf,
                  size_t size) {
  Writer w{buf, size};
  const MethodTable *m = d->methods;
  nxl_int rank = 0, len[kMaxRank], is[kMaxRank + 1], os[kMaxRank + 1], howmany = 1, idist = 0, odist = 0,
          tlim = 0;
  m->getRank(d, &rank);
  m->getLengths(d, len);
  m->getInputStrides(d, is);
  m->getOutputStrides(d, os);
  m->getNumberOfTransforms(d, &howmany);
  m->getInputDistance(d, &idist);
  m->getOutputDistance(d, &odist);
  w.put("FFT(%c%c%c%c", d->precision == DFTI_SINGLE ? 's' : 'd', d->domain == DFTI_REAL ? 'r' : 'c',
        forward ? 'f' : 'b', d->placement == DFTI_INPLACE ? 'i' : 'o');
  nxl_int dense = 1;
  bool dense_all = true;
  for (nxl_int i = 0; i < rank; ++i) {
    const char *sep = i ? "x" : "";
    if (is[i + 1] == dense && os[i + 1] == dense) {
      w.put("%s%lu", sep, static_cast<unsigned long>(len[i]));
    } else {
      dense_all = false;
      w.put("%s%lu:%ti:%ti", sep, static_cast<unsigned long>(len[i]), static_cast<ptrdiff_t>(is[i + 1]),
            static_cast<ptrdiff_t>(os[i + 1]));
    }
    dense *= len[i];
  }
  if (howmany != 1) {
    bool packed = dense_all && idist == dense && odist == dense;
    w.put(packed ? "*%lu" : "v%lu", static_cast<unsigned long>(howmany));
  }
  if (d->fscale != 1.0) w.put(",fScale:%lg", d->fscale);
  if (d->bscale != 1.0) w.put(",bScale:%lg", d->bscale);
  if (d->domain == DFTI_REAL && d->packed != DFTI_CCE_FORMAT) {
    w.put(",pack:%s", d->packed == DFTI_PACK_FORMAT ? "pack" : d->packed == DFTI_PERM_FORMAT ? "perm" : "ccs");
  }
  if (d->workspace == DFTI_AVOID) w.put(",wSpace:%s", "avoid");
  m->getThreadLimit(d, &tlim);
  if (d->thread_limit != 0) w.put(",tLim:%ti", static_cast<ptrdiff_t>(tlim));
  if (reinterpret_cast<uintptr_t>(in) % 64) w.put(",%s", "unaligned_input");
  if (out && reinterpret_cast<uintptr_t>(out) % 64) w.put(",%s", "unaligned_output");
  w.put(",desc:%p", static_cast<const void *>(d));
  if (d->options & kDestroyInputBit) w.put(",%s", "destruct:allow");
  w.put("%s", ")");
  return static_cast<int>(w.pos);
}

}  // namespace nxl::dft

namespace nxl::dft {
std::atomic<int *> g_verbose_word{nullptr};
}  // namespace nxl::dft

using namespace nxl::dft;

extern "C" nxl_int nxl_dft_dfti_compute(DFTI_DESCRIPTOR_HANDLE h, int forward, void *a1, void *a2, void *a3,
                                        void *a4) {
  ComputeFn fn = forward ? h->forward : h->backward;
  // The mode word lives as long as the library; its address is taken once.
  // A negative value (not read yet, or reset after a fork) asks the service.
  int *mode = g_verbose_word.load(std::memory_order_relaxed);
  if (!mode) {
    mode = nxl_serv_iface_verbose_mode();
    g_verbose_word.store(mode, std::memory_order_relaxed);
  }
  int on = mode ? *mode : 0;
  if (on < 0) on = nxl_serv_verbose_mode();
  if (__builtin_expect(on != 1, 1)) return fn(h, a1, a2, a3, a4);
  double t0 = nxl_serv_iface_dsecnd();
  nxl_int st = fn(h, a1, a2, a3, a4);
  double t = nxl_serv_iface_dsecnd() - t0;
  char text[512];
  // The output array: the second one out of place (the third for split data).
  void *out = h->placement == DFTI_INPLACE ? nullptr : h->narrays == 4 ? a3 : a2;
  describe_call(h, forward, a1, out, text, sizeof text);
  nxl_serv_iface_print_verbose_info(2, text, t);
  return st;
}
