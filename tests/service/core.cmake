# Tests of the core services: errors and messages, environment and threads,
# tracing, memory manager.
set(core_shim ${CMAKE_CURRENT_SOURCE_DIR}/cpu_shim.cpp)
