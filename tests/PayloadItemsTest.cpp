// The items that carry payloads, area formats, and the format and composite helpers.

#include <gtest/gtest.h>

#include <initializer_list>
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
#include "tests/support/Allocations.h"
#include "tests/support/Show.h"

namespace {

using std::string;
using namespace std::string_literals;

const OmStringCell kTitle("title");

// Delivers payloads in many chunks of any bytes: they arrive whole, after few allocations.
template <typename Item>
struct Stream {
  void (Item::*set)(const char*, unsigned int);
  const string& (Item::*get)() const;
};

template <typename Item>
void Deliver(Item& item, const std::vector<Stream<Item>>& streams, int chunks = 1000,
             const string& chunk = "a\0\xff"s) {
  for (const auto& [set, get] : streams) {
    string whole;
    const long asked = allocations::Asked();
    for (int i = 0; i < chunks; ++i) {
      whole += chunk;
      (item.*set)(chunk.data(), static_cast<unsigned int>(chunk.size()));
    }
    EXPECT_GT(80, allocations::Asked() - asked);
    (item.*set)(nullptr, 0);
    EXPECT_TRUE(whole == (item.*get)());
  }
}

TEST(PayloadItems, TakeChunksInConstantTimePerByte) {
  using C = OmChart;
  C chart(kTitle, "", 7);
  chart.SetXmlCompressedLength(2);
  Deliver<C>(chart, {{&C::SetXmlDescription, &C::GetXmlDescription},
                     {&C::SetImageStream, &C::GetImageData},
                     {&C::SetViZJSON, &C::GetViZJSONData},
                     {&C::setVizJSONTemplate, &C::getVizJSONTemplate},
                     {&C::setGraphServiceOptions, &C::getGraphServiceOptions},
                     {&C::setGraphServiceVariables, &C::getGraphServiceVariables}});
  Deliver<C>(chart, {{&C::SetBinaryDataStream, &C::GetXmlData}}, 16384, string(4096, 'x'));
  chart.deleteData();
  EXPECT_EQ("", chart.GetXmlData());
  EXPECT_EQ(3000U, chart.GetXmlDescription().size());
  EXPECT_EQ(7, chart.getChartId());

  using M = OmModel;
  M model(kTitle);
  Deliver<M>(model,
             {{&M::SetPMML, &M::GetPMML}, {&M::SetBinaryDataStream, &M::GetBinaryDataStream}});
  EXPECT_EQ(0, model.GetModelType());
  Deliver<M>(model, {{&M::SetStatXMLContainer, &M::GetStatXMLContainer}});
  EXPECT_EQ(1, model.GetModelType());
  model.SetModelType(static_cast<M::MODEL_TYPE>(-5));
  EXPECT_EQ(-5, model.GetModelType());
  Deliver<M>(model, {{&M::SetPMMLContainer, &M::GetPMMLContainer}});
  EXPECT_EQ(1, model.GetModelType());

  using D = OmDendrix;
  D tree(kTitle, "");
  Deliver<D>(tree, {{&D::SetPath, &D::GetPath},
                    {&D::SetUncompressedXML, &D::GetUncompressedXml},
                    {&D::SetUncompressedDisplayXML, &D::GetUncompressedDisplayXML}});
  EXPECT_EQ(-1, tree.GetTreeType());
  EXPECT_EQ(0U, tree.GetXmlUncompressedLength());
  tree.SetCompressedXML("ab", 2, 10);
  tree.SetCompressedXML("c", 1, 20);
  EXPECT_EQ("abc", tree.GetCompressedXml());
  EXPECT_EQ(20U, tree.GetXmlUncompressedLength());

  using I = OmInteractive;
  I interactive(kTitle, "", 8);
  Deliver<I>(interactive, {{&I::setInteractiveJSON, &I::getInteractiveJSON}});
  EXPECT_EQ(8, interactive.getInteractiveId());
}

// Plays a delivery, where 'n' announces a file and every other character is a chunk. Returns the
// contents.
template <typename Item>
string Contents(const string& delivery, void (Item::*name)(const char*, unsigned int),
                void (Item::*content)(const char*, unsigned int),
                const std::vector<string>& (Item::*get)() const) {
  Item item(kTitle, "", 1);
  for (const char& step : delivery) {
    (item.*(step == 'n' ? name : content))(&step, 1);
  }
  return ListOf((item.*get)());
}

TEST(PayloadItems, PairNamesWithChunks) {
  using C = OmChart;
  using I = OmInteractive;
  for (const auto& [delivery, expected] : {std::pair("", ""),
                                           {"nxynz", "xy,z,"},
                                           {"xy", "x,y,"},
                                           {"xnyz", "xyz,"},
                                           {"nnxyz", "x,yz,"},
                                           {"xyny", "x,y,y,"}}) {
    EXPECT_EQ(expected,
              Contents(delivery, &C::addCSVFileName, &C::addCSVFileContent, &C::getCSVFiles));
    EXPECT_EQ(expected, Contents(delivery, &C::addGeoJSONFileName, &C::addGeoJSONFileContent,
                                 &C::getGeoJSONContent));
    EXPECT_EQ(expected, Contents(delivery, &I::addGeoJSONFileName, &I::addGeoJSONFileContent,
                                 &I::getGeoJSONContent));
  }
  C chart(kTitle, "", 1);
  chart.addCSVFileContent("x", 1);
  EXPECT_FALSE(chart.hasCSVFile());
  chart.addCSVFileName("a.csv", 5);
  EXPECT_TRUE(chart.hasCSVFile() && !chart.hasGeoJSONFile() && !chart.hasMap());
  EXPECT_EQ("a.csv", chart.getCSVFileNames().at(0));
}

TEST(Chart, ReadsMapInformationInsideItsRecord) {
  // Any mark but 1 means the other byte order.
  for (const string& record :
       {"\1\0\2\0\0\0AA\1\0B\0\0\0\0\1\0D"s, "\5\0\0\0\0\2AA\0\1B\0\0\0\0\0\1D"s}) {
    for (unsigned int size = 0; size <= record.size(); ++size) {
      OmChart chart(kTitle, "", 1);
      chart.SetMapInfo(record.substr(0, size).data(), size);
      std::vector<string> texts(4, "old");
      chart.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
      EXPECT_EQ(Fields(size < 8 ? "old" : "AA", size < 11 ? "old" : "B", size < 15 ? "old" : "",
                       size < 18 ? "old" : "D"),
                Fields(texts[0], texts[1], texts[2], texts[3]))
          << size;
    }
  }
}

TEST(PayloadItems, ConvertTheirTitles) {
  for (const auto& [codePage, text, expected] : {std::tuple("ISO-8859-1", "gr\xc3\xbcn", "gr\xfcn"),
                                                 {"ISO-8859-1", "5 \xe2\x82\xac", "5 \xe2\x82\xac"},
                                                 {"no such page", "gr\xc3\xbcn", "gr\xc3\xbcn"}}) {
    const OmStringCellUTF8 title(text);
    OmChart chart(title, codePage, 1);
    OmInteractive interactive(title, codePage, 1);
    for (OmOutputPart* const part : std::initializer_list<OmOutputPart*>{&chart, &interactive}) {
      const auto& cell = dynamic_cast<OmStringCell&>(*part->Title());
      EXPECT_EQ(expected, cell.Text());
      EXPECT_FALSE(cell.Flag());
    }
    EXPECT_EQ(codePage, chart.LocaleCodePage());
  }
  OmChart chart(OmNumber(2), "", 1);
  EXPECT_NE(nullptr, dynamic_cast<OmNumber*>(chart.Title()));
}

TEST(Chart, KnowsItsEditorBeforeItIsDone) {
  OmChart chart(kTitle, "", 1);
  EXPECT_EQ(1, chart.GetEditor());
  chart.Done(&"x\0\0\0\0\5\0\0"[1]);  // not aligned
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

TEST(PayloadItems, KeepTheirFieldsApart) {
  FormatArea area(FormatArea::kArea0);
  EXPECT_EQ(-3, area.getFontStyle() + area.getHorizontalAlignment() + area.getVerticalAlignment());
  area.setFontStyle(1);
  area.setHorizontalAlignment(2);
  area.setVerticalAlignment(3);
  area.setMarginLeft(4);
  area.setMarginRight(5);
  area.setMarginTop(6);
  area.setMarginBottom(7);
  area.setFontName("a");
  area.setTextColor("b");
  area.setBackgroundColor("c");
  area.setAlternateTextColor("d");
  area.setAlternateBackgroundColor("e");
  area.setUnderline(true);
  area.setFontSize(2.5F);
  EXPECT_EQ("1|2|3|4|5|6|7|",
            Fields(area.getFontStyle(), area.getHorizontalAlignment(), area.getVerticalAlignment(),
                   area.getMarginLeft(), area.getMarginRight(), area.getMarginTop(),
                   area.getMarginBottom()));
  EXPECT_EQ("a|b|c|d|e|", Fields(area.getFontName(), area.getTextColor(), area.getBackgroundColor(),
                                 area.getAlternateTextColor(), area.getAlternateBackgroundColor()));
  EXPECT_TRUE(area.getUnderline() && !area.getUseAltRowColors() && area.getFontSize() == 2.5F);

  OmInteractive interactive(kTitle, "", 7);
  interactive.setProcedureName("a");
  interactive.setJSONPath("b");
  interactive.setOptions("old");
  interactive.setOptions("c");
  EXPECT_EQ("a|b|c|", Fields(interactive.getProcedureName(), interactive.getJSONPath(),
                             interactive.getOptions()));
  OmChart chart(kTitle, "", 1);
  chart.setOptions("a");
  chart.setOptions("b");
  chart.SetImageSubType(static_cast<ChartXMLContentSubType>(4));
  EXPECT_EQ("b|4|", Fields(chart.getOptions(), chart.GetChartSubType()));
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
  tree.Child(tree.Root(), nullptr);
  auto node = tree.Child(tree.Root(), new OmStringCell("text"));
  for (int level = 0; level < 10000; ++level) {
    node = tree.Child(node, nullptr);
  }
  EXPECT_EQ(nullptr, OmUtility::GetFirstNumber(composite));
  tree.Child(node, new OmNumber(2));
  tree.Child(tree.Root(), new OmNumber(3));
  EXPECT_EQ(2, OmUtility::GetFirstNumber(composite)->Value());
}

}  // namespace
