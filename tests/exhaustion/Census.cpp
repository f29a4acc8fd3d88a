// The templates whose public operations have to be in the table, in one instance each.

#include "backend/tables/om/om.h"

template class OmVector<OmFootnote>;
template class OmVectorTreeData<OmDimensionNode>;
template class OmVectorTree<OmDimensionNode>;
template class OmVectorTree<OmDimensionNode>::Handle<OmVectorTreeData<OmDimensionNode>>;
template class ListTree<OmOutputPart*>;
