target_link_libraries(${SCRIM_TEST_TARGET} PRIVATE scrim_host_png)
