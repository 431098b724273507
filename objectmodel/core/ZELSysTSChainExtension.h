// ZELSysTSChainExtension: one node of an ordinary object's extension chain. The object owns every
// node and every extension held in a node; nodes are only appended (never removed or reordered)
// while the object lives, and only the object's last Release frees them. The node's destructor
// frees neither its extension nor its next node.
//
// Thread safety: a chain is read and appended only under its object's lock.
#pragma once

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSTypes.h"

class ZELSysTSChainExtension {
 public:
  explicit ZELSysTSChainExtension(ZELSysTSBaseUnknown* extension);
  // Sets both fields to null; deletes nothing.
  virtual ~ZELSysTSChainExtension();

  // out = extension (written in every case); S_OK when it is not null, E_FAIL otherwise.
  HRESULT GetExtension(ZELSysTSBaseUnknown*& out);
  ZELSysTSChainExtension* GetNext();
  // E_FAIL with nothing changed when this node has a next already, node is null, or node has a
  // next; otherwise next = node and S_OK.
  HRESULT SetNext(ZELSysTSChainExtension* node);

 private:
  ZELSysTSBaseUnknown* extension;
  ZELSysTSChainExtension* next;
};
