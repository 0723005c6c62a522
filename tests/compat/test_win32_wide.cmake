# Linked against the shared library itself (kept although nothing calls into it
# by name), so that the C-library-named wide functions are within reach of the
# linker and the loader; dlopen and dlsym reach them through the same file.
target_link_libraries(${SCRIM_TEST_TARGET} PRIVATE -Wl,--no-as-needed scrimpresent)
target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE SCRIM_LIBRARY="$<TARGET_FILE:scrimpresent>")
