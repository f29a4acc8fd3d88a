// The pivot table object: its life, its titles, its cells, its area formats and its properties.

#include "backend/tables/om/PivotTable.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/PivotTableData.h"
#include "platform/cells/CellMetaData.h"
#include "platform/support/IcuTracker.h"

namespace {

// Deletes `held` and clears the pointer, so that it never dangles.
template <typename T>
void Drop(T*& held) {
  T* const old = std::exchange(held, nullptr);
  delete old;
}

// Replaces `held` by a copy of `text` in `region`. The old text goes first.
void Replace(OmCellText*& held, const OmCellText* text, OmMemoryRegion* region) {
  OM_HARDEN(text == nullptr || text != held, "OmPivotTable -- a text replaced by itself");
  Drop(held);
  if (text != nullptr) {
    held = text->Clone(region);
  }
}

// Throws what is wrong with `subscripts` in a table of `count` dimensions.
[[noreturn]] void RefuseSubscripts(const std::vector<int>& subscripts, unsigned long count) {
  const auto negative = std::find_if(subscripts.begin(), subscripts.end(),
                                     [](int subscript) { return subscript < 0; });
  if (subscripts.size() != count || negative == subscripts.end()) {
    throw OMSException("OmPivotTable::Cell() -- nind != _my->_dimensions.size()",
                       static_cast<double>(subscripts.size()), static_cast<double>(count));
  }
  // Reported as the unsigned number that it widens to, so -1 reads 1.84467e+19, on purpose.
  throw OMSException(
      "OmPivotTable::Cell() -- subscript < 0",
      static_cast<double>(static_cast<unsigned long long>(static_cast<long long>(*negative))), 0);
}

// Moves `subscripts` behind all that agree with them from dimension `k` on, in the order of the
// iterators. Returns false where nothing comes behind.
bool PassBy(std::vector<int>& subscripts, unsigned long k) {
  while (k != subscripts.size() && subscripts[k] == std::numeric_limits<int>::max()) {
    ++k;
  }
  if (k == subscripts.size()) {
    return false;
  }
  std::fill_n(subscripts.begin(), k, 0);
  ++subscripts[k];
  return true;
}

}  // namespace

OmPivotTable::Data::Data(const OmCellText& templateName_, bool hasSplits_) : hasSplits(hasSplits_) {
  const std::string name = templateName_.Text();
  isWarnings = name == "Warnings";
  isNotes = name == "Notes";
  // Last, because only the destructor deletes it.
  templateName = templateName_.Clone(&region);
}

OmPivotTable::Data::~Data() {
  region.WorkingRelease(false);
  Drop(templateName);
  Drop(cornerText);
  Drop(caption);
  Drop(tableTitle);
  if (_dimensions.size() != 0 && !cellsGo) {
    freeCellArray(root, static_cast<int>(_dimensions.size()));
    root = nullptr;
  }
  for (OmDimension* const dimension : _dimensions) {
    delete dimension;
  }
  for (const auto& [area, format] : areaFormats) {
    delete format;
  }
  for (FormatArea* const format : displacedFormats) {
    delete format;
  }
  if (utf8 != icu) {
    Drop(utf8);
  }
  Drop(icu);
}

OmPivotTable::OmPivotTable(const OmCellText& title_, const OmCellText& templateName, bool hasSplits)
    : OmOutputPart(title_), _my(new Data(templateName, hasSplits)), cells(_my) {}

OmPivotTable::~OmPivotTable() noexcept {
  delete _my;
}

void OmPivotTable::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

void OmPivotTable::EndTable() {
  OmCellStore::Verify(_my->root, _my->_dimensions.size());
  _my->ReindexAxis();
}

// --- Titles -------------------------------------------------------------------------------------

OmCellText* OmPivotTable::TemplateName() noexcept {
  return _my->templateName;
}

const OmCellText* OmPivotTable::TemplateName() const noexcept {
  return _my->templateName;
}

