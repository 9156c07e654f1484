# Per-code-path compilation.
#
# A kernel source is compiled once per code path with that path's flags.
# Everything it defines lives in the namespace nxl::cp_<path> (NXL_CP_NS), so
# the linker can never merge an inline function or template instantiation of a
# higher path into a lower one; its extern "C" kernels carry the path's infix
# through NXL_CP_TAG (nxl_blas_avx2_xdaxpy, nxl_blas_cnr_def_xdaxpy).

set(NXL_CODE_PATHS def mc mc3 avx avx2 avx512_mic avx512 cnr)
set(NXL_CODE_PATHS_PLAIN_UNDER_SANITIZERS def mc mc3 avx avx2 avx512_mic)

set(NXL_CP_FLAGS_def        -msse2)
set(NXL_CP_FLAGS_mc         -mssse3)
set(NXL_CP_FLAGS_mc3        -msse4.2 -mpopcnt)
set(NXL_CP_FLAGS_avx        -mavx)
set(NXL_CP_FLAGS_avx2       -mavx2 -mfma -mbmi2 -mf16c)
set(NXL_CP_FLAGS_avx512_mic -mavx512f -mavx512cd -mavx2 -mfma -mbmi2 -mf16c -mprefer-vector-width=512)
set(NXL_CP_FLAGS_avx512     -mavx512f -mavx512cd -mavx512bw -mavx512dq -mavx512vl -mavx2 -mfma -mbmi2 -mf16c -mprefer-vector-width=512)
# The reproducible build: baseline instructions, no contraction into FMA,
# a fixed order of operations.
set(NXL_CP_FLAGS_cnr        -msse2 -ffp-contract=off)

set(NXL_CP_ID_def 0)
set(NXL_CP_ID_mc 2)
set(NXL_CP_ID_mc3 3)
set(NXL_CP_ID_avx 4)
set(NXL_CP_ID_avx2 5)
set(NXL_CP_ID_avx512_mic 6)
set(NXL_CP_ID_avx512 7)
set(NXL_CP_ID_cnr 100)

set(NXL_CP_TAG_cnr cnr_def)

# Flags and include paths of every translation unit of the library.
function(nxl_internal_target tgt)
  target_include_directories(${tgt} PRIVATE
    ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
  target_compile_options(${tgt} PRIVATE ${OpenMP_CXX_FLAGS} -ffp-contract=off)
  target_compile_definitions(${tgt} PRIVATE NXL_BUILDING_LIBRARY=1)
  # Only the listed entries are exported: everything else is hidden.
  set_target_properties(${tgt} PROPERTIES POSITION_INDEPENDENT_CODE ON
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# nxl_add_sources(src...): sources compiled once with the baseline flags.
function(nxl_add_sources)
  foreach(src IN LISTS ARGN)
    get_filename_component(abs ${src} ABSOLUTE)
    set_property(GLOBAL APPEND PROPERTY NXL_SOURCES ${abs})
  endforeach()
endfunction()

# nxl_add_codepath_sources(NAME [PATHS cp...] SOURCES src...): sources
# compiled once per code path (all eight unless PATHS names some), each
# compilation with that path's flags, namespace and symbol infix.
function(nxl_add_codepath_sources name)
  cmake_parse_arguments(A "" "" "PATHS;SOURCES" ${ARGN})
  if(NOT A_PATHS)
    set(A_PATHS ${NXL_CODE_PATHS})
  endif()
  foreach(cp IN LISTS A_PATHS)
    set(lib ${name}_${cp})
    add_library(${lib} OBJECT ${A_SOURCES})
    nxl_internal_target(${lib})
    if(DEFINED NXL_CP_TAG_${cp})
      set(tag ${NXL_CP_TAG_${cp}})
    else()
      set(tag ${cp})
    endif()
    target_compile_options(${lib} PRIVATE ${NXL_CP_FLAGS_${cp}})
    if(NOT cp STREQUAL "cnr")
      target_compile_options(${lib} PRIVATE -ffp-contract=fast)
    endif()
    target_compile_definitions(${lib} PRIVATE
      NXL_CP=${NXL_CP_ID_${cp}} NXL_CP_NS=cp_${cp} NXL_CP_TAG=${tag})
    # The instrumented build checks the kernels of the processor's own path
    # (avx512, which the tests run by default) and of the reproducible one
    # (cnr, 16-byte vectors); the other paths compile the same sources
    # plainly. In the checked ones the kernels keep AddressSanitizer and the
    # arithmetic checks; the per-access checks (null, object size,
    # alignment, pointer overflow) are left to AddressSanitizer, because on
    # the unrolled kernels their compile time grows far faster than the
    # code. Both keep the instrumented build within the CI run's time.
    if(NXL_SANITIZE AND cp IN_LIST NXL_CODE_PATHS_PLAIN_UNDER_SANITIZERS)
      target_compile_options(${lib} PRIVATE -fno-sanitize=address,undefined)
    elseif(NXL_SANITIZE)
      target_compile_options(${lib} PRIVATE -fno-sanitize=undefined
        -fsanitize=signed-integer-overflow,shift,integer-divide-by-zero,bounds,float-cast-overflow,return,unreachable,vla-bound)
    endif()
    set_property(GLOBAL APPEND PROPERTY NXL_OBJECT_LIBS ${lib})
  endforeach()
endfunction()

# nxl_add_subsystem(NAME [BASE dir...] [CODEPATH dir...] [CODEPATH_NO_CNR dir...]):
# the layout every subsystem folder follows.
#   BASE dirs      sources compiled once with the baseline flags (interface/,
#                  dispatch/ and any others the subsystem names)
#   CODEPATH dirs  generic kernels compiled once per code path (kernels/)
#   CODEPATH_NO_CNR dirs  the same without the reproducible build
#   <cp>/          hand-written kernels compiled only for that code path
#   exports*.list  the subsystem's exported names
function(nxl_add_subsystem name)
  cmake_parse_arguments(A "" "" "BASE;CODEPATH;CODEPATH_NO_CNR" ${ARGN})
  set(dir ${CMAKE_CURRENT_SOURCE_DIR})
  set(globs "")
  foreach(d interface dispatch ${A_BASE})
    list(APPEND globs ${dir}/${d}/*.cpp)
  endforeach()
  file(GLOB base_sources CONFIGURE_DEPENDS ${globs})
  nxl_add_sources(${base_sources})

  foreach(d kernels ${A_CODEPATH})
    file(GLOB srcs CONFIGURE_DEPENDS ${dir}/${d}/*.cpp)
    if(srcs)
      nxl_add_codepath_sources(${name}_${d} SOURCES ${srcs})
    endif()
  endforeach()
  set(no_cnr ${NXL_CODE_PATHS})
  list(REMOVE_ITEM no_cnr cnr)
  foreach(d IN LISTS A_CODEPATH_NO_CNR)
    file(GLOB srcs CONFIGURE_DEPENDS ${dir}/${d}/*.cpp)
    if(srcs)
      nxl_add_codepath_sources(${name}_${d} PATHS ${no_cnr} SOURCES ${srcs})
    endif()
  endforeach()

  foreach(cp IN LISTS NXL_CODE_PATHS)
    file(GLOB srcs CONFIGURE_DEPENDS ${dir}/${cp}/*.cpp)
    if(srcs)
      nxl_add_codepath_sources(${name}_isa_${cp} PATHS ${cp} SOURCES ${srcs})
    endif()
  endforeach()

  file(GLOB export_lists CONFIGURE_DEPENDS ${dir}/exports*.list)
  foreach(l IN LISTS export_lists)
    nxl_add_export_list(${l})
  endforeach()
endfunction()
