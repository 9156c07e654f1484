# Level-3 BLAS: the engine against a long-double oracle, in every precision,
# on the default code path and again on forced lower paths.
nxl_add_gtest(test_level3 SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/test_level3.cpp INTERNAL)
foreach(variant "AVX2;NXL_ENABLE_INSTRUCTIONS=AVX2" "CNR;NXL_CBWR=SSE2" "AVX;NXL_ENABLE_INSTRUCTIONS=AVX"
        "SSE4_2;NXL_ENABLE_INSTRUCTIONS=SSE4_2")
  list(GET variant 0 tag)
  list(GET variant 1 env)
  add_test(NAME level3_path_${tag} COMMAND test_level3)
  set_tests_properties(level3_path_${tag} PROPERTIES ENVIRONMENT "${env}" TIMEOUT 900)
endforeach()
