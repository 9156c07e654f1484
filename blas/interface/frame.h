// The call frame of every exported Fortran-convention BLAS routine, written
// once. A routine is one declarative row:
//
//   NXL_BLAS_ROUTINE(void, DGEMM, dgemm, (F transa, F transb, I m, ...),
//                    (transa, transb, m, ...),
//                    NXL_CHECK(!trans_ok(transa), 1) ...)
//
// which defines the argument check nxl_blas_errchk_dgemm (reporting the first
// bad argument under the six-character upper-case name), the internal body
// DGEMM exported as dgemm and dgemm_, and declares the dispatch routine
// nxl_blas_dgemm with one hidden length per character argument. The body
// installs the error-handler adapter, runs the check, calls the dispatch
// layer with hidden lengths 1 and, when tracing is on, writes one line whose
// format follows from the argument types: a character flag prints as %c, an
// INTEGER (dereferenced) as %lli, anything else as %p.
#ifndef NXL_BLAS_INTERFACE_FRAME_H
#define NXL_BLAS_INTERFACE_FRAME_H

#include <array>
#include <complex>
#include <cstddef>
#include <type_traits>
#include <utility>
#include "service/fortran.h"
#include "service/nxl_serv.h"

namespace nxl {
namespace frame {

using I = const nxl_int *;
using F = const char *;

// ------------------------------------------------------------------ tracing
template <class A> struct trace_arg {
  static constexpr char fmt[] = "%p";
  static const void *value(A a) { return static_cast<const void *>(a); }
};
template <> struct trace_arg<const char *> {
  static constexpr char fmt[] = "%c";
  static int value(const char *c) { return c ? static_cast<unsigned char>(*c) : ' '; }
};
template <> struct trace_arg<const nxl_int *> {
  static constexpr char fmt[] = "%lli";
  static long long value(const nxl_int *p) { return p ? *p : 0; }
};

// "%s(" then the conversions of the arguments separated by commas, then ")".
template <class... A> struct trace_format {
  static constexpr std::size_t length =
      3 + (std::size_t(0) + ... + (sizeof(trace_arg<A>::fmt) - 1)) + sizeof...(A) + 1;
  static constexpr std::array<char, length> make() {
    std::array<char, length> f{};
    std::size_t i = 0;
    auto put = [&](const char *s) {
      while (*s) f[i++] = *s++;
    };
    put("%s(");
    bool first = true;
    ((first ? void(first = false) : put(","), put(trace_arg<A>::fmt)), ...);
    put(")");
    return f;
  }
  static constexpr std::array<char, length> value = make();
};

// The word a routine's verbose pointer holds until the mode is first asked for.
inline int unknown_mode = -1;

inline int verbose_mode(int **ptr) {
  int mode = **ptr;
  if (mode == -1) {
    *ptr = nxl_serv_iface_verbose_mode();
    mode = **ptr;
  }
  return mode;
}

template <class... A> void trace(const char *name, double seconds, A... a) {
  char line[450];
  nxl_serv_snprintf_s(line, sizeof line, sizeof line - 1, trace_format<A...>::value.data(), name,
                      trace_arg<A>::value(a)...);
  line[449] = 0;
  nxl_serv_iface_print_verbose_info(2, line, seconds);
}

// ------------------------------------------------------------------ checks
// Reports argument `pos` of routine `name` (padded with blanks to six
// characters) through the installed handler; returns 1 for the check.
inline int report(const char *name, nxl_int pos) {
  char padded[7] = "      ";
  for (int i = 0; i < 6 && name[i]; ++i) padded[i] = name[i];
  nxl_serv_iface_xerbla(padded, &pos, 6);
  return 1;
}

// flag names the upper-case letter *c in either case (a null flag names none).
// Inline, since every call checks its flags this way.
inline bool is(const char *flag, const char *c) {
  if (!flag) return false;
  const char f = *flag, u = *c;
  return f == u || (f >= 'a' && f <= 'z' && f - ('a' - 'A') == u);
}
inline bool trans_ok(const char *t) { return is(t, "N") || is(t, "T") || is(t, "C"); }
inline bool uplo_ok(const char *u) { return is(u, "U") || is(u, "L"); }
inline bool diag_ok(const char *d) { return is(d, "U") || is(d, "N"); }
inline bool side_ok(const char *s) { return is(s, "L") || is(s, "R"); }
// Complex symmetric updates take N or T; Hermitian ones N or C.
inline bool trans_nt(const char *t) { return is(t, "N") || is(t, "T"); }
inline bool trans_nc(const char *t) { return is(t, "N") || is(t, "C"); }
inline nxl_int mx1(nxl_int v) { return v > 1 ? v : 1; }

// ------------------------------------------------------------------ dispatch
template <class... A> inline constexpr std::size_t n_flags =
    (std::size_t(0) + ... + std::size_t(std::is_same_v<A, const char *>));
template <std::size_t> using hidden_length = int;

template <class Sig, class Seq> struct with_hidden;
template <class R, class... A, std::size_t... K>
struct with_hidden<R(A...), std::index_sequence<K...>> {
  using type = R(A..., hidden_length<K>...);
};
template <class Sig> struct dispatch_of;
template <class R, class... A> struct dispatch_of<R(A...)> {
  using type = typename with_hidden<R(A...), std::make_index_sequence<n_flags<A...>>>::type;
};
// The dispatch routine's type: the Fortran parameters, then one int per
// character argument.
template <class Sig> using dispatch_t = typename dispatch_of<Sig>::type;

template <class R, class... P, class... A, std::size_t... K>
R call_with_lengths(R (*d)(P...), std::index_sequence<K...>, A... a) {
  return d(a..., (void(K), 1)...);
}
template <class R, class... P, class... A> R call_dispatch(R (*d)(P...), A... a) {
  return call_with_lengths(d, std::make_index_sequence<sizeof...(P) - sizeof...(A)>(), a...);
}

// ------------------------------------------------------------------ the frame
// check(args) returns nonzero after reporting; call(args) runs the dispatch.
template <class R, bool Checked, class Check, class Call> struct runner {
  int **verbose_ptr;
  const char *name;
  Check check;
  Call call;
  template <class... A> R operator()(A... a) const {
    if constexpr (Checked) nxl_set_xerbla_interface(cdecl_xerbla);
    const int mode = verbose_mode(verbose_ptr);
    double seconds = mode == 1 ? -nxl_serv_iface_dsecnd() : 0.0;
    auto finish = [&] {
      if (seconds != 0) seconds += nxl_serv_iface_dsecnd();
      trace(name, seconds, a...);
    };
    if constexpr (Checked) {
      if (check(a...)) {
        if (mode != 0) finish();
        return R();
      }
    }
    if constexpr (std::is_void_v<R>) {
      call(a...);
      if (mode != 0) finish();
    } else {
      R r = call(a...);
      if (mode != 0) finish();
      return r;
    }
  }
};
template <class R, bool Checked, class Check, class Call>
runner<R, Checked, Check, Call> make_runner(int **vp, const char *name, Check c, Call d) {
  return {vp, name, c, d};
}

inline nxl_complex8 to_c(std::complex<float> z) { return {z.real(), z.imag()}; }
inline nxl_complex16 to_c(std::complex<double> z) { return {z.real(), z.imag()}; }

}  // namespace frame
}  // namespace nxl

