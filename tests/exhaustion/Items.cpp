// The table of operations: output items and their document.

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "backend/tables/om/Utility.h"
#include "platform/cells/CellTexts.h"
#include "tests/exhaustion/Exhaustion.h"
#include "tests/support/Show.h"
#include "tests/support/Walkers.h"

namespace {

using Node = ListTree<OmOutputPart*>::Node;

constexpr char kBytes[] = "twenty-four bytes of it";
constexpr unsigned int kSize = sizeof kBytes;
const std::string kText = kBytes;

struct Kinds : OmOutputPart::Visitor {
  using OmOutputPart::Visitor::Visit;
  void Visit(OmPivotTable&) override { kind = 't'; }
  void Visit(OmHeading&) override { kind = 'h'; }
  void Visit(OmTextBlock&) override { kind = 'b'; }
  void Visit(OmChart&) override { kind = 'c'; }
  void Visit(OmDendrix&) override { kind = 'd'; }
  void Visit(OmModel&) override { kind = 'm'; }
  void Visit(OmInteractive&) override { kind = 'i'; }

  char kind = 0;
};

// An item of every kind but the table.
struct Items : ExhaustionFixture {
  Items() { chart.OmChart::Done("\1\0\0\0\2\0\0"); }
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
                  std::as_const(interactive).getOptions(), seen,
                  made == nullptr ? "none" : Show(made->Title()));
  }
  void Verify() { ::Verify(heading.Footnotes()); }

  OmStringCell title{"title"};
  OmHeading heading{title};
  OmProcedure procedure{title, "a", "b", "c"};
  OmTextBlock block{title, kText};
  OmPageTitle page{kText};
  OmChart chart{title, "", 7};
  OmModel model{title};
  OmDendrix dendrix{title, kText};
  OmInteractive interactive{title, "UTF-8", 7};
  std::unique_ptr<OmOutputPart> made;
  std::string seen;
};

template <typename Item>
char KindOf(Item& item) {
  Kinds kinds;
  item.Item::Accept(kinds);
  return kinds.kind;
}

// A row that calls one operation of one item.
#define ITEM(object, call)                              \
  {                                                     \
#object "." #call, [](Items & f) { f.object.call; } \
  }

