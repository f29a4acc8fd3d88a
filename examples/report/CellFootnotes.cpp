#include "examples/report/CellFootnotes.h"

#include "backend/tables/om/Vector.h"
#include "platform/cells/CellMetaData.h"
#include "platform/cells/CellText.h"

namespace report {

void MarkFootnote(OmCellText& text, int footnote) {
  OmCellMetaData meta;
  if (text.hasMeta()) {
    meta = text.getMeta();
  }
  meta.Footnotes().push_back(footnote);
  text.setMeta(meta);
}

std::vector<int> FootnotesOf(const OmCellText& text) {
  if (!text.hasMeta()) {
    return {};
  }
  const OmVector<int>& footnotes = text.getMeta().Footnotes();
  return std::vector<int>(footnotes.begin(), footnotes.end());
}

}  // namespace report
