# Runs a program and checks how it ends and what it says, a regular expression over its output and errors together:
#   cmake -DEXIT=1 "-DSAYS=no hearing aid was heard" -P Run.cmake -- PROGRAM ARGUMENTS…

cmake_policy(VERSION 3.25)
set(command "")
set(isCommand FALSE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE ${last})
    if(isCommand)
        list(APPEND command "${CMAKE_ARGV${i}}")
    elseif(CMAKE_ARGV${i} STREQUAL "--")
        set(isCommand TRUE)
    endif()
endforeach()

execute_process(COMMAND ${command} RESULT_VARIABLE exit OUTPUT_VARIABLE said ERROR_VARIABLE said)
message(NOTICE "${said}")
if(NOT exit STREQUAL EXIT)
    message(FATAL_ERROR "it ended with ${exit} instead of ${EXIT}")
endif()
if(NOT said MATCHES "${SAYS}")
    message(FATAL_ERROR "it did not say: ${SAYS}")
endif()
