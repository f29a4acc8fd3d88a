// What front ends ask of a table: over random tables against a twin and the headings, and the cases
// that have a rule of their own.

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <set>
#include <stdexcept>

#include "backend/tables/om/FormatArea.h"
#include "display/display.h"
#include "tests/support/ViewCheck.h"

namespace {

using om::Absence;
using om::TableView;
using Strings = std::vector<std::string>;

const OmStringCell kText("text");
const OmStringCell kNote("note");

class Display : public testing::Test {
 protected:
  OmDimension* Add(const char* name, int n, PuppetVector<short>& axis) {
    axis.push_back(static_cast<short>(table.NDimensions()));
    return AddDimension(table, name, n);
  }
  // Lets a text refer to a footnote of the table.
  static void Refer(OmCellText* text, int footnote) {
    OmCellMetaData meta;
    if (text->hasMeta()) {
      meta = text->getMeta();
    }
    meta.Footnotes().push_back(footnote);
    text->setMeta(meta);
  }
  int Footnote(const char* text, const char* marker = nullptr) {
    const OmStringCell cell(text);
    const OmStringCell mark(marker != nullptr ? marker : "");
    return table.Footnote(OmFootnote(&cell, marker != nullptr ? &mark : nullptr, nullptr), true);
  }

  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};
};

// Returns what a standard exception says.
template <typename Exception, typename Call>
std::string Said(Call call) {
  try {
    call();
  } catch (const Exception& error) {
    return error.what();
  }
  return "nothing thrown";
}

TEST_F(Display, HoldsTheTwinOfRandomTables) {
  Play<view_model::ViewPlay>(400, 1);
}

TEST_F(Display, ShowsWindowsOfMorePlacesThanAnyMemory) {
  Add("inner", 100000, table.Rows());
  Add("outer", 100000, table.Rows());
  Add("column", 3, table.Columns());
  table.Cell({99999, 99999, 1}, OmNumber(7));
  const om::Place rows = 10000000000;
  for (const bool skip : {false, true}) {
    const TableView view(table, {.skipEmptyRows = skip});
    ASSERT_EQ(view.Rows(), skip ? 1 : rows);
    const om::Window window = view.Read({view.Rows() - 1, view.Rows()}, {0, 3});
    EXPECT_EQ(window.Cell(view.Rows() - 1, 1), table.Cell({99999, 99999, 1}));
    ASSERT_EQ(window.rowLabels.size(), 2U);
    EXPECT_EQ(window.rowLabels[0].first, skip ? 0 : rows - 100000);
    EXPECT_EQ(window.rowLabels[0].before, !skip);
    EXPECT_EQ(window.rowLabels[1].text->Text(), "inner99999");
    EXPECT_EQ(view.Locate({99999, 99999, 0}).row, view.Rows() - 1);
    EXPECT_EQ(view.Locate({5, 99999, 0}).absence, skip ? Absence::kEmpty : Absence::kNone);
  }
  for (int i = 0; i != 2; ++i) {
    table.Rows().push_back(0);
  }
  EXPECT_EQ(Said<std::length_error>([&] { TableView view(table); }),
            "An axis of the table has more than 2^63 places.");
}

TEST_F(Display, ListsManyRowsThatHoldCells) {
  Add("inner", 1000, table.Rows());
  Add("outer", 1000, table.Rows());
  Add("layer", 2, table.Layers());
  std::set<om::Place> filled[2];
  std::mt19937 random(1);
  for (int i = 0; i != 150000; ++i) {
    const int at[] = {static_cast<int>(random() % 1000), static_cast<int>(random() % 300), i % 2};
    table.Cell({at[0], at[1], at[2]}, kText);
    filled[at[2]].insert(static_cast<om::Place>(at[1]) * 1000 + static_cast<om::Place>(at[0]));
  }
  TableView view(table, {.skipEmptyRows = true});
  for (const std::set<om::Place>& rows : filled) {
    ASSERT_EQ(view.Rows(), rows.size());
    om::Place row = 0;
    for (const om::Place place : rows) {
      const auto at = view.Subscripts(row++, 0);
      ASSERT_EQ(static_cast<om::Place>(at[1]) * 1000 + static_cast<om::Place>(at[0]), place);
    }
    view.NextLayer();
  }
}

