# ISA-L, as ISAL::ISAL: what inflates with KALMO_INFLATE=isal, and what the tests hold against zlib in any case.
# Debian has it as a shared library only; the portable program's is built from the same source package, once in a build
# folder.
if(KALMO_PORTABLE AND KALMO_INFLATE STREQUAL "isal")
  set(isal_root ${PROJECT_BINARY_DIR}/isal)
  set(isal_script ${PROJECT_SOURCE_DIR}/tools/build_isal.sh)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${isal_script})
  execute_process(COMMAND ${isal_script} ${isal_root} RESULT_VARIABLE isal_result)
  if(NOT isal_result EQUAL 0)
    message(FATAL_ERROR "There is no static ISA-L; its reason stands above. -DKALMO_INFLATE=zlib goes without it.")
  endif()
  set(isal_library ${isal_root}/lib/libisal.a)
  set(isal_include ${isal_root}/include)
elseif(KALMO_INFLATE STREQUAL "isal" OR (KALMO_TESTS AND NOT KALMO_PORTABLE))
  find_library(KALMO_ISAL_LIBRARY isal)
  find_path(KALMO_ISAL_INCLUDE isa-l/igzip_lib.h)
  if(NOT KALMO_ISAL_LIBRARY OR NOT KALMO_ISAL_INCLUDE)
    message(FATAL_ERROR "KALMO_INFLATE=isal and the tests need ISA-L (Debian: libisal-dev).")
  endif()
  set(isal_library ${KALMO_ISAL_LIBRARY})
  set(isal_include ${KALMO_ISAL_INCLUDE})
endif()
if(isal_library)
  add_library(ISAL::ISAL UNKNOWN IMPORTED)
  set_target_properties(ISAL::ISAL PROPERTIES
    IMPORTED_LOCATION ${isal_library}
    INTERFACE_INCLUDE_DIRECTORIES ${isal_include})
endif()
