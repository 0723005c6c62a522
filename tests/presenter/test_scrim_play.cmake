# The demo player's parts are compiled into this test; the player itself is run
# end to end by scrim_play_check.cmake (through the cross build's emulator).
set(_play ${CMAKE_SOURCE_DIR}/tools/scrim-play)
target_sources(${SCRIM_TEST_TARGET} PRIVATE ${_play}/y4m_reader.cpp ${_play}/options.cpp ${_play}/test_clip.cpp)
target_include_directories(${SCRIM_TEST_TARGET} PRIVATE ${_play})

if(TARGET scrim-play)
  string(REPLACE ";" "|" _emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
  foreach(_case clip yv12_interlaced y4m bad_input)
    add_test(NAME scrim_play_${_case}
             COMMAND ${CMAKE_COMMAND} -DPLAYER=$<TARGET_FILE:scrim-play> "-DEMULATOR=${_emulator}"
                     -DWORK=${CMAKE_CURRENT_BINARY_DIR}/scrim_play_check -DCASE=${_case}
                     -P ${CMAKE_CURRENT_SOURCE_DIR}/presenter/scrim_play_check.cmake)
    set_tests_properties(scrim_play_${_case} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
  endforeach()
endif()
