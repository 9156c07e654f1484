// The call frame shared by every exported LAPACK routine.
//
// One row per routine and precision (NXL_LAPACK_ROW) defines
//   - the internal routine nxl_lapack_<name>, which forwards to the template
//     that does the work, and
//   - the exported entry (both spellings on one upper-case body), which
//     installs the error-handler adapter (and, for factorizations that report
//     progress, the progress adapter), runs the argument checker when the
//     routine has one, calls the internal routine and, in verbose mode,
//     writes one trace line whose format follows from the parameter types:
//     a character flag prints as %c, an integer scalar as its value, any
//     array or other scalar as a pointer, and a trailing integer output
//     (`info`) as its value after the call.
#ifndef NXL_LAPACK_FRAME_H
#define NXL_LAPACK_FRAME_H

#include <cstring>
#include <type_traits>
#include <utility>
#include "service/fortran.h"
#include "service/nxl_serv.h"

namespace nxl {
namespace lapack {

// Short names for the parameter types in the tables of exported routines.
namespace row_types {
using cI = const nxl_int *;
using I = nxl_int *;
using cC = const char *;
using Ch = char *;
}  // namespace row_types

enum : unsigned { kNone = 0, kProgress = 1 };

// The verbose word of a wrapper that has not asked the services yet.
inline const int kVerboseUnknown = -1;

namespace trace {

// A character flag prints as %c, an integer scalar and the trailing integer
// output (`info`) as %lli, anything else as %p.
template <size_t N, size_t I, class A> inline const char *fmt() {
  if constexpr (std::is_same_v<A, const char *>) return "%c";
  else if constexpr (std::is_same_v<A, const nxl_int *>) return "%lli";
  else if constexpr (std::is_same_v<A, nxl_int *> && I + 1 == N) return "%lli";
  else return "%p";
}
template <size_t N, size_t I, class A> inline auto value(A a) {
  if constexpr (std::is_same_v<A, const char *>) return static_cast<int>(a ? *a : ' ');
  else if constexpr (std::is_same_v<A, const nxl_int *>) return static_cast<long long>(a ? *a : 0);
  else if constexpr (std::is_same_v<A, nxl_int *> && I + 1 == N) return static_cast<long long>(a ? *a : 0);
  else return static_cast<const void *>(a);
}

// Builds "NAME(%c,%lli,...)" for the parameter types.
void build_format(char *fmt, size_t size, const char *name, const char *const *specs, size_t count);

template <class... A, size_t... I>
inline void emit_(const char *name, double seconds, std::index_sequence<I...>, A... args) {
  constexpr size_t n = sizeof...(A);
  const char *specs[n > 0 ? n : 1] = {fmt<n, I, A>()...};
  char fmt[512];
  build_format(fmt, sizeof fmt, name, specs, n);
  char line[450];
  nxl_serv_snprintf_s(line, 450, 449, fmt, value<n, I, A>(args)...);
  line[449] = 0;
  nxl_serv_iface_print_verbose_info(2, line, seconds);
}

template <class... A> inline void emit(const char *name, double seconds, A... args) {
  emit_(name, seconds, std::index_sequence_for<A...>{}, args...);
}

}  // namespace trace

// The wrapper body, written once. `name` is the upper-case name without
// padding (the trace prints it as is).
template <class Ret, class... A>
inline Ret entry(const char *name, const int *&verbose_ptr, unsigned flags,
                 std::type_identity_t<int (*)(A...)> errchk, Ret (*internal)(A...),
                 std::type_identity_t<A>... args) {
  nxl_set_xerbla_interface(cdecl_xerbla);
  if (flags & kProgress) nxl_serv_set_progress_interface(cdecl_progress);
  int mode = *verbose_ptr;
  double t = 0.0;
  if (errchk && errchk(args...)) {
    if (mode == -1) {
      verbose_ptr = nxl_serv_iface_verbose_mode();
      mode = *verbose_ptr;
    }
    if (mode == 1) t = -nxl_serv_iface_dsecnd();
    else if (mode == 0) return Ret();
    if (t != 0.0) t += nxl_serv_iface_dsecnd();
    trace::emit(name, t, args...);
    return Ret();
  }
  if (!internal) return Ret();
  if (mode == 0) return internal(args...);
  if (mode == -1) {
    verbose_ptr = nxl_serv_iface_verbose_mode();
    mode = *verbose_ptr;
  }
  if (mode == 1) t = -nxl_serv_iface_dsecnd();
  if constexpr (std::is_void_v<Ret>) {
    internal(args...);
    if (mode != 0) {
      if (t != 0.0) t += nxl_serv_iface_dsecnd();
      trace::emit(name, t, args...);
    }
  } else {
    Ret r = internal(args...);
    if (mode != 0) {
      if (t != 0.0) t += nxl_serv_iface_dsecnd();
      trace::emit(name, t, args...);
    }
    return r;
  }
}

}  // namespace lapack
}  // namespace nxl

// Parameter lists with generated names: NXL_LP(T1, T2) -> T1 a1, T2 a2;
// NXL_LA(T1, T2) -> a1, a2.
#define NXL_LN_(_1, _2, _3, _4, _5, _6, _7, _8, _9, _10, _11, _12, _13, _14, _15, _16, _17, _18, _19, \
                _20, _21, _22, _23, _24, _25, _26, _27, _28, _29, _30, N, ...) N
#define NXL_LN(...) NXL_LN_(__VA_ARGS__, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, \
                            14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1)
#define NXL_LCAT_(a, b) a##b
#define NXL_LCAT(a, b) NXL_LCAT_(a, b)
#define NXL_LP(...) NXL_LCAT(NXL_LP_, NXL_LN(__VA_ARGS__))(__VA_ARGS__)
#define NXL_LA(...) NXL_LCAT(NXL_LA_, NXL_LN(__VA_ARGS__))(__VA_ARGS__)
#include "lapack/frame_args.inc"

// One exported routine: ret, upper-case and lower-case names, the stem of the
// template (called as ::nxl::lapack::stem<T>), flags, the argument checker
// (nullptr or a function with the same parameters) and the parameter types.
#define NXL_LAPACK_ROW(ret, UPPER, lower, stem, flags, errchk, ...)                               \
  extern "C" ret nxl_lapack_##lower(NXL_LP(__VA_ARGS__)) {                                        \
    return ::nxl::lapack::stem<T>(NXL_LA(__VA_ARGS__));                                           \
  }                                                                                               \
  NXL_FORTRAN_ENTRY(ret, UPPER, lower, (NXL_LP(__VA_ARGS__))) {                                   \
    static const int *verbose_ptr = &::nxl::lapack::kVerboseUnknown;                              \
    return ::nxl::lapack::entry<ret>(#UPPER, verbose_ptr, flags, errchk, &nxl_lapack_##lower,     \
                                     NXL_LA(__VA_ARGS__));                                        \
  }

#endif  // NXL_LAPACK_FRAME_H
