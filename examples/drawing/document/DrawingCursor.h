// DrawingCursor: a transient extension of Drawing. Every request for IShapeCursor on a drawing
// makes a new cursor with a count of its own; while it lives it holds one reference on the
// drawing, given back when its last reference goes. The cursor reaches the drawing's shapes by
// asking itself for IDrawing, which an extension forwards to the object it extends.
#pragma once

#include "DrawingClassIds.h"
#include "DrawingInterfaces.h"

class DrawingCursor final
    : public ZELSysTSTransientExtension<DrawingCursor, ZELSysTSBaseUnknown, IShapeCursor> {
 public:
  static constexpr const char* extends[] = {"Drawing"};
  static constexpr ZELSysTSClassInfo class_info{"DrawingCursor", CLSID_DrawingCursor, extends};

  HRESULT Next(IShape** shape) override;
  int Position() override { return position_; }

 private:
  int position_ = 0;
};
