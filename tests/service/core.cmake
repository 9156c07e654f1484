# Tests of the core services: errors and messages, environment and threads,
# tracing, memory manager. Once-per-process behaviours run through
# svc_core_driver in fresh processes.
add_executable(svc_core_driver ${CMAKE_CURRENT_SOURCE_DIR}/core_driver.cpp)
target_link_libraries(svc_core_driver PRIVATE nxl_testlib)
target_compile_definitions(svc_core_driver PRIVATE NXL_BUILDING_LIBRARY=1)

foreach(t errors threads verbose memory)
  nxl_add_gtest(test_core_${t}
    SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_core_${t}.cpp INTERNAL)
  target_compile_definitions(test_core_${t} PRIVATE SVC_CORE_DRIVER="$<TARGET_FILE:svc_core_driver>")
  add_dependencies(test_core_${t} svc_core_driver)
endforeach()

# Applications with their own xerbla_/xerbla and nxl_progress_ against libnxl.so.
nxl_add_gtest(test_core_app_fortran SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_core_app_fortran.cpp)
nxl_add_gtest(test_core_app_c SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_core_app_c.cpp)

# A Fortran program with its own XERBLA (built by gfortran with 64-bit
# integers) against libnxl.so, once the library has DGEMM.
find_program(NXL_GFORTRAN gfortran)
file(GLOB core_blas_lists ${PROJECT_SOURCE_DIR}/blas/exports*.list)
set(core_blas_exports "")
foreach(l IN LISTS core_blas_lists)
  file(READ ${l} content)
  string(APPEND core_blas_exports "${content}")
endforeach()
if(NXL_GFORTRAN AND NOT NXL_SANITIZE AND core_blas_exports MATCHES "F dgemm")
  set(app_f ${CMAKE_CURRENT_BINARY_DIR}/app_xerbla_f)
  add_custom_command(OUTPUT ${app_f}
    COMMAND ${NXL_GFORTRAN} -fdefault-integer-8 -o ${app_f} ${CMAKE_CURRENT_SOURCE_DIR}/app_xerbla.f90
            -L$<TARGET_FILE_DIR:nxl> -lnxl -Wl,-rpath,$<TARGET_FILE_DIR:nxl>
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/app_xerbla.f90 nxl)
  add_custom_target(core_app_xerbla_build ALL DEPENDS ${app_f})
  add_test(NAME core_app_fortran_dgemm_xerbla COMMAND ${app_f})
  set_tests_properties(core_app_fortran_dgemm_xerbla PROPERTIES PASS_REGULAR_EXPRESSION " ok")
endif()

# The same with the reference LAPACK library loaded ahead of libnxl.so (so
# it precedes the library in the global scope).
set(core_ref_lapack /usr/lib/x86_64-linux-gnu/lapack64/liblapack64.so.3)
if(EXISTS ${core_ref_lapack} AND NOT NXL_SANITIZE)
  add_executable(test_core_app_peer ${CMAKE_CURRENT_SOURCE_DIR}/test_core_app_peer.cpp)
  target_include_directories(test_core_app_peer PRIVATE ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(test_core_app_peer PRIVATE -Wl,--no-as-needed ${core_ref_lapack} nxl
                        GTest::gtest GTest::gtest_main)
  gtest_discover_tests(test_core_app_peer DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
endif()
