# Transform-engine tests (internal: they call the engine's C++ API).
nxl_add_gtest(test_dft_engine INTERNAL
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_engine.cpp ${CMAKE_CURRENT_LIST_DIR}/engine_shim.cpp
  LIBS dl)

# TEMPORARY: the fft-engine benchmark suite linked on the library's objects,
# until the service layer lets nxl_bench itself link.
if(EXISTS ${PROJECT_SOURCE_DIR}/bench/bench_fft_engine.cpp)
  add_executable(dft_engine_bench ${PROJECT_SOURCE_DIR}/bench/main.cpp
    ${PROJECT_SOURCE_DIR}/bench/bench_fft_engine.cpp ${CMAKE_CURRENT_LIST_DIR}/engine_shim.cpp)
  target_link_libraries(dft_engine_bench PRIVATE nxl_testlib dl)
  target_include_directories(dft_engine_bench PRIVATE ${PROJECT_SOURCE_DIR}/bench ${PROJECT_SOURCE_DIR})
endif()
