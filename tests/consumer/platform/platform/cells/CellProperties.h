#include "platform/cells/CellTexts.h"
