# Linear-equation families beyond LU and Cholesky: band, tridiagonal,
# packed and triangular storage.
file(GLOB lapack_fam_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/test_families*.cpp)
nxl_add_gtest(lapack_families_tests
  SOURCES ${lapack_fam_sources}
  INTERNAL)
