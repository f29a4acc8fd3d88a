#include "backend/tables/om/Contradictions.h"

#include <algorithm>
#include <array>
#include <limits>
#include <ostream>
#include <tuple>
#include <utility>

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"

namespace om {

namespace {

using Kind = Finding::Kind;
using Axis = Finding::Axis;
using ConstNode = OmDimension::ConstNode;
using Subscripts = std::vector<int>;
using Count = unsigned long long;

constexpr std::array kAxes{Axis::kRows, Axis::kColumns, Axis::kLayers};

// --- Sentences ----------------------------------------------------------------------------------

std::string NameOf(Axis axis) {
  return axis == Axis::kRows ? "the rows" : axis == Axis::kColumns ? "the columns" : "the layers";
}

std::string Some(Count count, const char* one, const char* several) {
  return std::to_string(count) + " " + (count == 1 ? one : several);
}

// Returns a text in quotation marks and on one line, after a space; nothing for null.
std::string Quoted(const OmCellText* text) {
  if (text == nullptr) {
    return "";
  }
  std::string quoted = " \"" + text->Text() + "\"";
  std::replace_if(
      quoted.begin(), quoted.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return quoted;
}

std::string Address(const Subscripts& cell) {
  std::string address = "(";
  for (const int subscript : cell) {
    address += (address.size() == 1 ? "" : ", ") + std::to_string(subscript);
  }
  return address + ")";
}

Finding Found(Kind kind, std::string sentence, Count count = 1) {
  Finding finding;
  finding.kind = kind;
  if (kind == Kind::kSubscriptGap || kind == Kind::kCellWithoutLeaf) {
    finding.weight = Finding::Weight::kLeftover;
  }
  finding.count = count;
  finding.sentence = std::move(sentence);
  return finding;
}

void Order(std::vector<Finding>& findings) {
  std::sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
    return std::tie(a.kind, a.dimension, a.axis) < std::tie(b.kind, b.dimension, b.axis);
  });
}

// --- One dimension ------------------------------------------------------------------------------

// How many there are of a kind, and the number of the first.
struct Several {
  void Add(long number, Count n = 1) {
    first = count == 0 ? number : first;
    count += n;
  }

  Count count = 0;
  long first = -1;
};

// The leaves of a dimension: what a walk over its records finds.
class Leaves {
 public:
  explicit Leaves(const OmDimension& dimension) : size(dimension.NumCategories()) {
    const std::vector<unsigned long> all = Collect(dimension.Root());
    count = all.size();
    limit = std::max(OmDimHeader::kLargestSubscript, 4 * count);
    subscripts.reserve(count);
    for (const unsigned long own : all) {
      // Display reads it as an int.
      const auto subscript = static_cast<int>(own);
      if (subscript < 0) {
        ++none;
        continue;
      }
      if (own > limit) {
        aboveLimit.Add(static_cast<long>(own));
      } else if (own >= size) {
        beyondSize.Add(static_cast<long>(own));
      }
      if (own == static_cast<unsigned int>(subscript)) {
        subscripts.push_back(subscript);  // else it is that of another leaf
      }
    }
    if (!std::is_sorted(subscripts.begin(), subscripts.end())) {
      std::sort(subscripts.begin(), subscripts.end());
    }
    Compare();
  }

  // Whether a leaf has that subscript.
  [[nodiscard]] bool Have(int subscript) const {
    return subscript < ascending ||
           std::binary_search(subscripts.begin(), subscripts.end(), subscript);
  }

  unsigned long size;  // number of places of the dimension
  unsigned long count = 0;
  unsigned long limit = 0;  // the largest subscript that a header accepts
  Several below, aboveLimit, beyondSize, shared, missing;
  Count none = 0;

