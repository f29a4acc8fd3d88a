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

// The region holds the headers and the vectors.
//
// A place is the number of a combination of the categories of some dimensions. Its digits are
// display positions, the most significant one of the dimension listed first.
struct OmDisplayLayerHeading::Data : OmMemoryRegion {
  using Path = OmDimHeader::Path;
  using Places = std::vector<unsigned long long>;

  // The places over some dimensions. Every dimension that it holds is one of the table.
  class PlaceCalculator {
   public:
    PlaceCalculator() = default;
    // `sizes` holds the number of categories of every dimension. Throws OMSException where an entry
    // of `dims` names none of them.
    PlaceCalculator(const PuppetVector<short>& dims, const std::vector<int>& sizes);

    [[nodiscard]] unsigned long long Size() const { return Product(base.Bases()); }
    [[nodiscard]] std::vector<unsigned int> Digits(unsigned long long place) const {
      return base.Digits(place);
    }
    // Writes the digits of a place, as they are, as the subscripts of its dimensions.
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

  // Lists, ascending and without repeats, the places over `headDims` that hold a cell. The sparse
  // search appends, and counts every cell that the iterators visit. The dense one clears the list
  // first, and counts cells whose subscripts in `otherDims` are below the dimension's size and in
  // dimensions of neither list the current ones. They differ on purpose. The dense search supports
  // no list whose sizes multiply beyond 64 bits.
  void FindNonEmptyHeaders(const PuppetVector<short>& headDims,
                           const PuppetVector<short>& otherDims, Places& out);
  void FindNonEmptyHeadersSparse(const PuppetVector<short>& headDims,
                                 const PuppetVector<short>& otherDims, Places& out);
  void FindNonEmptyHeadersDense(const PuppetVector<short>& headDims,
                                const PuppetVector<short>& otherDims, Places& out);

  // Returns the place of the leaves that carry the subscripts; there has to be one in every
  // dimension of `calc`. The inverse of Fill.
  [[nodiscard]] unsigned long long DisplayPosition(const std::vector<int>& subscripts,
                                                   const PlaceCalculator& calc);

  // Returns the header of dimension `d`, or null where there is no such dimension.
  [[nodiscard]] OmDimHeader* Header(int d);
  // Tells whether a layer is current, and its place.
  [[nodiscard]] bool CurrentPlace(unsigned long long& place) const;
  // Returns the path of the category of dimension `k` of `calc` at a place, or null where no leaf
  // stands.
  [[nodiscard]] Path* PathAt(unsigned long long place, const PlaceCalculator& calc,
                             unsigned long k);
  // Appends the nodes of a path from the root down, unless there is none or it has but one.
  static void AppendNodes(Path* path, std::vector<ConstNode*>& out);
  // Returns the path of the category of layer dimension `layerDim` at a layer place, or null.
  [[nodiscard]] Path* FindNodes(unsigned long long place, int layerDim);
  // The same in the current layer; null also where none is current.
  [[nodiscard]] Path* CurrentNodes(int layerDim);
  // Turns the digits of a place into subscripts. A digit that no leaf stands at leaves its entry.
  void Fill(unsigned long long place, const PlaceCalculator& calc, std::vector<int>& subscripts);
  // Appends the number of label levels of each dimension of `calc`: of all its categories, or where
  // there are places, of those that some place shows.
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
  Places nonEmptyLayers;  // the places behind the layer numbers; without skipEmpty once asked for
  bool isSparse;
  unsigned long long layerCount = 0;
  int currentLayer = -1;            // negative where no layer is current
  PlaceCalculator placeCalculator;  // over the layer dimensions, without what reads added to them
};

#endif
