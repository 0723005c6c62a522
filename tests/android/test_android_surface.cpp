// Surface acquisition against a scripted virtual machine (a real one cannot fail to attach).
#include <gtest/gtest.h>
#include <jni.h>

#include <string>
#include <vector>

#include "android/android_surface.h"
#include "presenter/picture_testing.h"

using namespace scrim_testing;

namespace {

// A virtual machine and environment whose every call is scripted and counted.
struct FakeJvm {
  JavaVM vm;
  JNIInvokeInterface_ invoke{};
  JNIEnv env;
  JNINativeInterface_ native{};

  bool threadKnown = false;
  jint attachResult = JNI_OK;
  jint fieldValue = 0;
  int getEnvCalls = 0, attachCalls = 0, detachCalls = 0;
  std::vector<std::string> names;  // every JNI call
  jobject lastObject = nullptr;

  static inline FakeJvm* self = nullptr;

  FakeJvm() {
    self = this;
    invoke.GetEnv = [](JavaVM*, void** penv, jint version) -> jint {
      ++self->getEnvCalls;
      EXPECT_EQ(0x10006, version);
      *penv = self->threadKnown ? &self->env : nullptr;
      return self->threadKnown ? JNI_OK : JNI_EDETACHED;
    };
    invoke.AttachCurrentThread = [](JavaVM*, void** penv, void* args) -> jint {
      ++self->attachCalls;
      EXPECT_EQ(nullptr, args);
      if (self->attachResult < 0) return self->attachResult;
      *penv = &self->env;
      return JNI_OK;
    };
    invoke.DetachCurrentThread = [](JavaVM*) -> jint { return ++self->detachCalls, JNI_OK; };
    native.FindClass = [](JNIEnv*, const char* name) -> jclass {
      self->names.push_back(name);
      return reinterpret_cast<jclass>(0x1234);
    };
    native.GetFieldID = [](JNIEnv*, jclass cls, const char* name, const char* sig) -> jfieldID {
      EXPECT_EQ(reinterpret_cast<jclass>(0x1234), cls);
      self->names.push_back(std::string(name) + ":" + sig);
      return reinterpret_cast<jfieldID>(0x5678);
    };
    native.GetIntField = [](JNIEnv*, jobject obj, jfieldID field) -> jint {
      self->names.push_back("GetIntField");
      EXPECT_EQ(reinterpret_cast<jfieldID>(0x5678), field);
      self->lastObject = obj;
      return self->fieldValue;
    };
    vm.functions = &invoke;
    env.functions = &native;
  }
  ~FakeJvm() { self = nullptr; }

  // GetEnv, AttachCurrentThread, DetachCurrentThread and JNI calls so far.
  std::vector<int> Calls() const { return {getEnvCalls, attachCalls, detachCalls, int(names.size())}; }

  void* Iomx(uintptr_t object) {
    SurfaceRecord record{&vm, reinterpret_cast<void*>(object)};
    return GetAndroidIomxSurface(&record);
  }
};

class Surface : public LoggedTest {
 protected:
  void SetUp() override {
    LoggedTest::SetUp();
    g_pJvm = nullptr;
    g_lastSurfaceObject = nullptr;
    g_lastNativeSurface = 0;
  }
};

void* Object(uintptr_t v) { return reinterpret_cast<void*>(v); }

}  // namespace

TEST_F(Surface, WindowIsHandedOutWithOneReference) {
  EXPECT_EQ(nullptr, GetAndroidSurface(nullptr));
  EXPECT_EQ(nullptr, GetAndroidIomxSurface(nullptr));
  EXPECT_LINES({"[GetAndroidSurface N] GetAndroidSurface faile  pParam = 0x0 \n",
                "[GetAndroidIomxSurface N] GetAndroidSurface faile  pParam = 0x0 \n"});

  Window w;
  FakeJvm jvm;
  SurfaceRecord empty{&jvm.vm, nullptr};
  EXPECT_EQ(nullptr, GetAndroidSurface(&empty));
  EXPECT_EQ(&jvm.vm, g_pJvm);  // a record without a window still names the machine
  g_pJvm = nullptr;
  SurfaceRecord record{&jvm.vm, w.get()};
  EXPECT_EQ(w.get(), GetAndroidSurface(&record));
  EXPECT_EQ(2, w.refs());
  EXPECT_EQ(&jvm.vm, g_pJvm);
  EXPECT_EQ(w.get(), GetAndroidSurface(&record));
  EXPECT_EQ(3, w.refs());

  // Release forgets the last surface object only when not told to keep it.
  g_lastSurfaceObject = Object(0x77);
  ReleaseAndroidSurface(w.get(), 1);
  EXPECT_EQ(Object(0x77), g_lastSurfaceObject);
  ReleaseAndroidSurface(w.get(), 0);
  EXPECT_EQ(nullptr, g_lastSurfaceObject);
  EXPECT_EQ(1, w.refs());
  g_lastSurfaceObject = Object(0x77);
  ReleaseAndroidSurface(nullptr, 0);  // no handle: nothing at all happens
  EXPECT_EQ(Object(0x77), g_lastSurfaceObject);
  EXPECT_EQ(0u, HostLog_count());
  EXPECT_EQ(0, jvm.getEnvCalls + jvm.attachCalls);
}

