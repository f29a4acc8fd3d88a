#include "backend/tables/om/DisplayColumnHeading.h"

#include "backend/tables/om/DisplayRowHeadingData.h"
#include "backend/tables/om/PivotTable.h"

using ConstNode = OmDisplayColumnHeading::ConstNode;

// The record of a row heading over the column axis: its rows are the columns here.
struct OmDisplayColumnHeading::Data : OmDisplayRowHeading::Data {
  Data(OmDisplayLayerHeading& layer, bool skipEmpty_)
      : OmDisplayRowHeading::Data(layer, layer.Table().Columns(), layer.Table().Rows(), skipEmpty_,
                                  false, false) {}
};

OmDisplayColumnHeading::OmDisplayColumnHeading(OmDisplayLayerHeading& layer, bool skipEmpty)
    : data(new Data(layer, skipEmpty)) {}

OmDisplayColumnHeading::~OmDisplayColumnHeading() {
  delete data;
}

unsigned int OmDisplayColumnHeading::NColumns() const noexcept {
  return static_cast<unsigned int>(data->placeCount);
}

unsigned int OmDisplayColumnHeading::NRows() const noexcept {
  return data->headingWidth;
}

unsigned short OmDisplayColumnHeading::VisibleHeight(int k) const {
  return data->VisibleLevels(k);
}

unsigned int OmDisplayColumnHeading::NDimensions() const noexcept {
  return static_cast<unsigned int>(data->axisDims.size());
}

int OmDisplayColumnHeading::getDimensionIndex(int k) const {
  return data->DimensionIndex(k);
}

bool OmDisplayColumnHeading::SkipEmpty() const noexcept {
  return data->skipEmpty;
}

OmPivotTable& OmDisplayColumnHeading::Table() const noexcept {
  return data->layerHeading->Table();
}

const std::vector<unsigned long long>& OmDisplayColumnHeading::getNonEmptyColumns() const {
  return data->Places();
}

std::deque<ConstNode*> OmDisplayColumnHeading::Row(int r) const {
  return data->Column(r);
}

std::deque<ConstNode*> OmDisplayColumnHeading::Column(int c) const {
  std::deque<ConstNode*> column;
  data->GetRowNodes(data->ListedPlaceOf(c), column);
  return column;
}

std::vector<int> OmDisplayColumnHeading::LabelDimensions() const {
  return data->LabelDimensions();
}

std::deque<ConstNode*> OmDisplayColumnHeading::ColumnCategories(int c) const {
  std::deque<ConstNode*> column;
  data->GetRowNodeCategories(data->ListedPlaceOf(c), column);
  return column;
}

void OmDisplayColumnHeading::DimCatNodes(int c, std::vector<ConstNode*>& dimNodes,
                                         std::vector<ConstNode*>& catNodes) const {
  data->DimCatNodes(c, dimNodes, catNodes);
}

void OmDisplayColumnHeading::DimAllNodes(int c, std::vector<ConstNode*>& out) const {
  data->DimAllNodes(c, out);
}

void OmDisplayColumnHeading::Fill(std::vector<int>& subscripts, int c) const {
  data->Layer().Fill(data->ListedPlaceOf(c), data->placeCalculator, subscripts);
}
