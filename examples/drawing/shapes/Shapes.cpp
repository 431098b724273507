#include "Shapes.h"

#include <cstdio>

namespace {

constexpr double kPi = 3.14159265358979323846;

const ShapeSize* SizeFrom(void* argument) {
  return static_cast<const ShapeSize*>(argument);
}

void AppendFormatted(std::string& out, const char* format, double a, double b, double c) {
  char line[160];
  std::snprintf(line, sizeof line, format, a, b, c);
  out += line;
}

}  // namespace

Circle::Circle(void* size) : radius_(size != nullptr ? SizeFrom(size)->width / 2 : 1.0) {}

double Circle::Area() {
  return kPi * radius_ * radius_;
}

void Circle::Bounds(double& width, double& height) {
  width = height = 2 * radius_;
}

void Circle::Describe(std::string& out) {
  AppendFormatted(out, "circle of radius %.2f, area %.2f", radius_, Area(), 0);
}

Rectangle::Rectangle(void* size)
    : width_(size != nullptr ? SizeFrom(size)->width : 1.0),
      height_(size != nullptr ? SizeFrom(size)->height : 1.0) {}

void Rectangle::Bounds(double& width, double& height) {
  width = width_;
  height = height_;
}

void Rectangle::Scale(double factor) {
  width_ *= factor;
  height_ *= factor;
}

void Rectangle::Describe(std::string& out) {
  AppendFormatted(out, "rectangle of %.2f by %.2f, area %.2f", width_, height_, Area());
}
