// The table of operations: dimensions, pivot tables and their headings.

#include <sstream>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellStore.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/FormatArea.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/IcuTracker.h"
#include "tests/exhaustion/Exhaustion.h"
#include "tests/exhaustion/Quiet.h"
#include "tests/support/Show.h"
#include "tests/support/Walkers.h"

namespace {

using Node = OmDimension::Node;
using Subscripts = std::vector<int>;

const std::string kText = "twenty-four bytes of it.";
const OmStringCell kCell(kText);

// Two groups of two categories each, a category beside them, and an index that is full.
void Fill(OmDimension& dimension) {
  unsigned long subscript = 0;
  for (const char* name : {"g", "h"}) {
    Node group = dimension.Child(dimension.Root(), OmStringCell(name), ~0UL, true);
    dimension.Child(group, OmStringCell(std::string(name) + "2"), subscript++, false);
    dimension.Child(group, OmStringCell(std::string(name) + "1"), subscript++, false);
  }
  dimension.Child(dimension.Root(), OmStringCell("c"), subscript, false);
  dimension.Child(dimension.Root(), OmStringCell("empty"), ~0UL, true);
}

struct Dimensions : ExhaustionFixture {
  Dimensions() { Fill(dimension); }
  Node At(unsigned long i) { return dimension.Root()[i]; }
  std::string State() const {
    return Show(dimension) + (made != nullptr ? Show(*made) : "") + seen;
  }
  void Verify() { ::Verify(dimension); }

