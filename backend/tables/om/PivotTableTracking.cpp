// The text-encoding trackers of a pivot table.

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PivotTableData.h"
#include "platform/cells/CellTexts.h"
#include "platform/support/IcuTracker.h"

void OmPivotTable::ICUHelper::Visit(OmNumber&) {}

void OmPivotTable::ICUHelper::Visit(OmStringCell& cell) {
  cell.setICUTracker(tracker);
}

void OmPivotTable::ICUHelper::Visit(OmStringCellUTF8& cell) {
  cell.setICUTracker(tracker);
}

void OmPivotTable::ICUHelper::Visit(OmVariable& cell) {
  cell.setICUTracker(tracker);
}

void OmPivotTable::ICUHelper::Visit(OmNumDataValue& cell) {
  cell.setICUTracker(tracker);
}

void OmPivotTable::ICUHelper::Visit(OmStringDataValue& cell) {
  cell.setICUTracker(tracker);
}

void OmPivotTable::ICUHelper::Visit(OmComposite& cell) {
  cell.setICUTracker(tracker);
  OmVectorTree<OmCellText*>::Node root = cell.Tree().Root();
  if (*root != nullptr) {
    (*root)->setICUTracker(cell.getICUTracker());
  }
  propagateICUTracker(root, cell.getICUTracker());
}

void propagateICUTracker(OmVectorTree<OmCellText*>::Node& n, icuTracker* inherited) {
  using Record = OmVectorTreeData<OmCellText*>;
  const Record* const top = n.record;
  const Record* before = top;
  icuTracker* t = inherited;  // the tracker of `before` and its siblings
  for (Record* record = n.record->Next(top); record != nullptr; record = record->Next(top)) {
    const Record* above = record->Parent();
    if (above != before && above != before->Parent()) {
      // Back at a higher level: its tracker is that of the nearest record above with a text.
      while (above->Data() == nullptr && above != top) {
        above = above->Parent();
      }
      t = inherited;
      before = above;
    }
    if (above == before && above->Data() != nullptr) {
      t = above->Data()->getICUTracker();
    }
    if (record->Data() != nullptr) {
      record->Data()->setICUTracker(t);
    }
    before = record;
  }
}

void propagateICUTracker(OmVectorTree<OmDimensionNode>::Node n, icuTracker* t) {
  for (auto* record = n.record->Next(n.record); record != nullptr;
       record = record->Next(n.record)) {
    if (record->Data().Text() != nullptr) {
      record->Data().Text()->setICUTracker(t);
    }
  }
}

void OmPivotTable::setBackendSettings(const BackendSettings& settings) {
  Data& my = *_my;
  my.backendSettings = settings;
  my.fastTable = settings.getFastTables();
  if (my.icu == nullptr && my.fastTable) {
    my.icu = new icuTracker(settings.getUnicode(), settings.getLocale());
    my.helper.setTracker(my.icu);
    // The corner text and the caption are not visited here, on purpose: their setters visit them
    // when they are set after this call.
    if (Title() != nullptr) {
      Title()->Accept(my.helper);
    }
    my.templateName->Accept(my.helper);
    if (my.tableTitle != nullptr) {
      my.tableTitle->Accept(my.helper);
    }
    for (OmDimension* const dimension : my._dimensions) {
      OM_HARDEN(dimension->Name() != nullptr, "OmPivotTable::setBackendSettings");
      dimension->Name()->setICUTracker(my.icu);
      propagateICUTracker(dimension->Root(), my.icu);
    }
    for (OmFootnote& footnote : my.footnotes) {
      if (footnote.Text() != nullptr) {
        footnote.Text()->setICUTracker(my.icu);
      }
      if (footnote.Marker() != nullptr) {
        footnote.Marker()->setICUTracker(my.icu);
      }
    }
  }
  if (my.utf8 == nullptr && my.fastTable) {
    if (settings.getUnicode()) {
      my.utf8 = my.icu;
    } else {
      my.utf8 = new icuTracker(true, settings.getLocale());
    }
  }
}

const BackendSettings& OmPivotTable::getBackendSettings() const noexcept {
  return _my->backendSettings;
}

icuTracker* OmPivotTable::getICUTracker() const noexcept {
  return _my->icu;
}

icuTracker* OmPivotTable::getU8Tracker() const noexcept {
  return _my->utf8;
}

void OmPivotTable::setHelper(OmCellText& cell) {
  if (_my->helper.Tracker() != nullptr) {
    cell.Accept(_my->helper);
  }
}
