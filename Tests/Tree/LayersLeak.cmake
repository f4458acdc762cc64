# The check of the layers finds what it is there to find: on a copy of the tree, each of these lines makes it fail.

cmake_policy(VERSION 3.25)
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(copy ${CMAKE_CURRENT_BINARY_DIR}/layers)
file(REMOVE_RECURSE ${copy})
file(COPY ${root}/AuriskSDK ${root}/Simulator ${root}/cmake DESTINATION ${copy})

function(check_layers result)
    execute_process(COMMAND ${CMAKE_COMMAND} -P ${copy}/cmake/CheckLayers.cmake
        RESULT_VARIABLE exit OUTPUT_VARIABLE said ERROR_VARIABLE said)
    set(${result} "${exit}" PARENT_SCOPE)
    set(said "${said}" PARENT_SCOPE)
endfunction()

check_layers(exit)
if(NOT exit EQUAL 0)
    message(FATAL_ERROR "it fails on the tree as it is:\n${said}")
endif()

foreach(leak IN ITEMS
    "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h|#include \"AuriskSDK/Shared/Accessory/Accessory.h\""
    "AuriskSDK/Platform/Dispatch.h|#include \"AuriskSDK/Shared/Utils/AuriskLog.h\""
    "Simulator/Simulator.h|#include \"AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h\""
    "AuriskSDK/Shared/Accessory/Accessory.h|#include \"AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h\""
    "AuriskSDK/Shared/Accessory/Accessory.h|#include \"AuriskSDK/Shared/Utils/Precondition.h\""
    "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h|#include <fmt/core.h>")
    string(REGEX MATCH "^([^|]*)[|](.*)$" _ "${leak}")
    set(file ${CMAKE_MATCH_1})
    set(line "${CMAKE_MATCH_2}")
    file(APPEND ${copy}/${file} "${line}\n")
    check_layers(exit)
    file(COPY_FILE ${root}/${file} ${copy}/${file})
    if(exit EQUAL 0 OR NOT said MATCHES "${file}")
        message(FATAL_ERROR "it does not find ${line} in ${file}:\n${said}")
    endif()
endforeach()
