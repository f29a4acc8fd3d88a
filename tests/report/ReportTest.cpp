// What the report program's own documents do not show: other tables, and items that are odd.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"
#include "examples/report/CellFootnotes.h"
#include "examples/report/DisplayText.h"
#include "examples/report/DocumentParts.h"
#include "examples/report/HtmlReport.h"
#include "examples/report/Plan.h"
#include "examples/report/Procedures.h"
#include "examples/report/TableLook.h"
#include "examples/report/TextReport.h"
#include "platform/cells/CellTexts.h"

namespace {

constexpr unsigned long kNone = static_cast<unsigned long>(-1);

class ReportTest : public ::testing::Test {
 protected:
  ReportTest() : table(new OmPivotTable(OmStringCell("Title"), OmStringCell("Test"), false)) {
    report::SelectCharacterSet();
    report::Place(Root(), std::unique_ptr<OmOutputPart>(table));
  }

  report::TreeNode Root() { return {document, document.List().begin()}; }

  // Adds a dimension "name" to an axis. A word is a category, "(word" opens a group, ")" closes it.
  OmDimension& Add(PuppetVector<short>& axis, const std::string& name, const std::string& words) {
    OmDimension& dimension = *table->AddDimension(OmStringCell(name));
    axis.push_back(static_cast<short>(table->NDimensions() - 1));
    std::istringstream in(words);
    std::vector<OmVectorTree<OmDimensionNode>::Node> path{dimension.Root()};
    for (std::string word; in >> word;) {
      if (word == ")") {
        path.pop_back();
      } else if (word.front() == '(') {
        dimension.AddNewChild(path.back(), OmStringCell(word.substr(1)), kNone, true);
        path.push_back(path.back().Back());
      } else {
        dimension.AddNewChild(path.back(), OmStringCell(word), dimension.NumCategories(), false);
      }
    }
    return dimension;
  }

  std::string Text(bool skipEmpty = false, int width = 80) {
    std::ostringstream out;
    report::TextReport(out, report::TextStyle{width, true, skipEmpty}).Write(document);
    return "\n" + out.str();
  }

  std::string Page(bool skipEmpty = false) {
    std::ostringstream out;
    report::HtmlReport(out, skipEmpty).Write(document);
    return out.str();
  }

