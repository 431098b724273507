// Implementation library of the extension MtFooExt, which extends MtFoo. Its initialisation
// registers the extension, so that resolution can load it on demand.
#include "MetaTestIds.h"

ZELMETA_CREATOR(ZELSysTSCreateIExtMtFooExt)

namespace {
[[maybe_unused]] const ZELSysTSMetaClass* const g_ext_meta = ZELSysTSFindOrCreateMetaObject(
    "MtFooExt", ZELSysTSTypeChainedExtension, &zelmeta::kClsidFooExt, nullptr, "MtFoo");
}  // namespace
