# Flags that every object of the project is compiled with. The three that follow keep the promise that a result
# depends on its operands alone: nothing is fused that is not written as fused, and math functions that set
# errno or trap would keep square roots and roundings from vectorising without changing a value.
include(CheckCXXCompilerFlag)

add_library(qorn_build_flags INTERFACE)
target_compile_features(qorn_build_flags INTERFACE cxx_std_20)
target_compile_options(qorn_build_flags INTERFACE
  -ffp-contract=off -fno-math-errno -fno-trapping-math
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wdouble-promotion -Wold-style-cast
  $<$<BOOL:${QORN_WARNINGS_AS_ERRORS}>:-Werror>)
if(QORN_CHECKED)
  target_compile_definitions(qorn_build_flags INTERFACE QORN_CHECKED=1)
endif()

# Instruction-set levels of the kernel layer: each lists the compiler flags that make it. "base" is what the
# platform guarantees. A level that the compiler cannot build is left out with a message.
set(QORN_LEVELS base)
set(QORN_LEVEL_FLAGS_base "")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64")
  set(QORN_LEVEL_FLAGS_v3 -mavx2 -mfma -mbmi -mbmi2)
  set(QORN_LEVEL_FLAGS_v4 ${QORN_LEVEL_FLAGS_v3} -mavx512f -mavx512bw -mavx512cd -mavx512dq -mavx512vl
      -mprefer-vector-width=512)
  # Without the barrier, this compiler fuses interleaved complex products even with contraction off.
  set(rounding_can_be_forced TRUE)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
    set(rounding_can_be_forced FALSE)
    message(STATUS "qorn: GCC below 12 cannot be kept from fusing; building the base level only")
  endif()
  foreach(level v3 v4)
    string(REPLACE ";" " " flags "${QORN_LEVEL_FLAGS_${level}}")
    check_cxx_compiler_flag("${flags}" QORN_COMPILER_HAS_${level})
    if(rounding_can_be_forced AND QORN_COMPILER_HAS_${level})
      list(APPEND QORN_LEVELS ${level})
    else()
      message(STATUS "qorn: level ${level} is left out")
    endif()
  endforeach()
endif()
