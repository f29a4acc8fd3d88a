// om::VisibleFootnotes, the footnotes that a shown part of a table uses, with their markers.
//
//   const om::VisibleFootnotes notes(view, om::MarkerStyle::kLetters);
//   for (const std::string& marker : notes.Markers(*label.text)) …  // behind the text
//   for (const om::VisibleFootnote& note : notes.List()) …          // below the table
//
// Texts refer to footnotes by their metadata, whose indices are those of OmPivotTable::Footnotes().

#ifndef DISPLAY_FOOTNOTES_H
#define DISPLAY_FOOTNOTES_H

#include <string>
#include <vector>

#include "display/Export.h"
#include "display/TableView.h"

class OmCellText;

namespace om {

// How footnotes without a marker of their own are marked: a, b, …, z, aa, …; 1, 2, …;
// *, †, ‡, §, ‖, ¶, **, ††, …
enum class MarkerStyle : unsigned char { kLetters, kNumbers, kSymbols };

// A footnote that is in use, with its marker.
struct VisibleFootnote {
  int index = -1;                    // among the table's footnotes
  const OmCellText* text = nullptr;  // never null in a list
  std::string marker;                // in UTF-8
  bool own = false;                  // the marker is the footnote's own
};

// Markers are assigned in reading order: title, labels of the layer, corner, column labels, row
// labels, cells row by row, caption. A footnote with a marker of its own keeps it, and the
// generated markers differ from all of those. A footnote that no shown text refers to, or that has
// no text, is left out. For markers that are the same in all windows of a layer, or in all layers,
// use the object of the layer, or OfAllLayers.
//
// A copyable value with the footnotes as they were when it was constructed. The texts belong to the
// table, which has to outlive it.
class OM_DISPLAY_API VisibleFootnotes {
 public:
  // Of the current layer. Costs a walk over the stored cells and the labels.
  VisibleFootnotes(const TableView& view, MarkerStyle style);
  // Of a window of the current layer, with title, layer, corner and caption. Costs what the window
  // shows.
  VisibleFootnotes(const TableView& view, const Window& window, MarkerStyle style);
  // Of all layers, each in turn between the title and the caption.
  [[nodiscard]] static VisibleFootnotes OfAllLayers(const TableView& view, MarkerStyle style);

  // Returns the footnotes in use, in reading order.
  [[nodiscard]] const std::vector<VisibleFootnote>& List() const noexcept { return list; }
  // Returns the footnotes of a text as positions in the list, in the order in which the text refers
  // to them and without duplicates. Those that are not in the list are left out.
  [[nodiscard]] std::vector<unsigned int> Of(const OmCellText& text) const;
  [[nodiscard]] std::vector<std::string> Markers(const OmCellText& text) const;

  // Returns marker number `i` of a style, from 0.
  [[nodiscard]] static std::string Marker(MarkerStyle style, unsigned int i);

 private:
  class OM_PRIVATE Collector;
  OM_PRIVATE explicit VisibleFootnotes(Collector&& collector);

  std::vector<VisibleFootnote> list;
  std::vector<int> positions;  // in the list, by index; -1 if a footnote is not in use
};

}  // namespace om

#endif
