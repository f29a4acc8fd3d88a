#ifndef PLATFORM_CELLS_STRINGCELL_H
#define PLATFORM_CELLS_STRINGCELL_H

#include "platform/cells/CellTexts.h"

#endif
