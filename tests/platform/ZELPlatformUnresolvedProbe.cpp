// A probe library that calls a function no library defines: it cannot be bound in full.
extern "C" int ZELPlatformNowhere();
extern "C" int ZELPlatformUnresolvedProbe() {
  return ZELPlatformNowhere();
}
