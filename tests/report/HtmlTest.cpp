// The parts of the page that a browser does not show, and tables that the procedures do not build.

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"
#include "examples/report/CellFootnotes.h"
#include "examples/report/DocumentParts.h"
#include "examples/report/HtmlLooks.h"
#include "examples/report/HtmlReport.h"
#include "examples/report/HtmlText.h"
#include "examples/report/TableLook.h"
#include "platform/cells/CellTexts.h"
#include "tests/support/Tables.h"

namespace {

using Node = OmVectorTree<OmDimensionNode>::Node;

constexpr unsigned long kNone = static_cast<unsigned long>(-1);

class HtmlTest : public ::testing::Test {
 protected:
  HtmlTest() : table(new OmPivotTable(OmStringCell("Title"), OmStringCell("Test"), false)) {
    report::Place(Root(), std::unique_ptr<OmOutputPart>(table));
  }

  report::TreeNode Root() { return {document, document.List().begin()}; }

  void Add(PuppetVector<short>& axis, const char* name, int leaves) {
    AddDimension(*table, name, leaves);
    axis.push_back(static_cast<short>(table->NDimensions() - 1));
  }

  std::string Page(bool skipEmpty = false) {
    std::ostringstream out;
    report::HtmlReport(out, skipEmpty).Write(document);
    return out.str();
  }