OmCellText* OmPivotTable::CornerText() noexcept {
  return _my->cornerText;
}

const OmCellText* OmPivotTable::CornerText() const noexcept {
  return _my->cornerText;
}

void OmPivotTable::CornerText(const OmCellText* text) {
  Replace(_my->cornerText, text, &_my->region);
  if (_my->cornerText != nullptr) {
    setHelper(*_my->cornerText);
  }
}

OmCellText* OmPivotTable::Caption() noexcept {
  return _my->caption;
}

const OmCellText* OmPivotTable::Caption() const noexcept {
  return _my->caption;
}

void OmPivotTable::Caption(const OmCellText* text) {
  Replace(_my->caption, text, &_my->region);
  if (_my->caption != nullptr) {
    // Visited whether there is a tracker or not, unlike most texts.
    _my->caption->Accept(_my->helper);
  }
}

const OmCellText* OmPivotTable::GetTableTitle() const noexcept {
  return _my->tableTitle;
}

OmCellText* OmPivotTable::TableTitle() noexcept {
  return _my->tableTitle;
}

void OmPivotTable::SetTableTitle(const OmCellText& text) {
  Replace(_my->tableTitle, &text, &_my->region);
  // Visited whether there is a tracker or not, like the caption.
  _my->tableTitle->Accept(_my->helper);
}

// --- Cells --------------------------------------------------------------------------------------

namespace {

// Throws unless `subscripts` are as many as the table has dimensions, and none is negative.
void CheckSubscripts(const std::vector<int>& subscripts, unsigned long count) {
  if (subscripts.size() != count ||
      std::any_of(subscripts.begin(), subscripts.end(), [](int s) { return s < 0; })) {
    RefuseSubscripts(subscripts, count);
  }
}

// Stores a copy of `cell` in slot `s`, which holds null.
inline OmCellText* StoreCell(OmPivotTable::Data& my, OmPointerVector& v, unsigned long s,
                             const OmCellText& cell) {
  OmCellText* const copy = cell.Clone(&my.region);
  v.Put(s, copy);
  ++my.storedCells;
  if (my.cellsGo && !OmCellStore::GoesWith(*copy, &my.region)) {
    my.cellsGo = false;
  }
  if (my.helper.Tracker() != nullptr) {
    copy->Accept(my.helper);
  }
  return copy;
}

// Stores a copy of `cell`, or null, in place of the cell in slot `s`, whose metadata stays.
void ReplaceCell(OmPivotTable::Data& my, OmPointerVector& v, unsigned long s,
                 const OmCellText* cell) {
  OM_HARDEN(cell != v[s], "OmPivotTable::Cell");
  std::unique_ptr<OmCellMetaData> meta;
  if (const auto* const old = static_cast<OmCellText*>(v[s]); old->hasMeta()) {
    meta = std::make_unique<OmCellMetaData>(old->getMeta());
  }
  delete static_cast<OmCellText*>(v.Exchange(s, nullptr));
  --my.storedCells;
  if (cell != nullptr) {
    OmCellText* const copy = StoreCell(my, v, s, *cell);
    if (meta != nullptr) {
      copy->setMeta(*meta);
    }
  }
}

// Makes the slot for `subscripts`, which has no room yet, after checking them. A slot that has room
// needs no check.
OmPointerVector* MakeRoom(OmPivotTable::Data& my, const std::vector<int>& subscripts) {
  CheckSubscripts(subscripts, my._dimensions.size());
  if (subscripts.empty()) {
    // A table without dimensions has no place for a cell, although reading finds null there.
    RefuseSubscripts(subscripts, 0);
  }
  return &OmCellStore::Reach(my.root, subscripts, my.region);
}

}  // namespace

