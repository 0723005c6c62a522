// Surface acquisition against a real Java virtual machine started here, with a
// small android.view.Surface class: reading mNativeSurface, the cache of the
// last object, attaching and detaching threads the machine does not know, and
// GetAndroidJEnv / FreeAndroidJEnv.
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
      void* lib = dlopen(SCRIM_JVM_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
      if (lib == nullptr) {
        j.error = dlerror();
        return j;
      }
      using CreateFn = jint (*)(JavaVM**, void**, void*);
      CreateFn create = reinterpret_cast<CreateFn>(dlsym(lib, "JNI_CreateJavaVM"));
      if (create == nullptr) {
        j.error = "no JNI_CreateJavaVM";
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

TEST_F(SurfaceJvm, ReadsTheNativeSurfaceAndRemembersIt) {
  Jvm& jvm = Jvm::Get();
  jobject first = jvm.NewSurface(0x12345678);
  EXPECT_EQ(Value(0x12345678), Read(first));
  EXPECT_EQ(jvm.vm, g_pJvm);
  EXPECT_TRUE(jvm.Attached());  // the main thread was attached before and still is

  // The same object again: the remembered value, not the field's new one.
  jvm.SetField(first, 0x1111);
  EXPECT_EQ(Value(0x12345678), Read(first));

  // Another object is read, and becomes the remembered one.
  jobject second = jvm.NewSurface(-2);
  EXPECT_EQ(Value(-2), Read(second));  // a Java int, sign-extended
  EXPECT_EQ(Value(0x1111), Read(first));

  // Releasing a surface without keeping the cache makes the next call read again.
  scrim_testing::Window w;
  ANativeWindow_acquire(w.get());
  jvm.SetField(first, 0x2222);
  ReleaseAndroidSurface(w.get(), 1);
  EXPECT_EQ(Value(0x1111), Read(first));
  ANativeWindow_acquire(w.get());
  ReleaseAndroidSurface(w.get(), 0);
  EXPECT_EQ(Value(0x2222), Read(first));
  EXPECT_EQ(1, w.refs());

  jvm.env->DeleteGlobalRef(first);
  jvm.env->DeleteGlobalRef(second);
}

// A thread the machine does not know is attached and detached again; one it
// knows stays attached.
TEST_F(SurfaceJvm, ThreadsAreLeftAttachedAsTheyWere) {
  Jvm& jvm = Jvm::Get();
  for (bool known : {false, true}) {
    SCOPED_TRACE(known);
    g_lastSurfaceObject = nullptr;  // a new reference may reuse the last one's handle
    jobject surface = jvm.NewSurface(known ? 77 : 4242);
    bool before = !known, after = !known;
    void* value = nullptr;
    std::thread t([&] {
      JNIEnv* env = nullptr;
      if (known) {
        ASSERT_EQ(JNI_OK, jvm.vm->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr));
      }
      before = jvm.Attached();
      value = Read(surface);
      after = jvm.Attached();
      if (known) jvm.vm->DetachCurrentThread();
    });
    t.join();
    EXPECT_EQ(known, before);
    EXPECT_EQ(Value(known ? 77 : 4242), value);
    EXPECT_EQ(known, after);
    jvm.env->DeleteGlobalRef(surface);
  }
}

TEST_F(SurfaceJvm, JEnvAttachesTheCallingThreadUntilFreed) {
  Jvm& jvm = Jvm::Get();
  EXPECT_EQ(nullptr, GetAndroidJEnv());  // no machine known yet
  SurfaceRecord record{jvm.vm, nullptr};
  ASSERT_EQ(nullptr, GetAndroidSurface(&record));  // teaches the library the machine
  EXPECT_EQ(jvm.vm, g_pJvm);

  bool before = true, during = false, after = true, usable = false;
  std::thread t([&] {
    before = jvm.Attached();
    JNIEnv* env = GetAndroidJEnv();
    during = jvm.Attached();
    if (env != nullptr) {
      jclass cls = env->FindClass("android/view/Surface");
      usable = cls != nullptr;
      if (cls != nullptr) env->DeleteLocalRef(cls);
    }
    FreeAndroidJEnv();
    after = jvm.Attached();
  });
  t.join();
  EXPECT_FALSE(before);
  EXPECT_TRUE(during);
  EXPECT_TRUE(usable);
  EXPECT_FALSE(after);
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
