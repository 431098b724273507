// Interfaces and identifiers shared by the implementation libraries zelcore_widgets and
// zelcore_bare and by the tests that load them. The tests see the libraries' classes only
// through these interfaces and the functions the libraries export.
#pragma once

#include "ZELSysTSObjectModeler.h"

inline constexpr _GUID CLSID_CoreWidget = {
    0x5A1E0001, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};
inline constexpr _GUID CLSID_CoreWidgetDeluxe = {
    0x5A1E0002, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};
inline constexpr _GUID CLSID_CoreWidgetExtra = {
    0x5A1E0003, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};
inline constexpr _GUID CLSID_CoreWidgetTemp = {
    0x5A1E0004, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};
// A class for which ZELSysTSDllGetClassObject answers with a fixed, unusual result.
inline constexpr _GUID CLSID_CoreEcho = {
    0x5A1E0005, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};

inline constexpr _GUID IID_IWidgetInfo = {
    0x1F0E0001, 0xAB01, 0x4C22, {0x81, 0x02, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F}};
inline constexpr _GUID IID_IWidgetExtra = {
    0x1F0E0002, 0xAB01, 0x4C22, {0x81, 0x02, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F}};
inline constexpr _GUID IID_IWidgetTemp = {
    0x1F0E0003, 0xAB01, 0x4C22, {0x81, 0x02, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F}};

// The result that ZELSysTSDllGetClassObject gives for CLSID_CoreEcho, with *ppv = EchoToken().
inline constexpr HRESULT kEchoResult = 0x00000007;

// Served by a tie bound to the widget itself.
class IWidgetInfo : public IUnknown {
 public:
  virtual int Answer() = 0;
};

// Served by the widget's chained extension CoreWidgetExtra.
class IWidgetExtra : public IUnknown {
 public:
  // Distinct per extension object.
  virtual const void* Identity() = 0;
  // The object that the extension extends.
  virtual ZELSysTSBaseUnknown* Owner() = 0;
};

// Served by a new transient extension CoreWidgetTemp for every request.
class IWidgetTemp : public IUnknown {
 public:
  // 1, 2, 3, ... in order of creation.
  virtual int Serial() = 0;
};

// Exported by zelcore_widgets: objects of its classes alive now (widgets, extensions, ties).
typedef int (*LiveObjectsFunction)();
