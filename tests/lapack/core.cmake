# LAPACK core: frame, tuning oracle, LU and Cholesky families.
nxl_add_gtest(lapack_core_tests
  SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_lu.cpp ${CMAKE_CURRENT_SOURCE_DIR}/test_chol.cpp
          ${CMAKE_CURRENT_SOURCE_DIR}/test_frame.cpp ${CMAKE_CURRENT_SOURCE_DIR}/test_aux.cpp
  INTERNAL)

# The standard's linear-equation test programs against libnxl.so.
add_test(NAME lapack_conformance
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run_conformance.sh ${PROJECT_BINARY_DIR})
set_tests_properties(lapack_conformance PROPERTIES LABELS conformance TIMEOUT 7200)
