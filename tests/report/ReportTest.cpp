// The parts of the report program that its output alone does not show.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/TextBlock.h"
#include "examples/report/CellFootnotes.h"
#include "examples/report/CsvReader.h"
#include "examples/report/DataSet.h"
#include "examples/report/DisplayText.h"
#include "examples/report/DocumentParts.h"
#include "examples/report/Plan.h"
#include "examples/report/Procedures.h"
#include "examples/report/Statistics.h"
#include "examples/report/TextReport.h"
#include "platform/cells/CellTexts.h"

namespace {

using report::BreakLines;
using report::DisplayWidth;

constexpr unsigned long kNone = static_cast<unsigned long>(-1);

// A data file that is gone at the end.
class DataFile {
 public:
  explicit DataFile(const std::string& content) : path(::testing::TempDir() + "report_test.csv") {
    std::ofstream(path) << content;
  }
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;
  ~DataFile() { std::remove(path.c_str()); }

  const std::string path;
};

// One line an item: two blanks a level, the kind, the title.
class Outline : public OmOutputPart::Visitor {
 public:
  explicit Outline(OmOutputTree& document) {
    for (ListTreeData<OmOutputPart*>& entry : document.List()) {
      text.append(2 * static_cast<std::size_t>(entry.Level()), ' ');
      entry.Data()->Accept(*this);
    }
  }

  void Visit(OmPivotTable& part) override {
    Add(part.IsNotes() ? "notes" : part.IsWarnings() ? "warnings" : "table", part);
  }
  void Visit(OmProcedure& part) override { Add("procedure", part); }
  void Visit(OmHeading& part) override { Add("heading", part); }
  void Visit(OmTextBlock& part) override {
    Add(part.IsLog() ? "log" : "text", part);
    text.insert(text.size() - 1, ": " + part.Text());
  }
  void Visit(OmPageTitle& part) override { text += "page " + part.Text() + "\n"; }
  void Visit(OmChart&) override { text += "chart\n"; }
  void Visit(OmDendrix&) override { text += "tree\n"; }
  void Visit(OmModel&) override { text += "model\n"; }
  void Visit(OmInteractive&) override { text += "interactive\n"; }

  std::string text;

