// The demonstration and the README's first component, as built: their libraries export the
// composed names under hidden visibility, the programs run and say what they should, and the
// README shows the first component's files as they are.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace {

struct RunResult {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs a program of the build with ZELDictionaryPath set (LD_LIBRARY_PATH comes from CTest).
RunResult RunProgram(const std::string& program, const std::string& dictionaries) {
  zeltest::TempDir dir;
  const std::string errFile = dir.path() + "/stderr";
  const std::string command = "ZELDictionaryPath='" + dictionaries + "' '" + zeltest::BinaryDir() +
                              "/bin/" + program + "' 2>'" + errFile + "'";
  RunResult result;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return result;
  char buffer[4096];
  size_t n = 0;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) result.out.append(buffer, n);
  const int raw = pclose(pipe);
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  std::ifstream err(errFile);
  std::stringstream text;
  text << err.rdbuf();
  result.err = text.str();
  return result;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

TEST(KitExamples, LibrariesExportTheComposedNames) {
  const struct {
    const char* library;
    std::vector<const char*> names;
  } expected[] = {
      {"libDrawShapes.so",
       {"ZELSysTSCreateIShapeShape", "ZELSysTSCreateIPrintableShape", "fctZELSysTSCreateCircle",
        "fctZELSysTSCreateRectangle", "ZELSysTSDllGetClassObject"}},
      {"libDrawDocument.so",
       {"ZELSysTSCreateIDrawingDrawing", "ZELSysTSCreateISvgExporterDrawing",
        "ZELSysTSCreateIShapeCursorDrawing", "fctZELSysTSCreateDrawing",
        "ZELSysTSDllGetClassObject"}},
      {"libDrawStats.so", {"ZELSysTSCreateIStatisticsDrawingStatistics"}},
      {"libFirstGreeter.so", {"fctZELSysTSCreateGreeter", "ZELSysTSCreateIGreeterGreeter"}},
      {"libKitTestComponents.so",
       {"ZELSysTSCreateIKitNameKitWidget", "ZELSysTSCreateIKitLeafKitWidget",
        "ZELSysTSCreateIKitCounterKitChained", "ZELSysTSCreateIKitTicketKitTransient",
        "ZELSysTSCreateIKitLabelKitWidget", "ZELSysTSCreateIKitChainedLabelKitWidget",
        "ZELSysTSCreateIKitTransientLabelKitWidget", "fctZELSysTSCreateKitWidgetA",
        "ZELSysTSDllGetClassObject"}},
  };
  for (const auto& lib : expected) {
    void* handle = dlopen(lib.library, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    for (const char* name : lib.names) {
      EXPECT_NE(dlsym(handle, name), nullptr) << lib.library << " lacks " << name;
    }
    // The interface part is the leaf, the class part the extension: the plain names are absent.
    EXPECT_EQ(dlsym(handle, "ZELSysTSCreateIExporterDrawing"), nullptr);
    EXPECT_EQ(dlsym(handle, "ZELSysTSCreateIStatisticsDrawing"), nullptr);
    dlclose(handle);
  }
}

TEST(KitExamples, DemonstrationWalksThroughEveryMechanism) {
  const RunResult run = RunProgram("drawing_host", zeltest::SourceDir() + "/examples/dictionaries");
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_EQ(run.err, "");
  const char* const lines[] = {
      "got:   an object of class Drawing, titled \"Quarterly report\", holding 1 reference",
      "got:   IShape on an object of class Circle: a circle of area 3.14",
      "then:  Scale(2) makes its area 12.57",
      "got:   IShape on an object of class Rectangle: a rectangle of area 6.00",
      "the circle's references went from 1 to 2",
      "a separate tie object (not the circle), bound to an object of class Circle",
      "Print: \"circle of radius 2.00, area 12.57\"",
      "the circle holds 3 references while the tie lives, 2 after it is released",
      "an exporter of format \"svg\" on an object of class Drawing",
      "<circle cx=\"30\" cy=\"30\" r=\"20\"/>",
      "two distinct cursors; the drawing's references went from 1 to 3",
      "the first cursor gives circle rectangle; afterwards it stands at 2, the second still at 0",
      "before: libDrawStats.so loaded: no",
      "after:  libDrawStats.so loaded: yes",
      "total area 18.57, 1 circle(s), 1 rectangle(s); computed 3 times",
      "a second request finds the same extension, which has computed 3 times",
      "HRESULT 0x80004002 (E_NOINTERFACE), no pointer, the circle's references unchanged (2)",
      "the circle is back to 1 reference(s)",
      "All steps behaved as expected.",
  };
  for (const char* line : lines) {
    EXPECT_NE(run.out.find(line), std::string::npos) << "missing: " << line << "\n" << run.out;
  }
  EXPECT_EQ(run.out.find("UNEXPECTED"), std::string::npos) << run.out;
}

TEST(KitExamples, DemonstrationExplainsAMissingDictionary) {
  const RunResult run = RunProgram("drawing_host", zeltest::SourceDir() + "/no-such-folder");
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.out.find("got:   nothing. Is ZELDictionaryPath set"), std::string::npos) << run.out;
}

TEST(KitExamples, FirstComponentGreets) {
  const RunResult run = RunProgram("first_component_hello",
                                   zeltest::SourceDir() + "/examples/first-component/dictionaries");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "Hello, world!\n(said by an object of class Greeter)\n");
  EXPECT_EQ(run.err, "");
}

// The README shows each file of the first component whole, so what it shows is what the test
// above builds and runs.
TEST(KitExamples, ReadmeShowsTheFirstComponentAsBuilt) {
  const std::string readme = ReadFile(zeltest::SourceDir() + "/README.md");
  ASSERT_FALSE(readme.empty());
  const char* const files[] = {"IGreeter.h", "Greeter.cpp", "Hello.cpp",
                               "dictionaries/Greeter.dicts", "dictionaries/Greeter.iidts"};
  for (const char* file : files) {
    const std::string text = ReadFile(zeltest::SourceDir() + "/examples/first-component/" + file);
    ASSERT_FALSE(text.empty()) << file;
    EXPECT_NE(readme.find(text), std::string::npos) << "README.md does not show " << file;
  }
}

}  // namespace
