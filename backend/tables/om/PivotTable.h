// OmPivotTable, the output item that carries one statistical table: titles, dimensions, cells
// addressed by one subscript per dimension, footnotes, area formats and presentation properties.
//
// A procedure fills it in this order: construct, add dimensions and their categories, append the
// index of each dimension to the rows, columns or layers, set cells, add footnotes, call
// EndTable(). The display headings then read it and never change it.
//
// Every text, category, cell and footnote except the item's title is copied into a memory region
// that the table owns, so the table's memory is charged to the table and released with it. Setting
// and finding a cell costs one pointer step per dimension.

#ifndef BACKEND_TABLES_OM_PIVOTTABLE_H
#define BACKEND_TABLES_OM_PIVOTTABLE_H

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/OutputPart.h"
#include "backend/tables/om/PointerVector.h"

class BackendSettings;
class OmCellProperties;
class OmCellText;
class OmDimension;
class OmDisplayLayerHeading;
class OmFootnote;
class icuTracker;

// One thread at a time uses a table and the headings made from it.
//
// Texts passed in are copied; callers keep theirs. A setter must not be called with the table's own
// text that it replaces: the old text is deleted before the new one is copied. If that copy fails,
// the text is null. Integer properties are -1 until they are set, except the language and the two
// modes, which are 0.
class OM_API OmPivotTable : public OmOutputPart {
 public:
  struct OM_PRIVATE Data;
  class OM_PRIVATE ICUHelper;
  class OM_PRIVATE FootnotePlaces;
  class Iterator;
  class ConstIterator;
  // A vector of one level of the cell store (PointerVector.h).
  using PointerVector = OmPointerVector;

  // A template name of "Warnings" or "Notes" marks the table as one of warnings or of notes
  // permanently.
  OmPivotTable(const OmCellText& title, const OmCellText& templateName, bool hasSplits);
  // Does not throw, so that tables can be members of any class. If the destructor of a derived
  // class throws, the process ends.
  ~OmPivotTable() noexcept override;

  using OmOutputPart::Accept;
  void Accept(Visitor& visitor) override;

  // Ends construction. The three axes together must have as many entries as there are dimensions.
  // If they do not, entries of -1 are removed; if that does not help, throws OMSException. If the
  // numbers agree from the start, entries of -1 stay, on purpose: the removal only repairs a
  // mismatch.
  void EndTable();

  // --- Titles -----------------------------------------------------------------------------------

  // Never null.
  [[nodiscard]] OmCellText* TemplateName() noexcept;
  [[nodiscard]] const OmCellText* TemplateName() const noexcept;
  // Null until set, and after it was set to null.
  [[nodiscard]] OmCellText* CornerText() noexcept;
  [[nodiscard]] const OmCellText* CornerText() const noexcept;
  void CornerText(const OmCellText* text);
  [[nodiscard]] OmCellText* Caption() noexcept;
  [[nodiscard]] const OmCellText* Caption() const noexcept;
  void Caption(const OmCellText* text);
  // Null until set.
  [[nodiscard]] const OmCellText* GetTableTitle() const noexcept;
  [[nodiscard]] OmCellText* TableTitle() noexcept;
  void SetTableTitle(const OmCellText& text);

  // --- Dimensions and axes ----------------------------------------------------------------------

  // Adds an empty dimension, and returns it; the table owns it. Its index is NDimensions() - 1,
  // which is also the subscript of its root. Cells that are stored already move to subscript 0 of
  // the new dimension. If it fails, the table is unchanged.
  OmDimension* AddDimension(const OmCellText& name);
  // Adds a copy of `dimension`, whose root needs a label.
  OmDimension* AddDimension(const OmDimension& dimension);
  // Adds copies of all dimensions of `other` to a table without dimensions. Axes and cells are not
  // copied. Unlike AddDimension, keeps the subscripts of the roots and ties no text to a tracker,
  // on purpose: the copies are exact. Throws OMSException if this table has dimensions.
  void CopyDimensions(const OmPivotTable& other);
  // Returns the index of the first dimension of that name, or -1.
  [[nodiscard]] int FindDimension(const OmCellText& name) const;
  // Throws OMSException if there is no dimension `which`.
  [[nodiscard]] OmDimension* Dimension(int which);
  [[nodiscard]] const OmDimension* Dimension(int which) const;
  [[nodiscard]] unsigned long NDimensions() const noexcept;
  // Returns the number of categories of dimension `which`. Throws OMSException if there is none.
  [[nodiscard]] int Size(int which) const;
  // Returns the number of categories of every dimension.
  [[nodiscard]] std::vector<int> SizeVector() const;

