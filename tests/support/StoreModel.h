// The cells and the footnotes of a table beside a map and a list.

#ifndef TESTS_SUPPORT_STOREMODEL_H
#define TESTS_SUPPORT_STOREMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/Footnote.h"
#include "tests/support/Choices.h"
#include "tests/support/Show.h"
#include "tests/support/Tables.h"
#include "tests/support/Walkers.h"

// Adds "0,2=x" to a list of cells.
inline void ListCell(std::string& list, const std::vector<int>& subscripts,
                     const std::string& text) {
  list += (list.empty() ? "" : " ") + ListOf(subscripts);
  list.back() = '=';
  list += text;
}

// "0,2=x 1,0=y" for every cell in the iterators' order.
inline std::string Cells(const OmPivotTable& table) {
  std::string list;
  for (OmPivotTable::ConstIterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
    ListCell(list, cell.Index(), cell.Cell()->Text());
  }
  return list;
}

// Random setting, clearing, deleting and adding of dimensions against a map from the subscripts to
// what was stored: a text, or nothing for a null.
class StoreModel {
 public:
  explicit StoreModel(Choices& random_) : random(random_), nulls(random.OneIn(2)) {
    AddDimension(t, "d", 2);
  }

  void Step() {
    const int step = count++;
    const auto n = static_cast<unsigned long>(t.NDimensions());
    Key key{};
    for (auto subscript = key.end() - static_cast<long>(n); subscript != key.end(); ++subscript) {
      *subscript = random.OneIn(100) ? random.Below(201) : random.Below(n > 2 ? 3 : 7);
    }
    const std::vector<int> subscripts = Subscripts(key);
    const int what = random.Below(20);
    if (what < 12) {
      twin[key] = std::to_string(step);
      t.Cell(subscripts, OmStringCell(twin[key]));
    } else if (what < 14 && nulls) {
      twin[key] = "";
      t.Cell(subscripts, nullptr);
    } else if (what < 19 && twin.contains(key)) {
      twin[key] = "";
      t.deleteCell(subscripts);
      if (!VectorHoldsCell(key)) {
        std::erase_if(twin, [&](const auto& entry) { return SameVector(entry.first, key); });
      }
    } else if (what == 19 && n < key.size() && step > 100 && !twin.empty()) {
      AddDimension(t, "d", 2);
      return;
    }
    const OmCellText* const cell = t.Cell(subscripts);
    ASSERT_EQ(cell == nullptr ? "" : cell->Text(), twin.contains(key) ? twin[key] : "");
  }

  void End() {
    std::string expected;
    // The first vector has to hold a cell, or the walk is over at once.
    if (!twin.empty() && VectorHoldsCell(twin.begin()->first)) {
      for (const auto& [key, text] : twin) {
        if (!text.empty()) {
          ListCell(expected, Subscripts(key), text);
        }
      }
    }
    ASSERT_EQ(Cells(t), expected);
    Verify(t);
  }

 private:
  // The last dimension's subscript first; 0 in front for dimensions that are still to come.
  using Key = std::array<int, 4>;

  [[nodiscard]] std::vector<int> Subscripts(const Key& key) const {
    return {key.rbegin(), key.rbegin() + static_cast<long>(t.NDimensions())};
  }
  static bool SameVector(const Key& a, const Key& b) {
    return std::equal(a.begin(), a.end() - 1, b.begin());
  }
  [[nodiscard]] bool VectorHoldsCell(const Key& key) const {
    return std::any_of(twin.begin(), twin.end(), [&](const auto& entry) {
      return SameVector(entry.first, key) && !entry.second.empty();
    });
  }

  Choices& random;
  bool nulls;
  int count = 0;
  OmPivotTable t{OmStringCell("t"), OmStringCell("t"), false};
  std::map<Key, std::string> twin;
};

// Footnotes, new or used again, with and without markers and counts of their own.
class FootnoteModel {
 public:
  explicit FootnoteModel(Choices& random_) : random(random_) {}

  void Step() {
    const OmStringCell text(std::string(1, static_cast<char>('a' + random.Below(6))));
    const OmStringCell marker(random.OneIn(2) ? "null" : std::to_string(random.Below(9)));
    OmFootnote note(&text, marker.Text() == "null" ? nullptr : &marker, nullptr);
    note.UseCount(random.Below(5) - 2);
    const bool alwaysNew = random.OneIn(5);
    const auto known = std::find_if(twin.begin(), twin.end(), [&](const Note& other) {
      return !alwaysNew && other.text == text.Text();
    });
    ASSERT_EQ(table.Footnote(note, alwaysNew), known - twin.begin());
    if (known == twin.end()) {
      twin.push_back({text.Text(), marker.Text(), note.UseCount() < 0 ? note.UseCount() : 1});
    } else {
      known->marker = marker.Text();
      ++known->uses;
    }
    std::string expected;
    for (const Note& other : twin) {
      expected += Fields(other.text, other.marker, other.uses) + " ";
    }
    ASSERT_EQ(Show(table.Footnotes()), expected);
    Verify(table);
  }
  void End() {}

 private:
  struct Note {
    std::string text, marker;
    int uses;
  };

  Choices& random;
  OmPivotTable table{OmStringCell("t"), OmStringCell("t"), false};
  std::vector<Note> twin;
};

#endif
