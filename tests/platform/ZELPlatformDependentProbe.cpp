// A probe library that calls into libZELPlatformProbe unlinked: bound once that one is global.
extern "C" int ZELPlatformProbeInitialisations();
extern "C" int ZELPlatformDependentProbe() {
  return ZELPlatformProbeInitialisations();
}
