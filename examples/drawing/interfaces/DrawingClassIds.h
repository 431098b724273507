// Class identifiers of the drawing components, as the ".clsidts" dictionary lists them. The host
// needs only the ones it creates by identifier; the libraries register their classes with them.
#pragma once

#include "ZELSysTSObjectModeler.h"

inline constexpr _GUID CLSID_Shape = ZELSysTSGuid("{2016107E-37F6-4290-A4A7-DD17E8B6A423}");
inline constexpr _GUID CLSID_Circle = ZELSysTSGuid("{73480D69-D38F-467F-836E-007FB102EA8A}");
inline constexpr _GUID CLSID_Rectangle = ZELSysTSGuid("{AE4A28DD-4662-452E-9761-99E471317B82}");
inline constexpr _GUID CLSID_Drawing = ZELSysTSGuid("{64777630-E5C6-493F-8388-104CB8526A52}");
inline constexpr _GUID CLSID_DrawingCursor = ZELSysTSGuid("{02DF24DA-D5E8-45D2-AE91-1CB3A3CC6C0D}");
inline constexpr _GUID CLSID_DrawingStatistics =
    ZELSysTSGuid("{5548A694-25E8-4E57-A35E-F991D2013B62}");
