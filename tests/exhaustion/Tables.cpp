// The table of operations: dimensions, pivot tables and their headings.

#include "backend/tables/om/om.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/IcuTracker.h"
#include "tests/exhaustion/Exhaustion.h"

namespace {

using Node = OmDimension::Node;

const std::string kText = "twenty-four bytes of it.";
const OmStringCell kCell(kText);
const OmStringCell kTwo("2");

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
  std::string State() const { return Show(dimension); }
  void Verify() { ::Verify(dimension); }
  void Nodes() {
    const OmDimensionNode bare(&region);
    OmDimensionNode full(kCell, 3, true, &region);
    full.ChildIndex().push_back(4);
    const OmDimensionNode moved(full, nullptr), copy(full);
    seen = Fields(bare.Text() == nullptr, Show(moved), full == copy, full < copy);
  }
  void Readers() {
    std::vector<unsigned long> counts(9, 0);
    dimension.getGroupCountsByLevel(dimension.Root(), counts);
    const OmDimension::ConstNode root = dimension.Root();
    const OmDimension::Less less(root, node);
    OmDimension other(dimension, &region);
    seen = Fields(dimension.FindChild(dimension.Root(), OmStringCell("c"), false),
                  dimension.getDepth(dimension.Root()), dimension.getMaximumDepth(), ListOf(counts),
                  dimension.getMaxVisibleGroupCount(), less(0, 1),
                  Show(*other.Counterpart(Ref(At(1)[0]))));
  }

  OmDimensionNode node{OmStringCell("root"), ~0UL, true, nullptr};
  OmDimension dimension{node, &region};
};

