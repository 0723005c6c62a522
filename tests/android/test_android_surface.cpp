// Surface acquisition without a Java virtual machine: window references, the
// module state, and the JNI call sequence against a scripted virtual machine
// (the attach failure paths cannot be provoked in a real one).
#include <gtest/gtest.h>
#include <jni.h>
#include <string.h>

#include <string>
#include <thread>
#include <vector>

#include "android/android_surface.h"
#include "presenter/picture_testing.h"

using scrim_testing::CompareLines;
using scrim_testing::LibraryLines;
using scrim_testing::Window;

namespace {

struct SurfaceRecord {
  void* m_pJvm;
  void* m_pJobj;
};

// A virtual machine and environment whose every call is scripted and counted.
struct FakeJvm {
  JavaVM vm;
  JNIInvokeInterface_ invoke{};
  JNIEnv env;
  JNINativeInterface_ native{};

  bool threadKnown = false;
  jint attachResult = JNI_OK;
  jint fieldValue = 0;
  int getEnvCalls = 0, attachCalls = 0, detachCalls = 0, jniCalls = 0;
  std::vector<std::string> names;
  jobject lastObject = nullptr;

  static FakeJvm* self;

  FakeJvm() {
    self = this;
    invoke.GetEnv = [](JavaVM*, void** penv, jint version) -> jint {
      ++self->getEnvCalls;
      EXPECT_EQ(0x10006, version);
      if (!self->threadKnown) {
        *penv = nullptr;
        return JNI_EDETACHED;
      }
      *penv = &self->env;
      return JNI_OK;
    };
    invoke.AttachCurrentThread = [](JavaVM*, void** penv, void* args) -> jint {
      ++self->attachCalls;
      EXPECT_EQ(nullptr, args);
      if (self->attachResult < 0) return self->attachResult;
      *penv = &self->env;
      return JNI_OK;
    };
    invoke.DetachCurrentThread = [](JavaVM*) -> jint {
      ++self->detachCalls;
      return JNI_OK;
    };
    native.FindClass = [](JNIEnv*, const char* name) -> jclass {
      ++self->jniCalls;
      self->names.push_back(name);
      return reinterpret_cast<jclass>(0x1234);
    };
    native.GetFieldID = [](JNIEnv*, jclass cls, const char* name, const char* sig) -> jfieldID {
      ++self->jniCalls;
      EXPECT_EQ(reinterpret_cast<jclass>(0x1234), cls);
      self->names.push_back(std::string(name) + ":" + sig);
      return reinterpret_cast<jfieldID>(0x5678);
    };
    native.GetIntField = [](JNIEnv*, jobject obj, jfieldID field) -> jint {
      ++self->jniCalls;
      EXPECT_EQ(reinterpret_cast<jfieldID>(0x5678), field);
      self->lastObject = obj;
      return self->fieldValue;
    };
    vm.functions = &invoke;
    env.functions = &native;
  }
  ~FakeJvm() { self = nullptr; }
};
FakeJvm* FakeJvm::self = nullptr;

class Surface : public testing::Test {
 protected:
  void SetUp() override {
    HostLog_setEcho(0);
    HostLog_clear();
    g_pJvm = nullptr;
    g_lastSurfaceObject = nullptr;
    g_lastNativeSurface = 0;
  }
  void TearDown() override {
    g_pJvm = nullptr;
    g_lastSurfaceObject = nullptr;
    g_lastNativeSurface = 0;
    HostLog_clear();
  }
};

void* Object(uintptr_t v) { return reinterpret_cast<void*>(v); }

}  // namespace

TEST_F(Surface, NullRecordGivesNoWindow) {
  EXPECT_EQ(nullptr, GetAndroidSurface(nullptr));
  EXPECT_EQ(nullptr, GetAndroidIomxSurface(nullptr));
  EXPECT_EQ("", CompareLines(LibraryLines(),
                             {{"GetAndroidSurface", " GetAndroidSurface faile  pParam = 0x0 \n"},
                              {"GetAndroidIomxSurface", " GetAndroidSurface faile  pParam = 0x0 \n"}}));
}

