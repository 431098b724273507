// A test object that counts its references and queries without any library behind it, so that
// the interface pointer's own bookkeeping can be checked exactly. It is never deleted: its count
// is inspected after the last Release, and a count that would fall below zero is recorded.
#pragma once

#include <functional>

#include "ZELSysTSObjectModeler.h"

class IAlpha : public IUnknown {
 public:
  virtual int Alpha() = 0;
};
ZELSYSTS_DECLARE_INTERFACE(IAlpha, "{88BC63B6-FD25-4094-A4C5-20E6CD747537}");

class IBeta : public IUnknown {
 public:
  virtual int Beta() = 0;
};
ZELSYSTS_DECLARE_INTERFACE(IBeta, "{34631391-FE17-4509-BD6B-730D1EF3F1AC}");

// Offered by nobody.
class IGamma : public IUnknown {
 public:
  virtual int Gamma() = 0;
};
ZELSYSTS_DECLARE_INTERFACE(IGamma, "{24240434-1B0C-4471-8821-39E0A17299E3}");

class CountingObject final : public IAlpha, public IBeta {
 public:
  // IAlpha for IUnknown and IAlpha, IBeta for IBeta; E_NOINTERFACE otherwise.
  HRESULT QueryInterface(const _GUID& iid, void** ppv) override {
    *ppv = nullptr;
    ++queries;
    if (iid == ZELSysTSIIDOf<IUnknown>() || iid == ZELSysTSIIDOf<IAlpha>()) {
      *ppv = static_cast<IAlpha*>(this);
    } else if (iid == ZELSysTSIIDOf<IBeta>()) {
      *ppv = static_cast<IBeta*>(this);
    } else {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  uint32_t AddRef() override { return static_cast<uint32_t>(++count); }
  uint32_t Release() override {
    if (count == 0) {
      ++underflows;
      return 0;
    }
    --count;
    if (on_release) on_release();
    return static_cast<uint32_t>(count);
  }
  int Alpha() override { return 1; }
  int Beta() override { return 2; }

  int count = 1;
  int queries = 0;
  int underflows = 0;
  std::function<void()> on_release;
};
