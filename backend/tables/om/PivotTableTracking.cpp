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
  icuTracker* const t = *n != nullptr ? (*n)->getICUTracker() : inherited;
  const OmVectorTree<OmCellText*>::Node end = n.End();
  for (OmVectorTree<OmCellText*>::Node child = n.Begin(); child != end; ++child) {
    if (*child != nullptr) {
      (*child)->setICUTracker(t);
    }
    propagateICUTracker(child, t);
  }
}

void propagateICUTracker(OmVectorTree<OmDimensionNode>::Node n, icuTracker* t) {
  const OmVectorTree<OmDimensionNode>::Node end = n.End();
  for (OmVectorTree<OmDimensionNode>::Node child = n.Begin(); child != end; ++child) {
    if (child->Text() != nullptr) {
      child->Text()->setICUTracker(t);
    }
    propagateICUTracker(child, t);
  }
}

void OmPivotTable::setBackendSettings(const BackendSettings& settings) {
  Data& my = *_my;
  my.backendSettings = settings;
  my.fastTable = settings.getFastTables();
  if (my.icu == nullptr && my.fastTable) {
    my.icu = new icuTracker(settings.getUnicode(), settings.getLocale());
    my.helper.setTracker(my.icu);
    // The corner text and the caption are not visited here: those that are set later are.
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
