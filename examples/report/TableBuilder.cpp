#include "examples/report/TableBuilder.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "examples/report/CellFootnotes.h"
#include "examples/report/DataSet.h"
#include "examples/report/TableLook.h"
#include "platform/cells/CellTexts.h"
#include "platform/dataio/BackendSettings.h"

namespace report {

namespace {

using Node = OmVectorTree<OmDimensionNode>::Node;

void AddLeaf(OmDimension& dimension, const Node& parent, const OmCellText& label) {
  dimension.AddNewChild(parent, label, dimension.NumCategories(), false);
}

void AddLeaves(OmDimension& dimension, const Node& parent, const Variable& variable) {
  const std::vector<std::string>& labels = variable.Categories();
  for (std::uint32_t code = 0; code < labels.size(); ++code) {
    const double value = variable.CategoryNumber(code);
    if (std::isnan(value)) {
      AddLeaf(dimension, parent, OmStringDataValue(labels[code], ""));
    } else {
      AddLeaf(dimension, parent, OmNumDataValue(value, labels[code]));
    }
  }
}

}  // namespace

TableBuilder::TableBuilder(TreeNode parent, const std::string& title,
                           const std::string& templateName)
    : table(nullptr), node(parent) {
  const OmStringCellUTF8 titleCell(title);
  auto part = std::make_unique<OmPivotTable>(titleCell, OmStringCell(templateName), false);
  part->setBackendSettings(BackendSettings());
  part->SetTableTitle(titleCell);
  table = part.get();
  node = Place(parent, std::move(part));
}

OmDimension& TableBuilder::AddDimension(Axis axis, const std::string& name, bool showName) {
  OmDimension& dimension = *table->AddDimension(OmStringCellUTF8(name));
  dimension.Root()->Hide(!showName);
  std::vector<short>& list = axis == Axis::kRows ? rows : axis == Axis::kColumns ? columns : layers;
  list.push_back(static_cast<short>(table->NDimensions() - 1));
  return dimension;
}

OmDimension& TableBuilder::AddDimension(Axis axis, const Variable& variable, bool total) {
  OmDimension& dimension = AddDimension(axis, variable.Name(), true);
  AddLeaves(dimension, dimension.Root(), variable);
  if (total) {
    AddCategories(dimension, {"Total"});
  }
  return dimension;
}

void TableBuilder::Text(const std::vector<int>& subscripts, const std::string& text) {
  table->Cell(subscripts, OmStringCellUTF8(text));
}

void TableBuilder::Number(const std::vector<int>& subscripts, double value, int decimals,
                          const std::string& footnote) {
  OmNumber cell(value, Qualtex_Format(Qualtex_Format::kFixed, 12, decimals));
  if (!footnote.empty()) {
    MarkFootnote(cell, AddFootnote(footnote));
  }
  table->Cell(subscripts, cell);
}

void TableBuilder::Corner(const std::string& text) {
  const OmStringCellUTF8 cell(text);
  table->CornerText(&cell);
}

void TableBuilder::Caption(const std::string& text) {
  const OmStringCellUTF8 cell(text);
  table->Caption(&cell);
}

void TableBuilder::MarkTitle(const std::string& footnote) {
  MarkFootnote(*table->TableTitle(), AddFootnote(footnote));
}

int TableBuilder::AddFootnote(const std::string& text) {
  table->setHasMarkers();
  const OmStringCellUTF8 cell(text);
  return table->Footnote(OmFootnote(&cell, nullptr, nullptr), false);
}

void TableBuilder::End() {
  // An axis lists its innermost dimension first.
  std::copy(rows.rbegin(), rows.rend(), std::back_inserter(table->Rows()));
  std::copy(columns.rbegin(), columns.rend(), std::back_inserter(table->Columns()));
  std::copy(layers.rbegin(), layers.rend(), std::back_inserter(table->Layers()));
  table->EndTable();
  ApplyLook(*table);
}

int AddCategories(OmDimension& dimension, const std::vector<std::string>& labels) {
  const auto first = static_cast<int>(dimension.NumCategories());
  for (const std::string& label : labels) {
    AddLeaf(dimension, dimension.Root(), OmStringCellUTF8(label));
  }
  return first;
}

int AddGroup(OmDimension& dimension, const std::string& label,
             const std::vector<std::string>& labels) {
  const auto first = static_cast<int>(dimension.NumCategories());
  const Node group = dimension.AddNewChild(dimension.Root(), OmStringCellUTF8(label),
                                           static_cast<unsigned long>(-1), true);
  for (const std::string& leaf : labels) {
    AddLeaf(dimension, group, OmStringCellUTF8(leaf));
  }
  return first;
}

int AddGroup(OmDimension& dimension, const std::string& label, const Variable& variable) {
  const auto first = static_cast<int>(dimension.NumCategories());
  const Node group = dimension.AddNewChild(dimension.Root(), OmStringCellUTF8(label),
                                           static_cast<unsigned long>(-1), true);
  AddLeaves(dimension, group, variable);
  AddLeaf(dimension, group, OmStringCellUTF8("Total"));
  return first;
}

}  // namespace report