// Between the two blanks is a label, but not in what is shown; a window begins in the second.
TEST_F(Display, JoinsBlanksThatNothingShownSeparates) {
  OmDimension* const row = Add("row", 0, table.Rows());
  const auto group = row->AddNewChild(row->Root(), OmStringCell("group"), 0, true);
  for (unsigned long i = 0; i != 4; ++i) {
    row->AddNewChild(row->Root()[0], kText, i, false)->Hide(i % 2 == 0);
  }
  for (const int i : {0, 2, 3}) {
    table.Cell({i}, kText);
  }
  const TableView view(table, {.skipEmptyRows = true, .keepHidden = true});
  const std::vector<om::Label> labels = view.RowLabels({1, 2});
  ASSERT_EQ(labels.size(), 2U);
  EXPECT_EQ(&*labels[0].node, &*group);
  EXPECT_TRUE(labels[1].IsBlank() && labels[1].before && !labels[1].behind);
  EXPECT_EQ(std::pair(labels[1].first, labels[1].places), std::pair(om::Place{0}, om::Place{2}));
}

TEST_F(Display, CountsLayersThatItShows) {
  table.setLayerLoc(1);
  EXPECT_EQ(TableView(table).TableLayer(), std::nullopt) << "there is one, number 0";
  OmDimension* const fast = Add("fast", 3, table.Layers());
  Add("slow", 2, table.Layers());
  Add("row", 2, table.Rows());
  fast->Root()[1]->Hide(true);
  table.Cell({2, 1, 0}, OmNumber(1));
  table.setLayerLoc(5);  // of all six: the third, and the second
  TableView view(table);
  EXPECT_EQ(view.Layers(), 4U);
  EXPECT_EQ(view.TableLayer(), om::Place{3});
  EXPECT_EQ(view.Layer(), 3U);
  EXPECT_EQ(view.SwitchToLayerOf({2, 0, 99}), Absence::kNone);
  EXPECT_EQ(view.Layer(), 1U);
  EXPECT_EQ(view.SwitchToLayerOf({1, 0, 0}), Absence::kHidden);
  const TableView copy(view);
  view.Renew({.skipEmptyLayers = true, .keepHidden = true});
  EXPECT_EQ(view.Layers(), 1U);
  EXPECT_EQ(view.Layer(), 0U) << "the layer that it showed is gone";
  EXPECT_EQ(view.LayerLabels()[0].labels[1]->Text()->Text(), "slow1");
  EXPECT_FALSE(view.NextLayer());
  EXPECT_EQ(copy.Layer(), 1U);
  EXPECT_EQ(copy.LayerCategories(1).size(), 2U);
  for (const int other : {4, 6, -1}) {  // hidden, none, not set
    table.setLayerLoc(other);
    EXPECT_EQ(TableView(table).TableLayer(), std::nullopt);
  }
}

TEST_F(Display, TellsWhatChanged) {
  OmDimension* const row = Add("row", 2, table.Rows());
  table.Cell({0}, OmNumber(1));
  TableView view(table);
  const std::function<void()> changes[] = {
      [&] { row->Root()[0]->Hide(true); },
      [&] { row->Root()->HideLabels(true); },
      [&] { row->AddNewChild(row->Root(), kText, 2, false); },
      [&] { row->Root()[1]->Subscript(5); },
      [&] {
        // Another category in the very place of one.
        auto last = row->Root().Back();
        row->Delete(last);
        row->AddNewChild(row->Root(), OmStringCell("else"), 2, false);
      },
      [&] { Refer(row->Root()[0]->Text(), 0); },
      [&] { table.Cell({1}, OmNumber(1)); },
      [&] { table.SetTableTitle(kText); },
      [&] { table.SetTitle(kText); },
      [&] { table.Caption(&kText); },
      [&] { table.showCaption(false); },
      [&] { table.CornerText(&kText); },
      [&] { Footnote("note"); },
      [&] { table.Columns().push_back(0); },
      [&] { AddDimension(table, "more", 1); },
  };
  for (const auto& change : changes) {
    change();
    EXPECT_TRUE(view.IsOutdated()) << &change - changes;
    view.Renew();
    EXPECT_FALSE(view.IsOutdated());
  }
  table.deleteCell({0, 0});
  EXPECT_FALSE(view.IsOutdated()) << "which it does not see";
}

