# Tests of the descriptor interface, commit, compute and the backends.

foreach(t params transforms backends packed2d direct)
  nxl_add_gtest(test_dfti_${t}
    SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_dfti_${t}.cpp INTERNAL)
endforeach()

# Tracing of compute calls, in a fresh process with NXL_VERBOSE=1.
add_executable(dfti_verbose_driver ${CMAKE_CURRENT_SOURCE_DIR}/verbose_driver.cpp)
target_link_libraries(dfti_verbose_driver PRIVATE nxl_testlib)
target_compile_definitions(dfti_verbose_driver PRIVATE NXL_BUILDING_LIBRARY=1)
target_include_directories(dfti_verbose_driver PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
add_test(NAME dfti_verbose_trace COMMAND dfti_verbose_driver)
set_tests_properties(dfti_verbose_trace PROPERTIES ENVIRONMENT "NXL_VERBOSE=1"
  PASS_REGULAR_EXPRESSION "NXL_VERBOSE FFT\\(dcfo8x4v3,fScale:0.5,tLim:1,desc:0x[0-9a-f]+\\) [0-9.]+[nmu]?s CNR:")

# The exported entries as an application sees them (libnxl.so).
nxl_add_gtest(test_dfti_app SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_dfti_app.cpp)
