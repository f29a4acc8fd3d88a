// The table of operations: the platform, containers and index arithmetic. It runs them all.

#include <cstdio>
#include <iostream>
#include <type_traits>

#include "backend/tables/om/CellStoreData.h"
#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/Converter.h"
#include "platform/support/IcuTracker.h"
#include "tests/exhaustion/Exhaustion.h"

namespace {

const std::string kLong(40, 'x');

// What a kind says to a visitor, one that may change it or a reader.
template <typename Visitor, template <typename> typename Of>
struct KindsOf : Visitor {
  void Visit(Of<OmNumber>&) override { kind = 'n'; }
  void Visit(Of<OmStringCell>&) override { kind = 's'; }
  void Visit(Of<OmStringCellUTF8>&) override { kind = 'u'; }
  void Visit(Of<OmVariable>&) override { kind = 'v'; }
  void Visit(Of<OmNumDataValue>&) override { kind = 'd'; }
  void Visit(Of<OmStringDataValue>&) override { kind = 't'; }
  void Visit(Of<OmComposite>&) override { kind = 'c'; }

  char kind = 0;
};
using Kinds = KindsOf<OmCellText::Visitor, std::type_identity_t>;
using ConstKinds = KindsOf<OmCellText::ConstVisitor, std::add_const_t>;

// What a kind offers, called as itself.
template <typename Cell>
std::string Read(Cell& cell) {
  Kinds kinds;
  cell.Cell::Accept(kinds);
  ConstKinds read;
  std::as_const(cell).Accept(read);
  EXPECT_EQ(read.kind, kinds.kind);
  const std::unique_ptr<OmCellText> copy(cell.Cell::Clone(nullptr));
  return Show(copy.get()) + Fields(cell.Cell::Text(), cell.Cell::Kind() == copy->Kind(), kinds.kind,
                                   read.kind, cell.Cell::Compare(*copy));
}

// A text of every kind, each with metadata.
struct Cells : ExhaustionFixture {
  Cells() {
    meta.Style(3);
    other.Footnotes().push_back(7);
    meta.Footnotes().resize(9, 8);
    for (OmCellText* const cell : all) {
      cell->setMeta(meta);
    }
    composite.Tree().Child(composite.Tree().Root(), new OmStringCell("part"));
    composite.Tree().Child(composite.Tree().Root()[0], new OmNumber(1));
  }
  std::string State() const {
    std::string shown = Fields(settings.getMaxCells(), settings.getLocale(), other.Style(),
                               ListOf(other.Footnotes()));
    for (const OmCellText* const cell : all) {
      shown += Show(cell);
    }
    return shown;
  }
  void Readers() {
    seen = Read(number) + Read(string) + Read(utf8) + Read(variable) + Read(numValue) +
           Read(stringValue) + Read(composite) + OmNumber::Text(7, kDefaultFormat) +
           Fields(string.getMeta() == utf8.getMeta(), composite.Compare(string),
                  number.OmCellText::Compare(numValue));
  }
  void Convert() {
    QualtexMBConverter* const converter = QualtexMBConverterNew_A("ISO-8859-1");
    std::string out;
    seen = AsText(QualtexMBU8ToGeneric(converter, out, kLong) == 0);
    EXPECT_EQ(out == kLong, seen == "1");
    QualtexMBConverterDelete_A(converter);
  }

