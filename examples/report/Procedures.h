// The procedures: they fill a document from data, and know nothing of how it will be shown.
//
// The document holds a page title, a log, and one heading a procedure: frequencies and a
// crosstabulation of the variables on the axes, descriptives of the measures.

#ifndef EXAMPLES_REPORT_PROCEDURES_H
#define EXAMPLES_REPORT_PROCEDURES_H

#include "examples/report/DataSet.h"
#include "examples/report/Plan.h"

class OmOutputTree;

namespace report {

// Appends to an empty document. A procedure that cannot go on leaves its heading with a message and
// a table of warnings; the others are not touched by it.
void BuildDocument(const DataSet& data, const Plan& plan, OmOutputTree& document);

}  // namespace report

#endif
