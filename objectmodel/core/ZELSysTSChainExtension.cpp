#include "core/ZELSysTSChainExtension.h"

ZELSysTSChainExtension::ZELSysTSChainExtension(ZELSysTSBaseUnknown* extension)
    : extension(extension), next(nullptr) {}

ZELSysTSChainExtension::~ZELSysTSChainExtension() {
  extension = nullptr;
  next = nullptr;
}

HRESULT ZELSysTSChainExtension::GetExtension(ZELSysTSBaseUnknown*& out) {
  out = extension;
  return out != nullptr ? S_OK : E_FAIL;
}

ZELSysTSChainExtension* ZELSysTSChainExtension::GetNext() {
  return next;
}

HRESULT ZELSysTSChainExtension::SetNext(ZELSysTSChainExtension* node) {
  // A node is linked once and never relinked: this keeps the chain free of cycles and of nodes
  // that hang in two places.
  if (next != nullptr || node == nullptr || node->next != nullptr) return E_FAIL;
  next = node;
  return S_OK;
}
