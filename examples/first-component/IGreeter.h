// IGreeter: the interface of the first component.
#pragma once

#include <string>

#include "ZELSysTSObjectModeler.h"

class IGreeter : public IUnknown {
 public:
  virtual std::string Greet(const char* name) = 0;

 protected:
  ~IGreeter() = default;
};
ZELSYSTS_DECLARE_INTERFACE(IGreeter, "{728731DD-F4C3-424D-95B5-05C6F163D159}");
