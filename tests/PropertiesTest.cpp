// What every property of every class is at first, and that what sets it reaches it and no other.
// The lists have a row for each: properties_complete.py compares them with the headers and the
// libraries.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Format.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/TextBlock.h"
#include "platform/cells/CellProperties.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/Allocations.h"
#include "tests/support/Show.h"

namespace {

using std::string;

const OmStringCell kText("text");
const OmStringCell kA("a");

// --- Properties as text -------------------------------------------------------------------------

string Shown(const OmVector<OmFootnote>& notes) {
  return Show(notes);
}
string Shown(const OmCellProperties& p) {
  return Fields(p.fontFamily, p.fontSize, p.textColor, p.backgroundColor, p.decimalOffset,
                static_cast<int>(p.horizontal), static_cast<int>(p.vertical), p.bold, p.italic,
                p.underline);
}
string Shown(const BackendSettings& s) {
  return Fields(s.getMaxCells(), s.getFastTables(), s.getUnicode(), s.getLocale());
}
string Shown(const std::pair<const unsigned long long, unsigned short>& entry) {
  return Fields(entry.first, entry.second);
}
template <typename T>
string Shown(const T& value) {
  if constexpr (requires { value.begin(); } && !std::is_convertible_v<T, string>) {
    string list;
    for (const auto& element : value) {
      list += Shown(element) + ",";
    }
    return list;
  } else if constexpr (std::is_pointer_v<T>) {
    return Show(value);
  } else {
    return AsText(value);
  }
}

// How it is read, what it is at first, and what changes it to what.
template <typename T>
struct Property {
  const char* name;
  std::function<string(T&)> read;
  string expected;
  std::vector<std::pair<std::function<void(T&)>, string>> changes = {};
};

// A getter, a setter and values for it.
template <typename T, typename R, typename V>
Property<T> Value(const char* name, R (T::*get)() const, void (T::*set)(V),
                  const std::type_identity_t<std::decay_t<R>>& initial,
                  const std::vector<std::type_identity_t<std::decay_t<V>>>& values) {
  Property<T> row{name, [get](T& t) { return Shown((t.*get)()); }, Shown(initial)};
  for (const auto& value : values) {
    row.changes.emplace_back([set, value](T& t) { (t.*set)(value); }, Shown(value));
  }
  return row;
}

// A payload that comes in chunks of any bytes, many of them with few allocations.
template <typename T>
Property<T> Chunks(const char* name, const string& (T::*get)() const,
                   void (*add)(T&, const char*, unsigned int)) {
  string whole;
  for (int i = 0; i != 1000; ++i) {
    whole += {'a', '\0', '\xff'};
  }
  const auto deliver = [add](T& t) {
    const long asked = allocations::Asked();
    for (int i = 0; i != 1000; ++i) {
      add(t, "a\0\xff", 3);
    }
    add(t, nullptr, 0);
    EXPECT_GT(80, allocations::Asked() - asked);
  };
  return {name, [get](T& t) { return (t.*get)(); }, "", {{deliver, whole}}};
}

// The properties of one class.
template <typename T>
class List {
 public:
  void Add(const std::vector<Property<T>>& more) {
    rows.insert(rows.end(), more.begin(), more.end());
  }
  List& Row(const char* name, std::function<string(T&)> read, const string& initial) {
    rows.push_back({name, std::move(read), initial});
    return *this;
  }
  // What can be written to through what it is read by: both ways show the same.
  template <typename Constant, typename Changing>
  List& Both(const char* name, Constant (T::*constant)() const, Changing (T::*changing)(),
             const string& initial) {
    const auto read = [=](T& t) {
      const string shown = Shown((t.*constant)());
      return shown == Shown((t.*changing)()) ? shown : "differ";
    };
    return Row(name, read, initial);
  }
  // A change of the last row, and what is read then.
  List& Then(std::function<void(T&)> change, const string& shown) {
    rows.back().changes.emplace_back(std::move(change), shown);
    return *this;
  }

  // Makes one change after the other, and compares every property each time.
  void Check(T& object) {
    Compare(object, "construction");
    for (auto& row : rows) {
      for (const auto& [change, shown] : row.changes) {
        change(object);
        row.expected = shown;
        Compare(object, row.name);
      }
    }
  }

