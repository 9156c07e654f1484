# Complex gemm on the native complex micro-kernels: on the processor's own
# path and again on the forced AVX2 path, which has them.
nxl_add_gtest(test_gemm_native SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_gemm_native.cpp)
add_test(NAME gemm_native_path_AVX2 COMMAND test_gemm_native)
set_tests_properties(gemm_native_path_AVX2 PROPERTIES ENVIRONMENT "NXL_ENABLE_INSTRUCTIONS=AVX2" TIMEOUT 900)
