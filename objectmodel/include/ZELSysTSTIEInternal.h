// ZELSysTSTIEInternal: what every tie class calls so that ties find their implementation, count
// references and answer QueryInterface alike. A tie carries one interface for an object and
// hands each call on to its implementation. Each reference on a tie stands for one reference on
// its object; a tie made by a creator starts with tie count 1.
#pragma once

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSExport.h"
#include "ZELSysTSMetaClass.h"
#include "ZELSysTSTypes.h"

class ZELSYSTS_EXPORT ZELSysTSTIEInternal {
 public:
  // implementation = the object that implements the interface (see ZELSysTSBOAInternal::CreateBOA):
  // S_OK when found, E_FAIL with implementation null otherwise (also for null inputs).
  static HRESULT Tie_Construct(ZELSysTSBaseUnknown* object, ZELSysTSMetaClass* implMeta,
                               ZELSysTSBaseUnknown* (*create)(),
                               ZELSysTSBaseUnknown*& implementation);
  // *ppv = null, then the object's QueryInterface; E_UNEXPECTED for a null object or ppv.
  static HRESULT Tie_Query(ZELSysTSBaseUnknown* object, const _GUID& iid, void** ppv);
  // Adds one to the object's count and to tieCount under the object's lock; returns tieCount.
  // A null object: returns 0 and changes nothing.
  static int Tie_AddRef(int& tieCount, ZELSysTSBaseUnknown* object);
  // Takes one from tieCount and from the object's count under the object's lock; returns the
  // new tieCount. When it reaches 0, object = null and mustDelete = 1: the tie deletes itself.
  // A null object: returns 0, mustDelete = 0, tieCount unchanged.
  static int Tie_Release(int& tieCount, ZELSysTSBaseUnknown*& object, unsigned char& mustDelete);
};
