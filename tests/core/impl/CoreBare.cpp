// zelcore_bare: a library that creates objects by class name only; it exports no
// ZELSysTSDllGetClassObject.
#include "CoreWidgetInterfaces.h"

extern "C" void* fctZELSysTSCreateCoreBare(void* argument) {
  return argument;
}
