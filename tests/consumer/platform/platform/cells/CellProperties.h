#ifndef PLATFORM_CELLS_CELLPROPERTIES_H
#define PLATFORM_CELLS_CELLPROPERTIES_H

class OmCellProperties {
 public:
  int color = -1;
};

#endif
