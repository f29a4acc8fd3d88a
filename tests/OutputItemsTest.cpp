// Headings, procedures, text blocks, page titles and footnotes, and how visitors tell items apart.

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "tests/support/Tables.h"

namespace {

// Receives only what every visitor has to.
class Seven : public OmOutputPart::Visitor {
 public:
  using OmOutputPart::Visitor::Visit;
  void Visit(OmPivotTable&) override { seen += "pivot table "; }
  void Visit(OmHeading&) override { seen += "heading "; }
  void Visit(OmTextBlock&) override { seen += "text "; }
  void Visit(OmChart&) override { seen += "chart "; }
  void Visit(OmDendrix&) override { seen += "dendrix "; }
  void Visit(OmModel&) override { seen += "model "; }
  void Visit(OmInteractive&) override { seen += "interactive "; }

  std::string seen;
};

class Nine : public Seven {
 public:
  using Seven::Visit;
  void Visit(OmProcedure&) override { seen += "procedure "; }
  void Visit(OmPageTitle&) override { seen += "page title "; }
};

TEST(OutputItems, AreVisitedByKind) {
  const OmStringCell title("title");
  Seven seven;
  Nine nine;
  std::vector<std::unique_ptr<OmOutputPart>> parts;
  parts.emplace_back(new OmPivotTable(title, title, false));
  parts.emplace_back(new OmHeading(title));
  parts.emplace_back(new OmProcedure(title, "", "", ""));
  parts.emplace_back(new OmTextBlock(title, ""));
  parts.emplace_back(new OmPageTitle(""));
  parts.emplace_back(new OmChart(title, "", 1));
  parts.emplace_back(new OmModel(title));
  parts.emplace_back(new OmInteractive(title, "", 1));
  parts.emplace_back(new OmDendrix(title, seven.seen));
  for (const auto& part : parts) {
    part->Accept(seven);
    part->Accept(nine);
  }
  EXPECT_EQ("pivot table heading heading text text chart model interactive dendrix ", seven.seen);
  EXPECT_EQ("pivot table heading procedure text page title chart model interactive dendrix ",
            nine.seen);
}

TEST(OutputItems, OwnTheirTexts) {
  OmProcedure part(OmStringCell("first"), "a", "b", "c");
  part.setOutlineText(OmStringCell("second"));
  EXPECT_EQ("second", part.OutlineText());
  EXPECT_EQ("second", part.Title()->Text());
  EXPECT_EQ("abc", part.TextA() + part.TextB() + part.TextC() + part.ExtraText());
  EXPECT_EQ(8, part.NumberA() + part.NumberB() + part.NumberC() + part.NumberD());
  EXPECT_TRUE(part.UserWord() == 0 && part.FirstFlag() && part.SecondFlag());
  // The old title is gone before the new one fails; the part can still be used.
  EXPECT_THROW(part.SetTitle(BrittleText(0)), std::runtime_error);
  EXPECT_EQ(nullptr, part.Title());
  part.SetTitle(OmStringCell("third"));
  EXPECT_EQ("third", part.Title()->Text());

  OmOutputTree tree;
  auto node = ListTree<OmOutputPart*>::Node(tree, tree.List().begin()).Child(nullptr);
  node = node.Child(new OmHeading(OmStringCell("title")));
  EXPECT_THROW((*node)->SetTitle(BrittleText(0)), std::runtime_error);
  EXPECT_EQ("", (**Amputate(node, nullptr, "an item without a title")).Title()->Text());
}

TEST(OutputItems, KnowALogByItsFirstTitle) {
  for (const auto& [title, isLog] :
       {std::pair("Log", true), {"log", false}, {"Log ", false}, {"", false}}) {
    OmTextBlock block(OmStringCell(title), "text");
    EXPECT_EQ(isLog, block.IsLog()) << title;
    block.SetTitle(OmStringCell(isLog ? "other" : "Log"));
    EXPECT_EQ(isLog, block.IsLog()) << title;
  }
  OmPageTitle page("Log");
  EXPECT_TRUE(!page.IsLog() && page.Title()->Text().empty() && page.Text() == "Log");
}

TEST(Footnote, ChargesItsRegion) {
  OmMemoryRegion region(false);
  {
    const OmStringCell text("text");
    const OmStringCell marker("marker");
    OmFootnote first(&text, &marker, &region);
    const unsigned long each = region.LiveBlocks() / 2;
    EXPECT_LT(0U, each);
    first.UseCount(-2);
    first.AddUse();
    OmVector<OmFootnote> notes(nullptr);
    for (int i = 0; i < 5; ++i) {
      const OmCellText* const moved = i != 0 ? notes[0].Text() : nullptr;
      notes.push_back(first);
      EXPECT_TRUE(i == 0 || notes[0].Text() == moved);
    }
    EXPECT_EQ(12 * each, region.LiveBlocks());
    OmFootnote& last = notes[4];
    EXPECT_EQ(-1, last.UseCount());
    EXPECT_EQ("marker", last.Marker()->Text());
    last.Marker(nullptr);
    EXPECT_EQ(nullptr, last.Marker());
    EXPECT_TRUE(last == first);
    last.Text(marker);
    EXPECT_FALSE(last == first);
    // The old texts are gone before the new ones fail.
    const BrittleText brittle(0);
    EXPECT_THROW(last.Text(brittle), std::runtime_error);
    EXPECT_EQ(nullptr, last.Text());
    EXPECT_THROW(notes[0].Marker(&brittle), std::runtime_error);
    EXPECT_EQ(nullptr, OmFootnote(notes[0]).Marker());
    EXPECT_THROW(OmFootnote(&text, &brittle, &region), std::runtime_error);
    EXPECT_EQ(9 * each, region.LiveBlocks());
  }
  EXPECT_EQ(0U, region.LiveBlocks());
}

}  // namespace