  // Dimension indices in the order of appending: the first one varies fastest in display. -1 is a
  // placeholder.
  [[nodiscard]] PuppetVector<short>& Rows() noexcept;
  [[nodiscard]] const PuppetVector<short>& Rows() const noexcept;
  [[nodiscard]] PuppetVector<short>& Columns() noexcept;
  [[nodiscard]] const PuppetVector<short>& Columns() const noexcept;
  [[nodiscard]] PuppetVector<short>& Layers() noexcept;
  [[nodiscard]] const PuppetVector<short>& Layers() const noexcept;

  // --- Cells ------------------------------------------------------------------------------------

  // Stores a copy of `cell`, or null, at one subscript per dimension. The new cell gets the
  // metadata of the cell that it replaces. If getNumCells() was above the limit of the settings
  // before the call, returns false, does not store the cell and scratches the table. Throws
  // OMSException on a wrong number of subscripts or a negative one, and in a table without
  // dimensions.
  //
  // If the copy of the cell fails, null is stored. If only a copy of the metadata fails, either the
  // old cell stays or the new one is stored without metadata. A null that was stored first hides
  // the cells behind it from the iterators.
  bool Cell(const std::vector<int>& subscripts, const OmCellText* cell);
  bool Cell(const std::vector<int>& subscripts, const OmCellText& cell);
  // Returns the cell, which the table owns, or null. Throws OMSException on a wrong number of
  // subscripts or a negative one.
  [[nodiscard]] OmCellText* Cell(const std::vector<int>& subscripts);
  [[nodiscard]] const OmCellText* Cell(const std::vector<int>& subscripts) const;
  // Deletes a cell, and the vectors of the store that become empty. Only for subscripts at which a
  // cell was set before.
  void deleteCell(const std::vector<int>& subscripts);
  // Returns the number of calls of the setter, failed ones included; not the number of cells.
  [[nodiscard]] int getNumCells() const noexcept;
  // Returns how many cells are stored.
  [[nodiscard]] unsigned long StoredCells() const noexcept;

  // Returns an iterator at the first cell (CellIterator.h).
  [[nodiscard]] Iterator FirstCell();
  [[nodiscard]] ConstIterator FirstCell() const;
  // Moves `subscripts` to the next stored cell in the order of the iterators and returns that cell;
  // if there is none, returns null and clears `subscripts`. A walk starts with empty subscripts.
  // Unlike an iterator it finds the cells behind a null that was stored first, and the table may
  // change between two calls. A call costs about as much as a lookup of a cell. Throws OMSException
  // on a wrong number of subscripts, unless there are none, or on a negative one.
  [[nodiscard]] const OmCellText* NextCell(std::vector<int>& subscripts) const;

  // --- Footnotes --------------------------------------------------------------------------------

  // Adds a footnote and returns its index. If there is one with the same text and `alwaysNew` is
  // false, counts another use of that one instead, and replaces its marker by the one of `note`,
  // even by none. A new footnote has one use, unless `note` has a negative use count, which is
  // copied, on purpose: it has a meaning to callers. `note` must have a text. If a copy fails, a
  // footnote without a text stays in the list.
  //
  // Costs a number of comparisons logarithmic in the length of the list, and one for each footnote
  // whose text is not of one of the platform's simple kinds, because other kinds define their own
  // equality. If the text of `note` is of another kind, and after a call of the non-const
  // Footnotes(), it costs a comparison with each footnote.
  int Footnote(const OmFootnote& note, bool alwaysNew);
  // The non-const function makes Footnote slow from then on: read through a const table.
  [[nodiscard]] OmVector<OmFootnote>& Footnotes() noexcept;
  [[nodiscard]] const OmVector<OmFootnote>& Footnotes() const noexcept;
  // Records that the caller removed footnotes; the table itself never does.
  void RemovedFootnotes(bool removed) noexcept;
  [[nodiscard]] bool HasRemovedFootnotes() const noexcept;

