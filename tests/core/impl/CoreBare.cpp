// zelcore_bare: a library that creates objects by class name only. It exports no
// ZELSysTSDllGetClassObject.
#include "CoreWidgetInterfaces.h"

namespace {
int g_bare_token;
int g_loose_token;
}  // namespace

extern "C" {

// Both return a token that tells the test which function ran and with what argument.
void* fctZELSysTSCreateCoreBare(void* argument) {
  return argument != nullptr ? argument : &g_bare_token;
}
void* fctZELSysTSCreateCoreLoose(void*) {
  return &g_loose_token;
}

void* zelcore_bare_token() {
  return &g_bare_token;
}
void* zelcore_loose_token() {
  return &g_loose_token;
}

}  // extern "C"
