// The shape classes of the DrawShapes library: the abstract implementation class Shape, which
// carries IShape for every shape, and the concrete classes Circle and Rectangle.
//
// The dictionary offers IShape and IPrintable for the class Shape only; a Circle or a Rectangle
// gets them through its base class's meta object. IShape is carried by the shape object itself
// (a basic object adapter); IPrintable by a tie object (ShapePrintTie.h), since Shape does not
// derive from IPrintable.
//
// Thread safety: shapes are built thread-safe (their counts and queries are locked); their
// dimensions are meant to be changed by one thread at a time.
#pragma once

#include <string>

#include "DrawingClassIds.h"
#include "DrawingInterfaces.h"

class Shape : public ZELSysTSImplementation<Shape, ZELSysTSBaseUnknown, IShape> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"Shape", CLSID_Shape};

  // Appends one line such as "circle of radius 2.00, area 12.57".
  virtual void Describe(std::string& out) = 0;
};

class Circle final : public ZELSysTSImplementation<Circle, Shape> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"Circle", CLSID_Circle};

  // size: a ShapeSize* whose width is the diameter, or null for a circle of radius 1.
  explicit Circle(void* size = nullptr);

  const char* Kind() override { return "circle"; }
  double Area() override;
  void Bounds(double& width, double& height) override;
  void Scale(double factor) override { radius_ *= factor; }
  void Describe(std::string& out) override;

 private:
  double radius_;
};

class Rectangle final : public ZELSysTSImplementation<Rectangle, Shape> {
 public:
  static constexpr ZELSysTSClassInfo class_info{"Rectangle", CLSID_Rectangle};

  // size: a ShapeSize*, or null for a unit square.
  explicit Rectangle(void* size = nullptr);

  const char* Kind() override { return "rectangle"; }
  double Area() override { return width_ * height_; }
  void Bounds(double& width, double& height) override;
  void Scale(double factor) override;
  void Describe(std::string& out) override;

 private:
  double width_;
  double height_;
};
