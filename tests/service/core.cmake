# Tests of the core services: errors and messages, environment and threads,
# tracing, memory manager. Once-per-process behaviours run through
# svc_core_driver in fresh processes.
set(core_shim ${CMAKE_CURRENT_SOURCE_DIR}/cpu_shim.cpp)

add_executable(svc_core_driver ${CMAKE_CURRENT_SOURCE_DIR}/core_driver.cpp ${core_shim})
target_link_libraries(svc_core_driver PRIVATE nxl_testlib)
target_compile_definitions(svc_core_driver PRIVATE NXL_BUILDING_LIBRARY=1)

foreach(t errors threads verbose memory)
  nxl_add_gtest(test_core_${t}
    SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_core_${t}.cpp ${core_shim} INTERNAL)
  target_compile_definitions(test_core_${t} PRIVATE SVC_CORE_DRIVER="$<TARGET_FILE:svc_core_driver>")
  add_dependencies(test_core_${t} svc_core_driver)
endforeach()

# Applications with their own xerbla_/xerbla and nxl_progress_ against libnxl.so.
nxl_add_gtest(test_core_app_fortran SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_core_app_fortran.cpp)
nxl_add_gtest(test_core_app_c SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_core_app_c.cpp)
