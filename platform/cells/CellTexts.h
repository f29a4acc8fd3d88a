// Every kind of cell text.

#ifndef PLATFORM_CELLS_CELLTEXTS_H
#define PLATFORM_CELLS_CELLTEXTS_H

#include "platform/cells/CellMetaData.h"
#include "platform/cells/CellProperties.h"
#include "platform/cells/CellText.h"
#include "platform/cells/Composite.h"
#include "platform/cells/NumDataValue.h"
#include "platform/cells/Number.h"
#include "platform/cells/StringCell.h"
#include "platform/cells/StringCellUTF8.h"
#include "platform/cells/StringDataValue.h"
#include "platform/cells/Variable.h"

#endif
