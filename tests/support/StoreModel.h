// The cells and the footnotes of a table beside a map and a list.

#ifndef TESTS_SUPPORT_STOREMODEL_H
#define TESTS_SUPPORT_STOREMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/Footnote.h"
#include "tests/support/Choices.h"
#include "tests/support/Show.h"
#include "tests/support/Tables.h"
#include "tests/support/Walkers.h"

// "0,2=x 1,0=y" for every cell in the iterators' order.
inline std::string Cells(const OmPivotTable& table) {
  std::string list;
  for (OmPivotTable::ConstIterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
    list += (list.empty() ? "" : " ") + ListOf(cell.Index());
    list.back() = '=';
    list += cell.Cell()->Text();
  }
  return list;
}

// Random setting, clearing, deleting and adding of dimensions against a map from the subscripts to
// what was stored: a text, or nothing for a null.
class StoreModel {
 public:
  explicit StoreModel(Choices& random_) : random(random_) { AddDimension(*t, "d", 2); }

  void Step() {
    const int step = count++;
    const auto n = static_cast<unsigned long>(t->NDimensions());
    Key key{};
    for (auto subscript = key.end() - static_cast<long>(n); subscript != key.end(); ++subscript) {
      // Now and then far away, also where only what was stored in is marked.
      *subscript = random.Below(random.OneIn(500) ? 9000 : random.OneIn(50) ? 700 : n > 2 ? 3 : 7);
    }
    const std::vector<int> subscripts = Subscripts(key);
    const int what = random.Below(20);
    if (what < sets) {
      Key at = key;
      // Now and then many side by side.
      for (int left = random.OneIn(60) ? 150 : 1; left != 0; --left, ++at.back()) {
        twin[at] = std::to_string(step);
        const OmStringCell text(twin[at]);
        const BrittleText other(1, twin[at], counted);
        t->Cell(Subscripts(at), foreign ? static_cast<const OmCellText*>(&other) : &text);
      }
    } else if (what < 14 && nulls) {
      twin[key] = "";
      t->Cell(subscripts, nullptr);
    } else if (what < 19) {
      t->deleteCell(subscripts);
      // Behind the end of a vector nothing happens.
      if (const auto at = twin.lower_bound(key); at != twin.end() && SameVector(at->first, key)) {
        twin[key] = "";
        if (!VectorHoldsCell(key)) {
          std::erase_if(twin, [&](const auto& entry) { return SameVector(entry.first, key); });
        }
      }
    } else if (n < most && step > 100 && !twin.empty()) {
      AddDimension(*t, "d", 2);
      return;
    }
    const OmCellText* const cell = std::as_const(*t).Cell(subscripts);
    ASSERT_EQ(cell, t->Cell(subscripts));
    ASSERT_EQ(cell == nullptr ? "" : cell->Text(), twin.contains(key) ? twin[key] : "");
    const auto expected = std::find_if(twin.upper_bound(key), twin.end(),
                                       [](const auto& entry) { return !entry.second.empty(); });
    std::vector<int> next = subscripts;
    ASSERT_EQ(t->NextCell(next) != nullptr, expected != twin.end());
    ASSERT_EQ(next, next.empty() ? next : Subscripts(expected->first));
  }

  void End() {
    auto cell = t->FirstCell();
    // The first vector has to hold a cell, or the walk is over at once.
    const bool walks = !twin.empty() && VectorHoldsCell(twin.begin()->first);
    long texts = 0;
    unsigned long stored = 0;
    std::vector<int> next;
    for (const auto& [key, text] : twin) {
      texts += foreign && !text.empty() ? 1 : 0;
      if (!text.empty()) {  // found whatever stands first
        ++stored;
        ASSERT_EQ(t->NextCell(next), t->Cell(Subscripts(key)));
        ASSERT_EQ(next, Subscripts(key));
      }
      if (walks && !text.empty()) {
        ASSERT_NE(cell.Cell(), nullptr);
        ASSERT_EQ(cell.Index(), Subscripts(key));
        ASSERT_EQ(cell.Cell()->Text(), text);
        ++cell;
      }
    }
    ASSERT_EQ(cell.Cell(), nullptr);
    ASSERT_EQ(t->NextCell(next), nullptr);
    ASSERT_TRUE(next.empty());
    ASSERT_EQ(t->StoredCells(), stored);
    // Each has its end once, some with the table.
    ASSERT_EQ(counted.use_count(), 1 + texts);
    t.reset();
    ASSERT_EQ(counted.use_count(), 1);
  }

