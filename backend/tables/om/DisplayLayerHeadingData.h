// The private record of a layer heading, which the row and column headings share. Callers do not
// include it.

#ifndef BACKEND_TABLES_OM_DISPLAYLAYERHEADINGDATA_H
#define BACKEND_TABLES_OM_DISPLAYLAYERHEADINGDATA_H

#include <vector>

#include "backend/tables/IndexProjector.h"
#include "backend/tables/MultiBase.h"
#include "backend/tables/PlaceDigits.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/Vector.h"
#include "platform/memory/MemoryRegion.h"

// The record is also the memory region of the headers and of its OmVectors.
//
// A place is the number of a combination of the categories of some dimensions. Its digits are
// display positions; the dimension listed first has the most significant one.
struct OmDisplayLayerHeading::Data : OmMemoryRegion {
  using Path = OmDimHeader::Path;
  using Places = std::vector<unsigned long long>;

  // The places over some dimensions of the table.
  class PlaceCalculator {
   public:
    PlaceCalculator() = default;
    // `sizes` holds the number of categories of every dimension. Throws OMSException if an entry of
    // `dims` names none of them.
    PlaceCalculator(const PuppetVector<short>& dims, const std::vector<int>& sizes);

    [[nodiscard]] unsigned long long Size() const { return Product(base.Bases()); }
    [[nodiscard]] std::vector<unsigned int> Digits(unsigned long long place) const {
      return base.Digits(place);
    }
    // Writes the digits of a place, without converting them to subscripts, to the entries of its
    // dimensions.
    void Fill(unsigned long long place, std::vector<int>& out) const;
    [[nodiscard]] const PuppetVector<short>& Dimensions() const noexcept { return dimensions; }
    [[nodiscard]] const MultiBase& Base() const noexcept { return base; }
    [[nodiscard]] const PlaceDigits& Single() const noexcept { return single; }

   private:
    PuppetVector<short> dimensions{-1};
    OmIndexProjector projector;
    MultiBase base;
    PlaceDigits single;
  };

  explicit Data(OmPivotTable& table_);
  Data(OmPivotTable& table_, bool skipEmpty_);
  ~Data();

  void CollectHeaderInfo();
  void FindNonEmptyLayers();

  // Lists, ascending and without duplicates, the places over `headDims` that have a cell. The
  // sparse search appends to `out` and considers every cell that the iterators visit. The dense
  // search clears `out` first and considers the cells whose subscripts in `otherDims` are below the
  // dimension's size and whose subscripts in dimensions of neither list are the current ones. They
  // differ on purpose: the rows of a sparse table are the same in every layer
  // (OmDisplayRowHeading). The dense search requires that the product of the sizes fits 64 bits.
  void FindNonEmptyHeaders(const PuppetVector<short>& headDims,
                           const PuppetVector<short>& otherDims, Places& out);
  void FindNonEmptyHeadersSparse(const PuppetVector<short>& headDims,
                                 const PuppetVector<short>& otherDims, Places& out);
  void FindNonEmptyHeadersDense(const PuppetVector<short>& headDims,
                                const PuppetVector<short>& otherDims, Places& out);

  // Returns the place of the leaves that have the subscripts; every dimension of `calc` must have
  // one. The inverse of Fill.
  [[nodiscard]] unsigned long long DisplayPosition(const std::vector<int>& subscripts,
                                                   const PlaceCalculator& calc);

  // Returns the header of dimension `d`, or null if there is no such dimension or its structure has
  // changed.
  [[nodiscard]] OmDimHeader* Header(int d);
  // Returns the header of dimension `k` of `calc` and sets `position` to that of its leaf at a
  // place; null if there is no leaf.
  [[nodiscard]] OmDimHeader* LeafAt(unsigned long long place, const PlaceCalculator& calc,
                                    unsigned long k, unsigned long& position);
  // Returns whether a layer is current, and sets `place` to its place.
  [[nodiscard]] bool CurrentPlace(unsigned long long& place) const;
  // Returns the path of the category of dimension `k` of `calc` at a place, or null if there is no
  // leaf.
  [[nodiscard]] Path* PathAt(unsigned long long place, const PlaceCalculator& calc,
                             unsigned long k);
  // Appends the nodes of a path from the root down. Does nothing if the path is null or has only
  // one node.
  static void AppendNodes(Path* path, std::vector<ConstNode*>& out);
  // Returns the path of the category of layer dimension `layerDim` at a layer place, or null.
  [[nodiscard]] Path* FindNodes(unsigned long long place, int layerDim);
  // The same in the current layer; null also if no layer is current.
  [[nodiscard]] Path* CurrentNodes(int layerDim);
  // Writes the subscripts of the leaves at a place. Does not change the entry of a digit without a
  // leaf.
  void Fill(unsigned long long place, const PlaceCalculator& calc, std::vector<int>& subscripts);
  // Appends the number of label levels of each dimension of `calc`: of the categories at the given
  // places, or of all its categories if there are no places.
  void FindVisibleLevels(const Places& places, const PlaceCalculator& calc,
                         std::vector<unsigned short>& out);

  OmPivotTable* table;  // not owned
  bool skipEmpty = false;
  std::vector<int> currentSubscripts;    // of the current layer; one per dimension
  OmVector<OmDimHeader*> headers{this};  // one per dimension; owned
  PuppetVector<short> layerDims{-1};     // the layer axis reversed; reads past its end lengthen it
  OmVector<int> reservedIndices{this};   // stays empty; nothing reads it
  OmVector<int> reservedZeros;           // one 0 per dimension; nothing reads it
  std::vector<OmDimHeader*> layerHeaders;  // of the layer dimensions
  Places nonEmptyLayers;  // the place of each layer number; without skipEmpty filled on first use
  bool isSparse;
  unsigned long long layerCount = 0;
  int currentLayer = -1;            // negative if no layer is current
  PlaceCalculator placeCalculator;  // over the layer dimensions, without appended entries
};

#endif
