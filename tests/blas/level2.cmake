# Level-2 BLAS: dispatch layer and every kernel build against a long-double oracle.
nxl_add_gtest(test_level2 SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_level2.cpp INTERNAL)
