// Includes every public header of the library and, of the platform, the kinds of cell texts and the
// settings. This costs compile time: a source that needs a few classes should include their headers
// instead.

#ifndef BACKEND_TABLES_OM_OM_H
#define BACKEND_TABLES_OM_OM_H

#include "backend/tables/IndexProjector.h"
#include "backend/tables/MultiBase.h"
#include "backend/tables/PlaceDigits.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/Cell.h"
#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellTextOrder.h"
#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Contradictions.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Format.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/ListTree.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/OutputPart.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PointerVector.h"
#include "backend/tables/om/TextBlock.h"
#include "backend/tables/om/Utility.h"
#include "backend/tables/om/Vector.h"
#include "backend/tables/om/VectorTree.h"
#include "platform/cells/CellTexts.h"
#include "platform/dataio/BackendSettings.h"

#endif
