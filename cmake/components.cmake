# kalmo_unity(TARGET): a program or library whose sources a release compiles as one. What a source holds for itself, in a
# namespace without a name say, must have a name that no other source of its folder uses.
function(kalmo_unity target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${KALMO_UNITY} UNITY_BUILD_BATCH_SIZE 0
    UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
endfunction()

# kalmo_library(NAME SOURCES... [LINK libraries...] [BESIDE]): the folder it is called in as a static library of that
# name. What it links is the one place where it is written down whose headers the folder may include: its own, and
# those of what it links, directly or through others; kalmo_check_includes sees to it. BESIDE is another library of a
# folder that has one already.
function(kalmo_library name)
  cmake_parse_arguments(arg "BESIDE" "" "LINK" ${ARGN})
  add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PUBLIC kalmo_flags ${arg_LINK})
  kalmo_unity(${name})
  if(NOT arg_BESIDE)
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    set_property(GLOBAL APPEND PROPERTY KALMO_LAYERS "${name}")
    set_property(GLOBAL PROPERTY KALMO_FOLDER_${name} "${folder}")
    set_property(GLOBAL PROPERTY KALMO_LINK_${name} "${arg_LINK}")
  endif()
endfunction()

# The folders whose headers a library may include, itself among them.
function(kalmo_folders name result)
  get_property(folder GLOBAL PROPERTY KALMO_FOLDER_${name})
  get_property(links GLOBAL PROPERTY KALMO_LINK_${name})
  set(folders ${folder})
  foreach(link ${links})
    get_property(known GLOBAL PROPERTY KALMO_FOLDER_${link})
    if(known)
      kalmo_folders(${link} below)
      list(APPEND folders ${below})
    endif()
  endforeach()
  list(REMOVE_DUPLICATES folders)
  set(${result} ${folders} PARENT_SCOPE)
endfunction()

# Called once, behind all libraries: a part of every build that fails when a source of a library's folder includes a
# header of one that the library does not link.
function(kalmo_check_includes)
  get_property(layers GLOBAL PROPERTY KALMO_LAYERS)
  set(rules "")
  set(sources "")
  foreach(name ${layers})
    kalmo_folders(${name} folders)
    string(APPEND rules "${folders}\n")
    list(GET folders 0 folder)
    file(GLOB found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
    list(APPEND sources ${found})
  endforeach()
  set(rule_file ${PROJECT_BINARY_DIR}/layers.txt)
  file(CONFIGURE OUTPUT ${rule_file} CONTENT "${rules}")
  set(stamp ${PROJECT_BINARY_DIR}/includes.checked)
  set(script ${PROJECT_SOURCE_DIR}/cmake/check_includes.cmake)
  add_custom_command(
    OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -D SOURCE=${PROJECT_SOURCE_DIR} -D RULES=${rule_file} -P ${script}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${sources} ${rule_file} ${script}
    COMMENT "Checking who includes whom"
    VERBATIM)
  add_custom_target(check_includes ALL DEPENDS ${stamp})
endfunction()

# Called once, behind all libraries: a part of every build that fails when none of their sources uses a text of the
# catalogues.
function(kalmo_check_texts)
  get_property(layers GLOBAL PROPERTY KALMO_LAYERS)
  set(folders "")
  foreach(name ${layers})
    get_property(folder GLOBAL PROPERTY KALMO_FOLDER_${name})
    if(NOT folder MATCHES "^(tests|testkit)")
      list(APPEND folders ${folder})
    endif()
  endforeach()
  list(REMOVE_DUPLICATES folders)
  set(sources "")
  foreach(folder ${folders})
    file(GLOB found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
    list(APPEND sources ${found})
  endforeach()
  list(JOIN sources "\n" lines)
  set(source_file ${PROJECT_BINARY_DIR}/text_users.txt)
  file(CONFIGURE OUTPUT ${source_file} CONTENT "${lines}\n")
  set(numbers ${PROJECT_BINARY_DIR}/framework/text_number.h)
  set(stamp ${PROJECT_BINARY_DIR}/texts.checked)
  set(script ${PROJECT_SOURCE_DIR}/cmake/check_texts.cmake)
  add_custom_command(
    OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -D NUMBERS=${numbers} -D SOURCES=${source_file} -P ${script}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${sources} kalmo_texts ${numbers} ${source_file} ${script}
    COMMENT "Checking that every text is used"
    VERBATIM)
  add_custom_target(check_texts ALL DEPENDS ${stamp})
endfunction()
