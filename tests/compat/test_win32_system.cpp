// Modules, the environment, system information and the process id of the
// Win32-style layer.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "compat/win32.h"

namespace {

// Run as a child (see below): report what the walk answers and the parent.
const bool g_reportOnly = [] {
  if (!getenv("SCRIM_PID_REPORT")) return false;
  printf("%lu %d\n", GetCurrentProcessId(), static_cast<int>(getppid()));
  fflush(stdout);
  _exit(0);
}();

TEST(Win32Modules, LoadsAModuleFindsAndCallsItsFunctionThenFreesIt) {
  EXPECT_EQ(LoadLibrary("/no/such/module.so"), nullptr);
  HMODULE module = LoadLibrary(SCRIM_TEST_MODULE);
  ASSERT_NE(module, nullptr) << dlerror();
  auto triple = reinterpret_cast<int (*)(int)>(GetProcAddress(module, "scrim_test_module_triple"));
  ASSERT_NE(triple, nullptr);
  EXPECT_EQ(triple(14), 42);
  EXPECT_EQ(GetProcAddress(module, "no_such_function"), nullptr);
  EXPECT_EQ(FreeLibrary(module), TRUE);
}

TEST(Win32Modules, ModuleFileNameIsTheProgramsPathWhateverTheModule) {
  char expected[PATH_MAX];
  ASSERT_NE(realpath(program_invocation_name, expected), nullptr);
  char buf[PATH_MAX];
  EXPECT_EQ(GetModuleFileName(reinterpret_cast<HMODULE>(0x1234), buf, sizeof buf), strlen(expected));
  EXPECT_STREQ(buf, expected);
  EXPECT_EQ(GetModuleFileName(nullptr, buf, 5), 4u) << "at most size - 1 characters";
  EXPECT_EQ(std::string(buf), std::string(expected, 4));
}

TEST(Win32Environment, DllDirectoryVariablesAndSystemDirectory) {
  char buf[8] = "-------";
  unsetenv("ORU_DLL_PATH");
  EXPECT_EQ(GetDllDirectory(sizeof buf, buf), 0u);
  EXPECT_EQ(SetDllDirectory("ab"), 0) << "setenv's own result";
  EXPECT_EQ(GetDllDirectory(2, buf), 0u);
  EXPECT_STREQ(buf, "-------") << "nothing copied when the size is short";
  EXPECT_EQ(GetDllDirectory(3, buf), 2u);
  EXPECT_STREQ(buf, "ab");
  unsetenv("ORU_DLL_PATH");

  EXPECT_EQ(SetEnvironmentVariable("SCRIM_TEST_VAR", "v") + SetEnvironmentVariable("BAD=NAME", "v"), TRUE);
  EXPECT_STREQ(getenv("SCRIM_TEST_VAR"), "v");
  EXPECT_EQ(SetEnvironmentVariable("SCRIM_TEST_VAR", nullptr), FALSE) << "a removal answers 0";
  EXPECT_EQ(getenv("SCRIM_TEST_VAR"), nullptr);

  EXPECT_EQ(GetSystemDirectory(buf, 4), 5u);
  EXPECT_STREQ(buf, "ab") << "untouched";
  EXPECT_EQ(GetSystemDirectory(buf, 5), 4u);
  EXPECT_STREQ(buf, "/usr");
}

// Runs this program again through `sh -c command` with the report switch on;
// answers {walk result, child's parent}.
std::pair<long, long> childReport(const std::string& shellCommand) {
  std::string cmd = "SCRIM_PID_REPORT=1; export SCRIM_PID_REPORT; " + shellCommand;
  FILE* p = popen(cmd.c_str(), "r");
  long result = -1, parent = -1;
  if (p) {
    if (fscanf(p, "%ld %ld", &result, &parent) != 2) result = parent = -1;
    pclose(p);
  }
  return {result, parent};
}

TEST(Win32Process, IdWalksUpPastAncestorsRunningTheSameProgram) {
  // This program was started by another one (the test runner): its parent.
  EXPECT_EQ(GetCurrentProcessId(), static_cast<DWORD>(getppid()));

  std::string self = std::string(SCRIM_TEST_EMULATOR) + " " + program_invocation_name;
  // `exec`: the child replaces the shell, so its parent is this process.
  auto [sameResult, sameParent] = childReport("exec " + self);
  EXPECT_EQ(sameParent, getpid());
  // Under an emulator this process's executable is the emulator itself, so
  // the child sees a parent that runs another program.
  const bool emulated = SCRIM_TEST_EMULATOR[0] != 0;
  EXPECT_EQ(sameResult, emulated ? getpid() : getppid());

  // Started by the shell, which runs another program: the shell's id.
  auto [otherResult, otherParent] = childReport(self + "; true");
  EXPECT_NE(otherParent, getpid());
  EXPECT_EQ(otherResult, otherParent);
}

}  // namespace
