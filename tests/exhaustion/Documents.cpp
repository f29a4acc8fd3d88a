// The table of operations: output items, their formats and their document.

#include <type_traits>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"
#include "tests/exhaustion/Exhaustion.h"

// The records of formats stay in the default heap on purpose.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:FormatArea";
}

namespace {

constexpr char kBytes[] = "twenty-four bytes of it";
constexpr unsigned int kSize = sizeof kBytes;
const std::string kText = kBytes;
const OMSException kError(kBytes, 1, 2);

// Hands on what is of two kinds as the other one.
template <typename Visitor, template <typename> typename Of>
struct KindsOf : Visitor {
  void Visit(Of<OmProcedure>& item) override { kinds += 'p', Visitor::Visit(item); }
  void Visit(Of<OmPageTitle>& item) override { kinds += 'g', Visitor::Visit(item); }
  void Visit(Of<OmPivotTable>&) override { kinds += 't'; }
  void Visit(Of<OmHeading>&) override { kinds += 'h'; }
  void Visit(Of<OmTextBlock>&) override { kinds += 'b'; }
  void Visit(Of<OmChart>&) override { kinds += 'c'; }
  void Visit(Of<OmDendrix>&) override { kinds += 'd'; }
  void Visit(Of<OmModel>&) override { kinds += 'm'; }
  void Visit(Of<OmInteractive>&) override { kinds += 'i'; }

  std::string kinds;
};
using Kinds = KindsOf<OmOutputPart::Visitor, std::type_identity_t>;
using ConstKinds = KindsOf<OmOutputPart::ConstVisitor, std::add_const_t>;

// An item of every kind but the table.
struct Items : ExhaustionFixture {
  Items() {
    chart.Done("\1\0\0\0\2\0\0");
    chart.SetMapInfo("\1\0\3\0\0\0abc\1\0d", 12);
    composite.Tree().Child(composite.Tree().Root(), nullptr);
  }
  std::string State() {
    return Fields(Show(heading.Title()), Show(heading.Footnotes()), Show(procedure.Title()),
                  procedure.OutlineText(), procedure.TextA(), procedure.ExtraText(), block.Text(),
                  page.Text(), chart.GetXmlDescription(), chart.GetXmlData(), chart.GetImageData(),
                  chart.GetViZJSONData(), chart.GetChartSubType(), chart.GetEditable(),
                  chart.GetEditor(), chart.LocaleCodePage(), chart.getChartId(), chart.hasCSVFile(),
                  ListOf(chart.getCSVFileNames()), ListOf(chart.getCSVFiles()),
                  chart.hasGeoJSONFile(), ListOf(chart.getGeoJSONFileNames()),
                  ListOf(chart.getGeoJSONContent()), chart.hasMap(), chart.getVizJSONTemplate(),
                  chart.getOptions(), std::as_const(chart).getOptions(),
                  chart.getGraphServiceOptions(), chart.getGraphServiceVariables()) +
           Fields(model.GetPMML(), model.GetBinaryDataStream(), model.GetPMMLContainer(),
                  model.GetStatXMLContainer(), model.GetModelType(), dendrix.GetTreeType(),
                  dendrix.GetPath(), dendrix.GetCompressedXml(), dendrix.GetXmlUncompressedLength(),
                  dendrix.GetUncompressedXml(), dendrix.GetUncompressedDisplayXML(),
                  interactive.LocaleCodePage(), interactive.getInteractiveId(),
                  interactive.hasGeoJSONFile(), ListOf(interactive.getGeoJSONFileNames()),
                  ListOf(interactive.getGeoJSONContent()), interactive.getInteractiveJSON(),
                  interactive.getProcedureName(), interactive.getJSONPath(),
                  std::as_const(interactive).getJSONPath(), interactive.getOptions(),
                  std::as_const(interactive).getOptions());
  }
  template <typename Of, typename To>
  static void VisitAll(Of& of, To& visitor) {
    of.heading.Accept(visitor), of.procedure.Accept(visitor), of.block.Accept(visitor);
    of.page.Accept(visitor), of.chart.Accept(visitor), of.model.Accept(visitor);
    of.dendrix.Accept(visitor), of.interactive.Accept(visitor);
  }
  void Visits() {
    OmPivotTable table(title, title, false);
    Kinds visitor;
    VisitAll(*this, visitor);
    table.Accept(visitor);
    ConstKinds reader;
    VisitAll(std::as_const(*this), reader);
    std::as_const(table).Accept(reader);
    seen = Fields(visitor.kinds, reader.kinds, std::as_const(heading).Title()->Text());
    EXPECT_EQ(seen, "hphbgbcmdit|hphbgbcmdit|title|");
  }
  void MapInfo() {
    std::string texts[4];
    chart.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
    seen = ListOf(texts);
  }
  void FirstNumber() {
    seen = Fields(OmUtility::GetFirstNumber(composite) == nullptr,
                  OmUtility::GetFirstNumber(std::as_const(composite).Tree().Root()) == nullptr);
  }

