// The table of operations: the platform.

#include "platform/cells/CellTexts.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/Converter.h"
#include "platform/support/IcuTracker.h"
#include "tests/exhaustion/Exhaustion.h"
#include "tests/exhaustion/Quiet.h"
#include "tests/support/Show.h"

namespace {

struct Kinds : OmCellText::Visitor {
  void Visit(OmNumber&) override { kind = 'n'; }
  void Visit(OmStringCell&) override { kind = 's'; }
  void Visit(OmStringCellUTF8&) override { kind = 'u'; }
  void Visit(OmVariable&) override { kind = 'v'; }
  void Visit(OmNumDataValue&) override { kind = 'd'; }
  void Visit(OmStringDataValue&) override { kind = 't'; }
  void Visit(OmComposite&) override { kind = 'c'; }

  char kind = 0;
};

// A text of every kind, each with metadata.
struct Cells : ExhaustionFixture {
  Cells() {
    meta.Style(3);
    meta.Footnotes().push_back(7);
    for (OmCellText* const cell : all) {
      cell->setMeta(meta);
    }
    composite.Tree().Child(composite.Tree().Root(), new OmStringCell("part"));
    composite.Tree().Child(composite.Tree().Root()[0], new OmNumber(1));
  }
  std::string State() const {
    std::string shown =
        seen + Show(made.get()) + Fields(settings.getMaxCells(), settings.getLocale());
    for (const OmCellText* const cell : all) {
      shown += Show(cell);
    }
    return shown;
  }
  void Verify() {}

  OmMemoryRegion region{false};
  OmCellMetaData meta{&region};
  OmNumber number{1.5, kDefaultFormat, &region};
  OmStringCell string{"string", &region, true};
  OmStringCellUTF8 utf8{"utf8", &region};
  OmVariable variable{"name", "label", &region};
  OmNumDataValue numValue{2, "two", kDefaultFormat, &region};
  OmStringDataValue stringValue{"v", "value", &region};
  OmComposite composite{&region};
  OmCellText* const all[7] = {&number,   &string,      &utf8,     &variable,
                              &numValue, &stringValue, &composite};
  BackendSettings settings;
  std::unique_ptr<OmCellText> made;
  std::string seen;
};

// What a kind offers, called as itself.
template <typename Cell>
std::string Read(Cell& cell) {
  Kinds kinds;
  cell.Cell::Accept(kinds);
  return Fields(cell.Cell::Text(), cell.Cell::Kind() == cell.Kind(), kinds.kind,
                cell.Cell::Compare(cell));
}

const std::string kLong(40, 'x');

TEST(Exhaustion, Cells) {
  static const Operation<Cells> kRows[] = {
      {"number", [](Cells& f) { f.made.reset(new (&f.region) OmNumber(4)); }},
      {"string", [](Cells& f) { f.made.reset(new (&f.region) OmStringCell("a", &f.region)); }},
      {"UTF-8", [](Cells& f) { f.made.reset(new OmStringCellUTF8("a")); }},
      {"variable", [](Cells& f) { f.made.reset(new OmVariable("a", "b")); }},
      {"numeric value", [](Cells& f) { f.made.reset(new OmNumDataValue(3, "c")); }},
      {"string value", [](Cells& f) { f.made.reset(new OmStringDataValue("a", "b")); }},
      {"composite", [](Cells& f) { f.made.reset(new OmComposite); }},
      {"Clone, number", [](Cells& f) { f.made.reset(f.number.OmNumber::Clone(&f.region)); }},
      {"Clone, string", [](Cells& f) { f.made.reset(f.string.OmStringCell::Clone(nullptr)); }},
      {"Clone, UTF-8", [](Cells& f) { f.made.reset(f.utf8.OmStringCellUTF8::Clone(&f.region)); }},
      {"Clone, variable", [](Cells& f) { f.made.reset(f.variable.OmVariable::Clone(&f.region)); }},
      {"Clone, numeric value",
       [](Cells& f) { f.made.reset(f.numValue.OmNumDataValue::Clone(&f.region)); }},
      {"Clone, string value",
       [](Cells& f) { f.made.reset(f.stringValue.OmStringDataValue::Clone(&f.region)); }},
      {"Clone, composite",
       [](Cells& f) { f.made.reset(f.composite.OmComposite::Clone(&f.region)); }},
      {"readers",
       [](Cells& f) {
         f.seen = Read(f.number) + Read(f.string) + Read(f.utf8) + Read(f.variable) +
                  Read(f.numValue) + Read(f.stringValue) + Read(f.composite) +
                  OmNumber::Text(7, kDefaultFormat) +
                  Fields(f.string.getMeta() == f.utf8.getMeta(), f.string.hasMeta(),
                         f.composite.OmComposite::Compare(f.string),
                         f.number.OmCellText::Compare(f.numValue));
       }},
      {"Print",
       [](Cells& f) {
         const Quiet quiet;
         f.string.OmCellText::Print(2);
       }},
      {"setICUTracker",
       [](Cells& f) {
         icuTracker tracker(true, kLong);
         f.string.OmCellText::setICUTracker(&tracker);
         f.seen = AsText(f.string.getICUTracker() == &tracker);
         f.string.OmCellText::setICUTracker(nullptr);
       }},
      {"setMeta",
       [](Cells& f) {
         OmCellMetaData meta(nullptr);
         meta.Style(9);
         f.string.setMeta(meta);
       }},
      {"metadata",
       [](Cells& f) {
         const OmCellMetaData copy(f.meta);
         OmCellMetaData other(f.meta, nullptr);
         other.Style(8);
         other = f.meta;
         f.seen = AsText(other == copy);
       }},
      {"settings", [](Cells& f) { const BackendSettings settings(f.settings); }},
      {"settings, assigned",
       [](Cells& f) {
         BackendSettings settings;
         settings.setMaxCells(5);
         settings.setLocale(kLong);
         f.settings = settings;
       },
       After::kRepeatable},
      // A converter takes a failed allocation for a conversion that is not possible.
      {"converter",
       [](Cells& f) {
         QualtexMBConverter* const converter = QualtexMBConverterNew_A("ISO-8859-1");
         std::string out;
         const int result = QualtexMBU8ToGeneric(converter, out, kLong);
         QualtexMBConverterDelete_A(converter);
         f.seen = Fields(result == 0);
       },
       After::kReadable},
  };
  exhaustion::Run(kRows);
}

struct Regions : ExhaustionFixture {
  ~Regions() { OmMemoryRegion::Release(block); }
  std::string State() const {
    return Fields(region.LiveBlocks(), region.BytesInUse(),
                  region.BytesHeld() >= region.BytesInUse());
  }
  void Verify() { EXPECT_EQ(region.LiveBlocks(), block != nullptr ? 1U : 0U); }

  OmMemoryRegion region{false};
  void* block = nullptr;
};

TEST(Exhaustion, Region) {
  static const Operation<Regions> kRows[] = {
      {"Allocate", [](Regions& f) { f.block = f.region.Allocate(9); }},
      {"AllocateZeroed",
       [](Regions& f) {
         f.block = f.region.AllocateZeroed(9);
         EXPECT_EQ(OmMemoryRegion::Marks(f.block), nullptr);
       }},
      {"Limit",
       [](Regions& f) {
         f.region.Limit(4);
         EXPECT_THROW((void)f.region.Allocate(9), std::bad_alloc);
         f.region.Limit(~0UL);
         OmMemoryRegion::Release(OmMemoryRegion::DefaultHeap()->Allocate(3));
         f.region.WorkingRelease(false);
       }},
  };
  exhaustion::Run(kRows);
}

}  // namespace
