// The private record of a row heading, which serves the column heading too. Callers do not include
// it.

#ifndef BACKEND_TABLES_OM_DISPLAYROWHEADINGDATA_H
#define BACKEND_TABLES_OM_DISPLAYROWHEADINGDATA_H

#include <deque>
#include <vector>

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/DisplayLayerHeadingData.h"
#include "backend/tables/om/DisplayRowHeading.h"

// A heading over any axis, told in terms of rows.
struct OmDisplayRowHeading::Data {
  using LayerData = OmDisplayLayerHeading::Data;
  using Path = LayerData::Path;
  using Labels = std::deque<ConstNode*>;

  Data(OmDisplayLayerHeading& layer, const PuppetVector<short>& axis,
       const PuppetVector<short>& other, bool skipEmpty_, bool dimNamesInCorner_,
       bool collectCorner);
  Data(const Data&) = delete;
  Data& operator=(const Data&) = delete;

  void FindVisibleLevels();
  // Returns the path of each axis dimension's category, null where no leaf stands.
  [[nodiscard]] std::vector<const Path*> FindNodes(unsigned long long place) const;
  // Tells whether a dimension's name was placed in the corner.
  bool CollectCornerLabels();
  // Returns the labels of the categories at a place, levelsPerDim of each axis dimension.
  [[nodiscard]] Labels GetRowNodes(unsigned long long place);
  void GetRowNodeCategories(unsigned long long place, Labels& out) const;

  // What the row and the column heading offer alike.
  [[nodiscard]] unsigned long long PlaceOf(int r) const;
  [[nodiscard]] unsigned long long ListedPlaceOf(int r) const;
  [[nodiscard]] unsigned short VisibleLevels(int k) const;
  [[nodiscard]] int DimensionIndex(int k);
  [[nodiscard]] Labels Column(int c) const;
  void DimCatNodes(int r, std::vector<ConstNode*>& dimNodes,
                   std::vector<ConstNode*>& catNodes) const;
  void DimAllNodes(int r, std::vector<ConstNode*>& out) const;
  void Fill(std::vector<int>& subscripts, int r) const;
  [[nodiscard]] const std::vector<unsigned long long>& Places();

  OmDisplayLayerHeading* layerHeading;  // not owned
  OmPivotTable* table;                  // not owned
  bool skipEmpty;
  bool dimNamesInCorner;
  PuppetVector<short> axisDims;               // the axis reversed; reads past its end lengthen it
  std::vector<const OmCellText*> cornerText;  // one per heading column, some null; not owned
  std::vector<unsigned long long> nonEmptyPlaces;  // without skipEmpty all places, once asked for
  LayerData::PlaceCalculator placeCalculator;      // over the axis, without what reads added to it
  std::vector<unsigned short> levelsPerDim;        // heading columns of each axis dimension
  unsigned long long placeCount = 0;               // rows
  unsigned int headingWidth = 0;                   // sum of levelsPerDim

 private:
  // What is hidden on a path, which may change while the heading lives: labels that are kept hold
  // for as long as it does not. 0 means nothing.
  using Mark = unsigned long long;
  using PathNode = const OmDimensionNode*;
  // Some categories of the innermost dimension.
  struct Block {
    std::vector<ConstNode*> labels;  // levelsPerDim of each
    std::vector<PathNode> nodes;     // the path of each, `depth` nodes, some twice
    std::vector<Mark> marks;         // of the paths, from when the labels were listed
    unsigned long marked = 0;        // of the marks, those that are not 0
    unsigned long depth = 0;
  };
  // Rows that differ in the innermost dimension only follow each other, as a rule; so what they
  // share is kept. A place is in the run where place - first < length.
  struct Run {
    unsigned long long first = 0;
    unsigned long long length = 0;
    ConstNode* const* labels = nullptr;  // of the innermost dimension, `width` a place
    unsigned long width = 0;
    const PathNode* nodes = nullptr;  // of the innermost dimension, `depth` a place
    unsigned long depth = 0;
    const Mark* marks = nullptr;  // of those
    bool plain = false;           // all marks are 0, outerMark too
    Mark outerMark = 0;
    std::vector<PathNode> outerNodes;     // of the other dimensions
    std::vector<ConstNode*> outerLabels;  // of the other dimensions
  };

  [[nodiscard]] static Mark MarkOf(const PathNode* node, const PathNode* end) noexcept;
  [[nodiscard]] static bool IsAnyHidden(const PathNode* node, const PathNode* end) noexcept;
  [[nodiscard]] Block& InnerBlock(std::deque<Path>& paths, unsigned long block);
  [[nodiscard]] bool IsStale(unsigned long i) const noexcept;
  void EnterRun(unsigned long long place);
  [[nodiscard]] LayerData& Layer() const noexcept;
  // Returns the path of category `digit` of axis dimension `k`, or null.
  [[nodiscard]] Path* PathAt(unsigned long k, unsigned int digit) const;
  // Calls `visit(k, path)` for every axis dimension; a path may be null.
  template <typename Visit>
  void ForEachPath(unsigned long long place, Visit visit) const;

  Run shown;
  std::vector<Block> innerBlocks;  // each filled once a row of it was asked for
};

#endif