TEST_F(Surface, WindowIsHandedOutWithOneReference) {
  Window w;
  FakeJvm jvm;
  SurfaceRecord record{&jvm.vm, w.get()};
  EXPECT_EQ(w.get(), GetAndroidSurface(&record));
  EXPECT_EQ(2, w.refs());
  EXPECT_EQ(&jvm.vm, g_pJvm);
  EXPECT_EQ(w.get(), GetAndroidSurface(&record));
  EXPECT_EQ(3, w.refs());
  ReleaseAndroidSurface(w.get(), 1);
  ReleaseAndroidSurface(w.get(), 0);
  EXPECT_EQ(1, w.refs());
  ReleaseAndroidSurface(nullptr, 0);
  EXPECT_EQ(0u, HostLog_count());
  EXPECT_EQ(0, jvm.getEnvCalls + jvm.attachCalls);
}

TEST_F(Surface, RecordWithoutWindowStillKeepsTheVirtualMachine) {
  FakeJvm jvm;
  SurfaceRecord record{&jvm.vm, nullptr};
  EXPECT_EQ(nullptr, GetAndroidSurface(&record));
  EXPECT_EQ(&jvm.vm, g_pJvm);
}

TEST_F(Surface, ReleaseForgetsTheLastSurfaceObjectOnlyWhenAsked) {
  Window w;
  ANativeWindow_acquire(w.get());
  ANativeWindow_acquire(w.get());
  g_lastSurfaceObject = Object(0x77);
  ReleaseAndroidSurface(w.get(), 1);
  EXPECT_EQ(Object(0x77), g_lastSurfaceObject);
  ReleaseAndroidSurface(w.get(), 0);
  EXPECT_EQ(nullptr, g_lastSurfaceObject);
  EXPECT_EQ(1, w.refs());
  g_lastSurfaceObject = Object(0x77);
  ReleaseAndroidSurface(nullptr, 0);  // no handle: nothing at all happens
  EXPECT_EQ(Object(0x77), g_lastSurfaceObject);
}

TEST_F(Surface, IomxSurfaceAttachesReadsDetachesAndCaches) {
  FakeJvm jvm;
  jvm.fieldValue = -5;  // a Java int, sign-extended
  SurfaceRecord record{&jvm.vm, Object(0xA0)};
  EXPECT_EQ(Object(uintptr_t(-5)), GetAndroidIomxSurface(&record));
  EXPECT_EQ(1, jvm.getEnvCalls);
  EXPECT_EQ(1, jvm.attachCalls);
  EXPECT_EQ(1, jvm.detachCalls);
  EXPECT_EQ(3, jvm.jniCalls);
  EXPECT_EQ((std::vector<std::string>{"android/view/Surface", "mNativeSurface:I"}), jvm.names);
  EXPECT_EQ(Object(0xA0), jvm.lastObject);
  EXPECT_EQ(&jvm.vm, g_pJvm);
  EXPECT_EQ(Object(0xA0), g_lastSurfaceObject);

  // Same object: the remembered value, without touching the virtual machine.
  jvm.fieldValue = 99;
  EXPECT_EQ(Object(uintptr_t(-5)), GetAndroidIomxSurface(&record));
  EXPECT_EQ(1, jvm.getEnvCalls);
  EXPECT_EQ(3, jvm.jniCalls);

  // Another object is read afresh.
  SurfaceRecord other{&jvm.vm, Object(0xB0)};
  EXPECT_EQ(Object(99), GetAndroidIomxSurface(&other));
  EXPECT_EQ(6, jvm.jniCalls);
  EXPECT_EQ(Object(0xB0), g_lastSurfaceObject);
  EXPECT_EQ(0u, HostLog_count());
}

