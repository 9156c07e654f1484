# Transform-engine tests (internal: they call the engine's C++ API).
nxl_add_gtest(test_dft_engine INTERNAL
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_engine.cpp ${CMAKE_CURRENT_LIST_DIR}/engine_shim.cpp
  LIBS dl)
