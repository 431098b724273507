// The framework's system library (stand-in): mutexes, library manager and tokeniser.
#pragma once

#include "ZELSysTSMutex.h"
#include "ZELSysTSStrtok.h"
#include "ZELThrLibraryManager.h"
