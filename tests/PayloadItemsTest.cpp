// The items that carry payloads, area formats, and the format and composite helpers.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Format.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/Utility.h"
#include "platform/cells/Composite.h"
#include "platform/cells/Number.h"
#include "platform/cells/StringCell.h"
#include "platform/cells/StringCellUTF8.h"
#include "tests/support/Allocations.h"

namespace {

using std::string;
using namespace std::string_literals;

const OmStringCell kTitle("title");

// Delivers a payload in many chunks of any bytes: it arrives whole, after few allocations.
template <typename Item>
void DeliverInChunks(Item& item, void (Item::*set)(const char*, unsigned int),
                     const string& (Item::*get)() const, unsigned int chunks = 1000,
                     const string& chunk = string("a\0\xff", 3)) {
  string whole;
  const long made = allocations::Made();
  for (unsigned int i = 0; i < chunks; ++i) {
    whole += chunk;
    (item.*set)(chunk.data(), static_cast<unsigned int>(chunk.size()));
  }
  EXPECT_GT(80, allocations::Made() - made);
  (item.*set)(nullptr, 0);
  EXPECT_TRUE(whole == (item.*get)());
}

TEST(PayloadItems, TakeChunksInConstantTimePerByte) {
  OmChart chart(kTitle, "", 7);
  chart.SetXmlCompressedLength(2);
  for (const auto& [set, get] :
       {std::pair(&OmChart::SetXmlDescription, &OmChart::GetXmlDescription),
        {&OmChart::SetImageStream, &OmChart::GetImageData},
        {&OmChart::SetViZJSON, &OmChart::GetViZJSONData},
        {&OmChart::setVizJSONTemplate, &OmChart::getVizJSONTemplate},
        {&OmChart::setGraphServiceOptions, &OmChart::getGraphServiceOptions},
        {&OmChart::setGraphServiceVariables, &OmChart::getGraphServiceVariables}}) {
    DeliverInChunks(chart, set, get);
  }
  DeliverInChunks(chart, &OmChart::SetBinaryDataStream, &OmChart::GetXmlData, 16384,
                  string(4096, 'x'));
  chart.deleteData();
  EXPECT_EQ("", chart.GetXmlData());
  EXPECT_EQ(3000U, chart.GetXmlDescription().size());
  EXPECT_EQ(7, chart.getChartId());

  OmModel model(kTitle);
  DeliverInChunks(model, &OmModel::SetPMML, &OmModel::GetPMML);
  DeliverInChunks(model, &OmModel::SetBinaryDataStream, &OmModel::GetBinaryDataStream);
  EXPECT_EQ(0, model.GetModelType());
  DeliverInChunks(model, &OmModel::SetStatXMLContainer, &OmModel::GetStatXMLContainer);
  EXPECT_EQ(1, model.GetModelType());
  model.SetModelType(static_cast<OmModel::MODEL_TYPE>(-5));
  EXPECT_EQ(-5, model.GetModelType());
  DeliverInChunks(model, &OmModel::SetPMMLContainer, &OmModel::GetPMMLContainer);
  EXPECT_EQ(1, model.GetModelType());

  OmDendrix tree(kTitle, "");
  for (const auto& [set, get] :
       {std::pair(&OmDendrix::SetPath, &OmDendrix::GetPath),
        {&OmDendrix::SetUncompressedXML, &OmDendrix::GetUncompressedXml},
        {&OmDendrix::SetUncompressedDisplayXML, &OmDendrix::GetUncompressedDisplayXML}}) {
    DeliverInChunks(tree, set, get);
  }
  EXPECT_EQ(-1, tree.GetTreeType());
  EXPECT_EQ(0U, tree.GetXmlUncompressedLength());
  tree.SetCompressedXML("ab", 2, 10);
  tree.SetCompressedXML("c", 1, 20);
  EXPECT_EQ("abc", tree.GetCompressedXml());
  EXPECT_EQ(20U, tree.GetXmlUncompressedLength());

  OmInteractive interactive(kTitle, "", 8);
  DeliverInChunks(interactive, &OmInteractive::setInteractiveJSON,
                  &OmInteractive::getInteractiveJSON);
}

// Plays a delivery, where 'n' announces a file and every other character is a chunk. Returns the
// contents, each followed by a bar.
template <typename Item>
string Contents(const string& delivery, void (Item::*name)(const char*, unsigned int),
                void (Item::*content)(const char*, unsigned int),
                const std::vector<string>& (Item::*get)() const) {
  Item item(kTitle, "", 1);
  for (const char& step : delivery) {
    (item.*(step == 'n' ? name : content))(&step, 1);
  }
  string contents;
  for (const string& file : (item.*get)()) {
    contents += file + "|";
  }
  return contents;
}

TEST(PayloadItems, PairNamesWithChunks) {
  for (const auto& [delivery, expected] : {std::pair("", ""),
                                           {"nxynz", "xy|z|"},
                                           {"xy", "x|y|"},
                                           {"xnyz", "xyz|"},
                                           {"nnxyz", "x|yz|"},
                                           {"xyny", "x|y|y|"}}) {
    EXPECT_EQ(expected, Contents(delivery, &OmChart::addCSVFileName, &OmChart::addCSVFileContent,
                                 &OmChart::getCSVFiles));
    EXPECT_EQ(expected, Contents(delivery, &OmChart::addGeoJSONFileName,
                                 &OmChart::addGeoJSONFileContent, &OmChart::getGeoJSONContent));
    EXPECT_EQ(expected,
              Contents(delivery, &OmInteractive::addGeoJSONFileName,
                       &OmInteractive::addGeoJSONFileContent, &OmInteractive::getGeoJSONContent));
  }
  OmChart chart(kTitle, "", 1);
  chart.addCSVFileContent("x", 1);
  EXPECT_FALSE(chart.hasCSVFile());
  chart.addCSVFileName("a.csv", 5);
  EXPECT_TRUE(chart.hasCSVFile() && !chart.hasGeoJSONFile() && !chart.hasMap());
  EXPECT_EQ("a.csv", chart.getCSVFileNames().at(0));
}

// A length of a map-information record and the string behind it.
template <typename Length>
string Field(bool reversed, Length length, const string& text = "") {
  string raw(reinterpret_cast<const char*>(&length), sizeof length);
  return (reversed ? string(raw.rbegin(), raw.rend()) : raw) + text;
}

std::vector<string> ReadMap(const string& record) {
  OmChart chart(kTitle, "", 1);
  chart.SetMapInfo(record.data(), static_cast<unsigned int>(record.size()));
  std::vector<string> texts(4, "old");
  chart.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
  return texts;
}

TEST(Chart, ReadsMapInformationInsideItsRecord) {
  const string texts[] = {string(300, 'A'), "BC", "", "D"};
  for (const bool reversed : {false, true}) {
    // Any mark but 1 means the other byte order.
    const string mark = reversed ? "\5\0"s : Field<unsigned short>(false, 1);
    const string fields[] = {
        Field<unsigned int>(reversed, 300, texts[0]), Field<unsigned short>(reversed, 2, texts[1]),
        Field<unsigned int>(reversed, 0), Field<unsigned short>(reversed, 1, texts[3])};
    const string record = mark + fields[0] + fields[1] + fields[2] + fields[3];
    for (std::size_t size = 0; size <= record.size(); ++size) {
      const std::vector<string> read = ReadMap(record.substr(0, size));
      std::size_t end = mark.size();
      for (std::size_t i = 0; i < 4; ++i) {
        end += fields[i].size();
        ASSERT_EQ(size >= end ? texts[i] : "old", read[i]) << size << reversed;
      }
    }
    const string b(0xffff, 'b');
    EXPECT_EQ((std::vector<string>{"a", b, "old", "old"}),
              ReadMap(mark + Field(reversed, 1U, "a") + Field<unsigned short>(reversed, 0xffff, b) +
                      Field(reversed, 0xffffffffU, "c")));
  }
}

TEST(PayloadItems, ConvertTheirTitles) {
  for (const auto& [codePage, text, expected] : {std::tuple("ISO-8859-1", "gr\xc3\xbcn", "gr\xfcn"),
                                                 {"ISO-8859-1", "5 \xe2\x82\xac", "5 \xe2\x82\xac"},
                                                 {"no such page", "gr\xc3\xbcn", "gr\xc3\xbcn"}}) {
    const OmStringCellUTF8 title(text);
    OmChart chart(title, codePage, 1);
    OmInteractive interactive(title, codePage, 1);
    for (OmOutputPart* const part :
         {static_cast<OmOutputPart*>(&chart), static_cast<OmOutputPart*>(&interactive)}) {
      auto* const cell = dynamic_cast<OmStringCell*>(part->Title());
      ASSERT_NE(nullptr, cell) << text;
      EXPECT_EQ(expected, cell->Text());
      EXPECT_FALSE(cell->Flag());
    }
    EXPECT_EQ(codePage, chart.LocaleCodePage());
  }
  OmChart chart(OmNumber(2), "", 1);
  EXPECT_NE(nullptr, dynamic_cast<OmNumber*>(chart.Title()));

  const long live = allocations::Live();
  for (long n = 0; n < 10; ++n) {
    // A converter that finds no memory is a failed conversion, and no failed chart.
    allocations::FailsAt(n, [] { OmChart(kTitle, "UTF-8", 1); });
    EXPECT_EQ(live, allocations::Live()) << n;
  }
}

TEST(Chart, KnowsItsEditorBeforeItIsDone) {
  OmChart chart(kTitle, "", 1);
  EXPECT_EQ(1, chart.GetEditor());
#if OM_HARDENING
  EXPECT_DEATH(static_cast<void>(chart.GetEditable()), "OmChart::GetEditable");
#endif
  // Not aligned.
  const int values[] = {0, 5};
  char bytes[1 + sizeof values];
  std::memcpy(bytes + 1, values, sizeof values);
  chart.Done(bytes + 1);
  EXPECT_EQ(0, chart.GetEditable());
  EXPECT_EQ(5, chart.GetEditor());
}

TEST(FormatArea, OutlivesItsHandle) {
  auto format = std::make_unique<FormatArea>(FormatArea::kArea8);
  EXPECT_TRUE(format->getMarginLeft() == 6 && format->getMarginRight() == 2 &&
              format->getMarginTop() == 2 && format->getMarginBottom() == 2);
  EXPECT_TRUE(format->getFontSize() == 0 && !format->getUnderline());
  format->setFontName("a font name that needs a block of its own");
  const string& name = format->getFontName();
  format.reset();
  EXPECT_EQ("a font name that needs a block of its own", name);
}

// Sets every field to a value of its own before any is read.
template <typename Item, typename In, typename Out>
void ExpectApart(Item& item,
                 const std::vector<std::pair<void (Item::*)(In), Out (Item::*)() const>>& fields,
                 const std::vector<std::decay_t<In>>& values) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    (item.*fields[i].first)(values[i]);
  }
  for (std::size_t i = 0; i < fields.size(); ++i) {
    EXPECT_EQ(values[i], (item.*fields[i].second)()) << i;
  }
}