  OmMemoryRegion region{false};
  OmDimensionNode node{OmStringCell("root"), ~0UL, true, nullptr};
  OmDimension dimension{node, &region};
  std::unique_ptr<OmDimension> made;
  std::string seen;
};

TEST(Exhaustion, Dimensions) {
  static const Operation<Dimensions> kRows[] = {
      {"node",
       [](Dimensions& f) {
         const OmDimensionNode bare(&f.region);
         OmDimensionNode node(kCell, 3, true, &f.region);
         node.ChildIndex().push_back(4);
         const OmDimensionNode moved(node, nullptr);
         const OmDimensionNode copy(node);
         f.seen = Fields(bare.Text() == nullptr, Show(moved), node == copy, node < copy);
       }},
      {"Print of a node",
       [](Dimensions& f) {
         const Quiet quiet;
         f.node.Print(2);
       }},
      {"dimension",
       [](Dimensions& f) { f.made = std::make_unique<OmDimension>(f.node, &f.region); }},
      {"copy", [](Dimensions& f) { f.made = std::make_unique<OmDimension>(f.dimension, nullptr); }},
      {"readers",
       [](Dimensions& f) {
         std::vector<unsigned long> counts(9, 0);
         f.dimension.getGroupCountsByLevel(f.dimension.Root(), counts);
         const OmDimension::ConstNode root = f.dimension.Root();
         const OmDimension::Less less(root, f.node);
         Node node = f.At(1)[0];
         OmDimension other(f.dimension, &f.region);
         f.seen = Fields(f.dimension.FindChild(f.dimension.Root(), OmStringCell("c"), false),
                         f.dimension.getDepth(f.dimension.Root()), f.dimension.getMaximumDepth(),
                         ListOf(counts), f.dimension.getMaxVisibleGroupCount(), less(0, 1),
                         Show(*other.Counterpart(node)));
       }},
      {"Child", [](Dimensions& f) { f.dimension.Child(f.dimension.Root(), kCell, 9, false); }},
      {"Child, known",
       [](Dimensions& f) { f.dimension.Child(f.dimension.Root(), OmStringCell("c"), 9, false); }},
      {"Child of a node", [](Dimensions& f) { f.dimension.Child(f.dimension.Root(), f.node); }},
      {"AddNewChild", [](Dimensions& f) { f.dimension.AddNewChild(f.At(1), kCell, 9, false); }},
      {"Delete",
       [](Dimensions& f) {
         Node node = f.At(0);
         f.dimension.Delete(node);
         f.dimension.Relocate(true);
       }},
      {"insertCategory",
       [](Dimensions& f) {
         (void)f.dimension.insertCategory(kCell, f.At(0), f.dimension.Root(), true);
       }},
      {"insertChild",
       [](Dimensions& f) {
         Node a = f.At(0);
         Node b = f.At(2);
         f.dimension.insertChild(kCell, {&a, &b});
       }},
      // The mark of what is being dissolved comes first, on purpose.
      {"removeChild",
       [](Dimensions& f) {
         Node node = f.At(0);
         f.dimension.removeChild(node);
       },
       After::kRepeatable},
      {"moveChild",
       [](Dimensions& f) {
         Node node = f.At(0);
         Node target = f.At(2);
         f.dimension.moveChild(node, &target, false);
       }},
      {"moveChild to the root",
       [](Dimensions& f) {
         f.At(0)->Hide(true);
         Node node = f.At(0)[1];
         f.dimension.moveChild(node, nullptr, false);
       },
       After::kRepeatable},
      {"moveChild, swapped",
       [](Dimensions& f) {
         Node node = f.At(0);
         Node target = f.At(2);
         f.dimension.moveChild(node, &target, true);
       }},
  };
  exhaustion::Run(kRows);
}

std::string ShowAll(OmPivotTable& table) {
  const OmPivotTable& same = table;
  std::string shown =
      Fields(Show(table.Title()), Show(table.TemplateName()), Show(same.TemplateName()),
             Show(table.CornerText()), Show(same.CornerText()), Show(table.Caption()),
             Show(same.Caption()), Show(table.TableTitle()), Show(same.GetTableTitle()),
             table.NDimensions(), ListOf(table.SizeVector()), ListOf(table.Rows()),
             ListOf(same.Rows()), ListOf(table.Columns()), ListOf(same.Columns()),
             ListOf(table.Layers()), ListOf(same.Layers()), Show(table.Footnotes()),
             Show(same.Footnotes()), table.HasRemovedFootnotes(),
             table.getBackendSettings().getLocale(), table.getICUTracker() != nullptr,
             table.getU8Tracker() != nullptr, table.getAreaFormat(FormatArea::kArea2) != nullptr,
             table.Show(), table.RotateRowLabels(), table.RotateColumnLabels(), table.showCaption(),
             table.OptionNumber(), table.TableId(), table.TableLocale(), table.HasSplits(),
             table.IsWarnings(), table.IsNotes(), table.hasMarkers(), table.backendOwns(),
             table.fastTable(), table.getLabelsOnly(), table.getImputed(), table.IsScratched());
  shown +=
      Fields(table.MinColumnWidth(), table.MaxColumnWidth(), table.MinRowWidth(),
             table.MaxRowWidth(), table.getLayerLoc(), table.getLang(), table.getVariableMode(),
             table.getValueMode(), table.getStartColor(), table.getEndColor(),
             table.getBorderInfo(), table.getTableLookInfo(), table.getTablePropertiesInfo(),
             ListOf(table.getTableCustomWidths()), ListOf(table.getTableCustomHeights()),
             table.getEmptyCellStyles().size(), table.emptyCellStyles().size(),
             table.getCellStyles().size(), table.cellStyles().size(), table.getMiscProperties());
  for (int d = 0; d != static_cast<int>(table.NDimensions()); ++d) {
    shown += Fields(table.Size(d), Show(*table.Dimension(d)), Show(*same.Dimension(d)));
  }
  OmPivotTable::ConstIterator cell = same.FirstCell();
  for (OmPivotTable::Iterator it = table.FirstCell(); it.Cell() != nullptr; ++it, ++cell) {
    EXPECT_EQ(it.Cell(), cell.Cell());
    EXPECT_EQ(it.Index(), cell.Index());
    shown += Fields(ListOf(it.Index()), Show(same.Cell(it.Index())), Show(table.Cell(it.Index())));
  }
  return shown;
}

// A table of two dimensions, with cells, every text, footnotes and trackers.
struct Tables : ExhaustionFixture {
  Tables() {
    BackendSettings settings;
    settings.setFastTables(true);
    settings.setUnicode(false);
    table.setBackendSettings(settings);
    for (const char* name : {"a", "b"}) {
      Fill(*table.AddDimension(OmStringCell(name)));
    }
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(-1);
    OmStringCell marked("marked");
    OmCellMetaData meta;
    meta.Footnotes().push_back(1);
    marked.setMeta(meta);
    table.Cell({0, 0}, marked);
    table.Cell({2, 3}, OmNumber(1));
    table.CornerText(&kCell);
    table.Caption(&kCell);
    table.SetTableTitle(kCell);
    for (const char* text : {"1", "2", "3", "4"}) {
      const OmStringCell cell(text);
      table.Footnote(OmFootnote(&cell, nullptr, nullptr), false);
    }
  }
  std::string State() { return ShowAll(table) + (made != nullptr ? ShowAll(*made) : "") + seen; }
  void Verify() { ::Verify(table); }