TEST_F(Surface, IomxSurfaceAttachesReadsDetachesAndCaches) {
  using Calls = std::vector<int>;
  FakeJvm jvm;
  jvm.fieldValue = -5;  // a Java int, sign-extended
  EXPECT_EQ(Object(uintptr_t(-5)), jvm.Iomx(0xA0));
  EXPECT_EQ((Calls{1, 1, 1, 3}), jvm.Calls());
  EXPECT_EQ((std::vector<std::string>{"android/view/Surface", "mNativeSurface:I", "GetIntField"}), jvm.names);
  EXPECT_EQ(Object(0xA0), jvm.lastObject);
  EXPECT_EQ(&jvm.vm, g_pJvm);
  EXPECT_EQ(Object(0xA0), g_lastSurfaceObject);

  // Same object: the remembered value, without touching the virtual machine.
  jvm.fieldValue = 99;
  EXPECT_EQ(Object(uintptr_t(-5)), jvm.Iomx(0xA0));
  EXPECT_EQ((Calls{1, 1, 1, 3}), jvm.Calls());

  // Another object is read afresh; on a thread the machine knows, nothing is
  // attached or detached.
  jvm.threadKnown = true;
  EXPECT_EQ(Object(99), jvm.Iomx(0xB0));
  EXPECT_EQ((Calls{2, 1, 1, 6}), jvm.Calls());
  EXPECT_EQ(Object(0xB0), g_lastSurfaceObject);

  // A zero field is read every time.
  jvm.fieldValue = 0;
  EXPECT_EQ(nullptr, jvm.Iomx(0xC0));
  EXPECT_EQ(nullptr, jvm.Iomx(0xC0));
  EXPECT_EQ(12u, jvm.names.size());
  EXPECT_EQ(0u, HostLog_count());
}

TEST_F(Surface, AttachFailuresAndTheThreadEnvironment) {
  EXPECT_EQ(nullptr, GetAndroidJEnv());
  FreeAndroidJEnv();  // no virtual machine yet: nothing to do

  FakeJvm jvm;
  jvm.fieldValue = 7;
  ASSERT_EQ(Object(7), jvm.Iomx(0xD0));
  jvm.attachResult = -3;
  EXPECT_EQ(nullptr, jvm.Iomx(0xE0));
  EXPECT_LINES({"[GetAndroidIomxSurface N] Attach Current thread failed!! Error -3"});
  EXPECT_EQ(1, jvm.detachCalls);  // only the successful call detached
  EXPECT_EQ(nullptr, g_lastSurfaceObject);
  EXPECT_EQ(0, g_lastNativeSurface);

  // The first object is no longer remembered either: it is read again.
  jvm.attachResult = JNI_OK;
  EXPECT_EQ(Object(7), jvm.Iomx(0xD0));
  EXPECT_EQ(6u, jvm.names.size());

  // GetAndroidJEnv attaches to the last machine, FreeAndroidJEnv detaches.
  EXPECT_EQ(&jvm.env, GetAndroidJEnv());
  EXPECT_EQ((std::vector<int>{3, 4, 2, 6}), jvm.Calls());
  FreeAndroidJEnv();
  EXPECT_EQ(3, jvm.detachCalls);
  jvm.attachResult = -1;
  EXPECT_EQ(nullptr, GetAndroidJEnv());
  EXPECT_LINES({"[GetAndroidJEnv N] Attach Current thread failed!!"});
}
