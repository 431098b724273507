// The demonstration and the README's first component, as built: their libraries export the
// composed names under hidden visibility, the programs run and say what they should, and the
// README shows the first component's files exactly as they are built.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "TestSupport.h"

namespace {

std::string ReadFile(const std::string& path) {
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

struct RunResult {
  int status;
  std::string out;
  std::string err;
};

// Runs a program of the build with ZELDictionaryPath set (LD_LIBRARY_PATH comes from CTest).
RunResult RunProgram(const std::string& program, const std::string& dictionaries) {
  zeltest::TempDir dir;
  const int raw =
      std::system(("ZELDictionaryPath='" + dictionaries + "' '" + zeltest::BinaryDir() + "/bin/" +
                   program + "' >'" + dir.path() + "/out' 2>'" + dir.path() + "/err'")
                      .c_str());
  return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadFile(dir.path() + "/out"),
          ReadFile(dir.path() + "/err")};
}

TEST(KitExamples, LibrariesExportTheComposedNames) {
  const char* const expected[][2] = {
      {"libDrawShapes.so", "ZELSysTSCreateIPrintableShape"},  // a tie's creator
      {"libDrawShapes.so", "fctZELSysTSCreateCircle"},
      {"libDrawShapes.so", "ZELSysTSDllGetClassObject"},
      {"libDrawDocument.so", "ZELSysTSCreateISvgExporterDrawing"},        // the leaf, not IExporter
      {"libDrawStats.so", "ZELSysTSCreateIStatisticsDrawingStatistics"},  // the extension's
      {"libFirstGreeter.so", "ZELSysTSCreateIGreeterGreeter"},
  };
  for (const auto& [library, name] : expected) {
    void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    EXPECT_NE(dlsym(handle, name), nullptr) << library << " lacks " << name;
    EXPECT_EQ(dlsym(handle, "ZELSysTSCreateIExporterDrawing"), nullptr) << library;
    dlclose(handle);
  }
}

TEST(KitExamples, DemonstrationWalksThroughEveryMechanism) {
  const RunResult run = RunProgram("drawing_host", zeltest::SourceDir() + "/examples/dictionaries");
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out.find("UNEXPECTED"), std::string::npos) << run.out;
  for (const char* line : {
           "got:   an object of class Drawing, titled \"Quarterly report\", holding 1 reference",
           "a separate tie object (not the circle), bound to an object of class Circle",
           "the circle holds 3 references while the tie lives, 2 after it is released",
           "an exporter of format \"svg\" on an object of class Drawing",
           "two distinct cursors; the drawing's references went from 1 to 3",
           "after:  libDrawStats.so loaded: yes",
           "a second request finds the same extension, which has computed 3 times",
           "HRESULT 0x80004002 (E_NOINTERFACE), no pointer, the circle's references unchanged (2)",
           "All steps behaved as expected.",
       }) {
    EXPECT_NE(run.out.find(line), std::string::npos) << "missing: " << line << "\n" << run.out;
  }
}

// The README shows each file of the first component whole: what it shows is what runs here.
TEST(KitExamples, ReadmeFirstComponentIsBuiltAndGreets) {
  const std::string readme = ReadFile(zeltest::SourceDir() + "/README.md");
  for (const char* file : {"IGreeter.h", "Greeter.cpp", "Hello.cpp", "dictionaries/Greeter.dicts",
                           "dictionaries/Greeter.iidts"}) {
    const std::string text = ReadFile(zeltest::SourceDir() + "/examples/first-component/" + file);
    ASSERT_FALSE(text.empty()) << file;
    EXPECT_NE(readme.find(text), std::string::npos) << "README.md does not show " << file;
  }
  const RunResult run = RunProgram("first_component_hello",
                                   zeltest::SourceDir() + "/examples/first-component/dictionaries");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "Hello, world!\n(said by an object of class Greeter)\n");
  EXPECT_EQ(run.err, "");
}

}  // namespace
