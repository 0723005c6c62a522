// Reference counting and interface lookup, the interface identifiers, the
// aligned allocator and the logger's filter.
#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "host_log.h"
#include "presenter/kv_unknown.h"
#include "presenter/scrim_log.h"
#include "presenter/scrim_memory.h"
#include "presenter/scrim_presenter.h"

namespace {

class Counted : public CKvUnknown {
 public:
  explicit Counted(int* destroyed) : destroyed_(destroyed) {}
  ~Counted() override { ++*destroyed_; }
  long Count() const { return m_cRef; }
  IKvNonDelegatingUnknown* Outer() const { return m_pUnknown; }

 private:
  int* destroyed_;
};

void Log(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(level, format, args);
  va_end(args);
}

}  // namespace

TEST(KvUnknown, CountsReferencesAndAnswersOnlyItsOwnUnknown) {
  int destroyed = 0;
  Counted* c = new Counted(&destroyed);
  EXPECT_EQ(1, c->Count());
  EXPECT_EQ(static_cast<IKvNonDelegatingUnknown*>(c), c->Outer());
  EXPECT_EQ(KV_E_POINTER, c->NonDelegatingQueryInterface(IID_IUnknown, nullptr));

  void* sentinel = reinterpret_cast<void*>(0x5a5a);
  void* out = sentinel;
  _GUID nearly = IID_IUnknown;  // differs within the 16 bytes that are compared
  nearly.Data4[3] ^= 0x01;
  for (const _GUID* other :
       {&IID_IKvVideoPresenter, &IID_IKvVideoPresenterAdv, &IID_IKvVideoPresenterStream,
        &IID_IKvVideoPresenterAnimation, &IID_IKvFont, static_cast<const _GUID*>(&nearly)})
    EXPECT_EQ(KV_E_NOINTERFACE, c->NonDelegatingQueryInterface(*other, &out));
  EXPECT_EQ(sentinel, out);
  EXPECT_EQ(1, c->Count());

  // Only the first 16 bytes of an identifier are compared.
  _GUID id = IID_IUnknown;
  id.Data4[4] ^= 0xFF;
  id.Data4[7] ^= 0x01;
  EXPECT_EQ(KV_S_OK, c->NonDelegatingQueryInterface(id, &out));
  EXPECT_EQ(static_cast<void*>(static_cast<IKvNonDelegatingUnknown*>(c)), out);

  // GetInterface hands out what it is given and adds a reference.
  int marker = 0;
  EXPECT_EQ(KV_E_POINTER, c->GetInterface(reinterpret_cast<IUnknown*>(&marker), nullptr));
  EXPECT_EQ(KV_S_OK, c->GetInterface(reinterpret_cast<IUnknown*>(&marker), &out));
  EXPECT_EQ(static_cast<void*>(&marker), out);
  EXPECT_EQ(3, c->Count());
  EXPECT_EQ(2, c->NonDelegatingRelease());
  EXPECT_EQ(1, c->NonDelegatingRelease());
  EXPECT_EQ(0, destroyed);
  EXPECT_EQ(0, c->NonDelegatingRelease());
  EXPECT_EQ(1, destroyed);
}

TEST(InterfaceIds, HaveTheDocumentedValues) {
  const struct {
    const _GUID* id;
    const char* text;
  } table[] = {
      {&IID_IUnknown, "2CB59F1F-85A5-43ED-C000-000000000046"},
      {&IID_IKvVideoPresenter, "9ECCFCCA-EB44-11D4-B365-0001022A4A87"},
      {&IID_IKvVideoPresenterAdv, "022CF5CC-85A3-43AA-9471-675B6658A27B"},
      {&IID_IKvVideoPresenterStream, "B1D629AA-D7AA-4EFD-BA6B-7A54C899C5BF"},
      {&IID_IKvVideoPresenterAnimation, "8B931611-377A-4B2A-BC27-923ABCF375CF"},
      {&IID_IKvFont, "C540BF80-6776-4097-9A98-7174D6E7169B"},
      {&IID_IOruvmVideoMixer, "6C889F37-336B-4FDA-854E-203D2236311E"},
      {&IID_IOruvmVideoContext, "51BC25C8-51A2-4E0A-9467-31FBE8FFCC4F"},
  };
  for (const auto& row : table) {
    const _GUID& g = *row.id;
    char text[40];
    snprintf(text, sizeof text, "%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", g.Data1, g.Data2,
             g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6],
             g.Data4[7]);
    EXPECT_STREQ(row.text, text);
  }
  EXPECT_EQ(24u, sizeof(_GUID));
}

TEST(ScrimMalloc, AlignsZeroesAndRecordsTheShift) {
  const struct {
    unsigned size, align, expectAlign;
  } cases[] = {{1, 16, 16}, {100, 16, 16}, {37, 0, 4}, {64, 4, 4}, {5, 8, 8}, {1000, 128, 128}, {0, 32, 32}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "size " << c.size << " align " << c.align);
    // Several allocations, so that at least one of them starts already aligned.
    for (int n = 0; n < 8; ++n) {
      unsigned char* p = static_cast<unsigned char*>(scrim_malloc(c.size, c.align));
      ASSERT_NE(nullptr, p);
      EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(p) % c.expectAlign);
      EXPECT_TRUE(p[-1] >= 1 && p[-1] <= c.expectAlign) << int(p[-1]);
      for (unsigned i = 0; i < c.size; ++i) ASSERT_EQ(0, p[i]) << "byte " << i;
      memset(p, 0xAB, c.size);  // the whole block is usable (ASan checks the bounds)
      scrim_free(p);
    }
  }
}

TEST(ScrimLog, DropsTraceWritesErrorsAndCutsTo254Characters) {
  HostLog_setEcho(0);
  HostLog_clear();
  Log(SCRIM_LOG_TRACE, "[%s %d]:trace line %d", "f", 1, 7);
  Log(1, "[%s %d]:level one", "f", 2);
  EXPECT_EQ(0u, HostLog_count());

  std::string text;
  for (int i = 0; i < 300; ++i) text += static_cast<char>('a' + i % 26);
  Log(SCRIM_LOG_ERROR, "[%s %d]:width:%d, height:%d ", "CreateStream", 42, 320, 240);
  Log(SCRIM_LOG_ERROR, "%s", "100% literal %d");
  Log(SCRIM_LOG_ERROR, "[%s %d]:%s", "f", 9, text.c_str());
  EXPECT_EQ((std::vector<std::string>{"E/OruScrimPresent: [CreateStream 42]:width:320, height:240 ",
                                      "E/OruScrimPresent: 100% literal %d",
                                      "E/OruScrimPresent: " + ("[f 9]:" + text).substr(0, 254)}),
            HostLog_lines());
  HostLog_clear();
}
