// The footnotes of a pivot table.

#include <algorithm>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PivotTableData.h"

int OmPivotTable::Footnote(const OmFootnote& note, bool alwaysNew) {
  OmVector<OmFootnote>& footnotes = _my->footnotes;
  // Read before the list grows: `note` may be one of its entries.
  const OmCellText* const text = note.Text();
  const OmCellText* const marker = note.Marker();
  const int useCount = note.UseCount();
  OM_HARDEN(text != nullptr, "OmPivotTable::Footnote");

  OmFootnote* entry = footnotes.end();
  if (!alwaysNew) {
    // An entry without a text is what a failed call left behind.
    entry = std::find_if(footnotes.begin(), footnotes.end(), [&note](const OmFootnote& other) {
      return other.Text() != nullptr && other == note;
    });
  }
  const auto index = static_cast<int>(entry - footnotes.begin());

  if (entry != footnotes.end()) {
    // The latest marker wins, also where that is none.
    if (entry->Marker() != marker) {
      entry->Marker(marker);
    }
    if (entry->Marker() != nullptr) {
      setHelper(*entry->Marker());
    }
    entry->AddUse();
    return index;
  }

  // The entry stays in the list, empty, where one of the copies below fails.
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
