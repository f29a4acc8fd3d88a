// The table of operations: containers.

#include <iostream>
#include <vector>

#include "backend/tables/IndexProjector.h"
#include "backend/tables/MultiBase.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/CellStore.h"
#include "backend/tables/om/OutputTree.h"
#include "platform/cells/StringCell.h"
#include "tests/exhaustion/Census.h"
#include "tests/exhaustion/Exhaustion.h"
#include "tests/exhaustion/Quiet.h"
#include "tests/support/Show.h"
#include "tests/support/Walkers.h"

namespace {

using Notes = OmVector<OmFootnote>;

// A full vector of elements that take memory themselves.
struct Vectors : ExhaustionFixture {
  Vectors() {
    for (const char* name : {"a", "b", "c", "d"}) {
      const OmStringCell cell(name);
      v.push_back(OmFootnote(&cell, &cell, &region));
    }
  }
  std::string State() const {
    return Show(v) + (made != nullptr ? Show(*made) : "") + seen +
           (bytes != nullptr ? std::string(bytes->begin(), bytes->end()) : "");
  }
  void Verify() { ::Verify(v); }

  OmMemoryRegion region{false};
  OmStringCell text{"x"};
  OmFootnote note{&text, nullptr, &region};
  Notes v{&region};
  std::unique_ptr<Notes> made;
  std::unique_ptr<OmVector<char>> bytes;
  std::string seen;
};

TEST(Exhaustion, Vector) {
  static const Operation<Vectors> kRows[] = {
      {"empty", [](Vectors& f) { f.made = std::make_unique<Notes>(nullptr); }},
      {"filled", [](Vectors& f) { f.made = std::make_unique<Notes>(3, f.note, &f.region); }},
      {"bytes",
       [](Vectors& f) { f.bytes = std::make_unique<OmVector<char>>("abc", 3, &f.region); }},
      {"copy", [](Vectors& f) { f.made = std::make_unique<Notes>(f.v); }},
      {"copy to a region", [](Vectors& f) { f.made = std::make_unique<Notes>(f.v, nullptr); }},
      {"in a region",
       [](Vectors& f) {
         auto* const managed = new (&f.region) OmPointerVector(&f.region);
         delete managed;
       }},
      {"readers",
       [](Vectors& f) {
         const Notes& v = f.v;
         f.v.begin()->UseCount(static_cast<int>(f.v.end() - v.begin()));
         f.seen = Fields(Show(v[1]), Show(f.v[2]), Show(f.v.back()), v.size(), v.capacity(),
                         Notes::NextSize(v.size()), v.Region() == &f.region, v.end() == f.v.end());
       },
       After::kRepeatable},
      {"reserve", [](Vectors& f) { f.v.reserve(9); }},
      {"push_back", [](Vectors& f) { f.v.push_back(f.note); }},
      {"push_back, its own", [](Vectors& f) { f.v.push_back(f.v[1]); }},
      {"insert", [](Vectors& f) { f.v.insert(f.v.begin() + 1, f.note); }},
      {"erase", [](Vectors& f) { f.v.erase(f.v.begin() + 1); }},
      {"erase several", [](Vectors& f) { f.v.erase(f.v.begin() + 1, f.v.begin() + 3); }},
      {"resize", [](Vectors& f) { f.v.resize(7, f.note); }},
      {"resize to less", [](Vectors& f) { f.v.resize(2, f.note); }},
      {"clear", [](Vectors& f) { f.v.clear(); }},
      {"destroy_elements",
       [](Vectors& f) {
         Notes few(f.v);
         few.destroy_elements();
         for (OmFootnote& bare : few) {
           new (&bare) OmFootnote(nullptr, nullptr, nullptr);
         }
       }},
  };
  exhaustion::Run(kRows);
}

using Record = OmVectorTreeData<OmDimensionNode>;
using Tree = OmVectorTree<OmDimensionNode>;

// A root of four children, so that one more makes them move; the first has three.
struct Trees : ExhaustionFixture {
  Trees() {
    for (const char* name : {"a", "b", "c", "d"}) {
      tree.OmVectorTreeData::Child(Named(name));
    }
    for (const char* name : {"e", "f", "g"}) {
      tree[0].Child(Named(name));
    }
  }
  OmDimensionNode Named(const char* name) {
    return OmDimensionNode(OmStringCell(name), 0, true, &region);
  }
  Tree::Node At(unsigned long i) { return tree.Root()[i]; }
  std::string State() const {
    return Show(tree.Root()) + (made != nullptr ? Show(Tree::ConstNode(made.get(), 0)) : "") + seen;
  }
  void Verify() { VerifyTree<OmDimensionNode>(tree); }

