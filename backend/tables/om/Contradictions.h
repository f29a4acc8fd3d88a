// Contradictions(), what is wrong with a table, a dimension or a document that no other call
// notices: numbers of the caller's own that contradict each other. A table with a contradiction is
// shown with wrong cells, or with none, and nothing says so.
//
//   for (const om::Finding& finding : om::Contradictions(table)) {
//     std::cerr << finding << '\n';  // shown wrongly: dimension 0 "Class": on no axis
//   }
//
// Meant for the tests of what fills tables, and for builds with hardening. It can be called at any
// time, but a table that is not filled yet has findings that go away with the rest: ask after
// EndTable().
//
// The cost is one walk over the categories, with a sort where their subscripts do not ascend in
// display order, and one over the stored cells, a step for each dimension of each cell; for a
// document one walk over its entries, and those for each table. The memory is a few words for each
// category and each entry. Nothing recurses. Nothing is changed, and where memory runs out,
// std::bad_alloc passes.
//
// It reads contradictory numbers, not broken objects: items and dimensions have to be alive, and
// other threads must not use them.

#ifndef BACKEND_TABLES_OM_CONTRADICTIONS_H
#define BACKEND_TABLES_OM_CONTRADICTIONS_H

#include <iosfwd>
#include <string>
#include <vector>

#include "backend/tables/om/Export.h"

class OmDimension;
class OmOutputTree;
class OmPivotTable;

namespace om {

// A contradiction. One finding stands for all of its kind in a dimension, on an axis or in a table:
// `count` is their number, the other fields describe the first.
//
// A leaf, below, is a category that display lists: all records above it are groups. Leaves are in
// display order, the order of the tree. A dimension has NumCategories() places on its axis, and
// leaf number p stands at place p.
struct Finding {
  // What contradicts what. The enumerators are in the order in which findings are listed. Each
  // comment ends with the fields that are set besides `kind`, `weight`, `count` and `sentence`.
  enum class Kind : unsigned char {
    // --- An entry of a document; all of these and all findings of its table set `entry`.
    // The first entry is not at level 0, another one above that, or more than one level below the
    // entry before it.
    kWrongLevel,
    // A further entry is at level 0: no walk from the root's node reaches it.
    kBesideRoot,
    // The item is at an earlier entry too; the document would delete it twice. index: that entry.
    kRepeatedItem,

    // --- A dimension; all of these set `dimension`, in a table.
    // The root has no label.
    kNoName,
    // Records below a category are never shown. subscript: that of the category.
    kRecordBelowCategory,
    // Leaves have no subscript, or one that is negative as an int: no cell can be there, and
    // OmPivotTable::Cell throws for what the headings fill in.
    kNoSubscript,
    // Leaves have a subscript above OmDimHeader::kLargestSubscript, or four times the number of
    // leaves where that is more, so that no heading can be built. subscript: the first of them.
    kSubscriptAboveLimit,
    // Leaves have a subscript at or beyond the number of places. Headings with skipEmpty may leave
    // out rows that hold nothing but cells of these. subscript: the first of them.
    kSubscriptBeyondSize,
    // Subscripts are given to more than one leaf each: those show the same cells. subscript: the
    // lowest of them.
    kSharedSubscript,
    // Subscripts below the largest one are given to no leaf. A leftover. subscript: the lowest.
    kSubscriptGap,
    // There are more places than leaves. Without skipEmpty the others are shown without a label,
    // and with the cells of other places. OmDimension::Delete of any but the last category does it.
    kPlaceWithoutLeaf,
    // There are more leaves than places; the last leaves are never shown.
    kLeafWithoutPlace,

    // --- A dimension and the axes; all of these set `dimension`.
    // No axis lists it.
    kOnNoAxis,
    // `count` axes list it. axis: the first of them.
    kOnSeveralAxes,
    // One axis lists it `count` times. axis.
    kRepeatedOnAxis,

    // --- An axis; all of these set `axis`.
    // Entries are -1, for which building a heading throws. index: position of the first.
    kPlaceholder,
    // Entries name no dimension, for which building a heading throws. index: position of the first.
    kUnknownDimension,
    // The axis has more places than 64 bits count: their numbers wrap. `count` is 1.
    kTooManyPlaces,
    // `count` layers are at or beyond 2^31: without skipEmpty they cannot be switched to.
    kTooManyLayers,

    // --- The cells; all of these set `cell`, to the first one in the order of the iterators.
    // Cells are stored where no leaf has one of the subscripts; they are never shown. A leftover.
    // dimension, subscript: the first of that cell that no leaf has.
    kCellWithoutLeaf,
    // All `count` cells are never shown, because a dimension has no leaf. dimension.
    kNoLeafForCells,
    // A null was stored before all `count` cells. Iterators find none of them, and neither do
    // headings with skipEmpty of a sparse table; OmPivotTable::NextCell does.
    kHiddenCells,

    // --- The footnotes.
    // Footnotes have no text, as one whose adding failed. index: the first of them.
    kFootnoteWithoutText,
  };

  // Follows from the kind.
  enum class Weight : unsigned char {
    // What is shown is wrong or incomplete, or showing it fails.
    kShownWrongly,
    // What is shown is right, but that with skipEmpty an empty row or column may stay. Legal, and
    // what deleting a category leaves behind; elsewhere often the trace of a wrong subscript.
    kLeftover,
  };

  // kNone where a finding is not about an axis.
  enum class Axis : unsigned char { kNone, kRows, kColumns, kLayers };

  // The kind of the contradiction.
  Kind kind{};
  Weight weight = Weight::kShownWrongly;
  // Position in OmOutputTree::List(), 0 for the root; -1 outside a document.
  long entry = -1;
  // Index in the table; -1 where it is about none, and for a dimension that was asked about alone.
  int dimension = -1;
  Axis axis = Axis::kNone;
  // As the kind says; -1 for none.
  long index = -1;
  // As the kind says; -1 for none.
  long subscript = -1;
  // The subscripts of a cell, as OmPivotTable::Cell takes them; empty for none.
  std::vector<int> cell{};
  unsigned long long count = 1;
  // What is wrong, for a person: one line of English in UTF-8, which names dimensions and items by
  // their texts. Its wording is no part of the contract.
  std::string sentence{};

  [[nodiscard]] bool operator==(const Finding&) const = default;
};

// Writes "shown wrongly: " or "leftover: " and the sentence, without the end of the line.
OM_API std::ostream& operator<<(std::ostream& out, const Finding& finding);

// Returns what is wrong with a table, nothing where it can be shown as it was meant. The order is
// that of the kinds; findings of one kind are in the order of dimensions, then of axes.
[[nodiscard]] OM_API std::vector<Finding> Contradictions(const OmPivotTable& table);
// Returns what is wrong with a dimension by itself, in the order of the kinds.
[[nodiscard]] OM_API std::vector<Finding> Contradictions(const OmDimension& dimension);
// Returns what is wrong with a document, which is not changed: entry by entry the findings of the
// entry, then those of its table. The table of an item that is there twice is listed once.
[[nodiscard]] OM_API std::vector<Finding> Contradictions(OmOutputTree& document);

}  // namespace om

#endif