 private:
  // The last dimension's subscript first; 0 in front for dimensions that are still to come.
  using Key = std::array<int, 4>;

  [[nodiscard]] std::vector<int> Subscripts(const Key& key) const {
    return {key.rbegin(), key.rbegin() + static_cast<long>(t->NDimensions())};
  }
  [[nodiscard]] bool VectorHoldsCell(const Key& key) const {
    return std::any_of(twin.begin(), twin.end(), [&](const auto& entry) {
      return SameVector(entry.first, key) && !entry.second.empty();
    });
  }
  static bool SameVector(const Key& a, const Key& b) {
    return std::equal(a.begin(), a.end() - 1, b.begin());
  }

  Choices& random;
  bool nulls = random.OneIn(2);
  bool foreign = random.OneIn(2);  // texts that do not go with the region
  unsigned long most = 1 + static_cast<unsigned long>(random.Below(4));  // dimensions
  int sets = 4 + 4 * random.Below(3);                                    // of 20 steps
  int count = 0;
  std::shared_ptr<int> counted = std::make_shared<int>();
  std::optional<OmPivotTable> t{std::in_place, OmStringCell("t"), OmStringCell("t"), false};
  std::map<Key, std::string> twin;
};

// A text of a caller's own that equals others whatever their case, though not the other way round.
class AnyCase : public OmStringCell {
 public:
  using OmStringCell::OmStringCell;
  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region) const override {
    return new (region) AnyCase(Text(), region);
  }
  [[nodiscard]] short Compare(const OmCellText& other) const override {
    return std::tolower(Text()[0]) == std::tolower(other.Text()[0]) ? 0 : 1;
  }
};

// Footnotes, new or used again, with and without markers and counts of their own.
class FootnoteModel {
 public:
  explicit FootnoteModel(Choices& random_) : random(random_) {}

  void Step() {
    const std::string letter(1, static_cast<char>((random.OneIn(2) ? 'A' : 'a') + random.Below(9)));
    const std::unique_ptr<OmCellText> text(NewText(letter));
    const bool marked = !random.OneIn(2);
    const OmStringCell marker(marked ? std::to_string(random.Below(9)) : "");
    OmFootnote note(text.get(), marked ? &marker : nullptr, nullptr);
    note.UseCount(random.Below(5) - 2);
    const bool alwaysNew = random.OneIn(5);
    OmFootnote* const known = alwaysNew ? twin.end() : std::find(twin.begin(), twin.end(), note);
    const auto index = static_cast<unsigned long>(known - twin.begin());
    ASSERT_EQ(table.Footnote(note, alwaysNew), static_cast<int>(index));
    if (known == twin.end()) {
      note.UseCount(note.UseCount() < 0 ? note.UseCount() : 1);
      twin.push_back(note);
    } else {
      known->Marker(note.Marker());
      known->AddUse();
    }
    // Whoever holds the writable list may change its texts.
    if (random.OneIn(200)) {
      table.Footnotes()[index].Text(marker);
      twin[index].Text(marker);
    }
    ASSERT_EQ(Show(std::as_const(table).Footnotes()), Show(twin));
    Verify(table);
  }
  void End() {}

 private:
  OmCellText* NewText(const std::string& letter) {
    switch (random.Below(foreign ? 6 : 5)) {
      case 0:
        return new OmNumber(letter[0] % 8, {Qualtex_Format::kFixed, 8, random.Below(3)});
      case 1:
        return new OmVariable(letter, "");
      case 2: {
        auto* const composite = new OmComposite;
        composite->Tree().Child(composite->Tree().Root(), new OmStringCell(letter));
        return composite;
      }
      case 5:
        return new AnyCase(letter);
      default:
        return new OmStringCell(letter);
    }
  }

  Choices& random;
  bool foreign = random.OneIn(2);
  OmPivotTable table{OmStringCell("t"), OmStringCell("t"), false};
  OmVector<OmFootnote> twin{nullptr};
};

#endif
