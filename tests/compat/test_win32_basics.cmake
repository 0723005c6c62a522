# A small module for LoadLibrary to load, and the command that runs this test
# program again as a child (through the emulator in a cross build).
add_library(scrim_test_module SHARED ${CMAKE_CURRENT_SOURCE_DIR}/compat/win32_test_module.c)
add_dependencies(${SCRIM_TEST_TARGET} scrim_test_module)
string(REPLACE ";" " " _emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE SCRIM_TEST_MODULE="$<TARGET_FILE:scrim_test_module>"
                                                        SCRIM_TEST_EMULATOR="${_emulator}")