  OmMemoryRegion region{false};
  OmDimensionNode node{OmStringCell("new"), 1, true, &region};
  Tree tree{node, &region};
  std::unique_ptr<Record> made;
  std::string seen;
};

TEST(Exhaustion, VectorTree) {
  static const Operation<Trees> kRows[] = {
      {"bare record",
       [](Trees& f) {
         // Its payload has no label to show.
         const Record bare(&f.region);
         f.seen = Fields(bare.Size());
       }},
      {"record", [](Trees& f) { f.made = std::make_unique<Record>(f.node, nullptr, &f.region); }},
      {"copy", [](Trees& f) { f.made = std::make_unique<Record>(f.tree); }},
      {"copy to a region",
       [](Trees& f) { f.made = std::make_unique<Record>(f.tree, nullptr, nullptr); }},
      {"tree", [](Trees& f) { f.made = std::make_unique<Tree>(f.node, &f.region); }},
      {"addChild", [](Trees& f) { f.tree.addChild(f.tree[0], &f.tree[1].Data()); }},
      {"a child of the record", [](Trees& f) { f.tree.OmVectorTreeData::Child(f.node); }},
      {"Child", [](Trees& f) { f.tree.Child(f.tree.Root(), f.node); }},
      {"Delete",
       [](Trees& f) {
         Tree::Node node = f.At(0);
         f.tree.Delete(node);
         f.tree.Relocate(true);
       }},
      {"moveChild",
       [](Trees& f) {
         Tree::Node node = f.At(1);
         Tree::Node parent = f.At(0);
         f.tree.moveChild(node, nullptr, &parent);
       }},
      {"moveChild to a full parent",
       [](Trees& f) {
         Tree::Node node = f.At(0)[0];
         Tree::Node before = f.At(1);
         f.tree.moveChild(node, &before, nullptr);
       }},
      {"swapChildren",
       [](Trees& f) {
         Tree::Node a = f.At(2);
         Tree::Node b = f.At(0)[1];
         f.tree.swapChildren(a, b);
       }},
      {"InsertChild", [](Trees& f) { f.tree.InsertChild(f.node, f.At(1), f.tree.Root(), false); }},
      {"InsertChild over some",
       [](Trees& f) {
         Tree::Node a = f.At(0);
         Tree::Node b = f.At(2);
         f.tree.InsertChild(f.node, {&a, &b});
       }},
      {"removeChild",
       [](Trees& f) {
         Tree::Node node = f.At(0);
         f.tree.removeChild(node);
       }},
      {"readers",
       [](Trees& f) {
         const Record& record = f.tree;
         const Tree& tree = f.tree;
         f.tree[0].Parent(f.tree[0].Parent());
         f.tree.Children().reserve(1);
         f.seen = Fields(Show(record.Data()), record.Size(), record.Children().size(),
                         Show(record[1].Data()), record.Region() == &f.region,
                         record.Parent() == nullptr, tree.Root().Count());
       }},
      {"handles",
       [](Trees& f) {
         Tree::Node root = f.tree.Root();
         Tree::Node node = root.Begin();
         const Tree::Node none;
         const Tree::Node same(node.record, 1);
         Tree other(f.node, &f.region);
         other.addChild(f.tree[0], nullptr);
         ++node;
         node++;
         --node;
         node--;
         node.Renumber();
         const OmDimensionNode c(OmStringCell("c"), 0, true, nullptr);
         f.seen = Fields(none == same, same == node, node - root.Begin(), root.Count(),
                         root.HasChild(), root.IsLeaf(), root.IsRoot(), node.Level(),
                         root.findIdx(c), Show(*root.find(c)), Show(*root.Back()), Show(*root[2]),
                         node->Subscript(), root.End() - root.Begin(), node.Parent() == root,
                         Show(*node.Counterpart(other)));
       }},
      {"Print",
       [](Trees& f) {
         const Quiet quiet;
         f.tree.Root().Print();
       }},
  };
  exhaustion::Run(kRows);
}

using Cursor = ListTree<OmOutputPart*>::Node;

struct Lists : ExhaustionFixture {
  Lists() {
    Cursor root = Root();
    root.Child(nullptr).Child(nullptr);
    root.Child(nullptr);
  }
  Cursor Root() { return Cursor(tree, tree.List().begin()); }
  std::string State() {
    std::string shown = seen;
    for (ListTreeData<OmOutputPart*>& entry : tree.List()) {
      shown += Fields(entry.Level(), entry.Data() == nullptr);
    }
    return shown;
  }
  void Verify() { ::Verify(tree); }