 private:
  // Returns the subscripts of the leaves in display order, and counts the records below them.
  std::vector<unsigned long> Collect(const ConstNode& root) {
    // Siblings that are still to come, and the category above them, if there is one.
    struct Siblings {
      ConstNode next;
      ConstNode end;
      const OmDimensionNode* category;
    };
    std::vector<unsigned long> found;
    std::vector<Siblings> todo;
    const auto meet = [&](const ConstNode& node, const OmDimensionNode* category) {
      if (category != nullptr) {
        below.Add(static_cast<long>(category->Subscript()));
      } else if (!node->IsGroup()) {
        category = &*node;
        found.push_back(node->Subscript());
      }
      if (node.HasChild()) {
        todo.push_back({node.Begin(), node.End(), category});
      }
    };
    meet(root, nullptr);
    while (!todo.empty()) {
      Siblings& siblings = todo.back();
      if (siblings.next == siblings.end) {
        todo.pop_back();
        continue;
      }
      const ConstNode node = siblings.next++;
      meet(node, siblings.category);
    }
    return found;
  }

  // Finds shared and missing subscripts, and removes duplicates.
  void Compare() {
    long expected = 0;
    for (auto subscript = subscripts.begin(); subscript != subscripts.end();) {
      const auto end = std::find_if(subscript, subscripts.end(),
                                    [s = *subscript](int other) { return other != s; });
      if (end - subscript > 1) {
        shared.Add(*subscript);
      }
      if (*subscript != expected) {
        missing.Add(expected, static_cast<Count>(*subscript - expected));
      } else if (missing.count == 0) {
        ascending = expected + 1;
      }
      expected = long{*subscript} + 1;
      subscript = end;
    }
    subscripts.erase(std::unique(subscripts.begin(), subscripts.end()), subscripts.end());
  }

  Subscripts subscripts;  // ascending
  long ascending = 0;     // leaves have all subscripts below it
};

std::string More(Count count) {
  return count == 1 ? "" : " (and " + std::to_string(count - 1) + " more)";
}

class DimensionCheck {
 public:
  // `which` is its index in the table, or -1.
  DimensionCheck(const OmDimension& dimension_, int which_, std::vector<Finding>& findings_)
      : dimension(dimension_), which(which_), findings(findings_) {}

  void Run(const Leaves& leaves) {
    if (dimension.Name() == nullptr) {
      Add(Kind::kNoName, "the root has no label");
    }
    if (const Several& below = leaves.below; below.count != 0) {
      Add(Kind::kRecordBelowCategory,
          Some(below.count, "record stands", "records stand") +
              " below categories and are never shown",
          below.count)
          .subscript = below.first;
    }
    if (const Count none = leaves.none; none != 0) {
      Add(Kind::kNoSubscript, Some(none, "leaf has", "leaves have") + " no subscript, and no cells",
          none);
    }
    const std::string places = Some(leaves.size, "place", "places");
    AddSubscript(Kind::kSubscriptAboveLimit, leaves.aboveLimit,
                 " is above " + std::to_string(leaves.limit) + ", so that no heading can be built");
    AddSubscript(Kind::kSubscriptBeyondSize, leaves.beyondSize, " is beyond the " + places);
    AddSubscript(Kind::kSharedSubscript, leaves.shared,
                 " is given to more than one leaf: they show the same cells");
    AddSubscript(Kind::kSubscriptGap, leaves.missing, " is given to no leaf");
    const std::string numbers = places + " for " + Some(leaves.count, "leaf", "leaves");
    if (leaves.size > leaves.count) {
      Add(Kind::kPlaceWithoutLeaf, numbers + ": the rest show no label and another place's cells",
          leaves.size - leaves.count);
    } else if (leaves.size < leaves.count) {
      Add(Kind::kLeafWithoutPlace, numbers + ": the rest are never shown",
          leaves.count - leaves.size);
    }
  }

  Finding& Add(Kind kind, const std::string& what, Count count = 1) {
    const std::string name = which < 0 ? "the dimension" : "dimension " + std::to_string(which);
    Finding& finding =
        findings.emplace_back(Found(kind, name + Quoted(dimension.Name()) + ": " + what, count));
    finding.dimension = which;
    return finding;
  }

 private:
  void AddSubscript(Kind kind, const Several& several, const std::string& what) {
    if (several.count != 0) {
      const std::string subscript = "subscript " + std::to_string(several.first);
      Add(kind, subscript + More(several.count) + what, several.count).subscript = several.first;
    }
  }

  const OmDimension& dimension;
  int which;
  std::vector<Finding>& findings;
};

// --- A table ------------------------------------------------------------------------------------

class TableCheck {
 public:
  explicit TableCheck(const OmPivotTable& table_) : table(table_), times(table_.NDimensions()) {}

