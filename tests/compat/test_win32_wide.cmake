# Linked against the shared library itself (kept although nothing calls into it
# by name), so that the C-library-named wide functions are within reach of the
# linker and the loader; dlopen and dlsym reach them through the same file.
target_link_libraries(${SCRIM_TEST_TARGET} PRIVATE -Wl,--no-as-needed scrimpresent)
target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE SCRIM_LIBRARY="$<TARGET_FILE:scrimpresent>")

# The wide object ships beside the library and has to load on Android 5.0 too.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  add_test(NAME android_symbols_wide
           COMMAND ${CMAKE_SOURCE_DIR}/scripts/check-android-symbols $<TARGET_FILE:scrimpresent_wide>
                   ${CMAKE_SOURCE_DIR}/tests/android/bionic-symbols.txt ${CMAKE_NM})
endif()
