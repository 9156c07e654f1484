# The BLAS suites again on forced lower code paths (the default run is the
# processor's own path), and the unit tests on an emulated processor without
# AVX (real detection, real instruction set).
set(blas_unit_programs test_blas_level1 test_blas_level1_threads test_blas_sparse
    test_blas_frame_checks test_blas_cblas test_level2)
foreach(variant "AVX2;NXL_ENABLE_INSTRUCTIONS=AVX2" "SSE2;NXL_CBWR=SSE2")
  list(GET variant 0 tag)
  list(GET variant 1 env)
  foreach(prog IN LISTS blas_unit_programs)
    add_test(NAME ${prog}_path_${tag} COMMAND ${prog})
    set_tests_properties(${prog}_path_${tag} PROPERTIES ENVIRONMENT "${env}" TIMEOUT 900 LABELS paths)
  endforeach()
  if(TEST blas_conformance)
    add_test(NAME blas_conformance_path_${tag}
      COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/run_conformance.sh ${PROJECT_BINARY_DIR})
    set_tests_properties(blas_conformance_path_${tag} PROPERTIES ENVIRONMENT "${env}"
      LABELS "conformance;paths" TIMEOUT 3000)
  endif()
endforeach()

find_program(QEMU_X86_64 qemu-x86_64)
if(QEMU_X86_64)
  # Emulation runs about eight times slower than the processor: the level-2
  # suite leaves out its largest orders there (band window limits, threaded
  # orders, the band and triangular sweeps), which run natively on every path.
  set(qemu_args_test_level2 --gtest_filter=-*BandWindowLimits*:*ThreadedOrders*:*SweepBandAndTriangular*)
  foreach(prog test_blas_level1 test_blas_sparse test_blas_frame_checks test_blas_cblas test_level2)
    add_test(NAME ${prog}_qemu_nehalem COMMAND ${QEMU_X86_64} -cpu Nehalem $<TARGET_FILE:${prog}> ${qemu_args_${prog}})
    set_tests_properties(${prog}_qemu_nehalem PROPERTIES LABELS qemu TIMEOUT 1800)
  endforeach()
endif()