  OmStringCell title{"title"};
  OmHeading heading{title};
  OmProcedure procedure{title, "a", "b", "c"};
  OmTextBlock block{title, kText};
  OmPageTitle page{kText};
  OmChart chart{title, "", 7};
  OmModel model{title};
  OmDendrix dendrix{title, kText};
  OmInteractive interactive{title, "UTF-8", 7};
  OmComposite composite;
};

TEST(Exhaustion, Items) {
  UNCHANGED(Items, OmHeading(f.title), OmProcedure(f.title, kText, kText, kText),
            OmTextBlock(f.title, kText), OmPageTitle(kText), OmChart(f.title, "", 1),
            OmModel(f.title), OmDendrix(f.title, kText), f.Visits(), f.MapInfo(),
            OMSException(kBytes), f.seen = OMSException(kError).what(), f.FirstNumber(),
            f.block.Lines().push_back(kText));
  // What cannot be converted, for whatever reason, stays unconverted.
  READABLE(Items, OmChart(f.title, "UTF-16BE", 1), OmInteractive(f.title, "UTF-8", 1));
  // The old title is gone before the new one is made; the type of a container comes first.
  REPEATABLE(Items, f.block.SetTitle(OmStringCell(kText)),
             f.procedure.setOutlineText(OmStringCell(kText)),
             (f.procedure.TextA(kText), f.procedure.TextB(kText), f.procedure.TextC(kText),
              f.procedure.ExtraText(kText)),
             f.model.SetPMMLContainer(kBytes, kSize), f.model.SetStatXMLContainer(kBytes, kSize));
  UNCHANGED(Items, f.chart.SetXmlDescription(kBytes, kSize), f.chart.SetXmlUncompressedLength(9),
            f.chart.SetXmlCompressedLength(99), f.chart.SetBinaryDataStream(kBytes, kSize),
            f.chart.SetImageStream(kBytes, kSize), f.chart.SetViZJSON(kBytes, kSize),
            f.chart.SetImageSubType(kChartSubTypeNone), f.chart.Done(kBytes), f.chart.deleteData(),
            f.chart.addCSVFileName(kBytes, kSize), f.chart.addCSVFileContent(kBytes, kSize),
            f.chart.addGeoJSONFileName(kBytes, kSize), f.chart.addGeoJSONFileContent(kBytes, kSize),
            f.chart.SetMapInfo(kBytes, kSize), f.chart.setVizJSONTemplate(kBytes, kSize),
            f.chart.setOptions(kText), f.chart.setGraphServiceOptions(kBytes, kSize),
            f.chart.setGraphServiceVariables(kBytes, kSize));
  UNCHANGED(Items, f.model.SetPMML(kBytes, kSize), f.model.SetBinaryDataStream(kBytes, kSize),
            f.model.SetModelType(OmModel::kModelContainer), f.dendrix.SetTreeType(3),
            f.dendrix.SetPath(kBytes, kSize), f.dendrix.SetCompressedXML(kBytes, kSize, 99),
            f.dendrix.SetUncompressedXML(kBytes, kSize),
            f.dendrix.SetUncompressedDisplayXML(kBytes, kSize), f.dendrix.Done());
  UNCHANGED(Items, f.interactive.addGeoJSONFileName(kBytes, kSize),
            f.interactive.addGeoJSONFileContent(kBytes, kSize),
            f.interactive.setInteractiveJSON(kBytes, kSize), f.interactive.setProcedureName(kText),
            f.interactive.setJSONPath(kText), f.interactive.setOptions(kText));
}

struct Formats : ExhaustionFixture {
  static constexpr bool kLeavesRecords = true;

  std::string State() const {
    return Fields(format.getArea(), format.getFontName(), format.getFontSize(),
                  format.getFontStyle(), format.getUnderline(), format.getHorizontalAlignment(),
                  format.getVerticalAlignment(), format.getMarginLeft(), format.getMarginRight(),
                  format.getMarginTop(), format.getMarginBottom(), format.getTextColor(),
                  format.getBackgroundColor(), format.getUseAltRowColors(),
                  format.getAlternateTextColor(), format.getAlternateBackgroundColor(),
                  table.getAreaFormat(FormatArea::kArea2) != nullptr);
  }
  void Set(int area) {
    auto handle = std::make_unique<FormatArea>(static_cast<FormatArea::Area>(area));
    table.setAreaFormat(handle.get());
    static_cast<void>(handle.release());
  }

