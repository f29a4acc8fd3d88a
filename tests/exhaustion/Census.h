// The templates whose public operations have to be in the table, in one instance each. Census.cpp
// holds the instances; the table takes them from there, so that each call is a symbol.

#ifndef TESTS_EXHAUSTION_CENSUS_H
#define TESTS_EXHAUSTION_CENSUS_H

#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/ListTree.h"
#include "backend/tables/om/OutputPart.h"
#include "backend/tables/om/Vector.h"
#include "backend/tables/om/VectorTree.h"

#ifndef CENSUS
#define CENSUS extern template
#endif

CENSUS class OmVector<OmFootnote>;
CENSUS class OmVectorTreeData<OmDimensionNode>;
CENSUS class OmVectorTree<OmDimensionNode>;
CENSUS class OmVectorTree<OmDimensionNode>::Handle<OmVectorTreeData<OmDimensionNode>>;
CENSUS class ListTree<OmOutputPart*>;

#endif
