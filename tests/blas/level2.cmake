# Level-2 BLAS: dispatch layer and every kernel build against a long-double oracle.
set(nxl_level2_test_sources ${CMAKE_CURRENT_SOURCE_DIR}/test_level2.cpp)
if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/level2_shim.cpp)
  list(APPEND nxl_level2_test_sources ${CMAKE_CURRENT_SOURCE_DIR}/level2_shim.cpp)
endif()
nxl_add_gtest(test_level2 SOURCES ${nxl_level2_test_sources} INTERNAL)
