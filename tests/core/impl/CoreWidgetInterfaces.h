// Identifiers shared by the implementation libraries zelcore_widgets and zelcore_bare and by the
// tests that load them.
#pragma once

#include "ZELSysTSObjectModeler.h"

inline constexpr _GUID kIidIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr _GUID CLSID_CoreWidget = {
    0x5A1E0001, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};
inline constexpr _GUID CLSID_CoreWidgetExtra = {
    0x5A1E0002, 0x0C0E, 0x4A11, {0x90, 0x01, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60}};
// Served by CoreWidgetExtra, the chained extension of CoreWidget.
inline constexpr _GUID IID_IWidgetExtra = {
    0x1F0E0001, 0xAB01, 0x4C22, {0x81, 0x02, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F}};

// What zelcore_widgets' ZELSysTSDllGetClassObject answers for CLSID_CoreWidget; it sets *ppv to
// the first word of the interface identifier it was asked for.
inline constexpr HRESULT kEchoResult = 0x00000007;
