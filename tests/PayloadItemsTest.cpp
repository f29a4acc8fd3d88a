// The items that carry payloads, area formats, and the format and composite helpers.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
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

const OmStringCell kTitle("title");

// Delivers a payload in many chunks of any bytes: it arrives whole, after few allocations.
template <typename Item>
void DeliverInChunks(Item& item, void (Item::*set)(const char*, unsigned int),
                     const string& (Item::*get)() const, unsigned int chunks, const string& chunk) {
  string whole;
  for (unsigned int i = 0; i < chunks; ++i) {
    whole += chunk;
  }
  const long made = allocations::Made();
  for (unsigned int i = 0; i < chunks; ++i) {
    (item.*set)(chunk.data(), static_cast<unsigned int>(chunk.size()));
  }
  EXPECT_GT(40, allocations::Made() - made);
  EXPECT_TRUE(whole == (item.*get)());
  (item.*set)(nullptr, 0);
  EXPECT_EQ(whole.size(), (item.*get)().size());
}

TEST(PayloadItems, TakeChunksInConstantTimePerByte) {
  const string chunk("a\0\xff", 3);
  OmChart chart(kTitle, "", 7);
  chart.SetXmlCompressedLength(2);
  for (const auto& [set, get] :
       {std::pair(&OmChart::SetXmlDescription, &OmChart::GetXmlDescription),
        {&OmChart::SetImageStream, &OmChart::GetImageData},
        {&OmChart::SetViZJSON, &OmChart::GetViZJSONData},
        {&OmChart::setVizJSONTemplate, &OmChart::getVizJSONTemplate},
        {&OmChart::setGraphServiceOptions, &OmChart::getGraphServiceOptions},
        {&OmChart::setGraphServiceVariables, &OmChart::getGraphServiceVariables}}) {
    DeliverInChunks(chart, set, get, 1000, chunk);
  }
  DeliverInChunks(chart, &OmChart::SetBinaryDataStream, &OmChart::GetXmlData, 16384,
                  string(4096, 'x'));
  chart.deleteData();
  EXPECT_EQ("", chart.GetXmlData());
  EXPECT_EQ(3000U, chart.GetXmlDescription().size());
  EXPECT_EQ(7, chart.getChartId());

  OmModel model(kTitle);
  DeliverInChunks(model, &OmModel::SetPMML, &OmModel::GetPMML, 1000, chunk);
  DeliverInChunks(model, &OmModel::SetBinaryDataStream, &OmModel::GetBinaryDataStream, 1000, chunk);
  EXPECT_EQ(0, model.GetModelType());
  DeliverInChunks(model, &OmModel::SetStatXMLContainer, &OmModel::GetStatXMLContainer, 1000, chunk);
  EXPECT_EQ(1, model.GetModelType());
  model.SetModelType(static_cast<OmModel::MODEL_TYPE>(-5));
  EXPECT_EQ(-5, model.GetModelType());
  DeliverInChunks(model, &OmModel::SetPMMLContainer, &OmModel::GetPMMLContainer, 1000, chunk);
  EXPECT_EQ(1, model.GetModelType());

  OmDendrix tree(kTitle, chunk);
  for (const auto& [set, get] :
       {std::pair(&OmDendrix::SetPath, &OmDendrix::GetPath),
        {&OmDendrix::SetUncompressedXML, &OmDendrix::GetUncompressedXml},
        {&OmDendrix::SetUncompressedDisplayXML, &OmDendrix::GetUncompressedDisplayXML}}) {
    DeliverInChunks(tree, set, get, 1000, chunk);
  }
  EXPECT_EQ(-1, tree.GetTreeType());
  EXPECT_EQ(0U, tree.GetXmlUncompressedLength());
  tree.SetCompressedXML("ab", 2, 10);
  tree.SetCompressedXML("c", 1, 20);
  EXPECT_EQ("abc", tree.GetCompressedXml());
  EXPECT_EQ(20U, tree.GetXmlUncompressedLength());

  OmInteractive interactive(kTitle, "", 8);
  DeliverInChunks(interactive, &OmInteractive::setInteractiveJSON,
                  &OmInteractive::getInteractiveJSON, 1000, chunk);
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

// A map-information record of four strings, and where each of them ends.
struct MapRecord {
  explicit MapRecord(bool reversed_) : reversed(reversed_) { Add<unsigned short>(1); }

  template <typename Length>
  void Add(Length length, const string& text = "") {
    string raw(reinterpret_cast<const char*>(&length), sizeof length);
    bytes += reversed ? string(raw.rbegin(), raw.rend()) : raw;
    bytes += text;
    ends.push_back(bytes.size());
  }
  std::vector<string> Read(std::size_t size) const {
    OmChart chart(kTitle, "", 1);
    // A block of the exact size, so that a sanitizer sees any read past it.
    const auto exact = std::make_unique<char[]>(size);
    std::memcpy(exact.get(), bytes.data(), size);
    chart.SetMapInfo(exact.get(), static_cast<unsigned int>(size));
    std::vector<string> texts(4, "old");
    chart.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
    return texts;
  }

  bool reversed;
  string bytes;
  std::vector<std::size_t> ends;
};

TEST(Chart, ReadsMapInformationInsideItsRecord) {
  const string text1(300, 'A');
  for (const bool reversed : {false, true}) {
    MapRecord record(reversed);
    record.Add<unsigned int>(300, text1);
    record.Add<unsigned short>(2, "BC");
    record.Add<unsigned int>(0);
    record.Add<unsigned short>(1, "D");
    const string texts[] = {text1, "BC", "", "D"};
    for (std::size_t size = 0; size <= record.bytes.size(); ++size) {
      const std::vector<string> read = record.Read(size);
      for (std::size_t i = 0; i < 4; ++i) {
        ASSERT_EQ(size >= record.ends[i + 1] ? texts[i] : "old", read[i]) << size << reversed;
      }
    }
    MapRecord largest(reversed);
    largest.Add<unsigned int>(1, "a");
    largest.Add<unsigned short>(0xffff, string(0xffff, 'b'));
    largest.Add<unsigned int>(0xffffffff, "c");
    EXPECT_EQ((std::vector<string>{"a", string(0xffff, 'b'), "old", "old"}),
              largest.Read(largest.bytes.size()));
  }
}

TEST(PayloadItems, ConvertTheirTitles) {
  struct Row {
    const char* codePage;
    const char* title;
    const char* expected;
  };
  const Row rows[] = {{"ISO-8859-1",
                       "Gr\xc3\xb6\xc3\x9f"
                       "e",
                       "Gr\xf6\xdf"
                       "e"},
                      {"UTF-8",
                       "Gr\xc3\xb6\xc3\x9f"
                       "e",
                       "Gr\xc3\xb6\xc3\x9f"
                       "e"},
                      {"ISO-8859-1", "5 \xe2\x82\xac", "5 \xe2\x82\xac"},
                      {"no such page", "\xc3\xb6", "\xc3\xb6"},
                      {"ISO-8859-1", "bad \xff text", "bad \xff text"},
                      {"ISO-8859-1", "", ""}};
  for (const Row& row : rows) {
    const OmStringCellUTF8 title(row.title);
    OmChart chart(title, row.codePage, 1);
    OmInteractive interactive(title, row.codePage, 1);
    for (OmOutputPart* const part :
         {static_cast<OmOutputPart*>(&chart), static_cast<OmOutputPart*>(&interactive)}) {
      auto* const cell = dynamic_cast<OmStringCell*>(part->Title());
      ASSERT_NE(nullptr, cell) << row.title;
      EXPECT_EQ(row.expected, cell->Text());
      EXPECT_FALSE(cell->Flag());
    }
    EXPECT_EQ(row.codePage, chart.LocaleCodePage());
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
  EXPECT_TRUE(format->getFontStyle() == -1 && format->getVerticalAlignment() == -1);
  format->setFontName("a font name that needs a block of its own");
  const string& name = format->getFontName();
  format.reset();
  EXPECT_EQ("a font name that needs a block of its own", name);
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
