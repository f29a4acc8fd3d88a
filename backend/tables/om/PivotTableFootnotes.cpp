// The footnotes of a pivot table.

#include <algorithm>
#include <new>
#include <typeinfo>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/CellTextOrder.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PivotTableData.h"
#include "platform/cells/CellTexts.h"

namespace {

// Up to this many footnotes, a linear search is as fast as the index.
constexpr unsigned long kFew = 16;

// Whether a text is of one of the platform's kinds whose comparison is a total order, and not of a
// derived class. A composite may contain any text.
bool IsOrdered(const OmCellText& text) {
  const std::type_info& kind = typeid(text);
  return kind == typeid(OmStringCell) || kind == typeid(OmStringCellUTF8) ||
         kind == typeid(OmNumber) || kind == typeid(OmVariable) || kind == typeid(OmNumDataValue) ||
         kind == typeid(OmStringDataValue);
}

}  // namespace

bool OmPivotTable::FootnotePlaces::Before::Less(const OmCellText& a, const OmCellText& b) {
  return a.Kind() != b.Kind() ? a.Kind() < b.Kind() : a < b;
}

unsigned long OmPivotTable::FootnotePlaces::Walk(const OmFootnote& note) const {
  // A failed call leaves a footnote without a text.
  const OmFootnote* const found = std::find_if(
      list.begin(), list.end(),
      [&note](const OmFootnote& other) { return other.Text() != nullptr && other == note; });
  return static_cast<unsigned long>(found - list.begin());
}

// Enters the footnotes that were added since the last search into the index.
void OmPivotTable::FootnotePlaces::CatchUp() {
  for (; known != list.size(); ++known) {
    const OmCellText* const text = list[known].Text();
    if (text == nullptr) {
      continue;
    }
    if (IsOrdered(*text)) {
      first.insert(known);
    } else {
      others.push_back(known);
    }
  }
}

unsigned long OmPivotTable::FootnotePlaces::Find(const OmFootnote& note) {
  if (walks || list.size() <= kFew || !IsOrdered(*note.Text())) {
    return Walk(note);
  }
  try {
    CatchUp();
  } catch (const std::bad_alloc&) {
    return Walk(note);  // needs no memory
  }
  const auto found = first.find(*note.Text());
  unsigned long place = found != first.end() ? *found : list.size();
  for (const unsigned long other : others) {
    if (other > place) {
      break;
    }
    if (list[other] == note) {
      place = other;
      break;
    }
  }
  return place;
}

void OmPivotTable::FootnotePlaces::GiveUp() noexcept {
  walks = true;
  first.clear();
  others.clear();
}

int OmPivotTable::Footnote(const OmFootnote& note, bool alwaysNew) {
  OmVector<OmFootnote>& footnotes = _my->footnotes;
  // Read before the list grows: `note` may be one of its entries.
  const OmCellText* const text = note.Text();
  const OmCellText* const marker = note.Marker();
  const int useCount = note.UseCount();
  OM_HARDEN(text != nullptr, "OmPivotTable::Footnote");

  OmFootnote* entry =
      footnotes.begin() + (alwaysNew ? footnotes.size() : _my->footnotePlaces.Find(note));
  const auto index = static_cast<int>(entry - footnotes.begin());

  if (entry != footnotes.end()) {
    // The latest marker replaces the old one, even if it is null.
    if (entry->Marker() != marker) {
      entry->Marker(marker);
    }
    if (entry->Marker() != nullptr) {
      setHelper(*entry->Marker());
    }
    entry->AddUse();
    return index;
  }

  // If a copy below fails, the entry stays in the list.
  entry = footnotes.push_back(OmFootnote(nullptr, nullptr, &_my->region));
  entry->Text(*text);
  setHelper(*entry->Text());
  if (marker != nullptr) {
    entry->Marker(marker);
    setHelper(*entry->Marker());
  }
  if (useCount < 0) {
    entry->UseCount(useCount);
  } else {
    entry->AddUse();
  }
  return index;
}

OmVector<OmFootnote>& OmPivotTable::Footnotes() noexcept {
  _my->footnotePlaces.GiveUp();
  return _my->footnotes;
}

const OmVector<OmFootnote>& OmPivotTable::Footnotes() const noexcept {
  return _my->footnotes;
}

void OmPivotTable::RemovedFootnotes(bool removed) noexcept {
  _my->removedFootnotes = removed;
}

bool OmPivotTable::HasRemovedFootnotes() const noexcept {
  return _my->removedFootnotes;
}
