// The observation points of registration and interface resolution (util/Observer.h). Each point
// is written `if (zelsysts::Observed()) ObserveResolution(...)`: without an observer it costs
// the one branch, and no argument is computed.
#pragma once

#include "util/Observer.h"

inline void ObserveResolution(zelsysts::Step step, const char* text0, const char* text1,
                              const char* text2, const _GUID* guid0, const _GUID* guid1,
                              long value) {
  zelsysts::Observation observation;
  observation.step = step;
  observation.text[0] = text0;
  observation.text[1] = text1;
  observation.text[2] = text2;
  observation.guid[0] = guid0;
  observation.guid[1] = guid1;
  observation.value = value;
  zelsysts::Observe(observation);
}