  // --- Settings and text-encoding trackers ------------------------------------------------------

  // Stores a copy. The first settings with fast tables create the table's trackers and tie the
  // texts of the table to them, except its cells, corner text and caption. Later settings do not
  // change the trackers.
  void setBackendSettings(const BackendSettings& settings);
  [[nodiscard]] const BackendSettings& getBackendSettings() const noexcept;
  // Null until created; both may be the same object.
  [[nodiscard]] icuTracker* getICUTracker() const noexcept;
  [[nodiscard]] icuTracker* getU8Tracker() const noexcept;
  // Ties a text to the table's tracker, if there is one.
  void setHelper(OmCellText& cell);

  // --- Area formats -----------------------------------------------------------------------------

  // Takes ownership of `format` and deletes the previous one of the same area. For an area above 8,
  // which no lookup finds, the previous one is kept until the table is destroyed. Null is ignored.
  // The same object must not be passed twice.
  void setAreaFormat(FormatArea* format);
  // The same. If the call fails, `format` is unchanged.
  void setAreaFormat(std::unique_ptr<FormatArea>&& format);
  // Returns the format of an area, or null; always null for an area above 8.
  [[nodiscard]] FormatArea* getAreaFormat(FormatArea::Area area) const;

  // --- Properties -------------------------------------------------------------------------------

  [[nodiscard]] bool Show() const noexcept;
  void Show(bool show) noexcept;
  [[nodiscard]] bool RotateRowLabels() const noexcept;
  void RotateRowLabels(bool rotate) noexcept;
  [[nodiscard]] bool RotateColumnLabels() const noexcept;
  void RotateColumnLabels(bool rotate) noexcept;
  [[nodiscard]] bool showCaption() const noexcept;
  void showCaption(bool show) noexcept;
  [[nodiscard]] int OptionNumber() const noexcept;
  void OptionNumber(int number) noexcept;
  [[nodiscard]] long long TableId() const noexcept;
  void TableId(long long id) noexcept;
  [[nodiscard]] const std::string& TableLocale() const noexcept;
  void TableLocale(const std::string& locale);
  [[nodiscard]] bool HasSplits() const noexcept;
  [[nodiscard]] bool IsWarnings() const noexcept;
  [[nodiscard]] bool IsNotes() const noexcept;
  // There is no way to clear the markers flag.
  void setHasMarkers() noexcept;
  [[nodiscard]] bool hasMarkers() const noexcept;
  [[nodiscard]] bool backendOwns() const noexcept;
  void setBackendOwns(bool owns) noexcept;
  [[nodiscard]] bool fastTable() const noexcept;
  void setFastTable(bool fast) noexcept;
  [[nodiscard]] bool getLabelsOnly() const noexcept;
  void setLabelsOnly(bool only) noexcept;
  [[nodiscard]] bool getImputed() const noexcept;
  void setImputed(bool imputed) noexcept;
  // A scratched table was abandoned; it is kept and destroyed like any other.
  [[nodiscard]] bool IsScratched() const noexcept;
  void Scratch(bool scratched) noexcept;
  // Widths in the units of the table's producer.
  [[nodiscard]] int MinColumnWidth() const noexcept;
  void MinColumnWidth(int width) noexcept;
  [[nodiscard]] int MaxColumnWidth() const noexcept;
  void MaxColumnWidth(int width) noexcept;
  [[nodiscard]] int MinRowWidth() const noexcept;
  void MinRowWidth(int width) noexcept;
  [[nodiscard]] int MaxRowWidth() const noexcept;
  void MaxRowWidth(int width) noexcept;
  // The number of the layer to show first.
  [[nodiscard]] int getLayerLoc() const noexcept;
  void setLayerLoc(int layer) noexcept;
  [[nodiscard]] int getLang() const noexcept;
  void setLang(int language) noexcept;
  [[nodiscard]] int getVariableMode() const noexcept;
  void setVariableMode(int mode) noexcept;
  [[nodiscard]] int getValueMode() const noexcept;
  void setValueMode(int mode) noexcept;
  [[nodiscard]] int getStartColor() const noexcept;
  void setStartColor(int color) noexcept;
  [[nodiscard]] int getEndColor() const noexcept;
  void setEndColor(int color) noexcept;
  [[nodiscard]] const std::string& getBorderInfo() const noexcept;
  void setBorderInfo(const std::string& info);
  [[nodiscard]] const std::string& getTableLookInfo() const noexcept;
  void setTableLookInfo(const std::string& info);
  [[nodiscard]] const std::string& getTablePropertiesInfo() const noexcept;
  void setTablePropertiesInfo(const std::string& info);
  [[nodiscard]] const std::vector<unsigned int>& getTableCustomWidths() const noexcept;
  void setTableCustomWidths(const std::vector<unsigned int>& widths);
  [[nodiscard]] const std::vector<unsigned int>& getTableCustomHeights() const noexcept;
  void setTableCustomHeights(const std::vector<unsigned int>& heights);
  [[nodiscard]] const std::map<unsigned long long, unsigned short>& getEmptyCellStyles()
      const noexcept;
  [[nodiscard]] std::map<unsigned long long, unsigned short>& emptyCellStyles() noexcept;
  [[nodiscard]] const std::vector<OmCellProperties>& getCellStyles() const noexcept;
  [[nodiscard]] std::vector<OmCellProperties>& cellStyles() noexcept;
  // Appends to a comma-separated list.
  void addMiscProperty(std::string property);
  [[nodiscard]] const std::string& getMiscProperties() const noexcept;

