# How everything here is compiled. Results must be the same to the bit, so nothing may change the
# value of an expression: no contraction to fused multiply-add, no fast-math, the baseline
# processor. Warnings are errors only for developers: the presets set
# CMAKE_COMPILE_WARNING_AS_ERROR.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_SKIP_RPATH ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g")

# Hardening that not every compiler has: no frame skips the stack's guard page, and jumps end only
# where one is marked. Neither changes a value.
include(CheckCXXCompilerFlag)
foreach(flag -fstack-clash-protection -fcf-protection)
  string(MAKE_C_IDENTIFIER "PELAGRIM_HAS${flag}" has_flag)
  check_cxx_compiler_flag(${flag} ${has_flag})
  if(${has_flag})
    add_compile_options(${flag})
  endif()
endforeach()

add_compile_options(
  -march=x86-64 -ffp-contract=off
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wdouble-promotion
  # g++ 12 at -O3 gives false warnings about strings made by operator+.
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
  # Two checkouts of one commit give the same bytes.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
  $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>
  -fvisibility=hidden
  -fstack-protector-strong
  $<$<CONFIG:Release>:-U_FORTIFY_SOURCE>
  $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>
  # A unique symbol would pin the library in memory past dlclose.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

if(PELAGRIM_SANITIZE)
  add_compile_options(
    -fsanitize=${PELAGRIM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    # The instrumented headers of the standard library cause false warnings of this kind.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${PELAGRIM_SANITIZE})
endif()
