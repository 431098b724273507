#include "DrawingStatistics.h"

#include <cstring>

ZELSYSTS_REGISTER_CLASS(DrawingStatistics);

// "Drawing IStatistics DrawStats EXTENDED_BY DrawingStatistics": the extension carries it.
ZELSYSTS_EXPORT_BOA(IStatistics, DrawingStatistics, DrawingStatistics)

ZELSysTSPtr<IDrawing> DrawingStatistics::DrawingOf() {
  // Only for the length of one call: a chained extension that kept a reference on its drawing
  // would keep the drawing alive for ever.
  return ZELSysTSPtr<IDrawing>::Query(static_cast<ZELSysTSBaseUnknown*>(this));
}

double DrawingStatistics::TotalArea() {
  ++computations_;
  ZELSysTSPtr<IDrawing> drawing = DrawingOf();
  if (!drawing) return 0;
  double total = 0;
  for (int i = 0; i < drawing->ShapeCount(); ++i) {
    IShape* raw = nullptr;
    if (drawing->GetShape(i, &raw) < 0) continue;
    ZELSysTSPtr<IShape> shape = ZELSysTSPtr<IShape>::Attach(raw);
    total += shape->Area();
  }
  return total;
}

int DrawingStatistics::CountOf(const char* kind) {
  ++computations_;
  ZELSysTSPtr<IDrawing> drawing = DrawingOf();
  if (!drawing || kind == nullptr) return 0;
  int count = 0;
  for (int i = 0; i < drawing->ShapeCount(); ++i) {
    IShape* raw = nullptr;
    if (drawing->GetShape(i, &raw) < 0) continue;
    ZELSysTSPtr<IShape> shape = ZELSysTSPtr<IShape>::Attach(raw);
    if (std::strcmp(shape->Kind(), kind) == 0) ++count;
  }
  return count;
}