  // --- Diagnostic dump --------------------------------------------------------------------------

  // Writes titles, dimensions, cells and footnotes to the standard output. The table title must be
  // set: without one, the process ends. Numbers do not depend on the state of the stream.
  void Print() const;
  // Writes the store below `v`, which is at `depth` (0 is the root) and at `index` in its parent.
  void PrintCells(PointerVector* v, unsigned long depth, unsigned long index) const;

 private:
  friend class OmDisplayLayerHeading;  // walks the store: looking up each cell would be slow

  // The part of the private record that reading a cell needs, declared here so that reading is
  // inline.
  struct OM_PRIVATE Cells {
    OmMemoryRegion region{false};
    OmVector<OmDimension*> _dimensions{
        &region};                   // heap objects, owned; their trees are in `region`
    PointerVector* root = nullptr;  // of the cell store; null until a cell is set
  };
  [[nodiscard]] OmCellText* FindCell(const std::vector<int>& subscripts) const;
  // Throws OMSException about the number of `subscripts`, or else about a negative one. Noreturn,
  // so that loops over reads spill no registers.
  [[noreturn]] void Refuse(const std::vector<int>& subscripts) const;

  Data* _my;
  const Cells* cells;  // a part of _my
};

inline OmCellText* OmPivotTable::FindCell(const std::vector<int>& subscripts) const {
  const int* const first = subscripts.data();
  const int* s = first + subscripts.size();
  if (subscripts.size() != cells->_dimensions.size()) {
    Refuse(subscripts);
  }
  void* element = cells->root;
  while (element != nullptr && s != first) {
    element = static_cast<const PointerVector*>(element)->At(*--s);
  }
  // A negative subscript never leads to a cell, so only this case needs the check.
  if (element == nullptr &&
      std::any_of(first, first + subscripts.size(), [](int i) { return i < 0; })) {
    Refuse(subscripts);
  }
  return static_cast<OmCellText*>(element);
}

inline OmCellText* OmPivotTable::Cell(const std::vector<int>& subscripts) {
  return FindCell(subscripts);
}

inline const OmCellText* OmPivotTable::Cell(const std::vector<int>& subscripts) const {
  return FindCell(subscripts);
}

#endif
