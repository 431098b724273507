// What the DrawDocument library registers when it is loaded, and the functions that the
// dictionary and the creation entry points find in it by name.
#include "Drawing.h"
#include "DrawingCursor.h"

ZELSYSTS_REGISTER_CLASS(Drawing);
ZELSYSTS_REGISTER_CLASS(DrawingCursor);
// "Drawing IExporter DrawDocument ITFLEAF ISvgExporter": the system checks that the meta object
// of ISvgExporter derives from IExporter's before it calls ZELSysTSCreateISvgExporterDrawing.
ZELSYSTS_REGISTER_INTERFACE(ISvgExporter);

// "Drawing IDrawing DrawDocument": the drawing itself carries IDrawing.
ZELSYSTS_EXPORT_BOA(IDrawing, Drawing, Drawing)
// The leaf of IExporter, also carried by the drawing itself.
ZELSYSTS_EXPORT_BOA(ISvgExporter, Drawing, Drawing)
// "Drawing IShapeCursor DrawDocument": a new DrawingCursor for every request.
ZELSYSTS_EXPORT_BOA(IShapeCursor, Drawing, DrawingCursor)

// "Drawing CreateInterface DrawDocument": creation by class name, the argument being the title.
ZELSYSTS_EXPORT_FACTORY(Drawing, Drawing)
// The ".clsidts" line of Drawing: creation by class identifier.
ZELSYSTS_EXPORT_CLASS_OBJECTS(Drawing)
