// The interfaces of the drawing components: all that the host program knows of them. The
// classes behind these interfaces live in three implementation libraries that the host never
// links; the dictionaries in examples/dictionaries say which class offers which interface and
// where its implementation lives.
//
// Interface pointers follow the object model's rules: a pointer handed out holds one reference,
// which its receiver gives back with Release (ZELSysTSPtr does it). Out-parameters are set to
// null first.
#pragma once

#include <string>

#include "ZELSysTSObjectModeler.h"

// Dimensions handed to the shape factories through ZELSysTSCreateExternalObject's argument.
struct ShapeSize {
  double width;
  double height;
};

// A geometric shape.
class IShape : public IUnknown {
 public:
  // "circle" or "rectangle".
  virtual const char* Kind() = 0;
  virtual double Area() = 0;
  // Width and height of the bounding box.
  virtual void Bounds(double& width, double& height) = 0;
  // Multiplies every dimension by factor.
  virtual void Scale(double factor) = 0;

 protected:
  ~IShape() = default;
};
ZELSYSTS_DECLARE_INTERFACE(IShape, "{A628800B-DD89-4796-B36E-9A0F8BD1F08A}");

// Something that can describe itself in one line of text.
class IPrintable : public IUnknown {
 public:
  // Appends the description to out.
  virtual void Print(std::string& out) = 0;

 protected:
  ~IPrintable() = default;
};
ZELSYSTS_DECLARE_INTERFACE(IPrintable, "{19F2A31F-CF05-422D-A8E9-BE880CE797C0}");

// A titled document holding shapes.
class IDrawing : public IUnknown {
 public:
  virtual const char* Title() = 0;
  // Adds the shape; the drawing keeps a reference on it. E_FAIL for null.
  virtual HRESULT AddShape(IShape* shape) = 0;
  virtual int ShapeCount() = 0;
  // *shape = the shape at index (holding a reference); E_FAIL and null when out of range.
  virtual HRESULT GetShape(int index, IShape** shape) = 0;

 protected:
  ~IDrawing() = default;
};
ZELSYSTS_DECLARE_INTERFACE(IDrawing, "{16E14A4D-5241-4943-A95D-3C434A1F803D}");

// Writes a document in some format.
class IExporter : public IUnknown {
 public:
  // The format's short name, e.g. "svg".
  virtual const char* Format() = 0;
  // Appends the exported document to out.
  virtual HRESULT Export(std::string& out) = 0;

 protected:
  ~IExporter() = default;
};
ZELSYSTS_DECLARE_INTERFACE(IExporter, "{F935B9B3-CF07-49C4-B78D-5488BCEDBBB3}");

// The SVG exporter: an exporter with a scale of its own.
class ISvgExporter : public IExporter {
 public:
  virtual void SetPixelsPerUnit(double pixels) = 0;

 protected:
  ~ISvgExporter() = default;
};
ZELSYSTS_DECLARE_DERIVED_INTERFACE(ISvgExporter, IExporter,
                                   "{77E50DD3-D2F7-4AB0-A942-E5EC0C245B84}");

// A walk over the shapes of a drawing. Every request for this interface gives a new cursor.
class IShapeCursor : public IUnknown {
 public:
  // *shape = the next shape (holding a reference) and S_OK; at the end E_FAIL and null.
  virtual HRESULT Next(IShape** shape) = 0;
  // Number of shapes already handed out.
  virtual int Position() = 0;

 protected:
  ~IShapeCursor() = default;
};
ZELSYSTS_DECLARE_INTERFACE(IShapeCursor, "{86A5F825-51D1-4178-B609-EE60A75145A1}");

// Figures about a drawing, kept by one statistics object per drawing.
class IStatistics : public IUnknown {
 public:
  virtual double TotalArea() = 0;
  // Number of shapes whose Kind() is kind.
  virtual int CountOf(const char* kind) = 0;
  // How many times this statistics object has computed a figure.
  virtual int Computations() = 0;

 protected:
  ~IStatistics() = default;
};
ZELSYSTS_DECLARE_INTERFACE(IStatistics, "{C17BB891-767E-4AC7-B6EC-14B245D06E22}");
