# What is installed can be used: installs the built tree into a folder, moves the folder, and builds and runs the first
# program from there, once by find_package and once by pkg-config.
#   cmake -DBUILD=… -DCXX=… "-DFLAGS=…" -P Install.cmake

cmake_policy(VERSION 3.25)
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(work ${BUILD}/install-test)
set(prefix ${work}/moved)
file(REMOVE_RECURSE ${work})

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE exit OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(NOT exit STREQUAL 0)
        list(JOIN ARGV " " command)
        message(FATAL_ERROR "${command}: ${exit}\n${said}")
    endif()
    set(said "${said}" PARENT_SCOPE)
endfunction()

function(expect_volume program)
    run(${program})
    if(NOT said STREQUAL "X1-L plays at volume 8\n")
        message(FATAL_ERROR "${program} said: ${said}")
    endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/first)
file(RENAME ${work}/first ${prefix})

# The source includes every header, so that one which needs a header that was left behind does not compile.
file(GLOB_RECURSE headers RELATIVE ${prefix}/include/aurisk-sdk ${prefix}/include/aurisk-sdk/*.h)
if(NOT "AuriskSDK/AuriskSDK.h" IN_LIST headers OR NOT "Simulator/Simulator.h" IN_LIST headers)
    message(FATAL_ERROR "the headers that applications include were not installed")
endif()
list(TRANSFORM headers REPLACE "(.+)" "#include <\\1>\n" OUTPUT_VARIABLE lines)
list(JOIN lines "" everyHeader)
file(READ ${root}/Examples/FirstProgram.cpp program)
if("AuriskSDK/Platform/BlueZ/BlueZ.h" IN_LIST headers)
    string(APPEND program "std::shared_ptr<aurisk::BluetoothPlatform> realRadio() { return aurisk::bluez::makePlatform(); }\n")
endif()
file(WRITE ${work}/consumer/Consumer.cpp "${everyHeader}${program}")
file(COPY_FILE ${root}/Tests/Tree/Consumer/CMakeLists.txt ${work}/consumer/CMakeLists.txt)

run(${CMAKE_COMMAND} -S ${work}/consumer -B ${work}/consumer/build -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${FLAGS})
run(${CMAKE_COMMAND} --build ${work}/consumer/build)
expect_volume(${work}/consumer/build/Consumer)

file(GLOB_RECURSE pc ${prefix}/*/aurisk-sdk.pc)
cmake_path(GET pc PARENT_PATH folder)
set(ENV{PKG_CONFIG_PATH} ${folder})
run(pkg-config --cflags --libs aurisk-sdk)
separate_arguments(flags UNIX_COMMAND "${FLAGS} ${said}")
run(${CXX} -std=c++20 ${work}/consumer/Consumer.cpp -o ${work}/by-pkg-config ${flags})
expect_volume(${work}/by-pkg-config)

run(pkg-config --variable=resources aurisk-sdk)
string(STRIP "${said}" resources)
if(NOT EXISTS ${resources}/example-a16.json)
    message(FATAL_ERROR "no device data in '${resources}'")
endif()

run(${prefix}/bin/aurisk --version)
foreach(file IN ITEMS share/man/man1/aurisk.1 share/bash-completion/completions/aurisk)
    if(NOT EXISTS ${prefix}/${file})
        message(FATAL_ERROR "${file} was not installed")
    endif()
endforeach()