#define NXL_CHECK(cond, pos) \
  if (cond) return nxl::frame::report(nxl_routine_name, pos);

// A routine with argument checks (levels 2 and 3).
#define NXL_BLAS_ROUTINE(ret, UP, lo, params, args, checks)                                      \
  extern "C" nxl::frame::dispatch_t<ret params> nxl_blas_##lo;                                   \
  extern "C" int nxl_blas_errchk_##lo params {                                                   \
    static constexpr char nxl_routine_name[] = #UP;                                              \
    using namespace nxl::frame;                                                                  \
    checks return 0;                                                                             \
  }                                                                                              \
  NXL_FORTRAN_ENTRY(ret, UP, lo, params) {                                                       \
    static int *verbose_ptr = &nxl::frame::unknown_mode;                                         \
    return nxl::frame::make_runner<ret, true>(                                                   \
        &verbose_ptr, #UP, [](auto... a) { return nxl_blas_errchk_##lo(a...); },                 \
        [](auto... a) { return nxl::frame::call_dispatch(nxl_blas_##lo, a...); }) args;         \
  }

// A routine without checks (level 1, sparse level 1) whose dispatch routine is
// declared elsewhere with the same parameters.
#define NXL_BLAS_ROUTINE_UNCHECKED(ret, UP, lo, params, args)                                    \
  NXL_FORTRAN_ENTRY(ret, UP, lo, params) {                                                       \
    static int *verbose_ptr = &nxl::frame::unknown_mode;                                         \
    return nxl::frame::make_runner<ret, false>(                                                  \
        &verbose_ptr, #UP, [](auto...) { return 0; },                                            \
        [](auto... a) { return nxl_blas_##lo(a...); }) args;                                     \
  }

// A function with a complex result: the dispatch routine takes the result
// through a leading out-parameter, the exported entry returns it by value.
#define NXL_BLAS_ROUTINE_CRESULT(T, UP, lo, params, args)                                        \
  NXL_FORTRAN_ENTRY(decltype(nxl::frame::to_c(T())), UP, lo, params) {                           \
    static int *verbose_ptr = &nxl::frame::unknown_mode;                                         \
    return nxl::frame::make_runner<decltype(nxl::frame::to_c(T())), false>(                      \
        &verbose_ptr, #UP, [](auto...) { return 0; },                                            \
        [](auto... a) {                                                                          \
          T r;                                                                                   \
          nxl_blas_##lo(&r, a...);                                                               \
          return nxl::frame::to_c(r);                                                            \
        }) args;                                                                                 \
  }

#endif  // NXL_BLAS_INTERFACE_FRAME_H
