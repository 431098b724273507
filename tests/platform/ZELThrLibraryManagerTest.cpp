// The library manager: the naming rule, loading by name, function lookup, failures reported by a
// null result and nothing else, and libraries that stay loaded.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "LibraryManagerCounter.h"
#include "TestSupport.h"
#include "ZELThrLibraryManager.h"

namespace {

using Manager = ZELThrLibraryManager;
using Initialisations = int (*)();

// Each case runs in a process of its own: the probe starts unloaded and the call counters at 0.
// Whether the probe library is loaded right now; asks without loading it or keeping a reference.
bool ProbeLoaded() {
  void* handle = dlopen("libZELPlatformProbe.so", RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

// A failure is a null result that leaves no error text behind for the caller's thread.
bool FailedCleanly(void* result) {
  const char* error = dlerror();
  return result == nullptr && error == nullptr;
}

TEST(ZELThrLibraryManagerTest, EverySpellingLoadsOneLibraryOnceAndKeepsItLoaded) {
  ASSERT_FALSE(ProbeLoaded()) << "the probe library is already loaded in a fresh process";
  void* bare = Manager::LoadLibrary("ZELPlatformProbe");
  ASSERT_NE(bare, nullptr);
  EXPECT_TRUE(ProbeLoaded()) << "the library did not stay loaded";
  EXPECT_EQ(Manager::LoadLibrary("libZELPlatformProbe"), bare);
  EXPECT_EQ(Manager::LoadLibrary("libZELPlatformProbe.so"), bare);
  EXPECT_EQ(zeltest::LibraryLoads(), 3u);

  auto initialisations = reinterpret_cast<Initialisations>(
      Manager::GetFunctionAddress("ZELPlatformProbe", "ZELPlatformProbeInitialisations"));
  ASSERT_NE(initialisations, nullptr);
  EXPECT_EQ(initialisations(), 1) << "the library's initialisation ran more than once";
}

TEST(ZELThrLibraryManagerTest, GetFunctionAddressLoadsTheLibraryAndKeepsItLoaded) {
  ASSERT_FALSE(ProbeLoaded()) << "the probe library is already loaded in a fresh process";
  auto initialisations = reinterpret_cast<Initialisations>(
      Manager::GetFunctionAddress("libZELPlatformProbe.so", "ZELPlatformProbeInitialisations"));
  ASSERT_NE(initialisations, nullptr);
  EXPECT_TRUE(ProbeLoaded()) << "the library did not stay loaded";
  EXPECT_EQ(initialisations(), 1);
  EXPECT_EQ(zeltest::FunctionLookups(), 1u);
  EXPECT_EQ(zeltest::LibraryLoads(), 0u) << "a lookup that loads is not a load call";
}

TEST(ZELThrLibraryManagerTest, FailuresAreCountedNullResultsThatPrintNothing) {
  const std::string path = zeltest::BinaryDir() + "/lib/libZELPlatformProbe.so";
  ASSERT_EQ(access(path.c_str(), R_OK), 0) << path << " is missing";
  zeltest::StderrCapture capture;
  for (const char* library :
       {"ZELNoSuchLibraryAnywhere", "", static_cast<const char*>(nullptr), path.c_str()}) {
    SCOPED_TRACE(library != nullptr ? library : "(null)");
    EXPECT_TRUE(FailedCleanly(Manager::LoadLibrary(library)));
    EXPECT_TRUE(
        FailedCleanly(Manager::GetFunctionAddress(library, "ZELPlatformProbeInitialisations")));
  }
  EXPECT_FALSE(ProbeLoaded()) << "a path was loaded although names only are accepted";
  for (const char* function : {"ZELNoSuchFunction", "", static_cast<const char*>(nullptr)}) {
    SCOPED_TRACE(function != nullptr ? function : "(null)");
    EXPECT_TRUE(FailedCleanly(Manager::GetFunctionAddress("ZELPlatformProbe", function)));
  }
  EXPECT_EQ(capture.Take(), "");
  EXPECT_EQ(zeltest::LibraryLoads(), 4u);
  EXPECT_EQ(zeltest::FunctionLookups(), 7u);
}

}  // namespace