TEST_F(Display, RefusesWhatIsNotThere) {
  Add("row", 2, table.Rows());
  TableView view(table);
  EXPECT_EQ(Said<std::out_of_range>([&] { (void)view.Cell(2, 0); }),
            "There is no row 2: there are 2, numbered from 0.");
  EXPECT_EQ(Said<std::out_of_range>([&] {
              (void)view.Read({0, 2}, {0, 2});
            }),
            "There is no column 1: there are 1, numbered from 0.");
  EXPECT_EQ(Said<std::out_of_range>([&] { view.SwitchLayer(1); }),
            "There is no layer 1: there are 1, numbered from 0.");
  EXPECT_EQ(Said<std::out_of_range>([&] { (void)view.LayerCategories(0); }),
            "There is no layer dimension 0: there are 0, numbered from 0.");
  EXPECT_EQ(Said<std::invalid_argument>([&] {
              (void)view.RowLabels({2, 1});
            }),
            "A range of rows ends at 1, in front of its start at 2.");
  EXPECT_EQ(Said<std::invalid_argument>([&] {
              (void)view.Locate({0, 0});
            }),
            "There are 2 subscripts for a table of 1 dimensions.");
  table.Columns().push_back(-1);
  EXPECT_EQ(Said<std::invalid_argument>([&] { view.Renew(); }),
            "An axis of the table names dimension -1, and the table has 1 dimensions.");
  EXPECT_EQ(view.Rows(), 2U) << "as it was";
}

TEST_F(Display, MarksFootnotes) {
  const Strings expected[] = {{"a", "b", "z", "aa", "az", "ba", "zz", "aaa"},
                              {"1", "2", "26", "27", "52", "53", "702", "703"},
                              {"*", "†", "†††††", "‡‡‡‡‡"}};
  const unsigned int numbers[] = {0, 1, 25, 26, 51, 52, 701, 702};
  for (unsigned long style = 0; style != 3; ++style) {
    for (unsigned long i = 0; i != expected[style].size(); ++i) {
      EXPECT_EQ(om::VisibleFootnotes::Marker(static_cast<om::MarkerStyle>(style), numbers[i]),
                expected[style][i]);
    }
  }
  OmDimension* const row = Add("row", 2, table.Rows());
  Footnote("unused", "a");
  Footnote("in the cell");
  Footnote("own", "b");
  Footnote("first");
  Footnote("caption");
  table.SetTableTitle(kText);
  table.Caption(&kText);
  OmNumber cell(1);
  for (const auto& [text, note] : {std::pair<OmCellText*, int>(table.TableTitle(), 3),
                                   {row->Root()[1]->Text(), 2},
                                   {&cell, 1},
                                   {&cell, 9},
                                   {&cell, 3},
                                   {&cell, 1},
                                   {table.Caption(), 4}}) {
    Refer(text, note);
  }
  table.Cell({1}, cell);
  const om::VisibleFootnotes notes(TableView(table), om::MarkerStyle::kLetters);
  std::string shown;
  for (const om::VisibleFootnote& note : notes.List()) {
    shown += note.marker + (note.own ? "!" : "") + " " + note.text->Text() + ", ";
  }
  EXPECT_EQ(shown, "a first, b! own, c in the cell, d caption, ");
  EXPECT_EQ(notes.Markers(*table.Cell({1})), (Strings{"c", "a"}));
  table.showCaption(false);
  EXPECT_EQ(om::VisibleFootnotes(TableView(table), om::MarkerStyle::kNumbers).List().size(), 3U);
}

