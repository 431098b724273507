#include "Drawing.h"

#include <cstdio>

Drawing::Drawing(void* title)
    : title_(title != nullptr ? static_cast<const char*>(title) : "Untitled") {}

HRESULT Drawing::AddShape(IShape* shape) {
  if (shape == nullptr) return E_FAIL;
  shapes_.push_back(ZELSysTSPtr<IShape>::Retain(shape));
  return S_OK;
}

HRESULT Drawing::GetShape(int index, IShape** shape) {
  if (shape == nullptr) return E_FAIL;
  *shape = nullptr;
  if (index < 0 || index >= ShapeCount()) return E_FAIL;
  *shape = ZELSysTSPtr<IShape>(shapes_[static_cast<size_t>(index)]).Detach();
  return S_OK;
}

// The shapes side by side, one unit apart, on a baseline.
HRESULT Drawing::Export(std::string& out) {
  const double k = pixels_per_unit_;
  double totalWidth = 1;
  double maxHeight = 0;
  for (const ZELSysTSPtr<IShape>& shape : shapes_) {
    double w = 0;
    double h = 0;
    shape->Bounds(w, h);
    totalWidth += w + 1;
    if (h > maxHeight) maxHeight = h;
  }
  char line[200];
  std::snprintf(line, sizeof line,
                "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%g\" height=\"%g\">\n",
                totalWidth * k, (maxHeight + 2) * k);
  out += line;
  double x = 1;
  for (const ZELSysTSPtr<IShape>& shape : shapes_) {
    double w = 0;
    double h = 0;
    shape->Bounds(w, h);
    const double top = 1 + maxHeight - h;
    if (std::string(shape->Kind()) == "circle") {
      std::snprintf(line, sizeof line, "  <circle cx=\"%g\" cy=\"%g\" r=\"%g\"/>\n",
                    (x + w / 2) * k, (top + h / 2) * k, w / 2 * k);
    } else {
      std::snprintf(line, sizeof line, "  <rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\"/>\n",
                    x * k, top * k, w * k, h * k);
    }
    out += line;
    x += w + 1;
  }
  out += "</svg>\n";
  return S_OK;
}
