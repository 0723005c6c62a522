# scrim-play on video files: clips are encoded and decoded here with FFmpeg's
# libraries, and the window is checked under Xvfb through Xlib. The cross build
# has neither FFmpeg nor X11 of its architecture (and its player is built
# without them): there the test reports itself skipped.
if(CMAKE_CROSSCOMPILING OR NOT TARGET scrim-play)
  target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE
    "SCRIM_PLAY_AV_SKIP=\"the cross build has no FFmpeg or X11 libraries of its architecture\"")
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(SCRIM_TEST_AV REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil x11)
  target_link_libraries(${SCRIM_TEST_TARGET} PRIVATE PkgConfig::SCRIM_TEST_AV scrim_host_png)
  target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE SCRIM_PLAY_PATH="$<TARGET_FILE:scrim-play>")
  add_dependencies(${SCRIM_TEST_TARGET} scrim-play)
endif()
