// OM_DISPLAY_API marks what the library for front ends exports; everything else stays hidden. A
// private record of an exported class is OM_PRIVATE here as in the library below.

#ifndef DISPLAY_EXPORT_H
#define DISPLAY_EXPORT_H

#include "backend/tables/om/Export.h"

#define OM_DISPLAY_API __attribute__((visibility("default")))

#endif
