// Every header that a caller includes, for the symbols of what is inline in them.

#include "backend/tables/om/om.h"
#include "platform/cells/CellProperties.h"
#include "platform/cells/CellTexts.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/Converter.h"
#include "platform/support/IcuTracker.h"