  std::vector<Finding> Run() {
    for (int d = 0; d != static_cast<int>(times.size()); ++d) {
      leaves.emplace_back(*table.Dimension(d));
      About(d).Run(leaves.back());
    }
    for (const Axis axis : kAxes) {
      ReadAxis(axis);
    }
    ReadPlaces();
    ReadCells();
    ReadFootnotes();
    Order(findings);
    return std::move(findings);
  }

 private:
  DimensionCheck About(int d) { return {*table.Dimension(d), d, findings}; }

  [[nodiscard]] const PuppetVector<short>& Entries(Axis axis) const {
    return axis == Axis::kRows      ? table.Rows()
           : axis == Axis::kColumns ? table.Columns()
                                    : table.Layers();
  }

  void ReadAxis(Axis axis) {
    Several placeholders, unknown;
    Count places = 1;
    bool wrapped = false;
    bool none = false;
    long index = 0;
    for (const short d : Entries(axis)) {
      if (d == -1) {
        placeholders.Add(index);
      } else if (d < 0 || static_cast<unsigned long>(d) >= times.size()) {
        unknown.Add(index);
      } else {
        const auto which = static_cast<unsigned long>(d);
        ++times[which][static_cast<unsigned long>(axis) - 1];
        const Count size = leaves[which].size;
        none = none || size == 0;
        wrapped = wrapped || (!none && places > std::numeric_limits<Count>::max() / size);
        places *= size;
      }
      ++index;
    }
    AddEntries(Kind::kPlaceholder, axis, placeholders, "a placeholder stands");
    AddEntries(Kind::kUnknownDimension, axis, unknown, "no dimension is named");
    const Count numbers = 1ULL << 31;
    if (wrapped && !none) {
      Add(Kind::kTooManyPlaces, NameOf(axis) + ": more places than 64 bits count").axis = axis;
    } else if (axis == Axis::kLayers && places > numbers) {
      Add(Kind::kTooManyLayers,
          NameOf(axis) + ": " + std::to_string(places) + " of them, and numbers for 2^31",
          places - numbers)
          .axis = axis;
    }
  }

  void AddEntries(Kind kind, Axis axis, const Several& entries, const char* what) {
    if (entries.count != 0) {
      Finding& finding = Add(kind,
                             NameOf(axis) + ": " + what + " at entry " +
                                 std::to_string(entries.first) + More(entries.count),
                             entries.count);
      finding.axis = axis;
      finding.index = entries.first;
    }
  }

  void ReadPlaces() {
    int d = 0;
    for (const auto& on : times) {
      std::string axes;
      Axis first = Axis::kNone;
      Count several = 0;
      for (const Axis axis : kAxes) {
        const Count here = on[static_cast<unsigned long>(axis) - 1];
        if (here > 1) {
          About(d)
              .Add(Kind::kRepeatedOnAxis, std::to_string(here) + " times on " + NameOf(axis), here)
              .axis = axis;
        }
        if (here != 0) {
          first = several++ == 0 ? axis : first;
          axes += (axes.empty() ? "on " : " and ") + NameOf(axis);
        }
      }
      if (several == 0) {
        About(d).Add(Kind::kOnNoAxis, "on no axis");
      } else if (several > 1) {
        About(d).Add(Kind::kOnSeveralAxes, axes, several).axis = first;
      }
      ++d;
    }
  }

  void ReadCells() {
    Subscripts first, astray;
    Count stored = 0, without = 0;
    for (Subscripts at; table.NextCell(at) != nullptr;) {
      if (stored++ == 0) {
        first = at;
      }
      if (Astray(at) != at.size() && without++ == 0) {
        astray = at;
      }
    }
    if (without != 0) {
      const unsigned long d = Astray(astray);
      Finding& finding =
          About(static_cast<int>(d))
              .Add(Kind::kCellWithoutLeaf,
                   Some(without, "cell is", "cells are") +
                       " stored where no leaf has the subscript, the first at " + Address(astray),
                   without);
      finding.subscript = astray[d];
      finding.cell = std::move(astray);
    }
    for (unsigned long d = 0; stored != 0 && d != leaves.size(); ++d) {
      if (leaves[d].count == 0) {
        About(static_cast<int>(d))
            .Add(Kind::kNoLeafForCells,
                 "no leaf, so that none of " + Some(stored, "cell", "cells") + " is shown", stored)
            .cell = first;
      }
    }
    if (stored != 0 && table.FirstCell().Cell() == nullptr) {
      Add(Kind::kHiddenCells,
          "a null that was stored first hides all " + Some(stored, "cell", "cells") +
              " from the iterators, the first at " + Address(first),
          stored)
          .cell = first;
    }
  }