TEST(PayloadItems, KeepTheirFieldsApart) {
  FormatArea area(FormatArea::kArea0);
  using A = FormatArea;
  EXPECT_EQ(-3, area.getFontStyle() + area.getHorizontalAlignment() + area.getVerticalAlignment());
  ExpectApart<A, int, int>(area,
                           {{&A::setFontStyle, &A::getFontStyle},
                            {&A::setHorizontalAlignment, &A::getHorizontalAlignment},
                            {&A::setVerticalAlignment, &A::getVerticalAlignment},
                            {&A::setMarginLeft, &A::getMarginLeft},
                            {&A::setMarginRight, &A::getMarginRight},
                            {&A::setMarginTop, &A::getMarginTop},
                            {&A::setMarginBottom, &A::getMarginBottom}},
                           {10, 11, 12, 13, 14, 15, 16});
  ExpectApart<A, const string&, const string&>(
      area,
      {{&A::setFontName, &A::getFontName},
       {&A::setTextColor, &A::getTextColor},
       {&A::setBackgroundColor, &A::getBackgroundColor},
       {&A::setAlternateTextColor, &A::getAlternateTextColor},
       {&A::setAlternateBackgroundColor, &A::getAlternateBackgroundColor}},
      {"font", "text", "background", "alternate text", "alternate background"});
  area.setUnderline(true);
  area.setFontSize(2.5F);
  EXPECT_TRUE(area.getUnderline() && !area.getUseAltRowColors() && area.getFontSize() == 2.5F);

  OmInteractive interactive(kTitle, "", 7);
  using I = OmInteractive;
  ExpectApart<I, const string&, const string&>(interactive,
                                               {{&I::setProcedureName, &I::getProcedureName},
                                                {&I::setJSONPath, &I::getJSONPath},
                                                {&I::setOptions, &I::getOptions}},
                                               {"procedure", "path", "options"});
  interactive.setOptions("replaced");
  EXPECT_EQ("replaced", interactive.getOptions());
  EXPECT_EQ(7, interactive.getInteractiveId());
  const string meaning;
  OmDendrix dendrix(kTitle, meaning);
  EXPECT_EQ(-1, dendrix.GetTreeType());
  dendrix.SetTreeType(3);
  EXPECT_EQ(3, dendrix.GetTreeType());
  OmChart chart(kTitle, "", 1);
  chart.setOptions("a");
  chart.setOptions("b");
  chart.SetImageSubType(static_cast<ChartXMLContentSubType>(4));
  EXPECT_EQ("b", chart.getOptions());
  EXPECT_EQ(4, chart.GetChartSubType());
}

