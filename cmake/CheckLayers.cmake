# Fails when a folder includes from one that it may not know. Run with `cmake -P cmake/CheckLayers.cmake`.

cmake_policy(VERSION 3.25)
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)

# Each folder, and the folders that it may include from. Files belong to the longest folder that begins their path.
set(layers
    "AuriskSDK/Platform:"
    "AuriskSDK/Shared/Utils:AuriskSDK/Platform"
    "AuriskSDK/Platform/Asio:AuriskSDK/Platform,AuriskSDK/Shared/Utils"
    "AuriskSDK/Platform/Manual:AuriskSDK/Platform,AuriskSDK/Shared/Utils"
    "AuriskSDK/Platform/BlueZ:AuriskSDK/Platform,AuriskSDK/Platform/Asio,AuriskSDK/Shared/Utils"
    "AuriskSDK/Shared/Accessory:AuriskSDK/Platform,AuriskSDK/Shared/Utils"
    "AuriskSDK/Shared/Dfu:AuriskSDK/Platform,AuriskSDK/Shared/Utils"
    # The update over the radio chip tiny600 travels in the frames of the family.
    "AuriskSDK/Shared/Dfu/Tiny600:AuriskSDK/Platform,AuriskSDK/Shared/Utils,AuriskSDK/Shared/Dfu,AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
    "AuriskSDK/HearingAid/Aurisk/Data:AuriskSDK/Platform/Data.h,AuriskSDK/Shared/Utils,AuriskSDK/HearingAid/AccessoryOrientation.h,AuriskSDK/HearingAid/Aurisk/Repository"
    "AuriskSDK/HearingAid/Aurisk/Repository:AuriskSDK/Platform/Data.h,AuriskSDK/Shared/Utils"
    "AuriskSDK/HearingAid/Aurisk/Service:AuriskSDK/Platform,AuriskSDK/Shared/Utils,AuriskSDK/Shared/Accessory,AuriskSDK/Shared/Dfu,AuriskSDK/Shared/Dfu/Tiny600,AuriskSDK/HearingAid/Aurisk/Data"
    "AuriskSDK/HearingAid/Aurisk:AuriskSDK/Platform,AuriskSDK/Shared/Utils,AuriskSDK/Shared/Accessory,AuriskSDK/Shared/Dfu,AuriskSDK/HearingAid/AccessoryOrientation.h,AuriskSDK/HearingAid/Aurisk/Data,AuriskSDK/HearingAid/Aurisk/Service"
    # Frames are about what the family's commands name.
    "AuriskSDK/HearingAid/Vortilex/Data:AuriskSDK/Platform/Data.h,AuriskSDK/Shared/Utils,AuriskSDK/HearingAid/AccessoryOrientation.h,AuriskSDK/HearingAid/Vortilex/PL3Command.h"
    "AuriskSDK/HearingAid/Vortilex:AuriskSDK/Platform,AuriskSDK/Shared/Utils,AuriskSDK/Shared/Accessory,AuriskSDK/HearingAid/AccessoryOrientation.h,AuriskSDK/HearingAid/Vortilex/Data"
    # The selector that the manager starts with knows every family.
    "AuriskSDK/HearingAid:AuriskSDK/Platform,AuriskSDK/Shared/Utils,AuriskSDK/Shared/Accessory,AuriskSDK/HearingAid"
    "Simulator:AuriskSDK/Platform,AuriskSDK/Shared/Utils/AuriskLog.h,AuriskSDK/Shared/Utils/HexToData.h,AuriskSDK/Shared/Utils/Queue.h"
)
# The umbrella header, the tool, the examples, tests and benchmarks may include everything.

# What a header that applications include may not bring along.
set(hidden "asio|fmt|systemd|CLI")

set(faults "")
function(fault text)
    message(NOTICE "${text}")
    set(faults "x${faults}" PARENT_SCOPE)
endfunction()

# The closure of internal headers: these are for sources alone.
set(internal "AuriskSDK/Shared/Utils/Precondition.h" "AuriskSDK/Shared/Utils/BitCodec.h" "AuriskSDK/Shared/Utils/JsonFields.h")

file(GLOB_RECURSE files RELATIVE ${root} ${root}/AuriskSDK/*.h ${root}/AuriskSDK/*.cpp ${root}/Simulator/*.h ${root}/Simulator/*.cpp)
foreach(file IN LISTS files)
    get_filename_component(folder ${file} DIRECTORY)
    set(own "")
    set(allowed "")
    foreach(layer IN LISTS layers)
        string(REGEX MATCH "^([^:]*):(.*)$" _ "${layer}")
        set(name "${CMAKE_MATCH_1}")
        set(list "${CMAKE_MATCH_2}")
        string(LENGTH "${name}" length)
        string(LENGTH "${own}" longest)
        string(FIND "${folder}/" "${name}/" position)
        if(position EQUAL 0 AND length GREATER longest)
            set(own "${name}")
            string(REPLACE "," ";" allowed "${list}")
        endif()
    endforeach()
    if(own STREQUAL "")
        if(NOT file STREQUAL "AuriskSDK/AuriskSDK.h")
            fault("${file} lies in no layer")
        endif()
        continue()
    endif()

    file(STRINGS ${root}/${file} lines REGEX "^#include")
    foreach(line IN LISTS lines)
        if(line MATCHES "^#include \"([^\"]+)\"")
            set(included "${CMAKE_MATCH_1}")
            if(NOT EXISTS ${root}/${included})
                fault("${file} includes ${included}, which is not a path from the root")
                continue()
            endif()
            get_filename_component(from ${included} DIRECTORY)
            set(found FALSE)
            foreach(place IN LISTS own allowed)
                # A folder stands for the files in it (its own: for those below it, too); a file for itself.
                if(included STREQUAL place OR from STREQUAL place)
                    set(found TRUE)
                endif()
            endforeach()
            string(FIND "${from}/" "${own}/" position)
            if(position EQUAL 0 AND NOT own STREQUAL "AuriskSDK/Platform")
                set(found TRUE)
            endif()
            if(own STREQUAL "AuriskSDK/HearingAid" AND from MATCHES "^AuriskSDK/HearingAid")
                set(found TRUE)
            endif()
            if(NOT found)
                fault("${file} includes ${included}, which is not below ${own}")
            endif()
            if(file MATCHES "\\.h$" AND included IN_LIST internal AND NOT file IN_LIST internal)
                fault("${file} includes ${included}, which is for sources alone")
            endif()
        elseif(file MATCHES "^AuriskSDK/.*\\.h$" AND NOT file IN_LIST internal AND line MATCHES "^#include <(${hidden})")
            fault("${file}: ${line}: applications would see it")
        endif()
    endforeach()
endforeach()

list(LENGTH files count)
if(faults)
    message(FATAL_ERROR "the layers leak")
endif()
message(NOTICE "layers: ${count} files checked")
