# Adds a folder of the project when it has something to build.
function(kalmo_add_folder dir)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/CMakeLists.txt)
    add_subdirectory(${dir})
  endif()
endfunction()

# kalmo_library(NAME SOURCES... [LINK libraries...]): one layer of the system as a static library.
function(kalmo_library name)
  cmake_parse_arguments(arg "" "" "LINK" ${ARGN})
  add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PUBLIC kalmo_flags ${arg_LINK})
endfunction()
