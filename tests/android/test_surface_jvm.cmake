# Starts a real Java virtual machine from the JDK's libjvm. That needs a virtual
# machine of the build's own architecture and cannot run under the sanitizers
# (the machine's own signal handling and memory tricks): in those builds the
# test is still registered and reports itself skipped with the reason.
set(_jvm_lib "${SCRIM_JDK_HOME}/lib/server/libjvm.so")
set(_jvm_skip "")
if(CMAKE_CROSSCOMPILING)
  set(_jvm_skip "a cross build run under qemu-user has no Java virtual machine of its architecture")
elseif(SCRIM_SANITIZE)
  set(_jvm_skip "the Java virtual machine cannot run under the sanitizers (${SCRIM_SANITIZE}): it handles SIGSEGV itself")
elseif(NOT EXISTS "${_jvm_lib}")
  set(_jvm_skip "no Java virtual machine at ${_jvm_lib}")
else()
  find_package(Java COMPONENTS Development)
  if(NOT Java_JAVAC_EXECUTABLE)
    set(_jvm_skip "javac was not found")
  endif()
endif()

if(_jvm_skip)
  target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE "SCRIM_JVM_SKIP_REASON=\"${_jvm_skip}\"")
else()
  set(_jvm_classes "${CMAKE_CURRENT_BINARY_DIR}/${SCRIM_TEST_NAME}_classes")
  set(_jvm_source "${CMAKE_CURRENT_SOURCE_DIR}/android/java/android/view/Surface.java")
  add_custom_command(
    OUTPUT "${_jvm_classes}/android/view/Surface.class"
    COMMAND "${Java_JAVAC_EXECUTABLE}" -d "${_jvm_classes}" "${_jvm_source}"
    DEPENDS "${_jvm_source}"
    COMMENT "Compiling the test's android.view.Surface")
  add_custom_target(${SCRIM_TEST_NAME}_java DEPENDS "${_jvm_classes}/android/view/Surface.class")
  add_dependencies(${SCRIM_TEST_TARGET} ${SCRIM_TEST_NAME}_java)
  target_compile_definitions(${SCRIM_TEST_TARGET} PRIVATE "SCRIM_JVM_LIBRARY=\"${_jvm_lib}\""
                                                          "SCRIM_JVM_CLASSPATH=\"${_jvm_classes}\"")
endif()
