# Linear-equation families beyond LU and Cholesky: band, tridiagonal,
# packed and triangular storage.
set(lapack_fam_extra "")
if(NXL_LAPACK_TEST_SHIM)
  set(lapack_fam_extra ${CMAKE_CURRENT_SOURCE_DIR}/shim.cpp)
endif()
file(GLOB lapack_fam_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/test_families*.cpp)
nxl_add_gtest(lapack_families_tests
  SOURCES ${lapack_fam_sources} ${lapack_fam_extra}
  INTERNAL)
