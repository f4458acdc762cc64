# The listing in the README is the example that the build compiles, word for word.

cmake_policy(VERSION 3.25)
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
file(READ ${root}/README.md readme)
file(READ ${root}/Examples/FirstProgram.cpp program)
string(FIND "${readme}" "```cpp\n${program}```" position)
if(position EQUAL -1)
    message(FATAL_ERROR "README.md does not show Examples/FirstProgram.cpp as it is")
endif()
