# The host's view loads the built shared library with dlopen, as a player does.
target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE SCRIM_LIBRARY_PATH="$<TARGET_FILE:scrimpresent>")
add_dependencies(${SCRIM_TEST_TARGET} scrimpresent)
