// The ordering and the equality of cell texts that dimensions and footnotes use. Each costs one
// virtual comparison.

#ifndef BACKEND_TABLES_OM_CELLTEXTORDER_H
#define BACKEND_TABLES_OM_CELLTEXTORDER_H

#include "platform/cells/CellText.h"

[[nodiscard]] inline bool operator<(const OmCellText& a, const OmCellText& b) {
  return a.Compare(b) < 0;
}

// Two texts of different kinds are never equal, even if Compare returns 0.
[[nodiscard]] inline bool operator==(const OmCellText& a, const OmCellText& b) {
  return a.Kind() == b.Kind() && a.Compare(b) == 0;
}

#endif
