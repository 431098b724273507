// A tiny shared library that the meta test libraries and the test programs both link, so that a
// creation function in an implementation library can tell the test that it ran.
#pragma once

extern "C" {
// Records that the creation function `name` ran (name must outlive the process: a literal).
void ZelMetaProbeHit(const char* name);
// The name of the last creation function that ran, or null; and how many ran.
const char* ZelMetaProbeLast();
int ZelMetaProbeHits();
// A value that a library's initialisation leaves for the test (0 until set).
void ZelMetaProbeNote(int value);
int ZelMetaProbeNoted();
}
