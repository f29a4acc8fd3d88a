// TableBuilder fills one pivot table: dimensions axis by axis, categories, cells, footnotes.

#ifndef EXAMPLES_REPORT_TABLEBUILDER_H
#define EXAMPLES_REPORT_TABLEBUILDER_H

#include <string>
#include <vector>

#include "backend/tables/om/PivotTable.h"
#include "examples/report/DocumentParts.h"

class OmDimension;

namespace report {

class Variable;

// A table is placed in the document first and filled there, so that a procedure which fails
// half-way finds it in the outline.
class TableBuilder {
 public:
  enum class Axis { kRows, kColumns, kLayers };

  // Places an empty table as the last child of `parent`.
  TableBuilder(TreeNode parent, const std::string& title, const std::string& templateName);

  // Adds a dimension to an axis, inside the dimensions that the axis has already. One whose name is
  // not shown takes no room in the headings for it. The table owns the dimension.
  OmDimension& AddDimension(Axis axis, const std::string& name, bool showName);
  // Adds a dimension that is named after a variable and has one category for each of the
  // variable's, and behind them, if `total`, one for them all.
  OmDimension& AddDimension(Axis axis, const Variable& variable, bool total);

  // Stores a cell. `subscripts` come in the order in which the dimensions were added.
  void Text(const std::vector<int>& subscripts, const std::string& text);
  // Stores a number, and marks it with a footnote unless `footnote` is empty.
  void Number(const std::vector<int>& subscripts, double value, int decimals,
              const std::string& footnote = std::string());
  // Puts a text over the row labels, which is shown where no dimension shows its name there.
  void Corner(const std::string& text);
  void Caption(const std::string& text);
  // Marks the table's title with a footnote.
  void MarkTitle(const std::string& footnote);

  // Ends the table. Nothing is added to it afterwards.
  void End();

  [[nodiscard]] TreeNode Node() const { return node; }

 private:
  int AddFootnote(const std::string& text);

  OmPivotTable* table;  // owned by the tree
  TreeNode node;
  // The dimensions of each axis, the outermost first.
  std::vector<short> rows;
  std::vector<short> columns;
  std::vector<short> layers;
};

// Adds categories or groups behind those that `parent`, the root or a group's place below it, has.
// Their subscripts go on from the number of categories. Returns the number of categories before.
int AddCategories(OmDimension& dimension, const std::vector<std::string>& labels);
int AddGroup(OmDimension& dimension, const std::string& label,
             const std::vector<std::string>& labels);
// As AddGroup, labelled with the categories of a variable and, behind them, "Total".
int AddGroup(OmDimension& dimension, const std::string& label, const Variable& variable);

}  // namespace report

#endif
