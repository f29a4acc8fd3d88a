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
  // Returns the first number among the descendants, in pre-order, or null where there is none. The
  // value of the node itself, or of the composite's root, is not looked at. The composite keeps the
  // ownership. Costs no stack in the depth of the tree; throws std::bad_alloc where there is no
  // memory for the way down.
  [[nodiscard]] static OmNumber* GetFirstNumber(OmVectorTree<OmCellText*>::ConstNode node);
  [[nodiscard]] static OmNumber* GetFirstNumber(const OmComposite& composite);
};

#endif