  OmPivotTable table{OmStringCell("title"), OmStringCell("template"), true};
  OmFootnote note{&kCell, &kCell, nullptr};
  std::unique_ptr<OmPivotTable> made;
  std::string seen;
};

struct OneKind : OmOutputPart::Visitor {
  void Visit(OmPivotTable&) override { seen = true; }
  void Visit(OmHeading&) override {}
  void Visit(OmTextBlock&) override {}
  void Visit(OmChart&) override {}
  void Visit(OmDendrix&) override {}
  void Visit(OmModel&) override {}
  void Visit(OmInteractive&) override {}

  bool seen = false;
};

TEST(Exhaustion, Tables) {
  static const Operation<Tables> kRows[] = {
      {"table", [](Tables& f) { f.made = std::make_unique<OmPivotTable>(kCell, kCell, false); }},
      {"Accept",
       [](Tables& f) {
         OneKind kind;
         f.table.OmPivotTable::Accept(kind);
         f.seen = AsText(kind.seen);
       }},
      {"EndTable", [](Tables& f) { f.table.EndTable(); }},
      // The old text is gone before the new one is made.
      {"CornerText", [](Tables& f) { f.table.CornerText(&kCell); }, After::kRepeatable},
      {"Caption", [](Tables& f) { f.table.Caption(&kCell); }, After::kRepeatable},
      {"SetTableTitle", [](Tables& f) { f.table.SetTableTitle(kCell); }, After::kRepeatable},
      {"AddDimension", [](Tables& f) { f.table.AddDimension(kCell); }},
      {"AddDimension, a copy", [](Tables& f) { f.table.AddDimension(*f.table.Dimension(0)); }},
      {"CopyDimensions",
       [](Tables& f) {
         auto other = std::make_unique<OmPivotTable>(kCell, kCell, false);
         other->CopyDimensions(f.table);
         f.made = std::move(other);
       }},
      {"FindDimension",
       [](Tables& f) { f.seen = AsText(f.table.FindDimension(OmStringCell("b"))); }},
      {"Cell, new",
       [](Tables& f) {
         f.table.Cell({4, 9}, kCell);
       }},
      {"Cell, null",
       [](Tables& f) {
         f.table.Cell({4, 9}, nullptr);
       }},
      // The old cell is gone before the new one is made, and its metadata with it.
      {"Cell, replaced",
       [](Tables& f) {
         f.table.Cell({2, 3}, kCell);
       },
       After::kRepeatable},
      {"Cell, replaced with its metadata",
       [](Tables& f) {
         f.table.Cell({0, 0}, kCell);
       },
       After::kReadable},
      {"deleteCell",
       [](Tables& f) {
         f.table.deleteCell({2, 3});
       }},
      {"iterators",
       [](Tables& f) {
         OmPivotTable::Iterator a;
         OmPivotTable::Iterator b(f.table.FirstCell());
         const OmPivotTable::Iterator copy(b);
         a = b;
         ++b;
         OmPivotTable::ConstIterator c;
         OmPivotTable::ConstIterator d(std::as_const(f.table).FirstCell());
         const OmPivotTable::ConstIterator other(d);
         c = d;
         ++d;
         f.seen = Fields(ListOf(a.Index()), ListOf(copy.Index()), ListOf(c.Index()),
                         ListOf(other.Index()), f.table.getNumCells());
       }},
      {"Footnote, known",
       [](Tables& f) {
         const OmStringCell two("2");
         f.table.Footnote(OmFootnote(&two, &two, nullptr), false);
       },
       After::kRepeatable},
      // An entry without a text is left behind on purpose.
      {"Footnote, new", [](Tables& f) { f.table.Footnote(f.note, true); }, After::kReadable},
      {"setBackendSettings",
       [](Tables& f) {
         BackendSettings settings;
         settings.setLocale(kText);
         settings.setFastTables(true);
         settings.setUnicode(false);
         f.table.setBackendSettings(settings);
         OmPivotTable fresh(kCell, kCell, false);
         fresh.Footnote(f.note, true);
         fresh.setBackendSettings(settings);
         OmPivotTable unicode(kCell, kCell, false);
         settings.setUnicode(true);
         unicode.setBackendSettings(settings);
       },
       After::kRepeatable},
      {"setHelper",
       [](Tables& f) {
         OmStringCell string("s");
         OmStringCellUTF8 utf8("u");
         OmVariable variable("v", "");
         OmNumDataValue number(1, "n");
         OmStringDataValue value("d", "");
         OmNumber untied(1);
         OmComposite composite;
         *composite.Tree().Root() = new OmStringCell("root");
         composite.Tree().Child(composite.Tree().Root(), nullptr);
         std::string shown;
         for (OmCellText* const cell : std::initializer_list<OmCellText*>{
                  &string, &utf8, &variable, &number, &value, &untied, &composite}) {
           f.table.setHelper(*cell);
           shown += Show(cell);
         }
         f.seen = shown + Show(*composite.Tree().Root());
       }},
      {"TableLocale", [](Tables& f) { f.table.TableLocale(kText); }},
      {"setBorderInfo", [](Tables& f) { f.table.setBorderInfo(kText); }},
      {"setTableLookInfo", [](Tables& f) { f.table.setTableLookInfo(kText); }},
      {"setTablePropertiesInfo", [](Tables& f) { f.table.setTablePropertiesInfo(kText); }},
      {"setTableCustomWidths",
       [](Tables& f) {
         f.table.setTableCustomWidths({1, 2});
       }},
      {"setTableCustomHeights",
       [](Tables& f) {
         f.table.setTableCustomHeights({1, 2});
       }},
      {"addMiscProperty",
       [](Tables& f) {
         std::string property = kText;
         f.table.addMiscProperty(property);
       }},
      {"styles",
       [](Tables& f) {
         f.table.emptyCellStyles()[1] = 2;
         f.table.cellStyles().resize(1);
       },
       After::kRepeatable},
      {"numbers and flags",
       [](Tables& f) {
         f.table.Show(false);
         f.table.RotateRowLabels(true);
         f.table.RotateColumnLabels(true);
         f.table.showCaption(false);
         f.table.OptionNumber(1);
         f.table.TableId(2);
         f.table.setHasMarkers();
         f.table.setBackendOwns(false);
         f.table.setFastTable(false);
         f.table.setLabelsOnly(true);
         f.table.setImputed(true);
         f.table.Scratch(true);
         f.table.MinColumnWidth(3);
         f.table.MaxColumnWidth(4);
         f.table.MinRowWidth(5);
         f.table.MaxRowWidth(6);
         f.table.setLayerLoc(7);
         f.table.setLang(8);
         f.table.setVariableMode(9);
         f.table.setValueMode(10);
         f.table.setStartColor(11);
         f.table.setEndColor(12);
         f.table.RemovedFootnotes(true);
       }},
      {"Print",
       [](Tables& f) {
         const Quiet quiet;
         f.table.Print();
         OmPivotTable bare(kCell, kCell, false);
         bare.SetTableTitle(kCell);
         bare.Print();
       }},
      {"PrintCells",
       [](Tables& f) {
         const Quiet quiet;
         OmMemoryRegion region(false);
         OmPointerVector bottom(&region);
         bottom.GrowTo(1);
         f.table.PrintCells(&bottom, 1, 0);
       }},
  };
  exhaustion::Run(kRows);
}

// A table whose list of dimensions is full.
struct Crowded : Tables {
  Crowded() {
    for (const char* name : {"c", "d"}) {
      Fill(*table.AddDimension(OmStringCell(name)));
    }
  }
};

TEST(Exhaustion, CrowdedTables) {
  static const Operation<Crowded> kRows[] = {
      {"AddDimension", [](Crowded& f) { f.table.AddDimension(kCell); }},
      {"AddDimension, a copy", [](Crowded& f) { f.table.AddDimension(*f.table.Dimension(0)); }},
  };
  exhaustion::Run(kRows);
}

// Formats leave their records in the default heap on purpose.
struct Formatted : Tables {
  static constexpr bool kLeavesRecords = true;
};

TEST(Exhaustion, FormatsOfTables) {
  static const Operation<Formatted> kRows[] = {
      {"setAreaFormat",
       [](Formatted& f) {
         auto format = std::make_unique<FormatArea>(FormatArea::kArea2);
         f.table.setAreaFormat(format.get());
         static_cast<void>(format.release());
       }},
      {"setAreaFormat, beyond the nine",
       [](Formatted& f) {
         for (int i = 0; i != 2; ++i) {
           auto format = std::make_unique<FormatArea>(static_cast<FormatArea::Area>(40));
           f.table.setAreaFormat(format.get());
           static_cast<void>(format.release());
         }
       }},
  };
  exhaustion::Run(kRows);
}

template <typename Nodes>
std::string Labels(const Nodes& nodes) {
  std::string labels;
  for (const auto* const node : nodes) {
    labels += node == nullptr ? "-," : Show((*node)->Text()) + ",";
  }
  return labels;
}

// A table of three dimensions with one heading of each kind.
struct Headings : ExhaustionFixture {
  Headings() {
    for (const char* name : {"a", "b", "c"}) {
      Fill(*table.AddDimension(OmStringCell(name)));
    }
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(2);
    table.CornerText(&kCell);
    table.Cell({1, 2, 3}, kCell);
    table.Cell({1, 4, 0}, kCell);
    table.setLayerLoc(1);
    layers = std::make_unique<OmDisplayLayerHeading>(table, true);
    rows = std::make_unique<OmDisplayRowHeading>(*layers, false, false);
    columns = std::make_unique<OmDisplayColumnHeading>(*layers, false);
  }
  std::string State() const {
    Subscripts at{-3, -3, -3};
    layers->Fill(at);
    rows->Fill(at, 0);
    columns->Fill(at, 0);
    return Fields(layers->NDimensions(), layers->getLayer(), layers->SkipEmpty(),
                  ListOf(layers->getCurrentCellIndex()), &layers->Table() == &table, rows->NRows(),
                  rows->NColumns(), rows->NDimensions(), rows->DimNamesInCorner(),
                  rows->SkipEmpty(), &rows->Table() == &table, columns->NRows(),
                  columns->NColumns(), columns->NDimensions(), columns->SkipEmpty(),
                  &columns->Table() == &table, ListOf(at), seen);
  }
  void Verify() { ::Verify(table); }

