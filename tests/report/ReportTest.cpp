// The parts of the report program that its output alone does not show.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"
#include "examples/report/CellFootnotes.h"
#include "examples/report/DataSet.h"
#include "examples/report/DisplayText.h"
#include "examples/report/DocumentParts.h"
#include "examples/report/Options.h"
#include "examples/report/Plan.h"
#include "examples/report/Procedures.h"
#include "examples/report/TextReport.h"
#include "platform/cells/CellTexts.h"

namespace {

constexpr unsigned long kNone = static_cast<unsigned long>(-1);

// Builds a table that shows all that the procedures do not use.
class TextReportTest : public ::testing::Test {
 protected:
  TextReportTest() : table(new OmPivotTable(OmStringCell("Title"), OmStringCell("Test"), false)) {
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

  OmOutputTree document;
  OmPivotTable* table;
};

// Hidden labels take no heading, a span that a block cuts keeps its text in both, and a long label
// goes on beside the rows below.
TEST_F(TextReportTest, HeadingsSpanPadAndSurviveBlocks) {
  Add(table->Columns(), "C", "(G a b c )").Root()->Hide(true);
  Add(table->Rows(), "N", "u (g v )").Root()[1]->HideLabels(true);
  Add(table->Rows(), "R", "averyveryveryvery_long (H y z )").Root()[1][1]->Hide(true);
  for (int place = 0; place < 18; ++place) {
    const OmNumber cell(100 * place, Qualtex_Format(Qualtex_Format::kFixed, 8, 0));
    table->Cell({place / 6, place % 2, place / 2 % 3}, cell);
  }
  OmStringCell cell("text");
  report::MarkFootnote(cell, 0);
  const OmStringCell noteText("Once.");
  const OmStringCell noteMarker("*");
  table->Footnote(OmFootnote(&noteText, &noteMarker, nullptr), false);
  table->Cell({0, 0, 1}, cell);
  table->Cell({1, 0, 1}, OmNumber(std::nan("")));
  const OmStringCell caption("Caption.");
  table->Caption(&caption);
  EXPECT_EQ(Text(false, 42), R"(
Title
+--------------+---+----------------+
|              |   |       G        |
|              |   +---------+------+
| R            | N |    a    |  b   |
+--------------+---+---------+------+
| averyveryver | u |       0 |  600 |
| yvery_long   |   |     100 |  700 |
+-------+------+---+---------+------+
| H     | y    | u | text[*] |    . |
|       |      |   |     300 |  900 |
|       +------+---+---------+------+
|              | u |     400 | 1000 |
|              |   |     500 | 1100 |
+--------------+---+---------+------+

(continued)
+--------------+---+------+
|              |   |  G   |
|              |   +------+
| R            | N |  c   |
+--------------+---+------+
| averyveryver | u | 1200 |
| yvery_long   |   | 1300 |
+-------+------+---+------+
| H     | y    | u | 1400 |
|       |      |   | 1500 |
|       +------+---+------+
|              | u | 1600 |
|              |   | 1700 |
+--------------+---+------+
Caption.
[*] Once.

)");
}

TEST_F(TextReportTest, MissingAxesAndEmptyTables) {
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
  table->Show(false);
  EXPECT_EQ(Text(), "\n");
}

// The crosstabulation of the demonstration, as the library dumps it.
TEST(Report, DumpsTheTableOfTheDemonstration) {
  report::Options options;
  options.rows = {"Class", "Sex"};
  options.columns = {"Survived"};
  options.layers = {"Age"};
  const report::DataSet data = report::ReadDataSet(REPORT_DATA "/titanic.csv");
  OmOutputTree document;
  report::BuildDocument(data, report::MakePlan(data, options), document);
  std::string dump;
  for (auto& entry : document.List()) {
    const auto* const part = dynamic_cast<OmPivotTable*>(entry.Data());
    if (part != nullptr && part->NDimensions() == 5) {
      testing::internal::CaptureStdout();
      part->Print();
      dump += testing::internal::GetCapturedStdout();
    }
  }
  std::ifstream kept(REPORT_EXPECTED "/demo_dump.txt");
  EXPECT_EQ(dump, std::string(std::istreambuf_iterator<char>(kept), {}));
}

TEST(Report, BrokenLinesFitAndLoseNothing) {
  report::SelectCharacterSet();
  for (const auto& [text, width, lines] :
       std::vector<std::tuple<std::string, int, std::vector<std::string>>>{
           {"", 5, {""}},
           {"one two", 7, {"one two"}},
           {"one two", 6, {"one", "two"}},
           {"onetwo x", 3, {"one", "two", "x"}},
           {"a\r\nb\n", 9, {"a", "b", ""}},
           {"e\u0301e\u0301x", 2, {"e\u0301e\u0301", "x"}},
           {"漢漢漢", 5, {"漢漢", "漢"}}}) {
    EXPECT_EQ(report::BreakLines(text, width), lines);
  }
}

}  // namespace
