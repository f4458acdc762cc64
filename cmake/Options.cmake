# What every target of this project is compiled with. `aurisk_target(NAME)` applies it.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
find_program(CCACHE ccache)
if(CCACHE AND PROJECT_IS_TOP_LEVEL)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_library(aurisk_options INTERFACE)
target_compile_features(aurisk_options INTERFACE cxx_std_20)
target_compile_options(aurisk_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor)
if(AURISK_SANITIZE)
    target_compile_options(aurisk_options INTERFACE -fsanitize=${AURISK_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(aurisk_options INTERFACE -fsanitize=${AURISK_SANITIZE})
    if(AURISK_SANITIZE MATCHES "undefined")
        target_compile_options(aurisk_options INTERFACE -fno-sanitize-recover=undefined)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Asio has fences, which the thread sanitizer does not see and g++ warns about.
        target_compile_options(aurisk_options INTERFACE -Wno-tsan)
    endif()
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Optimising, or with a sanitizer, g++ 12 sees overflows in inlined insertions into vectors and strings, and
    # uninitialised parts of an optional<vector>, that are none.
    target_compile_options(aurisk_options INTERFACE
        -Wno-stringop-overflow -Wno-stringop-overread -Wno-array-bounds -Wno-restrict -Wno-maybe-uninitialized)
endif()

function(aurisk_target name)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:aurisk_options>)
    set_target_properties(${name} PROPERTIES CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
endfunction()
