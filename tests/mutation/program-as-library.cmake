# Included by project(). Makes a shared library of the program's objects. So every test, and the program that tests start,
# gets a break without being linked again.
macro(add_library name kind)
    if("${name}" STREQUAL vantrel_program)
        _add_library(${name} SHARED ${ARGN})
    else()
        _add_library(${name} ${kind} ${ARGN})
    endif()
endmacro()
