#ifndef PLATFORM_CELLS_NUMBER_H
#define PLATFORM_CELLS_NUMBER_H

#include "platform/cells/CellTexts.h"

#endif
