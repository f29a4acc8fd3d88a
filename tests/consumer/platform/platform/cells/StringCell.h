#include "platform/cells/CellText.h"
