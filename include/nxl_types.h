/* Basic types of the NXL interfaces: the 64-bit integer of every exported
 * interface (ILP64) and the complex element types (real part first). */
#ifndef NXL_TYPES_H
#define NXL_TYPES_H

#ifdef __cplusplus
extern "C" {
#endif

#ifndef NXL_INT
#define NXL_INT long long int
#endif
typedef NXL_INT nxl_int;
typedef unsigned long long int nxl_uint;

typedef struct { float real; float imag; } nxl_complex8;
typedef struct { double real; double imag; } nxl_complex16;

#if defined(NXL_BUILDING_LIBRARY)
#define NXL_API __attribute__((visibility("default")))
#else
#define NXL_API
#endif

#ifdef __cplusplus
}
#endif

#endif /* NXL_TYPES_H */
