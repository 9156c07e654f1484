# Small-matrix LU and Cholesky kernels: every order up to past the register
# and blocked kernels, on the processor's own code path and again on forced
# lower ones (each path has its own build of the kernels).
nxl_add_gtest(lapack_small_tests
  SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_small_lu.cpp ${CMAKE_CURRENT_SOURCE_DIR}/test_small_chol.cpp
          ${CMAKE_CURRENT_SOURCE_DIR}/test_small_fused.cpp
  INTERNAL)
foreach(variant "AVX2;NXL_ENABLE_INSTRUCTIONS=AVX2" "AVX;NXL_ENABLE_INSTRUCTIONS=AVX"
        "SSE4_2;NXL_ENABLE_INSTRUCTIONS=SSE4_2" "SSE2;NXL_CBWR=SSE2" "COMPATIBLE;NXL_CBWR=COMPATIBLE")
  list(GET variant 0 tag)
  list(GET variant 1 env)
  add_test(NAME lapack_small_path_${tag} COMMAND lapack_small_tests)
  set_tests_properties(lapack_small_path_${tag} PROPERTIES ENVIRONMENT "${env}" TIMEOUT 900 LABELS paths)
endforeach()