  OmOutputTree document;
  OmPivotTable* table;
};

// Counts how often `part` is in `text`.
int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

// A label spans its equal neighbours under one outer category, and the levels that a deeper group
// or a group without labels leaves over.
TEST_F(HtmlTest, LabelsSpanWhatTheyCover) {
  for (const char* name : {"A", "B"}) {
    Add(table->Rows(), name, 0);
    OmDimension& dimension = *table->Dimension(*name - 'A');
    dimension.AddNewChild(dimension.Root(), OmStringCell("x"), 0, false);
    const Node group = dimension.AddNewChild(dimension.Root(), OmStringCell("G"), kNone, true);
    dimension.AddNewChild(group, OmStringCell("y"), 1, false);
    dimension.AddNewChild(group, OmStringCell("y"), 2, false);
    group[1]->Hide(true);
    group->HideLabels(*name == 'B');
  }
  const std::string page = Page();
  const std::size_t body = page.find("<tbody");
  const std::string heads =
      std::regex_replace(page.substr(body, page.find("</table") - body),
                         std::regex("<td></td>| scope=\\w+| class=label"), "");
  EXPECT_EQ(heads, R"(<tbody>
<tr><th rowspan=3>x</th><th colspan=2>x</th></tr>
<tr class=alternate><th rowspan=2>G</th><th>y</th></tr>
<tr><td></td></tr>
</tbody>
<tbody>
<tr class=alternate><td rowspan=6></td><th colspan=2>x</th></tr>
<tr><th rowspan=2>G</th><th>y</th></tr>
<tr class=alternate><td></td></tr>
<tr><th colspan=2>x</th></tr>
<tr class=alternate><th rowspan=2>G</th><th>y</th></tr>
<tr><td></td></tr>
</tbody>
)");
}

TEST_F(HtmlTest, FormatsBecomeRulesAndNothingElse) {
  auto format = std::make_unique<FormatArea>(report::area::kData);
  format->setFontName("Sans\";}</style><script>%");
  format->setFontSize(11.5F);
  format->setFontStyle(report::kBoldItalic);
  format->setUnderline(true);
  format->setTextColor("red;background:url(//x)");
  format->setBackgroundColor("#ffffff");
  format->setMarginRight(-5);
  format->setHorizontalAlignment(77);
  format->setVerticalAlignment(report::kMiddle);
  format->setUseAltRowColors(true);
  format->setAlternateTextColor("navy");
  format->setAlternateBackgroundColor("#000");
  table->setAreaFormat(format.release());
  report::HtmlLooks looks;
  looks.Add(*table);
  EXPECT_EQ(looks.ClassOf(*table), "look0");
  EXPECT_EQ(looks.Rules(),
            ".look0 tbody td{font-family:\"Sans\\22 \\3b \\7d \\3c \\2f style\\3e \\3c script\\3e "
            "\\25 \",sans-serif;font-size:11.5pt;font-weight:600;font-style:italic;"
            "text-decoration:underline;padding:2pt 0pt 2pt 6pt;vertical-align:middle;"
            "background-color:#ffffff;}\n"
            ".look0 .alternate td{color:navy;background-color:#000;}\n"
            "@media screen and (prefers-color-scheme:dark){\n"
            ".look0 tbody td{background-color:#1c1c1c;}\n"
            ".look0 .alternate td{color:navy;background-color:#ededed;}\n}\n");
  EXPECT_NE(Page().find("<figure class=\"table look0\""), std::string::npos);

  for (const char* color : {"", "#12", "#12345", "#ggg", "red"}) {
    EXPECT_EQ(report::DarkCounterpart(color), color);
  }
}

TEST_F(HtmlTest, ATableShowsAllThatItHolds) {
  Add(table->Rows(), "R", 2);
  table->Dimension(0)->Root().Begin()->Hide(true);
  Add(table->Columns(), "C", 1);
  table->Dimension(1)->Root()->Hide(true);
  Add(table->Layers(), "L", 0);
  OmDimension& layers = *table->Dimension(2);
  const Node group = layers.AddNewChild(layers.Root(), OmStringCell("G"), kNone, true);
  layers.AddNewChild(group, OmStringCell("k"), 0, false);
  layers.AddNewChild(layers.Root(), OmStringCell("l"), 5, false);
  layers.AddNewChild(layers.Root(), OmStringCell("none"), kNone, false);
  const OmStringCell note("Note & more");
  const OmStringCell marker("<*>");
  const OmStringCell caption("Caption");
  OmStringCell cell("<b>text</b>");
  report::MarkFootnote(cell, table->Footnote(OmFootnote(&note, &marker, nullptr), false));
  report::MarkFootnote(cell, 99);
  table->Cell({1, 0, 5}, cell);
  table->Cell({0, 0, 0}, OmNumber(2.5));
  table->Caption(&caption);
  table->setLayerLoc(1);
  table->EndTable();
  const std::string page = Page();
  for (const char* part :
       {"<option value=0>G › k</option><option value=5 selected>l</option>"
        "<option value=-1>none</option>",
        "data-key=\"5\" data-view=whole>", "data-key=\"0\" data-view=whole hidden>",
        "<td class=text>&lt;b&gt;text&lt;/b&gt;<sup><a class=mark href=\"#item2-note0\" "
        "aria-label=\"Footnote &lt;*&gt;\">&lt;*&gt;</a></sup></td>",
        "<span>Note &amp; more ", "<td>2.50</td>", "<p class=caption>Caption</p>",
        "<caption class=layers>L: G: k</caption>"}) {
    EXPECT_NE(page.find(part), std::string::npos) << part << "\n" << page;
  }
  table->showCaption(false);
  EXPECT_EQ(Page(true).find("<p class=caption>"), std::string::npos);
  EXPECT_NE(Page(true).find("data-key=\"0\" data-view=packed>"), std::string::npos);
  table->Show(false);
  EXPECT_EQ(Page().find("<figure"), std::string::npos);
}

TEST_F(HtmlTest, AVeryLargeTableIsShownWithoutWhatIsEmpty) {
  Add(table->Rows(), "R", 1000);
  Add(table->Columns(), "C", 1000);
  Add(table->Layers(), "L", 1000);
  table->Cell({7, 8, 9}, OmNumber(1));
  table->Cell({999, 8, 500}, OmNumber(1));
  const std::string page = Page();
  EXPECT_EQ(Count(page, "<div class=\"layer start\""), 2);
  EXPECT_EQ(Count(page, "<tr"), 8);
  EXPECT_NE(page.find("left out"), std::string::npos);
}

TEST_F(HtmlTest, ADeepDocumentIsShownWhole) {
  report::TreeNode node = Root();
  for (int i = 0; i < 10000; ++i) {
    node = report::Place(node, std::make_unique<OmHeading>(OmStringCell("heading")));
  }
  Root().Child(nullptr);
  const std::string page = Page();
  EXPECT_EQ(Count(page, ">heading</h"), 10000);
  EXPECT_EQ(Count(page, "<section>"), Count(page, "</section>"));
  EXPECT_EQ(Count(page, "<li>"), Count(page, "</li>"));
}

TEST_F(HtmlTest, PayloadsAreShownAsWhatTheyAre) {
  auto* chart = new OmChart(OmStringCell("c"), "", 1);
  report::Place(Root(), std::unique_ptr<OmOutputPart>(chart));
  const std::string bytes("\x89PNG\r\n\x1a\n\0", 9);
  chart->SetImageStream(bytes.data(), 9);
  chart->SetBinaryDataStream("\xFF\xFE", 2);
  chart->addCSVFileContent("a<b", 3);
  auto* tree = new OmDendrix(OmStringCell("t"), "tree");
  report::Place(Root(), std::unique_ptr<OmOutputPart>(tree));
  const std::string large(2000000, 'x');
  tree->SetUncompressedXML(large.data(), 2000000);
  const std::string page = Page();
  for (const char* part :
       {"src=\"data:image/png;base64,iVBORw0KGgoA\"", "<pre tabindex=0>a&lt;b</pre>",
        "Data stream</span> <span class=size>2 bytes</span></p>",
        "<span class=size>2.0 MB</span></p>"}) {
    EXPECT_NE(page.find(part), std::string::npos) << part;
  }
  EXPECT_LT(page.size(), 100000U);
}

TEST(HtmlText, EncodesToTheLetter) {
  EXPECT_EQ(report::Escape(std::string("a<b>&\"'\x01\r\n\t\0é", 14)),
            "a&lt;b&gt;&amp;&quot;&#39;\xEF\xBF\xBD\n\t\xEF\xBF\xBDé");
  EXPECT_EQ(report::JsonString("\"\\\n</script>é"), R"("\"\\\u000a\u003c/script\u003eé")");
  const char* const pairs[][2] = {{"", ""},        {"f", "Zg=="},        {"fo", "Zm8="},
                                  {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xFF\xFE\xFD", "//79"}};
  for (const auto& [plain, encoded] : pairs) {
    EXPECT_EQ(report::Base64(plain), encoded);
  }
  EXPECT_EQ(report::ByteCount(1), "1 byte");
  EXPECT_EQ(report::ByteCount(999), "999 bytes");
  EXPECT_EQ(report::ByteCount(1000), "1.0 KB");
}

}  // namespace
