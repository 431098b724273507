// libZELSysTS, the system library beneath the object model: mutexes, library manager, tokeniser.
#pragma once

#include "ZELSysTSMutex.h"
#include "ZELSysTSStrtok.h"
#include "ZELThrLibraryManager.h"
