// Whole workloads, as a back end and a front end make them together: tables are filled, ended, laid
// out, read through their headings and destroyed. Each run is one workload. scripts/workloads
// counts the instructions and the memory of a run and compares them with those of the same program
// on another commit of the library, so nothing but public classes that older commits have is used
// here.
//
// usage: om_workloads NAME [SIZE]
//
//   nothing           what a process costs by itself
//   small             SIZE tables of 4 x 5 x 2 cells in one document
//   dense             one table of SIZE x 50 x 20 x 10 cells
//   wide              one table of SIZE cells at random in 10,000 x 10,000 places
//   edited            SIZE crosstabulations in one document, edited after they were built
//
// What was read is summed up and printed: two runs that print the same did the same work.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

namespace {

using Subscripts = std::vector<int>;
using ConstNode = OmDisplayLayerHeading::ConstNode;

const Qualtex_Format kWhole(Qualtex_Format::kFixed, 8, 0);

// What a front end has seen.
struct Seen {
  unsigned long layers = 0;
  unsigned long labels = 0;
  unsigned long cells = 0;
  double values = 0;
};

// --- The back end's side ------------------------------------------------------------------------

// Adds a dimension of `n` categories; where `groupSize` is not 0, in groups of so many.
void AddDimension(OmPivotTable& table, const char* name, int n, int groupSize = 0) {
  OmDimension& dimension = *table.AddDimension(OmStringCell(name));
  auto parent = dimension.Root();
  for (int i = 0; i != n; ++i) {
    if (groupSize != 0 && i % groupSize == 0) {
      const std::string text = "Group " + std::to_string(i / groupSize);
      parent = dimension.Child(dimension.Root(), OmStringCell(text), OmDimensionNode::kNoSubscript,
                               true);
    }
    const std::string text = "Category " + std::to_string(i);
    dimension.Child(parent, OmStringCell(text), static_cast<unsigned long>(i), false);
  }
}

// Sets every cell of a table, the first subscript fastest.
void FillAll(OmPivotTable& table) {
  const Subscripts sizes = table.SizeVector();
  Subscripts at(sizes.size(), 0);
  for (unsigned long d = 0; d != sizes.size();) {
    table.Cell(at, OmNumber(at[0] + at[1], kWhole));
    for (d = 0; d != sizes.size() && ++at[d] == sizes[d]; ++d) {
      at[d] = 0;
    }
  }
}

void Describe(OmPivotTable& table) {
  table.SetTableTitle(OmStringCell("A table of counts"));
  const OmStringCell text("What the counts are of");
  table.Caption(&text);
  table.CornerText(&text);
}

// A document of tables, a hundred below each procedure's heading.
class Document {
 public:
  OmPivotTable& Add(const char* name) {
    if (tables++ % 100 == 0) {
      heading = root.Child(new OmProcedure(OmStringCell("Tables"), "TABLES", "tables", "DataSet1"));
    }
    auto* const table = new OmPivotTable(OmStringCell(name), OmStringCell(name), false);
    heading.Child(table);
    return *table;
  }
  [[nodiscard]] OmOutputTree& Tree() { return tree; }

 private:
  OmOutputTree tree;
  OmOutputTree::Node root{tree, tree.List().begin()};
  OmOutputTree::Node heading = root;
  int tables = 0;
};

// --- The front end's side -----------------------------------------------------------------------

void ReadLabels(const std::deque<ConstNode*>& labels, Seen& seen) {
  for (const ConstNode* const node : labels) {
    if (node != nullptr) {
      seen.labels += (*node)->Subscript() + 2;
    }
  }
}

// Reads the current layer: all labels, and the cells of every `step`th row.
void ReadLayer(OmPivotTable& table, OmDisplayLayerHeading& layers, int step, Seen& seen) {
  const OmDisplayRowHeading rows(layers, true, true);
  const OmDisplayColumnHeading columns(layers, true);
  seen.labels += rows.CornerText().size();
  for (int line = 0; line < static_cast<int>(columns.NRows()); ++line) {
    ReadLabels(columns.Row(line), seen);
  }
  Subscripts at;
  layers.Fill(at);
  for (int r = 0; r < static_cast<int>(rows.NRows()); ++r) {
    ReadLabels(rows.Row(r), seen);
    if (r % step != 0) {
      continue;
    }
    rows.Fill(at, r);
    for (int c = 0; c < static_cast<int>(columns.NColumns()); ++c) {
      columns.Fill(at, c);
      if (const OmCellText* const cell = table.Cell(at); cell != nullptr) {
        ++seen.cells;
        seen.values += static_cast<const OmNumber*>(cell)->Value();
      }
    }
  }
}

// Lays a table out and reads every layer, empty rows, columns and layers left out.
void Read(OmPivotTable& table, int step, Seen& seen) {
  OmDisplayLayerHeading layers(table, true);
  for (int n = 0; layers.SwitchLayer(n); ++n) {
    ++seen.layers;
    ReadLayer(table, layers, step, seen);
  }
}

class TableReader : public OmOutputPart::Visitor {
 public:
  explicit TableReader(Seen& seen_) : seen(seen_) {}
  void Visit(OmPivotTable& part) override { Read(part, 1, seen); }
  void Visit(OmHeading&) override {}
  void Visit(OmTextBlock&) override {}
  void Visit(OmChart&) override {}
  void Visit(OmDendrix&) override {}
  void Visit(OmModel&) override {}
  void Visit(OmInteractive&) override {}