bool OmPivotTable::Cell(const std::vector<int>& subscripts, const OmCellText* cell) {
  Data& my = *_my;
  // Every call counts, whatever becomes of it. The number wraps like the 32-bit integer that it is.
  const int count = my.numCells;
  my.numCells = static_cast<int>(static_cast<unsigned int>(count) + 1U);
  // The call that makes the count exceed the limit is still accepted.
  if (count > my.backendSettings.getMaxCells()) {
    Scratch(true);
    return false;
  }
  OmPointerVector* v = nullptr;
  if (subscripts.size() == my._dimensions.size() && !subscripts.empty()) {
    v = OmCellStore::VectorOf(my.root, subscripts, 0);
  }
  if (v != nullptr && v->HasRoom(static_cast<unsigned int>(subscripts[0]))) {
    v->GrowTo(static_cast<unsigned int>(subscripts[0]));
  } else {
    v = MakeRoom(my, subscripts);
  }
  my.Changed();
  const auto s = static_cast<unsigned long>(subscripts[0]);
  if (v->IsSet(s)) {
    ReplaceCell(my, *v, s, cell);
  } else if (cell != nullptr) {
    StoreCell(my, *v, s, *cell);
  }
  return true;
}

bool OmPivotTable::Cell(const std::vector<int>& subscripts, const OmCellText& cell) {
  return Cell(subscripts, &cell);
}

void OmPivotTable::Refuse(const std::vector<int>& subscripts) const {
  RefuseSubscripts(subscripts, _my->_dimensions.size());
}

void OmPivotTable::deleteCell(const std::vector<int>& subscripts) {
  OM_HARDEN(subscripts.size() == _my->_dimensions.size(), "OmPivotTable::deleteCell");
#if defined(OM_HARDENING) && OM_HARDENING
  for (const int subscript : subscripts) {
    OM_HARDEN(subscript >= 0, "OmPivotTable::deleteCell");
  }
#endif
  if (subscripts.size() == _my->_dimensions.size() && !subscripts.empty()) {
    _my->Changed();
    _my->storedCells -= OmCellStore::Delete(_my->root, subscripts) ? 1 : 0;
  }
}

const OmCellText* OmPivotTable::NextCell(std::vector<int>& subscripts) const {
  const unsigned long n = _my->_dimensions.size();
  bool more = _my->root != nullptr;
  if (subscripts.empty()) {
    subscripts.resize(more ? n : 0, 0);
  } else if (subscripts.size() != n) {
    throw OMSException("OmPivotTable::NextCell() -- subscripts.size() == NDimensions()",
                       static_cast<double>(subscripts.size()), static_cast<double>(n));
  } else if (std::any_of(subscripts.begin(), subscripts.end(), [](int s) { return s < 0; })) {
    throw OMSException("OmPivotTable::NextCell() -- subscript >= 0");
  } else {
    more = more && PassBy(subscripts, 0);
  }
  // Goes down to the first cell at or behind `subscripts`. Where a vector has nothing more to
  // offer, it starts again at the root, behind that vector.
  while (more) {
    const void* element = _my->root;
    for (unsigned long k = n; k-- != 0;) {
      const auto& vector = *static_cast<const PointerVector*>(element);
      const auto from = static_cast<unsigned long>(subscripts[k]);
      const unsigned long at = FindNonZero(vector, from);
      if (at >= vector.size()) {
        more = PassBy(subscripts, k + 1);
        element = nullptr;
        break;
      }
      if (at != from) {
        subscripts[k] = static_cast<int>(at);
        std::fill_n(subscripts.begin(), k, 0);
      }
      element = vector.begin()[at];
    }
    if (element != nullptr) {
      return static_cast<const OmCellText*>(element);
    }
  }
  subscripts.clear();
  return nullptr;
}

int OmPivotTable::getNumCells() const noexcept {
  return _my->numCells;
}

unsigned long OmPivotTable::StoredCells() const noexcept {
  return _my->storedCells;
}

// --- Area formats -------------------------------------------------------------------------------

