# Transform-engine tests (internal: they call the engine's C++ API).
nxl_add_gtest(test_dft_engine INTERNAL SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_engine.cpp LIBS dl)

# A timing tool for the engine alone (suite fft-engine), linked on the
# library's objects since the engine is internal; the benchmark program
# measures transforms through the exported interface.
add_executable(dft_engine_bench ${PROJECT_SOURCE_DIR}/bench/main.cpp ${CMAKE_CURRENT_LIST_DIR}/bench_engine.cpp)
target_link_libraries(dft_engine_bench PRIVATE nxl_testlib dl)
target_include_directories(dft_engine_bench PRIVATE ${PROJECT_SOURCE_DIR}/bench ${PROJECT_SOURCE_DIR})

# The in-register kernels of short power-of-two transforms.
nxl_add_gtest(test_dft_engine_small INTERNAL SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_engine_small.cpp)
