// Set-up shared by the object core's integration tests: a dictionary folder describing the
// libraries zelcore_widgets and zelcore_bare, and access to what the libraries export.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "TestSupport.h"
#include "ZELThrLibraryManager.h"
#include "impl/CoreWidgetInterfaces.h"

namespace coretest {

inline std::string GuidText(const _GUID& g) {
  char text[39];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(g.Data1), g.Data2, g.Data3, g.Data4[0], g.Data4[1],
                g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
  return text;
}

// Writes the dictionary and points ZELDictionaryPath at it before the first query; captures
// standard error for the whole test, which must stay silent.
class WidgetDictionaryTest : public ::testing::Test {
 protected:
  WidgetDictionaryTest()
      : env_("ZELDictionaryPath", (Write(), dir_.path().c_str())),
        nofallback_("ZELDictionaryNoPathNoFallback", nullptr) {}

  void TearDown() override { EXPECT_EQ(stderr_.Take(), ""); }

  template <typename F>
  static F Export(const char* library, const char* function) {
    void* address = ZELThrLibraryManager::GetFunctionAddress(library, function);
    EXPECT_NE(address, nullptr) << function;
    return reinterpret_cast<F>(address);
  }
  static int LiveWidgets() {
    return Export<int (*)()>("zelcore_widgets", "zelcore_widgets_live")();
  }

 private:
  void Write() {
    dir_.Write("widgets.dicts",
               "# class interface library [keyword value]\n"
               "CoreWidget IWidgetInfo zelcore_widgets\n"
               "CoreWidget IWidgetExtra zelcore_widgets EXTENDED_BY CoreWidgetExtra\n"
               "CoreWidget IWidgetTemp zelcore_widgets\n"
               "CoreBare CreateInterface zelcore_bare\n");
    dir_.Write("widgets.iidts", GuidText(IID_IWidgetInfo) + " IWidgetInfo\n" +
                                    GuidText(IID_IWidgetExtra) + " IWidgetExtra\n" +
                                    GuidText(IID_IWidgetTemp) + " IWidgetTemp\n");
    dir_.Write("widgets.clsidts", GuidText(CLSID_CoreWidget) + " CoreWidget zelcore_widgets\n" +
                                      GuidText(CLSID_CoreEcho) + " CoreEcho libzelcore_widgets\n" +
                                      GuidText(CLSID_CoreWidgetDeluxe) + " CoreWidgetDeluxe\n" +
                                      GuidText(CLSID_CoreWidgetExtra) +
                                      " CoreWidgetExtra zelcore_bare\n");
  }

  zeltest::TempDir dir_;
  zeltest::ScopedEnv env_;
  zeltest::ScopedEnv nofallback_;
  zeltest::StderrCapture stderr_;
};

}  // namespace coretest
