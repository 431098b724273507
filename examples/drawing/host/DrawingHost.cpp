// drawing_host: a program that uses drawing components it does not link. It knows their
// interfaces (DrawingInterfaces.h) and two class identifiers; everything else (which class
// offers which interface, which library implements it, and how) comes from the dictionaries that
// ZELDictionaryPath names. It walks through the mechanisms of the object model one step at a
// time, saying what it asks for and what it gets, and exits with 1 if anything it gets differs
// from what the shipped dictionaries and libraries promise.
#include <dlfcn.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "DrawingClassIds.h"
#include "DrawingInterfaces.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

int g_failures = 0;

void Step(int number, const char* title) {
  std::printf("\n%d. %s\n", number, title);
}

// Reports a result that differs from what the shipped components promise.
void Expect(bool condition, const char* what) {
  if (!condition) {
    std::printf("   UNEXPECTED: %s\n", what);
    ++g_failures;
  }
}

// The reference count of the object behind p, read without changing it.
uint32_t CountOf(IUnknown* p) {
  p->AddRef();
  return p->Release();
}

// The object behind any of its interfaces (QueryInterface answers the base class's identifier
// with the object itself).
template <class I>
ZELSysTSPtr<ZELSysTSBaseUnknown> ObjectBehind(const ZELSysTSPtr<I>& itf) {
  return ZELSysTSPtr<ZELSysTSBaseUnknown>(itf);
}

template <class I>
const char* ClassOf(const ZELSysTSPtr<I>& itf) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> object = ObjectBehind(itf);
  return object ? object->IsA() : "(none)";
}

bool LibraryLoaded(const char* file) {
  void* handle = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

void PrintIndented(const std::string& text) {
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::printf("         %s\n", text.substr(start, end - start).c_str());
    start = end + 1;
  }
}

bool Near(double a, double b) {
  return std::fabs(a - b) < 1e-9;
}

}  // namespace