TEST_F(Surface, IomxSurfaceOnAKnownThreadNeitherAttachesNorDetaches) {
  FakeJvm jvm;
  jvm.threadKnown = true;
  jvm.fieldValue = 1234;
  SurfaceRecord record{&jvm.vm, Object(0xC0)};
  EXPECT_EQ(Object(1234), GetAndroidIomxSurface(&record));
  EXPECT_EQ(0, jvm.attachCalls);
  EXPECT_EQ(0, jvm.detachCalls);
  EXPECT_EQ(3, jvm.jniCalls);
}

TEST_F(Surface, IomxSurfaceWithAZeroFieldIsReadEveryTime) {
  FakeJvm jvm;
  jvm.threadKnown = true;
  SurfaceRecord record{&jvm.vm, Object(0xC0)};
  EXPECT_EQ(nullptr, GetAndroidIomxSurface(&record));
  EXPECT_EQ(nullptr, GetAndroidIomxSurface(&record));
  EXPECT_EQ(6, jvm.jniCalls);
}

TEST_F(Surface, IomxSurfaceAttachFailure) {
  FakeJvm jvm;
  jvm.fieldValue = 7;
  SurfaceRecord record{&jvm.vm, Object(0xD0)};
  ASSERT_EQ(Object(7), GetAndroidIomxSurface(&record));

  jvm.attachResult = -3;
  SurfaceRecord other{&jvm.vm, Object(0xE0)};
  EXPECT_EQ(nullptr, GetAndroidIomxSurface(&other));
  EXPECT_EQ("", CompareLines(LibraryLines(),
                             {{"GetAndroidIomxSurface", " Attach Current thread failed!! Error -3"}}));
  EXPECT_EQ(1, jvm.detachCalls);  // only the successful call detached
  EXPECT_EQ(nullptr, g_lastSurfaceObject);
  EXPECT_EQ(0, g_lastNativeSurface);

  // The first object is no longer remembered either: it is read again.
  jvm.attachResult = JNI_OK;
  EXPECT_EQ(Object(7), GetAndroidIomxSurface(&record));
  EXPECT_EQ(6, jvm.jniCalls);
}

TEST_F(Surface, ReleaseWithoutKeepingTheCacheMakesTheNextCallReadAgain) {
  FakeJvm jvm;
  jvm.threadKnown = true;
  jvm.fieldValue = 11;
  Window w;
  ANativeWindow_acquire(w.get());
  SurfaceRecord record{&jvm.vm, Object(0xF0)};
  ASSERT_EQ(Object(11), GetAndroidIomxSurface(&record));
  ReleaseAndroidSurface(w.get(), 1);
  jvm.fieldValue = 12;
  EXPECT_EQ(Object(11), GetAndroidIomxSurface(&record));
  ANativeWindow_acquire(w.get());
  ReleaseAndroidSurface(w.get(), 0);
  EXPECT_EQ(Object(12), GetAndroidIomxSurface(&record));
  EXPECT_EQ(6, jvm.jniCalls);
}

TEST_F(Surface, JEnvAttachesToTheLastVirtualMachine) {
  EXPECT_EQ(nullptr, GetAndroidJEnv());
  FreeAndroidJEnv();  // no virtual machine yet: nothing to do

  FakeJvm jvm;
  SurfaceRecord record{&jvm.vm, nullptr};
  GetAndroidSurface(&record);
  EXPECT_EQ(&jvm.env, GetAndroidJEnv());
  EXPECT_EQ(1, jvm.attachCalls);
  FreeAndroidJEnv();
  EXPECT_EQ(1, jvm.detachCalls);

  jvm.attachResult = -1;
  EXPECT_EQ(nullptr, GetAndroidJEnv());
  EXPECT_EQ("", CompareLines(LibraryLines(), {{"GetAndroidJEnv", " Attach Current thread failed!!"}}));
}
