// The items of a document, what they carry, and the helpers beside them.

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "tests/support/Show.h"
#include "tests/support/Tables.h"

namespace {

using std::string;
using namespace std::string_literals;
using C = OmChart;
using I = OmInteractive;

const OmStringCell kText("text");

TEST(OutputItems, OwnTheirTexts) {
  OmHeading part(kText);
  // The old texts are gone before the new ones fail.
  EXPECT_THROW(part.SetTitle(BrittleText(0)), std::runtime_error);
  EXPECT_EQ(nullptr, part.Title());
  const BrittleText brittle(0);
  OmFootnote note(&kText, &kText, nullptr);
  EXPECT_THROW(note.Text(brittle), std::runtime_error);
  EXPECT_THROW(note.Marker(&brittle), std::runtime_error);
  EXPECT_EQ("null|null|0|", Show(OmFootnote(note)));
  OmOutputTree tree;
  auto node = ListTree<OmOutputPart*>::Node(tree, tree.List().begin()).Child(nullptr);
  node = node.Child(new OmHeading(kText));
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

// Plays a delivery, where 'n' announces a file and every other character is a chunk.
template <typename Item>
void Pair(void (Item::*name)(const char*, unsigned int),
          void (Item::*content)(const char*, unsigned int),
          const std::vector<string>& (Item::*names)() const,
          const std::vector<string>& (Item::*contents)() const, bool (Item::*has)() const) {
  for (const auto& [delivery, files, expected] : {std::tuple("", "", ""),
                                                  {"nxynz", "n,n,", "xy,z,"},
                                                  {"xy", "", "x,y,"},
                                                  {"xnyz", "n,", "xyz,"},
                                                  {"nnxyz", "n,n,", "x,yz,"},
                                                  {"xyny", "n,", "x,y,y,"}}) {
    Item item(kText, "", 1);
    for (const char* step = delivery; *step != 0; ++step) {
      (item.*(*step == 'n' ? name : content))(step, 1);
    }
    EXPECT_EQ(files, ListOf((item.*names)()));
    EXPECT_EQ(expected, ListOf((item.*contents)()));
    EXPECT_EQ(*files != 0, (item.*has)());
  }
}

TEST(PayloadItems, PairNamesWithChunks) {
  Pair(&C::addCSVFileName, &C::addCSVFileContent, &C::getCSVFileNames, &C::getCSVFiles,
       &C::hasCSVFile);
  Pair(&C::addGeoJSONFileName, &C::addGeoJSONFileContent, &C::getGeoJSONFileNames,
       &C::getGeoJSONContent, &C::hasGeoJSONFile);
  Pair(&I::addGeoJSONFileName, &I::addGeoJSONFileContent, &I::getGeoJSONFileNames,
       &I::getGeoJSONContent, &I::hasGeoJSONFile);
}

TEST(PayloadItems, ReadMapInformationInsideItsRecord) {
  // Any mark but 1 means the other byte order.
  for (const string& record :
       {"\1\0\2\0\0\0AA\1\0B\0\0\0\0\1\0D"s, "\5\0\0\0\0\2AA\0\1B\0\0\0\0\0\1D"s}) {
    for (unsigned int size = 0; size <= record.size(); ++size) {
      C map(kText, "", 1);
      map.SetMapInfo(record.substr(0, size).data(), size);
      string texts[] = {"old", "old", "old", "old"};
      map.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
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
    C converted(OmStringCellUTF8(text), codePage, 1);
    EXPECT_EQ(expected, converted.Title()->Text());
    EXPECT_FALSE(dynamic_cast<OmStringCell&>(*converted.Title()).Flag());
    EXPECT_EQ(expected, I(OmStringCellUTF8(text), codePage, 1).Title()->Text());
  }
  EXPECT_NE(nullptr, dynamic_cast<OmNumber*>(C(OmNumber(2), "", 1).Title()));
}

TEST(FormatArea, GivesTextsThatOutliveIt) {
  auto area = std::make_unique<FormatArea>(FormatArea::kArea8);
  area->setFontName("a font name that needs a block of its own");
  const string& name = area->getFontName();
  area.reset();
  EXPECT_EQ("a font name that needs a block of its own", name);
}

}  // namespace
