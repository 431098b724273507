#include "ZELSysTSStrtok.h"

#include <cstring>

char* ZELSysTSStrtok(char* text, const char* separators, char** state) {
  return strtok_r(text, separators, state);
}