  // Returns the first dimension of which no leaf has the subscript, or the number of dimensions.
  [[nodiscard]] unsigned long Astray(const Subscripts& cell) const {
    unsigned long d = 0;
    while (d != cell.size() && leaves[d].Have(cell[d])) {
      ++d;
    }
    return d;
  }

  void ReadFootnotes() {
    Several empty;
    long index = 0;
    for (const OmFootnote& note : table.Footnotes()) {
      if (note.Text() == nullptr) {
        empty.Add(index);
      }
      ++index;
    }
    if (empty.count != 0) {
      Add(Kind::kFootnoteWithoutText,
          "footnote " + std::to_string(empty.first) + More(empty.count) + ": no text", empty.count)
          .index = empty.first;
    }
  }

  Finding& Add(Kind kind, std::string sentence, Count count = 1) {
    return findings.emplace_back(Found(kind, std::move(sentence), count));
  }

  const OmPivotTable& table;
  std::vector<Leaves> leaves;
  std::vector<std::array<Count, kAxes.size()>> times;  // entries on each axis, by dimension
  std::vector<Finding> findings;
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const Finding& finding) {
  return out << (finding.weight == Finding::Weight::kLeftover ? "leftover: " : "shown wrongly: ")
             << finding.sentence;
}

std::vector<Finding> Contradictions(const OmPivotTable& table) {
  return TableCheck(table).Run();
}

std::vector<Finding> Contradictions(const OmDimension& dimension) {
  std::vector<Finding> findings;
  DimensionCheck(dimension, -1, findings).Run(Leaves(dimension));
  return findings;
}

std::vector<Finding> Contradictions(OmOutputTree& document) {
  std::vector<Finding> findings;
  // Every item with its entries, the first one first.
  std::vector<std::pair<const OmOutputPart*, long>> items;
  for (ListTreeData<OmOutputPart*>& listed : document.List()) {
    items.emplace_back(listed.Data(), static_cast<long>(items.size()));
  }
  std::sort(items.begin(), items.end());
  long entry = 0;
  long levelBefore = -1;
  for (ListTreeData<OmOutputPart*>& listed : document.List()) {
    OmOutputPart* const item = listed.Data();
    const long level = listed.Level();
    const auto add = [&](Finding finding) {
      finding.sentence = "entry " + std::to_string(entry) +
                         Quoted(item != nullptr ? item->Title() : nullptr) + ": " +
                         finding.sentence;
      finding.entry = entry;
      findings.push_back(std::move(finding));
    };
    if (level < 0 || level > levelBefore + 1) {
      add(Found(Kind::kWrongLevel,
                "level " + std::to_string(level) +
                    (entry == 0 ? " at the root"
                                : " behind an entry of level " + std::to_string(levelBefore))));
    } else if (level == 0 && entry != 0) {
      add(Found(Kind::kBesideRoot, "beside the root, where no walk from the root comes"));
    }
    if (item != nullptr) {
      const long first = std::lower_bound(items.begin(), items.end(),
                                          std::pair<const OmOutputPart*, long>(item, -1))
                             ->second;
      if (first != entry) {
        Finding finding =
            Found(Kind::kRepeatedItem, "placed already at entry " + std::to_string(first));
        finding.index = first;
        add(std::move(finding));
      } else if (const auto* const table = dynamic_cast<const OmPivotTable*>(item)) {
        for (Finding& finding : Contradictions(*table)) {
          add(std::move(finding));
        }
      }
    }
    levelBefore = level;
    ++entry;
  }
  return findings;
}

}  // namespace om
