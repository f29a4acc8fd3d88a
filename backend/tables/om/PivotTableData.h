// The private record of a pivot table. Callers do not include it.

#ifndef BACKEND_TABLES_OM_PIVOTTABLEDATA_H
#define BACKEND_TABLES_OM_PIVOTTABLEDATA_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/CellStoreData.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/PivotTable.h"
#include "platform/cells/CellProperties.h"
#include "platform/cells/CellText.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/memory/MemoryRegion.h"

class icuTracker;

// Ties the texts that it visits to one tracker. Numbers carry no text and are passed over.
class OmPivotTable::ICUHelper : public OmCellText::Visitor {
 public:
  void Visit(OmNumber& cell) override;
  void Visit(OmStringCell& cell) override;
  void Visit(OmStringCellUTF8& cell) override;
  void Visit(OmVariable& cell) override;
  void Visit(OmNumDataValue& cell) override;
  void Visit(OmStringDataValue& cell) override;
  void Visit(OmComposite& cell) override;

  [[nodiscard]] icuTracker* Tracker() const noexcept { return tracker; }
  void setTracker(icuTracker* t) noexcept { tracker = t; }

 private:
  icuTracker* tracker = nullptr;  // not owned
};

// Gives the standard containers memory from a region.
template <typename T>
struct OmRegionAllocator {
  using value_type = T;

  explicit OmRegionAllocator(OmMemoryRegion* region_) noexcept : region(region_) {}
  template <typename Other>
  explicit OmRegionAllocator(const OmRegionAllocator<Other>& other) noexcept
      : region(other.region) {}
  [[nodiscard]] T* allocate(unsigned long n) {
    return static_cast<T*>(region->Allocate(n * sizeof(T)));
  }
  void deallocate(T* block, unsigned long) noexcept { OmMemoryRegion::Release(block); }
  [[nodiscard]] bool operator==(const OmRegionAllocator& other) const noexcept {
    return region == other.region;
  }

  OmMemoryRegion* region;
};

// Where the footnotes of a table stand by their texts, so that looking for one needs no walk over
// the list. Every answer is that of the walk.
//
// Invariant: of the first `known` footnotes, `first` holds the first one of each text of a kind
// whose comparison is a total order, and `others` all those of other kinds, ascending; those
// without a text are in neither.
class OmPivotTable::FootnotePlaces {
 public:
  FootnotePlaces(const OmVector<OmFootnote>& list_, OmMemoryRegion* region)
      : list(list_), first(Before{list_}, Allocator(region)), others(region) {}

  // Returns the position of the first footnote that equals `note`, or the number of footnotes.
  [[nodiscard]] unsigned long Find(const OmFootnote& note);
  // Goes back to walks, because texts may change from now on.
  void GiveUp() noexcept;

 private:
  using Allocator = OmRegionAllocator<unsigned long>;

  // Orders footnotes by the kinds of their texts, and by the texts within a kind.
  struct Before {
    using is_transparent = void;
    [[nodiscard]] bool operator()(unsigned long a, unsigned long b) const {
      return Less(*list[a].Text(), *list[b].Text());
    }
    [[nodiscard]] bool operator()(unsigned long a, const OmCellText& b) const {
      return Less(*list[a].Text(), b);
    }
    [[nodiscard]] bool operator()(const OmCellText& a, unsigned long b) const {
      return Less(a, *list[b].Text());
    }
    [[nodiscard]] static bool Less(const OmCellText& a, const OmCellText& b);

    const OmVector<OmFootnote>& list;
  };

  [[nodiscard]] unsigned long Walk(const OmFootnote& note) const;
  void CatchUp();

  const OmVector<OmFootnote>& list;
  std::set<unsigned long, Before, Allocator> first;
  OmVector<unsigned long> others;
  unsigned long known = 0;
  bool walks = false;  // for good
};

// Ties every cell below `n` to the tracker of n's cell, or to `inherited` where `n` holds no cell.
void propagateICUTracker(OmVectorTree<OmCellText*>::Node& n, icuTracker* inherited = nullptr);
// Ties every label below `n` to `t`.
void propagateICUTracker(OmVectorTree<OmDimensionNode>::Node n, icuTracker* t);

// Everything that a table holds. The four titles and all that the store holds are null or live in
// the region. -1 means not set.
struct OmPivotTable::Data : OmPivotTable::Cells {
  Data(const OmCellText& templateName_, bool hasSplits_);
  Data(const Data&) = delete;
  Data& operator=(const Data&) = delete;
  ~Data();

  // Moves every cell to subscript 0 of one more dimension. Goes with each dimension that is added.
  void AddCellDimension();
  [[nodiscard]] std::vector<int> SizeVector() const;
  // Holds the axes against the number of dimensions.
  void ReindexAxis();
  // Counts a change of the cells, which ends every walk, if hardening is on.
  void Changed() noexcept {
#if defined(OM_HARDENING) && OM_HARDENING
    ++changes;
#endif
  }
  // Appends a dimension with all that belongs to it, or leaves the table as it was.
  OmDimension* Add(std::unique_ptr<OmDimension> dimension);

  OmCellText* templateName = nullptr;
  OmCellText* cornerText = nullptr;
  OmCellText* caption = nullptr;
  OmCellText* tableTitle = nullptr;
  OmVector<OmFootnote> footnotes{&region};
  FootnotePlaces footnotePlaces{footnotes, &region};
  bool removedFootnotes = false;
  bool hasSplits;
  // Whether all cells may go with the region as they stand: then the destructor does not walk the
  // store.
  bool cellsGo = OmCellStore::kCellsGo;
  PuppetVector<short> rows{-1};
  PuppetVector<short> columns{-1};
  PuppetVector<short> layers{-1};
  int optionNumber = -1;
  int minColumnWidth = -1;
  int maxColumnWidth = -1;
  int minRowWidth = -1;
  int maxRowWidth = -1;
  int layerLoc = -1;
  long long tableId = -1;
  std::string tableLocale;
  bool show = true;
  bool rotateRowLabels = false;
  bool rotateColumnLabels = false;
  bool scratched = false;
  bool isWarnings;
  bool isNotes;
  bool hasMarkers = false;
  bool backendOwns = true;
  bool fastTable = true;
  bool showCaption = true;
  bool labelsOnly = false;
  bool imputed = false;
  BackendSettings backendSettings;
  icuTracker* icu = nullptr;   // owned
  icuTracker* utf8 = nullptr;  // owned; may be the same object as `icu`
  ICUHelper helper;
  int lang = 0;
  int variableMode = 0;
  int valueMode = 0;
  int numCells = 0;               // calls of the cell setter
  unsigned long storedCells = 0;  // what the store holds
  int startColor = -1;
  int endColor = -1;
  std::map<FormatArea::Area, FormatArea*> areaFormats;  // owned, some null
  std::string borderInfo;
  std::string tableLookInfo;
  std::string tablePropertiesInfo;
  std::vector<unsigned int> customWidths;
  std::vector<unsigned int> customHeights;
  std::map<unsigned long long, unsigned short> emptyCellStyles;
  std::vector<OmCellProperties> cellStyles;
  std::string miscProperties;  // separated by commas
  // Formats of areas above 8 that a later one took the place of: no lookup finds such a format, so
  // none deletes it before the table goes.
  std::vector<FormatArea*> displacedFormats;
  // Changes of the cells. Each walk compares it with the number at its start.
  unsigned long changes = 0;
};

#endif
