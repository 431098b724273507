// The client kit: header-only C++ helpers for code that uses and implements objects of the
// object model. Included by ZELSysTSObjectModeler.h; listed here by concept:
//   ZELSysTSGuid.h             ZELSysTSGuid("{...}"): GUID constants checked at compile time
//   ZELSysTSInterfaceTraits.h  ZELSYSTS_DECLARE_INTERFACE: an interface type knows its IID
//   ZELSysTSPtr.h              ZELSysTSPtr<I>: owning interface pointer, QueryInterface on
//                              conversion
//   ZELSysTSClass.h            ZELSysTSImplementation / ...Extension: meta object, registration
//   ZELSysTSCreators.h         ZELSYSTS_EXPORT_*: the functions the dictionary names
//   ZELSysTSTie.h              ZELSysTSTie: tie objects
//   ZELSysTSTypedCreation.h    ZELSysTSCreateObject<I>, ZELSysTSCreateInstanceOf<I>
#pragma once

#include "ZELSysTSClass.h"
#include "ZELSysTSCreators.h"
#include "ZELSysTSGuid.h"
#include "ZELSysTSInterfaceTraits.h"
#include "ZELSysTSPtr.h"
#include "ZELSysTSTie.h"
#include "ZELSysTSTypedCreation.h"