TEST(Exhaustion, Items) {
  static const Operation<Items> kRows[] = {
      {"heading", [](Items& f) { f.made = std::make_unique<OmHeading>(f.title); }},
      {"procedure",
       [](Items& f) { f.made = std::make_unique<OmProcedure>(f.title, kText, kText, kText); }},
      {"block", [](Items& f) { f.made = std::make_unique<OmTextBlock>(f.title, kText); }},
      {"page", [](Items& f) { f.made = std::make_unique<OmPageTitle>(kText); }},
      {"chart", [](Items& f) { f.made = std::make_unique<OmChart>(f.title, "", 1); }},
      // What cannot be converted, for whatever reason, stays unconverted.
      {"chart, converted",
       [](Items& f) { f.made = std::make_unique<OmChart>(f.title, "UTF-16BE", 1); },
       After::kReadable},
      {"model", [](Items& f) { f.made = std::make_unique<OmModel>(f.title); }},
      {"dendrix", [](Items& f) { f.made = std::make_unique<OmDendrix>(f.title, kText); }},
      {"interactive",
       [](Items& f) { f.made = std::make_unique<OmInteractive>(f.title, "UTF-8", 1); },
       After::kReadable},
      {"Accept",
       [](Items& f) {
         f.seen = {KindOf(f.heading), KindOf(f.procedure),  KindOf(f.block),
                   KindOf(f.page),    KindOf(f.chart),      KindOf(f.model),
                   KindOf(f.dendrix), KindOf(f.interactive)};
       }},
      // The old title is gone before the new one is made.
      {"SetTitle", [](Items& f) { f.block.SetTitle(OmStringCell(kText)); }, After::kRepeatable},
      {"setOutlineText", [](Items& f) { f.procedure.setOutlineText(OmStringCell(kText)); },
       After::kRepeatable},
      {"texts of a procedure",
       [](Items& f) {
         f.procedure.TextA(kText);
         f.procedure.TextB(kText);
         f.procedure.TextC(kText);
         f.procedure.ExtraText(kText);
       },
       After::kRepeatable},
      ITEM(block, Lines().push_back(kText)),
      ITEM(chart, OmChart::SetXmlDescription(kBytes, kSize)),
      ITEM(chart, OmChart::SetXmlUncompressedLength(9)),
      ITEM(chart, OmChart::SetXmlCompressedLength(99)),
      ITEM(chart, OmChart::SetBinaryDataStream(kBytes, kSize)),
      ITEM(chart, OmChart::SetImageStream(kBytes, kSize)),
      ITEM(chart, OmChart::SetViZJSON(kBytes, kSize)),
      ITEM(chart, OmChart::SetImageSubType(kChartSubTypeNone)),
      ITEM(chart, OmChart::Done(kBytes)),
      ITEM(chart, deleteData()),
      ITEM(chart, addCSVFileName(kBytes, kSize)),
      ITEM(chart, addCSVFileContent(kBytes, kSize)),
      ITEM(chart, addGeoJSONFileName(kBytes, kSize)),
      ITEM(chart, addGeoJSONFileContent(kBytes, kSize)),
      ITEM(chart, SetMapInfo(kBytes, kSize)),
      ITEM(chart, setVizJSONTemplate(kBytes, kSize)),
      ITEM(chart, setOptions(kText)),
      ITEM(chart, setGraphServiceOptions(kBytes, kSize)),
      ITEM(chart, setGraphServiceVariables(kBytes, kSize)),
      {"getMapInfo",
       [](Items& f) {
         const std::string record("\1\0\3\0\0\0abc\1\0d", 12);
         OmChart map(f.title, "", 1);
         map.SetMapInfo(record.data(), static_cast<unsigned int>(record.size()));
         std::string texts[4];
         map.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
         f.seen = ListOf(texts);
       }},
      ITEM(model, OmModel::SetPMML(kBytes, kSize)),
      ITEM(model, OmModel::SetBinaryDataStream(kBytes, kSize)),
      // The type comes first, on purpose.
      {"SetPMMLContainer", [](Items& f) { f.model.OmModel::SetPMMLContainer(kBytes, kSize); },
       After::kRepeatable},
      {"SetStatXMLContainer", [](Items& f) { f.model.OmModel::SetStatXMLContainer(kBytes, kSize); },
       After::kRepeatable},
      ITEM(model, SetModelType(OmModel::kModelContainer)),
      ITEM(dendrix, OmDendrix::SetTreeType(3)),
      ITEM(dendrix, OmDendrix::SetPath(kBytes, kSize)),
      ITEM(dendrix, OmDendrix::SetCompressedXML(kBytes, kSize, 99)),
      ITEM(dendrix, OmDendrix::SetUncompressedXML(kBytes, kSize)),
      ITEM(dendrix, OmDendrix::SetUncompressedDisplayXML(kBytes, kSize)),
      ITEM(dendrix, OmDendrix::Done()),
      ITEM(interactive, addGeoJSONFileName(kBytes, kSize)),
      ITEM(interactive, addGeoJSONFileContent(kBytes, kSize)),
      ITEM(interactive, setInteractiveJSON(kBytes, kSize)),
      ITEM(interactive, setProcedureName(kText)),
      ITEM(interactive, setJSONPath(kText)),
      ITEM(interactive, setOptions(kText)),
      {"exception",
       [](Items& f) {
         const OMSException plain(kBytes);
         const OMSException numbers(kBytes, 1, 2);
         const OMSException copy(numbers);
         f.seen = std::string(plain.what()) + copy.what();
       }},
      {"GetFirstNumber",
       [](Items& f) {
         OmComposite composite;
         composite.Tree().Child(composite.Tree().Root(), nullptr);
         const auto root = std::as_const(composite).Tree().Root();
         f.seen = Fields(OmUtility::GetFirstNumber(composite) == nullptr,
                         OmUtility::GetFirstNumber(root) == nullptr);
       }},
  };
  exhaustion::Run(kRows);
}

