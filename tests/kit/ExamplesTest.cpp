// The demonstration and the README's first component, as built, run and say what they promise.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "TestSupport.h"

namespace {

// What a program of the build prints (stdout and stderr) on some dictionaries, then its status.
std::string RunProgram(const std::string& program, const std::string& dictionaries) {
  const std::string command = "ZELDictionaryPath='" + zeltest::SourceDir() + dictionaries + "' '" +
                              zeltest::BinaryDir() + "/bin/" + program + "' 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  for (int c; (c = fgetc(pipe)) != EOF;) out += static_cast<char>(c);
  return out + "exit " + std::to_string(pclose(pipe));
}

TEST(KitExamples, DemonstrationAndFirstComponentDoWhatTheyPromise) {
  const std::string demo = RunProgram("drawing_host", "/examples/dictionaries");
  for (const char* line : {"the circle holds 3 references while the tie lives, 2 after it is",
                           "two distinct cursors; the drawing's references went from 1 to 3",
                           "a second request finds the same extension, which has computed 3",
                           "\nAll steps behaved as expected.\nexit 0"}) {
    EXPECT_NE(demo.find(line), std::string::npos) << line << "\n" << demo;
  }
  EXPECT_EQ(RunProgram("first_component_hello", "/examples/first-component/dictionaries"),
            "Hello, world!\n(said by an object of class Greeter)\nexit 0");
}

}  // namespace