  OmPivotTable table{OmStringCell("title"), OmStringCell("template"), true};
  std::unique_ptr<OmDisplayLayerHeading> layers;
  std::unique_ptr<OmDisplayRowHeading> rows;
  std::unique_ptr<OmDisplayColumnHeading> columns;
  std::string seen;
};

TEST(Exhaustion, Headings) {
  using ConstNodes = std::vector<OmDisplayRowHeading::ConstNode*>;
  static const Operation<Headings> kRows[] = {
      {"layer heading", [](Headings& f) { const OmDisplayLayerHeading layers(f.table, true); }},
      {"layer heading, all layers",
       [](Headings& f) { const OmDisplayLayerHeading layers(f.table, false); }},
      {"row heading",
       [](Headings& f) { f.rows = std::make_unique<OmDisplayRowHeading>(*f.layers, true, true); }},
      {"column heading",
       [](Headings& f) { f.columns = std::make_unique<OmDisplayColumnHeading>(*f.layers, true); }},
      {"IsSparse", [](Headings& f) { f.seen = AsText(IsSparse(f.table)); }},
      {"header",
       [](Headings& f) {
         OmMemoryRegion region(false);
         std::unique_ptr<OmDimHeader> header(new (&region)
                                                 OmDimHeader(f.table.Dimension(0), &region));
         const std::vector<bool> include(9, true);
         f.seen = Fields(header->VisibleLevels(include), header->nodePaths.size(),
                         Labels(Category(&header->nodePaths[1])),
                         Labels(CategoryDisplay(&header->nodePaths[1], 4, true)));
       }},
      {"SwitchLayer", [](Headings& f) { f.layers->SwitchLayer(1); }},
      {"NextLayer", [](Headings& f) { f.layers->NextLayer(); }},
      {"LastLayer",
       [](Headings& f) {
         f.layers->SwitchLayer(1);
         f.layers->LastLayer();
       },
       After::kRepeatable},
      {"restoreLayer", [](Headings& f) { f.seen = AsText(f.layers->restoreLayer()); }},
      {"readers of the layers",
       [](Headings& f) {
         f.layers->SwitchLayer(0);
         OmDisplayLayerHeading::ConstNode* dim = nullptr;
         OmDisplayLayerHeading::ConstNode* cat = nullptr;
         f.layers->DimCatNodes(0, dim, cat);
         ConstNodes all;
         f.layers->DimAllNodes(0, all);
         f.seen = Fields(f.layers->VisibleWidth(0), f.layers->getDimensionIndex(0), Labels(all),
                         Labels(ConstNodes{dim, cat}), Labels(f.layers->Nodes(0)));
       },
       After::kRepeatable},
      {"reading past the end",
       [](Headings& f) {
         f.seen = Fields(f.layers->getDimensionIndex(9), f.rows->getDimensionIndex(9),
                         f.columns->getDimensionIndex(9));
       },
       After::kRepeatable},
      {"readers of the rows",
       [](Headings& f) {
         ConstNodes dims, cats, all;
         f.rows->DimCatNodes(1, dims, cats);
         f.rows->DimAllNodes(1, all);
         std::string corner;
         for (const OmCellText* const text : f.rows->CornerText()) {
           corner += Show(text);
         }
         f.seen = Fields(Labels(f.rows->Row(1)), Labels(f.rows->RowCategories(1)),
                         Labels(f.rows->Column(0)), Labels(dims), Labels(cats), Labels(all),
                         ListOf(f.rows->getNonEmptyRows()), f.rows->VisibleWidth(0), corner);
       }},
      {"readers of the columns",
       [](Headings& f) {
         ConstNodes dims, cats, all;
         f.columns->DimCatNodes(1, dims, cats);
         f.columns->DimAllNodes(1, all);
         f.seen = Fields(Labels(f.columns->Column(1)), Labels(f.columns->ColumnCategories(1)),
                         Labels(f.columns->Row(0)), Labels(dims), Labels(cats), Labels(all),
                         ListOf(f.columns->getNonEmptyColumns()), f.columns->VisibleHeight(0));
       }},
  };
  exhaustion::Run(kRows);
}

}  // namespace
