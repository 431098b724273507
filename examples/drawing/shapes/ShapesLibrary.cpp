// What the DrawShapes library registers when it is loaded, and the functions that the dictionary
// and the creation entry points find in it by name.
#include "ShapePrintTie.h"
#include "Shapes.h"

ZELSYSTS_REGISTER_CLASS(Shape);
ZELSYSTS_REGISTER_CLASS(Circle);
ZELSYSTS_REGISTER_CLASS(Rectangle);

// "Shape IShape DrawShapes": the shape object itself carries IShape.
ZELSYSTS_EXPORT_BOA(IShape, Shape, Shape)
// "Shape IPrintable DrawShapes": a tie carries IPrintable for the shape.
ZELSYSTS_EXPORT_CREATOR(IPrintable, Shape, ShapePrintTie::Create)

// "Circle CreateInterface DrawShapes" and "Rectangle CreateInterface DrawShapes": creation by
// class name, the argument being a ShapeSize*.
ZELSYSTS_EXPORT_FACTORY(Circle, Circle)
ZELSYSTS_EXPORT_FACTORY(Rectangle, Rectangle)

// The ".clsidts" lines of Circle and Rectangle: creation by class identifier.
ZELSYSTS_EXPORT_CLASS_OBJECTS(Circle, Rectangle)
