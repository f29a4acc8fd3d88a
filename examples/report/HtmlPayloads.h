// Renders the items that carry payloads: a chart by its image, the others by their names and sizes,
// with the text of a payload to unfold.

#ifndef EXAMPLES_REPORT_HTMLPAYLOADS_H
#define EXAMPLES_REPORT_HTMLPAYLOADS_H

#include <iosfwd>
#include <string>

class OmChart;
class OmDendrix;
class OmInteractive;
class OmModel;

namespace report {

// `title` is the item's, `id` its own in the page.
void WriteChart(std::ostream& out, const OmChart& chart, const std::string& title,
                const std::string& id);
void WriteModel(std::ostream& out, const OmModel& model, const std::string& title,
                const std::string& id);
void WriteInteractive(std::ostream& out, const OmInteractive& interactive, const std::string& title,
                      const std::string& id);
void WriteTreeDiagram(std::ostream& out, const OmDendrix& tree, const std::string& title,
                      const std::string& id);

}  // namespace report

#endif
