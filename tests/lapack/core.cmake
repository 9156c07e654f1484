# LAPACK core: frame, tuning oracle, LU and Cholesky families.
set(NXL_LAPACK_TEST_SHIM ON CACHE BOOL "Link the LAPACK tests with stand-ins for unmerged subsystems")
set(lapack_core_extra "")
set(lapack_core_libs "")
if(NXL_LAPACK_TEST_SHIM)
  set(lapack_core_extra ${CMAKE_CURRENT_SOURCE_DIR}/shim.cpp)

endif()
nxl_add_gtest(lapack_core_tests
  SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_lu.cpp ${CMAKE_CURRENT_SOURCE_DIR}/test_chol.cpp
          ${CMAKE_CURRENT_SOURCE_DIR}/test_frame.cpp ${CMAKE_CURRENT_SOURCE_DIR}/test_aux.cpp ${lapack_core_extra}
  LIBS ${lapack_core_libs}
  INTERNAL)

# The standard's linear-equation test programs against libnxl.so.
add_test(NAME lapack_conformance
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run_conformance.sh ${PROJECT_BINARY_DIR})
set_tests_properties(lapack_conformance PROPERTIES LABELS conformance TIMEOUT 7200)
