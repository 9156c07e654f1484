/* NXL DFTI: discrete Fourier transforms through descriptors.
 *
 * A transform is described by a descriptor: create it for a precision, a
 * forward domain, a dimension and lengths, configure it with DftiSetValue,
 * commit it, then compute forward and backward transforms any number of
 * times, and free it. Every call returns a status (0 on success); see
 * DftiErrorMessage and DftiErrorClass.
 *
 * C entries take lengths and strides in row-major order (last dimension
 * fastest); the Fortran entries (dfti_*) take them first-dimension fastest
 * and every argument by address. */
#ifndef NXL_DFTI_H
#define NXL_DFTI_H

#include <stddef.h>
#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Configuration parameters (second argument of DftiSetValue/DftiGetValue). */
enum DFTI_CONFIG_PARAM {
  DFTI_FORWARD_DOMAIN = 0,            /* read-only: DFTI_COMPLEX or DFTI_REAL */
  DFTI_DIMENSION = 1,                 /* read-only */
  DFTI_LENGTHS = 2,                   /* read-only */
  DFTI_PRECISION = 3,                 /* read-only: DFTI_SINGLE or DFTI_DOUBLE */
  DFTI_FORWARD_SCALE = 4,             /* double on set; float or double on get */
  DFTI_BACKWARD_SCALE = 5,
  DFTI_NUMBER_OF_TRANSFORMS = 7,      /* nxl_int */
  DFTI_COMPLEX_STORAGE = 8,
  DFTI_REAL_STORAGE = 9,
  DFTI_CONJUGATE_EVEN_STORAGE = 10,
  DFTI_PLACEMENT = 11,
  DFTI_INPUT_STRIDES = 12,            /* nxl_int[dimension + 1]: offset, strides */
  DFTI_OUTPUT_STRIDES = 13,
  DFTI_INPUT_DISTANCE = 14,           /* nxl_int */
  DFTI_OUTPUT_DISTANCE = 15,
  DFTI_WORKSPACE = 17,
  DFTI_ORDERING = 18,
  DFTI_TRANSPOSE = 19,                /* read-only in this library */
  DFTI_DESCRIPTOR_NAME = 20,          /* at most DFTI_MAX_NAME_LENGTH characters */
  DFTI_PACKED_FORMAT = 21,
  DFTI_COMMIT_STATUS = 22,            /* read-only */
  DFTI_VERSION = 23,                  /* read-only; readable with a null handle */
  DFTI_NUMBER_OF_USER_THREADS = 26,   /* nxl_int */
  DFTI_THREAD_LIMIT = 27,             /* nxl_int; 0 = no limit */
  DFTI_DESTROY_INPUT = 28
};

/* Values of the enumerated parameters. */
enum DFTI_CONFIG_VALUE {
  DFTI_COMMITTED = 30,
  DFTI_UNCOMMITTED = 31,
  DFTI_COMPLEX = 32,
  DFTI_REAL = 33,
  DFTI_SINGLE = 35,
  DFTI_DOUBLE = 36,
  DFTI_COMPLEX_COMPLEX = 39,
  DFTI_COMPLEX_REAL = 40,
  DFTI_REAL_COMPLEX = 41,
  DFTI_REAL_REAL = 42,
  DFTI_INPLACE = 43,
  DFTI_NOT_INPLACE = 44,
  DFTI_ORDERED = 48,
  DFTI_BACKWARD_SCRAMBLED = 49,
  DFTI_FORWARD_SCRAMBLED = 50,
  DFTI_ALLOW = 51,
  DFTI_AVOID = 52,
  DFTI_NONE = 53,
  DFTI_CCS_FORMAT = 54,
  DFTI_PACK_FORMAT = 55,
  DFTI_PERM_FORMAT = 56,
  DFTI_CCE_FORMAT = 57
};

/* Status codes. The class of a status is the status itself. */
#define DFTI_NO_ERROR                    0
#define DFTI_MEMORY_ERROR                1
#define DFTI_INVALID_CONFIGURATION       2
#define DFTI_INCONSISTENT_CONFIGURATION  3
#define DFTI_MULTITHREADED_ERROR         4
#define DFTI_BAD_DESCRIPTOR              5
#define DFTI_UNIMPLEMENTED               6
#define DFTI_NXL_INTERNAL_ERROR          7
#define DFTI_NUMBER_OF_THREADS_ERROR     8
#define DFTI_1D_LENGTH_EXCEEDS_INT32     9

