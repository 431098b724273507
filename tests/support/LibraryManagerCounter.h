// Calls made so far into ZELThrLibraryManager::LoadLibrary and ::GetFunctionAddress by any
// library of the process. Only in programs that link LibraryManagerCounter.cpp (the
// zel_count_library_calls CMake function).
#pragma once

namespace zeltest {

unsigned long LibraryLoads();
unsigned long FunctionLookups();

}  // namespace zeltest