TEST_F(Display, ResolvesFormats) {
  Add("row", 3, table.Rows());
  Add("column", 2, table.Columns());
  auto* const whole = new FormatArea(FormatArea::kArea0);
  whole->setFontName("Serif");
  whole->setTextColor("black");
  whole->setUseAltRowColors(true);
  whole->setAlternateBackgroundColor("grey");
  auto* const data = new FormatArea(FormatArea::kArea6);
  data->setTextColor("blue");
  data->setFontStyle(1);
  data->setHorizontalAlignment(77);
  data->setMarginLeft(9);
  table.setAreaFormat(whole);
  table.setAreaFormat(data);
  OmCellProperties style;
  style.italic = true;
  style.textColor = 0xFF;
  style.horizontal = OmCellProperties::Horizontal::kDecimal;
  table.cellStyles() = {OmCellProperties(), style};
  OmNumber cell(1);
  OmCellMetaData meta;
  meta.Style(1);
  cell.setMeta(meta);
  table.Cell({1, 0}, cell);
  const TableView view(table);
  table.emptyCellStyles()[om::TableFormats::EmptyCellNumber(table, {2, 1})] = 1;
  table.emptyCellStyles()[0] = 2;  // which there is not

  const om::TableFormats formats(table);
  const om::AreaFormat& even = formats.Of(om::TableArea::kData);
  const om::AreaFormat& odd = formats.Of(om::TableArea::kData, 1);
  EXPECT_EQ(even.fontName + even.textColor + even.backgroundColor, "Serifblue");
  EXPECT_EQ(odd.fontName + odd.textColor + odd.backgroundColor, "Serifbluegrey");
  EXPECT_EQ(even.horizontal, om::Horizontal::kUnset);
  EXPECT_EQ(std::pair(even.marginLeft, even.marginRight), std::pair(9, 2));
  EXPECT_EQ(formats.Of(om::TableArea::kTitle, 1), formats.Of(om::TableArea::kTitle));
  EXPECT_EQ(formats.CellStyle(view, 1, 0), &table.getCellStyles()[1]);
  EXPECT_EQ(formats.CellStyle(view, 2, 1), &table.getCellStyles()[1]);
  EXPECT_EQ(formats.CellStyle(view, 0, 0), nullptr);
  const om::AreaFormat styled = om::Styled(odd, formats.CellStyle(view, 1, 0));
  EXPECT_EQ(styled.fontStyle, om::FontStyle::kBoldItalic);
  EXPECT_EQ(styled.textColor + styled.backgroundColor, "#0000ffgrey");
  EXPECT_EQ(styled.horizontal, om::Horizontal::kDecimal);
  EXPECT_EQ(om::Styled(odd, nullptr), odd);
}

TEST_F(Display, TellsNumbers) {
  EXPECT_EQ(om::NumberOf(OmNumber(2.5))->value, 2.5);
  EXPECT_FALSE(om::NumberOf(OmNumDataValue(1, ""))->labelled);
  EXPECT_TRUE(om::NumberOf(OmNumDataValue(1, "one"))->labelled);
  EXPECT_FALSE(om::NumberOf(kText).has_value());
}