// The records of formats stay in the default heap on purpose.
struct Formats : ExhaustionFixture {
  static constexpr bool kLeavesRecords = true;

  std::string State() const {
    return Fields(format.getArea(), format.getFontName(), format.getFontSize(),
                  format.getFontStyle(), format.getUnderline(), format.getHorizontalAlignment(),
                  format.getVerticalAlignment(), format.getMarginLeft(), format.getMarginRight(),
                  format.getMarginTop(), format.getMarginBottom(), format.getTextColor(),
                  format.getBackgroundColor(), format.getUseAltRowColors(),
                  format.getAlternateTextColor(), format.getAlternateBackgroundColor());
  }
  void Verify() {}

  FormatArea format{FormatArea::kArea1};
};

TEST(Exhaustion, Formats) {
  static const Operation<Formats> kRows[] = {
      {"format", [](Formats&) { const FormatArea format(FormatArea::kArea8); }},
      {"setFontName", [](Formats& f) { f.format.setFontName(kText); }},
      {"setTextColor", [](Formats& f) { f.format.setTextColor(kText); }},
      {"setBackgroundColor", [](Formats& f) { f.format.setBackgroundColor(kText); }},
      {"setAlternateTextColor", [](Formats& f) { f.format.setAlternateTextColor(kText); }},
      {"setAlternateBackgroundColor",
       [](Formats& f) { f.format.setAlternateBackgroundColor(kText); }},
      {"numbers and flags",
       [](Formats& f) {
         f.format.setFontSize(9);
         f.format.setFontStyle(1);
         f.format.setUnderline(true);
         f.format.setHorizontalAlignment(2);
         f.format.setVerticalAlignment(3);
         f.format.setMarginLeft(4);
         f.format.setMarginRight(5);
         f.format.setMarginTop(6);
         f.format.setMarginBottom(7);
         f.format.setUseAltRowColors(true);
       }},
  };
  exhaustion::Run(kRows);
}

// Root, a heading with two items, an item of three levels, and a footnote.
struct Documents : ExhaustionFixture {
  Documents() {
    Node heading = Add(Root(), "heading");
    Node item = Add(heading, "item");
    Add(Add(item, "below"), "deeper");
    Add(heading, "last");
  }
  static Node Add(Node parent, const char* title) {
    return parent.Child(new OmHeading(OmStringCell(title)));
  }
  Node Root() { return Node(tree, tree.List().begin()); }
  Node Item() { return Root().Begin().Begin(); }
  std::string State() {
    std::string shown = Show(note);
    for (ListTreeData<OmOutputPart*>& entry : tree.List()) {
      shown +=
          Fields(entry.Level(), entry.Data() == nullptr ? "none" : Show(entry.Data()->Title()));
    }
    return shown;
  }
  void Verify() { ::Verify(tree); }

  OmMemoryRegion region{false};
  OmStringCell text{kText};
  OmFootnote note{&text, nullptr, &region};
  OmOutputTree tree;
};

TEST(Exhaustion, Documents) {
  static const Operation<Documents> kRows[] = {
      {"tree", [](Documents&) { OmOutputTree tree; }},
      {"Prune",
       [](Documents& f) {
         Node node = f.Item();
         f.tree.Prune(node);
       }},
      {"Erase",
       [](Documents& f) {
         Node node = f.Item();
         f.tree.Erase(node);
       }},
      {"Amputate an item", [](Documents& f) { (void)Amputate(f.Item(), nullptr, kText); }},
      {"Amputate what is below a heading",
       [](Documents& f) { (void)Amputate(f.Root().Begin(), &f.text, kText); }},
      {"footnote",
       [](Documents& f) {
         const OmFootnote note(&f.text, &f.text, nullptr);
         const OmFootnote copy(note);
         EXPECT_TRUE(copy == note);
       }},
      // The old text is gone before the new one is made.
      {"footnote's text", [](Documents& f) { f.note.Text(OmStringCell("new")); },
       After::kRepeatable},
      {"footnote's marker", [](Documents& f) { f.note.Marker(&f.text); }},
  };
  exhaustion::Run(kRows);
}

}  // namespace