  ListTree<OmOutputPart*> tree{nullptr};
  std::unique_ptr<ListTree<OmOutputPart*>> made;
  std::string seen;
};

TEST(Exhaustion, ListTree) {
  static const Operation<Lists> kRows[] = {
      {"tree", [](Lists& f) { f.made = std::make_unique<ListTree<OmOutputPart*>>(nullptr); }},
      {"Child", [](Lists& f) { f.Root().Begin().Child(nullptr); }},
      {"Erase",
       [](Lists& f) {
         Cursor node = f.Root().Begin();
         f.tree.Erase(node);
       }},
      {"Prune", [](Lists& f) { f.tree.Prune(f.Root().Begin()); }},
      {"Flatten",
       [](Lists& f) {
         Cursor node = f.Root().Begin();
         f.tree.Flatten(node);
       }},
      {"readers",
       [](Lists& f) {
         const Cursor root = f.Root();
         Cursor node = root.Begin();
         ++node;
         f.seen = Fields(*root == nullptr, root.IsLeaf(), node.HasChild(), node == root.End(),
                         node != root.End(), node.Level(), &root.Tree() == &f.tree,
                         f.tree.SearchForward(f.tree.List().begin(), 0) == f.tree.List().end());
       }},
  };
  exhaustion::Run(kRows);
}

// The store of a table, without the table.
struct Stores : ExhaustionFixture {
  Stores() { *Slot({0, 0}) = new (&region) OmStringCell("a", &region); }
  ~Stores() { freeCellArray(root, levels); }
  void** Slot(const std::vector<int>& at) { return &OmCellStore::Slot(root, at, &region); }
  std::string State() const {
    return Fields(
        Show(levels == 2 ? OmCellStore::Find(root, {0, 0}) : OmCellStore::Find(root, {0, 0, 0})),
        levels, seen);
  }
  void Verify() { VerifyStore(root, static_cast<unsigned long>(levels)); }

  OmMemoryRegion region{false};
  OmPointerVector* root = nullptr;
  int levels = 2;
  std::string seen;
};

TEST(Exhaustion, CellStore) {
  static const Operation<Stores> kRows[] = {
      {"Slot",
       [](Stores& f) {
         f.Slot({5, 7});
       }},
      {"Delete",
       [](Stores& f) {
         OmCellStore::Delete(f.root, {0, 0});
       }},
      {"Raise and Lower",
       [](Stores& f) {
         f.root = OmCellStore::Raise(f.root, &f.region);
         f.root = OmCellStore::Lower(f.root);
       }},
      {"Raise and Lower of nothing, Delete beyond",
       [](Stores& f) {
         EXPECT_EQ(OmCellStore::Lower(OmCellStore::Raise(nullptr, &f.region)), nullptr);
         OmCellStore::Delete(f.root, {0, 99});
         OmCellStore::Delete(nullptr, {0, 0});
         freeCellArray(nullptr, 1);
       }},
      {"Raise",
       [](Stores& f) {
         f.root = OmCellStore::Raise(f.root, &f.region);
         ++f.levels;
       }},
      {"GrowTo",
       [](Stores& f) {
         f.root->GrowTo(20);
         f.seen = Fields(FindNonZero(*f.root, 1));
       }},
  };
  exhaustion::Run(kRows);
}

struct Numbers : ExhaustionFixture {
  Numbers() { axis.push_back(3); }
  std::string State() const {
    return Fields(ListOf(axis), ListOf(base.Bases()), base.Size(), seen);
  }
  void Verify() {}

  PuppetVector<short> axis{-1};
  MultiBase base;
  std::string seen;
};

TEST(Exhaustion, IndexArithmetic) {
  static const Operation<Numbers> kRows[] = {
      {"MultiBase",
       [](Numbers& f) {
         f.base = MultiBase(std::vector<unsigned int>{3, 4});
       }},
      {"Digits",
       [](Numbers& f) {
         const std::vector<unsigned int> bases{3, 4};
         const std::vector<int> ints{3, 4};
         const MultiBase base(bases);
         unsigned int digits[2];
         base.Digits(7, digits);
         f.seen = Fields(ListOf(base.Digits(7)), digits[0], digits[1], base.Value(base.Digits(7)),
                         Product(bases), Product(ints));
       }},
      {"push_back", [](Numbers& f) { f.axis.push_back(4); }},
      {"insert", [](Numbers& f) { f.axis.insert(f.axis.begin(), 4); }},
      {"write past the end", [](Numbers& f) { f.axis[9] = 4; }},
      {"Spread",
       [](Numbers& f) {
         OmIndexProjector projector;
         projector.Set({1, 0});
         std::vector<int> out(2);
         projector.Spread(std::vector<unsigned int>{5, 6}, out);
         f.seen = ListOf(out);
       }},
  };
  exhaustion::Run(kRows);
}

}  // namespace
