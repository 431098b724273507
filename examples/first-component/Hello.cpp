// A client of the Greeter component: it links only libZELSysTSObjectModeler.
#include <cstdio>

#include "IGreeter.h"

int main() {
  ZELSysTSPtr<IGreeter> greeter = ZELSysTSCreateObject<IGreeter>("Greeter");
  if (!greeter) {
    std::fprintf(stderr, "no Greeter: check ZELDictionaryPath and LD_LIBRARY_PATH\n");
    return 1;
  }
  std::printf("%s\n", greeter->Greet("world").c_str());

  ZELSysTSPtr<ZELSysTSBaseUnknown> object = greeter;  // QueryInterface for the object itself
  std::printf("(said by an object of class %s)\n", object->IsA());
  return 0;
}
