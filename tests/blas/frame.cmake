# Tests of the BLAS call frame: level-1 and sparse routines against an
# oracle, the level-1 threading (team sizes, chunks, combination order), the
# argument checks of every level-2/3 routine, the trace line and CBLAS.
nxl_add_gtest(test_blas_level1 SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_level1.cpp INTERNAL)
nxl_add_gtest(test_blas_level1_threads SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_level1_threads.cpp INTERNAL)
nxl_add_gtest(test_blas_sparse SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_sparse.cpp INTERNAL)
nxl_add_gtest(test_blas_frame_checks SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_frame_checks.cpp INTERNAL)
nxl_add_gtest(test_blas_cblas SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_cblas.cpp)

# The trace line, from a small application run in fresh processes.
add_executable(blas_frame_driver ${CMAKE_CURRENT_SOURCE_DIR}/frame_driver.cpp)
target_link_libraries(blas_frame_driver PRIVATE nxl)
nxl_add_gtest(test_blas_frame_trace SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_frame_trace.cpp)
target_compile_definitions(test_blas_frame_trace PRIVATE FRAME_DRIVER="$<TARGET_FILE:blas_frame_driver>")
add_dependencies(test_blas_frame_trace blas_frame_driver)

# The reference BLAS/CBLAS test programs against libnxl.so; the CBLAS
# programs take two globals of their reference library from a test-only
# object.
add_library(cblas_globals SHARED ${CMAKE_CURRENT_SOURCE_DIR}/cblas_globals.c)
set_target_properties(cblas_globals PROPERTIES C_VISIBILITY_PRESET default)
if(EXISTS /usr/lib/x86_64-linux-gnu/blas64/xblat1d)
  add_test(NAME blas_conformance
    COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/run_conformance.sh ${PROJECT_BINARY_DIR})
  set_tests_properties(blas_conformance PROPERTIES LABELS conformance TIMEOUT 3000)
endif()
