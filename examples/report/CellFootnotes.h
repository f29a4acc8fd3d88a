// The footnotes of a cell text, which its metadata holds as indices into the table's list.

#ifndef EXAMPLES_REPORT_CELLFOOTNOTES_H
#define EXAMPLES_REPORT_CELLFOOTNOTES_H

#include <vector>

class OmCellText;

namespace report {

void MarkFootnote(OmCellText& text, int footnote);
[[nodiscard]] std::vector<int> FootnotesOf(const OmCellText& text);

}  // namespace report

#endif
