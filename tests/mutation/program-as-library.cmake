# Included by project(). The program's objects become a shared library. So a break of them reaches every test, and the
# program that tests start, without linking any of these again.
macro(add_library name kind)
    if("${name}" STREQUAL vantrel_program)
        _add_library(${name} SHARED ${ARGN})
    else()
        _add_library(${name} ${kind} ${ARGN})
    endif()
endmacro()
