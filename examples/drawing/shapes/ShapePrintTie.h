// ShapePrintTie: carries IPrintable for a shape. Shape does not derive from IPrintable; the tie
// does, and forwards Print to the shape's Describe. The tie's implementation is the queried shape
// itself (Shape is the class of every shape object), so the tie never owns it.
#pragma once

#include <string>

#include "DrawingInterfaces.h"
#include "Shapes.h"

class ShapePrintTie final : public ZELSysTSTie<ShapePrintTie, IPrintable, Shape> {
 public:
  void Print(std::string& out) override { Impl()->Describe(out); }
};
