// Contradictions(), which finds errors in a table, a dimension or a document that no other call
// reports: numbers given by the caller that contradict each other. A table with a contradiction is
// shown with wrong cells or without cells, and no error is reported.
//
//   for (const om::Finding& finding : om::Contradictions(table)) {
//     std::cerr << finding << '\n';  // shown wrongly: dimension 0 "Class": on no axis
//   }
//
// Meant for tests of code that fills tables, and for hardened builds. Call it after EndTable(): a
// table that is not complete has findings that disappear later.
//
// Costs one walk over the categories, with a sort if their subscripts do not ascend in display
// order, and one walk over the stored cells, with a step for each dimension of each cell. For a
// document: one walk over its entries, and this for each table. Allocates a few words for each
// category and each entry. Does not recurse and changes nothing. Throws std::bad_alloc if memory
// runs out.
//
// It finds contradictory numbers, not invalid objects: items and dimensions have to exist, and
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
// leaf number p is at place p.
struct Finding {
  // What contradicts what. The enumerators are in the order in which findings are listed. Each
  // comment ends with the fields that are set besides `kind`, `weight`, `count` and `sentence`.
  enum class Kind : unsigned char {
    // --- An entry of a document; all of these and all findings of its table set `entry`.
    // The first entry is not at level 0, or another entry has a negative level or is more than one
    // level deeper than the entry before it.
    kWrongLevel,
    // An entry other than the first is at level 0: no walk from the root's node reaches it.
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
    // Leaves have a subscript above the limit, so that no heading can be constructed. The limit is
    // OmDimHeader::kLargestSubscript, or four times the number of leaves if that is more.
    // subscript: the first of them.
    kSubscriptAboveLimit,
    // Leaves have a subscript at or beyond the number of places. Headings with skipEmpty may leave
    // out rows that have only cells of these. subscript: the first of them.
    kSubscriptBeyondSize,
    // Several leaves have the same subscript, and show the same cells. subscript: the lowest of
    // them.
    kSharedSubscript,
    // No leaf has some of the subscripts below the largest one. A leftover. subscript: the lowest.
    kSubscriptGap,
    // There are more places than leaves. Without skipEmpty the places beyond the leaves are shown
    // without a label, and with the cells of other places. This happens after OmDimension::Delete
    // of any category but the last.
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
    // Entries are -1, for which constructing a heading throws. index: position of the first.
    kPlaceholder,
    // Entries name no dimension, for which constructing a heading throws. index: position of the
    // first.
    kUnknownDimension,
    // The number of places of the axis exceeds 64 bits and wraps. `count` is 1.
    kTooManyPlaces,
    // `count` layers are at or beyond 2^31: without skipEmpty they cannot be switched to.
    kTooManyLayers,

    // --- The cells; all of these set `cell`, to the first one in the order of the iterators.
    // Cells are stored at a subscript that no leaf has; they are never shown. A leftover.
    // dimension, subscript: the first of that cell that no leaf has.
    kCellWithoutLeaf,
    // All `count` cells are never shown, because a dimension has no leaf. dimension.
    kNoLeafForCells,
    // A null that was stored first hides all `count` cells: iterators find none of them, and
    // neither do headings with skipEmpty of a sparse table. OmPivotTable::NextCell finds them.
    kHiddenCells,

    // --- The footnotes.
    // Footnotes have no text, as after a failed call that added one. index: the first of them.
    kFootnoteWithoutText,
  };

  // Follows from the kind.
  enum class Weight : unsigned char {
    // What is shown is wrong or incomplete, or showing it fails.
    kShownWrongly,
    // What is shown is right, except that with skipEmpty an empty row or column may remain. Legal,
    // and normal after deleting a category; otherwise often the sign of a wrong subscript.
    kLeftover,
  };

  // kNone if a finding is not about an axis.
  enum class Axis : unsigned char { kNone, kRows, kColumns, kLayers };

  // The kind of the contradiction.
  Kind kind{};
  Weight weight = Weight::kShownWrongly;
  // Position in OmOutputTree::List(), 0 for the root; -1 outside a document.
  long entry = -1;
  // Index in the table; -1 if the finding is about no dimension, or if the dimension was checked by
  // itself.
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

// Returns the findings of a table, none if it is shown correctly. They are ordered by kind, then by
// dimension, then by axis.
[[nodiscard]] OM_API std::vector<Finding> Contradictions(const OmPivotTable& table);
// Returns the findings of a dimension by itself, ordered by kind.
[[nodiscard]] OM_API std::vector<Finding> Contradictions(const OmDimension& dimension);
// Returns the findings of a document, which is not changed: for each entry its own findings, then
// those of its table. A table that is in two entries is checked once.
[[nodiscard]] OM_API std::vector<Finding> Contradictions(OmOutputTree& document);

}  // namespace om

#endif