int main() {
  const char* path = std::getenv("ZELDictionaryPath");
  std::printf("Drawing components, reached through the dictionaries in %s\n",
              path != nullptr ? path : "(ZELDictionaryPath is not set)");

  // ---------------------------------------------------------------------------------------------
  Step(1, "Create a drawing by class name");
  std::printf(
      "   ask:   ZELSysTSCreateExternalObject(\"Drawing\", no library, \"Quarterly report\")\n");
  char title[] = "Quarterly report";
  ZELSysTSPtr<IDrawing> drawing = ZELSysTSCreateObject<IDrawing>("Drawing", nullptr, title);
  if (!drawing) {
    std::printf(
        "   got:   nothing. Is ZELDictionaryPath set to examples/dictionaries, and the\n"
        "          build's lib folder on LD_LIBRARY_PATH?\n");
    return 1;
  }
  std::printf("   got:   an object of class %s, titled \"%s\", holding %u reference\n",
              ClassOf(drawing), drawing->Title(), CountOf(drawing.Get()));
  std::printf(
      "   how:   the line \"Drawing CreateInterface DrawDocument\" named the library;\n"
      "          its function fctZELSysTSCreateDrawing made the object\n");
  Expect(std::string(ClassOf(drawing)) == "Drawing", "the object should be a Drawing");

  // ---------------------------------------------------------------------------------------------
  Step(2, "Create a circle by class identifier, and ask it for IShape");
  std::printf("   ask:   ZELSysTSCreateInstance(CLSID_Circle, IID of IShape)\n");
  HRESULT hr = E_FAIL;
  ZELSysTSPtr<IShape> circle = ZELSysTSCreateInstanceOf<IShape>(CLSID_Circle, &hr);
  if (!circle) {
    std::printf("   got:   nothing (HRESULT 0x%08X)\n", static_cast<unsigned>(hr));
    return 1;
  }
  std::printf("   got:   IShape on an object of class %s: a %s of area %.2f\n", ClassOf(circle),
              circle->Kind(), circle->Area());
  std::printf(
      "   how:   the \".clsidts\" line sent the request to ZELSysTSDllGetClassObject in\n"
      "          DrawShapes; Circle's IShape comes from its base class Shape (line \"Shape\n"
      "          IShape DrawShapes\"), and the circle itself carries it\n");
  circle->Scale(2);
  std::printf("   then:  Scale(2) makes its area %.2f\n", circle->Area());
  Expect(std::string(ClassOf(circle)) == "Circle", "the object should be a Circle");
  Expect(Near(circle->Area(), 4 * kPi), "a circle of radius 2 should have area 4 pi");

  // ---------------------------------------------------------------------------------------------
  Step(3, "Create a 3 by 2 rectangle by class name, with an argument");
  ShapeSize size{3, 2};
  std::printf("   ask:   ZELSysTSCreateExternalObject(\"Rectangle\", no library, &size)\n");
  ZELSysTSPtr<IShape> rectangle = ZELSysTSCreateObject<IShape>("Rectangle", nullptr, &size);
  Expect(static_cast<bool>(rectangle), "the rectangle should be created");
  if (!rectangle) return 1;
  std::printf("   got:   IShape on an object of class %s: a %s of area %.2f\n", ClassOf(rectangle),
              rectangle->Kind(), rectangle->Area());

  // ---------------------------------------------------------------------------------------------
  Step(4, "Put both shapes in the drawing");
  const uint32_t circleBefore = CountOf(circle.Get());
  drawing->AddShape(circle.Get());
  drawing->AddShape(rectangle.Get());
  const uint32_t circleAfter = CountOf(circle.Get());
  std::printf(
      "   got:   %d shapes; the circle's references went from %u to %u (the drawing\n"
      "          holds one)\n",
      drawing->ShapeCount(), circleBefore, circleAfter);
  Expect(drawing->ShapeCount() == 2 && circleAfter == circleBefore + 1,
         "the drawing should hold one reference on each shape");

  // ---------------------------------------------------------------------------------------------
  Step(5, "Ask the circle for IPrintable (a tie object)");
  {
    ZELSysTSPtr<IPrintable> printable = circle;
    Expect(static_cast<bool>(printable), "the circle should offer IPrintable");
    if (!printable) return 1;
    std::string line;
    printable->Print(line);
    const bool sameObject = static_cast<void*>(printable.Get()) == static_cast<void*>(circle.Get());
    std::printf("   got:   a separate tie object (%s the circle), bound to an object of class %s\n",
                sameObject ? "IS" : "not", ClassOf(printable));
    std::printf("          Print: \"%s\"\n", line.c_str());
    std::printf(
        "   how:   line \"Shape IPrintable DrawShapes\": ZELSysTSCreateIPrintableShape made\n"
        "          a tie whose Print calls the shape's own Describe\n");
    std::printf("   count: the circle holds %u references while the tie lives",
                CountOf(circle.Get()));
    Expect(!sameObject && std::string(ClassOf(printable)) == "Circle",
           "the tie should be a separate object bound to the circle");
  }
  std::printf(", %u after it is released\n", CountOf(circle.Get()));
  Expect(CountOf(circle.Get()) == circleAfter, "releasing the tie should give its reference back");

  // ---------------------------------------------------------------------------------------------
  Step(6, "Ask the drawing for IExporter (served by its leaf interface)");
  {
    ZELSysTSPtr<IExporter> exporter = drawing;
    Expect(static_cast<bool>(exporter), "the drawing should offer IExporter");
    if (!exporter) return 1;
    std::printf("   got:   an exporter of format \"%s\" on an object of class %s\n",
                exporter->Format(), ClassOf(exporter));
    std::printf(
        "   how:   the line \"Drawing IExporter DrawDocument ITFLEAF ISvgExporter\" made the\n"
        "          system call ZELSysTSCreateISvgExporterDrawing, after checking that\n"
        "          ISvgExporter derives from IExporter\n");
    std::string svg;
    exporter->Export(svg);
    std::printf("   Export:\n");
    PrintIndented(svg);
    Expect(svg.find("<circle") != std::string::npos && svg.find("<rect") != std::string::npos,
           "the export should hold a circle and a rectangle");
  }

  // ---------------------------------------------------------------------------------------------
  Step(7, "Ask the drawing twice for IShapeCursor (a transient extension)");
  {
    const uint32_t drawingBefore = CountOf(drawing.Get());
    ZELSysTSPtr<IShapeCursor> first = drawing;
    ZELSysTSPtr<IShapeCursor> second = drawing;
    Expect(first && second, "the drawing should offer IShapeCursor");
    if (!first || !second) return 1;
    std::printf("   got:   two %s cursors; the drawing's references went from %u to %u\n",
                first.Get() != second.Get() ? "distinct" : "IDENTICAL", drawingBefore,
                CountOf(drawing.Get()));
    std::printf("   walk:  the first cursor gives");
    IShape* raw = nullptr;
    while (first->Next(&raw) >= 0) {
      ZELSysTSPtr<IShape> shape = ZELSysTSPtr<IShape>::Attach(raw);
      std::printf(" %s", shape->Kind());
    }
    std::printf("; afterwards it stands at %d, the second still at %d\n", first->Position(),
                second->Position());
    Expect(first.Get() != second.Get() && first->Position() == 2 && second->Position() == 0,
           "each request should make a new cursor with its own position");
    first.Release();
    second.Release();
    std::printf("   count: once both are released the drawing holds %u reference\n",
                CountOf(drawing.Get()));
    Expect(CountOf(drawing.Get()) == drawingBefore, "released cursors should release the drawing");
  }

  // ---------------------------------------------------------------------------------------------
  Step(8, "Ask the drawing for IStatistics (a chained extension in a library loaded on demand)");
  {
    const bool loadedBefore = LibraryLoaded("libDrawStats.so");
    std::printf("   before: libDrawStats.so loaded: %s\n", loadedBefore ? "yes" : "no");
    ZELSysTSPtr<IStatistics> stats = drawing;
    Expect(static_cast<bool>(stats), "the drawing should offer IStatistics");
    if (!stats) return 1;
    const bool loadedAfter = LibraryLoaded("libDrawStats.so");
    std::printf("   after:  libDrawStats.so loaded: %s\n", loadedAfter ? "yes" : "no");
    std::printf(
        "   how:   the line \"Drawing IStatistics DrawStats EXTENDED_BY DrawingStatistics\"\n"
        "          made the system load DrawStats (whose DrawingStatistics registers as an\n"
        "          extension of Drawing) and call ZELSysTSCreateIStatisticsDrawingStatistics\n");
    const double area = stats->TotalArea();
    const int circles = stats->CountOf("circle");
    const int rectangles = stats->CountOf("rectangle");
    std::printf("   got:   total area %.2f, %d circle(s), %d rectangle(s); computed %d times\n",
                area, circles, rectangles, stats->Computations());
    Expect(!loadedBefore && loadedAfter, "DrawStats should be loaded by the request, not before");
    Expect(Near(area, 4 * kPi + 6), "the total area should be 4 pi + 6");
    stats.Release();
    ZELSysTSPtr<IStatistics> again = drawing;
    std::printf(
        "   again: a second request finds the same extension, which has computed %d times\n",
        again ? again->Computations() : -1);
    Expect(again && again->Computations() == 3, "the chained extension should keep its figures");
  }

  // ---------------------------------------------------------------------------------------------
  Step(9, "Requests that fail");
  {
    const uint32_t circleBefore9 = CountOf(circle.Get());
    void* out = nullptr;
    const HRESULT refused = circle->QueryInterface(ZELSysTSIIDOf<IStatistics>(), &out);
    std::printf("   ask:   the circle for IStatistics\n");
    std::printf(
        "   got:   HRESULT 0x%08X (%s), no pointer, the circle's references unchanged (%u)\n",
        static_cast<unsigned>(refused), refused == E_NOINTERFACE ? "E_NOINTERFACE" : "unexpected",
        CountOf(circle.Get()));
    std::printf(
        "   why:   the dictionary offers IStatistics for Drawing only; neither Circle nor\n"
        "          its base class Shape has a line for it\n");
    Expect(refused == E_NOINTERFACE && out == nullptr && CountOf(circle.Get()) == circleBefore9,
           "the circle should refuse IStatistics and take no reference");

    std::printf("   ask:   ZELSysTSCreateExternalObject(\"Triangle\", no library, no argument)\n");
    ZELSysTSPtr<IShape> triangle = ZELSysTSCreateObject<IShape>("Triangle");
    std::printf("   got:   %s\n", triangle ? "a triangle?" : "nothing");
    std::printf("   why:   no dictionary line names a library for the class Triangle\n");
    Expect(!triangle, "no library creates triangles");
  }

  // ---------------------------------------------------------------------------------------------
  Step(10, "Let go");
  drawing.Release();
  std::printf("   the drawing is gone with its statistics; the circle is back to %u reference(s)\n",
              CountOf(circle.Get()));
  Expect(CountOf(circle.Get()) == circleBefore, "the drawing's references should be given back");
  circle.Release();
  rectangle.Release();

  if (g_failures != 0) {
    std::printf("\n%d step(s) did not behave as expected.\n", g_failures);
    return 1;
  }
  std::printf("\nAll steps behaved as expected.\n");
  return 0;
}
