# Tests of processor detection, the instruction cap and the reproducibility
# mode, and the disassembly check of the code paths.

# The detection driver: links the library's objects so it can also call the
# internal cap and reproducibility entries.
add_executable(cpu_probe_driver ${CMAKE_CURRENT_SOURCE_DIR}/cpu_probe_driver.cpp)
target_link_libraries(cpu_probe_driver PRIVATE nxl_testlib)
target_compile_definitions(cpu_probe_driver PRIVATE NXL_BUILDING_LIBRARY=1)

# In-process tests of the internals (state reset between cases).
nxl_add_gtest(test_cpu INTERNAL SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/test_cpu.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/test_cbwr.cpp)

# Fresh-process tests through the driver, natively and under qemu.
function(cpu_driver_gtest name label)
  add_executable(${name} ${CMAKE_CURRENT_SOURCE_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE GTest::gtest GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE
    CPU_PROBE_DRIVER="$<TARGET_FILE:cpu_probe_driver>")
  add_dependencies(${name} cpu_probe_driver)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 600 LABELS ${label})
endfunction()
cpu_driver_gtest(test_cpu_env unit)
cpu_driver_gtest(test_cpu_qemu qemu)

# No function outside an AVX/AVX2 path may touch ymm, none outside an
# AVX-512 path zmm.
add_test(NAME isa_check COMMAND ${PROJECT_SOURCE_DIR}/cmake/check_isa.sh $<TARGET_FILE:nxl>)
set_tests_properties(isa_check PROPERTIES LABELS isa)

# The exported entries through libnxl.so, as an application uses them.
nxl_add_gtest(test_cpu_exports SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_cpu_exports.cpp)