/* Buffer sizes for DFTI_DESCRIPTOR_NAME and DFTI_VERSION (with the NUL). */
#define DFTI_MAX_NAME_LENGTH     10
#define DFTI_VERSION_LENGTH      198
#define DFTI_MAX_MESSAGE_LENGTH  128

/* The opaque descriptor. */
struct DFTI_DESCRIPTOR;
typedef struct DFTI_DESCRIPTOR *DFTI_DESCRIPTOR_HANDLE;

/* ---- C entries (status returned as a 64-bit integer) ---------------------
 * DftiCreateDescriptor(&h, precision, domain, dimension, length) for
 * dimension 1 (length: nxl_int), or (..., dimension, const nxl_int *lengths)
 * for dimension > 1. */
NXL_API nxl_int DftiCreateDescriptor(DFTI_DESCRIPTOR_HANDLE *handle, enum DFTI_CONFIG_VALUE precision,
                                     enum DFTI_CONFIG_VALUE domain, int dimension, ...);
NXL_API nxl_int DftiCreateDescriptor_s_1d(DFTI_DESCRIPTOR_HANDLE *handle, enum DFTI_CONFIG_VALUE precision,
                                          enum DFTI_CONFIG_VALUE domain, int dimension, ...);
NXL_API nxl_int DftiCreateDescriptor_d_1d(DFTI_DESCRIPTOR_HANDLE *handle, enum DFTI_CONFIG_VALUE precision,
                                          enum DFTI_CONFIG_VALUE domain, int dimension, ...);
NXL_API nxl_int DftiCreateDescriptor_s_md(DFTI_DESCRIPTOR_HANDLE *handle, enum DFTI_CONFIG_VALUE precision,
                                          enum DFTI_CONFIG_VALUE domain, int dimension, ...);
NXL_API nxl_int DftiCreateDescriptor_d_md(DFTI_DESCRIPTOR_HANDLE *handle, enum DFTI_CONFIG_VALUE precision,
                                          enum DFTI_CONFIG_VALUE domain, int dimension, ...);
/* Set: one value of the parameter's kind (enumerated values as int, integers
 * as nxl_int, scales as double, strides as const nxl_int *, the name as
 * const char *). Get: a pointer to storage of the parameter's kind (scales:
 * float * for single-precision descriptors, double * otherwise). */
NXL_API nxl_int DftiSetValue(DFTI_DESCRIPTOR_HANDLE handle, enum DFTI_CONFIG_PARAM parameter, ...);
NXL_API nxl_int DftiGetValue(DFTI_DESCRIPTOR_HANDLE handle, enum DFTI_CONFIG_PARAM parameter, ...);
NXL_API nxl_int DftiCopyDescriptor(DFTI_DESCRIPTOR_HANDLE source, DFTI_DESCRIPTOR_HANDLE *copy);
NXL_API nxl_int DftiFreeDescriptor(DFTI_DESCRIPTOR_HANDLE *handle);
NXL_API nxl_int DftiCommitDescriptor(DFTI_DESCRIPTOR_HANDLE handle);
/* One array in place, two out of place (input, output); split complex
 * storage: (re, im) in place, (in re, in im, out re, out im) out of place. */
NXL_API nxl_int DftiComputeForward(DFTI_DESCRIPTOR_HANDLE handle, void *array1, ...);
NXL_API nxl_int DftiComputeBackward(DFTI_DESCRIPTOR_HANDLE handle, void *array1, ...);
NXL_API nxl_int DftiErrorClass(nxl_int status, nxl_int error_class);
NXL_API const char *DftiErrorMessage(nxl_int status);

/* ---- Fortran entries (every argument by address; also with a trailing
 * underscore; the result is the status as a 32-bit integer) -------------- */
#define NXL_DFTI_F(ret, name, params) NXL_API ret name params; NXL_API ret name##_ params;
NXL_DFTI_F(int, dfti_create_descriptor_1d, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *precision,
                                            const nxl_int *domain, const nxl_int *dimension, const nxl_int *length))
NXL_DFTI_F(int, dfti_create_descriptor_highd, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *precision,
                                               const nxl_int *domain, const nxl_int *dimension, const nxl_int *lengths))
NXL_DFTI_F(int, dfti_create_descriptor_s_1d, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *precision,
                                              const nxl_int *domain, const nxl_int *dimension, const nxl_int *length))
NXL_DFTI_F(int, dfti_create_descriptor_d_1d, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *precision,
                                              const nxl_int *domain, const nxl_int *dimension, const nxl_int *length))
