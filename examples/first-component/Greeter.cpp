// The class Greeter, in the implementation library libFirstGreeter.so.
#include "IGreeter.h"

class Greeter final : public ZELSysTSImplementation<Greeter, ZELSysTSBaseUnknown, IGreeter> {
 public:
  static constexpr ZELSysTSClassInfo class_info{
      "Greeter", ZELSysTSGuid("{DCEE35B0-87AF-4BA5-85D3-69494F98F3AF}")};

  std::string Greet(const char* name) override { return std::string("Hello, ") + name + "!"; }
};

ZELSYSTS_REGISTER_CLASS(Greeter);                // its meta object, when the library loads
ZELSYSTS_EXPORT_FACTORY(Greeter, Greeter)        // fctZELSysTSCreateGreeter
ZELSYSTS_EXPORT_BOA(IGreeter, Greeter, Greeter)  // ZELSysTSCreateIGreeterGreeter
