#include "DrawingCursor.h"

HRESULT DrawingCursor::Next(IShape** shape) {
  if (shape == nullptr) return E_FAIL;
  *shape = nullptr;
  // Asked of the extension, IDrawing is answered by the drawing it extends.
  ZELSysTSPtr<IDrawing> drawing =
      ZELSysTSPtr<IDrawing>::Query(static_cast<ZELSysTSBaseUnknown*>(this));
  if (!drawing) return E_FAIL;
  const HRESULT hr = drawing->GetShape(position_, shape);
  if (hr >= 0) ++position_;
  return hr;
}
