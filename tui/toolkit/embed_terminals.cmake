# Writes descriptions of terminals, as this system knows them, as rows of a C++ table.
#   cmake -D INFOCMP=<program> -D OUTPUT=<file> -P embed_terminals.cmake
# infocmp gives a compiled description as the text that curses takes from the variable TERMINFO (terminfo(5)).
cmake_minimum_required(VERSION 3.25)

# What the families of terminal_description.cpp ask for. Each of them differs from all others in what its keys send, in
# how its colours are changed, or in lacking the repetition of a character that xterm has.
set(names xterm-256color linux screen-256color rxvt-256color putty-256color st-256color vt100)

set(rows "")
foreach(name IN LISTS names)
  # The system's own descriptions, not those of whoever builds.
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env --unset=TERMINFO --unset=TERMINFO_DIRS HOME=/nonexistent ${INFOCMP} -0 -q -Q2 ${name}
    OUTPUT_VARIABLE compiled
    ERROR_VARIABLE reason
    OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE status)
  if(NOT status EQUAL 0 OR NOT compiled MATCHES "^b64:[-_A-Za-z0-9+/=]+$")
    message(FATAL_ERROR "infocmp does not know the terminal ${name}; Debian has it in ncurses-base or ncurses-term.\n${reason}")
  endif()
  string(APPEND rows "{\"${name}\", \"${compiled}\"},\n")
endforeach()
file(WRITE ${OUTPUT} "${rows}")