 private:
  void Add(const char* kind, OmOutputPart& part) {
    text += std::string(kind) + " " + part.Title()->Text() + "\n";
  }
};

std::string OutlineOf(const std::string& content, const report::Options& options) {
  const DataFile file(content);
  const report::DataSet data = report::ReadDataSet(file.path);
  OmOutputTree document;
  report::BuildDocument(data, report::MakePlan(data, options), document);
  return Outline(document).text;
}

TEST(Report, TheDocumentHoldsEveryProcedureAndItsFailures) {
  const std::string content = "G,H,E,X\na,u,,1.5\nb,v,,2.5\na,v,,4\n";
  report::Options options;
  options.title = "T";
  const std::string head =
      "heading Output\n  page T\n  log Log: 3 cases and 4 variables read from report_test.csv.\n";
  const std::string frequencies =
      "  procedure Frequencies\n    notes Notes\n    table Case Processing Summary\n"
      "    heading Frequency Tables\n      table G\n      table H\n";
  const std::string cross =
      "  procedure Crosstabulation\n    notes Notes\n    table Case Processing Summary\n"
      "    table G by H\n";
  const std::string descriptives =
      "  procedure Descriptives\n    notes Notes\n    table Case Processing Summary\n"
      "    table X by G\n";
  EXPECT_EQ(OutlineOf(content, options), head + frequencies + cross + descriptives);

  // A table that fails is a text in its place; a procedure that fails keeps its heading alone.
  options.rows = {"G"};
  options.columns = {"H"};
  options.layers = {"E"};
  options.measures = {"X", "E"};
  EXPECT_EQ(OutlineOf(content, options),
            head + frequencies +
                "      text E: E holds no value.\n    warnings Warnings\n"
                "  procedure Crosstabulation\n"
                "    text Crosstabulation stopped: E holds no value.\n    warnings Warnings\n"
                "  procedure Descriptives\n"
                "    text Descriptives stopped: E holds no number.\n    warnings Warnings\n");

  options = report::Options();
  options.title = "T";
  options.weight = "X";
  EXPECT_EQ(OutlineOf("X,G\n0,a\n,b\n", options),
            "heading Output\n  page T\n  log Log: 2 cases and 2 variables read from "
            "report_test.csv.\n  procedure Frequencies\n    text Frequencies stopped: No case has "
            "a weight.\n    warnings Warnings\n  procedure Crosstabulation\n    text "
            "Crosstabulation stopped: No case has a weight.\n    warnings Warnings\n");
}

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
    std::vector<int> path;
    for (std::string word; in >> word;) {
      OmVectorTree<OmDimensionNode>::Node parent = dimension.Root();
      for (const int i : path) {
        parent = parent[static_cast<unsigned long>(i)];
      }
      if (word == ")") {
        path.pop_back();
        continue;
      }
      const bool group = word.front() == '(';
      dimension.AddNewChild(parent, OmStringCell(word.substr(group ? 1 : 0)),
                            group ? kNone : dimension.NumCategories(), group);
      if (group) {
        path.push_back(static_cast<int>(parent.Count()) - 1);
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

TEST_F(TextReportTest, HeadingsSpanAndPadAsTheirTreesSay) {
  Add(table->Columns(), "C", "(G a b ) c");
  OmDimension& rows = Add(table->Rows(), "R", "x (H y z )");
  rows.Root()[1][1]->Hide(true);
  OmStringCell cell("text");
  report::MarkFootnote(cell, 0);
  const OmStringCell noteText("Once.");
  const OmStringCell noteMarker("*");
  table->Footnote(OmFootnote(&noteText, &noteMarker, nullptr), false);
  table->Cell({0, 0}, cell);
  table->Cell({2, 1}, OmNumber(1234.5, Qualtex_Format(Qualtex_Format::kFixed, 8, 1)));
  table->Cell({1, 2}, OmNumber(std::nan("")));
  const OmStringCell caption("Caption.");
  table->Caption(&caption);
  EXPECT_EQ(Text(), R"(
Title
+-------+----------------------+
|       |          C           |
|       +-------------+--------+
|       |      G      |   c    |
|       +---------+---+        |
| R     |    a    | b |        |
+-------+---------+---+--------+
| x     | text[*] |   |        |
+---+---+---------+---+--------+
| H | y |         |   | 1234.5 |
|       |         | . |        |
+-------+---------+---+--------+
Caption.
[*] Once.

)");
}

// Labels that are hidden take no heading, a span that a block cuts keeps its text in both, and a
// long label goes on beside the rows below.
TEST_F(TextReportTest, SpansSurviveBlocks) {
  Add(table->Columns(), "I", "p q r").Root()->Hide(true);
  Add(table->Columns(), "O", "first secondary").Root()->Hide(true);
  Add(table->Rows(), "N", "u (g v )").Root()[1]->HideLabels(true);
  Add(table->Rows(), "R", "averyveryveryvery_long b");
  for (int place = 0; place < 24; ++place) {
    const OmNumber cell(100 * place, Qualtex_Format(Qualtex_Format::kFixed, 8, 0));
    table->Cell({place / 4 % 3, place / 12, place % 2, place / 2 % 2}, cell);
  }
  EXPECT_EQ(Text(false, 42), R"(
Title
+-------------------+---+-----------+
|                   |   |   first   |
|                   |   +-----+-----+
| R                 | N |  p  |  q  |
+-------------------+---+-----+-----+
| averyveryveryvery | u |   0 | 400 |
| _long             |   | 100 | 500 |
+-------------------+---+-----+-----+
| b                 | u | 200 | 600 |
|                   |   | 300 | 700 |
+-------------------+---+-----+-----+

+-------------------+---+-------+
|                   |   | first |
|                   |   +-------+
| R                 | N |   r   |
+-------------------+---+-------+
| averyveryveryvery | u |   800 |
| _long             |   |   900 |
+-------------------+---+-------+
| b                 | u |  1000 |
|                   |   |  1100 |
+-------------------+---+-------+

+-------------------+---+-------------+
|                   |   |  secondary  |
|                   |   +------+------+
| R                 | N |  p   |  q   |
+-------------------+---+------+------+
| averyveryveryvery | u | 1200 | 1600 |
| _long             |   | 1300 | 1700 |
+-------------------+---+------+------+
| b                 | u | 1400 | 1800 |
|                   |   | 1500 | 1900 |
+-------------------+---+------+------+

+-------------------+---+-----------+
|                   |   | secondary |
|                   |   +-----------+
| R                 | N |     r     |
+-------------------+---+-----------+
| averyveryveryvery | u |      2000 |
| _long             |   |      2100 |
+-------------------+---+-----------+
| b                 | u |      2200 |
|                   |   |      2300 |
+-------------------+---+-----------+

)");
}

TEST_F(TextReportTest, MissingAxes) {
  Add(table->Rows(), "R", "x y");
  table->Cell({1}, OmStringCell("here"));
  const OmStringCell corner("corner");
  table->CornerText(&corner);
  EXPECT_EQ(Text(),
            "\nTitle\n+---+------+\n| R |      |\n+---+------+\n| x |      |\n| y | here "
            "|\n+---+------+\n\n");
  EXPECT_EQ(Text(true),
            "\nTitle\n+---+------+\n| R |      |\n+---+------+\n| y | here |\n+---+--"
            "----+\n\n");
  // Where no dimension shows its name, the table's own text stands in the corner.
  table->Dimension(0)->Root()->Hide(true);
  EXPECT_NE(Text().find("| corner |"), std::string::npos);
  table->Show(false);
  EXPECT_EQ(Text(), "\n");
}

TEST_F(TextReportTest, AnEmptyTableSaysSo) {
  Add(table->Rows(), "R", "x");
  Add(table->Layers(), "L", "k");
  EXPECT_EQ(Text(true), "\nTitle\n(empty)\n\n");
  EXPECT_EQ(Text(false),
            "\nTitle\nL: k\n+---+---+\n| R |   |\n+---+---+\n| x |   |\n+---+---+\n\n");
}

TEST(Report, BrokenLinesFitAndLoseNothing) {
  report::SelectCharacterSet();
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  const char* const pieces[] = {"a", "b", " ", " ", "é", "漢", "e\u0301", "\t", "\n"};
  for (int i = 0; i < 2000; ++i) {
    std::string text;
    for (unsigned long k = random() % 40; k > 0; --k) {
      text += pieces[random() % 9];
    }
    const int width = 2 + static_cast<int>(random() % 20);
    const auto strip = [](const std::string& from) {
      std::string kept;
      for (const char c : from) {
        kept += c == ' ' || c == '\n' || c == '\t' ? "" : std::string(1, c);
      }
      return kept;
    };
    std::string joined;
    for (const std::string& line : BreakLines(text, width)) {
      EXPECT_LE(DisplayWidth(line), width) << "seed " << seed << ": " << text;
      joined += line;
    }
    EXPECT_EQ(strip(joined), strip(text)) << "seed " << seed;
  }
  for (const auto& [text, width, lines] :
       std::vector<std::tuple<std::string, int, std::vector<std::string>>>{
           {"", 5, {""}},
           {"one two", 7, {"one two"}},
           {"one two", 6, {"one", "two"}},
           {"onetwo x", 3, {"one", "two", "x"}},
           {"a\r\nb\n", 9, {"a", "b", ""}},
           {"漢漢漢", 5, {"漢漢", "漢"}}}) {
    EXPECT_EQ(BreakLines(text, width), lines);
  }
}

TEST(Report, Utf8IsToldFromOtherBytes) {
  for (const char* text : {"", "a", "é", "漢", "😀", "\xEF\xBF\xBD", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(report::IsUtf8(text)) << text;
  }
  for (const char* text :
       {"\x80", "\xC0\xAF", "\xC3", "\xE6\xBC", "\xED\xA0\x80", "\xF0\x80\x80\x80",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "a\xE6\xBCz"}) {
    EXPECT_FALSE(report::IsUtf8(text)) << text;
  }
}

TEST(Report, MomentsAreThoseOfTwoPasses) {
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  for (const double offset : {0.0, 1e9}) {
    report::Moments moments;
    std::vector<double> values;
    for (int i = 0; i < 500; ++i) {
      const double value = offset + static_cast<double>(random() % 1000) / 8;
      const unsigned long weight = random() % 3;
      moments.Add(value, static_cast<double>(weight));
      values.insert(values.end(), weight, value);
    }
    long double sum = 0;
    for (const double value : values) {
      sum += value;
    }
    const long double mean = sum / static_cast<long double>(values.size());
    long double squares = 0;
    for (const double value : values) {
      squares += (value - mean) * (value - mean);
    }
    const auto n = static_cast<double>(values.size());
    EXPECT_EQ(moments.N(), n);
    EXPECT_NEAR(moments.Mean(), static_cast<double>(mean), 1e-6) << "seed " << seed;
    EXPECT_NEAR(moments.Deviation(), std::sqrt(static_cast<double>(squares) / (n - 1)), 1e-6)
        << "seed " << seed;
  }
  report::Moments one;
  EXPECT_TRUE(std::isnan(one.Mean()) && std::isnan(one.Minimum()));
  one.Add(-3, 1);
  EXPECT_EQ(one.Maximum(), -3);
  EXPECT_TRUE(std::isnan(one.Deviation()));
}

TEST(Report, AVariableKeepsNumbersBeyondItsCategories) {
  report::Variable number("n");
  report::Variable text("t");
  for (std::size_t i = 0; i < report::Variable::kMaxCategories + 9; ++i) {
    const std::string value = std::to_string(i) + ".25";
    number.Append(i == 7 ? "NA" : i == 8 ? "x" : value);
    text.Append(i == 7 ? "" : "t" + value);
  }
  number.Append("2e3");
  number.Finish();
  text.Finish();
  EXPECT_EQ(number.Kind(), report::Variable::Storage::kNumbers);
  EXPECT_EQ(text.Kind(), report::Variable::Storage::kTexts);
  EXPECT_TRUE(number.IsMissing(7) && text.IsMissing(7) && !number.IsMissing(8));
  EXPECT_TRUE(std::isnan(number.Number(7)) && std::isnan(number.Number(8)));
  EXPECT_EQ(number.Number(4000), 4000.25);
  EXPECT_EQ(number.Number(report::Variable::kMaxCategories + 9), 2000);
  EXPECT_EQ(number.Decimals(), 2);
  EXPECT_FALSE(number.IsNumeric());

  report::Variable mixed("m");
  for (const char* field : {"10", "b", "9", "a", "-1.5", "9.0", "1e400", ""}) {
    mixed.Append(field);
  }
  mixed.Finish();
  EXPECT_EQ(mixed.Categories(),
            (std::vector<std::string>{"-1.5", "9", "9.0", "10", "1e400", "a", "b"}));
  EXPECT_EQ(mixed.Code(0), 3U);
  EXPECT_EQ(mixed.Code(7), report::Variable::kMissing);
}

}  // namespace