void OmPivotTable::setAreaFormat(FormatArea* format) {
  if (format == nullptr) {
    return;
  }
  const FormatArea::Area area = format->getArea();
  FormatArea* const old = getAreaFormat(area);
  FormatArea*& entry = _my->areaFormats[area];
  OM_HARDEN(format != old, "OmPivotTable::setAreaFormat");
  if (old == nullptr && entry != nullptr && entry != format) {
    _my->displacedFormats.push_back(entry);
  }
  entry = format;
  delete old;
}

void OmPivotTable::setAreaFormat(std::unique_ptr<FormatArea>&& format) {
  setAreaFormat(format.get());
  static_cast<void>(format.release());  // the table owns it now
}

FormatArea* OmPivotTable::getAreaFormat(FormatArea::Area area) const {
  if (area > 8) {
    return nullptr;
  }
  // A lookup may leave a null entry behind, through the const interface too.
  return _my->areaFormats[area];
}

// --- Properties ---------------------------------------------------------------------------------

bool OmPivotTable::Show() const noexcept {
  return _my->show;
}

void OmPivotTable::Show(bool show) noexcept {
  _my->show = show;
}

bool OmPivotTable::RotateRowLabels() const noexcept {
  return _my->rotateRowLabels;
}

void OmPivotTable::RotateRowLabels(bool rotate) noexcept {
  _my->rotateRowLabels = rotate;
}

bool OmPivotTable::RotateColumnLabels() const noexcept {
  return _my->rotateColumnLabels;
}

void OmPivotTable::RotateColumnLabels(bool rotate) noexcept {
  _my->rotateColumnLabels = rotate;
}

bool OmPivotTable::showCaption() const noexcept {
  return _my->showCaption;
}

void OmPivotTable::showCaption(bool show) noexcept {
  _my->showCaption = show;
}

int OmPivotTable::OptionNumber() const noexcept {
  return _my->optionNumber;
}

void OmPivotTable::OptionNumber(int number) noexcept {
  _my->optionNumber = number;
}

long long OmPivotTable::TableId() const noexcept {
  return _my->tableId;
}

void OmPivotTable::TableId(long long id) noexcept {
  _my->tableId = id;
}

const std::string& OmPivotTable::TableLocale() const noexcept {
  return _my->tableLocale;
}

void OmPivotTable::TableLocale(const std::string& locale) {
  _my->tableLocale = locale;
}

bool OmPivotTable::HasSplits() const noexcept {
  return _my->hasSplits;
}

bool OmPivotTable::IsWarnings() const noexcept {
  return _my->isWarnings;
}

bool OmPivotTable::IsNotes() const noexcept {
  return _my->isNotes;
}

void OmPivotTable::setHasMarkers() noexcept {
  _my->hasMarkers = true;
}

bool OmPivotTable::hasMarkers() const noexcept {
  return _my->hasMarkers;
}

bool OmPivotTable::backendOwns() const noexcept {
  return _my->backendOwns;
}

void OmPivotTable::setBackendOwns(bool owns) noexcept {
  _my->backendOwns = owns;
}

bool OmPivotTable::fastTable() const noexcept {
  return _my->fastTable;
}

void OmPivotTable::setFastTable(bool fast) noexcept {
  _my->fastTable = fast;
}

bool OmPivotTable::getLabelsOnly() const noexcept {
  return _my->labelsOnly;
}

void OmPivotTable::setLabelsOnly(bool only) noexcept {
  _my->labelsOnly = only;
}

bool OmPivotTable::getImputed() const noexcept {
  return _my->imputed;
}

void OmPivotTable::setImputed(bool imputed) noexcept {
  _my->imputed = imputed;
}

bool OmPivotTable::IsScratched() const noexcept {
  return _my->scratched;
}

void OmPivotTable::Scratch(bool scratched) noexcept {
  _my->scratched = scratched;
}

int OmPivotTable::MinColumnWidth() const noexcept {
  return _my->minColumnWidth;
}

void OmPivotTable::MinColumnWidth(int width) noexcept {
  _my->minColumnWidth = width;
}

