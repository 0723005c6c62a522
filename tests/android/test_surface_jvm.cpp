// Surface acquisition against a real Java virtual machine started here, with a
// small android.view.Surface class: reading mNativeSurface, the cache of the
// last object, attaching and detaching a thread the machine does not know.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <jni.h>
#include <stdio.h>

#include <string>
#include <thread>

#include "android/android_surface.h"
#include "presenter/picture_testing.h"

#ifndef SCRIM_JVM_SKIP_REASON
namespace {

using scrim_testing::SurfaceRecord;

struct Jvm {
  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;  // the main thread's
  std::string error;

  static Jvm& Get() {
    static Jvm jvm = [] {
      Jvm j;
      using CreateFn = jint (*)(JavaVM**, void**, void*);
      void* lib = dlopen(SCRIM_JVM_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
      auto create = lib ? reinterpret_cast<CreateFn>(dlsym(lib, "JNI_CreateJavaVM")) : nullptr;
      if (create == nullptr) {
        j.error = dlerror();  // no library, or no JNI_CreateJavaVM in it
        return j;
      }
      std::string classPath = std::string("-Djava.class.path=") + SCRIM_JVM_CLASSPATH;
      JavaVMOption options[] = {{const_cast<char*>(classPath.c_str()), nullptr},
                                {const_cast<char*>("-Xrs"), nullptr},
                                {const_cast<char*>("-Xmx64m"), nullptr},
                                {const_cast<char*>("-XX:+UseSerialGC"), nullptr}};
      JavaVMInitArgs args{};
      args.version = JNI_VERSION_1_6;
      args.nOptions = sizeof options / sizeof options[0];
      args.options = options;
      args.ignoreUnrecognized = JNI_FALSE;
      if (create(&j.vm, reinterpret_cast<void**>(&j.env), &args) != JNI_OK)
        j.error = "JNI_CreateJavaVM failed";
      return j;
    }();
    return jvm;
  }

  // A global reference to a new android.view.Surface, usable on any thread.
  jobject NewSurface(jint nativeSurface) {
    jclass cls = env->FindClass("android/view/Surface");
    jmethodID ctor = env->GetMethodID(cls, "<init>", "(I)V");
    jobject local = env->NewObject(cls, ctor, nativeSurface);
    jobject global = env->NewGlobalRef(local);
    env->DeleteLocalRef(local);
    env->DeleteLocalRef(cls);
    return global;
  }

  void SetField(jobject surface, jint value) {
    jclass cls = env->FindClass("android/view/Surface");
    env->SetIntField(surface, env->GetFieldID(cls, "mNativeSurface", "I"), value);
    env->DeleteLocalRef(cls);
  }

  // Whether the calling thread is attached.
  bool Attached() {
    JNIEnv* e = nullptr;
    return vm->GetEnv(reinterpret_cast<void**>(&e), JNI_VERSION_1_6) == JNI_OK;
  }
};

class SurfaceJvm : public scrim_testing::LoggedTest {
 protected:
  void SetUp() override {
    LoggedTest::SetUp();
    ASSERT_NE(nullptr, Jvm::Get().vm) << Jvm::Get().error;
    g_pJvm = nullptr;
    g_lastSurfaceObject = nullptr;
    g_lastNativeSurface = 0;
  }
  void TearDown() override {
    EXPECT_EQ(0u, HostLog_count());
    LoggedTest::TearDown();
  }
  static void* Read(jobject surface) {
    SurfaceRecord record{Jvm::Get().vm, surface};
    return GetAndroidIomxSurface(&record);
  }
};

void* Value(intptr_t v) { return reinterpret_cast<void*>(v); }

}  // namespace

// The scripted machine of test_android_surface checks the call sequence; this
// one checks that the calls mean what they should to a real machine.
TEST_F(SurfaceJvm, ReadsRemembersAndAttachesThreadsAsTheyNeed) {
  Jvm& jvm = Jvm::Get();
  EXPECT_EQ(nullptr, GetAndroidJEnv());  // no machine known yet
  jobject first = jvm.NewSurface(0x12345678), second = jvm.NewSurface(-2);
  EXPECT_EQ(Value(0x12345678), Read(first));
  EXPECT_EQ(jvm.vm, g_pJvm);
  EXPECT_TRUE(jvm.Attached());  // the main thread was attached before and still is
  jvm.SetField(first, 0x1111);
  EXPECT_EQ(Value(0x12345678), Read(first));  // the remembered value
  EXPECT_EQ(Value(-2), Read(second));         // a Java int, sign-extended
  EXPECT_EQ(Value(0x1111), Read(first));

  // A thread the machine does not know is attached for the read and detached
  // again; GetAndroidJEnv attaches it until FreeAndroidJEnv.
  bool before = true, afterRead = true, during = false, after = true, usable = false;
  void* value = nullptr;
  std::thread t([&] {
    before = jvm.Attached();
    value = Read(second);
    afterRead = jvm.Attached();
    JNIEnv* env = GetAndroidJEnv();
    during = jvm.Attached();
    jclass cls = env ? env->FindClass("android/view/Surface") : nullptr;
    usable = cls != nullptr;
    if (cls != nullptr) env->DeleteLocalRef(cls);
    FreeAndroidJEnv();
    after = jvm.Attached();
  });
  t.join();
  EXPECT_EQ(Value(-2), value);
  EXPECT_FALSE(before);
  EXPECT_FALSE(afterRead);
  EXPECT_TRUE(during);
  EXPECT_TRUE(usable);
  EXPECT_FALSE(after);
  jvm.env->DeleteGlobalRef(first);
  jvm.env->DeleteGlobalRef(second);
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
