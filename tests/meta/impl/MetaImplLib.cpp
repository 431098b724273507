// Implementation library of the class MtFoo: plain offers, offers through leaf interfaces, and an
// offer named for a class that is not an extension. It registers nothing.
#include "MetaTestIds.h"

ZELMETA_CREATOR(ZELSysTSCreateIBarMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateIBarLeafMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateIOtherLeafMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateINeverRegisteredMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateINotExtMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateIGhostMtGhostExt)
