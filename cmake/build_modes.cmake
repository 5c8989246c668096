# How this project is compiled. A plain build makes the product alone, hardened, and takes warnings as warnings; what
# contributors need beyond that is chosen by the presets.
#
# KALMO_STRICT    (every preset)     warnings are errors
# KALMO_SAMPLES   (every preset)     the sample server with its payloads, the gallery
# KALMO_TESTS     (dev, release)     the tests and what they stand on, the fuzz corpora's replay, the measurements
# KALMO_HARDEN    (unless sanitized) guarded stack and library calls, read-only relocations and the like
# KALMO_SANITIZE  (preset dev)       address and undefined-behaviour sanitizers
# KALMO_UNITY     (release and on)   the sources of a folder are compiled as one, in a fifth of the time
# KALMO_PORTABLE  (preset portable)  one static program for every Linux
# KALMO_FUZZ      (preset fuzz)      libFuzzer on top of the sanitizers, clang++ only
# KALMO_INFLATE   (isal: release, portable, clang)  what inflates: zlib, or ISA-L where it has code for the processor
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

option(KALMO_STRICT "Warnings are errors" OFF)
option(KALMO_TESTS "Build the tests, the replay of the fuzz corpora and the measurements" OFF)
option(KALMO_SAMPLES "Build the sample server, its payloads and the gallery" ${KALMO_TESTS})
option(KALMO_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(KALMO_HARDEN "Build with the hardening flags of a release" ON)
option(KALMO_UNITY "Compile the sources of a folder as one" OFF)
option(KALMO_PORTABLE "Link everything statically, for machines that are not like this one" OFF)
option(KALMO_FUZZ "Build the fuzz targets with libFuzzer" OFF)

set(KALMO_INFLATE zlib CACHE STRING "What inflates: zlib, or isal (twice as fast, zlib where a processor lacks what it needs)")
set_property(CACHE KALMO_INFLATE PROPERTY STRINGS zlib isal)

if(NOT KALMO_INFLATE MATCHES "^(zlib|isal)$")
  message(FATAL_ERROR "KALMO_INFLATE is zlib or isal, not ${KALMO_INFLATE}")
endif()
if(KALMO_TESTS AND NOT KALMO_SAMPLES)
  message(FATAL_ERROR "KALMO_TESTS needs KALMO_SAMPLES")
endif()
get_property(kalmo_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(NOT CMAKE_BUILD_TYPE AND NOT kalmo_multi_config)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

add_library(kalmo_flags INTERFACE)
target_include_directories(kalmo_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kalmo_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion;-Wold-style-cast;-Wnon-virtual-dtor;-Wformat=2>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:Clang>>:-Wno-sign-conversion>)
if(KALMO_STRICT)
  target_compile_options(kalmo_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Werror>)
endif()

if(KALMO_SANITIZE)
  set(kalmo_san -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(kalmo_flags INTERFACE ${kalmo_san})
  target_link_options(kalmo_flags INTERFACE ${kalmo_san})
elseif(KALMO_HARDEN)
  if(NOT KALMO_PORTABLE)  # Whose own way of it kalmo_program asks for.
    check_pie_supported(LANGUAGES CXX)
  endif()
  # Some compilers come with a level of their own, and warn when it is set again.
  target_compile_options(kalmo_flags INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3> -D_GLIBCXX_ASSERTIONS)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection -ftrivial-auto-var-init=zero)
    string(MAKE_C_IDENTIFIER "KALMO_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(kalmo_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:${flag}>)
    endif()
  endforeach()
  target_link_options(kalmo_flags INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
endif()

if(KALMO_PORTABLE)
  # The libraries that find_package and find_library find from here on.
  set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
  set(ZLIB_USE_STATIC_LIBS ON)
endif()

# kalmo_program(TARGET): what is true of every program that a payload or a package brings to a machine.
function(kalmo_program target)
  if(KALMO_PORTABLE)
    target_compile_definitions(${target} PRIVATE KALMO_PORTABLE)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/framework/no_shared_objects.cpp)
    target_link_options(${target} PRIVATE -static-pie -s -Wl,--wrap=__libc_dlopen_mode)
  endif()
endfunction()

if(KALMO_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "KALMO_FUZZ needs clang++")
  endif()
  target_compile_options(kalmo_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
