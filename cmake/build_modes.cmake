# Compiler flags of the two ways this project is built.
#
# KALMO_SANITIZE  (preset dev)      address and undefined-behaviour sanitizers
# KALMO_HARDEN    (preset release)  position-independent, read-only relocations, guarded stack and libc calls
# KALMO_FUZZ      (preset fuzz)     libFuzzer on top of the sanitizers, clang++ only

option(KALMO_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(KALMO_HARDEN "Build with the hardening flags of a release" OFF)
option(KALMO_FUZZ "Build the fuzz targets with libFuzzer" OFF)

add_library(kalmo_flags INTERFACE)
target_include_directories(kalmo_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kalmo_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion;-Wold-style-cast;-Wnon-virtual-dtor;-Wformat=2;-Werror>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:Clang>>:-Wno-sign-conversion>)

if(KALMO_SANITIZE)
  set(kalmo_san -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(kalmo_flags INTERFACE ${kalmo_san})
  target_link_options(kalmo_flags INTERFACE ${kalmo_san})
endif()

if(KALMO_HARDEN)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  target_compile_options(kalmo_flags INTERFACE -fstack-protector-strong -D_FORTIFY_SOURCE=2)
  target_link_options(kalmo_flags INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
endif()

if(KALMO_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "KALMO_FUZZ needs clang++")
  endif()
  target_compile_options(kalmo_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
