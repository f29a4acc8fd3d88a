// The cells and the footnotes of a table beside a map and a list.

#ifndef TESTS_SUPPORT_STOREMODEL_H
#define TESTS_SUPPORT_STOREMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/Footnote.h"
#include "tests/support/Choices.h"
#include "tests/support/Show.h"
#include "tests/support/Tables.h"
#include "tests/support/Walkers.h"

// "0,2=x 1,0=y" for every cell in the iterators' order.
inline std::string Cells(const OmPivotTable& table) {
  std::string text;
  for (OmPivotTable::ConstIterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
    text += text.empty() ? "" : " ";
    for (const int subscript : cell.Index()) {
      text += std::to_string(subscript) + ",";
    }
    text.back() = '=';
    text += cell.Cell()->Text();
  }
  return text;
}

// Random setting, clearing, deleting and adding of dimensions against a map from the subscripts,
// last dimension first, to what was stored.
class StoreModel {
 public:
  using Subscripts = std::vector<int>;

  explicit StoreModel(Choices& random_) : random(random_), nulls(random.OneIn(2)) {
    AddDimension(t, "d", 2);
  }

  void Step() {
    const int step = count++;
    const auto n = static_cast<unsigned long>(t.NDimensions());
    Subscripts key(n);
    for (int& subscript : key) {
      subscript = random.OneIn(100) ? random.Below(201) : random.Below(n > 2 ? 3 : 7);
    }
    const Subscripts subscripts(key.rbegin(), key.rend());
    const int what = random.Below(20);
    if (what < 12) {
      const std::string text = std::to_string(step);
      t.Cell(subscripts, OmStringCell(text));
      twin[key] = text;
    } else if (what < 14 && nulls) {
      t.Cell(subscripts, nullptr);
      twin[key] = std::nullopt;
    } else if (what < 19) {
      if (twin.contains(key)) {
        t.deleteCell(subscripts);
        twin[key] = std::nullopt;
        const auto sameVector = [&](const auto& entry) {
          return std::equal(key.begin(), key.end() - 1, entry.first.begin());
        };
        if (std::none_of(twin.begin(), twin.end(), [&](const auto& entry) {
              return sameVector(entry) && entry.second.has_value();
            })) {
          std::erase_if(twin, sameVector);
        }
      }
    } else if (n < 4 && step > 100 && !twin.empty()) {
      AddDimension(t, "d", 2);
      std::map<Subscripts, std::optional<std::string>> raised;
      for (const auto& [old, text] : twin) {
        Subscripts longer{0};
        longer.insert(longer.end(), old.begin(), old.end());
        raised[longer] = text;
      }
      twin.swap(raised);
      return;
    }
    const auto found = twin.find(key);
    const OmCellText* const cell = t.Cell(subscripts);
    ASSERT_EQ(cell == nullptr ? "" : cell->Text(),
              found == twin.end() ? "" : found->second.value_or(""));
  }

  void End() {
    std::string expected;
    const auto first = twin.begin();
    bool over = first == twin.end();
    if (!over) {  // the first vector has to hold a cell, or the walk is over at once
      over = std::none_of(first, twin.end(), [&](const auto& entry) {
        return entry.second.has_value() &&
               std::equal(entry.first.begin(), entry.first.end() - 1, first->first.begin());
      });
    }
    for (auto entry = first; !over && entry != twin.end(); ++entry) {
      if (!entry->second.has_value()) {
        continue;
      }
      expected += expected.empty() ? "" : " ";
      for (auto s = entry->first.rbegin(); s != entry->first.rend(); ++s) {
        expected += std::to_string(*s) + (s + 1 == entry->first.rend() ? "=" : ",");
      }
      expected += *entry->second;
    }
    ASSERT_EQ(Cells(t), expected);
    Verify(t);
  }

 private:
  Choices& random;
  bool nulls;
  int count = 0;
  OmPivotTable t{OmStringCell("t"), OmStringCell("t"), false};
  std::map<Subscripts, std::optional<std::string>> twin;
};

// Footnotes, new or used again, with and without markers and counts of their own.
class FootnoteModel {
 public:
  explicit FootnoteModel(Choices& random_) : random(random_) {}

  void Step() {
    const std::string text(1, static_cast<char>('a' + random.Below(6)));
    const std::string marker = random.OneIn(2) ? "" : std::to_string(random.Below(9));
    const OmStringCell textCell(text);
    const OmStringCell markerCell(marker);
    OmFootnote note(&textCell, marker.empty() ? nullptr : &markerCell, nullptr);
    note.UseCount(random.Below(5) - 2);
    const bool alwaysNew = random.OneIn(5);
    const auto known = std::find_if(twin.begin(), twin.end(),
                                    [&](const Note& other) { return other.text == text; });
    const auto index = alwaysNew || known == twin.end()
                           ? twin.size()
                           : static_cast<std::size_t>(known - twin.begin());
    ASSERT_EQ(table.Footnote(note, alwaysNew), static_cast<int>(index));
    if (index == twin.size()) {
      twin.push_back({text, marker, note.UseCount() < 0 ? note.UseCount() : 1});
    } else {
      twin[index].marker = marker;
      ++twin[index].uses;
    }
    std::string expected = "[";
    for (const Note& other : twin) {
      expected +=
          Fields(other.text, other.marker.empty() ? "null" : other.marker, other.uses) + " ";
    }
    ASSERT_EQ(Show(table.Footnotes()), expected + "]");
    Verify(table);
  }
  void End() {}

 private:
  struct Note {
    std::string text;
    std::string marker;
    int uses;
  };

  Choices& random;
  OmPivotTable table{OmStringCell("t"), OmStringCell("t"), false};
  std::vector<Note> twin;
};

#endif
