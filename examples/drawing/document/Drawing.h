// Drawing: the document class of the DrawDocument library. The drawing object itself carries
// IDrawing and, as the leaf interface named by the dictionary for IExporter, ISvgExporter.
// Two more interfaces of a drawing live in extension objects: IShapeCursor in a new
// DrawingCursor for every request (DrawingCursor.h), IStatistics in the one DrawingStatistics
// that the DrawStats library chains to each drawing.
//
// Thread safety: counts and queries are locked by the object; the shape list is meant to be
// changed by one thread at a time.
#pragma once

#include <string>
#include <vector>

#include "DrawingClassIds.h"
#include "DrawingInterfaces.h"

class Drawing final
    : public ZELSysTSImplementation<Drawing, ZELSysTSBaseUnknown, IDrawing, ISvgExporter> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"Drawing", CLSID_Drawing};

  // title: a const char* (copied), or null for "Untitled".
  explicit Drawing(void* title = nullptr);

  // IDrawing
  const char* Title() override { return title_.c_str(); }
  HRESULT AddShape(IShape* shape) override;
  int ShapeCount() override { return static_cast<int>(shapes_.size()); }
  HRESULT GetShape(int index, IShape** shape) override;

  // IExporter and ISvgExporter
  const char* Format() override { return "svg"; }
  HRESULT Export(std::string& out) override;
  void SetPixelsPerUnit(double pixels) override { pixels_per_unit_ = pixels; }

 private:
  std::string title_;
  std::vector<ZELSysTSPtr<IShape>> shapes_;  // each holds one reference on its shape
  double pixels_per_unit_ = 10;
};