int OmPivotTable::MaxColumnWidth() const noexcept {
  return _my->maxColumnWidth;
}

void OmPivotTable::MaxColumnWidth(int width) noexcept {
  _my->maxColumnWidth = width;
}

int OmPivotTable::MinRowWidth() const noexcept {
  return _my->minRowWidth;
}

void OmPivotTable::MinRowWidth(int width) noexcept {
  _my->minRowWidth = width;
}

int OmPivotTable::MaxRowWidth() const noexcept {
  return _my->maxRowWidth;
}

void OmPivotTable::MaxRowWidth(int width) noexcept {
  _my->maxRowWidth = width;
}

int OmPivotTable::getLayerLoc() const noexcept {
  return _my->layerLoc;
}

void OmPivotTable::setLayerLoc(int layer) noexcept {
  _my->layerLoc = layer;
}

int OmPivotTable::getLang() const noexcept {
  return _my->lang;
}

void OmPivotTable::setLang(int language) noexcept {
  _my->lang = language;
}

int OmPivotTable::getVariableMode() const noexcept {
  return _my->variableMode;
}

void OmPivotTable::setVariableMode(int mode) noexcept {
  _my->variableMode = mode;
}

int OmPivotTable::getValueMode() const noexcept {
  return _my->valueMode;
}

void OmPivotTable::setValueMode(int mode) noexcept {
  _my->valueMode = mode;
}

int OmPivotTable::getStartColor() const noexcept {
  return _my->startColor;
}

void OmPivotTable::setStartColor(int color) noexcept {
  _my->startColor = color;
}

int OmPivotTable::getEndColor() const noexcept {
  return _my->endColor;
}

void OmPivotTable::setEndColor(int color) noexcept {
  _my->endColor = color;
}

const std::string& OmPivotTable::getBorderInfo() const noexcept {
  return _my->borderInfo;
}

void OmPivotTable::setBorderInfo(const std::string& info) {
  _my->borderInfo = info;
}

const std::string& OmPivotTable::getTableLookInfo() const noexcept {
  return _my->tableLookInfo;
}

void OmPivotTable::setTableLookInfo(const std::string& info) {
  _my->tableLookInfo = info;
}

const std::string& OmPivotTable::getTablePropertiesInfo() const noexcept {
  return _my->tablePropertiesInfo;
}

void OmPivotTable::setTablePropertiesInfo(const std::string& info) {
  _my->tablePropertiesInfo = info;
}

const std::vector<unsigned int>& OmPivotTable::getTableCustomWidths() const noexcept {
  return _my->customWidths;
}

void OmPivotTable::setTableCustomWidths(const std::vector<unsigned int>& widths) {
  _my->customWidths = widths;
}

const std::vector<unsigned int>& OmPivotTable::getTableCustomHeights() const noexcept {
  return _my->customHeights;
}

void OmPivotTable::setTableCustomHeights(const std::vector<unsigned int>& heights) {
  _my->customHeights = heights;
}

const std::map<unsigned long long, unsigned short>& OmPivotTable::getEmptyCellStyles()
    const noexcept {
  return _my->emptyCellStyles;
}

std::map<unsigned long long, unsigned short>& OmPivotTable::emptyCellStyles() noexcept {
  return _my->emptyCellStyles;
}

const std::vector<OmCellProperties>& OmPivotTable::getCellStyles() const noexcept {
  return _my->cellStyles;
}

std::vector<OmCellProperties>& OmPivotTable::cellStyles() noexcept {
  return _my->cellStyles;
}

void OmPivotTable::addMiscProperty(std::string property) {
  // Put together first, so that a failure leaves no comma behind.
  if (!_my->miscProperties.empty()) {
    property.insert(property.begin(), ',');
  }
  _my->miscProperties += property;
}

const std::string& OmPivotTable::getMiscProperties() const noexcept {
  return _my->miscProperties;
}
