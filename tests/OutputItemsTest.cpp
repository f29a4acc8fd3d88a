// Headings, procedures, text blocks, page titles and footnotes, and how visitors tell items apart.

#include <gtest/gtest.h>

#include <memory>
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
#include "backend/tables/om/Vector.h"
#include "platform/cells/StringCell.h"
#include "platform/memory/MemoryRegion.h"
#include "tests/support/Allocations.h"

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

// A text that cannot be cloned.
class Unclonable : public OmCellText {
 public:
  OmCellText* Clone(OmMemoryRegion*) const override { throw std::bad_alloc(); }
  short Compare(const OmCellText&) const override { return 0; }
  unsigned long Kind() const noexcept override { return 0; }
  std::string Text() const override { return "unclonable"; }
  void Accept(Visitor&) override {}
};

TEST(OutputItems, AreVisitedByKind) {
  const OmStringCell title("title");
  Seven seven;
  Nine nine;
  std::vector<std::unique_ptr<OmOutputPart>> parts;
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
  EXPECT_EQ("heading heading text text chart model interactive dendrix ", seven.seen);
  EXPECT_EQ("heading procedure text page title chart model interactive dendrix ", nine.seen);
}

TEST(OutputItems, OwnTheirTexts) {
  const unsigned long texts = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  {
    auto title = std::make_unique<OmStringCell>("first");
    OmProcedure part(*title, "a", "b", "c");
    EXPECT_NE(title.get(), part.Title());
    title = std::make_unique<OmStringCell>("second");
    part.setOutlineText(*title);
    title.reset();
    EXPECT_EQ("second", part.OutlineText());
    EXPECT_EQ("second", part.Title()->Text());
    EXPECT_EQ(0U, part.Footnotes().size());
    EXPECT_EQ("abc", part.TextA() + part.TextB() + part.TextC() + part.ExtraText());
    EXPECT_EQ(8, part.NumberA() + part.NumberB() + part.NumberC() + part.NumberD());
    EXPECT_TRUE(part.UserWord() == 0 && part.FirstFlag() && part.SecondFlag());
    // The old title is gone before the new one fails; the part can still be used.
    EXPECT_THROW(part.SetTitle(Unclonable()), std::bad_alloc);
    EXPECT_EQ(nullptr, part.Title());
    part.SetTitle(OmStringCell("third"));
    EXPECT_EQ("third", part.Title()->Text());
    part.Footnotes().push_back(OmFootnote(part.Title(), nullptr, nullptr));
  }
  EXPECT_EQ(texts, OmMemoryRegion::DefaultHeap()->LiveBlocks());

  OmOutputTree tree;
  auto node = ListTree<OmOutputPart*>::Node(tree, tree.List().begin()).Child(nullptr);
  node = node.Child(new OmHeading(OmStringCell("title")));
  EXPECT_THROW((*node)->SetTitle(Unclonable()), std::bad_alloc);
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

TEST(OutputItems, LoseNothingWithoutMemory) {
  const OmStringCell title("a title that is longer than a short string");
  const std::string text(100, 't');
  const auto use = [&] {
    OmProcedure procedure(title, text, text, text);
    procedure.setOutlineText(title);
    OmTextBlock(title, text).Lines().push_back(text);
  };
  use();
  const long live = allocations::Live();
  const unsigned long texts = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  long n = 0;
  while (allocations::FailsAt(n, use)) {
    EXPECT_EQ(live, allocations::Live()) << n;
    EXPECT_EQ(texts, OmMemoryRegion::DefaultHeap()->LiveBlocks()) << n;
    ++n;
  }
  EXPECT_LE(9, n) << "a vector, an outline text, three texts, a title's text, a text, a line";
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
    EXPECT_EQ(-1, notes[4].UseCount());
    EXPECT_EQ("marker", notes[4].Marker()->Text());

    OmFootnote& last = notes[4];
    last.Marker(nullptr);
    EXPECT_EQ(nullptr, last.Marker());
    EXPECT_TRUE(last == first);
    last.Text(marker);
    EXPECT_FALSE(last == first);
    EXPECT_EQ("marker", last.Text()->Text());
    const Unclonable unclonable;
    EXPECT_THROW(last.Text(unclonable), std::bad_alloc);
    EXPECT_EQ(nullptr, last.Text());
    EXPECT_THROW(notes[0].Marker(&unclonable), std::bad_alloc);
    EXPECT_EQ(nullptr, OmFootnote(notes[0]).Marker());
    EXPECT_THROW(OmFootnote(&text, &unclonable, &region), std::bad_alloc);
    EXPECT_EQ(9 * each, region.LiveBlocks());
  }
  EXPECT_EQ(0U, region.LiveBlocks());
}

}  // namespace
