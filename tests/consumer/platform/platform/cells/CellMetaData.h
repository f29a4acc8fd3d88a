#ifndef PLATFORM_CELLS_CELLMETADATA_H
#define PLATFORM_CELLS_CELLMETADATA_H

class OmCellMetaData {
 public:
  int style = -1;
};

#endif
