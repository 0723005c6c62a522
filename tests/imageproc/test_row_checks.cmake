# The checks are the checker's own (tools/scrim-checkasm), compiled in here.
set(_checkasm ${CMAKE_SOURCE_DIR}/tools/scrim-checkasm)
target_sources(${SCRIM_TEST_TARGET} PRIVATE ${_checkasm}/row_checks.cpp)
target_include_directories(${SCRIM_TEST_TARGET} PRIVATE ${_checkasm})