  OmCellMetaData meta{&region}, other{nullptr};
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
  icuTracker tracker{true, kLong};
};

TEST(Exhaustion, Cells) {
  UNCHANGED(Cells, OmNumber(4), om::Cell("a"), om::Cell(4),
            delete new (&f.region) OmStringCell("a"), OmStringCell("a"), OmStringCellUTF8("a"),
            OmVariable("a", "b"), OmNumDataValue(3, "c"), OmStringDataValue("a", "b"),
            OmComposite());
  UNCHANGED(
      Cells, f.Readers(), f.string.OmCellText::Print(2), f.string.setMeta(f.other),
      OmCellMetaData(f.meta), OmCellMetaData(f.meta, nullptr), f.other = f.meta,
      icuTracker(true, kLong),
      (f.string.setICUTracker(&f.tracker), f.seen = AsText(f.string.getICUTracker() == &f.tracker)),
      f.settings = BackendSettings(f.settings));
  REPEATABLE(Cells, (f.settings.setMaxCells(5), f.settings.setLocale(kLong)));
  // A converter takes a failed allocation for a conversion that is not possible.
  READABLE(Cells, f.Convert());
}

using Notes = OmVector<OmFootnote>;

// A full vector of elements that take memory themselves.
struct Vectors : ExhaustionFixture {
  Vectors() {
    for (const char* name : {"a", "b", "c", "d"}) {
      const OmStringCell cell(name);
      v.push_back(OmFootnote(&cell, &cell, &region));
    }
  }
  std::string State() const { return Show(v); }
  void Verify() { ::Verify(v); }
  void Readers() {
    const Notes& same = v;
    v.begin()->UseCount(static_cast<int>(v.end() - same.begin()));
    seen = Fields(Show(same[1]), Show(v[2]), Show(v.back()), same.size(), same.capacity(),
                  Notes::NextSize(same.size()), same.Region() == &region, same.end() == v.end());
  }

  OmStringCell text{"x"};
  OmFootnote note{&text, nullptr, &region};
  Notes v{&region};
};

TEST(Exhaustion, Vector) {
  UNCHANGED(Vectors, Notes(nullptr), f.seen = Show(Notes(3, f.note, &f.region)),
            f.seen = Show(Notes(f.v)), f.seen = Show(Notes(f.v, nullptr)),
            OmVector<char>("abc", 3, &f.region), delete new (&f.region) OmPointerVector(&f.region));
  UNCHANGED(Vectors, f.v.reserve(9), f.v.push_back(f.note), f.v.push_back(f.v[1]),
            f.v.insert(f.v.begin() + 1, f.note), f.v.erase(f.v.begin() + 1),
            f.v.erase(f.v.begin() + 1, f.v.begin() + 3), f.v.resize(7, f.note),
            f.v.resize(2, f.note), f.v.clear(), Notes(nullptr).destroy_elements());
  REPEATABLE(Vectors, f.Readers());
}

using Record = OmVectorTreeData<OmDimensionNode>;
using Tree = OmVectorTree<OmDimensionNode>;

// A root of four children, so that one more makes them move; the first has three.
struct Trees : ExhaustionFixture {
  Trees() {
    for (const char* name : {"a", "b", "c", "d"}) {
      tree.Record::Child(Named(name));
    }
    for (const char* name : {"e", "f", "g"}) {
      tree[0].Child(Named(name));
    }
  }
  OmDimensionNode Named(const char* name) {
    return OmDimensionNode(OmStringCell(name), 0, true, &region);
  }
  Tree::Node At(unsigned long i) { return tree.Root()[i]; }
  std::string State() const { return Show(tree.Root()); }
  void Verify() { VerifyTree<OmDimensionNode>(tree); }
  void Copies() {
    Record child(node, nullptr, &region), same(tree), other(tree, nullptr, nullptr);
    std::string shown = Show(Tree::ConstNode(&same, 0));
    EXPECT_TRUE(shown == State() && shown == Show(Tree::ConstNode(&other, 0)));
    seen = std::move(shown);
  }
  void Readers() {
    const Tree& same = tree;
    const Record& record = tree;
    tree[0].Parent(tree[0].Parent());
    tree.Children().reserve(1);
    // The payload of a bare record has no label to show.
    seen = Fields(Record(&region).Size(), Show(record.Data()), record.Size(),
                  record.Children().size(), Show(record[1].Data()), record.Region() == &region,
                  record.Parent() == nullptr, same.Root().Count());
  }
  void Handles() {
    Tree::Node root = tree.Root();
    Tree::Node at = root.Begin();
    const Tree::Node none, same(at.record, 1);
    Tree other(node, &region);
    other.addChild(tree[0], nullptr);
    ++at, at++, --at, at--;
    at.Renumber();
    seen = Fields(none == same, same == at, at - root.Begin(), root.Count(), root.HasChild(),
                  root.IsLeaf(), root.IsRoot(), at.Level(), root.findIdx(Named("c")),
                  Show(*root.find(Named("c"))), Show(*root.Back()), Show(*root[2]), at->Subscript(),
                  root.End() - root.Begin(), at.Parent() == root, Show(*at.Counterpart(other)));
  }