  // Hands a format over, and takes it along where the call fails.
  void HandOver(int area) {
    auto handle = std::make_unique<FormatArea>(static_cast<FormatArea::Area>(area));
    try {
      table.setAreaFormat(std::move(handle));
    } catch (...) {
      EXPECT_NE(handle, nullptr);
      throw;
    }
    EXPECT_EQ(handle, nullptr);
  }

  FormatArea format{FormatArea::kArea1};
  OmPivotTable table{OmStringCell("a"), OmStringCell("b"), false};
};

TEST(Exhaustion, Formats) {
  UNCHANGED(Formats, FormatArea(FormatArea::kArea8), f.format.setFontName(kText),
            f.format.setTextColor(kText), f.format.setBackgroundColor(kText),
            f.format.setAlternateTextColor(kText), f.format.setAlternateBackgroundColor(kText),
            (f.format.setFontSize(9), f.format.setFontStyle(1), f.format.setUnderline(true),
             f.format.setHorizontalAlignment(2), f.format.setVerticalAlignment(3),
             f.format.setMarginLeft(4), f.format.setMarginRight(5), f.format.setMarginTop(6),
             f.format.setMarginBottom(7), f.format.setUseAltRowColors(true)),
            f.Set(FormatArea::kArea2), f.HandOver(FormatArea::kArea2),
            // Beyond the nine.
            (f.Set(40), f.Set(40)));
}

using List = ListTree<OmOutputPart*>;
using Node = List::Node;

// Root, a heading with two items, an item of three levels, and a footnote.
struct Documents : ExhaustionFixture {
  Documents() {
    Node heading = Add(Root(), "heading");
    Add(Add(Add(heading, "item"), "below"), "deeper");
    Add(heading, "last");
  }
  static Node Add(Node parent, const char* title) {
    return parent.Child(new OmHeading(OmStringCell(title)));
  }
  Node Root() { return tree.Root(); }
  Node Item() { return Root().Begin().Begin(); }
  std::string State() {
    std::string shown = Show(note);
    for (ListTreeData<OmOutputPart*>& entry : tree.List()) {
      shown += Fields(entry.Level(), entry.Data() == nullptr ? "" : Show(entry.Data()->Title()));
    }
    return shown;
  }
  void Verify() { ::Verify(tree); }
  void Readers() {
    const Node root = Root();
    Node node = Item();
    ++node;
    seen = Fields(Show((*root)->Title()), root.IsLeaf(), node.HasChild(), node == root.End(),
                  node != root.End(), node.Level(), &root.Tree() == &tree,
                  tree.SearchForward(tree.List().begin(), 0) == tree.List().end());
  }
  // Hands an item over, and takes it along where the call fails.
  void HandOver() {
    auto item = std::make_unique<OmHeading>(text);
    try {
      Item().Child(std::move(item));
    } catch (...) {
      EXPECT_NE(item, nullptr);
      throw;
    }
    EXPECT_EQ(item, nullptr);
  }
  // The list alone leaves the items of its entries to their owner. So many that it makes entries in
  // advance where there is memory.
  void Alone() {
    List list(nullptr);
    Node root(list, list.List().begin());
    for (int i = 0; i != 16; ++i) {
      root.Child(nullptr).Child(nullptr);
    }
    list.Erase(Ref(root.Begin()));
    list.Prune(root.Begin());
    seen = AsText(list.List().size());
  }

  OmStringCell text{kText};
  OmFootnote note{&text, nullptr, &region};
  OmOutputTree tree;
};

// A table whose dimension is on no axis, at a level that is too deep.
struct WrongDocuments : Documents {
  WrongDocuments() {
    auto* const table = new OmPivotTable(text, text, false);
    Root().Child(table);
    tree.List().back().Level() = 7;
    table->AddDimension(text);
  }
  void Contradict() {
    std::string found;
    for (const om::Finding& finding : om::Contradictions(tree)) {
      found += finding.sentence;
    }
    seen = found;
  }
  void Verify() {}
};

TEST(Exhaustion, Documents) {
  UNCHANGED(Documents, OmOutputTree(), f.Readers(), f.Item().Child(nullptr), f.HandOver(),
            f.tree.Prune(Ref(f.Item())), f.tree.Erase(Ref(f.Item())), f.tree.Flatten(Ref(f.Item())),
            f.Alone(), Amputate(f.Item(), nullptr, kText),
            Amputate(f.Root().Begin(), &f.text, kText), OmFootnote(&f.text, &f.text, nullptr),
            f.seen = AsText(OmFootnote(f.note) == f.note), f.note.Marker(&f.text));
  // The old text is gone before the new one is made.
  REPEATABLE(Documents, f.note.Text(OmStringCell("new")));
  UNCHANGED(WrongDocuments, f.Contradict());
}

}  // namespace
