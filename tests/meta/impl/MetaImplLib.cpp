// Implementation library of the class MtFoo: plain offers, offers through leaf interfaces, and
// offers named for classes that are no extension. It registers nothing.
#include "MetaTestKit.h"

ZELMETA_CREATOR(ZELSysTSCreateIBarMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateIBarLeafMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateIOtherLeafMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateINeverRegisteredMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateINotExtMtFoo)
ZELMETA_CREATOR(ZELSysTSCreateIGhostMtGhostExt)