 private:
  void Compare(T& object, const char* after) {
    for (const Property<T>& row : rows) {
      EXPECT_EQ(row.expected, row.read(object)) << row.name << " after " << after;
    }
  }

  std::vector<Property<T>> rows;
};

// Rows of the list `of` for the class `T`, whose own functions are called: the symbol of one that
// is virtual is not seen otherwise.
#define SAME(name, ...) Value(#name, &T::name, &T::name, __VA_ARGS__)
#define GET_SET(name, ...) Value(#name, &T::get##name, &T::set##name, __VA_ARGS__)
#define CHUNKS(get, add) \
  Chunks<T>(#get, &T::get, [](T& t, const char* data, unsigned int n) { t.T::add(data, n); })
#define BOTH(name, initial) of.Both(#name, &T::name, &T::name, initial)
#define READ(shown, initial) \
  of.Row(                    \
      #shown, [](T& t) { return Fields shown; }, initial)
#define DO(change, shown) Then([&](T& t) { t.T::change; }, shown)

// --- Items --------------------------------------------------------------------------------------

TEST(Properties, OfItems) {
  OmProcedure procedure(kText, "x", "y", "z");
  OmTextBlock block(kText, "words");
  {
    using T = OmOutputPart;
    List<T> of;
    BOTH(Title, "text").DO(SetTitle(kA), "a");
    of.Add({SAME(UserWord, 0, {1, ~0UL}), SAME(FirstFlag, true, {false, true}),
            SAME(SecondFlag, true, {false, true})});
    of.Check(procedure);
  }
  {
    using T = OmHeading;
    List<T> of;
    BOTH(Footnotes, "").DO(Footnotes().push_back(OmFootnote(&kA, nullptr, nullptr)), "a|null|0| ");
    of.Check(procedure);
  }
  {
    using T = OmProcedure;
    List<T> of;
    READ((t.OutlineText(), Show(t.Title())), "text|a|").DO(setOutlineText(kText), "text|text|");
    of.Add({SAME(TextA, "x", {"a", ""}), SAME(TextB, "y", {"a", ""}), SAME(TextC, "z", {"a", ""}),
            SAME(ExtraText, "", {"a", ""}), SAME(NumberA, 2, {-3}), SAME(NumberB, 2, {-3}),
            SAME(NumberC, 2, {-3}), SAME(NumberD, 2, {-3})});
    of.Check(procedure);
  }
  {
    using T = OmTextBlock;
    List<T> of;
    BOTH(Lines, "").DO(Lines().emplace_back("a"), "a,");
    READ((t.Text(), t.IsLog()), "words|0|");
    of.Check(block);
  }
}

TEST(Properties, OfCharts) {
  using T = OmChart;
  T chart(kText, "UTF-8", 7);
  chart.SetXmlUncompressedLength(5);  // read by nobody
  chart.SetXmlCompressedLength(5);
  List<T> of;
  of.Add({CHUNKS(GetXmlDescription, SetXmlDescription), CHUNKS(GetXmlData, SetBinaryDataStream),
          CHUNKS(GetImageData, SetImageStream), CHUNKS(GetViZJSONData, SetViZJSON),
          CHUNKS(getVizJSONTemplate, setVizJSONTemplate),
          CHUNKS(getGraphServiceOptions, setGraphServiceOptions),
          CHUNKS(getGraphServiceVariables, setGraphServiceVariables)});
  READ((t.GetChartSubType()), "0|")
      .DO(SetImageSubType(static_cast<ChartXMLContentSubType>(4)), "4|");
  READ((t.GetEditor()), "1|").DO(Done(&"x\3\0\0\0\5\0\0"[1]), "5|");  // not aligned
  BOTH(getOptions, "")
      .DO(setOptions("b"), "b")
      .DO(setOptions("a"), "a")
      .DO(getOptions() += "c", "ac");
  READ((t.hasMap()), "0|").DO(SetMapInfo("a", 1), "1|");
  READ((t.hasCSVFile(), ListOf(t.getCSVFileNames())), "0||").DO(addCSVFileName("ab", 1), "1|a,|");
  READ((ListOf(t.getCSVFiles())), "|").DO(addCSVFileContent("ab", 1), "a,|");
  READ((t.hasGeoJSONFile(), ListOf(t.getGeoJSONFileNames())), "0||")
      .DO(addGeoJSONFileName("ab", 1), "1|a,|");
  READ((ListOf(t.getGeoJSONContent())), "|").DO(addGeoJSONFileContent("ab", 1), "a,|");
  READ((t.LocaleCodePage(), t.getChartId()), "UTF-8|7|");
  of.Check(chart);
  EXPECT_EQ(3, chart.GetEditable());
  chart.deleteData();
  EXPECT_EQ("0|3000|", Fields(chart.GetXmlData().size(), chart.GetXmlDescription().size()));
}

TEST(Properties, OfOtherPayloads) {
  {
    using T = OmModel;
    T model(kText);
    List<T> of;
    of.Add({CHUNKS(GetPMML, SetPMML), CHUNKS(GetBinaryDataStream, SetBinaryDataStream)});
    // The containers change the type.
    READ((t.GetModelType(), t.GetPMMLContainer(), t.GetStatXMLContainer()), "0|||")
        .DO(SetPMMLContainer("ab", 1), "1|a||")
        .DO(SetModelType(static_cast<T::MODEL_TYPE>(-5)), "-5|a||")
        .DO(SetStatXMLContainer("b", 1), "1|a|b|")
        .DO(SetModelType(T::kModelDefault), "0|a|b|")
        .DO(SetPMMLContainer("b", 1), "1|ab|b|");
    of.Check(model);
  }
  {
    using T = OmDendrix;
    T tree(kText, "");
    List<T> of;
    of.Add({CHUNKS(GetPath, SetPath), CHUNKS(GetUncompressedXml, SetUncompressedXML),
            CHUNKS(GetUncompressedDisplayXML, SetUncompressedDisplayXML)});
    READ((t.GetTreeType()), "-1|").DO(SetTreeType(7), "7|").DO(Done(), "7|");
    READ((t.GetCompressedXml(), t.GetXmlUncompressedLength()), "|0|")
        .DO(SetCompressedXML("abc", 2, 10), "ab|10|")
        .DO(SetCompressedXML("c", 1, 20), "abc|20|");
    of.Check(tree);
  }
  {
    using T = OmInteractive;
    T interactive(kText, "UTF-8", 8);
    List<T> of;
    of.Add(
        {CHUNKS(getInteractiveJSON, setInteractiveJSON), GET_SET(ProcedureName, "", {"b", "a"})});
    BOTH(getJSONPath, "")
        .DO(setJSONPath("b"), "b")
        .DO(setJSONPath("a"), "a")
        .DO(getJSONPath() += "c", "ac");
    BOTH(getOptions, "")
        .DO(setOptions("b"), "b")
        .DO(setOptions("a"), "a")
        .DO(getOptions() += "c", "ac");
    READ((t.hasGeoJSONFile(), ListOf(t.getGeoJSONFileNames())), "0||")
        .DO(addGeoJSONFileName("ab", 1), "1|a,|");
    READ((ListOf(t.getGeoJSONContent())), "|").DO(addGeoJSONFileContent("ab", 1), "a,|");
    READ((t.LocaleCodePage(), t.getInteractiveId()), "UTF-8|8|");
    of.Check(interactive);
  }
}

// --- Tables -------------------------------------------------------------------------------------

TEST(Properties, OfPivotTables) {
  using T = OmPivotTable;
  T table(kText, OmStringCell("Template"), false);
  BackendSettings settings;
  settings.setMaxCells(3);
  List<T> of;
  BOTH(TemplateName, "Template");
  BOTH(CornerText, "null").DO(CornerText(&kA), "a").DO(CornerText(nullptr), "null");
  BOTH(Caption, "null").DO(Caption(&kA), "a").DO(Caption(nullptr), "null");
  of.Both("TableTitle", &T::GetTableTitle, &T::TableTitle, "null").DO(SetTableTitle(kA), "a");
  BOTH(Rows, "").DO(Rows().push_back(3), "3,");
  BOTH(Columns, "").DO(Columns().push_back(3), "3,");
  BOTH(Layers, "").DO(Layers().push_back(3), "3,");
  BOTH(Footnotes, "").DO(Footnotes().push_back(OmFootnote(&kA, nullptr, nullptr)), "a|null|0| ");
  READ((t.HasRemovedFootnotes()), "0|")
      .DO(RemovedFootnotes(true), "1|")
      .DO(RemovedFootnotes(false), "0|");
  READ((Shown(t.getBackendSettings()), t.fastTable()), Fields(Shown(BackendSettings()), true))
      .DO(setBackendSettings(settings), Fields(Shown(settings), false))
      .DO(setFastTable(true), Fields(Shown(settings), true));
  READ((t.getICUTracker() == nullptr, t.getU8Tracker() == nullptr), "1|1|");
  READ((t.getAreaFormat(FormatArea::kArea2) == nullptr), "1|")
      .DO(setAreaFormat(new FormatArea(FormatArea::kArea2)), "0|")
      .DO(setAreaFormat(std::make_unique<FormatArea>(FormatArea::kArea2)), "0|");
  of.Add({SAME(Show, true, {false, true}), SAME(RotateRowLabels, false, {true, false}),
          SAME(RotateColumnLabels, false, {true, false}), SAME(showCaption, true, {false, true}),
          SAME(OptionNumber, -1, {0, 7}), SAME(TableId, -1, {0, 1LL << 40}),
          SAME(TableLocale, "", {"a"})});
  READ((t.HasSplits(), t.IsWarnings(), t.IsNotes()), "0|0|0|");
  READ((t.hasMarkers()), "0|").DO(setHasMarkers(), "1|");
  READ((t.backendOwns()), "1|").DO(setBackendOwns(false), "0|").DO(setBackendOwns(true), "1|");
  of.Add({GET_SET(LabelsOnly, false, {true, false}), GET_SET(Imputed, false, {true, false})});
  READ((t.IsScratched()), "0|").DO(Scratch(true), "1|").DO(Scratch(false), "0|");
  of.Add({SAME(MinColumnWidth, -1, {0, 7}), SAME(MaxColumnWidth, -1, {0, 7}),
          SAME(MinRowWidth, -1, {0, 7}), SAME(MaxRowWidth, -1, {0, 7}),
          GET_SET(LayerLoc, -1, {0, 7}), GET_SET(Lang, 0, {-1, 7}),
          GET_SET(VariableMode, 0, {-1, 7}), GET_SET(ValueMode, 0, {-1, 7}),
          GET_SET(StartColor, -1, {0, 7}), GET_SET(EndColor, -1, {0, 7}),
          GET_SET(BorderInfo, "", {"a"}), GET_SET(TableLookInfo, "", {"a"}),
          GET_SET(TablePropertiesInfo, "", {"a"}), GET_SET(TableCustomWidths, {}, {{1, 2}}),
          GET_SET(TableCustomHeights, {}, {{1, 2}})});
  of.Both("EmptyCellStyles", &T::getEmptyCellStyles, &T::emptyCellStyles, "")
      .DO(emptyCellStyles()[5] = 6, "5|6|,");
  of.Both("CellStyles", &T::getCellStyles, &T::cellStyles, "")
      .DO(cellStyles().emplace_back(), "|-1|-1|-1|-1|0|0|0|0|0|,");
  READ((t.getMiscProperties()), "|")
      .DO(addMiscProperty(""), "|")
      .DO(addMiscProperty("a"), "a|")
      .DO(addMiscProperty("b"), "a,b|");
  of.Check(table);
  for (const string name : {"Warnings", "Notes", "warnings", "Notes "}) {
    const T named(kText, OmStringCell(name), true);
    EXPECT_EQ(Fields(named.HasSplits(), named.IsWarnings(), named.IsNotes()),
              Fields(true, name == "Warnings", name == "Notes"));
  }
}

TEST(Properties, OfWhatATableHolds) {
  {
    using T = OmFootnote;
    T note(&kText, nullptr, nullptr);
    List<T> of;
    BOTH(Text, "text").DO(Text(kA), "a");
    READ((Show(t.Marker())), "null|").DO(Marker(&kA), "a|").DO(Marker(nullptr), "null|");
    of.Add({SAME(UseCount, 0, {-2, 7})});
    of.DO(AddUse(), "8");
    of.Check(note);
  }
  {
    using T = FormatArea;
    T area(FormatArea::kArea8);
    List<T> of;
    READ((t.getArea()), "8|");
    of.Add({GET_SET(FontName, "", {"a"}), GET_SET(FontSize, 0, {2.5F}),
            GET_SET(FontStyle, -1, {0, 7}), GET_SET(Underline, false, {true, false}),
            GET_SET(HorizontalAlignment, -1, {0, 7}), GET_SET(VerticalAlignment, -1, {0, 7}),
            GET_SET(MarginLeft, 6, {-1, 0}), GET_SET(MarginRight, 2, {-1, 0}),
            GET_SET(MarginTop, 2, {-1, 0}), GET_SET(MarginBottom, 2, {-1, 0}),
            GET_SET(TextColor, "", {"a"}), GET_SET(BackgroundColor, "", {"a"}),
            GET_SET(UseAltRowColors, false, {true, false}), GET_SET(AlternateTextColor, "", {"a"}),
            GET_SET(AlternateBackgroundColor, "", {"a"})});
    of.Check(area);
  }
  {
    using T = OmDimensionNode;
    T node(kText, 3, true, nullptr);
    EXPECT_EQ("null|-1|0|0|0|2||", Show(T(nullptr)));
    const OmDimension dimension(node, nullptr);
    EXPECT_EQ("text", dimension.Name()->Text());
    List<T> of;
    BOTH(Text, "text");
    of.Add({SAME(Subscript, 3, {0, T::kNoSubscript})});
    READ((t.IsGroup()), "1|");
    of.Add({SAME(Hide, false, {true, false}), SAME(HideLabels, false, {true, false}),
            SAME(SortOrder, 2, {0, 1})});
    BOTH(ChildIndex, "").DO(ChildIndex().push_back(4), "4,");
    of.Check(node);
  }
}

// --- The platform -------------------------------------------------------------------------------

TEST(Properties, OfThePlatform) {
  {
    using T = BackendSettings;
    T settings;
    List<T> of;
    of.Add({GET_SET(MaxCells, std::numeric_limits<long long>::max(), {-1, 7}),
            GET_SET(FastTables, false, {true, false}), GET_SET(Unicode, true, {false, true}),
            GET_SET(Locale, "", {"a"})});
    of.Check(settings);
    EXPECT_EQ(Shown(settings), Shown(T(settings)));
  }
  {
    using T = OmCellText;
    icuTracker tracker(true, "de");
    EXPECT_EQ("1|de|", Fields(tracker.Unicode(), tracker.Locale()));
    OmStringCell cell("text", nullptr, true);
    OmCellMetaData meta;
    meta.Style(5);
    List<T> of;
    READ((t.getICUTracker() == nullptr), "1|")
        .DO(setICUTracker(&tracker), "0|")
        .DO(setICUTracker(nullptr), "1|");
    READ((t.hasMeta() ? t.getMeta().Style() : 0), "0|").DO(setMeta(meta), "5|");
    READ((t.Text()), "text|");
    of.Check(cell);
  }
  {
    using T = OmCellMetaData;
    T meta;
    List<T> of;
    of.Add({SAME(Style, -1, {0, 7})});
    BOTH(Footnotes, "").DO(Footnotes().push_back(4), "4,");
    of.Check(meta);
    T other;
    other = meta;
    EXPECT_TRUE(other == meta);
  }
  {
    using T = Qualtex_Format;
    T format(T::kString, 65536 + 60, 258);
    List<T> of;
    READ((t.IsString()), "1|");
    of.Add({SAME(Type, T::kString, {T::kStringHex}), SAME(Width, 60, {41, 9}),
            SAME(Decimals, 2, {0, 255})});
    of.Check(format);
    // Only a string is wider than 40.
    EXPECT_EQ("40|39|", Fields(T(T::kFixed, 41, 0).Width(), T(T::kFixed, 39, 0).Width()));
    EXPECT_EQ("5|8|2|0|", Fields(kDefaultFormat.Type(), kDefaultFormat.Width(),
                                 kDefaultFormat.Decimals(), kDefaultFormat.IsString()));
  }
  const OmVariable variable("n", "l");
  const OmNumDataValue number(4, "l", Qualtex_Format(Qualtex_Format::kFixed, 9, 1));
  const OmStringDataValue value("v", "l");
  EXPECT_EQ("1|0|n|l|4.000000|l|9|v|l|",
            Fields(OmStringCell("", nullptr, true).Flag(), kText.Flag(), string(variable.Name()),
                   string(variable.Label()), number.Value(), string(number.Label()),
                   number.Format().Width(), string(value.Value()), string(value.Label())));
}

}  // namespace
