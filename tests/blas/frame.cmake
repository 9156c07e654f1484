# Tests of the BLAS call frame: level-1 and sparse routines against an
# oracle, the level-1 threading (team sizes, chunks, combination order), the
# argument checks of every level-2/3 routine, the trace line and CBLAS.
nxl_add_gtest(test_blas_level1 SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_level1.cpp INTERNAL)
nxl_add_gtest(test_blas_level1_threads SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_level1_threads.cpp INTERNAL)
nxl_add_gtest(test_blas_sparse SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_sparse.cpp INTERNAL)
