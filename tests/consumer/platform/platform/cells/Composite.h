#ifndef PLATFORM_CELLS_COMPOSITE_H
#define PLATFORM_CELLS_COMPOSITE_H

#include "platform/cells/CellTexts.h"

#endif
