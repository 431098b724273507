// The object model: include this header and nothing else.
#pragma once

#include "ZELSysTSBOAInternal.h"
#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSClientKit.h"
#include "ZELSysTSConvertStringToGUID.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELSysTSGuid.h"
#include "ZELSysTSMetaClass.h"
#include "ZELSysTSObjectCreation.h"
#include "ZELSysTSRefCounterUnknown.h"
#include "ZELSysTSTIEInternal.h"
#include "ZELSysTSTypes.h"
