// Makes one of everything that the debugger's printers show, and stops where it is looked at.

#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

namespace {

// The debugger breaks here and looks around one frame up.
void Stop() {}

OmPivotTable* NewTable() {
  auto* const table = new OmPivotTable(OmStringCell("Survival"), OmStringCell("Counts"), false);
  OmDimension* const fate = table->AddDimension(OmStringCell("Fate"));
  for (const char* label : {"Saved", "Lost"}) {
    fate->Child(fate->Root(), OmStringCell(label), fate->NumCategories(), false);
  }
  OmDimension* const cls = table->AddDimension(OmStringCell("Class"));
  auto group =
      cls->Child(cls->Root(), OmStringCell("Passengers"), OmDimensionNode::kNoSubscript, true);
  cls->Child(group, OmStringCell("First"), 0, false);
  cls->Child(group, OmStringCell("Second"), 1, false)->Hide(true);
  cls->Child(cls->Root(), OmStringCell("Crew"), 2, false);
  table->Columns().push_back(0);
  table->Rows().push_back(1);
  table->Cell({0, 0}, OmNumber(203));
  table->Cell({1, 2}, OmNumber(673));
  const OmStringCell note("Third class left out."), marker("a");
  table->Footnote(OmFootnote(&note, &marker, nullptr), false);
  table->EndTable();
  return table;
}

void Containers() {
  const OmMemoryRegion region(false);
  OmVector<int> none(nullptr), numbers(nullptr);
  for (const int i : {1, 4, 9, 16, 25}) {
    numbers.push_back(i);
  }
  PuppetVector<short> axis(-1);
  axis.push_back(2);
  Stop();
}

void Texts() {
  const OmStringCell plain("plain \xc3\xa9", nullptr, true);
  const OmStringCellUTF8 utf8("utf8");
  const OmNumber number(2.5);
  const OmVariable variable("age", "Age in years"), unlabelled("age", "");
  const OmNumDataValue numValue(1, "Yes"), bareValue(1, "");
  const OmStringDataValue stringValue("m", "Male");
  OmComposite composite;
  composite.Tree().Child(composite.Tree().Root(), new OmStringCell("Mean "));
  composite.Tree().Child(composite.Tree().Root(), new OmNumber(3));
  [[maybe_unused]] const OmCellText& any = number;
  Stop();
}

void Tables() {
  OmOutputTree document;
  OmOutputTree::Node root(document, document.List().begin());
  auto procedure = root.Child(new OmProcedure(OmStringCell("Crosstabs"), "", "", ""));
  auto place = procedure.Child(NewTable());
  procedure.Child(new OmTextBlock(OmStringCell("Log"), "Done."));
  procedure.Child(new OmChart(OmStringCell("Bars"), "", 1));
  root.Child(nullptr);
  auto& table = static_cast<OmPivotTable&>(**place);
  [[maybe_unused]] const OmOutputTree::Node end = root.End();
  OmDimension& dimension = *table.Dimension(1);
  const OmDimension::ConstNode group = dimension.Root().Begin(), nowhere;
  [[maybe_unused]] const OmDimensionNode& category = *group[1];
  OmPivotTable::Iterator cell = table.FirstCell();
  ++cell;
  const OmPivotTable::ConstIterator atEnd;
  [[maybe_unused]] const OmFootnote& note = table.Footnotes()[0];
  OmPivotTable empty(OmStringCell("Empty"), OmStringCell(""), false);
  OmDisplayLayerHeading layers(table, false);
  layers.SwitchLayer(0);
  const OmDisplayRowHeading rows(layers, true, true);
  const OmDisplayColumnHeading columns(layers, false);
  const OmDimHeader header(&dimension, nullptr);
  Stop();
}

void Errors() {
  try {
    static_cast<void>(OmPivotTable(OmStringCell(""), OmStringCell(""), false).Size(3));
  } catch (const OMSException& error) {
    Stop();
  }
}

// What one opens a debugger for: memory whose walks never end. The program itself walks none of it.
void Circles() {
  // A list that runs back to its second element.
  OmOutputTree document;
  OmOutputTree::Node root(document, document.List().begin());
  root.Child(new OmTextBlock(OmStringCell("first"), ""));
  root.Child(new OmTextBlock(OmStringCell("second"), ""));
  std::prev(document.List().end())._M_node->_M_next = std::next(document.List().begin())._M_node;
  // A record that is its own child, by the pointers of its vector of children.
  OmDimension dimension(OmDimensionNode(OmStringCell("Class"), 0, true, nullptr), nullptr);
  dimension.Child(dimension.Root(), OmStringCell("Crew"), 0, false);
  OmVectorTreeData<OmDimensionNode>& crew = dimension.Children()[0];
  auto** const pointers = reinterpret_cast<OmVectorTreeData<OmDimensionNode>**>(&crew.Children());
  pointers[1] = &crew, pointers[2] = pointers[3] = &crew + 1;
  // Composites inside themselves, at once and around a corner, twice at each step.
  OmComposite itself, outer, inner;
  for (const auto& [around, content] :
       {std::pair(&itself, &itself), std::pair(&outer, &inner), std::pair(&inner, &outer)}) {
    around->Tree().Child(around->Tree().Root(), content);
    around->Tree().Child(around->Tree().Root(), content);
  }
  // Composites of which each holds the next twice: no circle, and longer than anybody's life.
  std::vector<OmComposite> links(64);
  for (unsigned long i = 1; i != links.size(); ++i) {
    links[i - 1].Tree().Child(links[i - 1].Tree().Root(), &links[i]);
    links[i - 1].Tree().Child(links[i - 1].Tree().Root(), &links[i]);
  }
  [[maybe_unused]] const OmComposite& doubled = links[0];
  Stop();
  std::_Exit(0);  // none of it can be destroyed
}

}  // namespace

int main() {
  Containers(), Texts(), Tables(), Errors(), Circles();
}
