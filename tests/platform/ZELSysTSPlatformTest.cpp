// libZELSysTS on one thread. Each case runs in a fresh process: no probe library is loaded yet.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "TestSupport.h"
#include "ZELSysTS.h"

namespace {

using Manager = ZELThrLibraryManager;
constexpr char kCount[] = "ZELPlatformProbeInitialisations";
const auto Call = [](void* function) { return reinterpret_cast<int (*)()>(function)(); };

// Whether a library is loaded now; asks without loading it or keeping a reference.
bool Loaded(const char* file) {
  void* handle = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
  return handle != nullptr && dlclose(handle) == 0;
}

TEST(ZELThrLibraryManagerTest, EverySpellingOfANameIsOneLibraryLoadedOnceForGood) {
  void* count = Manager::GetFunctionAddress("libZELPlatformProbe", kCount);
  void* handle = Manager::LoadLibrary("ZELPlatformProbe");
  ASSERT_TRUE(handle != nullptr && count != nullptr);
  EXPECT_EQ(Manager::LoadLibrary("libZELPlatformProbe"), handle);
  EXPECT_EQ(Manager::LoadLibrary("libZELPlatformProbe.so"), handle);
  ASSERT_TRUE(Loaded("libZELPlatformProbe.so")) << "the library did not stay loaded";
  EXPECT_EQ(Call(count), 1) << "the library's initialisation ran more than once";
}

TEST(ZELThrLibraryManagerTest, RefusedOrMissingNamesAndFunctionsGiveNullAndNothingElse) {
  const std::string path = zeltest::BinaryDir() + "/lib/libZELPlatformProbe.so";
  ASSERT_EQ(access(path.c_str(), R_OK), 0) << path;
  const char* none = nullptr;
  EXPECT_EQ(zeltest::StderrOf([&] {
              for (const char* library : {"ZELNoSuchLibrary", "", none, path.c_str()}) {
                SCOPED_TRACE(library != nullptr ? library : "(null)");
                EXPECT_EQ(Manager::LoadLibrary(library), nullptr);
                EXPECT_EQ(Manager::GetFunctionAddress(library, kCount), nullptr);
                EXPECT_EQ(dlerror(), nullptr);
              }
              EXPECT_FALSE(Loaded("libZELPlatformProbe.so")) << "a path was loaded, no name";
              for (const char* function : {"ZELNoSuchFunction", none}) {
                EXPECT_EQ(Manager::GetFunctionAddress("ZELPlatformProbe", function), nullptr);
                EXPECT_EQ(dlerror(), nullptr);
              }
            }),
            "");
}

TEST(ZELThrLibraryManagerTest, LibrariesAreBoundInFullAgainstTheSymbolsOfThoseLoadedBefore) {
  EXPECT_EQ(Manager::LoadLibrary("ZELPlatformUnresolvedProbe"), nullptr)
      << "loaded with an unresolved function: its first call would fail";
  EXPECT_EQ(Manager::LoadLibrary("ZELPlatformDependentProbe"), nullptr) << "loaded unbound";
  ASSERT_NE(Manager::LoadLibrary("ZELPlatformProbe"), nullptr);
  void* dependent =
      Manager::GetFunctionAddress("ZELPlatformDependentProbe", "ZELPlatformDependentProbe");
  ASSERT_NE(dependent, nullptr) << "the functions of libZELPlatformProbe are not global";
  EXPECT_EQ(Call(dependent), 1);
  EXPECT_NE(dlopen("libZELPlatformUnresolvedProbe.so", RTLD_LAZY), nullptr)
      << "the probe is missing";
}

TEST(ZELSmartMutexTest, BuiltWithOneHoldsNoMutexAndItsOperationsDoNothing) {
  ZELSmartMutex none(1);
  EXPECT_EQ(none.Handle(), nullptr);
  EXPECT_EQ(none.LockF(), 0);
  EXPECT_EQ(none.UnlockF(), 0);
}

}  // namespace