 private:
  Seen& seen;
};

void Read(OmOutputTree& document, Seen& seen) {
  TableReader reader(seen);
  for (auto& entry : document.List()) {
    entry.Data()->Accept(reader);
  }
}

// --- The workloads ------------------------------------------------------------------------------

void Nothing(int, Seen&) {}

void Small(int tables, Seen& seen) {
  Document document;
  for (int i = 0; i != tables; ++i) {
    OmPivotTable& table = document.Add("Frequencies");
    AddDimension(table, "Region", 4);
    AddDimension(table, "Answer", 5);
    AddDimension(table, "Sex", 2);
    Describe(table);
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(2);
    FillAll(table);
    table.EndTable();
  }
  Read(document.Tree(), seen);
}

void Dense(int size, Seen& seen) {
  OmPivotTable table(OmStringCell("Means"), OmStringCell("Report"), false);
  AddDimension(table, "Town", size, 10);
  AddDimension(table, "Answer", 50, 5);
  AddDimension(table, "Question", 20);
  AddDimension(table, "Year", 10);
  Describe(table);
  table.Rows().push_back(0);
  table.Rows().push_back(2);
  table.Columns().push_back(1);
  table.Layers().push_back(3);
  FillAll(table);
  table.EndTable();
  Read(table, 1, seen);
}

// Nobody reads a hundred million places: the cells of every 64th row stand for what is scrolled
// into sight, and a walk over the stored cells for an export.
void Wide(int cells, Seen& seen) {
  constexpr int kSize = 10000;
  OmPivotTable table(OmStringCell("Pairs"), OmStringCell("Pairs"), false);
  AddDimension(table, "From", kSize);
  AddDimension(table, "To", kSize);
  Describe(table);
  table.Rows().push_back(0);
  table.Columns().push_back(1);
  std::mt19937 random(1);
  Subscripts at(2);
  for (int i = 0; i != cells; ++i) {
    at[0] = static_cast<int>(random() % kSize);
    at[1] = static_cast<int>(random() % kSize);
    table.Cell(at, OmNumber(i, kWhole));
  }
  table.EndTable();
  for (auto it = table.FirstCell(); it.Cell() != nullptr; ++it) {
    ++seen.cells;
  }
  Read(table, 64, seen);
}

// Gives a table of counts a second statistic, puts rows and columns into groups, and takes out a
// row and some other cells.
void Edit(OmPivotTable& table) {
  const Subscripts sizes = table.SizeVector();
  AddDimension(table, "Statistics", 2);
  table.Columns().push_back(2);
  for (int r = 0; r != sizes[0]; ++r) {
    for (int c = 0; c != sizes[1]; ++c) {
      table.Cell({r, c, 1}, OmNumber(100.0 / (r + c + 1)));
    }
  }

  for (int d = 0; d != 2; ++d) {
    OmDimension& dimension = *table.Dimension(d);
    auto first = dimension.Root()[0];
    auto second = dimension.Root()[1];
    auto third = dimension.Root()[2];
    dimension.insertChild(OmStringCell("Low"), {&first, &second, &third});
    const auto other = dimension.AddNewChild(dimension.Root(), OmStringCell("High"),
                                             OmDimensionNode::kNoSubscript, true);
    dimension.AddNewChild(other, OmStringCell("Other"), static_cast<unsigned long>(sizes[d]),
                          false);
    auto low = dimension.Root()[0];
    dimension.moveChild(low, nullptr, false);
  }

  for (int c = 0; c != sizes[1]; ++c) {
    table.deleteCell({2, c, 0});
    table.deleteCell({2, c, 1});
    table.deleteCell({5 + c % 3, c, 1});
  }
}

void Edited(int tables, Seen& seen) {
  Document document;
  for (int i = 0; i != tables; ++i) {
    OmPivotTable& table = document.Add("Crosstabulation");
    AddDimension(table, "Answer", 12);
    AddDimension(table, "Region", 8);
    Describe(table);
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    FillAll(table);
    table.EndTable();
  }
  for (auto& entry : document.Tree().List()) {
    if (auto* const table = dynamic_cast<OmPivotTable*>(entry.Data()); table != nullptr) {
      Edit(*table);
    }
  }
  Read(document.Tree(), seen);
}

struct Workload {
  const char* name;
  void (*run)(int size, Seen& seen);
  int size;
};

constexpr Workload kWorkloads[] = {{"nothing", Nothing, 0},
                                   {"small", Small, 10000},
                                   {"dense", Dense, 100},
                                   {"wide", Wide, 10000},
                                   {"edited", Edited, 1000}};

}  // namespace

int main(int argc, char** argv) {
  for (const Workload& workload : kWorkloads) {
    if (argc > 1 && std::strcmp(argv[1], workload.name) == 0) {
      Seen seen;
      workload.run(argc > 2 ? std::atoi(argv[2]) : workload.size, seen);
      std::printf("%s: %lu layers, labels %lu, %lu cells, values %.17g\n", workload.name,
                  seen.layers, seen.labels, seen.cells, seen.values);
      return EXIT_SUCCESS;
    }
  }
  std::fputs("usage: om_workloads nothing|small|dense|wide|edited [SIZE]\n", stderr);
  return EXIT_FAILURE;
}
