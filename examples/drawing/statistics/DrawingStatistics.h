// DrawingStatistics: a chained extension of Drawing, alone in the DrawStats library. Nothing
// links that library: the dictionary line "Drawing IStatistics DrawStats EXTENDED_BY
// DrawingStatistics" makes the system load it on the first request for IStatistics on a drawing.
// One instance per drawing lives in the drawing's extension chain, made at that first request
// and destroyed with the drawing; references on it are references on the drawing, so it keeps
// its figures between requests.
#pragma once

#include "DrawingClassIds.h"
#include "DrawingInterfaces.h"

class DrawingStatistics final
    : public ZELSysTSChainedExtension<DrawingStatistics, ZELSysTSBaseUnknown, IStatistics> {
 public:
  static constexpr const char* extends[] = {"Drawing"};
  static constexpr ZELSysTSClassInfo class_info{"DrawingStatistics", CLSID_DrawingStatistics,
                                                extends};

  double TotalArea() override;
  int CountOf(const char* kind) override;
  int Computations() override { return computations_; }

 private:
  // The drawing this extension belongs to, asked for through the extension itself.
  ZELSysTSPtr<IDrawing> DrawingOf();

  int computations_ = 0;
};