  OmOutputTree document;
  OmPivotTable* table;
};

std::string Kept(const char* name) {
  std::ifstream file(std::string(REPORT_EXPECTED "/") + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

// Labels span what they cover: their equal neighbours under one outer category, and the levels that
// a deeper group or a group without labels leaves over. In text, a span that a block cuts keeps its
// label in both, and a long label goes on beside the rows below.
TEST_F(ReportTest, AnOddDocumentIsShownAsItWasKept) {
  Add(table->Columns(), "C", "(G a b c ) d").Root()->Hide(true);
  Add(table->Rows(), "N", "u (g v )").Root()[1]->HideLabels(true);
  Add(table->Rows(), "R", "averyveryveryvery_long (H y z )").Root()[1][1]->Hide(true);
  OmDimension& layers = Add(table->Layers(), "L", "(G k )");
  layers.AddNewChild(layers.Root(), OmStringCell("l"), 5, false);
  layers.AddNewChild(layers.Root(), OmStringCell("none"), kNone, false);
  for (int place = 0; place < 24; ++place) {
    const OmNumber cell(100 * place, Qualtex_Format(Qualtex_Format::kFixed, 8, 0));
    table->Cell({place / 6, place % 2, place / 2 % 3, 0}, cell);
  }
  const OmStringCell note("Note & more");
  const OmStringCell marker("<*>");
  const OmStringCell caption("A caption that is broken where the page ends\r\nand so on");
  OmStringCell cell("<b>");
  report::MarkFootnote(cell, table->Footnote(OmFootnote(&note, &marker, nullptr), false));
  report::MarkFootnote(cell, 1);  // there is no such footnote
  table->Cell({0, 0, 1, 0}, cell);
  table->Cell({1, 0, 1, 0}, OmNumber(std::nan("")));
  table->Caption(&caption);
  table->setLayerLoc(1);
  table->EndTable();
  const std::string text = Text(true, 42);

  auto format = std::make_unique<FormatArea>(report::area::kData);
  format->setFontName("Sans\";}</style>%");
  format->setFontSize(11.5F);
  format->setFontStyle(report::kItalic);
  format->setUnderline(true);
  format->setTextColor("red;background:url(//x)");
  format->setBackgroundColor("#ffffff");
  format->setMarginRight(-5);
  format->setHorizontalAlignment(77);
  format->setVerticalAlignment(report::kMiddle);
  format->setUseAltRowColors(true);
  format->setAlternateTextColor("#ggg");
  format->setAlternateBackgroundColor("#000");
  table->setAreaFormat(format.release());
  auto* const chart = new OmChart(OmStringCell("c"), "", 1);
  report::Place(Root(), std::unique_ptr<OmOutputPart>(chart));
  chart->SetImageStream("\x89PNG\r\n\x1a\n", 9);
  chart->SetBinaryDataStream("\xFF\xFE", 2);
  chart->addCSVFileContent("a<b\x01\r\n'", 7);
  auto* const tree = new OmDendrix(OmStringCell("t"), "tree");
  report::Place(Root(), std::unique_ptr<OmOutputPart>(tree));
  tree->SetUncompressedXML(std::string(2000000, 'x').data(), 2000000);
  const std::string page = Page();
  const std::size_t looks = page.find(".look0");
  const std::size_t items = page.find("<nav");
  EXPECT_EQ(text + page.substr(looks, page.find("</style>", looks) - looks) +
                page.substr(items, page.find("</main>") - items),
            Kept("odd_document.txt"));
}

TEST_F(ReportTest, MissingAxesAndEmptyTables) {
  Add(table->Rows(), "R", "x y");
  EXPECT_EQ(Text(true), "\nTitle\n(empty)\n\n");
  table->Cell({1}, OmStringCell("here"));
  const OmStringCell corner("corner");
  table->CornerText(&corner);
  const std::string head = "\nTitle\n+---+------+\n| R |      |\n+---+------+\n";
  const std::string end = "| y | here |\n+---+------+\n\n";
  EXPECT_EQ(Text(), head + "| x |      |\n" + end);
  EXPECT_EQ(Text(true), head + end);
  // Where no dimension shows its name, the table's own text stands in the corner.
  table->Dimension(0)->Root()->Hide(true);
  EXPECT_NE(Text().find("| corner |"), std::string::npos);
  EXPECT_NE(Page(true).find("data-view=packed>"), std::string::npos);
  table->Show(false);
  EXPECT_EQ(Text(), "\n");
  EXPECT_EQ(Page().find("<figure"), std::string::npos);
}

TEST_F(ReportTest, LargeTablesAndDeepDocumentsAreShown) {
  for (PuppetVector<short>* axis : {&table->Rows(), &table->Columns(), &table->Layers()}) {
    OmDimension& dimension = Add(*axis, "D", "");
    for (unsigned long i = 0; i < 1000; ++i) {
      dimension.AddNewChild(dimension.Root(), OmStringCell("x"), i, false);
    }
  }
  table->Cell({7, 8, 9}, OmNumber(1));
  table->Cell({999, 8, 500}, OmNumber(1));
  report::TreeNode node = Root();
  for (int i = 0; i < 10000; ++i) {
    node = report::Place(node, std::make_unique<OmHeading>(OmStringCell("heading")));
  }
  const std::string page = Page();
  EXPECT_EQ(Count(page, "<div class=\"layer start\""), 2);
  EXPECT_EQ(Count(page, "<tr"), 8);
  EXPECT_NE(page.find("left out"), std::string::npos);
  EXPECT_EQ(Count(page, ">heading</h"), 10000);
  EXPECT_EQ(Count(page, "<section>"), Count(page, "</section>"));
  EXPECT_EQ(Count(page, "<li>"), Count(page, "</li>"));
}

// The crosstabulation of the demonstration, as the library dumps it.
TEST_F(ReportTest, DumpsTheTableOfTheDemonstration) {
  const report::DataSet data = report::ReadDataSet(REPORT_DATA "/titanic.csv");
  report::BuildDocument(data, report::MakePlan(data, report::Options()), document);
  testing::internal::CaptureStdout();
  for (auto& entry : document.List()) {
    auto* const part = dynamic_cast<OmPivotTable*>(entry.Data());
    if (part != nullptr && part->NDimensions() == 5) {
      part->Print();
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), Kept("demo_dump.txt"));
}

}  // namespace