TEST(Format, ClampsTheWidthOfWhatIsNoString) {
  using F = Qualtex_Format;
  EXPECT_EQ(60, F(F::kString, 65536 + 60, 0).Width());
  F format(F::kFixed, 60, 258);
  format.Type(static_cast<F::FormatType>(2));
  EXPECT_TRUE(format.IsString() && format.Width() == 40 && format.Decimals() == 2);
}

TEST(Utility, FindsTheFirstNumber) {
  OmComposite composite;
  auto& tree = composite.Tree();
  *tree.Root() = new OmNumber(1);
  EXPECT_EQ(nullptr, OmUtility::GetFirstNumber(composite));
  const auto add = [&](auto node, OmCellText* cell) { return tree.Child(node, cell); };
  add(tree.Root(), nullptr);
  auto node = add(tree.Root(), new OmStringCell("text"));
  for (int level = 0; level < 10000; ++level) {
    node = add(node, nullptr);
  }
  EXPECT_EQ(nullptr, OmUtility::GetFirstNumber(composite));
  add(tree.Root(), new OmNumber(3));
  EXPECT_EQ(3, OmUtility::GetFirstNumber(composite)->Value());
  // The handles are stale now: the root's children have moved.
  node = tree.Root()[1];
  while (node.HasChild()) {
    node = node[0];
  }
  add(node, new OmNumber(2));
  EXPECT_EQ(2, OmUtility::GetFirstNumber(composite)->Value());
}

}  // namespace