  OmDimensionNode node{OmStringCell("new"), 1, true, &region};
  Tree tree{node, &region};
};

TEST(Exhaustion, VectorTree) {
  UNCHANGED(
      Trees, f.Copies(), f.Readers(), f.Handles(), f.tree.Root().Print(),
      f.tree.addChild(f.tree[0], &f.tree[1].Data()), f.tree.Record::Child(f.node),
      f.tree.Child(f.tree.Root(), f.node), (f.tree.Delete(Ref(f.At(0))), f.tree.Relocate(true)),
      f.tree.moveChild(Ref(f.At(1)), nullptr, &Ref(f.At(0))),
      f.tree.moveChild(Ref(f.At(0)[0]), &Ref(f.At(1)), nullptr),
      f.tree.swapChildren(Ref(f.At(2)), Ref(f.At(0)[1])),
      f.tree.InsertChild(f.node, f.At(1), f.tree.Root(), false),
      f.tree.InsertChild(f.node, {&Ref(f.At(0)), &Ref(f.At(2))}), f.tree.removeChild(Ref(f.At(0))));
}

// The store of a table, without the table.
struct Stores : ExhaustionFixture {
  Stores() { Slot({0, 0}).Put(0, new (&region) OmStringCell("a", &region)); }
  ~Stores() { freeCellArray(root, levels); }
  OmPointerVector& Slot(const std::vector<int>& at) { return OmCellStore::Reach(root, at, region); }
  std::string State() const {
    const std::vector<int> at(static_cast<unsigned long>(levels), 0);
    OmPointerVector* const v = OmCellStore::VectorOf(root, at, 0);
    return Fields(Show(static_cast<OmCellText*>(v == nullptr ? nullptr : v->At(0))), levels);
  }
  void Verify() {
    VerifyStore(root, static_cast<unsigned long>(levels));
    OmCellStore::Verify(root, static_cast<unsigned long>(levels));
  }
  void Raise() { root = OmCellStore::Raise(root, &region); }
  void Widely() {
    root->reserve(3000);
    root->reserve(2900);
    root->push_back(nullptr);
    seen =
        Fields(root->capacity(), root->HasRoom(2999), (*root)[1] == root->back(), root->IsEmpty());
  }

  OmPointerVector* root = nullptr;
  int levels = 2;
};

TEST(Exhaustion, CellStore) {
  UNCHANGED(Stores, f.Slot({5, 7}), OmCellStore::Delete(f.root, {0, 0}),
            (f.Raise(), f.root = OmCellStore::Lower(f.root)), (f.Raise(), ++f.levels),
            (f.root->GrowTo(20), f.seen = AsText(FindNonZero(*f.root, 1))), f.Widely());
}

struct Numbers : ExhaustionFixture {
  Numbers() { axis.push_back(3); }
  std::string State() const { return Fields(ListOf(axis), ListOf(base.Bases()), base.Size()); }
  void Digits() {
    const std::vector<unsigned int> bases{3, 4};
    const MultiBase other(bases);
    const PlaceDigits single(bases);
    OmIndexProjector projector;
    projector.Set({1, 0});
    std::vector<int> out(2);
    projector.Spread(other.Digits(7), out);
    seen = Fields(ListOf(out), single.Digit(7, 0), single.Digit(7, 1), other.Value(other.Digits(7)),
                  Product(bases), Product(out));
  }

  PuppetVector<short> axis{-1};
  MultiBase base;
};

TEST(Exhaustion, IndexArithmetic) {
  UNCHANGED(Numbers, f.base = MultiBase({3, 4}), f.Digits(), f.axis.push_back(4),
            f.axis.insert(f.axis.begin(), 4), f.axis[9] = 4);
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // What the operations print is of no interest.
  std::cout.setstate(std::ios::failbit);
  const int result = RUN_ALL_TESTS();
  std::printf("%ld operations, %ld failed allocations\n", exhaustion::operations,
              exhaustion::points);
  return result;
}