// Each row changes the second of two equal tables; what is told afterwards.
TEST(DisplayComparison, TellsWhatAReaderSees) {
  struct Pair {
    Pair() {
      for (OmPivotTable* const table : {&first, &second}) {
        for (const char* const name : {"Region", "Year"}) {
          AddDimension(*table, name, 3);
        }
        table->Rows().push_back(0);
        table->Columns().push_back(1);
        for (int i = 0; i != 9; ++i) {
          table->Cell({i % 3, i / 3}, OmNumber(i));
        }
      }
    }
    OmVectorTree<OmDimensionNode>::Node Root(int d) { return second.Dimension(d)->Root(); }
    OmPivotTable first{kText, kText, false};
    OmPivotTable second{kText, kText, false};
  };
  struct Row {
    const char* told;
    void (*change)(Pair& pair);
    om::CompareOptions options = {};
  };
  const std::vector<Row> rows = {
      {"", [](Pair&) {}},
      {"0 title: text|new;", [](Pair& pair) { pair.second.SetTableTitle(OmStringCell("new")); }},
      {"0 corner: |text;4 corner: |note;",
       [](Pair& pair) {
         pair.second.CornerText(&kText);
         for (OmPivotTable* const table : {&pair.first, &pair.second}) {
           table->Dimension(0)->Root()->Hide(true);
         }
         OmCellMetaData meta;
         meta.Footnotes().push_back(
             pair.second.Footnote(OmFootnote(&kNote, nullptr, nullptr), true));
         pair.second.CornerText()->setMeta(meta);
       }},
      {"3 Region/Region0 › Year/Year0: 0|.;",
       [](Pair& pair) {
         const OmNumber missing(std::numeric_limits<double>::quiet_NaN());
         pair.second.Cell({0, 0}, missing);
         pair.first.Cell({1, 0}, missing);
         pair.second.Cell({1, 0}, missing);
       },
       {.absolute = 1e300}},
      {"1 Region: rows 1|rows 2;1 Year: columns 1|rows 1;",
       [](Pair& pair) {
         pair.second.Columns().clear();
         pair.second.Rows().push_back(1);
       }},
      {"1 Year: columns 1|;1 Month: |columns 1;",
       [](Pair& pair) {
         AddDimension(pair.second, "Month", 2);
         pair.second.Columns()[0] = 2;
       }},
      {"2 Region/Region1: Region/Region1|;", [](Pair& pair) { pair.Root(0)[1]->Hide(true); }},
      {"2 Year/new: |Year/new;",
       [](Pair& pair) {
         pair.second.Dimension(1)->AddNewChild(pair.Root(1), OmStringCell("new"), 3, false);
         pair.second.Cell({0, 3}, OmNumber(5));
       }},
      {"2 Region/Region0: category 0|category 2;",
       [](Pair& pair) {
         auto first = pair.Root(0)[0];
         pair.second.Dimension(0)->moveChild(first, nullptr, false);
       }},
      {"3 Region/Region1 › Year/Year2: 7|7.25;",
       [](Pair& pair) {
         pair.second.Cell({1, 2}, OmNumber(7.25));
       }},
      {"",
       [](Pair& pair) {
         pair.second.Cell({1, 2}, OmNumber(7.25));
       },
       {.absolute = 0.25}},
      {"",
       [](Pair& pair) {
         pair.second.Cell({1, 2}, OmNumber(7.25));
       },
       {.relative = 0.04}},
      {"3 Region/Region1 › Year/Year2: 7|7.25;",
       [](Pair& pair) {
         pair.second.Cell({1, 2}, OmNumber(7.25));
       },
       {.absolute = 0.2, .relative = 0.03}},
      {"3 Region/Region0 › Year/Year1: 3|;3 Region/Region0 › Year/Year2: |6;",
       [](Pair& pair) {
         pair.second.deleteCell({0, 1});
         pair.first.deleteCell({0, 2});
       }},
      {"3 Region/Region0 › Year/Year0: 0|x;",
       [](Pair& pair) {
         pair.second.Cell({0, 0}, OmStringCell("x"));
         pair.second.Cell({1, 0}, OmStringCell("1"));  // the same to a reader
         pair.second.Cell({2, 0}, OmStringCell("y"));
       },
       {.most = 1}},
      {"5 Region/Region1 › Year/Year0: 1|1.0;",
       [](Pair& pair) {
         pair.second.Cell({1, 0}, OmNumber(1, Qualtex_Format(Qualtex_Format::kFixed, 8, 1)));
       }},
      {"4 Region/Region1: |[x] note;4 Region/Region0 › Year/Year0: |[x] note;",
       [](Pair& pair) {
         const OmStringCell marker("x");
         OmCellMetaData meta;
         meta.Footnotes().push_back(
             pair.second.Footnote(OmFootnote(&kNote, &marker, nullptr), true));
         pair.Root(0)[1]->Text()->setMeta(meta);
         pair.second.Cell({0, 0})->setMeta(meta);
       }},
      {"5 data: text colour |text colour red;5 Region/Region0 › Year/Year0: style -1|style 1;",
       [](Pair& pair) {
         auto* const area = new FormatArea(FormatArea::kArea6);
         area->setTextColor("red");
         for (OmPivotTable* const table : {&pair.first, &pair.second}) {
           table->setAreaFormat(new FormatArea(FormatArea::kArea6));
         }
         pair.second.setAreaFormat(area);
         pair.second.cellStyles().resize(1);
         pair.second.cellStyles()[0].bold = true;
         OmCellMetaData meta;
         meta.Style(0);
         pair.second.Cell({0, 0})->setMeta(meta);
       }},
  };
  for (const Row& row : rows) {
    Pair pair;
    row.change(pair);
    std::string told;
    for (const om::Difference& difference :
         om::Compare(TableView(pair.first), TableView(pair.second), row.options)) {
      told += std::to_string(static_cast<int>(difference.kind)) + " " + difference.where + ": " +
              difference.first + "|" + difference.second + ";";
      EXPECT_EQ(difference.firstSubscripts.empty(),
                difference.where.find("›") == std::string::npos);
    }
    EXPECT_EQ(told, row.told) << &row - rows.data();
  }
  Pair pair;
  EXPECT_EQ(Said<std::invalid_argument>([&] {
              (void)om::Compare(TableView(pair.first), TableView(pair.second), {.absolute = -1});
            }),
            "A tolerance is a number that is not negative.");
}

}  // namespace