TEST(Exhaustion, Dimensions) {
  UNCHANGED(Dimensions, f.Nodes(), f.node.Print(2), f.Readers(),
            f.seen = Show(OmDimension(f.node, &f.region)),
            f.seen = Show(OmDimension(f.dimension, nullptr)),
            f.dimension.Child(f.dimension.Root(), kCell, 9, false),
            f.dimension.Child(f.dimension.Root(), OmStringCell("c"), 9, false),
            f.dimension.Child(f.dimension.Root(), f.node),
            f.dimension.AddNewChild(f.At(1), kCell, 9, false),
            (f.dimension.Delete(Ref(f.At(0))), f.dimension.Relocate(true)),
            f.dimension.insertCategory(kCell, f.At(0), f.dimension.Root(), true),
            f.dimension.insertChild(kCell, {&Ref(f.At(0)), &Ref(f.At(2))}),
            f.dimension.moveChild(Ref(f.At(0)), &Ref(f.At(2)), false),
            f.dimension.moveChild(Ref(f.At(0)), &Ref(f.At(2)), true),
            f.dimension.swapChildren(Ref(f.At(0)), Ref(f.At(2))),
            f.dimension.InsertChild(f.node, f.At(0), f.dimension.Root(), true),
            f.dimension.InsertChild(f.node, {&Ref(f.At(0)), &Ref(f.At(2))}),
            f.dimension.removeChild(Ref(f.At(0))));
  // The group is hidden first, and stays so.
  REPEATABLE(Dimensions,
             (f.At(0)->Hide(true), f.dimension.moveChild(Ref(f.At(0)[1]), nullptr, false)));
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
  shown += Fields(table.MinColumnWidth(), table.MaxColumnWidth(), table.MinRowWidth(),
                  table.MaxRowWidth(), table.StoredCells(), table.getLayerLoc(), table.getLang(),
                  table.getVariableMode(), table.getValueMode(), table.getStartColor(),
                  table.getEndColor(), table.getBorderInfo(), table.getTableLookInfo(),
                  table.getTablePropertiesInfo(), ListOf(table.getTableCustomWidths()),
                  ListOf(table.getTableCustomHeights()), table.getEmptyCellStyles().size(),
                  table.emptyCellStyles().size(), table.getCellStyles().size(),
                  table.cellStyles().size(), table.getMiscProperties());
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

template <typename Cursor>
std::string Walk(Cursor first) {
  Cursor cursor;
  const Cursor copy(first);
  cursor = first;
  ++first;
  return Fields(ListOf(cursor.Index()), ListOf(copy.Index()), ListOf(first.Index()));
}

// A table whose list of dimensions is full, with cells, every text, footnotes and trackers.
struct Tables : ExhaustionFixture {
  Tables() {
    BackendSettings settings;
    settings.setFastTables(true);
    settings.setUnicode(false);
    table.setBackendSettings(settings);
    for (const char* name : {"a", "b", "c", "d"}) {
      Fill(*table.AddDimension(OmStringCell(name)));
    }
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(2);
    table.Layers().push_back(3);
    table.setLayerLoc(1);
    OmStringCell marked("marked");
    OmCellMetaData meta;
    meta.Footnotes().push_back(1);
    marked.setMeta(meta);
    table.Cell({0, 0, 0, 0}, marked);
    table.Cell({2, 3, 1, 0}, OmNumber(1));
    table.CornerText(&kCell);
    table.Caption(&kCell);
    table.SetTableTitle(kCell);
    for (const char* text : {"1", "2", "3", "4"}) {
      const OmStringCell cell(text);
      table.Footnote(OmFootnote(&cell, nullptr, nullptr), false);
    }
  }
  std::string State() { return ShowAll(table); }
  void Verify() { ::Verify(table); }
  void CopyDimensions() {
    OmPivotTable other(kCell, kCell, false);
    other.CopyDimensions(table);
    seen = ShowAll(other);
  }
  void Settings() {
    BackendSettings settings;
    settings.setLocale(kText);
    settings.setFastTables(true);
    OmPivotTable fresh(kCell, kCell, false);
    fresh.Footnote(note, true);
    fresh.setBackendSettings(settings);
    settings.setUnicode(false);
    OmPivotTable(kCell, kCell, false).setBackendSettings(settings);
    table.setBackendSettings(settings);
  }
  void Helper() {
    OmStringCell string("s");
    OmComposite composite;
    *composite.Tree().Root() = new OmStringCell("root");
    composite.Tree().Child(composite.Tree().Root(), nullptr);
    table.setHelper(string), table.setHelper(composite);
    seen = Show(&string) + Show(&composite) + Show(*composite.Tree().Root());
  }
  void Print() {
    OmPivotTable bare(kCell, kCell, false);
    bare.SetTableTitle(kCell);
    OmPointerVector bottom(&region);
    bottom.GrowTo(1);
    bare.Print(), table.Print(), table.PrintCells(&bottom, 3, 0);
  }

  OmPivotTable table{OmStringCell("title"), OmStringCell("template"), true};
  OmFootnote note{&kCell, &kCell, nullptr};
};

// One of the dimensions is on no axis.
struct WrongTables : Tables {
  WrongTables() { table.Rows().clear(); }
  void Contradict() {
    std::ostream nowhere(nullptr);
    std::string found = AsText(om::Contradictions(*table.Dimension(0)).size());
    for (const om::Finding& finding : om::Contradictions(table)) {
      nowhere << finding;
      found += finding.sentence;
    }
    for (std::vector<int> cell; table.NextCell(cell) != nullptr;) {
      found += ListOf(cell);
    }
    seen = found;
  }
};

TEST(Exhaustion, Tables) {
  UNCHANGED(Tables, OmPivotTable(kCell, kCell, false), f.seen = AsText(f.table.getNumCells()),
            f.table.EndTable(), f.table.AddDimension(kCell),
            f.table.AddDimension(*f.table.Dimension(0)), f.CopyDimensions(),
            f.seen = AsText(f.table.FindDimension(OmStringCell("b"))),
            f.table.Cell({4, 9, 0, 0}, kCell), f.table.Cell({4, 9, 0, 0}, nullptr),
            f.table.deleteCell({2, 3, 1, 0}), f.seen = Walk(f.table.FirstCell()),
            f.seen = Walk(std::as_const(f.table).FirstCell()), f.Helper(), f.Print());
  UNCHANGED(Tables, f.table.TableLocale(kText), f.table.setBorderInfo(kText),
            f.table.setTableLookInfo(kText), f.table.setTablePropertiesInfo(kText),
            f.table.setTableCustomWidths({1, 2}), f.table.setTableCustomHeights({1, 2}),
            f.table.addMiscProperty(Ref(std::string(kText))));
  UNCHANGED(Tables,
            (f.table.Show(false), f.table.RotateRowLabels(true), f.table.RotateColumnLabels(true),
             f.table.showCaption(false), f.table.OptionNumber(1), f.table.TableId(2),
             f.table.setHasMarkers(), f.table.setBackendOwns(false), f.table.setFastTable(false),
             f.table.setLabelsOnly(true), f.table.setImputed(true), f.table.Scratch(true),
             f.table.MinColumnWidth(3), f.table.MaxColumnWidth(4), f.table.MinRowWidth(5),
             f.table.MaxRowWidth(6), f.table.setLayerLoc(7), f.table.setLang(8),
             f.table.setVariableMode(9), f.table.setValueMode(10), f.table.setStartColor(11),
             f.table.setEndColor(12), f.table.RemovedFootnotes(true)));
  // The old text or cell is gone before the new one is made, and a cell's metadata with it.
  REPEATABLE(Tables, f.table.CornerText(&kCell), f.table.Caption(&kCell),
             f.table.SetTableTitle(kCell), f.table.Cell({2, 3, 1, 0}, kCell), f.Settings(),
             f.table.Footnote(OmFootnote(&kTwo, &kTwo, nullptr), false),
             (f.table.emptyCellStyles()[1] = 2, f.table.cellStyles().resize(1)));
  UNCHANGED(WrongTables, f.Contradict());
  // A new footnote leaves an entry without a text behind on purpose.
  READABLE(Tables, f.table.Cell({0, 0, 0, 0}, kCell), f.table.Footnote(f.note, true));
}

// So many footnotes that they are looked up; nobody has the writable list.
struct ManyFootnotes : ExhaustionFixture {
  ManyFootnotes() {
    for (int i = 0; i != 20; ++i) {
      const OmStringCell text(std::to_string(i));
      table.Footnote(OmFootnote(&text, nullptr, nullptr), true);
    }
  }
  std::string State() const { return Show(table.Footnotes()); }

  OmFootnote note{&kTwo, nullptr, nullptr};
  OmPivotTable table{kCell, kCell, false};
};

TEST(Exhaustion, ManyFootnotes) {
  UNCHANGED(ManyFootnotes, f.seen = AsText(f.table.Footnote(f.note, false)));
}

template <typename Nodes>
std::string Labels(const Nodes& nodes) {
  std::string labels;
  for (const auto* const node : nodes) {
    labels += node == nullptr ? "-," : Show((*node)->Text()) + ",";
  }
  return labels;
}

// One heading of each kind on the table.
struct Headings : Tables {
  using ConstNodes = std::vector<OmDisplayRowHeading::ConstNode*>;

  std::string State() {
    std::vector<int> at{-3, -3, -3, -3};
    layers.Fill(at);
    rows.Fill(at, 0);
    columns.Fill(at, 0);
    return Tables::State() + ListOf(at) +
           Fields(layers.NDimensions(), layers.getLayer(), layers.SkipEmpty(),
                  ListOf(layers.getCurrentCellIndex()), &layers.Table() == &table);
  }
  void Header() {
    std::unique_ptr<OmDimHeader> header(new (&region) OmDimHeader(table.Dimension(0), &region));
    const std::vector<bool> include(9, true);
    seen = Fields(header->VisibleLevels(include), header->nodePaths.size(),
                  Labels(Category(&header->nodePaths[1])),
                  Labels(CategoryDisplay(&header->nodePaths[1], 4, true)));
  }
  void ReadLayers() {
    layers.SwitchLayer(0);
    OmDisplayLayerHeading::ConstNode *dim = nullptr, *cat = nullptr;
    layers.DimCatNodes(0, dim, cat);
    ConstNodes all;
    layers.DimAllNodes(0, all);
    seen = Fields(layers.VisibleWidth(0), layers.getDimensionIndex(0), Labels(all),
                  Labels(ConstNodes{dim, cat}), Labels(layers.Nodes(0)), layers.NLayers(),
                  ListOf(layers.getNonEmptyLayers()),
                  ListOf(OmDisplayLayerHeading(table, false).getNonEmptyLayers()));
  }
  // What rows and columns have in common.
  template <typename Heading>
  std::string Read(const Heading& heading) {
    ConstNodes dims, cats, all;
    heading.DimCatNodes(1, dims, cats);
    heading.DimAllNodes(1, all);
    return Fields(heading.NRows(), heading.NColumns(), heading.NDimensions(), heading.SkipEmpty(),
                  &heading.Table() == &table, Labels(heading.Row(0)), Labels(heading.Column(0)),
                  ListOf(heading.LabelDimensions()), Labels(dims), Labels(cats), Labels(all));
  }
  void ReadRows() {
    seen = Read(rows) + Fields(Labels(rows.RowCategories(1)), ListOf(rows.getNonEmptyRows()),
                               rows.VisibleWidth(0), rows.DimNamesInCorner(),
                               Show(rows.CornerText().front()));
  }
  void ReadColumns() {
    seen = Read(columns) + Fields(Labels(columns.ColumnCategories(1)), columns.VisibleHeight(0),
                                  ListOf(columns.getNonEmptyColumns()));
  }

  OmDisplayLayerHeading layers{table, true};
  OmDisplayRowHeading rows{layers, false, false};
  OmDisplayColumnHeading columns{layers, false};
};

TEST(Exhaustion, Headings) {
  UNCHANGED(Headings, OmDisplayLayerHeading(f.table, true), OmDisplayLayerHeading(f.table, false),
            OmDisplayRowHeading(f.layers, true, true), OmDisplayColumnHeading(f.layers, true),
            f.seen = AsText(IsSparse(f.table)), f.Header(), f.layers.SwitchLayer(1),
            f.layers.NextLayer(), f.seen = AsText(f.layers.restoreLayer()), f.ReadRows(),
            f.ReadColumns());
  REPEATABLE(Headings, (f.layers.SwitchLayer(1), f.layers.LastLayer()), f.ReadLayers(),
             f.seen = Fields(f.layers.getDimensionIndex(9), f.rows.getDimensionIndex(9),
                             f.columns.getDimensionIndex(9)));
}

}  // namespace