NXL_DFTI_F(int, dfti_create_descriptor_s_md, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *precision,
                                              const nxl_int *domain, const nxl_int *dimension, const nxl_int *lengths))
NXL_DFTI_F(int, dfti_create_descriptor_d_md, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *precision,
                                              const nxl_int *domain, const nxl_int *dimension, const nxl_int *lengths))
NXL_DFTI_F(int, dfti_set_value_intval, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, const nxl_int *value))
NXL_DFTI_F(int, dfti_get_value_intval, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, nxl_int *value))
NXL_DFTI_F(int, dfti_set_value_sglval, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, const float *value))
NXL_DFTI_F(int, dfti_get_value_sglval, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, float *value))
NXL_DFTI_F(int, dfti_set_value_dblval, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, const double *value))
NXL_DFTI_F(int, dfti_get_value_dblval, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, double *value))
NXL_DFTI_F(int, dfti_set_value_intvec, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, const nxl_int *values))
NXL_DFTI_F(int, dfti_get_value_intvec, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, nxl_int *values))
NXL_DFTI_F(int, dfti_set_value_chars, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, const char *chars,
                                       size_t length))
NXL_DFTI_F(int, dfti_get_value_chars, (DFTI_DESCRIPTOR_HANDLE *handle, const nxl_int *parameter, char *chars,
                                       size_t length))
NXL_DFTI_F(int, dfti_copy_descriptor_external, (DFTI_DESCRIPTOR_HANDLE *source, DFTI_DESCRIPTOR_HANDLE *copy))
NXL_DFTI_F(int, dfti_free_descriptor_external, (DFTI_DESCRIPTOR_HANDLE *handle))
NXL_DFTI_F(int, dfti_commit_descriptor_external, (DFTI_DESCRIPTOR_HANDLE *handle))
NXL_DFTI_F(int, dfti_error_class_external, (const nxl_int *status, const nxl_int *error_class))
NXL_DFTI_F(char *, dfti_error_message_external, (char *buffer, size_t buffer_length, const nxl_int *status))

#define NXL_DFTI_COMPUTE_1(dir, kind) \
  NXL_DFTI_F(int, dfti_compute_##dir##_##kind, (DFTI_DESCRIPTOR_HANDLE *handle, void *a1))
#define NXL_DFTI_COMPUTE_2(dir, kind) \
  NXL_DFTI_F(int, dfti_compute_##dir##_##kind, (DFTI_DESCRIPTOR_HANDLE *handle, void *a1, void *a2))
#define NXL_DFTI_COMPUTE_4(dir, kind) \
  NXL_DFTI_F(int, dfti_compute_##dir##_##kind, (DFTI_DESCRIPTOR_HANDLE *handle, void *a1, void *a2, void *a3, void *a4))
NXL_DFTI_COMPUTE_1(forward, z) NXL_DFTI_COMPUTE_1(forward, c) NXL_DFTI_COMPUTE_1(forward, d) NXL_DFTI_COMPUTE_1(forward, s)
NXL_DFTI_COMPUTE_1(backward, z) NXL_DFTI_COMPUTE_1(backward, c) NXL_DFTI_COMPUTE_1(backward, d) NXL_DFTI_COMPUTE_1(backward, s)
NXL_DFTI_COMPUTE_2(forward, zz) NXL_DFTI_COMPUTE_2(forward, cc) NXL_DFTI_COMPUTE_2(forward, dd) NXL_DFTI_COMPUTE_2(forward, ss)
NXL_DFTI_COMPUTE_2(backward, zz) NXL_DFTI_COMPUTE_2(backward, cc) NXL_DFTI_COMPUTE_2(backward, dd) NXL_DFTI_COMPUTE_2(backward, ss)
NXL_DFTI_COMPUTE_2(forward, dz) NXL_DFTI_COMPUTE_2(forward, sc)
NXL_DFTI_COMPUTE_2(backward, zd) NXL_DFTI_COMPUTE_2(backward, cs)
NXL_DFTI_COMPUTE_4(forward, dddd) NXL_DFTI_COMPUTE_4(forward, ssss)
NXL_DFTI_COMPUTE_4(backward, dddd) NXL_DFTI_COMPUTE_4(backward, ssss)
#undef NXL_DFTI_COMPUTE_1
#undef NXL_DFTI_COMPUTE_2
#undef NXL_DFTI_COMPUTE_4
#undef NXL_DFTI_F

#ifdef __cplusplus
}
#endif

#endif /* NXL_DFTI_H */
