// The library manager: the naming rule, loading by name, function lookup, failures reported by a
// null result and nothing else, and libraries that stay loaded.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "TestSupport.h"
#include "ZELThrLibraryManager.h"

namespace {

using ProbeGet = int (*)();
using ProbeSet = void (*)(int);

TEST(ZELThrLibraryManagerTest, FileNameOfAppliesTheNamingRule) {
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("Foo"), "libFoo.so");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("libFoo"), "libFoo.so");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("libFoo.so"), "libFoo.so");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("Foo.so"), "Foo.so");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("lib"), "lib.so");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("li"), "libli.so");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("so"), "libso.so");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("Foo.so.1"), "libFoo.so.1.so");
}

TEST(ZELThrLibraryManagerTest, FileNameOfRefusesPathsAndEmptyNames) {
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf(nullptr), "");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf(""), "");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("a/b"), "");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("/usr/lib/libFoo.so"), "");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("./libFoo.so"), "");
  EXPECT_EQ(ZELThrLibraryManager::FileNameOf("Foo/"), "");
}

TEST(ZELThrLibraryManagerTest, EverySpellingOfANameReachesTheSameLibrary) {
  void* bare = ZELThrLibraryManager::LoadLibrary("ZELPlatformProbe");
  ASSERT_NE(bare, nullptr);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibrary("libZELPlatformProbe"), bare);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibrary("libZELPlatformProbe.so"), bare);

  auto initialisations = reinterpret_cast<ProbeGet>(ZELThrLibraryManager::GetFunctionAddress(
      "ZELPlatformProbe", "ZELPlatformProbeInitialisations"));
  ASSERT_NE(initialisations, nullptr);
  EXPECT_EQ(initialisations(), 1) << "the library's initialisation ran more than once";
}

TEST(ZELThrLibraryManagerTest, GetFunctionAddressLoadsTheLibraryFirst) {
  ASSERT_EQ(dlopen("libZELPlatformProbe.so", RTLD_NOW | RTLD_NOLOAD), nullptr)
      << "the probe library is already loaded in a fresh process";
  void* address =
      ZELThrLibraryManager::GetFunctionAddress("libZELPlatformProbe.so", "ZELPlatformProbeGet");
  ASSERT_NE(address, nullptr);
  void* handle = dlopen("libZELPlatformProbe.so", RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(dlsym(handle, "ZELPlatformProbeGet"), address);
  dlclose(handle);  // drops only the reference that RTLD_NOLOAD added
}

TEST(ZELThrLibraryManagerTest, ALibraryStaysLoadedWithItsState) {
  auto set = reinterpret_cast<ProbeSet>(
      ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", "ZELPlatformProbeSet"));
  ASSERT_NE(set, nullptr);
  set(42);
  // Loading again, and dropping every reference that a client could have taken itself, must
  // neither run the initialisation again nor lose the state.
  for (int i = 0; i < 3; ++i) {
    void* handle = dlopen("libZELPlatformProbe.so", RTLD_NOW);
    ASSERT_NE(handle, nullptr);
    dlclose(handle);
  }
  ASSERT_NE(ZELThrLibraryManager::LoadLibrary("libZELPlatformProbe"), nullptr);
  EXPECT_NE(dlopen("libZELPlatformProbe.so", RTLD_NOW | RTLD_NOLOAD), nullptr);
  auto get = reinterpret_cast<ProbeGet>(
      ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", "ZELPlatformProbeGet"));
  ASSERT_NE(get, nullptr);
  EXPECT_EQ(get(), 42);
  auto initialisations = reinterpret_cast<ProbeGet>(ZELThrLibraryManager::GetFunctionAddress(
      "ZELPlatformProbe", "ZELPlatformProbeInitialisations"));
  ASSERT_NE(initialisations, nullptr);
  EXPECT_EQ(initialisations(), 1);
}

TEST(ZELThrLibraryManagerTest, FailuresAreANullResultAndPrintNothing) {
  zeltest::StderrCapture capture;
  EXPECT_EQ(ZELThrLibraryManager::LoadLibrary("ZELNoSuchLibraryAnywhere"), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibrary(nullptr), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibrary(""), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddress("ZELNoSuchLibraryAnywhere", "f"), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", "ZELNoSuchFunction"),
            nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", nullptr), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", ""), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddress(nullptr, "ZELPlatformProbeGet"), nullptr);
  EXPECT_EQ(capture.Take(), "");
  // A failed dlopen or dlsym leaves no error text behind for the caller's thread.
  EXPECT_EQ(dlerror(), nullptr);
}

TEST(ZELThrLibraryManagerTest, APathIsRefusedEvenWhenTheFileExists) {
  const std::string library = zeltest::BinaryDir() + "/lib/libZELPlatformProbe.so";
  ASSERT_EQ(access(library.c_str(), R_OK), 0) << library << " is missing";
  EXPECT_EQ(ZELThrLibraryManager::LoadLibrary(library.c_str()), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddress(library.c_str(), "ZELPlatformProbeGet"),
            nullptr);
  EXPECT_EQ(dlopen("libZELPlatformProbe.so", RTLD_NOW | RTLD_NOLOAD), nullptr)
      << "a refused path was loaded all the same";
}

TEST(ZELThrLibraryManagerTest, CountsEveryCallSuccessfulOrNot) {
  const unsigned long loads = ZELThrLibraryManager::LoadLibraryCalls();
  const unsigned long lookups = ZELThrLibraryManager::GetFunctionAddressCalls();
  ZELThrLibraryManager::LoadLibrary("ZELPlatformProbe");
  ZELThrLibraryManager::LoadLibrary("ZELNoSuchLibraryAnywhere");
  ZELThrLibraryManager::LoadLibrary(nullptr);
  ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", "ZELPlatformProbeGet");
  ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", nullptr);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibraryCalls() - loads, 3u);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddressCalls() - lookups, 2u)
      << "a lookup that loads the library is one lookup call, not a load call";
}

}  // namespace
