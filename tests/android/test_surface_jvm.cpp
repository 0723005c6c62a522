// What the scripted machine of test_android_surface cannot show: to a real machine the field read
// works and a thread it does not know is attached and detached again.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <jni.h>
#include <stdio.h>

#include <string>
#include <thread>
#include <vector>

#include "android/android_surface.h"
#include "presenter/picture_testing.h"

#ifndef SCRIM_JVM_SKIP_REASON
namespace {

JavaVM* StartJvm(JNIEnv** env) {
  using CreateFn = jint (*)(JavaVM**, void**, void*);
  void* lib = dlopen(SCRIM_JVM_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
  auto create = lib ? reinterpret_cast<CreateFn>(dlsym(lib, "JNI_CreateJavaVM")) : nullptr;
  EXPECT_NE(nullptr, create) << dlerror();  // no library, or no JNI_CreateJavaVM in it
  std::string classPath = std::string("-Djava.class.path=") + SCRIM_JVM_CLASSPATH;
  JavaVMOption options[] = {{const_cast<char*>(classPath.c_str()), nullptr},
                            {const_cast<char*>("-Xrs"), nullptr},
                            {const_cast<char*>("-Xmx64m"), nullptr},
                            {const_cast<char*>("-XX:+UseSerialGC"), nullptr}};
  JavaVMInitArgs args{JNI_VERSION_1_6, sizeof options / sizeof options[0], options, JNI_FALSE};
  JavaVM* vm = nullptr;
  EXPECT_TRUE(create && create(&vm, reinterpret_cast<void**>(env), &args) == JNI_OK);
  return vm;
}

bool Attached(JavaVM* vm) {
  JNIEnv* e = nullptr;
  return vm->GetEnv(reinterpret_cast<void**>(&e), JNI_VERSION_1_6) == JNI_OK;
}

}  // namespace

TEST(SurfaceJvm, ReadsTheFieldAndAttachesThreadsAsTheyNeed) {
  HostLog_setEcho(0);
  HostLog_clear();
  JNIEnv* env = nullptr;
  JavaVM* vm = StartJvm(&env);
  ASSERT_NE(nullptr, vm);
  jclass cls = env->FindClass("android/view/Surface");
  jobject local = env->NewObject(cls, env->GetMethodID(cls, "<init>", "(I)V"), jint(-2));
  jobject surface = env->NewGlobalRef(local);  // usable on any thread
  EXPECT_EQ(nullptr, GetAndroidJEnv());        // no machine known yet

  std::vector<bool> seen;  // attached: before, after the read, during GetAndroidJEnv (usable), after
  void* value = nullptr;
  std::thread t([&] {
    seen.push_back(Attached(vm));
    scrim_testing::SurfaceRecord record{vm, surface};
    value = GetAndroidIomxSurface(&record);
    seen.push_back(Attached(vm));
    JNIEnv* threadEnv = GetAndroidJEnv();  // attaches until FreeAndroidJEnv
    seen.push_back(Attached(vm));
    jclass c = threadEnv ? threadEnv->FindClass("android/view/Surface") : nullptr;
    seen.push_back(c != nullptr);
    if (c != nullptr) threadEnv->DeleteLocalRef(c);
    FreeAndroidJEnv();
    seen.push_back(Attached(vm));
  });
  t.join();
  EXPECT_EQ(reinterpret_cast<void*>(intptr_t(-2)), value);  // a Java int, sign-extended
  EXPECT_EQ(vm, g_pJvm);
  EXPECT_EQ((std::vector<bool>{false, false, true, true, false}), seen);
  EXPECT_TRUE(Attached(vm));  // the main thread, attached by the start, still is
  env->DeleteGlobalRef(surface);
  EXPECT_EQ(0u, HostLog_count());
}

#endif  // SCRIM_JVM_SKIP_REASON

int main(int argc, char** argv) {
#ifdef SCRIM_JVM_SKIP_REASON
  (void)argc;
  (void)argv;
  printf("skipped: %s\n", SCRIM_JVM_SKIP_REASON);
  return 77;
#else
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
#endif
}
