#include "ZELSysTSBOAInternal.h"

#include "core/ImplementationResolution.h"

ZELSysTSBaseUnknown* ZELSysTSBOAInternal::CreateBOA(ZELSysTSBaseUnknown* object,
                                                    ZELSysTSMetaClass* implMeta,
                                                    ZELSysTSBaseUnknown* (*create)()) {
  return ResolveImplementation(object, implMeta, create);
}
