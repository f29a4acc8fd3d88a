// OmUtility, helpers over composite cell values.

#ifndef BACKEND_TABLES_OM_UTILITY_H
#define BACKEND_TABLES_OM_UTILITY_H

#include "backend/tables/om/Export.h"
#include "backend/tables/om/VectorTree.h"

class OmCellText;
class OmComposite;
class OmNumber;

class OM_API OmUtility {
 public:
  // Returns the first number among the descendants in pre-order, or null if there is none. The
  // value of the node itself, or of the composite's root, is not examined. The composite owns the
  // number. Does not recurse; throws std::bad_alloc if there is no memory for the path.
  [[nodiscard]] static OmNumber* GetFirstNumber(OmVectorTree<OmCellText*>::ConstNode node);
  [[nodiscard]] static OmNumber* GetFirstNumber(const OmComposite& composite);
};

#endif
